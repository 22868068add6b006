# SPDX-License-Identifier: GPL-3.0-or-later
# `cpack -G DEB` in a Release build tree gives corvane_<version>_amd64.deb, whose
# dependencies dpkg-shlibdeps computes from the binary (see scripts/package).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME corvane)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The Corvane developers")
set(CPACK_PACKAGE_CONTACT "developers@${CORVANE_WEB_ADDRESS}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Wi-Fi scanner and signal monitor")
# Lines of at most 80 characters, as Debian's tools show them on a terminal.
string(JOIN "\n" CPACK_PACKAGE_DESCRIPTION
    "Corvane Wi-Fi Monitor lists every access point the wireless adapter hears"
    "and keeps the history of each one's signal, noise and signal-to-noise ratio."
    "It shows the networks as a searchable table, a map, signal plots and channel"
    "views, shows a detail panel for the network under the pointer, joins networks"
    "and exports what it heard as text or HTML. A headless mode logs surveys from"
    "scripts; without an adapter it runs on a simulated radio or replays a capture.")
set(CPACK_PACKAGE_HOMEPAGE_URL "https://${CORVANE_WEB_ADDRESS}/")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CORVANE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Plugins are loaded at run time, so shlibdeps cannot see them: without the Wayland
# platform a Wayland session runs the program through Xwayland.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-wayland")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "network-manager")

include(CPack)

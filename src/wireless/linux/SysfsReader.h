// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// Reads the interface facts nl80211 does not carry: rfkill switches and the link's
// administrative state. The root ("/sys") is injectable so tests can lay out a fake tree.
class SysfsReader
{
public:
    explicit SysfsReader(QString root = QStringLiteral("/sys")) : m_root(std::move(root)) {}

    struct Rfkill
    {
        bool softBlocked = false;
        bool hardBlocked = false;
    };
    // The switches of the interface's own radio, plus any platform-wide Wi-Fi switch
    // (laptop keys appear as rfkill devices of type "wlan" not tied to a phy).
    Rfkill rfkill(const QString &interfaceName) const;
    // IFF_UP from the link flags.
    bool linkUp(const QString &interfaceName) const;
    // Any network interface that is a wireless one.
    bool hasWirelessInterface() const;

private:
    QString readTrimmed(const QString &path) const;
    QString m_root;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The start-up capture-device probe: prints the default capture device and tries to open
// the device "en0"; when that works, starts (and drops at once) a service browse.
class StartupProbe
{
public:
    static void run(bool browseServices);
};

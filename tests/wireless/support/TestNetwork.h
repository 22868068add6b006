// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWNetwork.h"

// A scan result with only what joining looks at: the name's bytes, a BSSID and the security.
inline CWNetworkRef testNetwork(const QByteArray &ssid, unsigned securities = 1,
                                std::optional<int> securityMode = 0)
{
    CWNetwork::Data d;
    d.ssidData = ssid;
    d.bssid = QStringLiteral("02:00:00:00:01:00");
    d.securities = securities;
    d.securityMode = securityMode;
    return CWNetwork::create(d);
}

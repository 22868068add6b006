// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWNetwork.h"

#include <QString>

// Scan result number `i` of a benchmark's survey: a BSSID of its own, the name
// "Network <nameNumber>", a 2.4 GHz channel and a level that vary with `i`.
inline CWNetworkRef benchNetwork(int i, int nameNumber,
                                 unsigned securities = 1u << kCWSecurityWPA2Personal)
{
    CWNetwork::Data d;
    d.ssidData = QStringLiteral("Network %1").arg(nameNumber).toUtf8();
    d.bssid = QStringLiteral("02:00:00:%1:%2:%3")
                  .arg((i >> 16) & 0xff, 2, 16, QLatin1Char('0'))
                  .arg((i >> 8) & 0xff, 2, 16, QLatin1Char('0'))
                  .arg(i & 0xff, 2, 16, QLatin1Char('0'));
    d.rssiValue = -40 - i % 50;
    d.noiseMeasurement = -92;
    d.wlanChannel = CWChannel(1 + i % 11, kCWChannelBand2GHz, kCWChannelWidth20MHz);
    d.phyModes = (1u << kCWPHYMode11g) | (1u << kCWPHYMode11n);
    d.securities = securities;
    return CWNetwork::create(d);
}

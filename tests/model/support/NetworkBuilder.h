// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWNetwork.h"

#include <initializer_list>

// Builds scan results for tests: a plausible open 2.4 GHz network unless told otherwise.
class NetworkBuilder
{
public:
    NetworkBuilder();

    NetworkBuilder &ssid(const QByteArray &bytes);
    NetworkBuilder &hidden();
    NetworkBuilder &bssid(const QString &bssid);
    NetworkBuilder &rssi(qint64 dbm);
    NetworkBuilder &noise(qint64 dbm);
    NetworkBuilder &channel(qint64 number, int band, int width);
    // The real layout: segment width and centres in MHz (a second centre for 80+80).
    NetworkBuilder &operatingChannel(int primary, int band, int widthMHz, int centerMHz,
                                     int secondCenterMHz = 0);
    NetworkBuilder &phyModes(std::initializer_list<int> modes);
    NetworkBuilder &securities(std::initializer_list<int> codes);
    NetworkBuilder &ibss(bool on);

    CWNetworkRef build() const { return CWNetwork::create(m_data); }
    operator CWNetworkRef() const { return build(); }

private:
    CWNetwork::Data m_data;
};

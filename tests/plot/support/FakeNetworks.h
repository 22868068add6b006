// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/NetworkList.h"

#include <QDateTime>

// Plausible observations for the views: records made from scan results with real channel
// layouts. The same seed gives the same list.
class FakeNetworks
{
public:
    // `count` records as the radios give them: 20 and 40 MHz on 2.4 GHz, 20 to 160 MHz and
    // 80+80 on 5 GHz, 20 to 320 MHz on 6 GHz, signals from -90 to -30 dBm.
    static NetworkList makeOnAir(int count, quint32 seed, const QDateTime &updated);
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWTypes.h"

// Channel numbers and bands of the 2.4, 5 and 6 GHz bands.
class FrequencyPlan
{
public:
    // The channel number of a centre frequency in MHz, or 0 when it is on no channel.
    static int channelForFrequency(int mhz);
    // CWChannelBand of a centre frequency in MHz (kCWChannelBandUnknown off the bands).
    static int bandForFrequency(int mhz);
    // The band a bare channel number most likely belongs to when no frequency is known:
    // 1-14 are 2.4 GHz, higher numbers 5 GHz (6 GHz numbers overlap both and need a frequency).
    static int bandForChannel(int channel);
    // The centre frequency in MHz of a channel in a band, or 0.
    static int frequencyForChannel(int channel, int band);
};

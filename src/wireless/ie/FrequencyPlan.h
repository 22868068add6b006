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
    // The centre channel of the channel block of widthMHz (40, 80, 160, 320) in a band that
    // holds the 20 MHz channel `channel`, or 0 when there is none. On 2.4 GHz a 40 MHz channel
    // has no fixed blocks: the secondary goes above for channels 1-7, below otherwise.
    static int blockCenter(int channel, int band, int widthMHz);
    // True for the 20 MHz channels a block may be built of (5 GHz: 36-64, 100-144, 149-177;
    // 6 GHz: 1-233 in steps of 4; 2.4 GHz: 1-13).
    static bool isTwentyMHzChannel(int channel, int band);
};

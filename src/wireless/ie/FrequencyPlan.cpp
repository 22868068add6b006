// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/ie/FrequencyPlan.h"

// All arithmetic here is 802.11-2020 Annex E (E.1, country operating classes): a channel's
// centre frequency is the starting frequency of its band plus 5 MHz times its number.
// Starting frequencies: 2407 MHz (2.4 GHz, with channel 14 the exception at 2484 MHz),
// 5000 MHz (5 GHz), 4000 MHz (the 4.9 GHz channels 183-196 of Japan's classes) and, from
// 802.11ax-2021, 5950 MHz for 6 GHz (with channel 2 at 5935 MHz, operating class 136).

int FrequencyPlan::channelForFrequency(int mhz)
{
    if (mhz == 2484)
        return 14;
    if (mhz >= 2412 && mhz <= 2472)
        return (mhz - 2407) % 5 == 0 ? (mhz - 2407) / 5 : 0;
    if (mhz >= 4915 && mhz <= 4980)
        return mhz % 5 == 0 ? (mhz - 4000) / 5 : 0;
    if (mhz >= 5005 && mhz <= 5895)
        return mhz % 5 == 0 ? (mhz - 5000) / 5 : 0;
    if (mhz == 5935)
        return 2;
    if (mhz >= 5955 && mhz <= 7115)
        return mhz % 5 == 0 ? (mhz - 5950) / 5 : 0;
    return 0;
}

int FrequencyPlan::bandForFrequency(int mhz)
{
    if (mhz >= 2400 && mhz <= 2500)
        return kCWChannelBand2GHz;
    if (mhz >= 4900 && mhz < 5925)
        return kCWChannelBand5GHz;
    if (mhz >= 5925 && mhz <= 7125)
        return kCWChannelBand6GHz;
    return kCWChannelBandUnknown;
}

int FrequencyPlan::bandForChannel(int channel)
{
    if (channel >= 1 && channel <= 14)
        return kCWChannelBand2GHz;
    if (channel > 14 && channel <= 196)
        return kCWChannelBand5GHz;
    return kCWChannelBandUnknown;
}

int FrequencyPlan::frequencyForChannel(int channel, int band)
{
    switch (band) {
    case kCWChannelBand2GHz:
        if (channel == 14)
            return 2484;
        return channel >= 1 && channel <= 13 ? 2407 + 5 * channel : 0;
    case kCWChannelBand5GHz:
        if (channel >= 183 && channel <= 196)
            return 4000 + 5 * channel;
        return channel >= 1 && channel <= 179 ? 5000 + 5 * channel : 0;
    case kCWChannelBand6GHz:
        if (channel == 2)
            return 5935;
        return channel >= 1 && channel <= 233 ? 5950 + 5 * channel : 0;
    default:
        return 0;
    }
}

bool FrequencyPlan::isTwentyMHzChannel(int channel, int band)
{
    switch (band) {
    case kCWChannelBand2GHz:
        return channel >= 1 && channel <= 13;
    case kCWChannelBand5GHz:
        if ((channel >= 36 && channel <= 64) || (channel >= 100 && channel <= 144))
            return channel % 4 == 0;
        return channel >= 149 && channel <= 177 && (channel - 149) % 4 == 0;
    case kCWChannelBand6GHz:
        return channel >= 1 && channel <= 233 && (channel - 1) % 4 == 0;
    default:
        return false;
    }
}

int FrequencyPlan::blockCenter(int channel, int band, int widthMHz)
{
    if (!isTwentyMHzChannel(channel, band) || widthMHz < 20 || widthMHz > 320)
        return 0;
    if (widthMHz == 20)
        return channel;
    if (band == kCWChannelBand2GHz)
        return widthMHz == 40 ? (channel <= 7 ? channel + 2 : channel - 2) : 0;
    if (band == kCWChannelBand5GHz && widthMHz == 320)
        return 0;
    // 5 and 6 GHz blocks are aligned runs of 20 MHz channels (802.11-2020 Annex E, E.1 and
    // 802.11ax-2021 27.3.23.2): counted from 36 and from 149 on 5 GHz, from 1 on 6 GHz.
    const int n = widthMHz / 20;
    if (n != 2 && n != 4 && n != 8 && n != 16)
        return 0;
    const int base = band == kCWChannelBand6GHz ? 1 : channel >= 149 ? 149 : 36;
    const int start = base + (channel - base) / 4 / n * n * 4;
    for (int k = 0; k < n; ++k) {
        if (!isTwentyMHzChannel(start + 4 * k, band))
            return 0;
    }
    return start + (n - 1) * 2;
}

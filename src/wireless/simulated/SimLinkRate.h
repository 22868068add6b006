// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The transmit rate a link settles on for its signal-to-noise ratio, the way rate control
// climbs the modulation table as the margin grows.
class SimLinkRate
{
public:
    // phyModes: CWPHYMode bits of the network; vht: it speaks 802.11ac; width: CWChannelWidth;
    // streams: spatial streams both ends have; snr in dB. Mbit/s.
    static double transmitRate(unsigned phyModes, bool vht, int width, int streams, int snr);
};

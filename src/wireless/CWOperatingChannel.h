// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWTypes.h"

#include <QString>

#include <array>

// Where a network really sits on the air, beside the coarse channel facts of CWChannel: its
// primary 20 MHz channel, its band, its real width and the centre frequency of each frequency
// segment (two only for 80+80 MHz, where each segment is 80 MHz wide).
struct CWOperatingChannel
{
    int primaryChannel = 0;           // number of the primary 20 MHz channel, 0 unknown
    int band = kCWChannelBandUnknown; // CWChannelBand
    int widthMHz = 0;                 // of each segment: 20, 40, 80, 160 or 320; 0 unknown
    std::array<int, 2> centerMHz{};   // segment centres; the second is 0 unless 80+80

    bool isKnown() const { return widthMHz > 0 && centerMHz[0] > 0; }
    bool isEightyPlusEighty() const { return centerMHz[1] != 0; }
    int segmentCount() const { return isEightyPlusEighty() ? 2 : 1; }
    // Spectrum the network occupies: 160 for 80+80.
    int totalWidthMHz() const { return widthMHz * segmentCount(); }
    int primaryMHz() const;
    // The lowest and highest frequency of segment i, in MHz.
    int lowMHz(int segment) const { return centerMHz[std::size_t(segment)] - widthMHz / 2; }
    int highMHz(int segment) const { return centerMHz[std::size_t(segment)] + widthMHz / 2; }
    // True when the primary 20 MHz channel lies inside one of the segments: what every valid
    // announcement satisfies, and the check that keeps a garbled one from being believed.
    bool coversPrimary() const;
    // True when [lowMHz, highMHz) of another span overlaps any of this one's segments.
    bool overlaps(int lowMHz, int highMHz) const;

    // The channel number of each segment's centre (0 when the centre is no channel).
    int centerChannel(int segment) const;

    // "2.4 GHz", "5 GHz", "6 GHz" or "".
    static QString bandText(int band);
    // "80 MHz", "80+80 MHz", or "" when unknown.
    QString widthText() const;

    bool operator==(const CWOperatingChannel &) const = default;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/simulated/SimLinkRate.h"

#include "wireless/CWTypes.h"

#include <algorithm>
#include <array>

namespace {
// Minimum SNR (dB) for each HT/VHT MCS 0-9, roughly what receivers need at 10% PER.
constexpr std::array<int, 10> kMcsSnr = {2, 5, 9, 11, 15, 18, 20, 25, 29, 31};
// One spatial stream, long guard interval (802.11-2020 tables 19-27, 19-28, 21-30 ff.); the
// short guard interval that every modern link uses is 10/9 of it. HT has no MCS 8 and 9,
// VHT on 20 MHz no MCS 9: those entries repeat the rate below.
constexpr std::array<double, 10> kRate20 = {6.5, 13, 19.5, 26, 39, 52, 58.5, 65, 78, 78};
constexpr std::array<double, 10> kRate40 = {13.5, 27, 40.5, 54, 81, 108, 121.5, 135, 162, 180};
constexpr std::array<double, 10> kRate80 = {29.25, 58.5,   87.75, 117, 175.5,
                                            234,   263.25, 292.5, 351, 390};
constexpr double kShortGuard = 10.0 / 9.0;

constexpr std::array<int, 8> kOfdmSnr = {2, 4, 6, 8, 12, 16, 20, 22};
constexpr std::array<double, 8> kOfdmRate = {6, 9, 12, 18, 24, 36, 48, 54};
constexpr std::array<int, 4> kDsssSnr = {0, 3, 6, 9};
constexpr std::array<double, 4> kDsssRate = {1, 2, 5.5, 11};

template <std::size_t N> int step(const std::array<int, N> &thresholds, int snr)
{
    int index = 0;
    for (std::size_t i = 0; i < N; ++i) {
        if (snr >= thresholds[i])
            index = int(i);
    }
    return index;
}

bool has(unsigned modes, int mode)
{
    return (modes >> mode) & 1u;
}
} // namespace

double SimLinkRate::transmitRate(unsigned phyModes, bool vht, int width, int streams, int snr)
{
    streams = std::clamp(streams, 1, 4);
    if (has(phyModes, kCWPHYMode11n) || vht) {
        const int mcs = std::min(step(kMcsSnr, snr), vht ? 9 : 7);
        double rate = kRate20[mcs];
        if (width == kCWChannelWidth40MHz)
            rate = kRate40[mcs];
        else if (width == kCWChannelWidth80MHz)
            rate = kRate80[mcs];
        else if (width == kCWChannelWidth160MHz)
            rate = 2.0 * kRate80[mcs];
        return rate * kShortGuard * streams;
    }
    if (has(phyModes, kCWPHYMode11a) || has(phyModes, kCWPHYMode11g))
        return kOfdmRate[step(kOfdmSnr, snr)];
    return kDsssRate[step(kDsssSnr, snr)];
}

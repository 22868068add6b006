// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWOperatingChannel.h"
#include "wireless/simulated/SimScenario.h"

#include <QString>

#include <optional>

class SimJsonReader;

// The radio side of a scenario's access point: band, channel, PHY letters, width and
// 80+80 segments, place and power. Split from the scenario reader because the channel rules
// of three bands are a subject of their own.
class SimRadioFacts
{
public:
    static void read(const SimJsonReader &o, SimScenario::AccessPoint &ap);
    // PHY letters ("b/g/n", "a/n/ac", "ax/be") to CWPHYMode bits plus the private markers
    // below; none for an unknown letter.
    static std::optional<unsigned> parsePhy(const QString &text);
    // Where the access point sits on the air: its channel's block of its width (the lower
    // or upper neighbour for a 2.4 GHz 40 MHz channel) and the second 80+80 segment.
    static CWOperatingChannel operatingChannel(const SimScenario::AccessPoint &ap);

    // 802.11ac, ax and be have no PHY code at the boundary; these bits are stripped before
    // anything crosses it.
    static constexpr unsigned kAcBit = 1u << 5;
    static constexpr unsigned kAxBit = 1u << 6;
    static constexpr unsigned kBeBit = 1u << 7;
};

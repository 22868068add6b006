// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

// The few radiotap fields a scanner needs (radiotap.org, "Defined fields"). Parsing stops
// quietly at the first field it does not know the size of; the header length still says
// where the 802.11 frame begins.
struct RadiotapHeader
{
    std::size_t length = 0;       // bytes to skip to reach the 802.11 frame
    bool hasFcs = false;          // the frame ends with its 4-byte FCS
    bool badFcs = false;          // ... and the receiver found it wrong
    int frequencyMHz = 0;         // Channel or XChannel, 0 when absent
    std::optional<int> signalDbm; // first antenna signal
    std::optional<int> noiseDbm;  // first antenna noise

    // None when the buffer is too short for the header it announces or the version is not 0.
    static std::optional<RadiotapHeader> parse(const std::uint8_t *data, std::size_t length);
};

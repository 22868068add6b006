// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

// Finds the 802.11 frame inside a captured packet and what the capturing radio said about it,
// for the link types a monitor-mode capture comes in.
class LinkLayer
{
public:
    // LINKTYPE_* values (tcpdump.org/linktypes.html).
    static constexpr int kPlain80211 = 105;
    static constexpr int kPrism = 119;
    static constexpr int kRadiotap = 127;
    static constexpr int kAvs = 163;
    static constexpr int kPpi = 192;

    struct Frame
    {
        const std::uint8_t *data = nullptr; // the 802.11 frame, FCS removed when announced
        std::size_t length = 0;
        int frequencyMHz = 0; // 0 when the header gave none
        std::optional<int> signalDbm;
        std::optional<int> noiseDbm;
        bool badFcs = false;
    };

    static bool isSupported(int linkType);
    // None when the packet is too short for its link-layer header or the type is unknown.
    static std::optional<Frame> strip(int linkType, const std::uint8_t *data, std::size_t length);

private:
    static std::optional<Frame> stripPrism(const std::uint8_t *data, std::size_t length);
    static std::optional<Frame> stripAvs(const std::uint8_t *data, std::size_t length);
    static std::optional<Frame> stripPpi(const std::uint8_t *data, std::size_t length, int depth);
    static std::optional<Frame> stripAny(int linkType, const std::uint8_t *data, std::size_t length,
                                         int depth);
};

// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/capture/RadiotapHeader.h"

#include <array>

namespace {
struct FieldShape
{
    std::uint8_t align;
    std::uint8_t size;
};

// Alignment and size of the fields of the radiotap namespace, by bit number; size 0 marks
// one whose size is not known here (and so ends the walk).
constexpr std::array<FieldShape, 28> kFields{{
    {8, 8},  // 0 TSFT
    {1, 1},  // 1 Flags
    {1, 1},  // 2 Rate
    {2, 4},  // 3 Channel: frequency, flags
    {2, 2},  // 4 FHSS
    {1, 1},  // 5 Antenna signal, dBm
    {1, 1},  // 6 Antenna noise, dBm
    {2, 2},  // 7 Lock quality
    {2, 2},  // 8 TX attenuation
    {2, 2},  // 9 dB TX attenuation
    {1, 1},  // 10 dBm TX power
    {1, 1},  // 11 Antenna
    {1, 1},  // 12 dB antenna signal
    {1, 1},  // 13 dB antenna noise
    {2, 2},  // 14 RX flags
    {2, 2},  // 15 TX flags
    {1, 1},  // 16 RTS retries
    {1, 1},  // 17 data retries
    {4, 8},  // 18 XChannel: flags, frequency, channel, max power
    {1, 3},  // 19 MCS
    {4, 8},  // 20 A-MPDU status
    {2, 12}, // 21 VHT
    {8, 12}, // 22 timestamp
    {2, 12}, // 23 HE
    {2, 12}, // 24 HE-MU
    {2, 6},  // 25 HE-MU-other-user
    {1, 1},  // 26 0-length PSDU
    {2, 4},  // 27 L-SIG
}};

constexpr unsigned kRadiotapNamespace = 29;
constexpr unsigned kVendorNamespace = 30;
constexpr unsigned kExtended = 31;

std::uint16_t le16(const std::uint8_t *p)
{
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

std::uint32_t le32(const std::uint8_t *p)
{
    return p[0] | (std::uint32_t(p[1]) << 8) | (std::uint32_t(p[2]) << 16) |
           (std::uint32_t(p[3]) << 24);
}
} // namespace

std::optional<RadiotapHeader> RadiotapHeader::parse(const std::uint8_t *data, std::size_t length)
{
    if (!data || length < 8 || data[0] != 0)
        return std::nullopt;
    RadiotapHeader h;
    h.length = le16(data + 2);
    if (h.length < 8 || h.length > length)
        return std::nullopt;
    const std::size_t end = h.length;

    // The present words: each has bit 31 set when another follows.
    std::size_t words = 1;
    while (le32(data + 4 + 4 * (words - 1)) & (1u << kExtended)) {
        if (4 + 4 * (words + 1) > end)
            return std::nullopt;
        ++words;
    }
    std::size_t at = 4 + 4 * words;

    bool inRadiotap = true; // false inside a vendor namespace, whose data was skipped whole
    unsigned wordInNamespace = 0;
    bool frequencyFromChannel = false;
    for (std::size_t w = 0; w < words; ++w) {
        const std::uint32_t present = le32(data + 4 + 4 * w);
        if (inRadiotap) {
            for (unsigned bit = 0; bit < kRadiotapNamespace; ++bit) {
                if (!(present & (1u << bit)))
                    continue;
                const unsigned id = wordInNamespace * 32 + bit;
                if (id >= kFields.size() || kFields[id].size == 0)
                    return h; // unknown size: nothing after it can be located
                const FieldShape shape = kFields[id];
                at = (at + shape.align - 1) / shape.align * shape.align;
                if (at + shape.size > end)
                    return h;
                const std::uint8_t *f = data + at;
                switch (id) {
                case 1:
                    h.hasFcs = f[0] & 0x10;
                    h.badFcs = f[0] & 0x40;
                    break;
                case 3:
                    if (le16(f) != 0) {
                        h.frequencyMHz = le16(f);
                        frequencyFromChannel = true;
                    }
                    break;
                case 5:
                    if (!h.signalDbm)
                        h.signalDbm = static_cast<std::int8_t>(f[0]);
                    break;
                case 6:
                    if (!h.noiseDbm)
                        h.noiseDbm = static_cast<std::int8_t>(f[0]);
                    break;
                case 18:
                    if (!frequencyFromChannel && le16(f + 4) != 0)
                        h.frequencyMHz = le16(f + 4);
                    break;
                default:
                    break;
                }
                at += shape.size;
            }
        }
        if (present & (1u << kRadiotapNamespace)) {
            inRadiotap = true;
            wordInNamespace = 0;
        } else if (present & (1u << kVendorNamespace)) {
            // OUI (3), sub-namespace (1), skip length (2), then that many bytes of vendor data.
            at = (at + 1) / 2 * 2;
            if (at + 6 > end)
                return h;
            at += 6 + le16(data + at + 4);
            inRadiotap = false;
            wordInNamespace = 0;
        } else {
            ++wordInNamespace;
        }
    }
    return h;
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/capture/LinkLayer.h"

#include "wireless/capture/RadiotapHeader.h"
#include "wireless/ie/FrequencyPlan.h"

namespace {
std::uint16_t le16(const std::uint8_t *p)
{
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

std::uint32_t le32(const std::uint8_t *p)
{
    return p[0] | (std::uint32_t(p[1]) << 8) | (std::uint32_t(p[2]) << 16) |
           (std::uint32_t(p[3]) << 24);
}

std::uint32_t be32(const std::uint8_t *p)
{
    return (std::uint32_t(p[0]) << 24) | (std::uint32_t(p[1]) << 16) | (std::uint32_t(p[2]) << 8) |
           p[3];
}

// Prism and AVS headers come from drivers that fill fields loosely; take a level only when it
// looks like dBm.
std::optional<int> plausibleDbm(std::int32_t value)
{
    if (value >= -127 && value <= -1)
        return value;
    return std::nullopt;
}

int frequencyOfChannel(std::uint32_t channel)
{
    if (channel == 0 || channel > 255)
        return 0;
    const int number = static_cast<int>(channel);
    return FrequencyPlan::frequencyForChannel(number, FrequencyPlan::bandForChannel(number));
}
} // namespace

bool LinkLayer::isSupported(int linkType)
{
    return linkType == kPlain80211 || linkType == kPrism || linkType == kRadiotap ||
           linkType == kAvs || linkType == kPpi;
}

std::optional<LinkLayer::Frame> LinkLayer::strip(int linkType, const std::uint8_t *data,
                                                 std::size_t length)
{
    if (!data)
        return std::nullopt;
    return stripAny(linkType, data, length, 0);
}

std::optional<LinkLayer::Frame> LinkLayer::stripAny(int linkType, const std::uint8_t *data,
                                                    std::size_t length, int depth)
{
    switch (linkType) {
    case kPlain80211:
        return Frame{data, length, 0, std::nullopt, std::nullopt, false};
    case kRadiotap: {
        const std::optional<RadiotapHeader> h = RadiotapHeader::parse(data, length);
        if (!h)
            return std::nullopt;
        Frame f{data + h->length, length - h->length, h->frequencyMHz,
                h->signalDbm,     h->noiseDbm,        h->badFcs};
        if (h->hasFcs)
            f.length = f.length >= 4 ? f.length - 4 : 0;
        return f;
    }
    case kPrism:
        return stripPrism(data, length);
    case kAvs:
        return stripAvs(data, length);
    case kPpi:
        return stripPpi(data, length, depth);
    default:
        return std::nullopt;
    }
}

// Prism monitor header: message code, message length, device name (16), then ten items of
// did (4), status (2), length (2), data (4) in a fixed order: host time, MAC time, channel,
// RSSI, signal quality, signal, noise, rate, is-TX, frame length. Written in the capturing
// host's byte order, told by the message code (0x41 or 0x44 in the low byte).
std::optional<LinkLayer::Frame> LinkLayer::stripPrism(const std::uint8_t *data, std::size_t length)
{
    constexpr std::size_t kItems = 24;
    if (length < kItems + 10 * 12)
        return std::nullopt;
    const bool little = data[0] != 0;
    auto u32 = [little](const std::uint8_t *p) { return little ? le32(p) : be32(p); };
    const std::uint32_t headerLength = u32(data + 4);
    if (headerLength < kItems + 10 * 12 || headerLength > length)
        return std::nullopt;
    auto item = [&](int index) -> std::optional<std::int32_t> {
        const std::uint8_t *p = data + kItems + 12 * index;
        const std::uint16_t status =
            little ? le16(p + 4) : static_cast<std::uint16_t>(p[4] << 8 | p[5]);
        if (status != 0)
            return std::nullopt; // "no value"
        return static_cast<std::int32_t>(u32(p + 8));
    };
    Frame f{data + headerLength, length - headerLength, 0, std::nullopt, std::nullopt, false};
    if (const auto channel = item(2))
        f.frequencyMHz = frequencyOfChannel(static_cast<std::uint32_t>(*channel));
    if (const auto rssi = item(3))
        f.signalDbm = plausibleDbm(*rssi);
    if (const auto noise = item(6))
        f.noiseDbm = plausibleDbm(*noise);
    return f;
}

// AVS capture header, big-endian: version 0x8021100x, header length, MAC time (8), host time
// (8), PHY type, channel, data rate, antenna, priority, SSI type, SSI signal, SSI noise,
// preamble, encoding. SSI type 2 means the levels are in dBm.
std::optional<LinkLayer::Frame> LinkLayer::stripAvs(const std::uint8_t *data, std::size_t length)
{
    if (length < 64 || (be32(data) & 0xFFFFFFF0u) != 0x80211000u)
        return std::nullopt;
    const std::uint32_t headerLength = be32(data + 4);
    if (headerLength < 64 || headerLength > length)
        return std::nullopt;
    Frame f{data + headerLength, length - headerLength, frequencyOfChannel(be32(data + 28)),
            std::nullopt,        std::nullopt,          false};
    if (be32(data + 44) == 2) {
        f.signalDbm = plausibleDbm(static_cast<std::int32_t>(be32(data + 48)));
        f.noiseDbm = plausibleDbm(static_cast<std::int32_t>(be32(data + 52)));
    }
    return f;
}

// Per-Packet Information: version, flags, header length (LE), inner link type (LE), then
// fields of type (2), length (2), data. The 802.11-Common field (type 2) carries TSFT (8),
// flags (2, bit 0: FCS present), rate (2), frequency (2), channel flags (2), FHSS (2), signal
// and noise (dBm, one byte each).
std::optional<LinkLayer::Frame> LinkLayer::stripPpi(const std::uint8_t *data, std::size_t length,
                                                    int depth)
{
    if (length < 8 || data[0] != 0 || depth > 0)
        return std::nullopt;
    const bool aligned = data[1] & 0x01;
    const std::size_t headerLength = le16(data + 2);
    const int inner = static_cast<int>(le32(data + 4));
    if (headerLength < 8 || headerLength > length)
        return std::nullopt;
    int frequency = 0;
    std::optional<int> signal;
    std::optional<int> noise;
    bool hasFcs = false;
    std::size_t at = 8;
    while (at + 4 <= headerLength) {
        const std::uint16_t type = le16(data + at);
        const std::size_t fieldLength = le16(data + at + 2);
        if (fieldLength > headerLength - at - 4)
            break;
        const std::uint8_t *field = data + at + 4;
        if (type == 2 && fieldLength >= 20) {
            hasFcs = le16(field + 8) & 0x0001;
            frequency = le16(field + 12);
            // -128 and 0 are what writers put in when they have no reading.
            const auto level = [](std::uint8_t b) -> std::optional<int> {
                const int v = static_cast<std::int8_t>(b);
                return v > -128 && v < 0 ? std::optional<int>(v) : std::nullopt;
            };
            signal = level(field[18]);
            noise = level(field[19]);
        }
        at += 4 + fieldLength;
        if (aligned)
            at = (at + 3) / 4 * 4;
    }
    std::optional<Frame> f = stripAny(inner, data + headerLength, length - headerLength, depth + 1);
    if (!f)
        return std::nullopt;
    if (frequency != 0 && f->frequencyMHz == 0)
        f->frequencyMHz = frequency;
    if (!f->signalDbm)
        f->signalDbm = signal;
    if (!f->noiseDbm)
        f->noiseDbm = noise;
    if (hasFcs)
        f->length = f->length >= 4 ? f->length - 4 : 0;
    return f;
}

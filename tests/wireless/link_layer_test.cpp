// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ElementText.h"
#include "wireless/capture/LinkLayer.h"
#include "wireless/capture/ManagementFrame.h"

#include <QtEndian>

#include <gtest/gtest.h>

namespace {
const std::uint8_t *bytes(const QByteArray &b)
{
    return reinterpret_cast<const std::uint8_t *>(b.constData());
}

void put32(QByteArray &b, std::uint32_t v, bool big = false)
{
    char raw[4];
    if (big)
        qToBigEndian(v, raw);
    else
        qToLittleEndian(v, raw);
    b.append(raw, 4);
}

// A Prism header in the writer's byte order: channel 6, RSSI -70, noise item marked absent.
QByteArray prismHeader(bool big)
{
    QByteArray h;
    put32(h, 0x44, big);
    put32(h, 144, big);
    h.append(QByteArray("wlan0").leftJustified(16, '\0'));
    const std::int32_t values[10] = {1, 2, 6, -70, 0, 40, -95, 2, 0, 60};
    for (int i = 0; i < 10; ++i) {
        put32(h, std::uint32_t((i + 1) << 16 | 0x44), big);
        const std::uint16_t status = i == 6 ? 1 : 0;
        const std::uint16_t len = 4;
        h.append(big ? char(status >> 8) : char(status)).append(big ? char(status) : char(0));
        h.append(big ? char(0) : char(len)).append(big ? char(len) : char(0));
        put32(h, std::uint32_t(values[i]), big);
    }
    return h;
}

QByteArray avsHeader(std::uint32_t ssiType)
{
    QByteArray h;
    for (std::uint32_t v : {0x80211001u, 64u, 0u, 0u, 0u, 0u, 1u, 36u, 120u, 0u, 0u, ssiType,
                            std::uint32_t(-52), std::uint32_t(-97), 0u, 0u})
        put32(h, v, true);
    return h;
}

QByteArray ppiHeader(int inner, bool fcs)
{
    QByteArray common = ElementText::fromHex("0000000000000000"); // TSFT
    common += ElementText::fromHex(fcs ? "0100" : "0000");        // flags
    common += ElementText::fromHex("0c00 3c14 4001 0000");        // rate, 5180 MHz, ...
    common += ElementText::fromHex("c0 80");                      // -64 dBm, noise "none"
    QByteArray h = ElementText::fromHex("00 00");
    QByteArray fields = ElementText::fromHex("0200 1400") + common;
    char len[2];
    qToLittleEndian(std::uint16_t(8 + fields.size()), len);
    h.append(len, 2);
    put32(h, std::uint32_t(inner));
    return h + fields;
}

const QByteArray kPayload = ElementText::fromHex("80000000 ffffffffffff 0211223344 55");
} // namespace

TEST(LinkLayer, RadiotapHeaders)
{
    const struct
    {
        const char *name;
        const char *hex;
        std::size_t offset; // 0: rejected
        std::size_t length;
        int frequency;
        std::optional<int> signal;
        std::optional<int> noise;
    } rows[] = {
        {"flags channel signal noise with fcs",
         "00 00 1000 6a000000 10 00 8509 a000 c4 a2 0102030405060708", 16, 4, 2437, -60, -94},
        {"extended bitmap", "00 00 0d00 20000080 00000000 ba 0102", 13, 2, 0, -70, std::nullopt},
        {"vendor namespace skipped",
         "00 00 1b00 200000c0 010000a0 40000000 c4 00 001122 01 0200 eeee a2 01", 27, 1, 0, -60,
         -94},
        {"unknown field stops the walk", "00 00 1000 20000010 c4 00000000000000 0102", 16, 2, 0,
         -60, std::nullopt},
        {"xchannel", "00 00 1000 00000400 00000000 3c14 24 00 0102", 16, 2, 5180, std::nullopt,
         std::nullopt},
        // Field 9 (two bytes, aligned to two) sits between noise and xchannel.
        {"aligned fields before xchannel",
         "00 00 1400 60020400 c4 a2 0000 00000000 3c14 24 00 0102", 20, 2, 5180, -60, -94},
        {"two present words and nothing else", "00 00 0c00 00000080 00000000 0102", 12, 2, 0,
         std::nullopt, std::nullopt},
        {"header longer than the packet", "00 00 4000 00000000 0102", 0, 0, 0, {}, {}},
        {"header length below 8", "00 00 0400 00000000", 0, 0, 0, {}, {}},
        {"version 1", "01 00 0800 00000000", 0, 0, 0, {}, {}},
        {"too short", "00 00 08", 0, 0, 0, {}, {}},
        {"endless extension bits", "00 00 1000 00000080 00000080 00000080", 0, 0, 0, {}, {}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const QByteArray packet = ElementText::fromHex(row.hex);
        const auto f = LinkLayer::strip(LinkLayer::kRadiotap, bytes(packet), packet.size());
        ASSERT_EQ(f.has_value(), row.offset != 0);
        if (!f)
            continue;
        EXPECT_EQ(f->data - bytes(packet), std::ptrdiff_t(row.offset));
        EXPECT_EQ(f->length, row.length);
        EXPECT_EQ(f->frequencyMHz, row.frequency);
        EXPECT_EQ(f->signalDbm, row.signal);
        EXPECT_EQ(f->noiseDbm, row.noise);
    }
}

TEST(LinkLayer, PrismAvsPpiAndPlain)
{
    for (bool big : {false, true}) {
        SCOPED_TRACE(big ? "prism big-endian" : "prism little-endian");
        const QByteArray packet = prismHeader(big) + kPayload;
        const auto f = LinkLayer::strip(LinkLayer::kPrism, bytes(packet), packet.size());
        ASSERT_TRUE(f);
        EXPECT_EQ(f->length, std::size_t(kPayload.size()));
        EXPECT_EQ(f->frequencyMHz, 2437);
        EXPECT_EQ(f->signalDbm, -70);
        EXPECT_FALSE(f->noiseDbm); // marked absent
        EXPECT_FALSE(LinkLayer::strip(LinkLayer::kPrism, bytes(packet), 100));
    }
    {
        const QByteArray packet = avsHeader(2) + kPayload;
        const auto f = LinkLayer::strip(LinkLayer::kAvs, bytes(packet), packet.size());
        ASSERT_TRUE(f);
        EXPECT_EQ(f->length, std::size_t(kPayload.size()));
        EXPECT_EQ(f->frequencyMHz, 5180);
        EXPECT_EQ(f->signalDbm, -52);
        EXPECT_EQ(f->noiseDbm, -97);
        const QByteArray normalised = avsHeader(1) + kPayload; // not dBm: ignored
        EXPECT_FALSE(
            LinkLayer::strip(LinkLayer::kAvs, bytes(normalised), normalised.size())->signalDbm);
        QByteArray wrongVersion = packet;
        wrongVersion[0] = 0;
        EXPECT_FALSE(LinkLayer::strip(LinkLayer::kAvs, bytes(wrongVersion), wrongVersion.size()));
    }
    {
        const QByteArray packet = ppiHeader(LinkLayer::kPlain80211, true) + kPayload + "FCS!";
        const auto f = LinkLayer::strip(LinkLayer::kPpi, bytes(packet), packet.size());
        ASSERT_TRUE(f);
        EXPECT_EQ(f->length, std::size_t(kPayload.size()));
        EXPECT_EQ(f->frequencyMHz, 5180);
        EXPECT_EQ(f->signalDbm, -64);
        EXPECT_FALSE(f->noiseDbm);
        // Aligned fields: an odd-length field is padded to four bytes; noise 0 is no reading.
        const QByteArray aligned =
            ElementText::fromHex("00 01 2800 69000000 0300 0200 abcd 0000 0200 1400") +
            ElementText::fromHex("0000000000000000 0000 0c00 3c14 4001 0000 c0 00") + kPayload;
        const auto a = LinkLayer::strip(LinkLayer::kPpi, bytes(aligned), aligned.size());
        ASSERT_TRUE(a);
        EXPECT_EQ(std::tuple(a->frequencyMHz, a->signalDbm, a->noiseDbm),
                  std::tuple(5180, std::optional(-64), std::optional<int>()));
        const QByteArray nested =
            ppiHeader(LinkLayer::kPpi, false) + ppiHeader(105, false) + kPayload;
        EXPECT_FALSE(LinkLayer::strip(LinkLayer::kPpi, bytes(nested), nested.size()));
    }
    const auto plain = LinkLayer::strip(LinkLayer::kPlain80211, bytes(kPayload), kPayload.size());
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->length, std::size_t(kPayload.size()));
    EXPECT_FALSE(LinkLayer::strip(1, bytes(kPayload), kPayload.size())); // Ethernet
}

TEST(ManagementFrame, OnlyWholeBeaconsAndProbeResponses)
{
    const QByteArray fixed = ElementText::fromHex("0102030405060708 6400 1104");
    const QByteArray addresses =
        ElementText::fromHex("ffffffffffff 02aabbccdd01 02aabbccdd01 1000");
    const struct
    {
        const char *name;
        QByteArray frame;
        bool ok;
        int subtype;
        std::size_t elements;
    } rows[] = {
        {"beacon",
         ElementText::fromHex("8000 0000") + addresses + fixed + ElementText::fromHex("000158"),
         true, ManagementFrame::kBeacon, 3},
        {"probe response with HT control",
         ElementText::fromHex("5080 0000") + addresses + "HTC!" + fixed, true,
         ManagementFrame::kProbeResponse, 0},
        {"probe request", ElementText::fromHex("4000 0000") + addresses + fixed, false, 0, 0},
        {"data frame", ElementText::fromHex("0800 0000") + addresses + fixed, false, 0, 0},
        {"protected", ElementText::fromHex("8040 0000") + addresses + fixed, false, 0, 0},
        {"fixed fields cut", ElementText::fromHex("8000 0000") + addresses + fixed.left(11), false,
         0, 0},
        {"version 1", ElementText::fromHex("8100 0000") + addresses + fixed, false, 0, 0},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const auto f = ManagementFrame::parse(bytes(row.frame), row.frame.size());
        ASSERT_EQ(f.has_value(), row.ok);
        if (!f)
            continue;
        EXPECT_EQ(f->subtype, row.subtype);
        EXPECT_EQ(f->bssid, ElementText::fromHex("02aabbccdd01"));
        EXPECT_EQ(f->timestamp, 0x0807060504030201u);
        EXPECT_EQ(f->beaconInterval, 100);
        EXPECT_EQ(f->capability, 0x0411);
        EXPECT_EQ(f->elementsLength, row.elements);
    }
}

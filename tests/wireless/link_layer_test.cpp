// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ElementText.h"
#include "support/ReferenceRows.h"
#include "wireless/capture/LinkLayer.h"
#include "wireless/capture/ManagementFrame.h"

#include <QDataStream>
#include <QIODevice>

#include <gtest/gtest.h>

namespace {
const std::uint8_t *bytes(const QByteArray &b)
{
    return reinterpret_cast<const std::uint8_t *>(b.constData());
}

// A Prism header in the writer's byte order: channel 6, RSSI -70, noise item marked absent.
QByteArray prismHeader(bool big)
{
    QByteArray h;
    QDataStream s(&h, QIODevice::WriteOnly);
    s.setByteOrder(big ? QDataStream::BigEndian : QDataStream::LittleEndian);
    s << quint32(0x44) << quint32(144);
    s.writeRawData(QByteArray("wlan0").leftJustified(16, '\0').constData(), 16);
    const qint32 values[10] = {1, 2, 6, -70, 0, 40, -95, 2, 0, 60};
    for (int i = 0; i < 10; ++i) // item id, status (1: absent), length, value
        s << quint32((i + 1) << 16 | 0x44) << quint16(i == 6 ? 1 : 0) << quint16(4) << values[i];
    return h;
}

QByteArray avsHeader(std::uint32_t ssiType)
{
    QByteArray h;
    QDataStream s(&h, QIODevice::WriteOnly);
    for (std::uint32_t v : {0x80211001u, 64u, 0u, 0u, 0u, 0u, 1u, 36u, 120u, 0u, 0u, ssiType,
                            std::uint32_t(-52), std::uint32_t(-97), 0u, 0u})
        s << v;
    return h;
}

QByteArray ppiHeader(int inner, bool fcs)
{
    const QByteArray fields = ElementText::fromHex("0200 1400 0000000000000000") + // TSFT
                              ElementText::fromHex(fcs ? "0100" : "0000") +        // flags
                              ElementText::fromHex("0c00 3c14 4001 0000") + // rate, 5180 MHz, ...
                              ElementText::fromHex("c0 80");                // -64 dBm, noise "none"
    QByteArray h = ElementText::fromHex("00 00");
    QDataStream s(&h, QIODevice::Append);
    s.setByteOrder(QDataStream::LittleEndian);
    s << quint16(8 + fields.size()) << quint32(inner);
    return h + fields;
}

const QByteArray kPayload = ElementText::fromHex("80000000 ffffffffffff 0211223344 55");
} // namespace

// Radiotap headers and 802.11 management frames, hand-made and damaged (data/radiotap.tsv,
// data/frames.tsv).
TEST(LinkLayer, RadiotapHeadersAndManagementFrames)
{
    for (const ReferenceRows::Row &row : ReferenceRows::table("radiotap")) {
        SCOPED_TRACE(row["name"].toStdString());
        const QByteArray packet = ElementText::fromHex(qPrintable(row["hex"]));
        const auto f = LinkLayer::strip(LinkLayer::kRadiotap, bytes(packet), packet.size());
        ASSERT_EQ(f.has_value(), row.number("offset") != 0);
        if (f) {
            EXPECT_EQ(std::tuple(f->data - bytes(packet), f->length, f->frequencyMHz, f->signalDbm,
                                 f->noiseDbm),
                      std::tuple(std::ptrdiff_t(row.number("offset")),
                                 std::size_t(row.number("length")), row.number("frequency"),
                                 row.optional("signal"), row.optional("noise")));
        }
    }
    for (const ReferenceRows::Row &row : ReferenceRows::table("frames")) {
        SCOPED_TRACE(row["name"].toStdString());
        const QByteArray frame = ElementText::fromHex(qPrintable(row["hex"]));
        const auto f = ManagementFrame::parse(bytes(frame), frame.size());
        ASSERT_EQ(f.has_value(), row["ok"] == u"1");
        if (f) {
            EXPECT_EQ(std::tuple(f->subtype, f->bssid, f->timestamp, f->beaconInterval,
                                 f->capability, f->elementsLength),
                      std::tuple(row.number("subtype"), ElementText::fromHex("02aabbccdd01"),
                                 0x0807060504030201u, 100, 0x0411,
                                 std::size_t(row.number("elements"))));
        }
    }
}

TEST(LinkLayer, PrismAvsPpiAndPlain)
{
    using Reading = std::tuple<std::size_t, int, std::optional<int>, std::optional<int>>;
    auto strip = [](int link, const QByteArray &packet,
                    qsizetype cut = -1) -> std::optional<Reading> {
        const auto f = LinkLayer::strip(link, bytes(packet), cut < 0 ? packet.size() : cut);
        if (!f)
            return std::nullopt;
        return Reading(f->length, f->frequencyMHz, f->signalDbm, f->noiseDbm);
    };
    const std::size_t payload = std::size_t(kPayload.size());
    for (bool big : {false, true}) {
        // Prism in either byte order; the noise item is marked absent.
        const QByteArray packet = prismHeader(big) + kPayload;
        EXPECT_EQ(strip(LinkLayer::kPrism, packet), Reading(payload, 2437, -70, std::nullopt));
        EXPECT_FALSE(strip(LinkLayer::kPrism, packet, 100));
    }
    const QByteArray avs = avsHeader(2) + kPayload;
    EXPECT_EQ(strip(LinkLayer::kAvs, avs), Reading(payload, 5180, -52, -97));
    // Readings that are not in dBm are ignored; a wrong version is refused.
    EXPECT_EQ(strip(LinkLayer::kAvs, avsHeader(1) + kPayload),
              Reading(payload, 5180, std::nullopt, std::nullopt));
    EXPECT_FALSE(strip(LinkLayer::kAvs, QByteArray(1, '\0') + avs.mid(1)));

    const QByteArray ppi = ppiHeader(LinkLayer::kPlain80211, true) + kPayload + "FCS!";
    EXPECT_EQ(strip(LinkLayer::kPpi, ppi), Reading(payload, 5180, -64, std::nullopt));
    EXPECT_FALSE(strip(LinkLayer::kPpi, QByteArray(1, '\1') + ppi.mid(1))); // only version 0
    // Aligned fields: an odd-length field is padded to four bytes; noise 0 is no reading.
    const QByteArray aligned =
        ElementText::fromHex("00 01 2800 69000000 0300 0200 abcd 0000 0200 1400") +
        ElementText::fromHex("0000000000000000 0000 0c00 3c14 4001 0000 c0 00") + kPayload;
    EXPECT_EQ(strip(LinkLayer::kPpi, aligned), Reading(payload, 5180, -64, std::nullopt));
    EXPECT_FALSE(strip(LinkLayer::kPpi,
                       ppiHeader(LinkLayer::kPpi, false) + ppiHeader(105, false) + kPayload));
    EXPECT_EQ(strip(LinkLayer::kPlain80211, kPayload),
              Reading(payload, 0, std::nullopt, std::nullopt));
    EXPECT_FALSE(strip(1, kPayload)); // Ethernet
}

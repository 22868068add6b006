// SPDX-License-Identifier: GPL-3.0-or-later
// From decoded elements to the boundary's answers and the real channel layout; the tables are
// in data/.
#include "support/ElementText.h"
#include "support/ReferenceRows.h"
#include "wireless/CWTypes.h"
#include "wireless/ie/BssNetworkMapper.h"
#include "wireless/ie/ElementDecoder.h"
#include "wireless/ie/FrequencyPlan.h"

#include <gtest/gtest.h>

namespace {
BssElements decode(const ReferenceRows::Row &row)
{
    return ElementDecoder::decode(ElementText::fromHex(qPrintable(row["hex"])));
}
} // namespace

TEST(BssNetworkMapper, SecurityFromCapabilityAndSuites)
{
    for (const ReferenceRows::Row &row : ReferenceRows::table("security")) {
        SCOPED_TRACE(row["name"].toStdString());
        const unsigned s =
            BssNetworkMapper::securities(decode(row), std::uint16_t(row.number("capability")));
        EXPECT_EQ(s, ReferenceRows::bits(row["securities"]));
        EXPECT_EQ(BssNetworkMapper::securityMode(s), row.number("mode"));
    }
}

TEST(BssNetworkMapper, ChannelPhyAndWidth)
{
    for (const ReferenceRows::Row &row : ReferenceRows::table("channels")) {
        SCOPED_TRACE(row["name"].toStdString());
        const BssElements e = decode(row);
        ASSERT_TRUE(e.ok()) << ElementText::summary(e).toStdString();
        const CWChannel c = BssNetworkMapper::channel(e, row.number("frequency"));
        EXPECT_EQ(CWChannel(row.number("channel"), row.number("band"), row.number("width")), c);
        EXPECT_EQ(BssNetworkMapper::phyModes(e, c.channelBand()), ReferenceRows::bits(row["phy"]));
    }
}

TEST(BssNetworkMapper, NetworkDataFromObservation)
{
    const BssElements e = ElementDecoder::decode(
        ElementText::fromHex("00 04 43616665 01 08 82848b960c121824 03 01 0b 07 03 617220 "
                             "30 14 0100 000fac04 0100 000fac04 0100 000fac02 0000"));
    // BSSID, capability, beacon interval, frequency, signal, noise.
    using M = BssNetworkMapper;
    const BssObservation o(ElementText::fromHex("0012BF1232A9"),
                           M::kCapabilityPrivacy | M::kCapabilityIBSS, 100, 2462, -48, -91);
    const CWNetwork::Data d = BssNetworkMapper::networkData(e, o);
    EXPECT_EQ(std::tuple(d.ssidData, d.ssidPresent, d.bssid, d.rssiValue, d.noiseMeasurement),
              std::tuple(QByteArray("Cafe"), true, QStringLiteral("00:12:bf:12:32:a9"), -48, -91));
    EXPECT_EQ(d.wlanChannel, CWChannel(11, kCWChannelBand2GHz, kCWChannelWidth20MHz));
    EXPECT_EQ(
        std::tuple(d.securityMode, d.ibss, d.beaconInterval, d.countryCode),
        std::tuple(std::optional<int>(kCWSecurityModeWPA2_PSK), true, 100, QStringLiteral("AR")));

    // A hidden network keeps its raw (NUL) bytes but has no name.
    const CWNetwork::Data h = BssNetworkMapper::networkData(
        ElementDecoder::decode(ElementText::fromHex("00 02 0000 07 03 01 02 20")), {});
    EXPECT_EQ(std::tuple(h.ssidPresent, h.ssidData, h.beaconInterval, h.countryCode),
              std::tuple(false, QByteArray(2, '\0'), 0, QString())); // country: not letters
}

TEST(FrequencyPlan, ChannelsFrequenciesAndBlocks)
{
    for (const ReferenceRows::Row &row : ReferenceRows::table("frequencies")) {
        const int mhz = row.number("mhz"), channel = row.number("channel");
        EXPECT_EQ(FrequencyPlan::channelForFrequency(mhz), channel) << mhz;
        EXPECT_EQ(FrequencyPlan::bandForFrequency(mhz), row.number("band")) << mhz;
        if (channel != 0) {
            EXPECT_EQ(FrequencyPlan::frequencyForChannel(channel, row.number("band")), mhz);
        }
    }
    EXPECT_EQ(QList<int>({FrequencyPlan::bandForChannel(14), FrequencyPlan::bandForChannel(36),
                          FrequencyPlan::bandForChannel(0)}),
              QList<int>({kCWChannelBand2GHz, kCWChannelBand5GHz, kCWChannelBandUnknown}));
    for (const ReferenceRows::Row &row : ReferenceRows::table("blocks"))
        EXPECT_EQ(FrequencyPlan::blockCenter(row.number("channel"), row.number("band"),
                                             row.number("width")),
                  row.number("center"))
            << qPrintable(row["channel"] + u'/' + row["band"] + u'/' + row["width"]);
}

TEST(OperatingChannel, WidthAndCentresFromOperationElements)
{
    for (const ReferenceRows::Row &row : ReferenceRows::table("operating")) {
        SCOPED_TRACE(row["name"].toStdString());
        const BssElements e = decode(row);
        ASSERT_TRUE(e.ok()) << ElementText::summary(e).toStdString();
        const CWOperatingChannel c = BssNetworkMapper::operatingChannel(e, row.number("frequency"));
        EXPECT_EQ(std::tuple(c.primaryChannel, c.band, c.widthMHz, c.centerMHz[0], c.centerMHz[1]),
                  std::tuple(row.number("primary"), row.number("band"), row.number("width"),
                             row.number("center0"), row.number("center1")));
        EXPECT_EQ(c.widthText(), row["text"]);
        EXPECT_EQ(c.coversPrimary(), c.isKnown());
    }
}

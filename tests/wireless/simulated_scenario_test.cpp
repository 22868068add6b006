// SPDX-License-Identifier: GPL-3.0-or-later
// Reading scenario files: messages for bad ones, damaged ones, defaults and raw SSID bytes.
#include "support/ReferenceRows.h"
#include "wireless/CWTypes.h"
#include "wireless/simulated/SimLinkRate.h"
#include "wireless/simulated/SimulatedBackend.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {
const QString kIf = u"wlp2s0"_s;
} // namespace

// Scenario files that must be refused, each with a message naming the place and the reason
// (data/bad-scenarios.tsv).
TEST(SimulatedScenario, BadScenariosGiveClearMessages)
{
    for (const ReferenceRows::Row &row : ReferenceRows::table("bad-scenarios")) {
        QString text;
        EXPECT_FALSE(SimulatedBackend::fromJson(row["json"].toUtf8(), 1, &text))
            << qPrintable(row["json"]);
        EXPECT_TRUE(text.contains(row["message"]))
            << qPrintable(row["json"]) << "\n  gave: " << qPrintable(text);
    }
    QTemporaryDir dir;
    QString text;
    EXPECT_FALSE(SimulatedBackend::fromFile(dir.filePath(u"none.json"_s), 1, &text));
    EXPECT_TRUE(text.contains(u"none.json"_s));
}

TEST(SimulatedScenario, DefaultsAndRawSsidBytes)
{
    QString text;
    // The lowest allowed values load: an 8-character passphrase, 1 mW of transmit power.
    EXPECT_TRUE(SimulatedBackend::fromJson(
        R"({"interfaces": [{"name": "w", "txPowerMw": 1}], "accessPoints": [{"bssid":
        "02:00:00:00:00:01", "channel": 6, "position": [1, 2], "security": "wpa2-personal",
        "passphrase": "12345678"}]})",
        1, &text))
        << qPrintable(text);
    auto sim = SimulatedBackend::fromJson(R"({"accessPoints": [
        {"ssidHex": "41ff00e4", "bssid": "0A:00:00:00:00:01", "channel": 1, "position": [3, 0]}]})",
                                          5, &text);
    ASSERT_TRUE(sim) << qPrintable(text);
    EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(sim->interfaceNames(), QStringList{kIf});
    EXPECT_EQ(std::tuple(sim->powerOn(kIf), sim->bssid(kIf), sim->interfaceState(kIf),
                         sim->wlanChannel(kIf)->channelNumber()),
              std::tuple(true, std::optional<QString>(),
                         std::optional<int>(kCWInterfaceStateInactive), qint64(1)));
    const auto list = sim->scanForNetworks(kIf, {}, nullptr);
    ASSERT_EQ(list.size(), 1);
    EXPECT_EQ(list[0]->ssidData(), QByteArray::fromHex("41ff00e4"));
    EXPECT_EQ(list[0]->bssid(), u"0a:00:00:00:00:01"_s);
    EXPECT_TRUE(list[0]->supportsSecurity(kCWSecurityNone) &&
                list[0]->supportsPHYMode(kCWPHYMode11g));
}

// Where each access point sits on the air: its channel's block of its width, the second
// 80+80 segment, and the 6 GHz band a scenario names (its channel numbers overlap the others).
TEST(SimulatedScenario, RealChannelLayout)
{
    QString text;
    auto sim = SimulatedBackend::fromJson(R"({"accessPoints": [
        {"bssid": "02:00:00:00:00:01", "channel": 11, "width": 40, "position": [1, 0]},
        {"bssid": "02:00:00:00:00:02", "channel": 52, "phy": "a/n/ac", "width": 160, "position": [1, 0]},
        {"bssid": "02:00:00:00:00:03", "channel": 100, "phy": "a/n/ac", "width": 80,
         "secondSegment": 155, "position": [1, 0]},
        {"bssid": "02:00:00:00:00:04", "band": 6, "channel": 37, "width": 160, "position": [1, 0]},
        {"bssid": "02:00:00:00:00:05", "band": 6, "channel": 69, "phy": "ax/be", "width": 320,
         "position": [1, 0]}]})",
                                          1, &text);
    ASSERT_TRUE(sim) << qPrintable(text);
    const auto list = sim->scanForNetworks(kIf, {}, nullptr);
    ASSERT_EQ(list.size(), 5);
    const unsigned an = (1u << kCWPHYMode11a) | (1u << kCWPHYMode11n);
    const struct
    {
        int band, width, center0, center1, widthCode;
        unsigned phy;
    } expected[] = {
        {kCWChannelBand2GHz, 40, 2452, 0, kCWChannelWidth40MHz,
         (1u << kCWPHYMode11b) | (1u << kCWPHYMode11g) | (1u << kCWPHYMode11n)},
        {kCWChannelBand5GHz, 160, 5250, 0, kCWChannelWidth160MHz, an},
        {kCWChannelBand5GHz, 80, 5530, 5775, kCWChannelWidth80MHz, an},
        {kCWChannelBand6GHz, 160, 6185, 0, kCWChannelWidth160MHz, 0},
        {kCWChannelBand6GHz, 320, 6425, 0, kCWChannelWidth160MHz, 0},
    };
    for (int i = 0; i < 5; ++i) {
        const CWOperatingChannel &c = list[i]->operatingChannel();
        const CWChannel w = list[i]->wlanChannel();
        const auto &x = expected[i];
        EXPECT_EQ(std::tuple(c.primaryChannel, c.band, w.channelBand(), w.channelWidth(),
                             c.widthMHz, c.centerMHz[0], c.centerMHz[1], list[i]->data().phyModes),
                  std::tuple(w.channelNumber(), x.band, x.band, x.widthCode, x.width, x.center0,
                             x.center1, x.phy))
            << i;
        EXPECT_TRUE(c.coversPrimary()) << i;
    }
}

// The link rate follows the SNR thresholds of each modulation, the width and the streams.
TEST(SimulatedScenario, LinkRateSteps)
{
    const unsigned n = 1u << kCWPHYMode11n, g = 1u << kCWPHYMode11g, b = 1u << kCWPHYMode11b;
    const struct
    {
        unsigned phy;
        bool vht;
        int width, streams, snr;
        double mbps;
    } rows[] = {
        {n, false, kCWChannelWidth20MHz, 1, 5, 13 * 10 / 9.0},      // MCS 1 from 5 dB
        {n, false, kCWChannelWidth40MHz, 1, 15, 81 * 10 / 9.0},     // MCS 4
        {n, false, kCWChannelWidth20MHz, 1, 40, 65 * 10 / 9.0},     // HT stops at MCS 7
        {0, true, kCWChannelWidth80MHz, 3, 31, 390 * 10 / 9.0 * 3}, // VHT MCS 9
        {0, true, kCWChannelWidth160MHz, 2, 31, 780 * 10 / 9.0 * 2},
        {g, false, kCWChannelWidth20MHz, 1, 6, 12},
        {b, false, kCWChannelWidth20MHz, 1, 6, 5.5},
    };
    for (const auto &row : rows)
        EXPECT_NEAR(SimLinkRate::transmitRate(row.phy, row.vht, row.width, row.streams, row.snr),
                    row.mbps, 1e-9)
            << row.snr << " dB, width " << row.width;
}

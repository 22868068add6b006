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
    // Its real layout: the 20 MHz block of channel 1.
    EXPECT_EQ(list[0]->operatingChannel().centerMHz, (std::array{2412, 0}));
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

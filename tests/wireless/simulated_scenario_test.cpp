// SPDX-License-Identifier: GPL-3.0-or-later
// Reading scenario files: messages for bad ones, damaged ones, defaults and raw SSID bytes.
#include "wireless/CWTypes.h"
#include "wireless/simulated/SimLinkRate.h"
#include "wireless/simulated/SimulatedBackend.h"

#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {
const QString kIf = QStringLiteral("wlp2s0");
} // namespace

TEST(SimulatedScenario, BadScenariosGiveClearMessages)
{
    const QByteArray ap = R"("bssid": "02:00:00:00:00:01", "channel": 6, "position": [1, 2])";
    const struct
    {
        QByteArray json;
        const char *message;
    } rows[] = {
        {"not json", "not valid JSON"},
        {"[1, 2]", "expected an object at the top"},
        {"{}", "accessPoints: missing"},
        {R"({"accessPoints": {}})", "accessPoints: expected a list, found an object"},
        {R"({"accessPoints": [7]})", "accessPoints[0]: expected an object, found a number"},
        {R"({"accessPoints": [{"channel": 6, "position": [0, 0]}]})",
         "accessPoints[0].bssid: missing"},
        {R"({"accessPoints": [{"bssid": "02:00:00:00:00:01", "channel": "six", "position": [0, 0]}]})",
         "accessPoints[0].channel: expected a number, found a text"},
        {R"({"accessPoints": [{"bssid": "02:00:00:00:00:01", "channel": 15, "position": [0, 0]}]})",
         "accessPoints[0].channel: 15 is no 2.4 or 5 GHz channel"},
        {R"({"accessPoints": [{"bssid": "02-00-00-00-00-01", "channel": 6, "position": [0, 0]}]})",
         "accessPoints[0].bssid: expected six colon-separated"},
        {"{\"accessPoints\": [{" + ap + "}, {" + ap + "}]}",
         "accessPoints[1].bssid: 02:00:00:00:00:01 is listed twice"},
        {R"({"accessPoints": [{"bssid": "02:00:00:00:00:01", "channel": 6, "position": "here"}]})",
         "accessPoints[0].position: expected a position"},
        {"{\"accessPoints\": [{" + ap + R"(, "security": "wpa3"}]})",
         "accessPoints[0].security: \"wpa3\" is not one of"},
        {"{\"accessPoints\": [{" + ap + R"(, "security": "wpa2-personal"}]})",
         "accessPoints[0].passphrase: missing"},
        {"{\"accessPoints\": [{" + ap + R"(, "security": "wep", "passphrase": "abcdef"}]})",
         "a WEP key has 5 or 13"},
        {R"({"accessPoints": [{"bssid": "02:00:00:00:00:01", "channel": 36, "width": 80, "position": [0, 0]}]})",
         "accessPoints[0].width: 80 MHz needs 802.11ac"},
        {"{\"accessPoints\": [{" + ap + R"(, "phy": "a/n"}]})", "802.11a and ac are 5 GHz only"},
        {"{\"accessPoints\": [{" + ap + R"(, "band": 6}]})",
         "accessPoints[0].channel: 6 is no 6 GHz"},
        {"{\"accessPoints\": [{" + ap + R"(, "band": 3}]})",
         "accessPoints[0].band: expected 2.4, 5 or 6"},
        {R"({"accessPoints": [{"bssid": "02:00:00:00:00:01", "band": 6, "channel": 5, "phy": "a/ax", "position": [0, 0]}]})",
         "accessPoints[0].phy: 6 GHz carries only 802.11ax and be"},
        {R"({"accessPoints": [{"bssid": "02:00:00:00:00:01", "band": 6, "channel": 5, "width": 320, "position": [0, 0]}]})",
         "accessPoints[0].width: 320 MHz needs 802.11be"},
        {R"({"accessPoints": [{"bssid": "02:00:00:00:00:01", "channel": 140, "phy": "a/n/ac", "width": 160, "position": [0, 0]}]})",
         "accessPoints[0].width: channel 140 is in no 160 MHz block"},
        {R"({"accessPoints": [{"bssid": "02:00:00:00:00:01", "channel": 36, "phy": "a/n/ac", "width": 80, "secondSegment": 58, "position": [0, 0]}]})",
         "accessPoints[0].secondSegment: 58 touches the first segment (centre 42)"},
        {R"({"accessPoints": [{"bssid": "02:00:00:00:00:01", "channel": 36, "phy": "a/n/ac", "width": 80, "secondSegment": 150, "position": [0, 0]}]})",
         "accessPoints[0].secondSegment: 150 is the centre of no 80 MHz block"},
        {"{\"accessPoints\": [{" + ap + R"(, "secondSegment": 155}]})",
         "only an 80 MHz network on 5 or 6 GHz has a second segment"},
        {"{\"accessPoints\": [{" + ap + R"(, "ssid": "123456789012345678901234567890123"}]})",
         "longer than 32 bytes"},
        {"{\"accessPoints\": [{" + ap + R"(, "vanishAt": 30}]})",
         "accessPoints[0].vanishAt: unknown field"},
        {"{\"accessPoints\": [{" + ap + R"(, "onFor": 30}]})", "onFor and offFor go together"},
        {"{\"accessPoints\": [{" + ap + R"(, "stored": {"profile": "Work"}}]})",
         "no user 802.1X profile is named \"Work\""},
        {R"({"accessPoints": [], "interfaces": []})", "interfaces: needs at least one"},
        {R"({"accessPoints": [], "interfaces": [{"name": "wlan0", "associatedTo": "02:00:00:00:00:09"}]})",
         "interfaces[0].associatedTo: no access point has the BSSID 02:00:00:00:00:09"},
        {R"({"accessPoints": [], "interfaces": [{"name": "wl/an0"}]})",
         "interfaces[0].name: expected 1 to 15"},
        {R"({"accessPoints": [], "interfaces": [{"name": "w", "supportedChannels": [1, 1]}]})",
         "interfaces[0].supportedChannels[1]: channel 1 is listed twice"},
        {R"({"accessPoints": [], "interfaces": [{"name": "w", "supportedChannels": [1e300]}]})",
         "interfaces[0].supportedChannels[0]: expected a 2.4 or 5 GHz channel number"},
        {R"({"accessPoints": [], "interfaces": [{"name": "w", "supportedChannels": [1], "channel": 6}]})",
         "interfaces[0].channel: 6 is not among supportedChannels"},
        {R"({"accessPoints": [], "radio": {"pathLossExponent": -1}})",
         "radio.pathLossExponent: -1 is outside"},
        {R"({"accessPoints": [], "faults": {"scanErrorEvery": 1.5}})",
         "faults.scanErrorEvery: expected a whole number"},
    };
    for (const auto &row : rows) {
        QString text;
        EXPECT_FALSE(SimulatedBackend::fromJson(row.json, 1, &text)) << row.json.constData();
        EXPECT_TRUE(text.contains(QString::fromUtf8(row.message)))
            << row.json.constData() << "\n  gave: " << qPrintable(text);
    }

    QTemporaryDir dir;
    QString text;
    EXPECT_FALSE(SimulatedBackend::fromFile(dir.filePath(QStringLiteral("none.json")), 1, &text));
    EXPECT_TRUE(text.contains(QStringLiteral("none.json")));
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
    EXPECT_TRUE(sim->powerOn(kIf));
    EXPECT_FALSE(sim->bssid(kIf));
    EXPECT_EQ(sim->interfaceState(kIf), kCWInterfaceStateInactive);
    EXPECT_EQ(sim->wlanChannel(kIf)->channelNumber(), 1);
    const auto list = sim->scanForNetworks(kIf, {}, nullptr);
    ASSERT_EQ(list.size(), 1);
    EXPECT_EQ(list[0]->ssidData(), QByteArray::fromHex("41ff00e4"));
    EXPECT_EQ(list[0]->bssid(), QStringLiteral("0a:00:00:00:00:01"));
    EXPECT_TRUE(list[0]->supportsSecurity(kCWSecurityNone));
    EXPECT_TRUE(list[0]->supportsPHYMode(kCWPHYMode11g));
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
    const struct
    {
        int band;
        int width;
        int center0;
        int center1;
        int widthCode;
        unsigned phy;
    } expected[] = {
        {kCWChannelBand2GHz, 40, 2452, 0, kCWChannelWidth40MHz,
         (1u << kCWPHYMode11b) | (1u << kCWPHYMode11g) | (1u << kCWPHYMode11n)},
        {kCWChannelBand5GHz, 160, 5250, 0, kCWChannelWidth160MHz,
         (1u << kCWPHYMode11a) | (1u << kCWPHYMode11n)},
        {kCWChannelBand5GHz, 80, 5530, 5775, kCWChannelWidth80MHz,
         (1u << kCWPHYMode11a) | (1u << kCWPHYMode11n)},
        {kCWChannelBand6GHz, 160, 6185, 0, kCWChannelWidth160MHz, 0},
        {kCWChannelBand6GHz, 320, 6425, 0, kCWChannelWidth160MHz, 0},
    };
    for (int i = 0; i < 5; ++i) {
        SCOPED_TRACE(i);
        const CWOperatingChannel &c = list[i]->operatingChannel();
        const CWChannel w = list[i]->wlanChannel();
        EXPECT_EQ(c.primaryChannel, w.channelNumber());
        EXPECT_EQ(std::tuple(c.band, w.channelBand(), w.channelWidth(), c.widthMHz),
                  std::tuple(expected[i].band, expected[i].band, expected[i].widthCode,
                             expected[i].width));
        EXPECT_EQ(c.centerMHz, (std::array{expected[i].center0, expected[i].center1}));
        EXPECT_EQ(list[i]->data().phyModes, expected[i].phy);
        EXPECT_TRUE(c.coversPrimary());
    }

    // The built-in scenario shows every kind: 80, 160, 80+80 and 6 GHz.
    auto built = SimulatedBackend::createDefault(1);
    QSet<QString> kinds;
    for (const auto &net : built->scanForNetworks(built->interfaceNames().value(0), {}, nullptr)) {
        const CWOperatingChannel &c = net->operatingChannel();
        EXPECT_TRUE(c.coversPrimary()) << qPrintable(net->bssid());
        kinds << c.widthText() + CWOperatingChannel::bandText(c.band);
    }
    for (const char *kind : {"80 MHz5 GHz", "160 MHz5 GHz", "80+80 MHz5 GHz", "160 MHz6 GHz",
                             "320 MHz6 GHz", "40 MHz2.4 GHz", "20 MHz2.4 GHz"})
        EXPECT_TRUE(kinds.contains(QLatin1String(kind))) << kind;
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

// SPDX-License-Identifier: GPL-3.0-or-later
#include "NetworkBuilder.h"
#include "sensor/MetricsExposition.h"
#include "support/FixedSensorSource.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

const QDateTime kNow = QDateTime::fromSecsSinceEpoch(1'700'000'000, Qt::UTC);

TEST(MetricsExposition, FormatsValues)
{
    constexpr double inf = std::numeric_limits<double>::infinity();
    const std::pair<double, const char *> rows[] = {
        {1700000000.5, "1700000000.5"}, {std::nan(""), "NaN"}, {inf, "+Inf"}, {-inf, "-Inf"}};
    for (const auto &[value, text] : rows)
        EXPECT_EQ(MetricsExposition::formatValue(value), text);
}

TEST(MetricsExposition, ShowsRecentNetworksOnceEachWithEscapedTexts)
{
    FixedSensorSource source;
    source.add(NetworkBuilder()
                   .bssid("00:00:00:00:00:01")
                   .ssid("say \"hi\"\\\n<script>")
                   .rssi(-48)
                   .noise(-91)
                   .channel(149, kCWChannelBand5GHz, kCWChannelWidth80MHz)
                   .operatingChannel(149, kCWChannelBand5GHz, 80, 5775)
                   .securities({kCWSecurityWPA2Personal}),
               kNow.addSecs(-2));
    // Bytes that are no UTF-8 arrive as replacement characters, and the network stays.
    source.add(NetworkBuilder().bssid("00:00:00:00:00:02").ssid("\xFF\xFE\x41"), kNow);
    source.add(NetworkBuilder().bssid("00:00:00:00:00:03").hidden(), kNow);
    // Heard too long ago: gone from the exposition, still counted as known.
    source.add(NetworkBuilder().bssid("00:00:00:00:00:04").ssid("old"),
               kNow.addSecs(-MetricsExposition::kStaleAfterSeconds - 1));
    // A second record of a BSSID would repeat a series, which fails the whole scrape.
    source.add(NetworkBuilder().bssid("00:00:00:00:00:01").ssid("twin").rssi(-30), kNow);
    source.stats = {12, 3, 0.5, 0.75};

    const QByteArray text = MetricsExposition::render(source, kNow);
    const QList<QByteArray> lines = text.split('\n');

    const QByteArray expectedLines[] = {
        "corvane_network_signal_dbm{bssid=\"00:00:00:00:00:01\"} -48",
        "corvane_network_snr_db{bssid=\"00:00:00:00:00:01\"} 43",
        "corvane_network_last_seen_timestamp_seconds{bssid=\"00:00:00:00:00:01\"} 1699999998",
        "corvane_network_info{bssid=\"00:00:00:00:00:01\",ssid=\"say \\\"hi\\\"\\\\\\n<script>\","
        "security=\"WPA2 Personal\",channel=\"149\",band=\"5GHz\",width=\"80MHz\","
        "real_width=\"80MHz\",center_mhz=\"5775\",phy=\"802.11g/n\",ibss=\"no\"} 1",
        "corvane_network_info{bssid=\"00:00:00:00:00:02\",ssid=\"\xEF\xBF\xBD\xEF\xBF\xBD\x41\","
        "security=\"open\",channel=\"6\",band=\"2.4GHz\",width=\"20MHz\","
        "real_width=\"unknown\",center_mhz=\"unknown\",phy=\"802.11g/n\",ibss=\"no\"} 1",
        "# TYPE corvane_scans_total counter",
        "corvane_scans_total 12",
        "corvane_networks 5",
    };
    for (const QByteArray &line : expectedLines)
        EXPECT_TRUE(lines.contains(line)) << line.toStdString() << "\nin\n" << text.toStdString();

    EXPECT_FALSE(text.contains("00:00:00:00:00:04"));
    EXPECT_EQ(text.count("corvane_network_signal_dbm{"), 3);
    EXPECT_FALSE(text.contains("twin"));
}

} // namespace

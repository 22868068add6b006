// SPDX-License-Identifier: GPL-3.0-or-later
// The update step of a network record: conversions, statistics, histories and trimming.
#include "model/NetworkObject.h"
#include "support/DataTable.h"
#include "support/NetworkBuilder.h"

#include <gtest/gtest.h>

#include <deque>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

using Sample = std::pair<qint64, qint64>; // RSSI and noise in dBm

NetworkObjectRef recordFrom(const std::vector<Sample> &samples)
{
    NetworkObjectRef record;
    int i = 0;
    for (const Sample &s : samples) {
        const CWNetworkRef r = NetworkBuilder().rssi(s.first).noise(s.second);
        const QDateTime t = kT0.addSecs(i++);
        if (!record)
            record = NetworkObject::objectWithCWNetwork(r, t);
        else
            record->updateWithCWNetwork(r, t);
    }
    return record;
}

} // namespace

TEST(NetworkObjectUpdate, FirstUpdateSeedsStatistics)
{
    // Name, BSSID, texts and channel of a record are checked through its export row.
    const CWNetworkRef r = NetworkBuilder().securities({kCWSecurityWPA2Personal});
    const NetworkObjectRef rec = NetworkObject::objectWithCWNetwork(r, kT0);
    EXPECT_EQ(std::tuple(rec->cwNetwork(), rec->lastUpdated(), rec->SNRs().size()),
              std::tuple(r, kT0, 1));
    EXPECT_NEAR(*rec->SNRs().first(), 40.37736, 1e-5); // stored unrounded
    const double signal = NetworkObject::signalDBIAsPercentage(-60);
    const double noise = NetworkObject::signalDBIAsPercentage(-90);
    EXPECT_EQ(std::tuple(rec->avgSignal(), rec->minSignal(), rec->maxSignal(), rec->avgNoise(),
                         rec->minNoise(), rec->maxNoise()),
              std::tuple(signal, signal, signal, noise, noise, noise));
    EXPECT_EQ(std::tuple(rec->snr(), rec->avgSNR(), rec->minSNR(), rec->maxSNR()),
              std::tuple(40, 40, 40, 40));
    EXPECT_FALSE(rec->signalQuality().has_value());
    // Fractions in [0, 1) truncate to 0 dBm each: level(0, 0) = 1 - 0.1.
    EXPECT_DOUBLE_EQ(rec->signalLevel(), double(0.9f));
}

TEST(NetworkObjectUpdate, StatisticsOverWholeHistoryWithStartBounds)
{
    auto fraction = [](const QString &dbm) {
        return double(NetworkObject::signalDBIAsPercentage(dbm.toLongLong()));
    };
    for (const DataRow &row : readTable("statistics")) {
        SCOPED_TRACE(row["what"].toStdString());
        std::vector<Sample> samples;
        double sum = 0.0;
        for (const QString &pair : row["samples"].split(u' ')) {
            samples.push_back(
                {pair.section(u'/', 0, 0).toLongLong(), pair.section(u'/', 1, 1).toLongLong()});
            sum += fraction(pair.section(u'/', 0, 0));
        }
        const NetworkObjectRef rec = recordFrom(samples);
        EXPECT_DOUBLE_EQ(rec->avgSignal(), sum / double(samples.size()));
        EXPECT_EQ(std::tuple(rec->maxSignal(), rec->minSignal(), rec->maxNoise(), rec->minNoise()),
                  std::tuple(fraction(row["maxSignal"]), fraction(row["minSignal"]),
                             fraction(row["maxNoise"]), fraction(row["minNoise"])));
        EXPECT_EQ(QList<qint64>({rec->avgSNR(), rec->minSNR(), rec->maxSNR()}),
                  QList<qint64>({row["avgSNR"].toLongLong(), row["minSNR"].toLongLong(),
                                 row["maxSNR"].toLongLong()}));
    }
}

TEST(NetworkObjectHistory, AbsentResultLeavesGapsAndKeepsStatistics)
{
    const CWNetworkRef first = NetworkBuilder().rssi(-60);
    const NetworkObjectRef rec = NetworkObject::objectWithCWNetwork(first, kT0);
    const double avg = rec->avgSignal();

    EXPECT_EQ(rec->updateWithCWNetwork(nullptr, kT0.addSecs(5)), rec.get());
    EXPECT_EQ(std::tuple(rec->signals().size(), rec->noises().size(), rec->SNRs().size()),
              std::tuple(2, 2, 2));
    EXPECT_FALSE(rec->signals().last() || rec->noises().last() || rec->SNRs().last());
    EXPECT_FALSE(rec->name().has_value()); // cleared on purpose; the rest is kept
    EXPECT_EQ(std::tuple(rec->cwNetwork(), rec->avgSignal(), rec->lastUpdated(), rec->bssid()),
              std::tuple(first, avg, kT0, u"00:11:22:33:44:55"_s));

    // The gap is skipped by the next recomputation.
    rec->updateWithCWNetwork(NetworkBuilder().rssi(-50), kT0.addSecs(10));
    const double expected = (double(NetworkObject::signalDBIAsPercentage(-60)) +
                             double(NetworkObject::signalDBIAsPercentage(-50))) /
                            2.0;
    EXPECT_DOUBLE_EQ(rec->avgSignal(), expected);
    EXPECT_EQ(rec->name(), QStringLiteral("Home"));
    EXPECT_EQ(rec->lastUpdated(), kT0.addSecs(10));
    // Only the first result sets the BSSID; every later one sets the name.
    rec->updateWithCWNetwork(NetworkBuilder().bssid("00:00:00:00:00:02").ssid("Two"), kT0);
    EXPECT_EQ(rec->bssid(), QStringLiteral("00:11:22:33:44:55"));
    EXPECT_EQ(rec->name(), QStringLiteral("Two"));
    rec->updateWithCWNetwork(NetworkBuilder().hidden(), kT0);
    EXPECT_FALSE(rec->name().has_value());
}

TEST(NetworkObjectHistory, GapsKeepTheirPlaceOverManyLapsOfTheRing)
{
    // Against a plain list trimmed at the front: every entry, gap or number, stays in its
    // place however often the ring has wrapped, and the statistics follow the window.
    const NetworkObjectRef rec = NetworkBuilder().record();
    std::deque<LevelSample> expected{rec->signals().first()};
    for (int i = 1; i < 1000; ++i) {
        const bool gap = i % 7 == 3 || (i > 600 && i < 620);
        const qint64 rssi = -30 - (i * 37) % 70;
        rec->updateWithCWNetwork(gap ? nullptr : NetworkBuilder().rssi(rssi).build(), kT0);
        expected.push_back(gap ? std::nullopt
                               : LevelSample(NetworkObject::signalDBIAsPercentage(rssi)));
        if (expected.size() > size_t(NetworkObject::kHistoryCapacity))
            expected.pop_front();
        if (i % 97 != 0 && i != 999)
            continue;
        const QList<LevelSample> signals = rec->signals().toList();
        ASSERT_EQ(signals, QList<LevelSample>(expected.begin(), expected.end())) << "update " << i;
        ASSERT_EQ(rec->SNRs().size(), signals.size());
        double sum = 0.0, low = 1.0, high = 0.0;
        int count = 0;
        for (const LevelSample &s : expected) {
            if (s) {
                sum += double(*s);
                low = std::min(low, double(*s));
                high = std::max(high, double(*s));
                ++count;
            }
        }
        EXPECT_DOUBLE_EQ(rec->avgSignal(), sum / count) << "update " << i;
        EXPECT_EQ(std::pair(rec->minSignal(), rec->maxSignal()), std::pair(low, high)) << i;
    }
}

// SPDX-License-Identifier: GPL-3.0-or-later
// The update step of a network record: conversions, statistics, histories and trimming.
#include "model/NetworkObject.h"
#include "support/NetworkBuilder.h"

#include <gtest/gtest.h>

#include <deque>
#include <vector>

namespace {

const QDateTime kT0(QDate(2024, 5, 1), QTime(12, 0, 0), Qt::UTC);

struct Sample
{
    qint64 rssi;
    qint64 noise;
};

NetworkObjectRef recordFrom(const std::vector<Sample> &samples)
{
    NetworkObjectRef record;
    int i = 0;
    for (const Sample &s : samples) {
        const CWNetworkRef r = NetworkBuilder().rssi(s.rssi).noise(s.noise);
        const QDateTime t = kT0.addSecs(i++);
        if (!record)
            record = NetworkObject::objectWithCWNetwork(r, t);
        else
            record->updateWithCWNetwork(r, t);
    }
    return record;
}

} // namespace

TEST(NetworkObjectConversion, FractionsLevelAndSNR)
{
    struct Row
    {
        qint64 dbm;
        float fraction;
    };
    const Row rows[] = {{-106, 0.0f}, {-53, 0.5f}, {0, 1.0f}, {-120, -0.132075f}, {10, 1.094340f}};
    for (const Row &row : rows)
        EXPECT_NEAR(NetworkObject::signalDBIAsPercentage(row.dbm), row.fraction, 1e-6) << row.dbm;

    EXPECT_NEAR(NetworkObject::snrWithRSSI(-60, -90), 0.403774, 1e-6);
    EXPECT_NEAR(NetworkObject::levelWithRSSI(-60, -90), 0.418868, 1e-6);
    // The result is a single-precision value widened, not a double computation.
    const double snr = NetworkObject::snrWithRSSI(-60, -90);
    EXPECT_EQ(snr, static_cast<double>(static_cast<float>(snr)));
}

TEST(NetworkObjectUpdate, FirstUpdateSeedsStatistics)
{
    // Name, BSSID, texts and channel of a record are checked through its export row.
    const CWNetworkRef r = NetworkBuilder().securities({kCWSecurityWPA2Personal});
    const NetworkObjectRef rec = NetworkObject::objectWithCWNetwork(r, kT0);
    EXPECT_EQ(rec->cwNetwork(), r);
    EXPECT_EQ(rec->lastUpdated(), kT0);
    EXPECT_EQ(rec->SNRs().size(), 1);
    EXPECT_NEAR(*rec->SNRs().first(), 40.37736, 1e-5); // stored unrounded
    EXPECT_EQ(rec->security(), QStringLiteral("WPA2 Personal"));
    for (double v : {rec->avgSignal(), rec->minSignal(), rec->maxSignal()})
        EXPECT_DOUBLE_EQ(v, double(NetworkObject::signalDBIAsPercentage(-60)));
    for (double v : {rec->avgNoise(), rec->minNoise(), rec->maxNoise()})
        EXPECT_DOUBLE_EQ(v, double(NetworkObject::signalDBIAsPercentage(-90)));
    EXPECT_EQ(std::tuple(rec->snr(), rec->avgSNR(), rec->minSNR(), rec->maxSNR()),
              std::tuple(40, 40, 40, 40));
    EXPECT_FALSE(rec->signalQuality().has_value());
    // Fractions in [0, 1) truncate to 0 dBm each: level(0, 0) = 1 - 0.1.
    EXPECT_DOUBLE_EQ(rec->signalLevel(), double(0.9f));
}

TEST(NetworkObjectUpdate, StatisticsOverWholeHistoryWithStartBounds)
{
    struct Row
    {
        const char *what;
        std::vector<Sample> samples;
        double maxSignal, minSignal, maxNoise, minNoise;
        qint64 avgSNR, minSNR, maxSNR;
    };
    const double f60 = NetworkObject::signalDBIAsPercentage(-60);
    const double f59 = NetworkObject::signalDBIAsPercentage(-59);
    const double f90 = NetworkObject::signalDBIAsPercentage(-90);
    const double f107 = NetworkObject::signalDBIAsPercentage(-107);
    const double f108 = NetworkObject::signalDBIAsPercentage(-108);
    const double f250 = NetworkObject::signalDBIAsPercentage(-250);
    const double fPlus10 = NetworkObject::signalDBIAsPercentage(10);
    const double f20 = NetworkObject::signalDBIAsPercentage(20);
    const Row rows[] = {
        // SNR 40.38 and 41.32: the integer mean truncates to 40.
        {"integer mean", {{-60, -90}, {-59, -90}}, f59, f60, f90, f90, 40, 40, 41},
        // SNR -3.96 and -4.91 read as -3 and -4; the mean -3.5 truncates toward zero.
        {"negative SNR", {{-107, -90}, {-108, -90}}, 0.0, f108, f90, f90, -3, -4, -3},
        // Every signal below -106 dBm: maxSignal keeps its floor 0.0; SNR -138 keeps
        // maxSNR at its floor -100.
        {"below floors", {{-250, -90}}, 0.0, f250, f90, f90, -138, -138, -100},
        // Noise above 0 dBm passes the noise floor but not the ceiling of minNoise.
        {"noise above 1", {{-60, 10}}, f60, f60, fPlus10, 1.0, 21, 21, 21},
        // SNR 118.9 stays above the ceiling of minSNR.
        {"SNR above 100", {{20, -106}}, f20, 1.0, 0.0, 0.0, 118, 100, 118},
        {"mixed", {{-60, -90}, {-107, -90}, {-59, -90}}, f59, f107, f90, f90, 26, -3, 41},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        const NetworkObjectRef rec = recordFrom(row.samples);
        double sum = 0.0;
        for (const Sample &s : row.samples)
            sum += double(NetworkObject::signalDBIAsPercentage(s.rssi));
        EXPECT_DOUBLE_EQ(rec->avgSignal(), sum / double(row.samples.size()));
        EXPECT_DOUBLE_EQ(rec->maxSignal(), row.maxSignal);
        EXPECT_DOUBLE_EQ(rec->minSignal(), row.minSignal);
        EXPECT_DOUBLE_EQ(rec->maxNoise(), row.maxNoise);
        EXPECT_DOUBLE_EQ(rec->minNoise(), row.minNoise);
        EXPECT_EQ(rec->avgSNR(), row.avgSNR);
        EXPECT_EQ(rec->minSNR(), row.minSNR);
        EXPECT_EQ(rec->maxSNR(), row.maxSNR);
    }
}

TEST(NetworkObjectUpdate, CurrentValuesTruncateStoredSNR)
{
    NetworkObject rec;
    const struct
    {
        double stored;
        qint64 read;
    } rows[] = {{-3.7, -3}, {40.9, 40}, {0.0, 0}, {1e300, std::numeric_limits<qint64>::max()}};
    for (const auto &row : rows) {
        rec.setSNRs({row.stored});
        EXPECT_EQ(rec.snr(), row.read) << row.stored;
    }
}

TEST(NetworkObjectHistory, KeepsTheLatest301Updates)
{
    // The first update is an outlier at 0 dBm; once trimmed away, the maximum drops.
    std::vector<Sample> samples{{0, -90}};
    for (int i = 0; i < 301; ++i)
        samples.push_back({-60 - (i % 3), -90});
    const NetworkObjectRef rec = recordFrom(samples);
    for (qsizetype size : {rec->signals().size(), rec->noises().size(), rec->SNRs().size()})
        ASSERT_EQ(size, NetworkObject::kHistoryCapacity);
    EXPECT_FLOAT_EQ(*rec->signals().first(), NetworkObject::signalDBIAsPercentage(-60));
    EXPECT_DOUBLE_EQ(rec->maxSignal(), double(NetworkObject::signalDBIAsPercentage(-60)));
    EXPECT_DOUBLE_EQ(rec->minSignal(), double(NetworkObject::signalDBIAsPercentage(-62)));

    // 100 more updates: still 301, the oldest left is update 102 (index 101).
    for (int i = 0; i < 100; ++i)
        rec->updateWithCWNetwork(NetworkBuilder().rssi(-40 - i), kT0.addSecs(1000 + i));
    EXPECT_EQ(rec->signals().size(), NetworkObject::kHistoryCapacity);
    EXPECT_FLOAT_EQ(*rec->signals().first(), NetworkObject::signalDBIAsPercentage(-60 - (100 % 3)));
    EXPECT_FLOAT_EQ(*rec->signals().last(), NetworkObject::signalDBIAsPercentage(-139));
}

TEST(NetworkObjectHistory, AbsentResultLeavesGapsAndKeepsStatistics)
{
    const CWNetworkRef first = NetworkBuilder().rssi(-60);
    const NetworkObjectRef rec = NetworkObject::objectWithCWNetwork(first, kT0);
    const double avg = rec->avgSignal();

    EXPECT_EQ(rec->updateWithCWNetwork(nullptr, kT0.addSecs(5)), rec.get());
    for (qsizetype size : {rec->signals().size(), rec->noises().size(), rec->SNRs().size()})
        EXPECT_EQ(size, 2);
    EXPECT_FALSE(rec->signals().last() || rec->noises().last() || rec->SNRs().last());
    EXPECT_FALSE(rec->name().has_value()); // cleared on purpose
    EXPECT_EQ(rec->cwNetwork(), first);    // kept
    EXPECT_EQ(rec->avgSignal(), avg);
    EXPECT_EQ(rec->lastUpdated(), kT0);
    EXPECT_EQ(rec->bssid(), QStringLiteral("00:11:22:33:44:55"));

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
    const NetworkObjectRef rec = NetworkObject::objectWithCWNetwork(NetworkBuilder(), kT0);
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
        double sum = 0.0, low = 1.0;
        int count = 0;
        for (const LevelSample &s : expected) {
            if (s) {
                sum += double(*s);
                low = std::min(low, double(*s));
                ++count;
            }
        }
        EXPECT_DOUBLE_EQ(rec->avgSignal(), sum / count) << "update " << i;
        EXPECT_DOUBLE_EQ(rec->minSignal(), low) << "update " << i;
    }
}

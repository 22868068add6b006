// SPDX-License-Identifier: GPL-3.0-or-later
// Whatever arrives over the air (any SSID bytes, absurd readings) must pass through every
// text operation, the order and the exports without a crash; run under the sanitizers.
#include "model/ExportDocument.h"
#include "support/DataTable.h"
#include "support/NetworkBuilder.h"
#include "util/Clock.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

// Exercises every text a record offers and checks the invariants that must hold for any
// content: one line per row, 22 or more cells, well-formed UTF-16.
void exerciseTexts(NetworkObject &rec)
{
    const QString line = rec.csvString();
    EXPECT_TRUE(line.endsWith(u'\n') && line.count(u'\t') >= 21);
    const QString row = rec.htmlRowString();
    EXPECT_TRUE(row.startsWith(QStringLiteral("<tr><td>")) &&
                row.endsWith(QStringLiteral("</td></tr>")));
    const QString all = rec.name().value_or(QString()) + rec.signalQualityString() +
                        rec.signalString() + rec.noiseString() + rec.snrString() +
                        rec.channelBandString() + rec.channelWidthString() + rec.lastSeen() +
                        rec.ibss() + rec.phyMode();
    EXPECT_TRUE(all.isValidUtf16());
    (void)rec.signalLevel();
    (void)NetworkObject::securityModeForString(rec.security());
    EXPECT_EQ(rec.icon().size(), QSize(19, 17));
}

} // namespace

TEST(HostileInput, SsidBytesThroughEveryTextOperation)
{
    NetworkList list;
    QList<quint64> all;
    const std::vector<DataRow> rows = readTable("ssids");
    ASSERT_GT(rows.size(), 10u);
    for (const DataRow &row : rows) {
        SCOPED_TRACE(row["what"].toStdString());
        const QByteArray bytes = QByteArray::fromHex(row["hex"].toLatin1());
        const auto rec = NetworkBuilder().ssid(bytes).bssid(QString::fromUtf8(bytes)).record();
        rec->setComment(QString::fromUtf8(bytes));
        ASSERT_TRUE(rec->name().has_value());
        exerciseTexts(*rec);
        all << quint64(list.count());
        list.append(rec);
        EXPECT_EQ(list.networkWithBssid(rec->bssid())->bssid(), rec->bssid());
    }
    list.append(NetworkBuilder().hidden().record());
    all << quint64(list.count() - 1);
    list.sortForDisplay(list.at(3)->bssid());
    list.sortForDisplay(std::nullopt);
    const QString tsv = ExportDocument::tabSeparated(list, all);
    EXPECT_GE(tsv.count(QLatin1Char('\n')), int(all.size()) + 1);
    EXPECT_TRUE(
        ExportDocument::html(list, all, kT0).endsWith(QStringLiteral("</table></body></html>")));
}

TEST(HostileInput, AbsurdReadingsAndAbsentResults)
{
    constexpr qint64 kMin = std::numeric_limits<qint64>::min();
    constexpr qint64 kMax = std::numeric_limits<qint64>::max();
    const struct
    {
        qint64 rssi, noise, channel;
    } rows[] = {{kMin, kMax, kMax}, {kMax, kMin, kMin}, {kMin, kMin, -1}, {127, -128, 196}};
    for (const auto &row : rows) {
        const auto rec =
            NetworkBuilder().rssi(row.rssi).noise(row.noise).channel(row.channel, -5, 99).record();
        for (int i = 0; i < 5; ++i)
            rec->updateWithCWNetwork(
                NetworkBuilder().rssi(row.noise).noise(row.rssi).channel(row.channel, 3, -7), kT0);
        EXPECT_LE(rec->minSNR(), 100);
        EXPECT_GE(rec->maxSNR(), -100);
        exerciseTexts(*rec);
        EXPECT_TRUE(rec->csvString().contains(QString::number(row.channel)));
    }

    // A record born from an absent result: gap entries only, no name, no BSSID.
    const auto empty = NetworkObject::objectWithCWNetwork(nullptr, kT0);
    EXPECT_FALSE(empty->name().has_value());
    // Reading a gap as a number is a safe zero.
    EXPECT_EQ(std::tuple(empty->signals().size(), empty->signal(), empty->snr(), empty->phyMode()),
              std::tuple(1, 0.0, 0, QString()));
    EXPECT_TRUE(empty->csvString().startsWith(QStringLiteral("(null)\t(null)\t\t")));
    exerciseTexts(*empty);
    NetworkObject bare;
    exerciseTexts(bare);

    // A clock far from the record's time.
    ManualClock clock(QDateTime(QDate(9999, 12, 31), QTime(23, 59), Qt::UTC));
    Clock::setInstance(&clock);
    EXPECT_FALSE(empty->lastSeen().isEmpty());
    clock.set(QDateTime(QDate(1, 1, 1), QTime(0, 0), Qt::UTC));
    EXPECT_EQ(empty->lastSeen(), QStringLiteral("Just now"));
    Clock::setInstance(nullptr);
}

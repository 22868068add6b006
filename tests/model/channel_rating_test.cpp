// SPDX-License-Identifier: GPL-3.0-or-later
// Channel scores and recommendations on hand-made neighbourhoods.
#include "model/ChannelRating.h"
#include "wireless/ie/FrequencyPlan.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {
ChannelRating::Neighbour near(int primary, int band, int width, double dbm, int center = 0,
                              int second = 0)
{
    const auto mhz = [band](int channel) {
        return channel ? FrequencyPlan::frequencyForChannel(channel, band) : 0;
    };
    return {{primary, band, width, {mhz(center ? center : primary), mhz(second)}}, dbm};
}

double scoreOf(const QList<ChannelRating::Candidate> &list, const QString &range)
{
    for (const auto &c : list) {
        if (c.rangeText() == range)
            return c.interferenceMw;
    }
    ADD_FAILURE() << "no candidate " << range.toStdString();
    return -1.0;
}

QString bestOf(int band, int width, const QList<ChannelRating::Neighbour> &n,
               const QList<qint64> &supported = {})
{
    const auto pick = ChannelRating::best(ChannelRating::candidates(band, width, n, supported));
    return pick ? pick->rangeText() : QStringLiteral("none");
}
} // namespace

TEST(ChannelRating, CandidatesOfEachWidthAndEmptyBands)
{
    EXPECT_EQ(ChannelRating::widthsFor(kCWChannelBand6GHz), (QList<int>{20, 40, 80, 160, 320}));
    const struct
    {
        int band, width, count;
        const char *first, *last;
    } rows[] = {
        {kCWChannelBand2GHz, 40, 9, "1-5", "9-13"},
        {kCWChannelBand5GHz, 20, 28, "36", "177"},
        {kCWChannelBand5GHz, 160, 3, "36-64", "149-177"},
        {kCWChannelBand6GHz, 320, 3, "1-61", "129-189"},
    };
    for (const auto &row : rows) {
        const auto list = ChannelRating::candidates(row.band, row.width, {}, {});
        ASSERT_EQ(list.size(), row.count) << row.width;
        EXPECT_EQ(list.first().rangeText() + u' ' + list.last().rangeText(),
                  QLatin1String(row.first) + u' ' + QLatin1String(row.last));
        for (const auto &c : list) {
            EXPECT_EQ(std::tuple(c.widthMHz, c.interferenceMw, c.interferenceDbm()),
                      std::tuple(row.width, 0.0, std::optional<double>()));
        }
    }
    EXPECT_EQ(ChannelRating::recommendation(kCWChannelBand5GHz, {}, {}),
              QStringLiteral("Best 5 GHz channel: 36; best 80 MHz block on 5 GHz: 36-48"));
    // An interface that lists only 2.4 and 5 GHz numbers cannot use 6 GHz at all; a number that
    // exists only on 6 GHz (37) shows the adapter speaks it.
    EXPECT_EQ(ChannelRating::recommendation(kCWChannelBand6GHz, {}, {1, 6, 11, 36, 40, 149}),
              QStringLiteral("No 6 GHz channel is supported by the interface"));
    EXPECT_EQ(bestOf(kCWChannelBand6GHz, 20, {}, {36, 40, 44, 48, 37, 41}), QStringLiteral("37"));
}

TEST(ChannelRating, OneStrongNetwork)
{
    // -40 dBm (0.1 uW) over 36-48 at 80 MHz: each 20 MHz channel under it gets a quarter.
    const QList<ChannelRating::Neighbour> n{near(36, kCWChannelBand5GHz, 80, -40.0, 42)};
    const auto twenty = ChannelRating::candidates(kCWChannelBand5GHz, 20, n, {});
    EXPECT_DOUBLE_EQ(scoreOf(twenty, QStringLiteral("44")), 1e-4 / 4);
    EXPECT_EQ(scoreOf(twenty, QStringLiteral("52")), 0.0);
    EXPECT_NEAR(*twenty.first().interferenceDbm(), -46.02, 0.01);
    EXPECT_EQ(ChannelRating::recommendation(kCWChannelBand5GHz, n, {}),
              QStringLiteral("Best 5 GHz channel: 52; best 80 MHz block on 5 GHz: 52-64"));
    // Blocks the interface cannot use are never recommended; one strong neighbour outweighs
    // ten faint ones.
    QList<ChannelRating::Neighbour> faint;
    for (int i = 0; i < 10; ++i)
        faint << near(149, kCWChannelBand5GHz, 20, -80.0);
    EXPECT_EQ(bestOf(kCWChannelBand5GHz, 80, n + faint, {36, 40, 44, 48, 149, 153, 157, 161}),
              QStringLiteral("149-161"));
    // 80+80 counts in both of its segments.
    const QList<ChannelRating::Neighbour> split{near(36, kCWChannelBand5GHz, 80, -40.0, 42, 155)};
    const auto blocks = ChannelRating::candidates(kCWChannelBand5GHz, 80, split, {});
    EXPECT_EQ(std::tuple(scoreOf(blocks, QStringLiteral("36-48")),
                         scoreOf(blocks, QStringLiteral("149-161")),
                         scoreOf(blocks, QStringLiteral("100-112"))),
              std::tuple(1e-4 / 2, 1e-4 / 2, 0.0));
}

TEST(ChannelRating, TwoPointFourGHzOverlapRule)
{
    // A network on 6 reaches channels 2-10 but leaves 1 and 11 alone; the pick stays on the
    // three channels that do not overlap each other.
    const QList<ChannelRating::Neighbour> six{near(6, kCWChannelBand2GHz, 20, -50.0)};
    const auto list = ChannelRating::candidates(kCWChannelBand2GHz, 20, six, {});
    for (const auto &c : list) {
        EXPECT_EQ(c.interferenceMw > 0.0, c.firstChannel >= 2 && c.firstChannel <= 10)
            << c.firstChannel;
        EXPECT_EQ(c.preferred, c.firstChannel == 1 || c.firstChannel == 6 || c.firstChannel == 11);
    }
    EXPECT_DOUBLE_EQ(scoreOf(list, QStringLiteral("6")), 1e-5);
    EXPECT_LT(scoreOf(list, QStringLiteral("2")), scoreOf(list, QStringLiteral("3")));
    // Channel 13 is free too, but 11 is one of the three.
    const QList<ChannelRating::Neighbour> oneAndSix{near(1, kCWChannelBand2GHz, 20, -60.0),
                                                    six.first()};
    EXPECT_EQ(ChannelRating::recommendation(kCWChannelBand2GHz, oneAndSix, {}),
              QStringLiteral("Best 2.4 GHz channel: 11"));
    // A 40 MHz network on 1+5 is seen by the 40 MHz blocks around it.
    const QList<ChannelRating::Neighbour> wide{near(1, kCWChannelBand2GHz, 40, -50.0, 3)};
    const auto pairs = ChannelRating::candidates(kCWChannelBand2GHz, 40, wide, {});
    EXPECT_EQ(
        std::pair(scoreOf(pairs, QStringLiteral("1-5")), scoreOf(pairs, QStringLiteral("9-13"))),
        std::pair(1e-5, 0.0));
    // Without 1, 6 and 11 on the list the pick falls to the best of the others.
    EXPECT_EQ(bestOf(kCWChannelBand2GHz, 20, oneAndSix, {2, 3, 12, 13}), QStringLiteral("12"));
}

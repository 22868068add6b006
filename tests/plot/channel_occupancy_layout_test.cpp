// SPDX-License-Identifier: GPL-3.0-or-later
// Geometry of the Channels tab, without painting.
#include "plot/ChannelOccupancyLayout.h"
#include "wireless/ie/FrequencyPlan.h"

#include <gtest/gtest.h>

#include <array>

namespace {
constexpr double kText = 14.0;

double charWidth(const QString &text)
{
    return 7.0 * double(text.size());
}

ChannelOccupancyLayout::Entry entry(int primary, int band, int width, double dbm, int center,
                                    int second = 0, const char *label = "net")
{
    const int mhz = FrequencyPlan::frequencyForChannel(center, band);
    const int secondMhz = second ? FrequencyPlan::frequencyForChannel(second, band) : 0;
    return {nullptr, {primary, band, width, {mhz, secondMhz}}, dbm, QString::fromLatin1(label)};
}

// A frame whose plot is exactly `plotWidth` wide and 160 high, at the origin.
QRectF frameFor(double plotWidth)
{
    return QRectF(0, 0, ChannelOccupancyLayout::kLeft + plotWidth + ChannelOccupancyLayout::kRight,
                  ChannelOccupancyLayout::kTop + 160.0 + 2 * kText +
                      ChannelOccupancyLayout::kStripHeight + 14.0);
}
} // namespace

TEST(ChannelOccupancyLayout, SpanInPixelsForEachWidth)
{
    // Plots scaled to whole pixels per MHz: 2.4 GHz shows 90 MHz, 5 GHz 760, 6 GHz 1220.
    // name, entry, plot width, left and right of each segment (two only for 80+80)
    const std::tuple<const char *, ChannelOccupancyLayout::Entry, double, QList<double>> rows[] = {
        {"20 MHz on channel 6", entry(6, kCWChannelBand2GHz, 20, -60, 6), 900, {346, 546}},
        {"40 MHz on 1+5", entry(1, kCWChannelBand2GHz, 40, -60, 3), 900, {96, 496}},
        {"20 MHz on 36", entry(36, kCWChannelBand5GHz, 20, -60, 36), 760, {66, 86}},
        {"80 MHz on 36-48", entry(36, kCWChannelBand5GHz, 80, -60, 42), 760, {66, 146}},
        {"160 MHz on 100-128", entry(100, kCWChannelBand5GHz, 160, -60, 114), 760, {386, 546}},
        {"80+80 MHz", entry(36, kCWChannelBand5GHz, 80, -60, 42, 155), 760, {66, 146, 631, 711}},
        {"320 MHz on 6 GHz", entry(37, kCWChannelBand6GHz, 320, -60, 31), 1220, {66, 386}},
    };
    for (const auto &[name, e, plotWidth, edges] : rows) {
        SCOPED_TRACE(name);
        const auto chart = ChannelOccupancyLayout::layoutChart(frameFor(plotWidth), e.channel.band,
                                                               {e}, {}, charWidth, kText);
        ASSERT_DOUBLE_EQ(chart.plot.width(), plotWidth);
        ASSERT_EQ(chart.shapes.size(), 1);
        const auto &polygons = chart.shapes[0].polygons;
        ASSERT_EQ(polygons.size() * 2, edges.size());
        for (qsizetype i = 0; i < edges.size(); ++i) // the feet of each segment, left and right
            EXPECT_DOUBLE_EQ(i % 2 ? polygons[i / 2].last().x() : polygons[i / 2].first().x(),
                             edges[i]);
        // Feet on the bottom of the plot, top at -60 dBm: half way up from -100 to -20 dBm.
        EXPECT_DOUBLE_EQ(polygons[0].first().y(), chart.plot.bottom());
        EXPECT_DOUBLE_EQ(polygons[0][1].y(), chart.plot.top() + 80.0);
        EXPECT_TRUE(chart.shapes[0].labelShown);
        EXPECT_LE(chart.shapes[0].labelRect.bottom(), polygons[0][1].y());
    }
}

TEST(ChannelOccupancyLayout, OverlapsStayReadable)
{
    // Three networks on one channel: drawn strongest first, names stacked without touching,
    // and the pointer finds the one in front.
    const QList<ChannelOccupancyLayout::Entry> entries = {
        entry(6, kCWChannelBand2GHz, 20, -70, 6, 0, "middle"),
        entry(6, kCWChannelBand2GHz, 20, -40, 6, 0, "strong"),
        entry(6, kCWChannelBand2GHz, 20, -85, 6, 0, "faint"),
        entry(36, kCWChannelBand5GHz, 20, -50, 36, 0, "other band"),
    };
    const auto chart = ChannelOccupancyLayout::layoutChart(frameFor(900), kCWChannelBand2GHz,
                                                           entries, {}, charWidth, kText);
    ASSERT_EQ(chart.shapes.size(), 3);
    EXPECT_EQ((std::array{chart.shapes[0].entry, chart.shapes[1].entry, chart.shapes[2].entry}),
              (std::array{1, 0, 2}));
    for (int a = 0; a < 3; ++a) {
        EXPECT_TRUE(chart.shapes[a].labelShown);
        EXPECT_TRUE(chart.plot.contains(chart.shapes[a].labelRect));
        for (int b = a + 1; b < 3; ++b)
            EXPECT_FALSE(chart.shapes[a].labelRect.intersects(chart.shapes[b].labelRect));
    }
    const QList<ChannelOccupancyLayout::Chart> charts{chart};
    const double x = 446.0; // channel 6's centre
    const double nearBottom = chart.plot.bottom() - 2.0;
    EXPECT_EQ(ChannelOccupancyLayout::hitTest(charts, QPointF(x, nearBottom)), 2);
    EXPECT_EQ(ChannelOccupancyLayout::hitTest(charts, QPointF(x, chart.plot.top() + 75.0)), 1);
    EXPECT_EQ(ChannelOccupancyLayout::hitTest(charts, QPointF(100.0, nearBottom)), -1);
    EXPECT_EQ(ChannelOccupancyLayout::hitTest(charts, chart.shapes[1].labelRect.center()), 0);

    // The rating strip under the axis: channel 6 is busy, 1 and 11 are not, 1 is the pick.
    ASSERT_EQ(chart.cells.size(), 13);
    EXPECT_DOUBLE_EQ(chart.ratingStrip.top(), chart.plot.bottom() + kText + 6.0);
    EXPECT_TRUE(chart.cells[0].best);
    EXPECT_GT(chart.cells[5].candidate.interferenceMw, 0.0);
    EXPECT_EQ(chart.cells[10].candidate.interferenceMw, 0.0);
    EXPECT_DOUBLE_EQ(chart.cells[5].rect.left(), 421.0); // channel 6, 5 MHz wide
    EXPECT_DOUBLE_EQ(chart.cells[5].rect.right(), chart.cells[6].rect.left());
    EXPECT_EQ(chart.recommendation, QStringLiteral("Best 2.4 GHz channel: 1"));
    EXPECT_EQ(chart.title, QStringLiteral("2.4 GHz: 3 networks"));
}

// Equal signals put names at the same height: they must still not overlap.
TEST(ChannelOccupancyLayout, EqualNeighboursNamesDoNotTouch)
{
    const auto chart = ChannelOccupancyLayout::layoutChart(
        frameFor(900), kCWChannelBand2GHz,
        {entry(11, kCWChannelBand2GHz, 20, -60, 11, 0, "twin a"),
         entry(11, kCWChannelBand2GHz, 20, -60, 11, 0, "twin b")},
        {}, charWidth, kText);
    ASSERT_EQ(chart.shapes.size(), 2);
    EXPECT_TRUE(chart.shapes[0].labelShown && chart.shapes[1].labelShown);
    EXPECT_FALSE(chart.shapes[0].labelRect.intersects(chart.shapes[1].labelRect));
}

TEST(ChannelOccupancyLayout, ChartsAndAxes)
{
    // Stacked in a wide window with three bands, side by side in a very wide short one.
    EXPECT_EQ(ChannelOccupancyLayout::chartFrames(QRectF(0, 0, 1260, 650), 3).value(1),
              QRectF(0, 650.0 / 3, 1260, 650.0 / 3));
    EXPECT_EQ(ChannelOccupancyLayout::chartFrames(QRectF(0, 0, 2500, 600), 2).value(1),
              QRectF(1250, 0, 1250, 600));

    const QList<ChannelOccupancyLayout::Entry> none;
    EXPECT_EQ(ChannelOccupancyLayout::bandsInUse(none),
              (QList<int>{kCWChannelBand2GHz, kCWChannelBand5GHz}));
    EXPECT_EQ(ChannelOccupancyLayout::bandsInUse({entry(37, kCWChannelBand6GHz, 20, -60, 37),
                                                  entry(1, kCWChannelBand2GHz, 20, -60, 1)}),
              (QList<int>{kCWChannelBand2GHz, kCWChannelBand6GHz}));

    // Every channel has a tick; labels thin out where they would collide.
    const auto wide = ChannelOccupancyLayout::layoutChart(frameFor(2440), kCWChannelBand6GHz, none,
                                                          {}, charWidth, kText);
    const auto narrow = ChannelOccupancyLayout::layoutChart(frameFor(400), kCWChannelBand6GHz, none,
                                                            {}, charWidth, kText);
    for (const auto *chart : {&wide, &narrow}) {
        ASSERT_EQ(chart->ticks.size(), 59);
        double lastLabel = -1e9;
        for (const auto &tick : chart->ticks) {
            if (tick.labelled) {
                EXPECT_GE(tick.x - lastLabel, 3 * 7.0 + 4.0) << tick.channel;
                lastLabel = tick.x;
            }
        }
    }
    EXPECT_TRUE(wide.ticks[1].labelled);
    EXPECT_FALSE(narrow.ticks[1].labelled);
    EXPECT_TRUE(narrow.ticks[0].labelled);
    // Labels thin out by halving: every 2nd, 4th or 8th channel.
    int stride = 1;
    while (!narrow.ticks[stride].labelled)
        ++stride;
    EXPECT_EQ(stride & (stride - 1), 0) << stride;
    ASSERT_EQ(wide.levels.size(), 9);
    EXPECT_DOUBLE_EQ(wide.levels.first().y, wide.plot.bottom());
    EXPECT_DOUBLE_EQ(wide.levels.last().y, wide.plot.top());
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/LineRaster.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr double kGap = std::numeric_limits<double>::quiet_NaN();

// Covered area in pixels of `row` (-1: all rows): the sum of alpha.
double coveredArea(const QImage &image, int row = -1)
{
    double sum = 0;
    for (int y = std::max(row, 0); y <= (row < 0 ? image.height() - 1 : row); ++y)
        for (int x = 0; x < image.width(); ++x)
            sum += qAlpha(image.pixel(x, y)) / 255.0;
    return sum;
}

TEST(LineRaster, CoversWhatAPenOfThatWidthCovers)
{
    // name, points, width, area: a stroke with square caps covers (length + width) x width
    // per unbroken run (-1: only something)
    const std::tuple<const char *, QList<QPointF>, double, double> rows[] = {
        {"level", {{10, 20.5}, {50, 20.5}}, 2.0, 42 * 2.0},
        {"steep", {{10, 10}, {40, 50}}, 3.0, (50 + 3) * 3},
        {"a gap breaks the line",
         {{10, 20}, {20, 20}, {30, kGap}, {40, 20}, {50, 20}},
         2.0,
         2 * 12 * 2.0},
        {"a lone point draws nothing", {{10, 20}, {20, kGap}, {30, 20}}, 2.0, 0},
        {"thinner than a pixel shows a pixel wide", {{10, 20}, {30, 20}}, 0.25, 21 * 1.0},
        {"garbage far off the layer", {{-1e300, -1e300}, {1e300, 1e300}}, 2.0, -1},
    };
    for (const auto &[name, points, width, area] : rows) {
        LineRaster raster(QSize(64, 64));
        raster.strokePolyline(points.constData(), points.size(), width, 0xff00ff00);
        const double covered = coveredArea(raster.toImage());
        if (area >= 0)
            EXPECT_NEAR(covered, area, 0.02 * area + 0.5) << name;
        else
            EXPECT_GT(covered, 0.0) << name;
    }
    // Edges are smoothed by coverage: a level line 2 wide centred on y = 40.5 covers half of
    // rows 39 and 41.
    LineRaster raster(QSize(64, 64));
    const QPointF half[] = {{10, 40.5}, {40, 40.5}};
    raster.strokePolyline(half, 2, 2.0, qPremultiply(qRgba(255, 0, 0, 255)));
    EXPECT_NEAR(coveredArea(raster.toImage(), 41), 32 * 0.5, 0.5);
}

} // namespace

// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/LineRaster.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr double kGap = std::numeric_limits<double>::quiet_NaN();

// Covered area in pixels: the sum of alpha over the layer.
double coveredArea(const QImage &image, int row = -1)
{
    double sum = 0;
    for (int y = 0; y < image.height(); ++y) {
        if (row >= 0 && y != row)
            continue;
        for (int x = 0; x < image.width(); ++x)
            sum += qAlpha(image.pixel(x, y)) / 255.0;
    }
    return sum;
}

struct Row
{
    const char *name;
    QList<QPointF> points;
    double width;
    double area; // a stroke with square caps: (length + width) x width per unbroken run
};

TEST(LineRaster, CoversWhatAPenOfThatWidthCovers)
{
    const double diagonal = std::hypot(30.0, 40.0);
    const Row rows[] = {
        {"level", {{10, 20.5}, {50, 20.5}}, 2.0, 42 * 2.0},
        {"steep", {{10, 10}, {40, 50}}, 3.0, (diagonal + 3) * 3},
        {"zigzag joins overlap", {{10, 30}, {20, 10}, {30, 30}}, 1.0, -1},
        {"a gap breaks the line",
         {{10, 20}, {20, 20}, {30, kGap}, {40, 20}, {50, 20}},
         2.0,
         2 * 12 * 2.0},
        {"a lone point draws nothing", {{10, 20}, {20, kGap}, {30, 20}}, 2.0, 0},
        {"thinner than a pixel shows a pixel wide", {{10, 20}, {30, 20}}, 0.25, 21 * 1.0},
        {"garbage far off the layer", {{-1e300, -1e300}, {1e300, 1e300}}, 2.0, -1},
    };
    for (const Row &row : rows) {
        LineRaster raster(QSize(64, 64));
        raster.strokePolyline(row.points.constData(), row.points.size(), row.width, 0xff00ff00);
        const QImage image = raster.toImage();
        if (row.area >= 0)
            EXPECT_NEAR(coveredArea(image), row.area, 0.02 * row.area + 0.5) << row.name;
        else
            EXPECT_GT(coveredArea(image), 0.0) << row.name;
    }
}

TEST(LineRaster, SmoothsEdgesByCoverage)
{
    // A level line 2 wide centred on y = 21 covers rows 20 and 21 fully; one centred on
    // y = 40.5 covers row 40 and half of rows 39 and 41.
    LineRaster raster(QSize(64, 64));
    const QPointF full[] = {{10, 21}, {40, 21}};
    raster.strokePolyline(full, 2, 2.0, qPremultiply(qRgba(255, 0, 0, 255)));
    const QPointF half[] = {{10, 40.5}, {40, 40.5}};
    raster.strokePolyline(half, 2, 2.0, qPremultiply(qRgba(255, 0, 0, 255)));
    const QImage image = raster.toImage();
    EXPECT_EQ(qAlpha(image.pixel(25, 20)), 255);
    EXPECT_EQ(qAlpha(image.pixel(25, 21)), 255);
    EXPECT_EQ(qAlpha(image.pixel(25, 19)), 0);
    EXPECT_NEAR(qAlpha(image.pixel(25, 39)), 128, 2);
    EXPECT_EQ(qAlpha(image.pixel(25, 40)), 255);
    EXPECT_NEAR(qAlpha(image.pixel(25, 41)), 128, 2);
    EXPECT_NEAR(coveredArea(image, 41), 32 * 0.5, 0.5);
}

} // namespace

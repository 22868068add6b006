// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/TrapezoidRaster.h"

#include <QPainter>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

struct Fill
{
    QPolygonF shape;
    QColor color;
};

// Off the pixel grid: where an edge passes exactly through pixel centres, QPainter and the
// raster may break the tie differently.
QPolygonF trapezoid(double left, double right, double top, double inset)
{
    left += 0.137;
    right += 0.213;
    top += 0.071;
    inset += 0.029;
    return QPolygonF({{left, 60}, {left + inset, top}, {right - inset, top}, {right, 60}});
}

QColor faint(int hue, double alpha)
{
    QColor c = QColor::fromHsv(hue, 200, 230);
    c.setAlphaF(float(alpha));
    return c;
}

// The pixels of the two images that differ in some channel by more than `allowed`.
int differing(const QImage &a, const QImage &b, int allowed)
{
    int count = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            count += std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                               std::abs(qBlue(p) - qBlue(q)), std::abs(qAlpha(p) - qAlpha(q))}) >
                     allowed;
        }
    }
    return count;
}

TEST(TrapezoidRaster, FillsAsQPainterDoesWithoutSmoothing)
{
    const struct
    {
        const char *name;
        QList<Fill> fills;
    } rows[] = {
        {"one", {{trapezoid(10.3, 50.7, 20.4, 6), faint(0, 0.3)}}},
        {"a short one over a tall one",
         {{trapezoid(5, 70, 8, 10), faint(120, 0.3)}, {trapezoid(20, 45, 35, 5), faint(240, 0.3)}}},
        // The tall one drawn last starts below the short one's top on its slanted sides.
        {"a tall one over a short one",
         {{trapezoid(20, 45, 35, 5), faint(240, 0.3)}, {trapezoid(5, 70, 8, 10), faint(60, 0.3)}}},
        {"many side by side and over each other",
         {{trapezoid(0, 30, 10, 4.5), faint(0, 0.14)},
          {trapezoid(12.5, 42.5, 15.2, 4.5), faint(50, 0.14)},
          {trapezoid(25, 55, 5.9, 4.5), faint(100, 0.5)},
          {trapezoid(37.5, 67.5, 30.1, 4.5), faint(150, 0.14)},
          {trapezoid(2, 78, 25.5, 10), faint(200, 0.14)}}},
        {"partly off the image",
         {{trapezoid(-20, 30, -5, 10), faint(300, 0.4)},
          {trapezoid(60, 120, 40, 10), faint(30, 0.4)}}},
        {"flat on the floor, turned over",
         {{QPolygonF({{10, 60}, {15, 60}, {35, 60}, {40, 60}}), faint(0, 0.5)},
          {trapezoid(50, 20, 30, 5), faint(0, 0.5)}}},
    };
    for (const auto &row : rows) {
        TrapezoidRaster raster(QSize(80, 60));
        QImage expected(80, 60, QImage::Format_ARGB32_Premultiplied);
        expected.fill(Qt::transparent);
        QPainter painter(&expected);
        painter.setPen(Qt::NoPen);
        for (const Fill &f : row.fills) {
            raster.add(f.shape, qPremultiply(f.color.rgba()));
            if (f.shape[0].x() < f.shape[3].x()) {
                painter.setBrush(f.color);
                painter.drawPolygon(f.shape);
            }
        }
        painter.end();
        QImage image;
        raster.render(image);
        ASSERT_EQ(image.size(), expected.size()) << row.name;
        // QPainter rounds every blend to eight bits, the raster once; and it rounds corners
        // to a 64th of a pixel, so a slanted edge may end a pixel earlier or later here and
        // there.
        EXPECT_LE(differing(image, expected, int(row.fills.size())), 4) << row.name;
    }
}

TEST(TrapezoidRaster, GarbageDrawsNothingOrAll)
{
    TrapezoidRaster raster(QSize(8, 6));
    const double nan = std::nan("");
    raster.add(QPolygonF({{nan, 6}, {1, nan}, {3, 1}, {5, 6}}), qRgba(0, 0, 0, 255));
    raster.add(QPolygonF({{1, 6}, {2, 1}}), qRgba(0, 0, 0, 255));
    raster.addOutline(QPolygonF({{nan, 6}, {1, nan}, {3, 1}, {5, 6}}), qRgba(0, 0, 0, 255), 1);
    QImage empty;
    raster.render(empty);
    EXPECT_EQ(qAlpha(empty.pixel(3, 3)), 0);
    raster.add(QPolygonF({{-1e300, 6}, {-1e300, -1e300}, {1e300, -1e300}, {1e300, 6}}),
               qRgba(0, 0, 0, 255));
    raster.addOutline(QPolygonF({{-1e300, 6}, {-1e300, -1e300}, {1e300, -1e300}, {1e300, 6}}),
                      qRgba(0, 0, 0, 255), 1e300);
    QImage full;
    raster.render(full);
    EXPECT_EQ(qAlpha(full.pixel(3, 3)), 255);
}

TEST(TrapezoidRaster, OutlinesGoOverEveryFillSmoothed)
{
    TrapezoidRaster raster(QSize(80, 60));
    const QPolygonF shape({{10, 60}, {20, 20}, {60, 20}, {70, 60}});
    raster.add(shape, qPremultiply(faint(0, 0.2).rgba()));
    raster.addOutline(shape, qRgb(0, 0, 255), 2.0);
    // A fill added later still lies under the outline.
    raster.add(trapezoid(30, 50, 10, 2), qPremultiply(faint(120, 0.5).rgba()));
    QImage image;
    raster.render(image);
    // The top edge at y = 20, two pixels wide: rows 19 and 20 in full, also under the
    // later fill; row 18 and row 21 are not touched.
    for (int x : {25, 40}) {
        EXPECT_EQ(image.pixel(x, 19), qRgb(0, 0, 255)) << x;
        EXPECT_EQ(image.pixel(x, 20), qRgb(0, 0, 255)) << x;
        EXPECT_NE(qBlue(image.pixel(x, 21)), 255) << x;
    }
    EXPECT_EQ(qAlpha(image.pixel(25, 18)), 0);
    // The foot edge lies half below the image: the bottom row is covered in full.
    EXPECT_EQ(image.pixel(40, 59), qRgb(0, 0, 255));
    // A slanted side alone, smoothed: across each row it covers the pen's width stretched
    // by the side's length over its height.
    TrapezoidRaster alone(QSize(80, 60));
    alone.addOutline(shape, qRgb(0, 0, 255), 2.0);
    QImage outline;
    alone.render(outline);
    double covered = 0.0;
    for (int y = 23; y < 57; ++y) {
        for (int x = 5; x < 25; ++x)
            covered += qAlpha(outline.pixel(x, y)) / 255.0;
    }
    EXPECT_NEAR(covered, 34 * 2.0 * std::hypot(10.0, 40.0) / 40.0, 1.0);
    // Outside the shape nothing is drawn.
    EXPECT_EQ(qAlpha(image.pixel(2, 40)), 0);
    EXPECT_EQ(qAlpha(image.pixel(77, 40)), 0);
}

} // namespace

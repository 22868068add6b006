// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/GeometryUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using G = GeometryUtil;

TEST(GeometryUtil, ClampRotateAndCompare)
{
    // Bounds the wrong way round: the lower one is tested first, so everything below it
    // gets it and everything else gets the upper one.
    const double rows[][4] = {
        {5, 0, 3, 3}, {-1, 0, 3, 0}, {2, 0, 3, 2}, {2, 3, 1, 3}, {5, 3, 1, 1}};
    for (const auto &row : rows)
        EXPECT_EQ(G::clampFloat(row[0], row[1], row[2]), row[3]) << row[0] << " " << row[1];
    EXPECT_TRUE(std::isnan(G::clampFloat(std::nan(""), 0, 1)));
    EXPECT_EQ(G::clampPoint1({-5, 50}, 0, 10), QPointF(0, 10));
    // The lower point's x bounds y as well; its y is ignored.
    EXPECT_EQ(G::clampPoint({5, -5}, {0, 2}, {10, 10}), QPointF(5, 0));
    EXPECT_EQ(G::clampPoint({20, 20}, {0, 0}, {10, 12}), QPointF(10, 12));

    // A quarter turn counter-clockwise (y up) about (1, 1): (2, 1) goes to (1, 2).
    const QPointF quarter = G::GARotate({1, 1}, std::numbers::pi / 2, {2, 1});
    EXPECT_NEAR(quarter.x(), 1, 1e-12);
    EXPECT_NEAR(quarter.y(), 2, 1e-12);
    EXPECT_EQ(G::GARotate({7, 7}, 0, {3, -2}), QPointF(3, -2));

    EXPECT_TRUE(G::pointEqual({0, 0}, {0.00005, 0}));
    EXPECT_FALSE(G::pointEqual({0, 0}, {0, 0.0002}));
    EXPECT_TRUE(G::floatEqual(1.0, 1.05, 0.1));
    EXPECT_FALSE(G::floatEqual(1.0, 1.2, 0.1));
    // Single precision: a difference below the float range vanishes.
    EXPECT_TRUE(G::floatEqual(0.0, 1e-50, 1e-60));
}

TEST(GeometryUtil, RectsAndFits)
{
    EXPECT_EQ(G::NSRectWithFactor({1, 2, 3, 4}, 2), QRectF(2, 4, 6, 8));
    EXPECT_EQ(G::NSRectWithFactor2({1, 2, 3, 4}, 2, 10), QRectF(2, 20, 6, 40));
    const QSizeF rows[][3] = {
        {{200, 100}, {50, 50}, {50, 25}}, // wide
        {{100, 200}, {50, 50}, {25, 50}}, // tall
        {{0, 10}, {40, 20}, {0, 20}},     // no width
        {{10, 0}, {40, 20}, {40, 0}},     // no height
        {{0, 0}, {40, 20}, {0, 0}},       // nothing to fit
    };
    for (const auto &row : rows)
        EXPECT_EQ(G::ProportionalScaledSize(row[0], row[1]), row[2]) << row[0].width();
    EXPECT_EQ(G::ProportionalScaledCenterRect({200, 100}, {10, 10, 50, 50}),
              QRectF(10, 22.5, 50, 25));
}

} // namespace

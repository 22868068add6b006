// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/GeometryUtil.h"

#include <QList>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using G = GeometryUtil;

TEST(GeometryUtil, ClampRotateCompareAndFit)
{
    // Bounds the wrong way round: the lower one is tested first.
    EXPECT_EQ(QList<double>({G::clampFloat(-1, 0, 3), G::clampFloat(2, 0, 3),
                             G::clampFloat(2, 3, 1), G::clampFloat(5, 3, 1)}),
              QList<double>({0, 2, 3, 1}));
    EXPECT_TRUE(std::isnan(G::clampFloat(std::nan(""), 0, 1)));
    // The lower point's x bounds y as well; its y is ignored.
    EXPECT_EQ(G::clampPoint({5, -5}, {0, 2}, {10, 10}), QPointF(5, 0));
    EXPECT_EQ(G::clampPoint1({-5, 50}, 0, 10), QPointF(0, 10));
    // A quarter turn counter-clockwise (y up) about (1, 1): (2, 1) goes to (1, 2).
    const QPointF quarter = G::GARotate({1, 1}, std::numbers::pi / 2, {2, 1});
    EXPECT_NEAR(std::hypot(quarter.x() - 1, quarter.y() - 2), 0, 1e-12);
    EXPECT_TRUE(G::pointEqual({0, 0}, {0.00005, 0}) && !G::pointEqual({0, 0}, {0, 0.0002}) &&
                G::floatEqual(1.0, 1.05, 0.1) && !G::floatEqual(1.0, 1.2, 0.1));

    EXPECT_EQ(G::NSRectWithFactor2({1, 2, 3, 4}, 2, 10), QRectF(2, 20, 6, 40));
    EXPECT_EQ(G::ProportionalScaledSize({200, 100}, {50, 50}), QSizeF(50, 25));
    EXPECT_EQ(G::ProportionalScaledSize({0, 10}, {40, 20}), QSizeF(0, 20)); // no width
    EXPECT_EQ(G::ProportionalScaledSize({0, 0}, {40, 20}), QSizeF(0, 0));
    EXPECT_EQ(G::ProportionalScaledCenterRect({200, 100}, {10, 10, 50, 50}),
              QRectF(10, 22.5, 50, 25));
}

} // namespace

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

// Plane geometry on double-precision points, sizes and rectangles. Angles are in radians.
// The map and channel views rotate with GARotate; the detail panel is placed with clampFloat.
class GeometryUtil
{
public:
    GeometryUtil() = delete;

    // lo when v < lo, else hi when v > hi, else v. The lower bound is tested first, so with
    // hi < lo every v >= lo gives hi; NaN fails both tests and comes back unchanged.
    static double clampFloat(double v, double lo, double hi);

    // `point` turned by `angle` about `center`. Counter-clockwise for a positive angle in a
    // y-up system, clockwise on a y-down screen.
    static QPointF GARotate(QPointF center, double angle, QPointF point);

    // Both coordinates clamped to [lo, hi] like clampFloat.
    static QPointF clampPoint1(QPointF point, double lo, double hi);
    // x clamped to [lower.x, upper.x] and y to [lower.x, upper.y]: the lower point's x bounds
    // both coordinates and its y is ignored. Callers place things with this quirk built in,
    // so it stays.
    static QPointF clampPoint(QPointF point, QPointF lower, QPointF upper);

    // Differences taken in single precision.
    static bool floatEqual(double a, double b, double tolerance);
    // Both coordinates within 0.0001.
    static bool pointEqual(QPointF a, QPointF b);

    // Origin and size scaled by one factor, or x/width by fx and y/height by fy.
    static QRectF NSRectWithFactor(const QRectF &rect, double factor);
    static QRectF NSRectWithFactor2(const QRectF &rect, double fx, double fy);

    // The largest size of the same aspect ratio that fits in `box`. An empty size (both
    // sides 0) has no aspect ratio and gives an empty size.
    static QSizeF ProportionalScaledSize(QSizeF size, QSizeF box);
    // The same fit, centred in `rect`.
    static QRectF ProportionalScaledCenterRect(QSizeF size, const QRectF &rect);
};

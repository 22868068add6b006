// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/GeometryUtil.h"

#include <cmath>

double GeometryUtil::clampFloat(double v, double lo, double hi)
{
    if (lo > v)
        return lo;
    if (hi < v)
        return hi;
    return v;
}

QPointF GeometryUtil::GARotate(QPointF center, double angle, QPointF point)
{
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const double dx = point.x() - center.x();
    const double dy = point.y() - center.y();
    return {center.x() + dx * c - dy * s, center.y() + dy * c + dx * s};
}

QPointF GeometryUtil::clampPoint1(QPointF point, double lo, double hi)
{
    return {clampFloat(point.x(), lo, hi), clampFloat(point.y(), lo, hi)};
}

QPointF GeometryUtil::clampPoint(QPointF point, QPointF lower, QPointF upper)
{
    return {clampFloat(point.x(), lower.x(), upper.x()),
            clampFloat(point.y(), lower.x(), upper.y())};
}

bool GeometryUtil::floatEqual(double a, double b, double tolerance)
{
    return std::fabs(float(a - b)) < tolerance;
}

bool GeometryUtil::pointEqual(QPointF a, QPointF b)
{
    return floatEqual(a.x(), b.x(), 0.0001) && floatEqual(a.y(), b.y(), 0.0001);
}

QRectF GeometryUtil::NSRectWithFactor(const QRectF &rect, double factor)
{
    return NSRectWithFactor2(rect, factor, factor);
}

QRectF GeometryUtil::NSRectWithFactor2(const QRectF &rect, double fx, double fy)
{
    return {rect.x() * fx, rect.y() * fy, rect.width() * fx, rect.height() * fy};
}

QSizeF GeometryUtil::ProportionalScaledSize(QSizeF size, QSizeF box)
{
    const double w = size.width();
    const double h = size.height();
    if (w == 0.0 && h == 0.0)
        return {0.0, 0.0};
    if (w * box.height() > h * box.width())
        return {box.width(), h / w * box.width()};
    return {w / h * box.height(), box.height()};
}

QRectF GeometryUtil::ProportionalScaledCenterRect(QSizeF size, const QRectF &rect)
{
    const QSizeF fit = ProportionalScaledSize(size, rect.size());
    return {rect.x() + (rect.width() - fit.width()) / 2,
            rect.y() + (rect.height() - fit.height()) / 2, fit.width(), fit.height()};
}

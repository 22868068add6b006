// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/LineRaster.h"

#include <algorithm>
#include <cmath>

namespace {

// Garbage samples must not turn the arithmetic below into infinities; a million pixels off
// the image is as good as any farther.
constexpr double kFar = 1e6;

// floor() and ceil() for the clamped coordinates here, without a call into libm: they run
// for every piece of every line.
int floorInt(double v)
{
    const int i = int(v);
    return i - (v < double(i) ? 1 : 0);
}

int ceilInt(double v)
{
    const int i = int(v);
    return i + (v > double(i) ? 1 : 0);
}

// A coverage of 0 to 1 as a blending weight of 0 to 256.
unsigned weight(double share)
{
    return unsigned(std::clamp(share, 0.0, 1.0) * 256.0 + 0.5);
}

// Weights 0 and 256 leave the pixel or give the colour exactly.
QRgb blendPixel(QRgb dst, QRgb src, unsigned weight)
{
    const unsigned rest = 256 - weight;
    const unsigned rb =
        (((src & 0x00ff00ffu) * weight + (dst & 0x00ff00ffu) * rest) >> 8) & 0x00ff00ffu;
    const unsigned ag =
        (((src >> 8) & 0x00ff00ffu) * weight + ((dst >> 8) & 0x00ff00ffu) * rest) & 0xff00ff00u;
    return rb | ag;
}

} // namespace

LineRaster::LineRaster(QSize size)
    : m_width(std::max(0, size.width())), m_height(std::max(0, size.height())),
      m_coverage(size_t(m_height), 0.0f), m_columns(size_t(m_width) * size_t(m_height), 0)
{
}

QImage LineRaster::toImage() const
{
    QImage image(m_width, m_height, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return image;
    // Transposed in tiles that stay in the cache.
    constexpr int kTile = 32;
    for (int x0 = 0; x0 < m_width; x0 += kTile) {
        const int x1 = std::min(m_width, x0 + kTile);
        for (int y0 = 0; y0 < m_height; y0 += kTile) {
            const int y1 = std::min(m_height, y0 + kTile);
            for (int y = y0; y < y1; ++y) {
                QRgb *line = reinterpret_cast<QRgb *>(image.scanLine(y));
                for (int x = x0; x < x1; ++x)
                    line[x] = m_columns[size_t(x) * size_t(m_height) + size_t(y)];
            }
        }
    }
    return image;
}

void LineRaster::strokePolyline(const QPointF *points, qsizetype count, double width, QRgb color)
{
    if (m_width <= 0 || m_height <= 0 || !std::isfinite(width))
        return;
    m_color = color;
    // Thinner than a pixel still shows as a pixel wide, fainter lines would vanish.
    const double halfWidth = std::max(width, 1.0) * 0.5;
    const auto usable = [](const QPointF &p) {
        return std::isfinite(p.x()) && std::isfinite(p.y());
    };
    qsizetype k = 0;
    while (k < count) {
        if (!usable(points[k])) {
            ++k;
            continue;
        }
        qsizetype end = k + 1;
        while (end < count && usable(points[end]))
            ++end;
        // One unbroken run, points k .. end - 1. Its ends get square caps: the line goes on
        // for half its width, as a pen with square caps draws it.
        for (qsizetype i = k + 1; i < end; ++i) {
            double xa = std::clamp(points[i - 1].x(), -kFar, kFar);
            double ya = std::clamp(points[i - 1].y(), -kFar, kFar);
            double xb = std::clamp(points[i].x(), -kFar, kFar);
            double yb = std::clamp(points[i].y(), -kFar, kFar);
            if (!(xb > xa))
                continue;
            const double slope = (yb - ya) / (xb - xa);
            const double stretch = std::sqrt(1.0 + slope * slope);
            if (i == k + 1) {
                const double back = halfWidth / stretch;
                xa -= back;
                ya -= back * slope;
            }
            if (i == end - 1) {
                const double on = halfWidth / stretch;
                xb += on;
                yb += on * slope;
            }
            const double halfHeight = halfWidth * stretch;
            const int first = std::max(0, (floorInt(xa)));
            const int last = std::min(m_width - 1, (floorInt(xb)));
            for (int column = first; column <= last; ++column) {
                const double x0 = std::max(xa, double(column));
                const double x1 = std::min(xb, double(column) + 1.0);
                if (x1 <= x0)
                    continue;
                if (column != m_column) {
                    flushColumn();
                    m_column = column;
                }
                // A piece as wide as the column is all the line puts there (points lie
                // more than a pixel apart): it can go straight into the pixels.
                if (x0 == double(column) && x1 == double(column) + 1.0 && m_top < 0)
                    addPiece<true>(x0, x1, ya + slope * (x0 - xa), slope, halfHeight);
                else
                    addPiece<false>(x0, x1, ya + slope * (x0 - xa), slope, halfHeight);
            }
        }
        flushColumn();
        k = end;
    }
}

template <bool kDirect>
void LineRaster::addPiece(double x0, double x1, double y0, double slope, double halfHeight)
{
    const double d = x1 - x0;
    const double thick = 2.0 * halfHeight;
    const double lo0 = y0 - halfHeight;
    const double lo1 = lo0 + slope * d;
    const double minLo = std::min(lo0, lo1);
    const double maxLo = std::max(lo0, lo1);
    const double minHi = minLo + thick;
    const double maxHi = maxLo + thick;
    // A level piece is taken as rising by a millionth of a pixel per pixel, which shows
    // nowhere and keeps the closed form below free of a special case.
    const double rise = std::abs(slope) < 1e-6 ? (slope < 0.0 ? -1e-6 : 1e-6) : slope;
    const double drop = rise * d;
    const double halfInverse = 0.5 / rise;
    // The integral over the piece of max(0, y - edge(t)) for the edge starting at `edge0`.
    const auto area = [drop, halfInverse](double y, double edge0) {
        const double r0 = std::max(0.0, y - edge0);
        const double r1 = std::max(0.0, y - edge0 - drop);
        return (r0 - r1) * (r0 + r1) * halfInverse;
    };

    // Rows [a, b) hold the band's upper edge (in image rows), [b, c) are covered for the
    // whole piece, [c, e) hold its lower edge; a thin steep band has no middle and its
    // edges share rows.
    const int a = std::max(0, (floorInt(minLo)));
    const int e = std::min(m_height, (ceilInt(maxHi)));
    if (a >= e)
        return;
    int b = std::clamp((ceilInt(maxLo)), a, e);
    int c = std::clamp((floorInt(minHi)), a, e);
    const bool apart = b <= c;
    if (!apart)
        b = c;
    float *coverage = m_coverage.data();
    QRgb *column = m_columns.data() + size_t(m_column) * size_t(m_height);
    const auto put = [&](int row, double share) {
        if constexpr (kDirect)
            column[row] = blendPixel(column[row], m_color, weight(share));
        else
            coverage[row] += float(share);
    };
    const double hi0 = lo0 + thick;
    // Above row c the lower edge is not reached yet.
    double before = area(a, lo0);
    for (int row = a; row < b; ++row) {
        const double after = area(row + 1.0, lo0);
        put(row, after - before);
        before = after;
    }
    if constexpr (kDirect) {
        const bool whole = d >= 1.0;
        const unsigned part = weight(d);
        for (int row = b; row < c; ++row)
            column[row] = whole ? m_color : blendPixel(column[row], m_color, part);
    } else {
        for (int row = b; row < c; ++row)
            coverage[row] += float(d);
    }
    if (apart) {
        // Below row b the upper edge is passed: the piece covers d less what lies below
        // the lower edge.
        before = area(c, hi0);
        for (int row = c; row < e; ++row) {
            const double after = area(row + 1.0, hi0);
            put(row, d - (after - before));
            before = after;
        }
    } else {
        before = area(c, lo0) - area(c, hi0);
        for (int row = c; row < e; ++row) {
            const double after = area(row + 1.0, lo0) - area(row + 1.0, hi0);
            put(row, after - before);
            before = after;
        }
    }
    if constexpr (!kDirect) {
        m_top = m_top < 0 ? a : std::min(m_top, a);
        m_bottom = std::max(m_bottom, e - 1);
    }
}

void LineRaster::flushColumn()
{
    if (m_column < 0 || m_top < 0) {
        m_column = -1;
        return;
    }
    float *coverage = m_coverage.data();
    QRgb *column = m_columns.data() + size_t(m_column) * size_t(m_height);
    for (int row = m_top; row <= m_bottom; ++row) {
        column[row] = blendPixel(column[row], m_color, weight(coverage[row]));
        coverage[row] = 0.0f;
    }
    m_column = -1;
    m_top = -1;
    m_bottom = -1;
}

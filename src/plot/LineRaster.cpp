// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/LineRaster.h"

#include "plot/PixelRounding.h"

#include <algorithm>
#include <cmath>

namespace {

using PixelRounding::ceilInt;
using PixelRounding::floorInt;
using PixelRounding::kFar;

// A coverage of 0 to 1 as a blending weight of 0 to 256, clamped as an integer so that
// the loop calling it stays vector code.
unsigned weight(float share)
{
    return unsigned(std::clamp(int(share * 256.0f + 0.5f), 0, 256));
}

// max(0, v) without a branch, so that loops over rows become vector code.
float positive(float v)
{
    return (v + std::abs(v)) * 0.5f;
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

// Adds to above[i], i < `count` (sets it for the `first` piece), how much of one piece of a
// band lies above row boundary i. The piece's upper edge is highest `offset` rows below
// boundary 0 and runs `drop` rows down or up across it; `halfInverse` is 0.5 / (drop per
// pixel), `thick` the band's height. The integral over the piece of the band's height
// above v rows below the edge's highest point is, per edge, c (2 v - c) / (2 rise), c
// being v clamped to [0, drop]. In floats, from small distances, without branches or a
// chain from row to row: vector code, several rows at once.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
__attribute__((target_clones("avx2", "default")))
#endif
void addCoverage(float *above, int count, float offset, float drop, float thick,
                 float halfInverse, bool first)
{
    const auto edge = [drop](float v) {
        const float c = std::min(positive(v), drop);
        return c * (2.0f * v - c);
    };
    const auto share = [&](int i) {
        const float v = float(i) - offset;
        return (edge(v) - edge(v - thick)) * halfInverse;
    };
    if (first) {
        for (int i = 0; i < count; ++i)
            above[i] = share(i);
    } else {
        for (int i = 0; i < count; ++i)
            above[i] += share(i);
    }
}

// Blends `rows` pixels with the colour by the differences of `above`. Processors with
// wider vectors (and a 32-bit multiply in them) get a copy of their own.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
__attribute__((target_clones("avx2", "default")))
#endif
void blendRows(QRgb *pixel, const float *above, int rows, QRgb color)
{
    for (int i = 0; i < rows; ++i)
        pixel[i] = blendPixel(pixel[i], color, weight(above[i + 1] - above[i]));
}

} // namespace

LineRaster::LineRaster(QSize size)
    : m_width(std::max(0, size.width())), m_height(std::max(0, size.height())),
      m_columns(size_t(m_width) * size_t(m_height), 0)
{
    // Joins and dense stretches rarely put more than a few pieces in one column.
    m_pieces.reserve(8);
    m_above.resize(size_t(m_height) + 1);
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
        // Garbage samples are pulled in first so the slopes below stay finite.
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
                addPiece(x0, x1, ya + slope * (x0 - xa), slope, halfHeight);
            }
        }
        flushColumn();
        k = end;
    }
}

void LineRaster::addPiece(double x0, double x1, double y0, double slope, double halfHeight)
{
    const double d = x1 - x0;
    const double thick = 2.0 * halfHeight;
    const double lo0 = y0 - halfHeight;
    const double lo1 = lo0 + slope * d;
    const int top = std::max(0, floorInt(std::min(lo0, lo1)));
    const int bottom = std::min(m_height, ceilInt(std::max(lo0, lo1) + thick));
    if (top >= bottom)
        return;
    // A level piece is taken as rising by a millionth of a pixel per pixel, which shows
    // nowhere and keeps the closed form in addCoverage() free of a special case.
    const double rise = std::abs(slope) < 1e-6 ? 1e-6 : std::abs(slope);
    // Where the upper edge is highest in the column.
    const double start = std::min(lo0, lo1);
    m_pieces.push_back(
        {start - double(top), float(rise * d), float(thick), float(0.5 / rise), top, bottom});
}

void LineRaster::flushColumn()
{
    if (m_column >= 0 && !m_pieces.empty()) {
        int top = m_height;
        int bottom = 0;
        for (const Piece &piece : m_pieces) {
            top = std::min(top, piece.top);
            bottom = std::max(bottom, piece.bottom);
        }
        // Each piece's share in a pass of its own, then the column's pixels in one more.
        const int rows = bottom - top;
        float *above = m_above.data();
        for (size_t k = 0; k < m_pieces.size(); ++k) {
            const Piece &p = m_pieces[k];
            addCoverage(above, rows + 1, float(p.start + double(p.top - top)), p.drop, p.thick,
                        p.halfInverse, k == 0);
        }
        blendRows(m_columns.data() + size_t(m_column) * size_t(m_height) + top, above, rows,
                  m_color);
    }
    m_pieces.clear();
    m_column = -1;
}

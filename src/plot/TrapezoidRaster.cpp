// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/TrapezoidRaster.h"

#include "plot/PixelRounding.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace {

using PixelRounding::ceilInt;
using PixelRounding::floorInt;
using PixelRounding::kFar;

using Color = std::array<float, 4>; // premultiplied red, green, blue, alpha from 0 to 1

QRgb rgbOf(const float *c)
{
    const auto byte = [](float v) { return unsigned(std::clamp(v, 0.0f, 1.0f) * 255.0f + 0.5f); };
    return byte(c[3]) << 24 | byte(c[0]) << 16 | byte(c[1]) << 8 | byte(c[2]);
}

// The length of [a0, a1] inside [b0, b1].
double overlap(double a0, double a1, double b0, double b1)
{
    return std::max(0.0, std::min(a1, b1) - std::max(a0, b0));
}

struct Start
{
    int row;
    int shape;
};

} // namespace

TrapezoidRaster::TrapezoidRaster(QSize size)
    : m_width(std::max(0, size.width())), m_height(std::max(0, size.height()))
{
}

bool TrapezoidRaster::shapeOf(const QPolygonF &shape, Shape &s) const
{
    if (shape.size() != 4 || !std::all_of(shape.begin(), shape.end(), [](const QPointF &p) {
            return std::isfinite(p.x()) && std::isfinite(p.y());
        }))
        return false;
    // Turned over: its feet in the wrong order.
    if (!(shape[0].x() < shape[3].x()))
        return false;
    const auto x = [&shape](int i) { return std::clamp(shape[i].x(), -kFar, kFar); };
    s.left = x(0);
    s.leftTop = std::max(s.left, x(1));
    s.right = std::max(s.leftTop, x(3));
    s.rightTop = std::clamp(x(2), s.leftTop, s.right);
    s.top = std::clamp(std::min(shape[1].y(), shape[2].y()), -kFar, double(m_height));
    if (!std::isfinite(s.top) || s.left >= s.right)
        return false;
    s.topRow = std::clamp(ceilInt(s.top - 0.5), 0, m_height);
    return true;
}

void TrapezoidRaster::add(const QPolygonF &shape, QRgb fill)
{
    Shape s;
    if (!shapeOf(shape, s))
        return;
    s.color[0] = qRed(fill) / 255.0f;
    s.color[1] = qGreen(fill) / 255.0f;
    s.color[2] = qBlue(fill) / 255.0f;
    s.color[3] = qAlpha(fill) / 255.0f;
    m_shapes.push_back(s);
}

void TrapezoidRaster::addOutline(const QPolygonF &shape, QRgb color, double width)
{
    Outline o;
    if (!std::isfinite(width) || width <= 0.0 || !shapeOf(shape, o.shape))
        return;
    o.color = color;
    o.halfWidth = std::min(width, 64.0) / 2.0;
    m_outlines.push_back(o);
}

void TrapezoidRaster::stroke(QImage &image, const Outline &outline) const
{
    const Shape &s = outline.shape;
    const double hw = outline.halfWidth;
    const QRgb color = outline.color;
    const unsigned alpha = qAlpha(color);
    uchar *bits = image.bits();
    const qsizetype stride = image.bytesPerLine();
    // Blends `color` into `count` pixels of a row from `column` on, each covered by `share`.
    const auto put = [&](int column, int row, double share, int count = 1) {
        column = std::max(0, column);
        count = std::min(count, m_width - column);
        if (row < 0 || row >= m_height || share <= 0.0 || count <= 0)
            return;
        const unsigned w = unsigned(std::min(share, 1.0) * 256.0 + 0.5);
        const unsigned rest = 256 - (alpha * w + 127) / 255;
        const unsigned srcRb = (color & 0x00ff00ffu) * w;
        const unsigned srcAg = ((color >> 8) & 0x00ff00ffu) * w;
        QRgb *dst = reinterpret_cast<QRgb *>(bits + row * stride) + column;
        if (rest == 0) {
            std::fill(dst, dst + count, color);
            return;
        }
        // Two pixels at a time in 64 bits: every channel keeps its own 16 bits, and no sum
        // in them reaches 65,536 (the colour is premultiplied).
        constexpr quint64 kLow = 0x00ff00ff00ff00ffull;
        const quint64 srcRb2 = quint64(srcRb) << 32 | srcRb;
        const quint64 srcAg2 = quint64(srcAg) << 32 | srcAg;
        int i = 0;
        for (; i + 1 < count; i += 2) {
            quint64 d;
            std::memcpy(&d, dst + i, sizeof d);
            d = (((srcRb2 + (d & kLow) * rest) >> 8) & kLow) |
                ((srcAg2 + ((d >> 8) & kLow) * rest) & (kLow << 8));
            std::memcpy(dst + i, &d, sizeof d);
        }
        if (i < count) {
            const QRgb d = dst[i];
            dst[i] = (((srcRb + (d & 0x00ff00ffu) * rest) >> 8) & 0x00ff00ffu) |
                     ((srcAg + ((d >> 8) & 0x00ff00ffu) * rest) & 0xff00ff00u);
        }
    };
    // A band from x0 to x1 across one row, `down` of the row's height: whole pixels inside
    // in one go, the two partly covered ones at its ends alone.
    const auto band = [&](int row, double x0, double x1, double down) {
        const int first = floorInt(x0), last = floorInt(x1);
        if (first == last) {
            put(first, row, down * (x1 - x0));
            return;
        }
        put(first, row, down * (first + 1.0 - x0));
        put(first + 1, row, down, last - first - 1);
        put(last, row, down * (x1 - last));
    };
    // The top edge, drawn on past the corners by half the pen so the joins close.
    const int topLast = floorInt(s.top + hw);
    for (int row = std::max(0, floorInt(s.top - hw)); row <= std::min(m_height - 1, topLast); ++row)
        band(row, s.leftTop - hw, s.rightTop + hw, overlap(row, row + 1.0, s.top - hw, s.top + hw));
    // The foot edge along the bottom, half of it below the image.
    const int footFirst = std::max(topLast + 1, floorInt(m_height - hw));
    for (int row = std::max(0, footFirst); row < m_height; ++row)
        band(row, s.left, s.right, overlap(row, row + 1.0, m_height - hw, m_height));
    // The slanted sides between them: across a row the band is wider than the pen by the
    // length of the side over its height.
    const double height = m_height - s.top;
    if (height < 1.0)
        return;
    for (const auto &[foot, top] : {std::pair(s.left, s.leftTop), std::pair(s.right, s.rightTop)}) {
        const double run = top - foot;
        const double half = hw * std::hypot(run, height) / height;
        const double lean = run / height; // across per row up
        for (int row = std::max(0, topLast + 1); row < std::min(m_height, footFirst); ++row) {
            const double center = foot + (m_height - (row + 0.5)) * lean;
            band(row, center - half, center + half, 1.0);
        }
    }
}

int TrapezoidRaster::firstRow(const Shape &s, double x) const
{
    if (x >= s.leftTop && x <= s.rightTop)
        return s.topRow;
    if (x < s.left || x >= s.right)
        return m_height;
    double top = s.top;
    if (x < s.leftTop)
        top = m_height - (x - s.left) / (s.leftTop - s.left) * (m_height - s.top);
    else if (x > s.rightTop)
        top = m_height - (s.right - x) / (s.right - s.rightTop) * (m_height - s.top);
    return std::clamp(ceilInt(top - 0.5), 0, m_height);
}

void TrapezoidRaster::render(QImage &image) const
{
    if (image.size() != QSize(m_width, m_height) ||
        image.format() != QImage::Format_ARGB32_Premultiplied)
        image = QImage(m_width, m_height, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return;
    const int count = int(m_shapes.size());
    if (count == 0)
        image.fill(Qt::transparent);
    else
        fill(image);
    for (const Outline &o : m_outlines)
        stroke(image, o);
}

void TrapezoidRaster::fill(QImage &image) const
{
    const int count = int(m_shapes.size());

    // The shapes over each column, in drawing order.
    std::vector<int> start(size_t(m_width) + 1, 0);
    const auto columns = [this](const Shape &s) {
        return std::pair(std::max(0, ceilInt(s.left - 0.5)),
                         std::min(m_width, ceilInt(s.right - 0.5)));
    };
    // Under the flat top of a shape a column is drawn as the one before it; only where a
    // shape begins, slants or ends does a column have to be worked out.
    std::vector<char> changes(size_t(m_width) + 1, 0);
    changes[0] = 1;
    for (const Shape &s : m_shapes) {
        const auto [from, to] = columns(s);
        for (int c = from; c < to; ++c)
            ++start[size_t(c) + 1];
        const int flatFrom = std::clamp(ceilInt(s.leftTop - 0.5), from, to);
        const int flatTo = std::clamp(floorInt(s.rightTop - 0.5), flatFrom, to);
        std::fill(changes.begin() + from, changes.begin() + flatFrom + 1, 1);
        std::fill(changes.begin() + flatTo + 1, changes.begin() + to + 1, 1);
    }
    for (int c = 0; c < m_width; ++c)
        start[size_t(c) + 1] += start[size_t(c)];
    std::vector<int> over(size_t(start[size_t(m_width)]));
    {
        std::vector<int> next(start.begin(), start.end() - 1);
        for (int i = 0; i < count; ++i) {
            const auto [from, to] = columns(m_shapes[size_t(i)]);
            for (int c = from; c < to; ++c)
                over[size_t(next[size_t(c)]++)] = i;
        }
    }

    std::vector<Start> starts;
    // The fills covering the current row in drawing order, each with its colour and the share
    // of what lies under it that it lets through. `total` is what they all make of a
    // transparent pixel and `totalThrough` the share they let through; prefix[k] and
    // through[k] are the same for the first k fills, worked out only as far as needed
    // (up to `valid`).
    struct Active
    {
        int shape;
        Color color;
        float keep;
    };
    std::vector<Active> active;
    std::vector<Color> prefix;
    std::vector<double> through;
    uchar *bits = image.bits();
    const qsizetype stride = image.bytesPerLine();
    for (int c = 0; c < m_width; ++c) {
        if (!changes[size_t(c)]) {
            uchar *pixel = bits + c * 4;
            for (int row = 0; row < m_height; ++row, pixel += stride)
                *reinterpret_cast<QRgb *>(pixel) = *reinterpret_cast<const QRgb *>(pixel - 4);
            continue;
        }
        // Where each fill starts, sorted by row. They come nearly sorted: the tallest shapes
        // are drawn first, and only the slanted sides start out of turn.
        starts.clear();
        for (int k = start[size_t(c)]; k < start[size_t(c) + 1]; ++k) {
            const int i = over[size_t(k)];
            const int row = firstRow(m_shapes[size_t(i)], c + 0.5);
            if (row >= m_height)
                continue;
            size_t j = starts.size();
            starts.push_back({});
            for (; j > 0 && starts[j - 1].row > row; --j)
                starts[j] = starts[j - 1];
            starts[j] = {row, i};
        }
        active.clear();
        prefix.assign(1, Color{});
        through.assign(1, 1.0);
        size_t valid = 0;
        Color total{};
        double totalThrough = 1.0;
        QRgb color = 0;
        uchar *pixel = bits + c * 4;
        int row = 0;
        for (size_t k = 0; k <= starts.size(); ++k) {
            // The run down to the next start in the colour of the fills above it.
            const int until = k < starts.size() ? starts[k].row : m_height;
            for (; row < until; ++row, pixel += stride)
                *reinterpret_cast<QRgb *>(pixel) = color;
            if (k == starts.size())
                break;
            const Shape &s = m_shapes[size_t(starts[k].shape)];
            const Active fill{starts[k].shape,
                              {s.color[0], s.color[1], s.color[2], s.color[3]},
                              1.0f - s.color[3]};
            size_t at = active.size();
            while (at > 0 && active[at - 1].shape > fill.shape)
                --at;
            if (at == active.size()) {
                // Drawn after all those already there: it simply goes over them.
                for (size_t ch = 0; ch < 4; ++ch)
                    total[ch] = fill.color[ch] + fill.keep * total[ch];
                totalThrough *= fill.keep;
                if (valid == active.size()) {
                    prefix.push_back(total);
                    through.push_back(totalThrough);
                    ++valid;
                }
                active.push_back(fill);
            } else {
                // Drawn under some: what lies under it changes by what it adds there,
                // seen through the fills over it.
                for (; valid < at; ++valid) {
                    const Active &a = active[valid];
                    Color next;
                    for (size_t ch = 0; ch < 4; ++ch)
                        next[ch] = a.color[ch] + a.keep * prefix[valid][ch];
                    prefix.resize(valid + 1);
                    through.resize(valid + 1);
                    prefix.push_back(next);
                    through.push_back(through[valid] * a.keep);
                }
                double over = 1.0;
                if (through[at] > 1e-290) {
                    over = totalThrough / through[at];
                } else {
                    for (size_t j = at; j < active.size(); ++j)
                        over *= active[j].keep;
                }
                Color under;
                for (size_t ch = 0; ch < 4; ++ch) {
                    under[ch] = fill.color[ch] + fill.keep * prefix[at][ch];
                    total[ch] += float(over * (under[ch] - prefix[at][ch]));
                }
                totalThrough *= fill.keep;
                active.insert(active.begin() + qsizetype(at), fill);
                prefix.resize(at + 1);
                through.resize(at + 1);
                prefix.push_back(under);
                through.push_back(through[at] * fill.keep);
                valid = at + 1;
            }
            color = rgbOf(total.data());
        }
    }
}

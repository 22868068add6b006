// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/CTGradient.h"

#include <QDataStream>
#include <QLinearGradient>
#include <QPainter>
#include <QRadialGradient>
#include <QScopeGuard>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

const QString kModeKey = QStringLiteral("CTGradientBlendingMode");
const QString kCountKey = QStringLiteral("CTGradientElementCount");

// Samples handed to Qt's gradient brushes. Qt's colour table has 1024 entries; 256 samples
// keep the chromatic modes' hue sweep smooth and cost nothing noticeable.
constexpr int kSamples = 256;

struct Hsv
{
    float hue = -1; // degrees; negative when undefined (greys)
    float saturation = 0;
    float value = 0;
};

Hsv toHsv(float r, float g, float b)
{
    const float max = std::max({r, g, b});
    const float min = std::min({r, g, b});
    const float delta = max - min;
    Hsv out;
    out.value = max;
    out.saturation = max > 0 ? delta / max : 0;
    if (!(delta > 0))
        return out; // a grey has no hue
    if (max == r)
        out.hue = 60 * std::fmod((g - b) / delta + 6, 6.0f);
    else if (max == g)
        out.hue = 60 * ((b - r) / delta + 2);
    else
        out.hue = 60 * ((r - g) / delta + 4);
    return out;
}

void fromHsv(float h, float s, float v, float &r, float &g, float &b)
{
    h = std::fmod(h, 360.0f);
    if (h < 0)
        h += 360;
    if (!std::isfinite(h))
        h = 0;
    const float c = v * s;
    const float x = c * (1 - std::fabs(std::fmod(h / 60, 2.0f) - 1));
    const float m = v - c;
    const int sector = std::clamp(int(h / 60), 0, 5);
    const float table[6][3] = {{c, x, 0}, {x, c, 0}, {0, c, x}, {0, x, c}, {x, 0, c}, {c, 0, x}};
    r = table[sector][0] + m;
    g = table[sector][1] + m;
    b = table[sector][2] + m;
}

float mix(float a, float b, float f)
{
    return a + (b - a) * f;
}

// Components outside 0..1 (or NaN, from a damaged archive) must not reach QColor, which
// refuses them.
float unit(float c)
{
    return std::isnan(c) ? 0.0f : std::clamp(c, 0.0f, 1.0f);
}

QColor toColor(const CTGradient::Rgba &c)
{
    return QColor::fromRgbF(unit(c.red), unit(c.green), unit(c.blue), unit(c.alpha));
}

CTGradient::Rgba rgbaOf(const CTGradient::Element &e)
{
    return {e.red, e.green, e.blue, e.alpha};
}

} // namespace

CTGradient CTGradient::gradientWithBeginningColor(const QColor &begin, const QColor &end)
{
    return CTGradient().addColorStop(begin, 0).addColorStop(end, 1);
}

CTGradient CTGradient::gradientWithAlphaComponent(float alpha) const
{
    CTGradient copy = *this;
    for (Element &e : copy.m_elements)
        e.alpha = alpha;
    return copy;
}

CTGradient CTGradient::gradientWithBlendingMode(BlendingMode mode) const
{
    CTGradient copy = *this;
    copy.setBlendingMode(mode);
    return copy;
}

CTGradient CTGradient::addColorStop(const QColor &color, float position) const
{
    const QColor rgb = color.toRgb();
    CTGradient copy = *this;
    copy.addElement({rgb.redF(), rgb.greenF(), rgb.blueF(), rgb.alphaF(), position});
    return copy;
}

CTGradient CTGradient::removeColorStopAtPosition(float position) const
{
    CTGradient copy = *this;
    copy.removeElementAtPosition(position);
    return copy;
}

CTGradient CTGradient::removeColorStopAtIndex(qsizetype index) const
{
    CTGradient copy = *this;
    copy.removeElementAtIndex(index);
    return copy;
}

void CTGradient::addElement(const Element &element)
{
    // Before the first stop lying further on, so after every stop at the same position. A NaN
    // position (damaged archive) compares false everywhere and goes last.
    const auto after = std::find_if(m_elements.begin(), m_elements.end(), [&](const Element &e) {
        return e.position > element.position;
    });
    m_elements.insert(after, element);
}

std::optional<CTGradient::Element> CTGradient::removeElementAtIndex(qsizetype index)
{
    if (index < 0 || index >= m_elements.size())
        return std::nullopt;
    return m_elements.takeAt(index);
}

std::optional<CTGradient::Element> CTGradient::removeElementAtPosition(float position)
{
    for (qsizetype i = 0; i < m_elements.size(); ++i) {
        if (m_elements[i].position == position)
            return m_elements.takeAt(i);
    }
    return std::nullopt;
}

std::optional<CTGradient::Element> CTGradient::elementAtIndex(qsizetype index) const
{
    if (index < 0 || index >= m_elements.size())
        return std::nullopt;
    return m_elements[index];
}

QColor CTGradient::colorStopAtIndex(qsizetype index) const
{
    const auto e = elementAtIndex(index);
    return e ? toColor(rgbaOf(*e)) : QColor();
}

QColor CTGradient::colorAtPosition(float position) const
{
    return toColor(componentsAtPosition(position));
}

CTGradient::Rgba CTGradient::componentsAtPosition(float position) const
{
    switch (m_blendingMode) {
    case Chromatic:
        return chromaticEvaluation(position, false);
    case InverseChromatic:
        return chromaticEvaluation(position, true);
    case Linear:
        break;
    }
    return linearEvaluation(position);
}

std::pair<const CTGradient::Element *, const CTGradient::Element *>
CTGradient::surrounding(float position) const
{
    qsizetype a = 0;
    while (a + 1 < m_elements.size() && m_elements[a + 1].position < position)
        ++a;
    const qsizetype b = a + 1 < m_elements.size() ? a + 1 : a;
    return {&m_elements[a], &m_elements[b]};
}

CTGradient::Rgba CTGradient::linearEvaluation(float position) const
{
    if (m_elements.isEmpty())
        return {};
    const auto [a, b] = surrounding(position);
    if (position <= a->position)
        return rgbaOf(*a);
    if (position >= b->position)
        return rgbaOf(*b);
    const float f = (position - a->position) / (b->position - a->position);
    return {mix(a->red, b->red, f), mix(a->green, b->green, f), mix(a->blue, b->blue, f),
            mix(a->alpha, b->alpha, f)};
}

CTGradient::Rgba CTGradient::chromaticEvaluation(float position, bool inverse) const
{
    if (m_elements.isEmpty())
        return {};
    const auto [a, b] = surrounding(position);
    if (position <= a->position)
        return rgbaOf(*a);
    if (position >= b->position)
        return rgbaOf(*b);

    Hsv ha = toHsv(a->red, a->green, a->blue);
    Hsv hb = toHsv(b->red, b->green, b->blue);
    // A grey borrows the other colour's hue so that only saturation and value change.
    if (ha.hue < 0 && hb.hue < 0)
        ha.hue = hb.hue = 0;
    else if (ha.hue < 0)
        ha.hue = hb.hue;
    else if (hb.hue < 0)
        hb.hue = ha.hue;
    // Go round the colour circle in one direction only: up for chromatic, down for inverse.
    if (!inverse && ha.hue > hb.hue)
        hb.hue += 360;
    else if (inverse && hb.hue > ha.hue)
        ha.hue += 360;

    const float f = (position - a->position) / (b->position - a->position);
    Rgba out;
    fromHsv(mix(ha.hue, hb.hue, f), mix(ha.saturation, hb.saturation, f),
            mix(ha.value, hb.value, f), out.red, out.green, out.blue);
    out.alpha = mix(a->alpha, b->alpha, f);
    return out;
}

QList<std::pair<qreal, QColor>> CTGradient::sampledStops() const
{
    QList<std::pair<qreal, QColor>> stops;
    stops.reserve(kSamples);
    for (int i = 0; i < kSamples; ++i) {
        const float t = float(i) / float(kSamples - 1);
        stops.append({qreal(t), colorAtPosition(t)});
    }
    return stops;
}

void CTGradient::fillRect(QPainter *painter, const QRectF &rect, float angle) const
{
    if (!painter || !painter->isActive() || rect.isEmpty() || !std::isfinite(angle))
        return;
    // Screen y grows downwards, so a counter-clockwise angle has a negative y component.
    const double radians = double(angle) * std::numbers::pi / 180.0;
    const QPointF direction(std::cos(radians), -std::sin(radians));
    const QPointF centre = rect.center();
    double lo = 0, hi = 0;
    for (const QPointF &corner :
         {rect.topLeft(), rect.topRight(), rect.bottomLeft(), rect.bottomRight()}) {
        const QPointF d = corner - centre;
        const double along = d.x() * direction.x() + d.y() * direction.y();
        lo = std::min(lo, along);
        hi = std::max(hi, along);
    }
    QLinearGradient gradient(centre + direction * lo, centre + direction * hi);
    gradient.setStops(sampledStops());
    painter->fillRect(rect, gradient);
}

void CTGradient::radialFillRect(QPainter *painter, const QRectF &rect) const
{
    if (!painter || !painter->isActive() || rect.isEmpty())
        return;
    // A unit circle stretched over the rectangle.
    QRadialGradient gradient(QPointF(0, 0), 1.0);
    gradient.setStops(sampledStops());
    QBrush brush(gradient);
    brush.setTransform(QTransform::fromTranslate(rect.center().x(), rect.center().y())
                           .scale(rect.width() / 2, rect.height() / 2));
    painter->fillRect(rect, brush);
}

void CTGradient::drawSwatchInRect(QPainter *painter, const QRectF &rect) const
{
    fillRect(painter, rect, 45);
}

void CTGradient::encodeWithCoder(QDataStream &stream) const
{
    const auto precision = stream.floatingPointPrecision();
    stream.setFloatingPointPrecision(QDataStream::SinglePrecision);
    stream << kModeKey << qint32(m_blendingMode) << kCountKey << qint32(m_elements.size());
    for (const Element &e : m_elements)
        stream << e.red << e.green << e.blue << e.alpha << e.position;
    stream.setFloatingPointPrecision(precision);
}

std::optional<CTGradient> CTGradient::initWithCoder(QDataStream &stream)
{
    const auto precision = stream.floatingPointPrecision();
    stream.setFloatingPointPrecision(QDataStream::SinglePrecision);
    const auto restore = qScopeGuard([&] { stream.setFloatingPointPrecision(precision); });

    QString modeKey, countKey;
    qint32 mode = 0, count = 0;
    stream >> modeKey >> mode >> countKey >> count;
    if (stream.status() != QDataStream::Ok || modeKey != kModeKey || countKey != kCountKey ||
        mode < Linear || mode > InverseChromatic || count < 0)
        return std::nullopt;

    CTGradient gradient;
    gradient.setBlendingMode(BlendingMode(mode));
    // No reservation from the count: a damaged archive may claim anything; running out of
    // data ends the loop instead.
    for (qint32 i = 0; i < count; ++i) {
        Element e;
        stream >> e.red >> e.green >> e.blue >> e.alpha >> e.position;
        if (stream.status() != QDataStream::Ok)
            return std::nullopt;
        gradient.addElement(e);
    }
    return gradient;
}

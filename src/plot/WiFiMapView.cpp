// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/WiFiMapView.h"

#include "plot/PlotDelegate.h"

#include <QCursor>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <utility>

WiFiMapView::WiFiMapView(QWidget *parent) : WiFiView(parent) {}

std::optional<QString> WiFiMapView::currentBssid() const
{
    if (!delegate())
        return std::nullopt;
    const CWInterfaceRef interface = delegate()->currentInterface();
    return interface ? interface->bssid() : std::nullopt;
}

WiFiMapLayout::TextMeasure WiFiMapView::textMeasure()
{
    return [this](const QString &label, bool isCurrent) {
        const TextAttributes &attributes = isCurrent ? m_curTextAttr : m_textAttr;
        return QSizeF(textWidth(label, attributes.font), attributes.height);
    };
}

QList<WiFiMapLayout::Placement> WiFiMapView::layout()
{
    initImagesIfNeeded();
    QList<WiFiMapLayout::Placement> placements;
    if (!delegate())
        return placements;
    const QRectF bounds(rect());
    const std::optional<QString> bssid = currentBssid();
    const WiFiMapLayout::Lists lists = WiFiMapLayout::ringLists(delegate()->networks(), bssid);
    const WiFiMapLayout::TextMeasure measure = textMeasure();
    for (int ring = 1; ring <= WiFiMapLayout::kRings; ++ring) {
        placements +=
            WiFiMapLayout::layoutRing(lists[size_t(ring - 1)], ring, bounds,
                                      wifiImage(ring).deviceIndependentSize(), bssid, measure);
    }
    return placements;
}

void WiFiMapView::drawRect(QPainter &painter)
{
    initImagesIfNeeded();
    const QRectF bounds(rect());
    painter.save();
    flipToYUp(painter);
    painter.setRenderHint(QPainter::Antialiasing, true);

    QPainterPath rings;
    const auto rects = WiFiMapLayout::ringRects(bounds);
    for (auto it = rects.crbegin(); it != rects.crend(); ++it)
        rings.addEllipse(*it);

    QRadialGradient background(bounds.center(), std::hypot(bounds.width(), bounds.height()) * 0.5);
    background.setColorAt(0.0, m_bgGradientStart);
    background.setColorAt(1.0, m_bgGradientEnd);
    painter.fillRect(bounds, background);

    painter.setPen(QPen(m_circleColor, 1.0));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(rings);

    drawImageUpright(
        painter,
        QPointF((bounds.width() - m_selfImage.deviceIndependentSize().width()) * 0.5,
                (bounds.height() - m_selfImage.deviceIndependentSize().height()) * 0.5),
        m_selfImage);

    // What an earlier drawing placed is kept until a lookup enters it, unless this one
    // places the very same networks in the same order, which makes it stale.
    const QList<QList<WiFiMapLayout::Placement>> earlier = std::exchange(m_drawn, {});
    if (delegate()) {
        const WiFiMapLayout::Lists lists =
            WiFiMapLayout::ringLists(delegate()->networks(), currentBssid());
        qsizetype drawn = 0;
        for (const QList<NetworkObjectRef> &list : lists)
            drawn += list.size();
        reserveTextCache(drawn);
        for (int ring = 1; ring <= WiFiMapLayout::kRings; ++ring)
            drawWifi(painter, lists[size_t(ring - 1)], ring, wifiImage(ring));
    }
    const auto sameNetworks = [](const QList<WiFiMapLayout::Placement> &a,
                                 const QList<WiFiMapLayout::Placement> &b) {
        return std::equal(a.cbegin(), a.cend(), b.cbegin(), b.cend(),
                          [](const auto &x, const auto &y) { return x.network == y.network; });
    };
    if (!std::equal(earlier.cbegin(), earlier.cend(), m_drawn.cbegin(), m_drawn.cend(),
                    sameNetworks)) {
        QList<QList<WiFiMapLayout::Placement>> later = std::exchange(m_drawn, earlier);
        recordPlaces();
        m_drawn = std::move(later);
    }
    painter.restore();
}

void WiFiMapView::recordPlaces() const
{
    for (const QList<WiFiMapLayout::Placement> &placements : std::as_const(m_drawn)) {
        for (const WiFiMapLayout::Placement &placement : placements)
            m_locations.insert(placement.network->bssid(),
                               {placement.imageRect, placement.textRect});
    }
    m_drawn.clear();
}

void WiFiMapView::drawWifi(QPainter &painter, const QList<NetworkObjectRef> &list, int ring,
                           const QImage &image)
{
    const QList<WiFiMapLayout::Placement> placements = WiFiMapLayout::layoutRing(
        list, ring, QRectF(rect()), image.deviceIndependentSize(), currentBssid(), textMeasure());
    // A ring of a city survey holds more networks than it has pixels. One drawn on the same
    // pixel as the next is covered by it; painting it anyway would only cost time (its
    // place is recorded all the same).
    const qreal ratio = devicePixelRatioF();
    const auto pixel = [ratio](QPointF p) {
        return std::pair(std::lround(p.x() * ratio), std::lround(p.y() * ratio));
    };
    for (qsizetype k = 0; k < placements.size(); ++k) {
        const WiFiMapLayout::Placement &placement = placements.at(k);
        const bool covered = k + 1 < placements.size() &&
                             pixel(placements.at(k + 1).point) == pixel(placement.point);
        if (!covered) {
            drawImageUpright(painter, placement.point, image);
            drawTextUpright(painter, QPointF(placement.textRect.x(), placement.textRect.y()),
                            placement.label, placement.current ? m_curTextAttr : m_textAttr);
        }
    }
    m_drawn.append(placements);
}

NetworkObjectRef WiFiMapView::networkUnderMouse() const
{
    const QPoint local = mapFromGlobal(QCursor::pos());
    // Widget coordinates run down from the top; the map's run up from the bottom.
    return networkAtPoint(QPointF(local.x(), height() - local.y()));
}

NetworkObjectRef WiFiMapView::networkAtPoint(QPointF point) const
{
    if (!delegate())
        return nullptr;
    recordPlaces();
    for (const NetworkObjectRef &network : delegate()->networks()) {
        if (!network)
            continue;
        const auto found = m_locations.constFind(network->bssid());
        if (found == m_locations.cend())
            continue;
        if (pointInRect(point, found->image) || pointInRect(point, found->text))
            return network;
    }
    return nullptr;
}

WiFiMapView::Locations WiFiMapView::networkLocations() const
{
    recordPlaces();
    Locations locations;
    locations.reserve(m_locations.size());
    for (auto it = m_locations.cbegin(); it != m_locations.cend(); ++it) {
        locations.insert(it.key(), {{kImageRectKey, stringFromRect(it->image)},
                                    {kTextRectKey, stringFromRect(it->text)}});
    }
    return locations;
}

QString WiFiMapView::stringFromRect(const QRectF &rect)
{
    const auto number = [](double v) {
        return QString::number(v, 'g', QLocale::FloatingPointShortest);
    };
    return QStringLiteral("{{%1, %2}, {%3, %4}}")
        .arg(number(rect.x()), number(rect.y()), number(rect.width()), number(rect.height()));
}

QRectF WiFiMapView::rectFromString(const QString &text)
{
    static const QRegularExpression pattern(
        QStringLiteral("^\\s*\\{\\s*\\{\\s*([^,{}\\s]+)\\s*,\\s*([^,{}\\s]+)\\s*\\}\\s*,\\s*"
                       "\\{\\s*([^,{}\\s]+)\\s*,\\s*([^,{}\\s]+)\\s*\\}\\s*\\}\\s*$"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return QRectF();
    double values[4];
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        values[i] = match.captured(i + 1).toDouble(&ok);
        if (!ok || !std::isfinite(values[i]))
            return QRectF();
    }
    return QRectF(values[0], values[1], values[2], values[3]);
}

bool WiFiMapView::pointInRect(QPointF point, const QRectF &rect)
{
    // A rectangle that cannot be written down as numbers holds no point.
    if (!std::isfinite(rect.x()) || !std::isfinite(rect.y()) || !std::isfinite(rect.width()) ||
        !std::isfinite(rect.height()))
        return false;
    return rect.width() > 0.0 && rect.height() > 0.0 && point.x() >= rect.x() &&
           point.x() < rect.x() + rect.width() && point.y() >= rect.y() &&
           point.y() < rect.y() + rect.height();
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/WiFiMapView.h"

#include "plot/PlotDelegate.h"

#include <QCursor>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <QRegularExpression>

#include <cmath>

WiFiMapView::WiFiMapView(QWidget *parent) : WiFiView(parent) {}

std::optional<QString> WiFiMapView::currentBssid() const
{
    if (!delegate())
        return std::nullopt;
    const CWInterfaceRef interface = delegate()->currentInterface();
    return interface ? interface->bssid() : std::nullopt;
}

WiFiMapLayout::TextMeasure WiFiMapView::textMeasure() const
{
    const QFontMetricsF normal(m_textAttr.font);
    const QFontMetricsF current(m_curTextAttr.font);
    return [normal, current](const QString &label, bool isCurrent) {
        const QFontMetricsF &metrics = isCurrent ? current : normal;
        return QSizeF(metrics.horizontalAdvance(label), metrics.height());
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

    if (delegate()) {
        const WiFiMapLayout::Lists lists =
            WiFiMapLayout::ringLists(delegate()->networks(), currentBssid());
        for (int ring = 1; ring <= WiFiMapLayout::kRings; ++ring)
            drawWifi(painter, lists[size_t(ring - 1)], ring, wifiImage(ring));
    }
    painter.restore();
}

void WiFiMapView::drawWifi(QPainter &painter, const QList<NetworkObjectRef> &list, int ring,
                           const QImage &image)
{
    const QList<WiFiMapLayout::Placement> placements = WiFiMapLayout::layoutRing(
        list, ring, QRectF(rect()), image.deviceIndependentSize(), currentBssid(), textMeasure());
    for (const WiFiMapLayout::Placement &placement : placements) {
        drawImageUpright(painter, placement.point, image);
        drawTextUpright(painter, QPointF(placement.textRect.x(), placement.textRect.y()),
                        placement.label, placement.current ? m_curTextAttr : m_textAttr);
        m_networkLocations.insert(placement.network->bssid(),
                                  {{kImageRectKey, stringFromRect(placement.imageRect)},
                                   {kTextRectKey, stringFromRect(placement.textRect)}});
    }
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
    for (const NetworkObjectRef &network : delegate()->networks()) {
        if (!network)
            continue;
        const auto found = m_networkLocations.constFind(network->bssid());
        if (found == m_networkLocations.cend())
            continue;
        if (pointInRect(point, rectFromString(found->value(kImageRectKey))) ||
            pointInRect(point, rectFromString(found->value(kTextRectKey))))
            return network;
    }
    return nullptr;
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
    return rect.width() > 0.0 && rect.height() > 0.0 && point.x() >= rect.x() &&
           point.x() < rect.x() + rect.width() && point.y() >= rect.y() &&
           point.y() < rect.y() + rect.height();
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/ChannelOccupancyView.h"

#include "plot/PlotDelegate.h"
#include "plot/TrapezoidRaster.h"
#include "plot/WiFiView.h"
#include "wireless/ie/FrequencyPlan.h"

#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace {
constexpr qsizetype kWidthCacheLimit = 8192;

const QColor kBackground = QColor::fromRgbF(0.1f, 0.1f, 0.1f);
const QColor kPlot = QColor::fromRgbF(0.1f, 0.1f, 0.2f);
const QColor kGrid = QColor::fromRgbF(0.6f, 0.6f, 0.6f, 0.35f);
const QColor kText = QColor::fromRgbF(0.85f, 0.85f, 0.85f);

// Green where nothing is heard, through yellow to red where -45 dBm or more lands.
QColor ratingColor(const ChannelRating::Candidate &c)
{
    if (!c.supported)
        return QColor::fromRgbF(0.3f, 0.3f, 0.3f);
    const std::optional<double> dbm = c.interferenceDbm();
    const double load = dbm ? std::clamp((*dbm + 95.0) / 50.0, 0.0, 1.0) : 0.0;
    return QColor::fromHsvF(float((1.0 - load) * 0.33), 0.75f, 0.8f);
}
} // namespace

ChannelOccupancyView::ChannelOccupancyView(QWidget *parent) : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    m_font = WiFiView::systemFont(11);
}

double ChannelOccupancyView::textWidth(const QString &text)
{
    const auto it = m_widths.constFind(text);
    if (it != m_widths.constEnd())
        return *it;
    if (m_widths.size() > kWidthCacheLimit)
        m_widths.clear();
    const double w = QFontMetricsF(m_font).horizontalAdvance(text);
    m_widths.insert(text, w);
    return w;
}

void ChannelOccupancyView::relayout()
{
    m_entries.clear();
    QList<qint64> supported;
    if (m_delegate) {
        m_entries = ChannelOccupancyLayout::entriesOf(m_delegate->networks());
        if (const CWInterfaceRef ifc = m_delegate->currentInterface())
            supported = ifc->supportedChannels();
    }
    m_charts = ChannelOccupancyLayout::layout(
        QRectF(rect()), m_entries, supported, [this](const QString &t) { return textWidth(t); },
        QFontMetricsF(m_font).height());
}

void ChannelOccupancyView::hover(QPointF point)
{
    m_pointer = point;
    const int hit = ChannelOccupancyLayout::hitTest(m_charts, point);
    const QString bssid = hit >= 0 ? m_entries[hit].network->bssid() : QString();
    if (bssid != m_highlighted || !bssid.isEmpty()) {
        m_highlighted = bssid;
        update();
    }
}

void ChannelOccupancyView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    draw(painter);
}

void ChannelOccupancyView::mouseMoveEvent(QMouseEvent *event)
{
    hover(event->position());
}

void ChannelOccupancyView::leaveEvent(QEvent *)
{
    if (!m_highlighted.isEmpty()) {
        m_highlighted.clear();
        update();
    }
}

void ChannelOccupancyView::draw(QPainter &painter)
{
    relayout();
    painter.fillRect(rect(), kBackground);
    painter.setFont(m_font);
    for (const ChannelOccupancyLayout::Chart &chart : m_charts)
        drawChart(painter, chart);
    for (const ChannelOccupancyLayout::Entry &e : m_entries) {
        if (!m_highlighted.isEmpty() && e.network->bssid() == m_highlighted) {
            drawDetails(painter, e);
            break;
        }
    }
}

void ChannelOccupancyView::drawChart(QPainter &painter, const ChannelOccupancyLayout::Chart &chart)
{
    const QRectF &plot = chart.plot;
    const QFontMetricsF metrics(m_font);
    painter.setPen(kText);
    painter.drawText(QRectF(chart.frame.left() + 8, chart.frame.top() + 4, chart.frame.width(),
                            metrics.height()),
                     Qt::AlignLeft | Qt::AlignVCenter, chart.title);
    painter.fillRect(plot, kPlot);

    // Level lines and labels (dBm), channel ticks and numbers.
    // Level lines as one-pixel rectangles: QPainter draws a line pixel by pixel and hands
    // the thousand pieces of a long one to its thread pool, whose waking costs more than
    // the line.
    for (const ChannelOccupancyLayout::Level &level : chart.levels)
        painter.fillRect(QRectF(plot.left(), std::floor(level.y), plot.width(), 1.0), kGrid);
    painter.setPen(kText);
    for (const ChannelOccupancyLayout::Level &level : chart.levels) {
        const QString text = level.dbm == int(ChannelOccupancyLayout::kMaxDbm)
                                 ? QStringLiteral("dBm")
                                 : QString::number(level.dbm);
        painter.drawText(QRectF(chart.frame.left(), level.y - metrics.height() / 2,
                                ChannelOccupancyLayout::kLeft - 6, metrics.height()),
                         Qt::AlignRight | Qt::AlignVCenter, text);
    }
    for (const ChannelOccupancyLayout::Tick &tick : chart.ticks) {
        painter.drawLine(QPointF(tick.x, plot.bottom()),
                         QPointF(tick.x, plot.bottom() + (tick.labelled ? 4 : 2)));
        if (tick.labelled)
            painter.drawText(QRectF(tick.x - 20, plot.bottom() + 4, 40, metrics.height()),
                             Qt::AlignHCenter | Qt::AlignTop, QString::number(tick.channel));
    }

    // The networks, clipped to the plot, then their names over all of them.
    painter.save();
    painter.setClipRect(plot);
    // A thousand translucent fills over one another, composed column by column into one
    // layer, their outlines over them; the highlighted outline goes last and wider.
    const QRect area(QPoint(qRound(plot.left()), qRound(plot.top())),
                     QPoint(qRound(plot.right()) - 1, qRound(plot.bottom()) - 1));
    TrapezoidRaster layer(area.size());
    const ChannelOccupancyLayout::Shape *lit = nullptr;
    for (const ChannelOccupancyLayout::Shape &shape : chart.shapes) {
        const ChannelOccupancyLayout::Entry &e = m_entries[shape.entry];
        const bool isLit = e.network->bssid() == m_highlighted;
        if (isLit)
            lit = &shape;
        QColor fill = e.network->color();
        fill.setAlphaF(isLit ? 0.5f : 0.14f);
        for (const QPolygonF &polygon : shape.polygons)
            layer.add(polygon.translated(-area.topLeft()), qPremultiply(fill.rgba()));
    }
    const auto outline = [&](const ChannelOccupancyLayout::Shape &shape, double width) {
        const QRgb color = qPremultiply(m_entries[shape.entry].network->color().rgba());
        for (const QPolygonF &polygon : shape.polygons)
            layer.addOutline(polygon.translated(-area.topLeft()), color, width);
    };
    for (const ChannelOccupancyLayout::Shape &shape : chart.shapes) {
        if (&shape != lit)
            outline(shape, 1.3);
    }
    if (lit)
        outline(*lit, 3.0);
    layer.render(m_layer);
    painter.drawImage(area.topLeft(), m_layer);
    painter.setRenderHint(QPainter::Antialiasing, false);
    for (const ChannelOccupancyLayout::Shape &shape : chart.shapes) {
        if (!shape.labelShown)
            continue;
        const ChannelOccupancyLayout::Entry &e = m_entries[shape.entry];
        painter.setPen(e.network->color());
        painter.drawText(shape.labelRect, Qt::AlignLeft | Qt::AlignVCenter,
                         metrics.elidedText(e.label, Qt::ElideRight, shape.labelRect.width()));
    }
    painter.restore();

    // The rating strip, the best channel outlined, and the recommendation.
    for (const ChannelOccupancyLayout::Cell &cell : chart.cells)
        painter.fillRect(cell.rect.adjusted(0.5, 0, -0.5, 0), ratingColor(cell.candidate));
    for (const ChannelOccupancyLayout::Cell &cell : chart.cells) {
        if (cell.best) {
            painter.setPen(QPen(Qt::white, 2.0));
            painter.setBrush(Qt::NoBrush);
            painter.drawRect(cell.rect.adjusted(-1, -1, 1, 1));
        }
    }
    painter.setPen(kText);
    painter.drawText(
        chart.recommendationRect, Qt::AlignLeft | Qt::AlignVCenter,
        metrics.elidedText(chart.recommendation, Qt::ElideRight, chart.recommendationRect.width()));
}

void ChannelOccupancyView::drawDetails(QPainter &painter, const ChannelOccupancyLayout::Entry &e)
{
    const CWOperatingChannel &c = e.channel;
    QString span;
    for (int s = 0; s < c.segmentCount(); ++s)
        span += (s ? QStringLiteral(" + ") : QString()) +
                QStringLiteral("%1-%2 MHz").arg(c.lowMHz(s)).arg(c.highMHz(s));
    const QStringList lines = {
        e.label,
        QStringLiteral("BSSID: %1").arg(e.network->bssid()),
        QStringLiteral("Channel: %1 (%2)")
            .arg(c.primaryChannel)
            .arg(CWOperatingChannel::bandText(c.band)),
        QStringLiteral("Width: %1 (%2)").arg(c.widthText(), span),
        QStringLiteral("Signal: %1 dBm").arg(e.signalDbm, 0, 'f', 0),
    };
    const QFontMetricsF metrics(m_font);
    double w = 0;
    for (const QString &line : lines)
        w = std::max(w, metrics.horizontalAdvance(line));
    const QSizeF size(w + 16, metrics.height() * lines.size() + 10);
    // Beside the pointer, kept inside the view.
    QPointF at = m_pointer + QPointF(16, 16);
    at.setX(std::clamp(at.x(), 0.0, std::max(0.0, width() - size.width())));
    at.setY(std::clamp(at.y(), 0.0, std::max(0.0, height() - size.height())));
    const QRectF box(at, size);
    painter.setPen(QPen(e.network->color(), 1.5));
    painter.setBrush(QColor::fromRgbF(0.05f, 0.05f, 0.08f, 0.92f));
    painter.drawRect(box);
    painter.setPen(kText);
    for (qsizetype i = 0; i < lines.size(); ++i)
        painter.drawText(
            QRectF(box.left() + 8, box.top() + 5 + metrics.height() * i, w, metrics.height()),
            Qt::AlignLeft | Qt::AlignVCenter, lines[i]);
}

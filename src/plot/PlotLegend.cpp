// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/PlotLegend.h"

#include <QChart>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

PlotLegend::PlotLegend(QChart *graph) : QGraphicsObject(graph), m_graph(graph)
{
    // Above the series and the axes of the chart.
    setZValue(1000.0);
    m_font.setPixelSize(11);
    if (graph)
        connect(graph, &QChart::geometryChanged, this, &PlotLegend::relayout);
    setVisible(false);
}

void PlotLegend::setColumns(int columns)
{
    m_columns = std::max(1, columns);
    relayout();
}

void PlotLegend::setRowMargin(double margin)
{
    m_rowMargin = std::max(0.0, margin);
    relayout();
}

void PlotLegend::setAnchor(Anchor anchor, QPointF displacement)
{
    m_anchor = anchor;
    m_displacement = displacement;
    relayout();
}

void PlotLegend::setMinimumTop(double top)
{
    m_minimumTop = top;
    relayout();
}

void PlotLegend::setTextColor(const QColor &color)
{
    m_textColor = color;
    update();
}

void PlotLegend::setBorderPen(const QPen &pen)
{
    m_borderPen = pen;
    update();
}

void PlotLegend::setFill(const QBrush &fill)
{
    m_fill = fill;
    update();
}

void PlotLegend::setCornerRadius(double radius)
{
    m_cornerRadius = radius;
    update();
}

void PlotLegend::setFont(const QFont &font)
{
    m_font = font;
    relayout();
}

void PlotLegend::setEntries(const QList<Entry> &entries)
{
    if (entries == m_entries)
        return;
    m_entries = entries;
    relayout();
}

QString PlotLegend::cellText(int index) const
{
    if (index < m_entriesShown)
        return m_entries.at(index).title;
    return QStringLiteral("+%1 more").arg(m_entries.size() - m_entriesShown);
}

double PlotLegend::cellWidth(int index) const
{
    const double text = QFontMetricsF(m_font).horizontalAdvance(cellText(index));
    return index < m_entriesShown ? kSwatchLength + kSwatchGap + text : text;
}

void PlotLegend::relayout()
{
    prepareGeometryChange();
    const QRectF graph = m_graph ? m_graph->rect() : QRectF();
    const int count = int(m_entries.size());
    if (count == 0 || graph.isEmpty()) {
        m_frame = QRectF();
        m_columnsUsed = m_rowsShown = m_entriesShown = m_cellsShown = 0;
        m_columnWidths.clear();
        setVisible(false);
        return;
    }

    const double rowHeight = QFontMetricsF(m_font).height() + m_rowMargin;
    const double top =
        m_anchor == Anchor::Top ? std::max(graph.top() - m_displacement.y(), m_minimumTop) : 0.0;
    const double available = m_anchor == Anchor::Top ? graph.bottom() - top - kEdgeMargin
                                                     : graph.height() - 2.0 * kEdgeMargin;
    const int maxRows = std::max(1, int((available - 2.0 * kPadding) / rowHeight));
    const double maxWidth = graph.width() - 2.0 * kEdgeMargin;

    // Try the widest grid first and give up columns until it fits across the chart.
    for (int columns = std::min(m_columns, count); columns >= 1; --columns) {
        const int rows = (count + columns - 1) / columns;
        m_columnsUsed = columns;
        m_rowsShown = std::min(rows, maxRows);
        m_cellsShown = std::min(count, m_rowsShown * columns);
        m_entriesShown = m_cellsShown < count ? m_cellsShown - 1 : count;
        m_columnWidths = QList<double>(columns, 0.0);
        for (int i = 0; i < m_cellsShown; ++i)
            m_columnWidths[i % columns] = std::max(m_columnWidths[i % columns], cellWidth(i));
        double width = 2.0 * kPadding + kColumnGap * (columns - 1);
        for (double w : std::as_const(m_columnWidths))
            width += w;
        if (width <= maxWidth || columns == 1) {
            if (width > maxWidth) { // one column and still too wide: names get elided
                m_columnWidths[0] = std::max(0.0, maxWidth - 2.0 * kPadding);
                width = maxWidth;
            }
            m_frame = QRectF(0.0, 0.0, width, 2.0 * kPadding + m_rowsShown * rowHeight);
            break;
        }
    }

    // Displacements are y-up; the chart is y-down.
    QPointF origin;
    if (m_anchor == Anchor::Top) {
        origin = QPointF(graph.center().x() - m_frame.width() * 0.5 + m_displacement.x(), top);
    } else {
        origin = QPointF(graph.right() - m_frame.width() + m_displacement.x(),
                         graph.center().y() - m_frame.height() * 0.5 - m_displacement.y());
    }
    const double maxX =
        std::max(graph.left() + kEdgeMargin, graph.right() - kEdgeMargin - m_frame.width());
    origin.setX(std::clamp(origin.x(), graph.left() + kEdgeMargin, maxX));
    setPos(origin);
    setVisible(true);
    update();
}

QRectF PlotLegend::boundingRect() const
{
    const double half = m_borderPen.widthF() * 0.5 + 1.0;
    return m_frame.adjusted(-half, -half, half, half);
}

void PlotLegend::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    if (m_frame.isEmpty())
        return;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, true);
    painter->setPen(m_borderPen);
    painter->setBrush(m_fill);
    painter->drawRoundedRect(m_frame, m_cornerRadius, m_cornerRadius);

    const QFontMetricsF metrics(m_font);
    const double rowHeight = metrics.height() + m_rowMargin;
    painter->setFont(m_font);
    for (int i = 0; i < m_cellsShown; ++i) {
        const int row = i / m_columnsUsed;
        const int column = i % m_columnsUsed;
        double x = m_frame.left() + kPadding + kColumnGap * column;
        for (int c = 0; c < column; ++c)
            x += m_columnWidths.at(c);
        const double y = m_frame.top() + kPadding + row * rowHeight;
        double textWidth = m_columnWidths.at(column);
        if (i < m_entriesShown) {
            QPen swatch = m_entries.at(i).pen;
            // Keep thick lines from swallowing the row.
            swatch.setWidthF(std::min(swatch.widthF(), rowHeight * 0.4));
            swatch.setCapStyle(Qt::FlatCap);
            painter->setPen(swatch);
            const double midY = y + rowHeight * 0.5;
            painter->drawLine(QPointF(x, midY), QPointF(x + kSwatchLength, midY));
            x += kSwatchLength + kSwatchGap;
            textWidth -= kSwatchLength + kSwatchGap;
        }
        painter->setPen(m_textColor);
        const QString text = metrics.elidedText(cellText(i), Qt::ElideRight, textWidth + 0.5);
        painter->drawText(QRectF(x, y, textWidth + 1.0, rowHeight),
                          Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, text);
    }
    painter->restore();
}

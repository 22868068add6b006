// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/GraphFrame.h"

#include <QBrush>
#include <QChart>
#include <QGraphicsLayout>
#include <QGraphicsRectItem>
#include <QGraphicsSimpleTextItem>
#include <QPen>

#include <algorithm>

namespace {

// Below everything Qt Charts draws (its own background sits at -1), and above it.
constexpr double kBackgroundZ = -3.0;
constexpr double kPlotAreaZ = -2.0;
constexpr double kTitleZ = 1000.0;

} // namespace

GraphFrame::GraphFrame(QChart *graph) : QObject(graph), m_graph(graph)
{
    // Qt Charts' own spacing around the content would add to the paddings.
    graph->layout()->setContentsMargins(0, 0, 0, 0);
    m_background = new QGraphicsRectItem(graph);
    m_background->setZValue(kBackgroundZ);
    m_background->setVisible(false);
    // Full-size gradients are the dearest part of an empty chart; they only change with
    // the size, so keep them as pixmaps.
    m_background->setCacheMode(QGraphicsItem::DeviceCoordinateCache);
    m_plotAreaBackground = new QGraphicsRectItem(graph);
    m_plotAreaBackground->setZValue(kPlotAreaZ);
    m_plotAreaBackground->setVisible(false);
    m_plotAreaBackground->setCacheMode(QGraphicsItem::DeviceCoordinateCache);
    m_titleItem = new QGraphicsSimpleTextItem(graph);
    m_titleItem->setZValue(kTitleZ);
    m_titleItem->setVisible(false);
    connect(graph, &QChart::geometryChanged, this, &GraphFrame::relayout);
}

GraphFrame *GraphFrame::of(QChart *graph)
{
    if (!graph)
        return nullptr;
    if (GraphFrame *frame = find(graph))
        return frame;
    return new GraphFrame(graph);
}

GraphFrame *GraphFrame::find(const QChart *graph)
{
    return graph ? graph->findChild<GraphFrame *>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
}

void GraphFrame::setTitle(const QString &title)
{
    if (title == m_title)
        return;
    m_title = title;
    relayout();
}

void GraphFrame::setTitleFont(const QFont &font)
{
    m_titleFont = font;
    relayout();
}

void GraphFrame::setTitleColor(const QColor &color)
{
    m_titleColor = color;
    m_titleItem->setBrush(color);
}

QRectF GraphFrame::titleRect() const
{
    if (!m_graph || m_title.isEmpty())
        return QRectF();
    return m_titleItem->mapRectToParent(m_titleItem->boundingRect());
}

void GraphFrame::setTitleDisplacement(QPointF displacement)
{
    m_titleDisplacement = displacement;
    relayout();
}

void GraphFrame::setPadding(const QMarginsF &padding)
{
    m_padding = padding;
    relayout();
}

void GraphFrame::setPlotAreaFramePadding(const QMarginsF &padding)
{
    m_framePadding = padding;
    relayout();
}

QRectF GraphFrame::plotAreaFrameForBounds(const QRectF &bounds) const
{
    return bounds.marginsRemoved(m_padding);
}

QRectF GraphFrame::plotAreaForBounds(const QRectF &bounds) const
{
    return plotAreaFrameForBounds(bounds).marginsRemoved(m_framePadding);
}

void GraphFrame::takeOverBackgrounds()
{
    // A theme applied after the frame was made shows Qt's backgrounds again; take its
    // brushes and hide them once more.
    if (m_graph->isBackgroundVisible()) {
        m_background->setBrush(m_graph->backgroundBrush());
        m_background->setPen(m_graph->backgroundPen());
        m_background->setVisible(true);
        m_graph->setBackgroundVisible(false);
    }
    if (m_graph->isPlotAreaBackgroundVisible()) {
        m_plotAreaBackground->setBrush(m_graph->plotAreaBackgroundBrush());
        m_plotAreaBackground->setPen(m_graph->plotAreaBackgroundPen());
        m_plotAreaBackground->setVisible(true);
        m_graph->setPlotAreaBackgroundVisible(false);
    }
}

void GraphFrame::relayout()
{
    if (!m_graph)
        return;
    takeOverBackgrounds();
    const QRectF bounds = m_graph->rect();
    QRectF area = plotAreaForBounds(bounds);
    // Qt Charts refuses an empty plot area; a tiny view still gets a one-point one.
    area.setWidth(std::max(area.width(), 1.0));
    area.setHeight(std::max(area.height(), 1.0));
    if (m_graph->plotArea() != area) {
        m_graph->setPlotArea(area);
        // Qt Charts 6.4 moves the series to a new fixed plot area at once but lays the axes
        // out again only on its next layout pass: ask for one, or a resized window keeps
        // its grid and labels at the old size.
        m_graph->layout()->invalidate();
    }
    if (m_background->rect() != bounds)
        m_background->setRect(bounds);
    if (m_plotAreaBackground->rect() != area)
        m_plotAreaBackground->setRect(area);

    // The title box is centred on the anchor: the middle of the frame's top edge, moved by
    // the displacement (y up).
    if (m_title.isEmpty()) {
        m_titleItem->setVisible(false);
        return;
    }
    if (m_titleItem->text() != m_title)
        m_titleItem->setText(m_title);
    if (m_titleItem->font() != m_titleFont)
        m_titleItem->setFont(m_titleFont);
    m_titleItem->setBrush(m_titleColor);
    const QRectF frame = plotAreaFrameForBounds(bounds);
    const QPointF anchor(frame.center().x() + m_titleDisplacement.x(),
                         frame.top() - m_titleDisplacement.y());
    const QRectF box = m_titleItem->boundingRect();
    m_titleItem->setPos(anchor.x() - box.width() * 0.5, anchor.y() - box.height() * 0.5);
    m_titleItem->setVisible(true);
}

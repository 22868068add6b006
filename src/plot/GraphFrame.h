// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QFont>
#include <QMarginsF>
#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QRectF>
#include <QString>

class QChart;
class QGraphicsRectItem;
class QGraphicsSimpleTextItem;

// The fixed geometry of one graph, kept beside its QChart: the padding between the graph's
// edge and the plot-area frame, the padding inside that frame around the data area, and
// where the title sits. Qt Charts lays a chart out by itself; a graph with a frame instead
// gets its data area pinned (QChart::setPlotArea) to exactly what the paddings leave, on
// every change of the chart's size.
//
// Once the plot area is pinned, Qt Charts 6.4 stops placing its title, background and
// plot-area background (they keep their first geometry). The frame therefore draws those
// three itself, with the chart's title text, brushes and pens, and keeps Qt's hidden.
class GraphFrame : public QObject
{
    Q_OBJECT

public:
    // The frame of `graph`, created (as a child of the chart) on first use.
    static GraphFrame *of(QChart *graph);
    // The frame of `graph` if it has one.
    static GraphFrame *find(const QChart *graph);

    QString title() const { return m_title; }
    void setTitle(const QString &title);
    QFont titleFont() const { return m_titleFont; }
    void setTitleFont(const QFont &font);
    QColor titleColor() const { return m_titleColor; }
    void setTitleColor(const QColor &color);
    // Where the title text is drawn, in graph coordinates (empty without a title).
    QRectF titleRect() const;

    QPointF titleDisplacement() const { return m_titleDisplacement; }
    void setTitleDisplacement(QPointF displacement);
    QMarginsF padding() const { return m_padding; }
    void setPadding(const QMarginsF &padding);
    QMarginsF plotAreaFramePadding() const { return m_framePadding; }
    void setPlotAreaFramePadding(const QMarginsF &padding);

    // The data area for a graph of these bounds (graph coordinates, y down).
    QRectF plotAreaForBounds(const QRectF &bounds) const;
    // The plot-area frame for a graph of these bounds.
    QRectF plotAreaFrameForBounds(const QRectF &bounds) const;

    // Pins the plot area and places title and backgrounds for the chart's current size.
    void relayout();

private:
    explicit GraphFrame(QChart *graph);
    void takeOverBackgrounds();

    QPointer<QChart> m_graph;
    // Child items of the chart, deleted with it.
    QGraphicsRectItem *m_background = nullptr;
    QGraphicsRectItem *m_plotAreaBackground = nullptr;
    QGraphicsSimpleTextItem *m_titleItem = nullptr;
    QString m_title;
    QFont m_titleFont;
    QColor m_titleColor = Qt::gray;
    QPointF m_titleDisplacement;
    QMarginsF m_padding;
    QMarginsF m_framePadding;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QGraphicsItem>
#include <QImage>
#include <QPointer>
#include <QRectF>
#include <QValueAxis>

#include <memory>
#include <vector>

class PlotSeries;
class QChart;

// Draws the lines of every series of a graph, over the grid and under the legend, into the
// plot area. Qt Charts would stroke each wide line segment by segment through QPainter's
// general stroker, which with two hundred series of 301 samples takes longer than a frame;
// this item strokes them with LineRaster into one layer, made again only when a series, a
// range or the size changed, and otherwise just copied to the screen.
//
// The series themselves stay in the chart (hidden) with their points, as the data the
// graph shows.
class PlotLinesItem final : public QGraphicsItem
{
public:
    using Plots = std::vector<std::unique_ptr<PlotSeries>>;

    // A child of `chart` (and deleted with it), drawing `plots` in their order in the value
    // ranges of the two axes.
    PlotLinesItem(QChart *chart, QValueAxis *xAxis, QValueAxis *yAxis);
    Q_DISABLE_COPY_MOVE(PlotLinesItem)

    // The plots to draw, or null; they must outlive the item or be reset first.
    void setPlots(const Plots *plots);
    // Something the lines depend on changed: they are made again at the next drawing.
    void invalidate();

    QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
               QWidget *widget = nullptr) override;

private:
    struct Key
    {
        QSize size;
        double xMin = 0, xMax = 0, yMin = 0, yMax = 0;
        double scale = 0;
        bool operator==(const Key &) const = default;
    };
    QImage makeLayer(const Key &key) const;
    void cacheStaticItems(QGraphicsItem *item);

    QChart *m_chart;
    QPointer<QValueAxis> m_xAxis;
    QPointer<QValueAxis> m_yAxis;
    const Plots *m_plots = nullptr;
    QRectF m_area;
    QImage m_layer;
    Key m_key;
    bool m_dirty = true;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/PlotLinesItem.h"

#include "plot/LineRaster.h"
#include "plot/PlotSeries.h"

#include <QChart>
#include <QPainter>

#include <cmath>

namespace {

// Qt Charts draws its line series at this height: over the grid and axes, under the legend.
constexpr double kLinesZ = 4.5;

} // namespace

PlotLinesItem::PlotLinesItem(QChart *chart, QValueAxis *xAxis, QValueAxis *yAxis)
    : QGraphicsItem(chart), m_chart(chart), m_xAxis(xAxis), m_yAxis(yAxis)
{
    setZValue(kLinesZ);
    m_area = chart->plotArea();
    QObject::connect(chart, &QChart::plotAreaChanged, chart, [this](const QRectF &area) {
        if (area == m_area)
            return;
        prepareGeometryChange();
        m_area = area;
    });
}

void PlotLinesItem::setPlots(const Plots *plots)
{
    m_plots = plots;
    invalidate();
}

void PlotLinesItem::invalidate()
{
    m_dirty = true;
    update();
}

QRectF PlotLinesItem::boundingRect() const
{
    return m_area;
}

void PlotLinesItem::cacheStaticItems(QGraphicsItem *item)
{
    for (QGraphicsItem *child : item->childItems()) {
        if (child == this)
            continue;
        if (child->cacheMode() == QGraphicsItem::NoCache)
            child->setCacheMode(QGraphicsItem::DeviceCoordinateCache);
        cacheStaticItems(child);
    }
}

void PlotLinesItem::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    // Grid, ticks, labels and title change only with the size or the ranges, and Qt Charts
    // makes them again when they do (which drops the cache). Each is kept as a pixmap;
    // stroking the grid's long lines anew for every frame costs more than the lines of
    // the data. The chart may have made new ones since the last frame.
    cacheStaticItems(m_chart);
    if (!m_plots || m_plots->empty() || !m_xAxis || !m_yAxis || m_area.isEmpty())
        return;
    // Made in device pixels, so that a scaled screen or a scaled rendering gets sharp
    // lines of the right width.
    const QTransform device = painter->deviceTransform();
    const bool plain = device.type() <= QTransform::TxScale;
    const double scale = plain ? std::sqrt(std::abs(device.m11() * device.m22())) : 1.0;
    const QRectF target = plain ? device.mapRect(m_area) : m_area;
    Key key;
    key.size = QSize(int(std::lround(target.width())), int(std::lround(target.height())));
    key.xMin = m_xAxis->min();
    key.xMax = m_xAxis->max();
    key.yMin = m_yAxis->min();
    key.yMax = m_yAxis->max();
    key.scale = scale;
    if (key.size.isEmpty())
        return;
    if (m_dirty || !(key == m_key)) {
        m_layer = makeLayer(key);
        m_key = key;
        m_dirty = false;
    }
    // At the layer's own scale it is copied pixel for pixel (Qt's scaled drawing would
    // hand a large image to its thread pool).
    m_layer.setDevicePixelRatio(scale);
    painter->drawImage(m_area.topLeft(), m_layer);
}

QImage PlotLinesItem::makeLayer(const Key &key) const
{
    LineRaster raster(key.size);
    const double xSpan = key.xMax - key.xMin;
    const double ySpan = key.yMax - key.yMin;
    if (!(xSpan > 0.0) || !(ySpan > 0.0))
        return raster.toImage();
    const double sx = key.size.width() / xSpan;
    const double sy = key.size.height() / ySpan;
    QList<QPointF> mapped;
    for (const auto &plot : *m_plots) {
        const QList<QPointF> &points = plot->points();
        if (points.size() < 2)
            continue;
        mapped.resize(points.size());
        for (qsizetype i = 0; i < points.size(); ++i) {
            const QPointF &p = points.at(i);
            mapped[i] = QPointF((p.x() - key.xMin) * sx, (key.yMax - p.y()) * sy);
        }
        const QPen pen = plot->pen();
        // A pen of width 0 is one device pixel wide, whatever the scale.
        const double width = pen.widthF() > 0.0 ? pen.widthF() * key.scale : 1.0;
        raster.strokePolyline(mapped.constData(), mapped.size(), width,
                              qPremultiply(pen.color().rgba()));
    }
    return raster.toImage();
}

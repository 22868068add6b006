// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/PlotSeries.h"

#include <QAbstractAxis>
#include <QChart>
#include <QLineSeries>

#include <cmath>

PlotSeries::PlotSeries(QChart *graph, QString identifier, QString title, const QPen &pen,
                       QList<QAbstractAxis *> axes)
    : m_graph(graph), m_identifier(std::move(identifier)), m_title(std::move(title)), m_pen(pen),
      m_axes(std::move(axes))
{
    addSegment();
}

PlotSeries::~PlotSeries()
{
    for (const QPointer<QLineSeries> &segment : std::as_const(m_segments)) {
        if (!segment)
            continue;
        if (m_graph)
            m_graph->removeSeries(segment);
        delete segment.data();
    }
}

QLineSeries *PlotSeries::addSegment()
{
    auto *segment = new QLineSeries;
    segment->setName(m_title);
    segment->setUseOpenGL(false);
    if (m_graph) {
        m_graph->addSeries(segment);
        for (QAbstractAxis *axis : std::as_const(m_axes))
            segment->attachAxis(axis);
    }
    // After addSeries: the chart's theme decorates a new series with its own colours.
    segment->setPen(m_pen);
    m_segments.append(segment);
    return segment;
}

QLineSeries *PlotSeries::firstSegment() const
{
    return m_segments.isEmpty() ? nullptr : m_segments.first().data();
}

void PlotSeries::setTitle(const QString &title)
{
    if (title == m_title)
        return;
    m_title = title;
    for (const QPointer<QLineSeries> &segment : std::as_const(m_segments)) {
        if (segment)
            segment->setName(title);
    }
}

void PlotSeries::setPen(const QPen &pen)
{
    if (pen == m_pen)
        return;
    m_pen = pen;
    for (const QPointer<QLineSeries> &segment : std::as_const(m_segments)) {
        if (segment)
            segment->setPen(pen);
    }
}

namespace {

bool samePoints(const QList<QPointF> &a, const QList<QPointF> &b)
{
    if (a.size() != b.size())
        return false;
    for (qsizetype i = 0; i < a.size(); ++i) {
        const QPointF &p = a.at(i);
        const QPointF &q = b.at(i);
        // NaN marks a gap on both sides; compare gaps as equal.
        const bool gapP = std::isnan(p.y());
        const bool gapQ = std::isnan(q.y());
        if (gapP != gapQ || p.x() != q.x() || (!gapP && p.y() != q.y()))
            return false;
    }
    return true;
}

QList<QList<QPointF>> splitAtGaps(const QList<QPointF> &points)
{
    QList<QList<QPointF>> runs;
    QList<QPointF> run;
    for (const QPointF &p : points) {
        if (std::isnan(p.y()) || std::isnan(p.x())) {
            if (!run.isEmpty())
                runs.append(std::exchange(run, {}));
            continue;
        }
        run.append(p);
    }
    if (!run.isEmpty())
        runs.append(run);
    return runs;
}

} // namespace

bool PlotSeries::setPoints(const QList<QPointF> &points)
{
    if (m_hasPoints && samePoints(points, m_points))
        return false;
    m_points = points;
    m_hasPoints = true;

    QList<QList<QPointF>> runs = splitAtGaps(points);
    if (runs.isEmpty())
        runs.append(QList<QPointF>());
    while (m_segments.size() < runs.size())
        addSegment();
    for (qsizetype i = 0; i < m_segments.size(); ++i) {
        QLineSeries *segment = m_segments.at(i);
        if (!segment)
            continue;
        const QList<QPointF> &run = i < runs.size() ? runs.at(i) : QList<QPointF>();
        // One replace() per changed segment: a single repaint, no per-point signals.
        if (segment->points() != run)
            segment->replace(run);
    }
    return true;
}

QList<QList<QPointF>> PlotSeries::segmentPoints() const
{
    QList<QList<QPointF>> runs;
    for (const QPointer<QLineSeries> &segment : m_segments) {
        if (segment && segment->count() > 0)
            runs.append(segment->points());
    }
    return runs;
}

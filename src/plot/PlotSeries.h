// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QPen>
#include <QPointF>
#include <QPointer>
#include <QString>

class QAbstractAxis;
class QChart;
class QLineSeries;

// One line of a graph, known by its identifier. A missing sample must break the line, but
// Qt Charts draws straight across a NaN point, so each unbroken run of points is its own
// QLineSeries ("segment"), all with the same pen. Segments are reused from one update to
// the next; only a segment whose points change is re-pointed.
class PlotSeries
{
public:
    // Adds the first segment to `graph` and attaches it to `axes`.
    PlotSeries(QChart *graph, QString identifier, QString title, const QPen &pen,
               QList<QAbstractAxis *> axes);
    ~PlotSeries();
    Q_DISABLE_COPY_MOVE(PlotSeries)

    QString identifier() const { return m_identifier; }
    QString title() const { return m_title; }
    void setTitle(const QString &title);
    QPen pen() const { return m_pen; }
    void setPen(const QPen &pen);

    // Points in x order; a point whose y is NaN stands for a gap. Returns whether anything
    // had to be redrawn.
    bool setPoints(const QList<QPointF> &points);
    const QList<QPointF> &points() const { return m_points; }

    // The unbroken runs currently shown.
    QList<QList<QPointF>> segmentPoints() const;
    qsizetype segmentCount() const { return m_segments.size(); }
    QLineSeries *firstSegment() const;

private:
    QLineSeries *addSegment();

    QPointer<QChart> m_graph;
    QString m_identifier;
    QString m_title;
    QPen m_pen;
    QList<QAbstractAxis *> m_axes;
    QList<QPointer<QLineSeries>> m_segments;
    QList<QPointF> m_points;
    bool m_hasPoints = false;
};

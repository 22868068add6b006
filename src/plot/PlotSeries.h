// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QPen>
#include <QPointF>
#include <QString>

// One line of a graph, known by its identifier: its title, its pen and its points in data
// coordinates. A missing sample breaks the line. The graph's PlotLinesItem draws it.
class PlotSeries
{
public:
    PlotSeries(QString identifier, QString title, const QPen &pen);
    Q_DISABLE_COPY_MOVE(PlotSeries)

    QString identifier() const { return m_identifier; }
    QString title() const { return m_title; }
    void setTitle(const QString &title) { m_title = title; }
    QPen pen() const { return m_pen; }
    // Returns whether the pen changed.
    bool setPen(const QPen &pen);

    // Points in x order; a point whose y is NaN stands for a gap. Returns whether anything
    // changed (and has to be drawn again).
    bool setPoints(const QList<QPointF> &points);
    const QList<QPointF> &points() const { return m_points; }

    // The unbroken runs of points, as they are drawn.
    QList<QList<QPointF>> segmentPoints() const;

private:
    QString m_identifier;
    QString m_title;
    QPen m_pen;
    QList<QPointF> m_points;
    bool m_hasPoints = false;
};

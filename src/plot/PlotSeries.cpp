// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/PlotSeries.h"

#include <cmath>

PlotSeries::PlotSeries(QString identifier, QString title, const QPen &pen)
    : m_identifier(std::move(identifier)), m_title(std::move(title)), m_pen(pen)
{
}

bool PlotSeries::setPen(const QPen &pen)
{
    if (pen == m_pen)
        return false;
    m_pen = pen;
    return true;
}

namespace {

bool isGap(const QPointF &p)
{
    return std::isnan(p.y()) || std::isnan(p.x());
}

bool samePoints(const QList<QPointF> &a, const QList<QPointF> &b)
{
    if (a.size() != b.size())
        return false;
    for (qsizetype i = 0; i < a.size(); ++i) {
        const QPointF &p = a.at(i);
        const QPointF &q = b.at(i);
        // NaN marks a gap on both sides; compare gaps as equal.
        const bool gapP = isGap(p);
        if (gapP != isGap(q) || (!gapP && (p.x() != q.x() || p.y() != q.y())))
            return false;
    }
    return true;
}

} // namespace

bool PlotSeries::setPoints(const QList<QPointF> &points)
{
    if (m_hasPoints && samePoints(points, m_points))
        return false;
    m_points = points;
    m_hasPoints = true;
    return true;
}

QList<QList<QPointF>> PlotSeries::segmentPoints() const
{
    QList<QList<QPointF>> runs;
    QList<QPointF> run;
    for (const QPointF &p : m_points) {
        if (isGap(p)) {
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

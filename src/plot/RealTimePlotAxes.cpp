// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/RealTimePlotAxes.h"

#include "plot/SNRFormatter.h"
#include "plot/TimeFormatter.h"
#include "util/AxisCategories.h"

#include <QCategoryAxis>
#include <QChart>
#include <QValueAxis>

#include <algorithm>
#include <cmath>

namespace {

const QColor kGrey(QColor::fromRgbF(0.5f, 0.5f, 0.5f, 1.0f));

QPen majorGridPen()
{
    return QPen(QColor::fromRgbF(0.2f, 0.2f, 0.2f, 0.75f), 0.75);
}

QPen minorGridPen()
{
    return QPen(QColor::fromRgbF(1.0f, 1.0f, 1.0f, 0.1f), 0.25);
}

// Qt Charts draws an axis' tick marks with its line pen; the major tick style stands for
// both.
QPen majorTickPen()
{
    return QPen(kGrey, 1.25);
}

QFont detailLabelFont()
{
    QFont font(QStringLiteral("Arial"));
    font.setPixelSize(9);
    return font;
}

const QColor kDetailLabelColor(QColor::fromRgbF(0.9f, 0.9f, 0.9f, 1.0f));

// A category axis that carries only labels: no line, no grid, no shades.
QCategoryAxis *makeLabelAxis()
{
    auto *axis = new QCategoryAxis;
    axis->setLabelsPosition(QCategoryAxis::AxisLabelsPositionOnValue);
    return axis;
}

void styleLabelAxis(QCategoryAxis *axis)
{
    axis->setLineVisible(false);
    axis->setGridLineVisible(false);
    axis->setMinorGridLineVisible(false);
    axis->setShadesVisible(false);
}

std::pair<double, double> normalised(double location, double length)
{
    if (!std::isfinite(location) || !std::isfinite(length))
        return {0.0, 1.0};
    if (length > 0.0)
        return {location, location + length};
    if (length < 0.0)
        return {location + length, location};
    // An empty range cannot be drawn; show one unit around the location.
    return {location - 0.5, location + 0.5};
}

} // namespace

RealTimePlotAxes::RealTimePlotAxes(QChart *graph, Variant variant)
    : m_graph(graph), m_variant(variant)
{
    const bool detail = variant == Variant::Detail;

    // x axis: time.
    m_xAxis = new QValueAxis;
    m_xLabels = makeLabelAxis();
    graph->addAxis(m_xAxis, Qt::AlignBottom);
    graph->addAxis(m_xLabels, Qt::AlignBottom);
    m_xAxis->setTickType(QValueAxis::TicksFixed);
    m_xAxis->setTickCount(kTimeMajorTicks);
    m_xAxis->setMinorTickCount(detail ? 5 : 9);
    m_xAxis->setGridLinePen(majorGridPen());
    m_xAxis->setMinorGridLinePen(minorGridPen());
    m_xAxis->setLabelsVisible(false);
    m_xAxis->setTitleText(QString());
    styleLabelAxis(m_xLabels);

    // Left y axis: level in percent.
    m_yAxis = new QValueAxis;
    m_yLabels = makeLabelAxis();
    graph->addAxis(m_yAxis, Qt::AlignLeft);
    graph->addAxis(m_yLabels, Qt::AlignLeft);
    m_yAxis->setTickType(QValueAxis::TicksDynamic);
    m_yAxis->setMinorTickCount(3);
    m_yAxis->setGridLinePen(majorGridPen());
    m_yAxis->setMinorGridLinePen(minorGridPen());
    m_yAxis->setLinePen(majorTickPen());
    m_yAxis->setLabelsVisible(false);
    m_yAxis->setTitleText(QString());
    styleLabelAxis(m_yLabels);

    if (detail) {
        for (QCategoryAxis *labels : {m_xLabels.data(), m_yLabels.data()}) {
            labels->setLabelsFont(detailLabelFont());
            labels->setLabelsColor(kDetailLabelColor);
        }
    }

    // Right y axis of the interface plot: SNR, on the same plot space as the level.
    if (variant == Variant::Info) {
        m_snrAxis = new QValueAxis;
        m_snrLabels = makeLabelAxis();
        graph->addAxis(m_snrAxis, Qt::AlignRight);
        graph->addAxis(m_snrLabels, Qt::AlignRight);
        m_snrAxis->setTickType(QValueAxis::TicksFixed);
        m_snrAxis->setTickCount(kSNRMajorTicks);
        m_snrAxis->setMinorTickCount(3);
        m_snrAxis->setGridLineVisible(false);
        m_snrAxis->setMinorGridLineVisible(false);
        m_snrAxis->setShadesVisible(false);
        QPen line(kGrey, 2.0);
        line.setCapStyle(Qt::RoundCap);
        m_snrAxis->setLinePen(line);
        m_snrAxis->setLabelsVisible(false);
        styleLabelAxis(m_snrLabels);
        m_snrLabels->setLabelsColor(Qt::white);
    }
    applyX();
    applyY();
}

void RealTimePlotAxes::setXRange(double location, double length)
{
    const auto range = normalised(location, length);
    if (m_xSet && range == m_xRange)
        return;
    m_xRange = range;
    m_xSet = true;
    ++m_rangeChanges;
    applyX();
}

void RealTimePlotAxes::setYRange(double location, double length)
{
    const auto range = normalised(location, length);
    if (m_ySet && range == m_yRange)
        return;
    m_yRange = range;
    m_ySet = true;
    ++m_rangeChanges;
    applyY();
}

double RealTimePlotAxes::niceStep(double length)
{
    length = std::abs(length);
    if (!(length > 0.0) || !std::isfinite(length))
        return 1.0;
    const double raw = length / kPreferredLevelTicks;
    const double magnitude = std::pow(10.0, std::floor(std::log10(raw)));
    const double fraction = raw / magnitude;
    const double nice =
        fraction < 1.5 ? 1.0 : (fraction < 3.5 ? 2.0 : (fraction < 7.5 ? 5.0 : 10.0));
    return nice * magnitude;
}

QString RealTimePlotAxes::percentLabel(double value)
{
    return QString::number(std::lround(value * 100.0)) + QLatin1Char('%');
}

void RealTimePlotAxes::relabel(QCategoryAxis *axis, double min, double max,
                               const Labeller &labeller)
{
    if (!axis)
        return;
    const QStringList old = axis->categoriesLabels();
    for (const QString &label : old)
        axis->remove(label);
    // Labels sit on the end value of their category; the first one needs a start just
    // below the range so that it can sit on the range's minimum.
    const double span = std::max(std::abs(max - min), 1.0);
    axis->setStartValue(min - span * 1e-9);
    for (const auto &[value, label] : labeller(min, max))
        axis->append(label, value);
    axis->setRange(min, max);
}

void RealTimePlotAxes::applyX()
{
    const auto [min, max] = m_xRange;
    if (m_xAxis)
        m_xAxis->setRange(min, max);
    relabel(m_xLabels, min, max, [](double lo, double hi) {
        QList<std::pair<double, QString>> out;
        for (const auto &[v, s] : TimeFormatter::categories(lo, hi, kTimeMajorTicks))
            out.append({double(v), s});
        return out;
    });
}

void RealTimePlotAxes::applyY()
{
    const auto [min, max] = m_yRange;
    const double step = niceStep(max - min);
    if (m_yAxis) {
        m_yAxis->setRange(min, max);
        m_yAxis->setTickAnchor(std::ceil(min / step - 1e-9) * step);
        m_yAxis->setTickInterval(step);
    }
    relabel(m_yLabels, min, max, [step](double lo, double hi) {
        const double first = std::ceil(lo / step - 1e-9) * step;
        const int count = int(std::floor((hi - first) / step + 1e-9)) + 1;
        QList<std::pair<double, QString>> out;
        const double last = first + step * (count - 1);
        for (const auto &[v, s] : AxisCategories::build(first, last, count, percentLabel))
            out.append({double(v), s});
        return out;
    });
    if (m_snrAxis)
        m_snrAxis->setRange(min, max);
    relabel(m_snrLabels, min, max, [](double lo, double hi) {
        QList<std::pair<double, QString>> out;
        for (const auto &[v, s] : SNRFormatter::categories(lo, hi, kSNRMajorTicks))
            out.append({double(v), s});
        return out;
    });
}

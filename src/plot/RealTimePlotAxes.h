// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCategoryAxis>
#include <QList>
#include <QPointer>
#include <QString>
#include <QValueAxis>

#include <functional>
#include <utility>

class QChart;

// The axes of a signal plot and its plot space (the x and y ranges).
//
// Each axis is a pair: a QValueAxis that the series are attached to and that draws the
// line, ticks and grid, and beside it a QCategoryAxis that only draws the labels, because
// the labels come from formatters (time, percent, dB) that a printf pattern cannot
// express. The pair always shares one range.
//
// Setting a range to the value it already has does nothing at all: the update cycle sets
// the ranges again for every record, thousands of times, and a real change relabels and
// relayouts the chart.
class RealTimePlotAxes
{
public:
    enum class Variant { Info, Signal, Detail, Other };

    static constexpr int kTimeMajorTicks = 6;
    static constexpr int kSNRMajorTicks = 6;
    // Ticks the automatic level labelling aims for.
    static constexpr int kPreferredLevelTicks = 5;

    // Builds the axes on `graph` in the order x, left y, right SNR y (the last only for
    // Info).
    RealTimePlotAxes(QChart *graph, Variant variant);
    Q_DISABLE_COPY_MOVE(RealTimePlotAxes)

    // Ranges as the plotting convention gives them: a location and a length.
    void setXRange(double location, double length);
    void setYRange(double location, double length);
    std::pair<double, double> xRange() const { return m_xRange; }
    std::pair<double, double> yRange() const { return m_yRange; }
    // How many times a range really changed (and the chart was relabelled).
    int rangeChanges() const { return m_rangeChanges; }

    QValueAxis *xAxis() const { return m_xAxis; }
    QCategoryAxis *xLabels() const { return m_xLabels; }
    QValueAxis *yAxis() const { return m_yAxis; }
    QCategoryAxis *yLabels() const { return m_yLabels; }
    QValueAxis *snrAxis() const { return m_snrAxis; }
    QCategoryAxis *snrLabels() const { return m_snrLabels; }

    // The level axis' automatic step: 1, 2 or 5 times a power of ten, about
    // kPreferredLevelTicks intervals over the range.
    static double niceStep(double length);
    // "0%" for 0.0, "100%" for 1.0.
    static QString percentLabel(double value);

private:
    using Labeller = std::function<QList<std::pair<double, QString>>(double, double)>;
    static void relabel(QCategoryAxis *axis, double min, double max, const Labeller &labeller);
    void applyX();
    void applyY();

    QPointer<QChart> m_graph;
    Variant m_variant;
    QPointer<QValueAxis> m_xAxis;
    QPointer<QCategoryAxis> m_xLabels;
    QPointer<QValueAxis> m_yAxis;
    QPointer<QCategoryAxis> m_yLabels;
    QPointer<QValueAxis> m_snrAxis;
    QPointer<QCategoryAxis> m_snrLabels;
    std::pair<double, double> m_xRange{0.0, 1.0};
    std::pair<double, double> m_yRange{0.0, 1.0};
    bool m_xSet = false;
    bool m_ySet = false;
    int m_rangeChanges = 0;
};

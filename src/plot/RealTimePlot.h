// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/NetworkObject.h"
#include "plot/PlotItem.h"
#include "plot/RealTimePlotAxes.h"

#include <QColor>
#include <QHash>
#include <QList>
#include <QPointer>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

class PlotDelegate;
class PlotLegend;
class PlotSeries;
class QChart;

// Signal histories against time, as line series on one graph. The controller makes three:
// the interface plot ("info": signal, noise and SNR with a right-hand dB axis), the
// all-networks plot ("signal": one series per network, re-chosen every cycle) and the
// compact detail plot ("detail"). The host view's identifier picks the variant.
//
// Samples are pushed in per series with setData(); the newest sample is always drawn at
// x = numberOfDatas - 1 and older ones to its left. A gap marker draws no point and breaks
// the line.
class RealTimePlot : public PlotItem
{
    Q_OBJECT

public:
    static inline const QString kLinePlots = QStringLiteral("Line Plots");
    static inline const QString kPlotIdentifier = QStringLiteral("Data Source Plot");
    static constexpr qsizetype kTitleLength = 16;

    struct FramePadding
    {
        double top, right, bottom, left;
    };

    explicit RealTimePlot(QObject *parent = nullptr);
    ~RealTimePlot() override;

    // Registers the class with the plot registry.
    static void load();

    PlotDelegate *delegate() const { return m_delegate; }
    // The delegate is not owned; it must outlive the plot or be reset.
    void setDelegate(PlotDelegate *delegate) { m_delegate = delegate; }

    void generateData() override;
    void renderInLayer(QChartView *hostingView, const PlotTheme *theme, bool animated) override;
    void renderInLayer(const std::optional<QList<QVariantMap>> &series, QChartView *hostingView,
                       const PlotTheme *theme, bool animated) override;
    void killGraph() override;
    void reloadData() override;

    // `string` itself when it has at most `fixLen` characters, else its first `fixLen`.
    static QString string(const QString &string, qsizetype fixLen);
    static QString plotTitle(const std::optional<QString> &name);

    void updateSignalPlot();
    // Replaces one series' samples; a null identifier means kPlotIdentifier. Nothing is
    // stored (or converted) unless the graph has a series of that identifier.
    void setData(const QList<LevelSample> &data, const QString &identifier = QString());
    void setData(const QList<SNRSample> &data, const QString &identifier = QString());
    void setData(const LevelHistory &data, const QString &identifier = QString());
    void setData(const SNRHistory &data, const QString &identifier = QString());

    quint64 numberOfRecordsForPlot(const QString &plotIdentifier) const;
    // Field 0: x, the record index; field 1: y, the sample shown at that record (the SNR
    // series "r" on the 0..1 level scale), or nothing.
    std::optional<double> numberForPlot(const QString &plotIdentifier, int field,
                                        quint64 recordIndex) const;

    // The palette of 21 hues; kept for callers, not used for drawing.
    const QList<QColor> &availableColors() const { return m_availableColors; }
    const QHash<QString, QList<std::optional<double>>> &plotDatas() const { return m_plotDatas; }

    // What the graph holds, for the window and for tests.
    static RealTimePlotAxes::Variant variantForIdentifier(const QString &identifier);
    static FramePadding framePaddingForIdentifier(const QString &identifier);
    QChart *graph() const;
    RealTimePlotAxes *axes() const;
    PlotLegend *legend() const;
    QStringList plotIdentifiers() const;
    const PlotSeries *plot(const QString &identifier) const;

private:
    struct Graph;

    PlotSeries *findPlot(const QChart *graph, const QString &identifier) const;
    PlotSeries *addPlot(const QString &identifier, const QString &title, const QPen &pen);
    std::unique_ptr<PlotSeries> takePlot(const QString &identifier);
    void resetRanges(const QChart *graph);
    void storeAndShow(const QString &identifier, QList<std::optional<double>> data);
    void showData(PlotSeries *plot);
    static QPen linePen(const QColor &color, double width);
    template <typename Samples> void setSamples(const Samples &data, const QString &identifier);

    PlotDelegate *m_delegate = nullptr;
    QHash<QString, QList<std::optional<double>>> m_plotDatas;
    QList<QColor> m_availableColors;
    std::unique_ptr<Graph> m_graph;
};

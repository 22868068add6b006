// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/RealTimePlot.h"

#include "plot/GraphFrame.h"
#include "plot/PlotDelegate.h"
#include "plot/PlotLegend.h"
#include "plot/PlotLinesItem.h"
#include "plot/PlotSeries.h"
#include "plot/PlotTheme.h"
#include "util/Clock.h"

#include <QChart>
#include <QChartView>
#include <QLegend>

#include <algorithm>
#include <cmath>
#include <map>

namespace {

const QString kSignalId = QStringLiteral("s");
const QString kNoiseId = QStringLiteral("n");
const QString kSNRId = QStringLiteral("r");

// A network counts as heard when its last update lies at most this far in the past.
constexpr qint64 kFreshnessMsecs = 1000;

// The sample a record index shows: newest at n - 1, older ones to its left. SNR values are
// in the record's own dB-like scale and share the 0..1 level axis after division by 100.
std::optional<double> sampleForRecord(const QList<std::optional<double>> &data, bool snr,
                                      qint64 numberOfDatas, qint64 recordIndex)
{
    const qint64 count = data.size();
    const qint64 j = count + (recordIndex - numberOfDatas);
    if (j < 0 || j >= count)
        return std::nullopt;
    const std::optional<double> &sample = data.at(j);
    if (!sample)
        return std::nullopt;
    if (snr)
        return double(float(*sample) / 100.0f);
    return *sample;
}

// The class announces itself when the program loads, as every plot class does.
[[maybe_unused]] const bool kRegistered = (RealTimePlot::load(), true);

} // namespace

struct RealTimePlot::Graph
{
    QPointer<QChart> chart;
    std::unique_ptr<RealTimePlotAxes> axes;
    std::vector<std::unique_ptr<PlotSeries>> plots; // graph order
    QHash<QString, PlotSeries *> firstById;         // the first plot of each identifier
    QPointer<PlotLegend> legend;
    PlotLinesItem *lines = nullptr; // a child of the chart

    void linesChanged()
    {
        if (chart && lines)
            lines->invalidate();
    }

    void rebuildIndex()
    {
        firstById.clear();
        for (const auto &plot : plots) {
            if (!firstById.contains(plot->identifier()))
                firstById.insert(plot->identifier(), plot.get());
        }
    }

    ~Graph()
    {
        if (chart && lines)
            lines->setPlots(nullptr);
        plots.clear();
    }
};

RealTimePlot::RealTimePlot(QObject *parent) : PlotItem(parent)
{
    m_availableColors.reserve(21);
    for (int i = 0; i <= 20; ++i)
        m_availableColors.append(QColor::fromHsvF(float(i) / 20.0f, 0.9f, 0.8f, 1.0f));
    setTitle(QStringLiteral("Signal Strength"));
    setSection(kLinePlots);
}

RealTimePlot::~RealTimePlot()
{
    RealTimePlot::killGraph();
}

void RealTimePlot::load()
{
    registerPlotItem(&RealTimePlot::staticMetaObject);
}

void RealTimePlot::generateData()
{
    m_plotDatas.clear();
}

void RealTimePlot::killGraph()
{
    m_graph.reset();
    PlotItem::killGraph();
}

QString RealTimePlot::string(const QString &string, qsizetype fixLen)
{
    if (string.size() <= fixLen)
        return string;
    qsizetype length = std::max<qsizetype>(0, fixLen);
    // Never leave half of a surrogate pair at the end.
    if (length > 0 && string.at(length - 1).isHighSurrogate())
        --length;
    return string.left(length);
}

QString RealTimePlot::plotTitle(const std::optional<QString> &name)
{
    return name ? string(*name, kTitleLength) : QString();
}

RealTimePlotAxes::Variant RealTimePlot::variantForIdentifier(const QString &identifier)
{
    if (identifier == QLatin1String("detail"))
        return RealTimePlotAxes::Variant::Detail;
    if (identifier == QLatin1String("signal"))
        return RealTimePlotAxes::Variant::Signal;
    if (identifier == QLatin1String("info"))
        return RealTimePlotAxes::Variant::Info;
    return RealTimePlotAxes::Variant::Other;
}

RealTimePlot::FramePadding RealTimePlot::framePaddingForIdentifier(const QString &identifier)
{
    switch (variantForIdentifier(identifier)) {
    case RealTimePlotAxes::Variant::Detail:
        return {10, 10, 23, 42};
    case RealTimePlotAxes::Variant::Signal:
        return {15, 15, 50, 50};
    default:
        return {15, 122, 50, 50}; // the interface plot leaves room for its dB axis and legend
    }
}

QPen RealTimePlot::linePen(const QColor &color, double width)
{
    // Widths come from signal levels; keep garbage levels from making absurd pens.
    const double safeWidth = std::isfinite(width) ? std::clamp(width, 0.0, 16.0) : 1.0;
    QPen pen(color.isValid() ? color : QColor(Qt::gray), safeWidth);
    // Qt Charts strokes a line series segment by segment. Square caps close the notches
    // between wide segments and cost a third of round ones.
    pen.setCapStyle(Qt::SquareCap);
    pen.setJoinStyle(Qt::MiterJoin);
    return pen;
}

void RealTimePlot::renderInLayer(QChartView *hostingView, const PlotTheme *theme, bool animated)
{
    renderInLayer(std::nullopt, hostingView, theme, animated);
}

void RealTimePlot::renderInLayer(const std::optional<QList<QVariantMap>> &series,
                                 QChartView *hostingView, const PlotTheme *theme, bool animated)
{
    Q_UNUSED(animated); // live data is never animated
    const QRectF bounds = hostingView ? QRectF(hostingView->rect()) : QRectF();

    auto *chart = new QChart;
    chart->setAnimationOptions(QChart::NoAnimation);
    addGraph(chart, hostingView);
    chart->resize(bounds.size());
    applyTheme(theme, chart, PlotTheme::darkGradient());
    chart->legend()->hide(); // the plot draws its own legend, in columns
    setTitleDefaultsForGraph(chart, bounds);
    setPaddingDefaultsForGraph(chart, bounds);

    const QString identifier = identifierOfView(hostingView);
    const RealTimePlotAxes::Variant variant = variantForIdentifier(identifier);
    const FramePadding padding = framePaddingForIdentifier(identifier);
    GraphFrame::of(chart)->setPlotAreaFramePadding(
        QMarginsF(padding.left, padding.top, padding.right, padding.bottom));

    m_graph = std::make_unique<Graph>();
    m_graph->chart = chart;
    m_graph->axes = std::make_unique<RealTimePlotAxes>(chart, variant);
    const qint64 n = m_delegate ? m_delegate->numberOfDatas() : 0;
    m_graph->axes->setXRange(0.0, double(n - 1));
    m_graph->axes->setYRange(0.0, 1.0);
    m_graph->lines = new PlotLinesItem(chart, m_graph->axes->xAxis(), m_graph->axes->yAxis());
    m_graph->lines->setPlots(&m_graph->plots);

    if (series) {
        for (const QVariantMap &entry : *series) {
            const QVariant name = entry.value(QStringLiteral("n"));
            const std::optional<QString> title =
                name.isNull() ? std::nullopt : std::optional<QString>(name.toString());
            const double s = entry.value(QStringLiteral("s")).toFloat();
            const QColor color = entry.value(QStringLiteral("c")).value<QColor>();
            addPlot(entry.value(QStringLiteral("i")).toString(), plotTitle(title),
                    linePen(color, 3.0 * s + 1.0));
        }
    } else {
        addPlot(kSignalId, QStringLiteral("Signal"), linePen(QColor::fromRgbF(0, 1, 0, 1), 1.5));
        addPlot(kNoiseId, QStringLiteral("Noise"), linePen(QColor::fromRgbF(1, 0, 0, 1), 1.5));
        addPlot(kSNRId, QStringLiteral("SNR"), linePen(QColor::fromRgbF(0, 0, 1, 1), 1.5));
    }

    if (variant == RealTimePlotAxes::Variant::Signal ||
        variant == RealTimePlotAxes::Variant::Info) {
        auto *legend = new PlotLegend(chart);
        legend->setTextColor(Qt::white);
        legend->setBorderPen(QPen(QColor::fromRgbF(2.0f / 3, 2.0f / 3, 2.0f / 3, 1), 1.0));
        legend->setFill(QColor::fromRgbF(1.0f / 3, 1.0f / 3, 1.0f / 3, 1));
        legend->setCornerRadius(5.0);
        if (variant == RealTimePlotAxes::Variant::Signal) {
            legend->setRowMargin(0.0);
            legend->setColumns(5);
            legend->setAnchor(PlotLegend::Anchor::Top, QPointF(20.0, -90.0));
        } else {
            legend->setColumns(1);
            legend->setAnchor(PlotLegend::Anchor::Right, QPointF(-36.0, 0.0));
        }
        // The title is fixed to the top whatever the size; in a tall chart it reaches below
        // the legend's place.
        const QRectF title = GraphFrame::of(chart)->titleRect();
        if (!title.isEmpty())
            legend->setMinimumTop(title.bottom() + 2.0);
        QList<PlotLegend::Entry> entries;
        for (const auto &plot : m_graph->plots)
            entries.append({plot->title(), plot->pen()});
        legend->setEntries(entries);
        m_graph->legend = legend;
    }
}

PlotSeries *RealTimePlot::addPlot(const QString &identifier, const QString &title, const QPen &pen)
{
    auto plot = std::make_unique<PlotSeries>(identifier, title, pen);
    PlotSeries *raw = plot.get();
    m_graph->plots.push_back(std::move(plot));
    m_graph->linesChanged();
    if (!m_graph->firstById.contains(identifier))
        m_graph->firstById.insert(identifier, raw);
    return raw;
}

PlotSeries *RealTimePlot::findPlot(const QChart *graph, const QString &identifier) const
{
    if (!m_graph || !graph || m_graph->chart != graph)
        return nullptr;
    return m_graph->firstById.value(identifier, nullptr);
}

void RealTimePlot::resetRanges(const QChart *graph)
{
    if (!m_graph || !graph || m_graph->chart != graph)
        return;
    const qint64 n = m_delegate ? m_delegate->numberOfDatas() : 0;
    m_graph->axes->setXRange(0.0, double(n - 1));
    m_graph->axes->setYRange(0.0, 1.0);
}

template <typename Samples>
void RealTimePlot::setSamples(const Samples &data, const QString &identifier)
{
    QChart *first = firstGraph();
    if (!first)
        return;
    const QString id = identifier.isNull() ? kPlotIdentifier : identifier;
    PlotSeries *plot = findPlot(first, id);
    resetRanges(lastGraph());
    if (!plot)
        return;
    QList<std::optional<double>> &stored = m_plotDatas[id];
    stored.clear();
    stored.reserve(data.size());
    for (const auto &sample : data)
        stored.append(sample ? std::optional<double>(double(*sample)) : std::nullopt);
    resetRanges(first);
    showData(plot);
}

void RealTimePlot::setData(const QList<LevelSample> &data, const QString &identifier)
{
    setSamples(data, identifier);
}

void RealTimePlot::setData(const QList<SNRSample> &data, const QString &identifier)
{
    setSamples(data, identifier);
}

void RealTimePlot::setData(const LevelHistory &data, const QString &identifier)
{
    setSamples(data, identifier);
}

void RealTimePlot::setData(const SNRHistory &data, const QString &identifier)
{
    setSamples(data, identifier);
}

void RealTimePlot::showData(PlotSeries *plot)
{
    const qint64 n = m_delegate ? m_delegate->numberOfDatas() : 0;
    QList<QPointF> points;
    const auto it = m_plotDatas.constFind(plot->identifier());
    if (it != m_plotDatas.cend() && n > 0) {
        const bool snr = plot->identifier() == kSNRId;
        // Records left of the oldest sample show nothing; start where the samples start.
        const qint64 first = std::max<qint64>(0, n - qint64(it->size()));
        points.reserve(n - first);
        for (qint64 record = first; record < n; ++record) {
            const std::optional<double> y = sampleForRecord(*it, snr, n, record);
            points.append(QPointF(double(record), y ? *y : qQNaN()));
        }
    }
    if (plot->setPoints(points) && m_graph)
        m_graph->linesChanged();
}

void RealTimePlot::reloadData()
{
    if (!m_graph)
        return;
    for (const auto &plot : m_graph->plots)
        showData(plot.get());
}

quint64 RealTimePlot::numberOfRecordsForPlot(const QString &plotIdentifier) const
{
    Q_UNUSED(plotIdentifier);
    const qint64 n = m_delegate ? m_delegate->numberOfDatas() : 0;
    return quint64(std::max<qint64>(0, n));
}

std::optional<double> RealTimePlot::numberForPlot(const QString &plotIdentifier, int field,
                                                  quint64 recordIndex) const
{
    if (field == 0)
        return double(recordIndex);
    if (field != 1)
        return std::nullopt;
    const qint64 n = m_delegate ? m_delegate->numberOfDatas() : 0;
    static const QList<std::optional<double>> kNone;
    const auto it = m_plotDatas.constFind(plotIdentifier);
    return sampleForRecord(it == m_plotDatas.cend() ? kNone : *it, plotIdentifier == kSNRId, n,
                           qint64(recordIndex));
}

void RealTimePlot::updateSignalPlot()
{
    QChart *last = lastGraph();
    if (!m_delegate || !last || !m_graph || m_graph->chart != last)
        return;

    // 1. Take out the plot of every listed network. They are kept aside, not deleted: a
    // network that is chosen again gets its old series back instead of a new one.
    const NetworkList &listed = m_delegate->networks();
    // Counted only for the identifiers the graph holds (a few hundred at most), not for every
    // listed network: a survey of a whole city lists a hundred thousand.
    QHash<QString, int> removals;
    for (const auto &plot : m_graph->plots)
        removals.insert(plot->identifier(), 0);
    if (!listed.hasDuplicateBssids()) {
        for (auto it = removals.begin(); it != removals.end(); ++it)
            it.value() = listed.networkWithBssid(it.key()) ? 1 : 0;
    } else if (!removals.isEmpty()) {
        for (const NetworkObjectRef &network : listed) {
            if (!network)
                continue;
            const auto found = removals.find(network->bssid());
            if (found != removals.end())
                ++found.value();
        }
    }
    std::map<QString, std::vector<std::unique_ptr<PlotSeries>>> aside;
    std::vector<std::unique_ptr<PlotSeries>> kept;
    kept.reserve(m_graph->plots.size());
    for (auto &plot : m_graph->plots) {
        auto found = removals.find(plot->identifier());
        if (found != removals.end() && found.value() > 0) {
            --found.value();
            aside[plot->identifier()].push_back(std::move(plot));
        } else {
            kept.push_back(std::move(plot));
        }
    }
    m_graph->plots = std::move(kept);
    m_graph->rebuildIndex();

    // 2. The legend starts empty.
    QList<PlotLegend::Entry> entries;

    // 3. Fill the places in list order with networks heard in the last second. Every plot
    // in the graph takes a place, leftovers from the initial series list included.
    const qint64 places = m_delegate->numberOfTopNetworks();
    const QDateTime now = Clock::now().toUTC(); // records are stamped in UTC: no zone lookups
    for (qsizetype i = 0; i < m_delegate->networks().count(); ++i) {
        // Plots are only added here, so once the places are full the rest of the list
        // cannot take one.
        if (qint64(m_graph->plots.size()) >= places)
            break;
        const NetworkObjectRef &network = m_delegate->networks().at(i);
        if (!network)
            continue;
        const QDateTime updated = network->lastUpdated();
        if (!updated.isValid() || now.msecsTo(updated) < -kFreshnessMsecs)
            continue;
        const QString bssid = network->bssid();
        const QString title = plotTitle(network->name());
        const QPen pen = linePen(network->color(), network->signal() * 3.0 + 1.0);
        PlotSeries *plot = nullptr;
        auto reuse = aside.find(bssid);
        if (reuse != aside.end() && !reuse->second.empty()) {
            std::unique_ptr<PlotSeries> again = std::move(reuse->second.front());
            reuse->second.erase(reuse->second.begin());
            again->setTitle(title);
            again->setPen(pen);
            plot = again.get();
            m_graph->plots.push_back(std::move(again));
            if (!m_graph->firstById.contains(bssid))
                m_graph->firstById.insert(bssid, plot);
        } else {
            plot = addPlot(bssid, title, pen);
        }
        setData(network->signals(), bssid);
        entries.append({plot->title(), plot->pen()});
    }
    aside.clear();           // networks not chosen again leave the chart here
    m_graph->linesChanged(); // the order, the pens or the set of lines may have changed

    if (m_graph->legend)
        m_graph->legend->setEntries(entries);

    // 4. The title names the limit.
    const QString title = places < 51 ? QStringLiteral("Signal Strength (Top %1)").arg(places)
                                      : QStringLiteral("Signal Strength (All)");
    GraphFrame::of(m_graph->chart)->setTitle(title);
}

QChart *RealTimePlot::graph() const
{
    return m_graph ? m_graph->chart.data() : nullptr;
}

RealTimePlotAxes *RealTimePlot::axes() const
{
    return m_graph ? m_graph->axes.get() : nullptr;
}

PlotLegend *RealTimePlot::legend() const
{
    return m_graph ? m_graph->legend.data() : nullptr;
}

QStringList RealTimePlot::plotIdentifiers() const
{
    QStringList ids;
    if (m_graph) {
        for (const auto &plot : m_graph->plots)
            ids.append(plot->identifier());
    }
    return ids;
}

const PlotSeries *RealTimePlot::plot(const QString &identifier) const
{
    return m_graph ? m_graph->firstById.value(identifier, nullptr) : nullptr;
}

// SPDX-License-Identifier: GPL-3.0-or-later
// The plot views and the real-time plot, on one fake controller and one manual clock.
#include "plot/ChannelOccupancyView.h"
#include "plot/GraphFrame.h"
#include "plot/PlotDelegate.h"
#include "plot/PlotItem.h"
#include "plot/PlotLegend.h"
#include "plot/PlotSeries.h"
#include "plot/PlotTheme.h"
#include "plot/PlotView.h"
#include "plot/RealTimePlot.h"
#include "plot/WiFiChannelView.h"
#include "plot/WiFiMapView.h"
#include "support/FakeBackend.h"
#include "util/Clock.h"
#include "util/RandomSource.h"
#include "wireless/CWNetwork.h"
#include "wireless/ie/FrequencyPlan.h"

#include <QChart>
#include <QChartView>
#include <QLineSeries>
#include <QPainter>
#include <QtTest>

#include <cmath>

using Band = WiFiChannelLayout::Band;
using Placement = WiFiMapLayout::Placement;

namespace {

constexpr double kDegree = 0.0174532925;
const QRectF kMapBounds(0, 0, 490, 390);
const QRectF kChannelBounds(0, 0, 935, 465);

QList<LevelSample> levels(int count, float first = 0.0f, float step = 0.001f)
{
    QList<LevelSample> samples;
    for (int i = 0; i < count; ++i)
        samples.append(first + step * float(i));
    return samples;
}

// A record with one signal sample `signal` (a level fraction); neighbours' hues differ.
NetworkObjectRef makeNetwork(const QString &bssid, const std::optional<QString> &name,
                             double signal, int index = 0)
{
    auto network = std::make_shared<NetworkObject>();
    network->setBssid(bssid);
    network->setName(name);
    network->setSignals({LevelSample(float(signal))});
    network->setNoises({LevelSample(0.1f)});
    network->setSNRs({SNRSample(signal * 100.0)});
    network->setChannel(1);
    network->setChannelBand(1);
    network->setColor(QColor::fromHsvF(float(index % 50) / 49.0f, 0.8f, 0.9f));
    return network;
}

// The controller as the views see it: records, an interface whose BSSID can be set (nullopt:
// not associated), and the two numbers from the preferences.
struct FakePlotDelegate : PlotDelegate
{
    const NetworkList &networks() const override { return list; }
    CWInterfaceRef currentInterface() const override { return interface; }
    qint64 numberOfDatas() const override { return datas; }
    qint64 numberOfTopNetworks() const override { return top; }
    void associate(const std::optional<QString> &bssid) { backend->currentBssid = bssid; }
    NetworkObjectRef add(const QString &bssid, const std::optional<QString> &name, double signal,
                         const QDateTime &updated = QDateTime())
    {
        NetworkObjectRef network = makeNetwork(bssid, name, signal, int(list.count()));
        network->setLastUpdated(updated);
        list.append(network);
        return network;
    }

    NetworkList list;
    std::shared_ptr<FakeBackend> backend = std::make_shared<FakeBackend>();
    CWInterfaceRef interface = std::make_shared<CWInterface>(backend, "wlan0");
    qint64 datas = 300;
    qint64 top = 10;
};

// `count` records as the radios give them: 20 and 40 MHz on 2.4 GHz, 20 to 160 MHz and 80+80
// on 5 GHz, 20 to 320 MHz on 6 GHz, signals from -90 to -30 dBm; the same seed, the same list.
NetworkList makeOnAir(int count, quint32 seed, const QDateTime &updated)
{
    static const char *const kNames[] = {"HomeNet",      "Vodafone-8A2C", "eduroam",
                                         "Cafe Guest",   "Büro 2.OG",     "o2-WLAN42",
                                         "TP-Link_5E12", "Telekom_FON"};
    static const int k5GHz[] = {36, 44, 52, 60, 100, 108, 116, 124, 132, 149, 157, 165};
    static const int k5Widths[] = {20, 40, 80, 80, 160}, k6Widths[] = {20, 80, 160, 320};
    SeededRandomSource random(seed);
    NetworkList list;
    for (int i = 0; i < count; ++i) {
        CWNetwork::Data d;
        d.ssidData = QStringLiteral("%1-%2").arg(QString::fromUtf8(kNames[i % 8])).arg(i).toUtf8();
        d.bssid = QStringLiteral("02:00:00:00:%1:%2")
                      .arg(i >> 8 & 0xff, 2, 16, QLatin1Char('0'))
                      .arg(i & 0xff, 2, 16, QLatin1Char('0'));
        d.rssiValue = random.uniform(-90, -30);
        d.noiseMeasurement = -95;
        CWOperatingChannel &c = d.operatingChannel;
        const int kind = random.uniform(0, 9);
        if (kind < 5) {
            c.band = kCWChannelBand2GHz;
            c.primaryChannel = random.uniform(1, 13);
            c.widthMHz = kind == 4 ? 40 : 20;
        } else if (kind < 9) {
            c.band = kCWChannelBand5GHz;
            c.primaryChannel = k5GHz[random.uniform(0, 11)];
            c.widthMHz = k5Widths[random.uniform(0, 4)];
        } else {
            c.band = kCWChannelBand6GHz;
            c.primaryChannel = 1 + 4 * random.uniform(0, 58);
            c.widthMHz = k6Widths[random.uniform(0, 3)];
        }
        int center = FrequencyPlan::blockCenter(c.primaryChannel, c.band, c.widthMHz);
        if (center == 0) { // no such block there (160 on 132, 320 high up): take 20 MHz
            c.widthMHz = 20;
            center = c.primaryChannel;
        }
        c.centerMHz = {FrequencyPlan::frequencyForChannel(center, c.band), 0};
        if (c.band == kCWChannelBand5GHz && c.widthMHz == 80 && i % 7 == 0 && center < 100)
            c.centerMHz[1] = FrequencyPlan::frequencyForChannel(155, c.band); // an 80+80 one
        d.wlanChannel = CWChannel(c.primaryChannel, c.band, kCWChannelWidth20MHz);
        NetworkObjectRef network =
            NetworkObject::objectWithCWNetwork(CWNetwork::create(d), updated);
        const int h = random.uniform(0, 49), sat = random.uniform(0, 9), b = random.uniform(0, 9);
        network->setColor(QColor::fromHsvF(float(h / 49.0), float(0.6 + 0.4 * sat / 9.0),
                                           float(0.6 + 0.4 * b / 9.0), 1.0f));
        list.append(network);
    }
    return list;
}

void paint(WiFiView &view)
{
    QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    view.drawRect(painter);
}

} // namespace

class TestPlot : public QObject
{
    Q_OBJECT

    ManualClock m_clock{QDateTime(QDate(2024, 5, 1), QTime(12, 0), Qt::UTC)};
    const QDateTime m_now = m_clock.currentDateTime();
    FakePlotDelegate m_delegate;
    std::unique_ptr<PlotView> m_host;
    std::unique_ptr<RealTimePlot> m_plot;
    std::unique_ptr<WiFiMapView> m_map;

    // The real-time plot rebuilt in a fresh host of that identifier.
    void renderInto(const QString &identifier, QSize size = QSize(800, 500),
                    const QList<QVariantMap> &list = {}, bool strongerWider = false)
    {
        m_host = std::make_unique<PlotView>();
        m_host->setIdentifier(identifier);
        m_host->resize(size);
        if (identifier == QLatin1String("signal"))
            m_plot->render(list, m_host.get(), nullptr, strongerWider);
        else
            m_plot->renderInView(m_host.get(), nullptr, false);
    }
    // The map of the fake controller's networks, painted once unless told otherwise.
    WiFiMapView &map(QSize size = QSize(490, 390), bool painted = true)
    {
        m_map = std::make_unique<WiFiMapView>();
        m_map->setDelegate(&m_delegate);
        m_map->resize(size);
        if (painted)
            paint(*m_map);
        return *m_map;
    }
    void addNetworks(int count, const char *bssid, const char *name, double signal,
                     const QDateTime &updated = QDateTime())
    {
        for (int i = 0; i < count; ++i)
            m_delegate.add(QString::fromLatin1(bssid).arg(i), QString::fromLatin1(name).arg(i),
                           signal, updated);
    }

private Q_SLOTS:
    void init()
    {
        Clock::setInstance(&m_clock);
        m_delegate = FakePlotDelegate();
        m_plot = std::make_unique<RealTimePlot>();
        m_plot->setDelegate(&m_delegate);
    }
    void cleanup()
    {
        m_plot.reset();
        m_host.reset();
        m_map.reset();
        Clock::setInstance(nullptr);
    }

    void numberForPlot()
    {
        const double none = qQNaN();
        // 10 samples valued 0.001 x i (in single precision) shown on 300 records; 350 samples
        // on 300 records: record 0 shows sample 50.
        // datas, samples, series, field, record, expected (NaN: no value)
        const std::tuple<qint64, int, const char *, int, quint64, double> rows[] = {
            {300, 10, "s", 1, 0, none},
            {300, 10, "s", 1, 289, none},
            {300, 10, "s", 1, 290, 0.0},
            {300, 10, "s", 1, 299, double(0.001f * 9.0f)},
            {300, 10, "s", 1, 300, none},
            {300, 350, "n", 1, 0, double(0.001f * 50.0f)},
            {300, 350, "n", 1, 299, double(0.001f * 349.0f)},
            {300, 10, "s", 0, 17, 17.0},
            {300, 0, "s", 0, 5, 5.0},
            {300, 10, "s", 2, 295, none},
            {0, 10, "s", 1, 0, none},
            {300, 10, "x", 1, 299, none}};
        for (const auto &[datas, samples, name, field, record, expected] : rows) {
            m_delegate.datas = datas;
            renderInto("info");
            m_plot->setData(levels(samples), "s");
            m_plot->setData(levels(samples), "n");
            const QString series = QString::fromLatin1(name);
            QCOMPARE(m_plot->numberForPlot(series, field, record),
                     std::isnan(expected) ? std::nullopt : std::optional<double>(expected));
            QCOMPARE(m_plot->numberOfRecordsForPlot(series), quint64(datas));
        }
        // The series' points are exactly what numberForPlot answers (SNR scaled by 1/100); a
        // missing sample breaks the line into runs, and a history without gaps joins it again.
        m_delegate.datas = 10;
        renderInto("info");
        m_plot->setData(QList<SNRSample>{25.0, 40.377, -3.7}, "r");
        const QList<QPointF> points = m_plot->plot("r")->points();
        QCOMPARE(points.size(), 3);
        for (const QPointF &p : points)
            QCOMPARE(p.y(), *m_plot->numberForPlot("r", 1, quint64(p.x())));
        QCOMPARE(points.first(), QPointF(7, 0.25));
        QCOMPARE(points.last(), QPointF(9, double(float(-3.7) / 100.0f)));

        QList<LevelSample> samples = levels(8, 0.5f, 0.01f);
        samples[3] = samples[4] = std::nullopt;
        m_plot->setData(samples, "s");
        QVERIFY(!m_plot->numberForPlot("s", 1, 5).has_value());
        const PlotSeries *series = m_plot->plot("s");
        const QList<QList<QPointF>> runs = series->segmentPoints();
        QCOMPARE(runs.size(), 2); // records 2, 3, 4 and 7, 8, 9
        QCOMPARE(QList<qsizetype>({runs[0].size(), runs[1].size()}), QList<qsizetype>({3, 3}));
        QCOMPARE(QList<double>({runs[0][0].x(), runs[1][0].x()}), QList<double>({2, 7}));
        m_plot->setData(levels(8, 0.5f, 0.01f), "s");
        QCOMPARE(series->segmentPoints().size(), 1);
        QCOMPARE(series->segmentPoints().first().size(), 8);
        // A null identifier feeds "Data Source Plot", which no variant has: nothing is stored.
        m_delegate.datas = 50;
        renderInto("info");
        m_plot->setData(levels(5));
        m_plot->setData(levels(5), "02:00:00:00:00:01");
        QVERIFY(m_plot->plotDatas().isEmpty());
        m_plot->setData(levels(5), "s");
        QCOMPARE(m_plot->plotDatas().keys(), QStringList{"s"});
        renderInto("info"); // a rebuild drops every stored sample
        QVERIFY(m_plot->plotDatas().isEmpty());
        m_plot->killGraph(); // without any graph, setData does nothing at all
        m_plot->setData(levels(5), "s");
        QVERIFY(m_plot->plotDatas().isEmpty());
    }

    void rangesCostNothingWhenUnchanged()
    {
        m_delegate.datas = 151;
        renderInto("signal");
        RealTimePlotAxes *axes = m_plot->axes();
        QCOMPARE(axes->xRange(), std::make_pair(0.0, 150.0));
        QCOMPARE(axes->yRange(), std::make_pair(0.0, 1.0));
        const int changes = axes->rangeChanges();
        for (int i = 0; i < 1000; ++i)
            m_plot->setData(levels(10), QStringLiteral("02:00:00:00:00:%1").arg(i % 100));
        QCOMPARE(axes->rangeChanges(), changes);

        // A new number of samples changes the x range once, and the labels with it.
        m_delegate.datas = 301;
        for (int i = 0; i < 2; ++i)
            m_plot->setData(levels(10), "nobody");
        QCOMPARE(axes->rangeChanges(), changes + 1);
        QCOMPARE(axes->xRange(), std::make_pair(0.0, 300.0));
        QCOMPARE(QList<double>({axes->xAxis()->max(), axes->xLabels()->max()}),
                 QList<double>({300, 300}));
        QCOMPARE(axes->xLabels()->categoriesLabels().first(), "5 min");
        QCOMPARE(axes->xLabels()->count(), RealTimePlotAxes::kTimeMajorTicks);

        // An empty range shows one unit around its place; a useless length steps by one.
        axes->setXRange(5, 0);
        QCOMPARE(axes->xRange(), std::make_pair(4.5, 5.5));
        QCOMPARE(axes->xAxis()->min(), 4.5);
        for (double length : {0.0, qInf(), qQNaN()})
            QCOMPARE(RealTimePlotAxes::niceStep(length), 1.0);
        QCOMPARE(RealTimePlotAxes::niceStep(1.0), 0.2);
    }

    void stringFixLen()
    {
        const QString x15(15, QLatin1Char('x'));
        const QString rows[][2] = {{"ABCDEFGHIJKLMNOPQRST", "ABCDEFGHIJKLMNOP"},
                                   {"ABCDEFGHIJKLMNOP", "ABCDEFGHIJKLMNOP"},
                                   {"Cafe", "Cafe"},
                                   {"", ""},
                                   {x15 + QString::fromUtf8("\xF0\x9F\x93\xB6!"), x15}};
        for (const auto &row : rows) {
            QCOMPARE(RealTimePlot::plotTitle(row[0]), row[1]);
            QCOMPARE(RealTimePlot::string(row[0], 16), row[1]);
        }
        QCOMPARE(RealTimePlot::plotTitle(std::nullopt), QString());
        QCOMPARE(RealTimePlot::string("abc", 0), QString());
        // Every variant shows five minutes and 0 to 100 %; the interface plot adds the SNR axis
        // on the right, the detail panel's small plot has no legend and small labels.
        // identifier, SNR axis on the right, legend columns (0: no legend)
        const std::tuple<const char *, bool, int> variants[] = {
            {"info", true, 1}, {"signal", false, 5}, {"detail", false, 0}, {"Info", false, 0}};
        for (const auto &[name, rightAxis, legendColumns] : variants) {
            const QString identifier = QString::fromLatin1(name);
            m_delegate.datas = 151;
            renderInto(identifier, QSize(400, 300));
            QChart *graph = m_plot->graph();
            const GraphFrame *frame = GraphFrame::find(graph);
            QCOMPARE(frame->title(), "Signal Strength");
            // The data area is the bounds less both paddings.
            QCOMPARE(graph->plotArea(), QRectF(0, 0, 400, 300)
                                            .marginsRemoved(frame->padding())
                                            .marginsRemoved(frame->plotAreaFramePadding()));
            RealTimePlotAxes *axes = m_plot->axes();
            QCOMPARE(axes->xLabels()->categoriesLabels(),
                     (QStringList{"5 min", "4", "3", "2", "1", "0"}));
            QCOMPARE(axes->yLabels()->categoriesLabels(),
                     (QStringList{"0%", "20%", "40%", "60%", "80%", "100%"}));
            QCOMPARE(axes->snrAxis() != nullptr, rightAxis);
            if (rightAxis) {
                QCOMPARE(axes->snrLabels()->categoriesLabels(),
                         (QStringList{"0dB", "20dB", "40dB", "60dB", "80dB", "100dB"}));
                QCOMPARE(graph->axes().at(4), axes->snrAxis()); // x, left y, right y
            }
            QCOMPARE(axes->xLabels()->labelsFont().pixelSize() == 9, identifier == "detail");
            PlotLegend *legend = m_plot->legend();
            QCOMPARE(legend ? legend->columns() : 0, legendColumns);
            if (legend)
                QCOMPARE(legend->entries().size(), m_plot->plotIdentifiers().size());
        }
    }

    void seriesListBuildsOnePlotEach()
    {
        renderInto("signal", QSize(600, 400),
                   {{{"i", "aa"},
                     {"n", "A network with a long name"},
                     {"s", 0.5},
                     {"c", QColor(Qt::yellow)}},
                    {{"i", "bb"}, {"n", QVariant()}, {"s", 0.0}, {"c", QColor(Qt::cyan)}},
                    {{"i", "cc"}}}, // garbage entry: defaults, no crash
                   true);
        QCOMPARE(m_plot->plotIdentifiers(), (QStringList{"aa", "bb", "cc"}));
        QCOMPARE(m_plot->plot("aa")->title(), "A network with a");
        QCOMPARE(m_plot->plot("aa")->pen().color(), QColor(Qt::yellow));
        QCOMPARE(m_plot->plot("aa")->pen().widthF(), 2.5); // stronger: wider
        QCOMPARE(m_plot->plot("bb")->title(), QString());
        QCOMPARE(m_plot->plot("bb")->pen().widthF(), 1.0);
        QVERIFY(m_plot->plot("cc")->pen().color().isValid());
        const std::pair<qint64, const char *> rows[] = {
            {10, "(Top 10)"}, {50, "(Top 50)"}, {51, "(All)"}, {100, "(All)"}};
        for (const auto &[top, title] : rows) {
            m_delegate.top = top;
            renderInto("signal");
            m_plot->updateSignalPlot();
            QCOMPARE(GraphFrame::find(m_plot->graph())->title(),
                     "Signal Strength " + QString::fromLatin1(title));
        }
    }

    void updateSignalPlotFreshness()
    {
        m_delegate.top = 2;
        m_delegate.add("old", "Stale", 0.9, m_now.addMSecs(-1500));
        m_delegate.add("a", "Just now", 0.5, m_now.addMSecs(-1000));
        m_delegate.add("b", "Now", 0.3, m_now);
        m_delegate.add("c", "No place left", 0.8, m_now);
        renderInto("signal");
        m_plot->updateSignalPlot();
        // The stale network takes no place; the limit of 2 stops at "b".
        QCOMPARE(m_plot->plotIdentifiers(), (QStringList{"a", "b"}));
        QCOMPARE(m_plot->legend()->entries().size(), 2);
        QCOMPARE(m_plot->legend()->entries().at(1).title, "Now");
        // Each chosen series got its network's history.
        QCOMPARE(m_plot->numberForPlot("b", 1, quint64(m_delegate.datas - 1)),
                 std::optional<double>(double(0.3f)));
        m_clock.advance(1); // a second later "a" is stale as well and "c" moves up
        m_plot->updateSignalPlot();
        QCOMPARE(m_plot->plotIdentifiers(), (QStringList{"b", "c"}));
    }

    void updateSignalPlotPlacesIncludeLeftovers()
    {
        addNetworks(4, "n%1", "Net %1", 0.5, m_now);
        m_delegate.top = 3;
        // "gone" is not a listed network: its plot stays and takes one of the three places.
        renderInto("signal", QSize(600, 400),
                   {{{"i", "gone"}, {"n", "Gone"}, {"s", 0.1}},
                    {{"i", "n3"}, {"n", "Net 3"}, {"s", 0.1}}});
        m_plot->updateSignalPlot();
        QCOMPARE(m_plot->plotIdentifiers(), (QStringList{"gone", "n0", "n1"}));
        QCOMPARE(m_plot->legend()->entries().size(), 2); // the leftover is not in the legend
        QCOMPARE(m_plot->graph()->series().size(), 3);
    }

    void updateSignalPlotReusesSeries()
    {
        m_delegate.add("a", "A", 0.5, m_now);
        m_delegate.add("b", "B", 0.6, m_now);
        renderInto("signal");
        m_plot->updateSignalPlot();
        QPointer<QLineSeries> first = m_plot->plot("a")->firstSegment();
        const qsizetype segmentsBefore = m_plot->graph()->series().size();
        for (int cycle = 0; cycle < 20; ++cycle) {
            m_plot->updateSignalPlot();
            for (const NetworkObjectRef &network : m_delegate.networks())
                m_plot->setData(network->signals(), network->bssid());
        }
        // The same line series is still in use: nothing was torn down and rebuilt.
        QCOMPARE(m_plot->plot("a")->firstSegment(), first.data());
        QCOMPARE(m_plot->graph()->series().size(), segmentsBefore);
        // A network that drops out takes its series with it.
        m_delegate.list.at(0)->setLastUpdated(m_now.addSecs(-10));
        m_plot->updateSignalPlot();
        QVERIFY(first.isNull());
        QCOMPARE(m_plot->plotIdentifiers(), QStringList{"b"});
    }

    void legendGridStaysInsideTheChart()
    {
        addNetworks(100, "n%1", "Network number %1", 0.5, m_now);
        m_delegate.top = 100;
        renderInto("signal", QSize(500, 360));
        m_plot->updateSignalPlot();
        PlotLegend *legend = m_plot->legend();
        QCOMPARE(legend->entries().size(), 100);
        // Narrow chart: fewer columns than 5; too many rows: the last cell counts the rest.
        QVERIFY(legend->columnsUsed() < 5);
        QVERIFY(legend->entriesShown() < 100);
        QVERIFY2(QRectF(0, 0, 500, 360).contains(legend->frameInGraph()),
                 "legend leaves the chart");
        QCOMPARE(legend->frameInGraph().top(), 90.0);
    }

    void applyThemeKinds()
    {
        // Null: the default theme. The null marker: nothing. A named theme: that one.
        QChart defaulted, untouched, named;
        PlotItem::applyTheme(nullptr, &defaulted, PlotTheme::darkGradient());
        QCOMPARE(defaulted.theme(), QChart::ChartThemeDark);
        QCOMPARE(defaulted.backgroundBrush().style(), Qt::LinearGradientPattern);
        const QBrush before = untouched.backgroundBrush();
        PlotItem::applyTheme(PlotTheme::nullTheme(), &untouched, PlotTheme::darkGradient());
        QCOMPARE(untouched.theme(), QChart::ChartThemeLight);
        QCOMPARE(untouched.backgroundBrush(), before);
        PlotItem::applyTheme(PlotTheme::themeNamed(PlotTheme::kPlainWhiteTheme), &named,
                             PlotTheme::darkGradient());
        QCOMPARE(named.theme(), QChart::ChartThemeLight);
        QCOMPARE(named.backgroundBrush().style(), Qt::SolidPattern);
        QCOMPARE(PlotTheme::themeNamed(QString()), nullptr);
        QCOMPARE(PlotTheme::themeNamed("no such theme"), nullptr);
    }

    void killGraphLeavesNothingBehind()
    {
        QWidget host;
        host.resize(500, 300);
        host.setProperty("identifier", "info");
        QList<QPointer<QObject>> made; // charts, hosting views and line series
        for (int i = 0; i < 40; ++i) {
            m_plot->renderInView(&host, nullptr, i % 2 == 0);
            QCOMPARE(host.findChildren<QChartView *>().size(), 1);
            QCOMPARE(m_plot->graphs().size(), 1);
            QCOMPARE(m_plot->graphs().first()->series().size(), 3);
            made << m_plot->graphs().first() << m_plot->defaultLayerHostingView();
            for (QAbstractSeries *s : m_plot->graphs().first()->series())
                made << qobject_cast<QLineSeries *>(s);
        }
        m_plot->killGraph();
        QCOMPARE(host.findChildren<QObject *>().size(), 0);
        QVERIFY(m_plot->graphs().isEmpty());
        QCOMPARE(m_plot->defaultLayerHostingView(), nullptr);
        QVERIFY(m_plot->cachedImage().isNull());
        QVERIFY(std::all_of(made.cbegin(), made.cend(), [](auto &o) { return o.isNull(); }));
        QPointer<QChart> loose = new QChart; // a graph added without a view belongs to the item
        m_plot->addGraph(loose);
        m_plot->killGraph();
        QVERIFY(loose.isNull());
    }

    void hostingViewFollowsParent()
    {
        PlotView host;
        host.setIdentifier("detail");
        host.resize(300, 200);
        host.show();
        m_plot->renderInView(&host, nullptr, false);
        QChartView *view = m_plot->defaultLayerHostingView();
        QVERIFY(view);
        QCOMPARE(view->parentWidget(), &host);
        QCOMPARE(view->geometry(), QRect(0, 0, 300, 200));
        host.resize(640, 480);
        QCOMPARE(view->geometry(), QRect(0, 0, 640, 480));
    }

    void ringsAndTheFirstPlace()
    {
        QCOMPARE(WiFiMapLayout::ringStep(kMapBounds), 40.0);
        for (int ring = 1; ring <= 5; ++ring)
            QCOMPARE(WiFiMapLayout::ringRadius(kMapBounds, ring), 30.0 + 40 * ring);
        // R0 is the bounds inset by 30; each next one by dx = 40 and dy = 30 more.
        const auto rects = WiFiMapLayout::ringRects(kMapBounds);
        QCOMPARE(rects[0], QRectF(30, 30, 430, 330));
        QCOMPARE(rects[1], QRectF(70, 60, 350, 270));
        QCOMPARE(rects[4], QRectF(190, 150, 110, 90));
        // One network sits at ten degrees on ring 1, on the ellipse of the bounds.
        m_delegate.add("aa", "Alone", 0.7);
        const Placement p = map(QSize(490, 390), false).layout().first();
        QCOMPARE(p.ring, 1);
        const double a = 10 * kDegree;
        QCOMPARE(p.point, QPointF(245 + 70 * std::cos(a), 195 + 70 * std::sin(a) * 390 / 490));
        QCOMPARE(p.imageRect, QRectF(p.point, m_map->wifiImage(1).size()));
        const std::pair<int, double> rows[] = {{1, 10}, {2, 20},  {35, 350},
                                               {36, 0}, {37, 10}, {72, 0}};
        for (const auto &[count, degrees] : rows) {
            QCOMPARE(WiFiMapLayout::startAngle(count), degrees * kDegree);
            QCOMPARE(WiFiMapLayout::angleStep(count), 6.283185307 / count);
        }
    }

    void ringsBySignal()
    {
        const std::tuple<double, bool, int> rows[] = {
            {0.6, false, 1}, {0.56, false, 2}, {0.56, true, 1},  {0.5, false, 2}, {0.3, false, 3},
            {0.25, true, 3}, {0.2, false, 4},  {0.19, false, 5}, {-0.2, false, 5}};
        for (const auto &[signal, own, ring] : rows) {
            m_delegate = FakePlotDelegate();
            // Levels are single-precision fractions in the record.
            const NetworkObjectRef network = m_delegate.add("aa", "Net", double(float(signal)));
            m_delegate.add("bb", "Other", 0.9);
            m_delegate.associate(QString::fromLatin1(own ? "aa" : "cc"));
            const QList<Placement> placements = map(QSize(490, 390), false).layout();
            QCOMPARE(placements.size(), 2);
            const auto it = std::find_if(placements.cbegin(), placements.cend(),
                                         [&](const auto &p) { return p.network == network; });
            QCOMPARE(std::make_pair(it->ring, it->current), std::make_pair(ring, own));
        }
    }

    void weakNetworksAreCapped()
    {
        addNetworks(25, "w%1", "Weak %1", 0.1);
        m_delegate.add("strong", "Strong", 0.9);
        WiFiMapView &view = map(QSize(800, 600));
        QCOMPARE(view.networkLocations().size(), 21);
        for (int i = 0; i < 25; ++i)
            QCOMPARE(view.networkLocations().contains(QStringLiteral("w%1").arg(i)), i < 20);
        // The 20 on ring 5 start at (20 x 10) mod 360 = 200 degrees.
        const QList<Placement> placements = view.layout();
        const auto first = std::find_if(placements.cbegin(), placements.cend(),
                                        [](const auto &p) { return p.ring == 5; });
        QCOMPARE(first->point.x(), 400 + (5 * 71.0 + 30) * std::cos(200 * kDegree));
    }

    void labelsSitUnderTheIcons()
    {
        m_delegate.add("aa", "A rather long network name", 0.7);
        m_delegate.add("bb", "Mine", 0.4);
        m_delegate.add("cc", std::nullopt, 0.4);
        m_delegate.associate("bb");
        WiFiMapView &view = map(QSize(600, 500), false);
        view.initImagesIfNeeded();
        const QFontMetricsF metrics(WiFiView::systemFont(11));
        for (const Placement &p : view.layout()) {
            QCOMPARE(p.textRect.size(),
                     QSizeF(metrics.horizontalAdvance(p.label), metrics.height()));
            // Centred under the icon, its lower edge 15 below the icon's.
            QCOMPARE(p.textRect.center().x(), p.imageRect.center().x());
            QCOMPARE(p.textRect.y(), p.imageRect.y() - 15);
            QCOMPARE(p.current, p.network->bssid() == QLatin1String("bb"));
        }
    }

    void locationsAreTextAndNeverForgotten()
    {
        const NetworkObjectRef moving = m_delegate.add("aa", "Moving", 0.9);
        WiFiMapView &view = map();
        const QString imageText =
            view.networkLocations().value("aa").value(WiFiMapView::kImageRectKey);
        const QRectF imageRect = view.layout().first().imageRect;
        QCOMPARE(imageText, WiFiMapView::stringFromRect(imageRect));
        QVERIFY(imageText.startsWith(QLatin1String("{{")));
        QCOMPARE(WiFiMapView::rectFromString(imageText), imageRect);
        // 20 weak networks fill ring 5 ahead of it; once it turns weak it is drawn no more,
        // but it still answers at its last place.
        m_delegate.list = NetworkList();
        for (int i = 0; i < 20; ++i)
            m_delegate.list.append(makeNetwork(QStringLiteral("w%1").arg(i), "W", 0.05, i));
        m_delegate.list.append(moving);
        moving->setSignals({0.05f});
        paint(view);
        QCOMPARE(view.networkLocations().value("aa").value(WiFiMapView::kImageRectKey), imageText);
        QCOMPARE(view.networkAtPoint(imageRect.center()), moving);
    }

    void rectStrings()
    {
        const std::pair<const char *, QRectF> rows[] = {
            {"{{10, 20}, {30, 40}}", QRectF(10, 20, 30, 40)},
            {"{{-1.5, 0.25}, {24, 13.5}}", QRectF(-1.5, 0.25, 24, 13.5)},
            {" { {1,2} , {3,4} } ", QRectF(1, 2, 3, 4)},
            {"{{a, b}, {c, d}}", QRectF()},
            {"", QRectF()},
            {"{{inf, 0}, {1, 1}}", QRectF()},
            {"{{1, 2}, {3", QRectF()}};
        for (const auto &[text, rect] : rows) {
            QCOMPARE(WiFiMapView::rectFromString(QString::fromLatin1(text)), rect);
            if (!rect.isNull())
                QCOMPARE(WiFiMapView::rectFromString(WiFiMapView::stringFromRect(rect)), rect);
        }
    }

    void hitTestingFollowsListOrder()
    {
        // 36 networks on ring 1 of a small map crowd each other: neighbours' icons overlap.
        addNetworks(36, "n%1", "N%1", 0.9);
        WiFiMapView &view = map();
        const QList<Placement> placements = view.layout();
        const QRectF overlap = placements.at(0).imageRect.intersected(placements.at(1).imageRect);
        QVERIFY(!overlap.isEmpty());
        QCOMPARE(view.networkAtPoint(overlap.center()), m_delegate.list.at(0));
        // The same place, with the second network listed first, answers the second.
        const NetworkList was = m_delegate.list;
        m_delegate.list = NetworkList();
        m_delegate.list.append(was.at(1));
        m_delegate.list.append(was.at(0));
        QCOMPARE(view.networkAtPoint(overlap.center()), m_delegate.list.at(0));
        QCOMPARE(view.networkAtPoint(QPointF(2, 2)), nullptr); // far from everything: nothing
    }

    void hitTestingEdges()
    {
        m_delegate.add("aa", QString(), 0.9); // no label: only the icon answers
        WiFiMapView &view = map();
        const QRectF icon = view.layout().first().imageRect;
        QCOMPARE(icon.size(), QSizeF(24, 24));
        // Offsets from the icon's lower-left corner.
        const std::pair<QPointF, bool> rows[] = {{{0, 0}, true},    {{5, 5}, true},
                                                 {{24, 5}, false},  {{5, 24}, false},
                                                 {{5, 23.9}, true}, {{-0.1, 5}, false}};
        for (const auto &[offset, hit] : rows)
            QCOMPARE(view.networkAtPoint(icon.topLeft() + offset) != nullptr, hit);
        QCOMPARE(WiFiView::displayText("a\tb\nc"), QString::fromUtf8("a\uFFFDb\uFFFDc"));
        QCOMPARE(WiFiView::displayText(std::nullopt), QString());
        QVERIFY(WiFiView::loadIcon("no-such-icon").isNull());
    }

    void channelFrameAndTicks()
    {
        const QRectF &b = kChannelBounds;
        QCOMPARE(WiFiChannelLayout::plotRect(b), QRectF(50, 50, 870, 400));
        QCOMPARE(WiFiChannelLayout::slotWidth(b, Band::GHz2_4), 50.0);
        QCOMPARE(WiFiChannelLayout::slotWidth(b, Band::GHz5), 870 / 28.4);
        // Level labels 10% ... 90% at h k + h / 2 + 45 with h = 80; grid every 10%.
        QCOMPARE(WiFiChannelLayout::levelLabelOrigin(b, 0), QPointF(25, 85));
        QCOMPARE(WiFiChannelLayout::levelLabelOrigin(b, 4), QPointF(25, 405));
        QCOMPARE(WiFiChannelLayout::gridLineY(b, 1), 90.0);
        QCOMPARE(WiFiChannelLayout::gridLineY(b, 9), 410.0);
        QCOMPARE(WiFiChannelLayout::channelCount(Band::GHz2_4), 13);
        QCOMPARE(WiFiChannelLayout::tickX(b, Band::GHz2_4, 0), 155.0);
        QCOMPARE(WiFiChannelLayout::tickX(b, Band::GHz2_4, 12), 755.0);
        for (int i = 0; i < 13; ++i)
            QCOMPARE(WiFiChannelLayout::channelNumber(Band::GHz2_4, i), qint64(i + 1));

        const QRectF wide(0, 0, 1000, 465);
        const double s = WiFiChannelLayout::slotWidth(wide, Band::GHz5);
        QCOMPARE(WiFiChannelLayout::channelCount(Band::GHz5), 24);
        // One slot of gap before each of the three groups.
        QList<double> ticks;
        QList<qint64> numbers;
        for (int i = 0; i < 24; ++i) {
            ticks.append(WiFiChannelLayout::tickX(wide, Band::GHz5, i));
            numbers.append(WiFiChannelLayout::channelNumber(Band::GHz5, i));
        }
        QCOMPARE(QList<double>({ticks[0], ticks[7], ticks[8], ticks[19]}),
                 QList<double>({s + 50, s + 50 + 7 * s, 2 * s + 50 + 8 * s, 3 * s + 50 + 19 * s}));
        QCOMPARE(numbers,
                 (QList<qint64>{36,  40,  44,  48,  52,  56,  60,  64,  100, 104, 108, 112,
                                116, 120, 124, 128, 132, 136, 140, 149, 153, 157, 161, 165}));
        const std::pair<qint64, qint64> rows[] = {
            {36, 0},   {64, 7},
            {96, 7},   {100, 8},
            {104, 9},  {140, 17},
            {149, 19}, {165, 23},
            {6, -7},   {std::numeric_limits<qint64>::min(), -250009}};
        for (const auto &[channel, index] : rows)
            QCOMPARE(WiFiChannelLayout::channelIndex5GHz(channel), index);
    }

    void outlines()
    {
        const double s = 50;
        const double base = 2.1 * s + 50;
        const double left = (5 - 2.1) * s + base, right = (5 + 2.1) * s + base;
        const QPolygonF hump = WiFiChannelLayout::outline(kChannelBounds, Band::GHz2_4, 6, 0.5);
        QCOMPARE(hump, (QPolygonF{{left, 50},
                                  {left + 0.065 * s, 150},
                                  {left + 0.1 * s, 250},
                                  {right - 0.1 * s, 250},
                                  {right - 0.065 * s, 150},
                                  {right, 50}}));
        // Centred on channel 6's tick.
        QCOMPARE((hump.at(0).x() + hump.at(5).x()) / 2,
                 WiFiChannelLayout::tickX(kChannelBounds, Band::GHz2_4, 5));
        QCOMPARE(WiFiChannelLayout::labelOrigin(kChannelBounds, Band::GHz2_4, 6, 0.5, 60),
                 QPointF((4 * s - 60) * 0.5 + left + 0.1 * s, 252));

        const QRectF wide(0, 0, 1000, 465);
        const double s5 = WiFiChannelLayout::slotWidth(wide, Band::GHz5);
        const double left5 = (8 - 0.5) * s5 + s5 + 50;
        QCOMPARE(WiFiChannelLayout::outline(wide, Band::GHz5, 100, 0.25),
                 (QPolygonF{{left5, 50}, {left5, 150}, {left5 + s5, 150}, {left5 + s5, 50}}));
        QCOMPARE(WiFiChannelLayout::labelOrigin(wide, Band::GHz5, 100, 0.25, 60),
                 QPointF(left5, 152));
    }

    void onlyBand1IsDrawn()
    {
        const NetworkObjectRef band1 = m_delegate.add("aa", "Two four", 0.5);
        band1->setChannel(6);
        const NetworkObjectRef band2 = m_delegate.add("bb", "Five", 0.5);
        band2->setChannel(100);
        band2->setChannelBand(2);
        m_delegate.add("cc", "Unknown", 0.5)->setChannelBand(0);

        WiFiChannelView view;
        QCOMPARE(view.band(), Band::GHz2_4);
        view.setDelegate(&m_delegate);
        view.resize(935, 465);
        for (const char *identifier : {"5", "5 GHz", ""}) {
            view.setIdentifier(QString::fromLatin1(identifier));
            const bool five = identifier == QLatin1String("5");
            QCOMPARE(view.band(), five ? Band::GHz5 : Band::GHz2_4);
            const QList<WiFiChannelLayout::Outline> outlines = view.layout();
            QCOMPARE(outlines.size(), 1);
            QCOMPARE(outlines.first().network, band1);
            QCOMPARE(outlines.first().label, "Two four");
            if (five) { // channel 6 by the 5 GHz rule: slot -7, left of the plot
                QVERIFY(outlines.first().points.first().x() < 0);
            } else {
                const double w =
                    QFontMetricsF(WiFiView::systemFont(11)).horizontalAdvance("Two four");
                QCOMPARE(outlines.first().labelOrigin,
                         WiFiChannelLayout::labelOrigin(kChannelBounds, Band::GHz2_4, 6, 0.5, w));
            }
            paint(view); // and it paints without complaint
        }
    }

    void occupancyChartsFollowTheBandsHeard()
    {
        ChannelOccupancyView view;
        view.setDelegate(&m_delegate);
        view.resize(1000, 600);
        view.relayout();
        QCOMPARE(view.charts().size(), 2); // nothing heard: 2.4 and 5 GHz, empty
        QVERIFY(view.charts().at(0).shapes.isEmpty());

        m_delegate.list = makeOnAir(60, 3, m_now);
        // A record heard two minutes before the newest scan no longer counts.
        const NetworkObjectRef old = makeOnAir(1, 9, m_now.addSecs(-120)).at(0);
        old->setBssid("02:00:00:00:ff:ff");
        m_delegate.list.append(old);
        view.relayout();
        QCOMPARE(view.charts().size(), 3);
        QCOMPARE(view.entries().size(), 60);
        qsizetype shapes = 0;
        for (const auto &chart : view.charts()) {
            shapes += chart.shapes.size();
            QVERIFY(!chart.recommendation.isEmpty());
        }
        QCOMPARE(shapes, 60);
        m_delegate.list = makeOnAir(12, 5, m_now);
        view.resize(1200, 700);
        view.relayout();
        const auto &chart = view.charts().at(0);
        QVERIFY(!chart.shapes.isEmpty());
        // The last shape is drawn in front: a point just above its feet, in its middle, is its.
        const auto &front = chart.shapes.last();
        const QPolygonF &p = front.polygons.first();
        view.hover(QPointF((p[0].x() + p[3].x()) / 2, p[0].y() - 1));
        QCOMPARE(view.highlightedBssid(), view.entries().at(front.entry).network->bssid());
        view.hover(QPointF(2, 2)); // over the title: nothing
        QVERIFY(view.highlightedBssid().isEmpty());
    }
};

QTEST_MAIN(TestPlot)
#include "tst_plot.moc"

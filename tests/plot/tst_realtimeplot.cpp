// SPDX-License-Identifier: GPL-3.0-or-later
// The real-time plot: its numbers, series, axes, legend and graph lifetime.
#include "plot/GraphFrame.h"
#include "plot/PlotItem.h"
#include "plot/PlotLegend.h"
#include "plot/PlotSeries.h"
#include "plot/PlotTheme.h"
#include "plot/PlotView.h"
#include "plot/RealTimePlot.h"
#include "plot/support/PlotFixture.h"

#include <QChart>
#include <QChartView>
#include <QtTest>

#include <cmath>

namespace {

QList<LevelSample> levels(int count, float first = 0.0f, float step = 0.001f)
{
    QList<LevelSample> samples;
    for (int i = 0; i < count; ++i)
        samples.append(first + step * float(i));
    return samples;
}

} // namespace

class TestRealTimePlot : public PlotFixture
{
    Q_OBJECT

    std::unique_ptr<PlotView> m_host;
    std::unique_ptr<RealTimePlot> m_plot;

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
    }

    void updateSignalPlotReusesSeries()
    {
        m_delegate.add("a", "A", 0.5, m_now);
        m_delegate.add("b", "B", 0.6, m_now);
        renderInto("signal");
        m_plot->updateSignalPlot();
        const PlotSeries *first = m_plot->plot("a");
        for (int cycle = 0; cycle < 20; ++cycle) {
            m_plot->updateSignalPlot();
            for (const NetworkObjectRef &network : m_delegate.networks())
                m_plot->setData(network->signals(), network->bssid());
        }
        // The same line series is still in use: nothing was torn down and rebuilt.
        QCOMPARE(m_plot->plot("a"), first);
        // A network that drops out takes its series with it.
        m_delegate.list.at(0)->setLastUpdated(m_now.addSecs(-10));
        m_plot->updateSignalPlot();
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
        QList<QPointer<QObject>> made; // charts and hosting views
        for (int i = 0; i < 40; ++i) {
            m_plot->renderInView(&host, nullptr, i % 2 == 0);
            QCOMPARE(host.findChildren<QChartView *>().size(), 1);
            QCOMPARE(m_plot->graphs().size(), 1);
            made << m_plot->graphs().first() << m_plot->defaultLayerHostingView();
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
};

QTEST_MAIN(TestRealTimePlot)
#include "tst_realtimeplot.moc"

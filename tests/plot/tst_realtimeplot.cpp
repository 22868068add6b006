// SPDX-License-Identifier: GPL-3.0-or-later
// The real-time plot: its numbers, series, axes, legend and graph lifetime.
#include "plot/GraphFrame.h"
#include "plot/PlotLegend.h"
#include "plot/PlotSeries.h"
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
        m_delegate = FakePlotDelegate();
        m_plot = std::make_unique<RealTimePlot>();
        m_plot->setDelegate(&m_delegate);
    }
    void cleanup()
    {
        m_plot.reset();
        m_host.reset();
    }

    void numberForPlot()
    {
        const double none = qQNaN();
        // 10 samples valued 0.001 x i (in single precision) shown on 300 records; 350 samples
        // on 300 records: record 0 shows sample 50. Field 0 is the record itself.
        // datas, samples, series, field, record, expected (NaN: no value)
        const std::tuple<qint64, int, const char *, int, quint64, double> rows[] = {
            {300, 10, "s", 1, 289, none}, {300, 10, "s", 1, 299, double(0.001f * 9.0f)},
            {300, 10, "s", 1, 300, none}, {300, 350, "n", 1, 0, double(0.001f * 50.0f)},
            {300, 10, "s", 0, 17, 17.0},  {300, 10, "x", 1, 299, none}};
        for (const auto &[datas, samples, name, field, record, expected] : rows) {
            m_delegate.datas = datas;
            renderInto("info");
            m_plot->setData(levels(samples), "s");
            m_plot->setData(levels(samples), "n");
            QCOMPARE(m_plot->numberForPlot(QString::fromLatin1(name), field, record),
                     std::isnan(expected) ? std::nullopt : std::optional<double>(expected));
        }
        // The series' points are what numberForPlot answers (SNR scaled by 1/100); a missing
        // sample breaks the line into runs, and a history without gaps joins it again.
        m_delegate.datas = 10;
        renderInto("info");
        m_plot->setData(QList<SNRSample>{25.0, 40.377, -3.7}, "r");
        QCOMPARE(m_plot->plot("r")->points(), (QList<QPointF>{{7, 0.25},
                                                              {8, double(float(40.377) / 100.0f)},
                                                              {9, double(float(-3.7) / 100.0f)}}));
        QList<LevelSample> samples = levels(8, 0.5f, 0.01f);
        samples[3] = samples[4] = std::nullopt;
        m_plot->setData(samples, "s");
        const PlotSeries *series = m_plot->plot("s");
        QCOMPARE(series->segmentPoints().size(), 2); // records 2, 3, 4 and 7, 8, 9
        QCOMPARE(series->segmentPoints().at(1).first(), QPointF(7, double(0.5f + 0.01f * 5.0f)));
        m_plot->setData(levels(8, 0.5f, 0.01f), "s");
        QCOMPARE(series->segmentPoints().size(), 1);
        // A null identifier feeds "Data Source Plot", which no variant has: nothing is stored.
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
        for (int i = 0; i < 100; ++i)
            m_plot->setData(levels(10), QStringLiteral("02:00:00:00:00:%1").arg(i));
        QCOMPARE(axes->rangeChanges(), changes);

        // A new number of samples changes the x range once, and the labels with it.
        m_delegate.datas = 301;
        for (int i = 0; i < 2; ++i)
            m_plot->setData(levels(10), "nobody");
        QCOMPARE(axes->rangeChanges(), changes + 1);
        QCOMPARE(QList<double>({axes->xAxis()->max(), axes->xLabels()->max()}),
                 QList<double>({300, 300}));
        QCOMPARE(axes->xLabels()->count(), RealTimePlotAxes::kTimeMajorTicks);

        // An empty range shows one unit around its place; a useless length steps by one.
        axes->setXRange(5, 0);
        QCOMPARE(axes->xRange(), std::make_pair(4.5, 5.5));
        QCOMPARE(axes->xAxis()->min(), 4.5);
        for (double length : {0.0, qInf(), qQNaN()})
            QCOMPARE(RealTimePlotAxes::niceStep(length), 1.0);
    }

    // Titles are cut to 16 characters, never inside a character. Every variant shows five
    // minutes and 0 to 100 %; the interface plot adds the SNR axis on the right, the detail
    // panel's small plot has no legend and small labels.
    void titlesAndVariants()
    {
        const QString x15(15, QLatin1Char('x'));
        QCOMPARE(RealTimePlot::plotTitle("ABCDEFGHIJKLMNOPQRST"), "ABCDEFGHIJKLMNOP");
        QCOMPARE(RealTimePlot::plotTitle(x15 + QString::fromUtf8("\xF0\x9F\x93\xB6!")), x15);
        // identifier, SNR axis on the right, legend columns (0: no legend)
        const std::tuple<const char *, bool, int> variants[] = {
            {"info", true, 1}, {"signal", false, 5}, {"detail", false, 0}, {"Info", false, 0}};
        for (const auto &[name, rightAxis, legendColumns] : variants) {
            const QString identifier = QString::fromLatin1(name);
            m_delegate.datas = 151;
            renderInto(identifier, QSize(400, 300));
            QCOMPARE(GraphFrame::find(m_plot->graph())->title(), "Signal Strength");
            RealTimePlotAxes *axes = m_plot->axes();
            QCOMPARE(axes->xLabels()->categoriesLabels(),
                     (QStringList{"5 min", "4", "3", "2", "1", "0"}));
            QCOMPARE(axes->yLabels()->categoriesLabels(),
                     (QStringList{"0%", "20%", "40%", "60%", "80%", "100%"}));
            QCOMPARE(axes->snrAxis() != nullptr, rightAxis);
            if (rightAxis)
                QCOMPARE(axes->snrLabels()->categoriesLabels().last(), "100dB");
            QCOMPARE(axes->xLabels()->labelsFont().pixelSize() == 9, identifier == "detail");
            QCOMPARE(m_plot->legend() ? m_plot->legend()->columns() : 0, legendColumns);
        }
    }

    void seriesListBuildsOnePlotEach()
    {
        // The last entry is garbage: defaults, no crash. Stronger is wider.
        const QVariantMap aa = {{"i", "aa"}, {"n", "A network with a long name"}, {"s", 0.5}};
        renderInto("signal", QSize(600, 400), {aa, {{"i", "bb"}, {"s", 0.0}}, {{"i", "cc"}}}, true);
        QCOMPARE(m_plot->plotIdentifiers(), (QStringList{"aa", "bb", "cc"}));
        QCOMPARE(m_plot->plot("aa")->title(), "A network with a");
        QVERIFY(m_plot->plot("aa")->pen().widthF() > m_plot->plot("bb")->pen().widthF());
        const std::pair<qint64, const char *> rows[] = {{50, "(Top 50)"}, {51, "(All)"}};
        for (const auto &[top, title] : rows) {
            m_delegate.top = top;
            renderInto("signal");
            m_plot->updateSignalPlot();
            QCOMPARE(GraphFrame::find(m_plot->graph())->title(),
                     "Signal Strength " + QString::fromLatin1(title));
        }
    }

    // Only networks heard within the last second take a place, up to the limit, in list
    // order; a plot already shown for a network no longer listed keeps its place but stays
    // out of the legend.
    void updateSignalPlotChoosesTheFreshest()
    {
        m_delegate.top = 3;
        m_delegate.add("old", "Stale", 0.9, m_now.addMSecs(-1500));
        m_delegate.add("a", "Just now", 0.5, m_now.addMSecs(-1000));
        m_delegate.add("b", "Now", 0.3, m_now);
        m_delegate.add("c", "No place left", 0.8, m_now);
        renderInto("signal", QSize(600, 400), {{{"i", "gone"}, {"n", "Gone"}, {"s", 0.1}}});
        m_plot->updateSignalPlot();
        QCOMPARE(m_plot->plotIdentifiers(), (QStringList{"gone", "a", "b"}));
        QCOMPARE(m_plot->legend()->entries().size(), 2);
        QCOMPARE(m_plot->legend()->entries().at(1).title, "Now");
        // Each chosen series got its network's history.
        QCOMPARE(m_plot->numberForPlot("b", 1, quint64(m_delegate.datas - 1)),
                 std::optional<double>(double(0.3f)));
        m_clock.advance(1); // a moment later "a" is stale as well and "c" moves up
        m_plot->updateSignalPlot();
        QCOMPARE(m_plot->plotIdentifiers(), (QStringList{"gone", "b", "c"}));
    }

    void killGraphLeavesNothingBehind()
    {
        QWidget host;
        host.resize(500, 300);
        host.setProperty("identifier", "info");
        QList<QPointer<QObject>> made; // charts and hosting views
        for (int i = 0; i < 4; ++i) {
            m_plot->renderInView(&host, nullptr, i % 2 == 0);
            QCOMPARE(host.findChildren<QChartView *>().size(), 1);
            made << m_plot->graphs().first() << m_plot->defaultLayerHostingView();
        }
        m_plot->killGraph();
        QCOMPARE(host.findChildren<QObject *>().size(), 0);
        QVERIFY(m_plot->graphs().isEmpty());
        QVERIFY(std::all_of(made.cbegin(), made.cend(), [](auto &o) { return o.isNull(); }));
    }
};

QTEST_MAIN(TestRealTimePlot)
#include "tst_realtimeplot.moc"

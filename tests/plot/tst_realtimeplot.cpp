// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/GraphFrame.h"
#include "plot/PlotLegend.h"
#include "plot/PlotSeries.h"
#include "plot/PlotView.h"
#include "plot/RealTimePlot.h"
#include "plot/support/FakePlotDelegate.h"
#include "util/Clock.h"

#include <QChart>
#include <QLineSeries>
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

class TestRealTimePlot : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void numberForPlot_data();
    void numberForPlot();
    void pointsFollowTheSamplesAndGapsBreakTheLine();
    void setDataNeedsTheSeries();
    void rangesCostNothingWhenUnchanged();
    void stringFixLen_data();
    void stringFixLen();
    void variants_data();
    void variants();
    void seriesListBuildsOnePlotEach();
    void updateSignalPlotTitle_data();
    void updateSignalPlotTitle();
    void updateSignalPlotFreshness();
    void updateSignalPlotPlacesIncludeLeftovers();
    void updateSignalPlotReusesSeries();
    void legendGridStaysInsideTheChart();

private:
    void renderInto(const QString &identifier, QSize size = QSize(800, 500));

    ManualClock m_clock{QDateTime(QDate(2024, 5, 1), QTime(12, 0), Qt::UTC)};
    FakePlotDelegate m_delegate;
    std::unique_ptr<PlotView> m_host;
    std::unique_ptr<RealTimePlot> m_plot;
};

void TestRealTimePlot::init()
{
    Clock::setInstance(&m_clock);
    m_delegate = FakePlotDelegate();
    m_plot = std::make_unique<RealTimePlot>();
    m_plot->setDelegate(&m_delegate);
}

void TestRealTimePlot::cleanup()
{
    m_plot.reset();
    m_host.reset();
    Clock::setInstance(nullptr);
}

void TestRealTimePlot::renderInto(const QString &identifier, QSize size)
{
    m_host = std::make_unique<PlotView>();
    m_host->setIdentifier(identifier);
    m_host->resize(size);
    if (identifier == QLatin1String("signal"))
        m_plot->render(QList<QVariantMap>(), m_host.get(), nullptr, false);
    else
        m_plot->renderInView(m_host.get(), nullptr, false);
}

void TestRealTimePlot::numberForPlot_data()
{
    QTest::addColumn<qint64>("datas");
    QTest::addColumn<int>("samples");
    QTest::addColumn<QString>("series");
    QTest::addColumn<int>("field");
    QTest::addColumn<quint64>("record");
    QTest::addColumn<double>("expected"); // NaN: no value

    const double none = qQNaN();
    // 10 samples valued 0.001 x i (in single precision) shown on 300 records.
    QTest::newRow("short history, left part empty")
        << qint64(300) << 10 << "s" << 1 << quint64(0) << none;
    QTest::newRow("short history, before first")
        << qint64(300) << 10 << "s" << 1 << quint64(289) << none;
    QTest::newRow("short history, oldest") << qint64(300) << 10 << "s" << 1 << quint64(290) << 0.0;
    QTest::newRow("short history, newest")
        << qint64(300) << 10 << "s" << 1 << quint64(299) << double(0.001f * 9.0f);
    QTest::newRow("past the last record") << qint64(300) << 10 << "s" << 1 << quint64(300) << none;
    // 350 samples on 300 records: record 0 shows sample 50.
    QTest::newRow("long history, record 0")
        << qint64(300) << 350 << "n" << 1 << quint64(0) << double(0.001f * 50.0f);
    QTest::newRow("long history, newest")
        << qint64(300) << 350 << "n" << 1 << quint64(299) << double(0.001f * 349.0f);
    QTest::newRow("x is the record") << qint64(300) << 10 << "s" << 0 << quint64(17) << 17.0;
    QTest::newRow("x without samples") << qint64(300) << 0 << "s" << 0 << quint64(5) << 5.0;
    QTest::newRow("unknown field") << qint64(300) << 10 << "s" << 2 << quint64(295) << none;
    QTest::newRow("no records") << qint64(0) << 10 << "s" << 1 << quint64(0) << none;
    QTest::newRow("unknown series") << qint64(300) << 10 << "x" << 1 << quint64(299) << none;
}

void TestRealTimePlot::numberForPlot()
{
    QFETCH(qint64, datas);
    QFETCH(int, samples);
    QFETCH(QString, series);
    QFETCH(int, field);
    QFETCH(quint64, record);
    QFETCH(double, expected);

    m_delegate.datas = datas;
    renderInto(QStringLiteral("info"));
    m_plot->setData(levels(samples), QStringLiteral("s"));
    m_plot->setData(levels(samples), QStringLiteral("n"));
    const std::optional<double> value = m_plot->numberForPlot(series, field, record);
    if (std::isnan(expected)) {
        QVERIFY(!value.has_value());
    } else {
        QVERIFY(value.has_value());
        QCOMPARE(*value, expected);
    }
    QCOMPARE(m_plot->numberOfRecordsForPlot(series), quint64(datas));
}

// The series' points are exactly what numberForPlot answers (SNR scaled by 1/100); a
// missing sample breaks the line into runs, and a later history without gaps joins it again.
void TestRealTimePlot::pointsFollowTheSamplesAndGapsBreakTheLine()
{
    m_delegate.datas = 10;
    renderInto(QStringLiteral("info"));
    m_plot->setData(QList<SNRSample>{25.0, 40.377, -3.7}, QStringLiteral("r"));
    const QList<QPointF> points = m_plot->plot(QStringLiteral("r"))->points();
    QCOMPARE(points.size(), 3);
    for (const QPointF &p : points)
        QCOMPARE(p.y(), *m_plot->numberForPlot(QStringLiteral("r"), 1, quint64(p.x())));
    QCOMPARE(points.first(), QPointF(7, 0.25));
    QCOMPARE(points.last(), QPointF(9, double(float(-3.7) / 100.0f)));

    QList<LevelSample> samples = levels(8, 0.5f, 0.01f);
    samples[3] = samples[4] = std::nullopt;
    m_plot->setData(samples, QStringLiteral("s"));
    QVERIFY(!m_plot->numberForPlot(QStringLiteral("s"), 1, 5).has_value());
    const PlotSeries *series = m_plot->plot(QStringLiteral("s"));
    const QList<QList<QPointF>> runs = series->segmentPoints();
    QCOMPARE(runs.size(), 2);
    QCOMPARE(runs.at(0).size(), 3); // records 2, 3, 4
    QCOMPARE(runs.at(0).first().x(), 2.0);
    QCOMPARE(runs.at(1).size(), 3); // records 7, 8, 9
    QCOMPARE(runs.at(1).first().x(), 7.0);
    m_plot->setData(levels(8, 0.5f, 0.01f), QStringLiteral("s"));
    QCOMPARE(series->segmentPoints().size(), 1);
    QCOMPARE(series->segmentPoints().first().size(), 8);
}

void TestRealTimePlot::setDataNeedsTheSeries()
{
    // A null identifier feeds "Data Source Plot", which no variant has: nothing is stored.
    m_delegate.datas = 50;
    renderInto(QStringLiteral("info"));
    m_plot->setData(levels(5));
    m_plot->setData(levels(5), QStringLiteral("02:00:00:00:00:01"));
    QVERIFY(m_plot->plotDatas().isEmpty());
    m_plot->setData(levels(5), QStringLiteral("s"));
    QCOMPARE(m_plot->plotDatas().keys(), QStringList{QStringLiteral("s")});

    // A rebuild drops every stored sample.
    renderInto(QStringLiteral("info"));
    QVERIFY(m_plot->plotDatas().isEmpty());

    // Without any graph, setData does nothing at all.
    m_plot->killGraph();
    m_plot->setData(levels(5), QStringLiteral("s"));
    QVERIFY(m_plot->plotDatas().isEmpty());
}

void TestRealTimePlot::rangesCostNothingWhenUnchanged()
{
    m_delegate.datas = 151;
    renderInto(QStringLiteral("signal"));
    RealTimePlotAxes *axes = m_plot->axes();
    QCOMPARE(axes->xRange(), std::make_pair(0.0, 150.0));
    QCOMPARE(axes->yRange(), std::make_pair(0.0, 1.0));
    const int changes = axes->rangeChanges();
    for (int i = 0; i < 1000; ++i)
        m_plot->setData(levels(10), QStringLiteral("02:00:00:00:00:%1").arg(i % 100));
    QCOMPARE(axes->rangeChanges(), changes);

    // A new number of samples changes the x range once, and the labels with it.
    m_delegate.datas = 301;
    m_plot->setData(levels(10), QStringLiteral("nobody"));
    m_plot->setData(levels(10), QStringLiteral("nobody"));
    QCOMPARE(axes->rangeChanges(), changes + 1);
    QCOMPARE(axes->xRange(), std::make_pair(0.0, 300.0));
    QCOMPARE(axes->xAxis()->max(), 300.0);
    QCOMPARE(axes->xLabels()->max(), 300.0);
    QCOMPARE(axes->xLabels()->categoriesLabels().first(), QStringLiteral("5 min"));
    QCOMPARE(axes->xLabels()->count(), RealTimePlotAxes::kTimeMajorTicks);

    // An empty range shows one unit around its place; a useless length steps by one.
    axes->setXRange(5, 0);
    QCOMPARE(axes->xRange(), std::make_pair(4.5, 5.5));
    QCOMPARE(axes->xAxis()->min(), 4.5);
    for (double length : {0.0, qInf(), qQNaN()})
        QCOMPARE(RealTimePlotAxes::niceStep(length), 1.0);
    QCOMPARE(RealTimePlotAxes::niceStep(1.0), 0.2);
}

void TestRealTimePlot::stringFixLen_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("title");
    QTest::newRow("20 characters") << "ABCDEFGHIJKLMNOPQRST"
                                   << "ABCDEFGHIJKLMNOP";
    QTest::newRow("16 characters") << "ABCDEFGHIJKLMNOP"
                                   << "ABCDEFGHIJKLMNOP";
    QTest::newRow("short") << "Cafe"
                           << "Cafe";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("no half surrogate")
        << QString(15, QLatin1Char('x')) + QString::fromUtf8("\xF0\x9F\x93\xB6!")
        << QString(15, QLatin1Char('x'));
}

void TestRealTimePlot::stringFixLen()
{
    QFETCH(QString, name);
    QFETCH(QString, title);
    QCOMPARE(RealTimePlot::plotTitle(name), title);
    QCOMPARE(RealTimePlot::string(name, 16), title);
    QCOMPARE(RealTimePlot::plotTitle(std::nullopt), QString());
    QCOMPARE(RealTimePlot::string(QStringLiteral("abc"), 0), QString());
}

void TestRealTimePlot::variants_data()
{
    QTest::addColumn<QString>("identifier");
    QTest::addColumn<bool>("rightAxis");
    QTest::addColumn<int>("legendColumns"); // 0: no legend
    QTest::newRow("info") << "info" << true << 1;
    QTest::newRow("signal") << "signal" << false << 5;
    QTest::newRow("detail") << "detail" << false << 0;
    QTest::newRow("other") << "Info" << false << 0;
}

// Every variant shows five minutes and 0 to 100 %; the interface plot adds the SNR axis on
// the right, the detail panel's small plot has no legend and small labels.
void TestRealTimePlot::variants()
{
    QFETCH(QString, identifier);
    QFETCH(bool, rightAxis);
    QFETCH(int, legendColumns);
    m_delegate.datas = 151;
    renderInto(identifier, QSize(400, 300));
    QChart *graph = m_plot->graph();
    const GraphFrame *frame = GraphFrame::find(graph);
    QCOMPARE(frame->title(), QStringLiteral("Signal Strength"));
    // The data area is the bounds less both paddings.
    QCOMPARE(graph->plotArea(), QRectF(0, 0, 400, 300)
                                    .marginsRemoved(frame->padding())
                                    .marginsRemoved(frame->plotAreaFramePadding()));
    RealTimePlotAxes *axes = m_plot->axes();
    QCOMPARE(axes->xLabels()->categoriesLabels(), (QStringList{"5 min", "4", "3", "2", "1", "0"}));
    QCOMPARE(axes->yLabels()->categoriesLabels(),
             (QStringList{"0%", "20%", "40%", "60%", "80%", "100%"}));
    QCOMPARE(axes->snrAxis() != nullptr, rightAxis);
    if (rightAxis) {
        QCOMPARE(axes->snrLabels()->categoriesLabels(),
                 (QStringList{"0dB", "20dB", "40dB", "60dB", "80dB", "100dB"}));
        QCOMPARE(graph->axes().at(4), axes->snrAxis()); // x, left y, right y
    }
    QCOMPARE(axes->xLabels()->labelsFont().pixelSize() == 9, identifier == QLatin1String("detail"));
    PlotLegend *legend = m_plot->legend();
    QCOMPARE(legend ? legend->columns() : 0, legendColumns);
    if (legend)
        QCOMPARE(legend->entries().size(), m_plot->plotIdentifiers().size());
}

void TestRealTimePlot::seriesListBuildsOnePlotEach()
{
    m_host = std::make_unique<PlotView>();
    m_host->setIdentifier(QStringLiteral("signal"));
    m_host->resize(600, 400);
    const QList<QVariantMap> list = {
        {{"i", "aa"}, {"n", "A network with a long name"}, {"s", 0.5}, {"c", QColor(Qt::yellow)}},
        {{"i", "bb"}, {"n", QVariant()}, {"s", 0.0}, {"c", QColor(Qt::cyan)}},
        {{"i", "cc"}}, // garbage entry: defaults, no crash
    };
    m_plot->render(list, m_host.get(), nullptr, true);
    QCOMPARE(m_plot->plotIdentifiers(), (QStringList{"aa", "bb", "cc"}));
    QCOMPARE(m_plot->plot("aa")->title(), QStringLiteral("A network with a"));
    QCOMPARE(m_plot->plot("aa")->pen().color(), QColor(Qt::yellow));
    QCOMPARE(m_plot->plot("aa")->pen().widthF(), 2.5); // stronger: wider
    QCOMPARE(m_plot->plot("bb")->title(), QString());
    QCOMPARE(m_plot->plot("bb")->pen().widthF(), 1.0);
    QVERIFY(m_plot->plot("cc")->pen().color().isValid());
}

void TestRealTimePlot::updateSignalPlotTitle_data()
{
    QTest::addColumn<qint64>("top");
    QTest::addColumn<QString>("title");
    QTest::newRow("10") << qint64(10) << "Signal Strength (Top 10)";
    QTest::newRow("50") << qint64(50) << "Signal Strength (Top 50)";
    QTest::newRow("51") << qint64(51) << "Signal Strength (All)";
    QTest::newRow("100") << qint64(100) << "Signal Strength (All)";
}

void TestRealTimePlot::updateSignalPlotTitle()
{
    QFETCH(qint64, top);
    QFETCH(QString, title);
    m_delegate.top = top;
    renderInto(QStringLiteral("signal"));
    m_plot->updateSignalPlot();
    QCOMPARE(GraphFrame::find(m_plot->graph())->title(), title);
}

void TestRealTimePlot::updateSignalPlotFreshness()
{
    const QDateTime now = m_clock.currentDateTime();
    m_delegate.top = 2;
    m_delegate.add("old", QStringLiteral("Stale"), 0.9, now.addMSecs(-1500));
    m_delegate.add("a", QStringLiteral("Just now"), 0.5, now.addMSecs(-1000));
    m_delegate.add("b", QStringLiteral("Now"), 0.3, now);
    m_delegate.add("c", QStringLiteral("No place left"), 0.8, now);
    renderInto(QStringLiteral("signal"));
    m_plot->updateSignalPlot();
    // The stale network takes no place; the limit of 2 stops at "b".
    QCOMPARE(m_plot->plotIdentifiers(), (QStringList{"a", "b"}));
    QCOMPARE(m_plot->legend()->entries().size(), 2);
    QCOMPARE(m_plot->legend()->entries().at(1).title, QStringLiteral("Now"));
    // Each chosen series got its network's history.
    QCOMPARE(m_plot->numberForPlot("b", 1, quint64(m_delegate.datas - 1)),
             std::optional<double>(double(0.3f)));

    // A second later "a" is stale as well and "c" moves up.
    m_clock.advance(1);
    m_plot->updateSignalPlot();
    QCOMPARE(m_plot->plotIdentifiers(), (QStringList{"b", "c"}));
}

void TestRealTimePlot::updateSignalPlotPlacesIncludeLeftovers()
{
    const QDateTime now = m_clock.currentDateTime();
    for (int i = 0; i < 4; ++i)
        m_delegate.add(QStringLiteral("n%1").arg(i), QStringLiteral("Net %1").arg(i), 0.5, now);
    m_delegate.top = 3;
    m_host = std::make_unique<PlotView>();
    m_host->setIdentifier(QStringLiteral("signal"));
    m_host->resize(600, 400);
    // "gone" is not a listed network: its plot stays and takes one of the three places.
    m_plot->render(QList<QVariantMap>{{{"i", "gone"}, {"n", "Gone"}, {"s", 0.1}},
                                      {{"i", "n3"}, {"n", "Net 3"}, {"s", 0.1}}},
                   m_host.get(), nullptr, false);
    m_plot->updateSignalPlot();
    QCOMPARE(m_plot->plotIdentifiers(), (QStringList{"gone", "n0", "n1"}));
    // The leftover is no longer in the legend.
    QCOMPARE(m_plot->legend()->entries().size(), 2);
    QCOMPARE(m_plot->graph()->series().size(), 3);
}

void TestRealTimePlot::updateSignalPlotReusesSeries()
{
    const QDateTime now = m_clock.currentDateTime();
    m_delegate.add("a", QStringLiteral("A"), 0.5, now);
    m_delegate.add("b", QStringLiteral("B"), 0.6, now);
    renderInto(QStringLiteral("signal"));
    m_plot->updateSignalPlot();
    QPointer<QLineSeries> first = m_plot->plot("a")->firstSegment();
    const int segmentsBefore = int(m_plot->graph()->series().size());
    for (int cycle = 0; cycle < 20; ++cycle) {
        m_plot->updateSignalPlot();
        for (const NetworkObjectRef &network : m_delegate.networks())
            m_plot->setData(network->signals(), network->bssid());
    }
    // The same line series is still in use: nothing was torn down and rebuilt.
    QCOMPARE(m_plot->plot("a")->firstSegment(), first.data());
    QCOMPARE(int(m_plot->graph()->series().size()), segmentsBefore);

    // A network that drops out takes its series with it.
    m_delegate.list.at(0)->setLastUpdated(now.addSecs(-10));
    m_plot->updateSignalPlot();
    QVERIFY(first.isNull());
    QCOMPARE(m_plot->plotIdentifiers(), QStringList{"b"});
}

void TestRealTimePlot::legendGridStaysInsideTheChart()
{
    const QDateTime now = m_clock.currentDateTime();
    for (int i = 0; i < 100; ++i)
        m_delegate.add(QStringLiteral("n%1").arg(i), QStringLiteral("Network number %1").arg(i),
                       0.5, now);
    m_delegate.top = 100;
    renderInto(QStringLiteral("signal"), QSize(500, 360));
    m_plot->updateSignalPlot();
    PlotLegend *legend = m_plot->legend();
    QCOMPARE(legend->entries().size(), 100);
    // Narrow chart: fewer columns than 5; too many rows: the last cell counts the rest.
    QVERIFY(legend->columnsUsed() < 5);
    QVERIFY(legend->entriesShown() < 100);
    const QRectF inside = QRectF(0, 0, 500, 360);
    QVERIFY2(inside.contains(legend->frameInGraph()), "legend leaves the chart");
    QCOMPARE(legend->frameInGraph().top(), 90.0);
}

QTEST_MAIN(TestRealTimePlot)
#include "tst_realtimeplot.moc"

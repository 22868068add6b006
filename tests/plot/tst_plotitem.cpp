// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/GraphFrame.h"
#include "plot/PlotItem.h"
#include "plot/PlotTheme.h"
#include "plot/PlotView.h"
#include "plot/RealTimePlot.h"
#include "plot/support/FakePlotDelegate.h"

#include <QChart>
#include <QChartView>
#include <QLineSeries>
#include <QtTest>

#include <set>

namespace {

// Records the sizes a PlotView passes on.
class SizeListener : public QObject
{
    Q_OBJECT

public:
    QList<QSizeF> sizes;
    Q_INVOKABLE void setFrameSize(const QSizeF &size) { sizes.append(size); }
};

int distinctColours(const QImage &image)
{
    std::set<QRgb> colours;
    for (int y = 0; y < image.height(); y += 3) {
        for (int x = 0; x < image.width(); x += 3)
            colours.insert(image.pixel(x, y));
    }
    return int(colours.size());
}

} // namespace

class TestPlotItem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void titleAndPaddingDefaults_data();
    void titleAndPaddingDefaults();
    void titleCompare_data();
    void titleCompare();
    void applyThemeKinds();
    void killGraphLeavesNothingBehind();
    void hostingViewFollowsParent();
    void imageIsRenderedOffScreen();
    void plotViewForwardsSizeChanges();
    void baseRenderOnlyLogs();
};

void TestPlotItem::titleAndPaddingDefaults_data()
{
    QTest::addColumn<QSizeF>("bounds");
    QTest::addColumn<int>("fontSize");
    QTest::addColumn<double>("displacement");
    QTest::addColumn<QMarginsF>("padding");
    QTest::newRow("400x300") << QSizeF(400, 300) << 15 << 17.0 << QMarginsF(10, 34, 10, 10);
    QTest::newRow("1280x800") << QSizeF(1280, 800) << 40 << 44.0 << QMarginsF(32, 88, 32, 32);
    QTest::newRow("tiny") << QSizeF(30, 8) << 0 << 0.0 << QMarginsF(1, 1, 1, 1);
    QTest::newRow("empty") << QSizeF(0, 0) << 0 << 0.0 << QMarginsF(0, 0, 0, 0);
}

void TestPlotItem::titleAndPaddingDefaults()
{
    QFETCH(QSizeF, bounds);
    QFETCH(int, fontSize);
    QFETCH(double, displacement);
    QFETCH(QMarginsF, padding);
    const QRectF rect(QPointF(), bounds);
    const PlotItem::TitleDefaults title = PlotItem::titleDefaultsForBounds(rect);
    QCOMPARE(title.fontSize, fontSize);
    QCOMPARE(title.displacement, QPointF(0, displacement));
    QCOMPARE(PlotItem::paddingDefaultsForBounds(rect, title.displacement), padding);

    // Applied to a graph, the same numbers land on the title and the frame.
    PlotItem item;
    item.setTitle(QStringLiteral("Levels"));
    QChart graph;
    graph.resize(bounds);
    item.setTitleDefaultsForGraph(&graph, rect);
    item.setPaddingDefaultsForGraph(&graph, rect);
    const GraphFrame *frame = GraphFrame::find(&graph);
    QVERIFY(frame);
    QCOMPARE(frame->title(), QStringLiteral("Levels"));
    QCOMPARE(frame->titleFont().pixelSize(), std::max(1, fontSize));
    QCOMPARE(frame->titleFont().bold(), true);
    QCOMPARE(frame->titleColor(), QColor::fromRgbF(0.5f, 0.5f, 0.5f));
    QCOMPARE(frame->titleDisplacement(), QPointF(0, displacement));
    QCOMPARE(frame->padding(), padding);
    if (bounds.width() >= 100) { // a chart has a minimum size of its own
        // The title box is centred on the middle of the frame's top edge, raised by the
        // displacement.
        const QRectF title = frame->titleRect();
        QCOMPARE(title.center().x(), bounds.width() * 0.5);
        QCOMPARE(title.center().y(), padding.top() - displacement);
    }
}

void TestPlotItem::titleCompare_data()
{
    QTest::addColumn<QString>("sectionA");
    QTest::addColumn<QString>("titleA");
    QTest::addColumn<QString>("sectionB");
    QTest::addColumn<QString>("titleB");
    QTest::addColumn<int>("order");
    QTest::newRow("sections differ in case only") << "Line Plots"
                                                  << "A"
                                                  << "line plots"
                                                  << "b" << -1;
    QTest::newRow("titles ignore case") << "x"
                                        << "B"
                                        << "X"
                                        << "a" << 1;
    QTest::newRow("section decides") << "a"
                                     << "z"
                                     << "b"
                                     << "a" << -1;
    QTest::newRow("equal") << "Plots"
                           << "Signal"
                           << "PLOTS"
                           << "SIGNAL" << 0;
}

void TestPlotItem::titleCompare()
{
    QFETCH(QString, sectionA);
    QFETCH(QString, titleA);
    QFETCH(QString, sectionB);
    QFETCH(QString, titleB);
    QFETCH(int, order);
    PlotItem a;
    PlotItem b;
    a.setSection(sectionA);
    a.setTitle(titleA);
    b.setSection(sectionB);
    b.setTitle(titleB);
    QCOMPARE(a.titleCompare(b), order);
    QCOMPARE(b.titleCompare(a), -order);
}

void TestPlotItem::applyThemeKinds()
{
    // Null: the default theme. The null marker: nothing. A named theme: that one.
    QChart defaulted;
    PlotItem::applyTheme(nullptr, &defaulted, PlotTheme::darkGradient());
    QCOMPARE(defaulted.theme(), QChart::ChartThemeDark);
    QCOMPARE(defaulted.backgroundBrush().style(), Qt::LinearGradientPattern);

    QChart untouched;
    const QBrush before = untouched.backgroundBrush();
    PlotItem::applyTheme(PlotTheme::nullTheme(), &untouched, PlotTheme::darkGradient());
    QCOMPARE(untouched.theme(), QChart::ChartThemeLight);
    QCOMPARE(untouched.backgroundBrush(), before);

    QChart named;
    PlotItem::applyTheme(PlotTheme::themeNamed(PlotTheme::kPlainWhiteTheme), &named,
                         PlotTheme::darkGradient());
    QCOMPARE(named.theme(), QChart::ChartThemeLight);
    QCOMPARE(named.backgroundBrush().style(), Qt::SolidPattern);

    QCOMPARE(PlotTheme::themeNamed(QString()), nullptr);
    QCOMPARE(PlotTheme::themeNamed(QStringLiteral("no such theme")), nullptr);
}

void TestPlotItem::killGraphLeavesNothingBehind()
{
    FakePlotDelegate delegate;
    QWidget host;
    host.resize(500, 300);
    host.setProperty("identifier", QStringLiteral("info"));
    RealTimePlot plot;
    plot.setDelegate(&delegate);

    QList<QPointer<QChart>> charts;
    QList<QPointer<QLineSeries>> series;
    QList<QPointer<QChartView>> views;
    for (int i = 0; i < 40; ++i) {
        plot.renderInView(&host, nullptr, i % 2 == 0);
        QCOMPARE(host.findChildren<QChartView *>().size(), 1);
        QCOMPARE(plot.graphs().size(), 1);
        QCOMPARE(plot.graphs().first()->series().size(), 3);
        charts.append(plot.graphs().first());
        views.append(plot.defaultLayerHostingView());
        for (QAbstractSeries *s : plot.graphs().first()->series())
            series.append(qobject_cast<QLineSeries *>(s));
    }
    plot.killGraph();
    QCOMPARE(host.findChildren<QObject *>().size(), 0);
    QVERIFY(plot.graphs().isEmpty());
    QCOMPARE(plot.defaultLayerHostingView(), nullptr);
    QVERIFY(plot.cachedImage().isNull());
    for (const auto &chart : charts)
        QVERIFY(chart.isNull());
    for (const auto &s : series)
        QVERIFY(s.isNull());
    for (const auto &view : views)
        QVERIFY(view.isNull());

    // A graph added without a view belongs to the item.
    QPointer<QChart> loose = new QChart;
    plot.addGraph(loose);
    plot.killGraph();
    QVERIFY(loose.isNull());
}

void TestPlotItem::hostingViewFollowsParent()
{
    FakePlotDelegate delegate;
    PlotView host;
    host.setIdentifier(QStringLiteral("detail"));
    host.resize(300, 200);
    host.show();
    RealTimePlot plot;
    plot.setDelegate(&delegate);
    plot.renderInView(&host, nullptr, false);
    QChartView *view = plot.defaultLayerHostingView();
    QVERIFY(view);
    QCOMPARE(view->parentWidget(), &host);
    QCOMPARE(view->property("identifier").toString(), QStringLiteral("detail"));
    QCOMPARE(view->geometry(), QRect(0, 0, 300, 200));
    QVERIFY(view->isVisible());
    host.resize(640, 480);
    QCOMPARE(view->geometry(), QRect(0, 0, 640, 480));

    // Rendering into no view at all leaves an unparented, empty hosting view.
    plot.renderInView(nullptr, nullptr, false);
    QVERIFY(plot.defaultLayerHostingView());
    QCOMPARE(plot.defaultLayerHostingView()->parentWidget(), nullptr);
    // The graph was built for zero bounds (a parentless view may not be 0 x 0 itself).
    QCOMPARE(GraphFrame::find(plot.graph())->titleFont().pixelSize(), 1);
    QCOMPARE(GraphFrame::find(plot.graph())->padding(), QMarginsF(0, 0, 0, 0));
    QCOMPARE(host.findChildren<QChartView *>().size(), 0);
}

void TestPlotItem::imageIsRenderedOffScreen()
{
    FakePlotDelegate delegate;
    RealTimePlot plot;
    plot.setDelegate(&delegate);
    const QImage image = plot.image();
    QCOMPARE(image.size(), QSize(PlotItem::kImageWidth, PlotItem::kImageHeight));
    QVERIFY2(distinctColours(image) > 20, "the off-screen image looks blank");
    // Kept until the next teardown.
    QCOMPARE(plot.image().cacheKey(), image.cacheKey());
    plot.killGraph();
    QVERIFY(plot.cachedImage().isNull());
}

void TestPlotItem::plotViewForwardsSizeChanges()
{
    PlotView view;
    auto listener = std::make_shared<SizeListener>();
    view.setDelegate(listener);
    view.show();
    view.setFrameSize(QSizeF(320, 240));
    view.resize(100, 50);
    QCOMPARE(view.size(), QSize(100, 50));
    QVERIFY(listener->sizes.contains(QSizeF(320, 240)));
    QCOMPARE(listener->sizes.last(), QSizeF(100, 50));

    // A delegate without setFrameSize is left alone.
    view.setDelegate(std::make_shared<QObject>());
    view.resize(90, 40);
    QCOMPARE(view.size(), QSize(90, 40));
}

void TestPlotItem::baseRenderOnlyLogs()
{
    PlotItem item;
    QWidget host;
    host.resize(200, 100);
    QTest::ignoreMessage(QtInfoMsg, "PlotItem:renderInLayer: Override me");
    item.renderInView(&host, nullptr, false);
    QVERIFY(item.graphs().isEmpty());
    QCOMPARE(host.findChildren<QChartView *>().size(), 1);
}

QTEST_MAIN(TestPlotItem)
#include "tst_plotitem.moc"

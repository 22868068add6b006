// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/PlotItem.h"
#include "plot/PlotTheme.h"
#include "plot/PlotView.h"
#include "plot/RealTimePlot.h"
#include "plot/support/FakePlotDelegate.h"

#include <QChart>
#include <QChartView>
#include <QLineSeries>
#include <QtTest>

class TestPlotItem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void applyThemeKinds();
    void killGraphLeavesNothingBehind();
    void hostingViewFollowsParent();
};

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
    QCOMPARE(view->geometry(), QRect(0, 0, 300, 200));
    host.resize(640, 480);
    QCOMPARE(view->geometry(), QRect(0, 0, 640, 480));
}

QTEST_MAIN(TestPlotItem)
#include "tst_plotitem.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
// The Channels tab's view: charts for the bands heard, and hovering.
#include "plot/ChannelOccupancyView.h"
#include "plot/support/FakeNetworks.h"
#include "plot/support/FakePlotDelegate.h"
#include "util/Clock.h"

#include <QtTest>

class TestChannelOccupancyView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void chartsFollowTheBandsHeard();
    void hoverHighlightsOneNetwork();
};

void TestChannelOccupancyView::chartsFollowTheBandsHeard()
{
    FakePlotDelegate delegate;
    ChannelOccupancyView view;
    view.setDelegate(&delegate);
    view.resize(1000, 600);
    view.relayout();
    QCOMPARE(view.charts().size(), 2); // nothing heard: 2.4 and 5 GHz, empty
    QVERIFY(view.charts().at(0).shapes.isEmpty());

    const QDateTime now = Clock::now();
    delegate.list = FakeNetworks::makeOnAir(60, 3, now);
    // A record heard two minutes before the newest scan no longer counts.
    const NetworkObjectRef old = FakeNetworks::makeOnAir(1, 9, now.addSecs(-120)).at(0);
    old->setBssid(QStringLiteral("02:00:00:00:ff:ff"));
    delegate.list.append(old);
    view.relayout();
    QCOMPARE(view.charts().size(), 3);
    QCOMPARE(view.entries().size(), 60);
    qsizetype shapes = 0;
    for (const auto &chart : view.charts()) {
        shapes += chart.shapes.size();
        QVERIFY(!chart.recommendation.isEmpty());
    }
    QCOMPARE(shapes, 60);
}

void TestChannelOccupancyView::hoverHighlightsOneNetwork()
{
    FakePlotDelegate delegate;
    delegate.list = FakeNetworks::makeOnAir(12, 5, Clock::now());
    ChannelOccupancyView view;
    view.setDelegate(&delegate);
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

QTEST_MAIN(TestChannelOccupancyView)
#include "tst_channeloccupancyview.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/WiFiChannelView.h"
#include "plot/support/FakePlotDelegate.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QtTest>

using Band = WiFiChannelLayout::Band;

class TestWiFiChannelView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void frame();
    void ticks24();
    void ticks5();
    void index5GHz_data();
    void index5GHz();
    void hump24();
    void box5();
    void onlyBand1IsDrawn();
    void bandByIdentifier();
};

void TestWiFiChannelView::frame()
{
    const QRectF bounds(0, 0, 935, 465);
    QCOMPARE(WiFiChannelLayout::plotRect(bounds), QRectF(50, 50, 870, 400));
    QCOMPARE(WiFiChannelLayout::slotWidth(bounds, Band::GHz2_4), 50.0);
    QCOMPARE(WiFiChannelLayout::slotWidth(bounds, Band::GHz5), 870 / 28.4);
    // Level labels 10% ... 90% at h k + h / 2 + 45 with h = 80; grid every 10%.
    QCOMPARE(WiFiChannelLayout::levelLabelOrigin(bounds, 0), QPointF(25, 85));
    QCOMPARE(WiFiChannelLayout::levelLabelOrigin(bounds, 4), QPointF(25, 405));
    QCOMPARE(WiFiChannelLayout::gridLineY(bounds, 1), 90.0);
    QCOMPARE(WiFiChannelLayout::gridLineY(bounds, 9), 410.0);
}

void TestWiFiChannelView::ticks24()
{
    const QRectF bounds(0, 0, 935, 465);
    QCOMPARE(WiFiChannelLayout::channelCount(Band::GHz2_4), 13);
    QCOMPARE(WiFiChannelLayout::tickX(bounds, Band::GHz2_4, 0), 155.0);
    QCOMPARE(WiFiChannelLayout::tickX(bounds, Band::GHz2_4, 12), 755.0);
    for (int i = 0; i < 13; ++i)
        QCOMPARE(WiFiChannelLayout::channelNumber(Band::GHz2_4, i), qint64(i + 1));
}

void TestWiFiChannelView::ticks5()
{
    const QRectF bounds(0, 0, 1000, 465);
    const double s = WiFiChannelLayout::slotWidth(bounds, Band::GHz5);
    QCOMPARE(WiFiChannelLayout::channelCount(Band::GHz5), 24);
    // One slot of gap before each of the three groups.
    QCOMPARE(WiFiChannelLayout::tickX(bounds, Band::GHz5, 0), s + 50);
    QCOMPARE(WiFiChannelLayout::tickX(bounds, Band::GHz5, 7), s + 50 + 7 * s);
    QCOMPARE(WiFiChannelLayout::tickX(bounds, Band::GHz5, 8), 2 * s + 50 + 8 * s);
    QCOMPARE(WiFiChannelLayout::tickX(bounds, Band::GHz5, 19), 3 * s + 50 + 19 * s);
    QList<qint64> numbers;
    for (int i = 0; i < 24; ++i)
        numbers.append(WiFiChannelLayout::channelNumber(Band::GHz5, i));
    QCOMPARE(numbers, (QList<qint64>{36,  40,  44,  48,  52,  56,  60,  64,  100, 104, 108, 112,
                                     116, 120, 124, 128, 132, 136, 140, 149, 153, 157, 161, 165}));
}

void TestWiFiChannelView::index5GHz_data()
{
    QTest::addColumn<qint64>("channel");
    QTest::addColumn<qint64>("index");
    QTest::newRow("36") << qint64(36) << qint64(0);
    QTest::newRow("64") << qint64(64) << qint64(7);
    QTest::newRow("96") << qint64(96) << qint64(7);
    QTest::newRow("100") << qint64(100) << qint64(8);
    QTest::newRow("104") << qint64(104) << qint64(9);
    QTest::newRow("140") << qint64(140) << qint64(17);
    QTest::newRow("149") << qint64(149) << qint64(19);
    QTest::newRow("165") << qint64(165) << qint64(23);
    QTest::newRow("6") << qint64(6) << qint64(-7);
    QTest::newRow("absurd") << std::numeric_limits<qint64>::min() << qint64(-250009);
}

void TestWiFiChannelView::index5GHz()
{
    QFETCH(qint64, channel);
    QFETCH(qint64, index);
    QCOMPARE(WiFiChannelLayout::channelIndex5GHz(channel), index);
}

void TestWiFiChannelView::hump24()
{
    const QRectF bounds(0, 0, 935, 465);
    const double s = 50;
    const double base = 2.1 * s + 50;
    const QPolygonF hump = WiFiChannelLayout::outline(bounds, Band::GHz2_4, 6, 0.5);
    QCOMPARE(hump.size(), 6);
    const double left = (5 - 2.1) * s + base;
    const double right = (5 + 2.1) * s + base;
    QCOMPARE(hump.at(0), QPointF(left, 50));
    QCOMPARE(hump.at(1), QPointF(left + 0.065 * s, 150));
    QCOMPARE(hump.at(2), QPointF(left + 0.1 * s, 250));
    QCOMPARE(hump.at(3), QPointF(right - 0.1 * s, 250));
    QCOMPARE(hump.at(4), QPointF(right - 0.065 * s, 150));
    QCOMPARE(hump.at(5), QPointF(right, 50));
    // Centred on channel 6's tick.
    QCOMPARE((hump.at(0).x() + hump.at(5).x()) / 2,
             WiFiChannelLayout::tickX(bounds, Band::GHz2_4, 5));
    QCOMPARE(WiFiChannelLayout::labelOrigin(bounds, Band::GHz2_4, 6, 0.5, 60),
             QPointF((4 * s - 60) * 0.5 + left + 0.1 * s, 252));
}

void TestWiFiChannelView::box5()
{
    const QRectF bounds(0, 0, 1000, 465);
    const double s = WiFiChannelLayout::slotWidth(bounds, Band::GHz5);
    const QPolygonF box = WiFiChannelLayout::outline(bounds, Band::GHz5, 100, 0.25);
    const double left = (8 - 0.5) * s + s + 50;
    QCOMPARE(box, (QPolygonF{QPointF(left, 50), QPointF(left, 150), QPointF(left + s, 150),
                             QPointF(left + s, 50)}));
    QCOMPARE(WiFiChannelLayout::labelOrigin(bounds, Band::GHz5, 100, 0.25, 60), QPointF(left, 152));
}

void TestWiFiChannelView::onlyBand1IsDrawn()
{
    FakePlotDelegate delegate;
    const NetworkObjectRef band1 = delegate.add("aa", QStringLiteral("Two four"), 0.5);
    band1->setChannel(6);
    const NetworkObjectRef band2 = delegate.add("bb", QStringLiteral("Five"), 0.5);
    band2->setChannel(100);
    band2->setChannelBand(2);
    const NetworkObjectRef unknown = delegate.add("cc", QStringLiteral("Unknown"), 0.5);
    unknown->setChannelBand(0);

    for (const QString &identifier : {QString(), QStringLiteral("5")}) {
        WiFiChannelView view;
        view.setDelegate(&delegate);
        view.setIdentifier(identifier);
        view.resize(935, 465);
        const QList<WiFiChannelLayout::Outline> outlines = view.layout();
        QCOMPARE(outlines.size(), 1);
        QCOMPARE(outlines.first().network, band1);
        QCOMPARE(outlines.first().label, QStringLiteral("Two four"));
        if (identifier == QLatin1String("5")) {
            // Channel 6 by the 5 GHz rule: slot -7, left of the plot.
            QVERIFY(outlines.first().points.first().x() < 0);
        } else {
            const double width =
                QFontMetricsF(WiFiView::systemFont(11)).horizontalAdvance("Two four");
            QCOMPARE(outlines.first().labelOrigin,
                     WiFiChannelLayout::labelOrigin(QRectF(0, 0, 935, 465), Band::GHz2_4, 6, 0.5,
                                                    width));
        }
        // And it paints without complaint.
        QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
        QPainter painter(&image);
        view.drawRect(painter);
    }
}

void TestWiFiChannelView::bandByIdentifier()
{
    WiFiChannelView view;
    QCOMPARE(view.band(), Band::GHz2_4);
    view.setIdentifier(QStringLiteral("5"));
    QCOMPARE(view.band(), Band::GHz5);
    view.setIdentifier(QStringLiteral("5 GHz"));
    QCOMPARE(view.band(), Band::GHz2_4);
}

QTEST_MAIN(TestWiFiChannelView)
#include "tst_wifichannelview.moc"

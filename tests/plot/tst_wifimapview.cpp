// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/WiFiMapView.h"
#include "plot/support/FakePlotDelegate.h"

#include <QPainter>
#include <QtTest>

#include <cmath>

namespace {

constexpr double kDegree = 0.0174532925;

void paint(WiFiMapView &view)
{
    QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    view.drawRect(painter);
}

} // namespace

class TestWiFiMapView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ringsAndTheFirstPlace();
    void startAngle_data();
    void startAngle();
    void ringsBySignal_data();
    void ringsBySignal();
    void weakNetworksAreCapped();
    void labelsSitUnderTheIcons();
    void locationsAreTextAndNeverForgotten();
    void rectStrings_data();
    void rectStrings();
    void hitTestingFollowsListOrder();
    void hitTestingEdges_data();
    void hitTestingEdges();
    void hostileNamesAreShownSafely();
};

void TestWiFiMapView::ringsAndTheFirstPlace()
{
    const QRectF bounds(0, 0, 490, 390);
    QCOMPARE(WiFiMapLayout::ringStep(bounds), 40.0);
    const double radii[] = {70, 110, 150, 190, 230};
    for (int ring = 1; ring <= 5; ++ring)
        QCOMPARE(WiFiMapLayout::ringRadius(bounds, ring), radii[ring - 1]);
    // R0 is the bounds inset by 30; each next one by dx = 40 and dy = 30 more.
    const auto rects = WiFiMapLayout::ringRects(bounds);
    QCOMPARE(rects[0], QRectF(30, 30, 430, 330));
    QCOMPARE(rects[1], QRectF(70, 60, 350, 270));
    QCOMPARE(rects[4], QRectF(190, 150, 110, 90));

    // One network sits at ten degrees on ring 1, on the ellipse of the bounds.
    FakePlotDelegate delegate;
    delegate.add("aa", QStringLiteral("Alone"), 0.7);
    WiFiMapView view;
    view.setDelegate(&delegate);
    view.resize(490, 390);
    const WiFiMapLayout::Placement p = view.layout().first();
    QCOMPARE(p.ring, 1);
    const double a = 10 * kDegree;
    QCOMPARE(p.point, QPointF(245 + 70 * std::cos(a), 195 + 70 * std::sin(a) * 390 / 490));
    QCOMPARE(p.imageRect, QRectF(p.point, view.wifiImage(1).size()));
}

void TestWiFiMapView::startAngle_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<double>("degrees");
    QTest::newRow("1") << 1 << 10.0;
    QTest::newRow("2") << 2 << 20.0;
    QTest::newRow("35") << 35 << 350.0;
    QTest::newRow("36") << 36 << 0.0;
    QTest::newRow("37") << 37 << 10.0;
    QTest::newRow("72") << 72 << 0.0;
}

void TestWiFiMapView::startAngle()
{
    QFETCH(int, count);
    QFETCH(double, degrees);
    QCOMPARE(WiFiMapLayout::startAngle(count), degrees * kDegree);
    QCOMPARE(WiFiMapLayout::angleStep(count), 6.283185307 / count);
}

void TestWiFiMapView::ringsBySignal_data()
{
    QTest::addColumn<double>("signal");
    QTest::addColumn<bool>("own");
    QTest::addColumn<int>("ring");
    QTest::newRow("0.6") << 0.6 << false << 1;
    QTest::newRow("0.56") << 0.56 << false << 2;
    QTest::newRow("0.56 own") << 0.56 << true << 1;
    QTest::newRow("0.5") << 0.5 << false << 2;
    QTest::newRow("0.3") << 0.3 << false << 3;
    QTest::newRow("0.25 own") << 0.25 << true << 3;
    QTest::newRow("0.2") << 0.2 << false << 4;
    QTest::newRow("0.19") << 0.19 << false << 5;
    QTest::newRow("negative") << -0.2 << false << 5;
}

void TestWiFiMapView::ringsBySignal()
{
    QFETCH(double, signal);
    QFETCH(bool, own);
    QFETCH(int, ring);
    FakePlotDelegate delegate;
    // Levels are single-precision fractions in the record.
    const NetworkObjectRef network =
        delegate.add("aa", QStringLiteral("Net"), double(float(signal)));
    delegate.add("bb", QStringLiteral("Other"), 0.9);
    delegate.associate(own ? std::optional<QString>("aa") : std::optional<QString>("cc"));
    WiFiMapView view;
    view.setDelegate(&delegate);
    view.resize(490, 390);
    const QList<WiFiMapLayout::Placement> placements = view.layout();
    QCOMPARE(placements.size(), 2);
    for (const WiFiMapLayout::Placement &p : placements) {
        if (p.network == network) {
            QCOMPARE(p.ring, ring);
            QCOMPARE(p.current, own);
        }
    }
}

void TestWiFiMapView::weakNetworksAreCapped()
{
    FakePlotDelegate delegate;
    for (int i = 0; i < 25; ++i)
        delegate.add(QStringLiteral("w%1").arg(i), QStringLiteral("Weak %1").arg(i), 0.1);
    delegate.add("strong", QStringLiteral("Strong"), 0.9);
    WiFiMapView view;
    view.setDelegate(&delegate);
    view.resize(800, 600);
    paint(view);
    QCOMPARE(view.networkLocations().size(), 21);
    for (int i = 0; i < 25; ++i)
        QCOMPARE(view.networkLocations().contains(QStringLiteral("w%1").arg(i)), i < 20);
    // The 20 on ring 5 start at (20 x 10) mod 360 = 200 degrees.
    const QList<WiFiMapLayout::Placement> placements = view.layout();
    const auto first = std::find_if(placements.cbegin(), placements.cend(),
                                    [](const auto &p) { return p.ring == 5; });
    const double a = 200 * kDegree;
    QCOMPARE(first->point.x(), 400 + (5 * 71.0 + 30) * std::cos(a));
}

void TestWiFiMapView::labelsSitUnderTheIcons()
{
    FakePlotDelegate delegate;
    delegate.add("aa", QStringLiteral("A rather long network name"), 0.7);
    delegate.add("bb", QStringLiteral("Mine"), 0.4);
    delegate.add("cc", std::nullopt, 0.4);
    delegate.associate(QStringLiteral("bb"));
    WiFiMapView view;
    view.setDelegate(&delegate);
    view.resize(600, 500);
    view.initImagesIfNeeded();
    const QFontMetricsF metrics(WiFiView::systemFont(11));
    for (const WiFiMapLayout::Placement &p : view.layout()) {
        QCOMPARE(p.textRect.width(), metrics.horizontalAdvance(p.label));
        QCOMPARE(p.textRect.height(), metrics.height());
        // Centred under the icon, its lower edge 15 below the icon's.
        QCOMPARE(p.textRect.center().x(), p.imageRect.center().x());
        QCOMPARE(p.textRect.y(), p.imageRect.y() - 15);
        QCOMPARE(p.current, p.network->bssid() == QLatin1String("bb"));
    }
}

void TestWiFiMapView::locationsAreTextAndNeverForgotten()
{
    FakePlotDelegate delegate;
    const NetworkObjectRef moving = delegate.add("aa", QStringLiteral("Moving"), 0.9);
    WiFiMapView view;
    view.setDelegate(&delegate);
    view.resize(490, 390);
    paint(view);
    const QString imageText = view.networkLocations().value("aa").value(WiFiMapView::kImageRectKey);
    const QList<WiFiMapLayout::Placement> placements = view.layout();
    QCOMPARE(imageText, WiFiMapView::stringFromRect(placements.first().imageRect));
    QVERIFY(imageText.startsWith(QLatin1String("{{")));
    QCOMPARE(WiFiMapView::rectFromString(imageText), placements.first().imageRect);

    // 20 weak networks fill ring 5 ahead of it; once it turns weak it is drawn no more,
    // but it still answers at its last place.
    NetworkList list;
    for (int i = 0; i < 20; ++i)
        list.append(makeNetwork(QStringLiteral("w%1").arg(i), QStringLiteral("W"), 0.05, i));
    list.append(moving);
    delegate.list = list;
    moving->setSignals({0.05f});
    paint(view);
    QCOMPARE(view.networkLocations().value("aa").value(WiFiMapView::kImageRectKey), imageText);
    QCOMPARE(view.networkAtPoint(placements.first().imageRect.center()), moving);
}

void TestWiFiMapView::rectStrings_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QRectF>("rect");
    QTest::newRow("plain") << "{{10, 20}, {30, 40}}" << QRectF(10, 20, 30, 40);
    QTest::newRow("fractions") << "{{-1.5, 0.25}, {24, 13.5}}" << QRectF(-1.5, 0.25, 24, 13.5);
    QTest::newRow("spaces") << " { {1,2} , {3,4} } " << QRectF(1, 2, 3, 4);
    QTest::newRow("garbage") << "{{a, b}, {c, d}}" << QRectF();
    QTest::newRow("empty") << "" << QRectF();
    QTest::newRow("infinite") << "{{inf, 0}, {1, 1}}" << QRectF();
    QTest::newRow("truncated") << "{{1, 2}, {3" << QRectF();
}

void TestWiFiMapView::rectStrings()
{
    QFETCH(QString, text);
    QFETCH(QRectF, rect);
    QCOMPARE(WiFiMapView::rectFromString(text), rect);
    if (!rect.isNull())
        QCOMPARE(WiFiMapView::rectFromString(WiFiMapView::stringFromRect(rect)), rect);
}

void TestWiFiMapView::hitTestingFollowsListOrder()
{
    // 36 networks on ring 1 of a small map crowd each other: neighbours' icons overlap.
    FakePlotDelegate delegate;
    for (int i = 0; i < 36; ++i)
        delegate.add(QStringLiteral("n%1").arg(i), QStringLiteral("N%1").arg(i), 0.9);
    WiFiMapView view;
    view.setDelegate(&delegate);
    view.resize(490, 390);
    paint(view);
    const QList<WiFiMapLayout::Placement> placements = view.layout();
    const QRectF overlap = placements.at(0).imageRect.intersected(placements.at(1).imageRect);
    QVERIFY(!overlap.isEmpty());
    QCOMPARE(view.networkAtPoint(overlap.center()), delegate.list.at(0));

    // The same place, with the second network listed first, answers the second.
    NetworkList reordered;
    reordered.append(delegate.list.at(1));
    reordered.append(delegate.list.at(0));
    delegate.list = reordered;
    QCOMPARE(view.networkAtPoint(overlap.center()), reordered.at(0));

    // Far from everything: nothing.
    QCOMPARE(view.networkAtPoint(QPointF(2, 2)), nullptr);
}

void TestWiFiMapView::hitTestingEdges_data()
{
    QTest::addColumn<QPointF>("offset"); // from the icon's lower-left corner
    QTest::addColumn<bool>("hit");
    QTest::newRow("lower-left corner") << QPointF(0, 0) << true;
    QTest::newRow("inside") << QPointF(5, 5) << true;
    QTest::newRow("right edge") << QPointF(24, 5) << false;
    QTest::newRow("top edge") << QPointF(5, 24) << false;
    QTest::newRow("just inside the top") << QPointF(5, 23.9) << true;
    QTest::newRow("left of it") << QPointF(-0.1, 5) << false;
}

void TestWiFiMapView::hitTestingEdges()
{
    QFETCH(QPointF, offset);
    QFETCH(bool, hit);
    FakePlotDelegate delegate;
    delegate.add("aa", QString(), 0.9); // no label: only the icon answers
    WiFiMapView view;
    view.setDelegate(&delegate);
    view.resize(490, 390);
    paint(view);
    const QRectF icon = view.layout().first().imageRect;
    QCOMPARE(icon.size(), QSizeF(24, 24));
    QCOMPARE(view.networkAtPoint(icon.topLeft() + offset) != nullptr, hit);
}

void TestWiFiMapView::hostileNamesAreShownSafely()
{
    QCOMPARE(WiFiView::displayText(QStringLiteral("a\tb\nc")),
             QString::fromUtf8("a\uFFFDb\uFFFDc"));
    QCOMPARE(WiFiView::displayText(std::nullopt), QString());
    QVERIFY(WiFiView::loadIcon(QStringLiteral("no-such-icon")).isNull());
}

QTEST_MAIN(TestWiFiMapView)
#include "tst_wifimapview.moc"

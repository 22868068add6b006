// SPDX-License-Identifier: GPL-3.0-or-later
// The map, channel and channel-occupancy views: layout, hit testing and painting.
#include "plot/ChannelOccupancyView.h"
#include "plot/WiFiChannelView.h"
#include "plot/WiFiMapView.h"
#include "plot/support/PlotFixture.h"
#include "util/RandomSource.h"
#include "wireless/CWNetwork.h"
#include "wireless/ie/FrequencyPlan.h"

#include <QPainter>
#include <QtTest>

#include <cmath>

using Band = WiFiChannelLayout::Band;
using Placement = WiFiMapLayout::Placement;

namespace {

constexpr double kDegree = 0.0174532925;
const QRectF kMapBounds(0, 0, 490, 390);
const QRectF kChannelBounds(0, 0, 935, 465);

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

class TestPlotViews : public PlotFixture
{
    Q_OBJECT

    std::unique_ptr<WiFiMapView> m_map;

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
private Q_SLOTS:
    void init()
    {
        Clock::setInstance(&m_clock);
        m_delegate = FakePlotDelegate();
    }
    void cleanup()
    {
        m_map.reset();
        Clock::setInstance(nullptr);
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

QTEST_MAIN(TestPlotViews)
#include "tst_plotviews.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
// The map, channel and channel-occupancy views: layout, hit testing and painting.
#include "plot/ChannelOccupancyView.h"
#include "plot/WiFiChannelView.h"
#include "plot/WiFiMapView.h"
#include "plot/support/PlotFixture.h"
#include "wireless/CWNetwork.h"
#include "wireless/ie/FrequencyPlan.h"

#include <QPainter>
#include <QtTest>

#include <array>
#include <cmath>

using Band = WiFiChannelLayout::Band;
using Placement = WiFiMapLayout::Placement;

namespace {

constexpr double kDegree = 0.0174532925;
const QRectF kMapBounds(0, 0, 490, 390);
const QRectF kChannelBounds(0, 0, 935, 465);

// Records heard at `updated` on these channels: (primary, band, width MHz, centre channel).
NetworkList onAir(const QList<std::array<int, 4>> &channels, const QDateTime &updated)
{
    NetworkList list;
    for (const auto &[primary, band, width, center] : channels) {
        CWNetwork::Data d;
        d.ssidData = QByteArray("Net ") + QByteArray::number(list.count());
        d.bssid = QStringLiteral("02:00:00:00:00:%1").arg(list.count(), 2, 16, QLatin1Char('0'));
        d.rssiValue = -40 - 5 * list.count();
        d.operatingChannel = {
            primary, band, width, {FrequencyPlan::frequencyForChannel(center, band), 0}};
        d.wlanChannel = CWChannel(primary, band, kCWChannelWidth20MHz);
        list.append(NetworkObject::objectWithCWNetwork(CWNetwork::create(d), updated));
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
    void init() { m_delegate = FakePlotDelegate(); }
    void cleanup() { m_map.reset(); }

    // Rings 40 apart from 30 inside the bounds; ring by signal (the associated network moves
    // in one ring); the first network at ten degrees on ring 1, on the ellipse of the bounds.
    void rings()
    {
        QCOMPARE(WiFiMapLayout::ringRadius(kMapBounds, 5), 230.0);
        const auto rects = WiFiMapLayout::ringRects(kMapBounds);
        QCOMPARE(std::make_pair(rects[0], rects[1]),
                 std::make_pair(QRectF(30, 30, 430, 330), QRectF(70, 60, 350, 270)));
        const std::pair<int, int> angles[] = {{1, 10}, {36, 0}, {37, 10}};
        for (const auto &[count, degrees] : angles) {
            QCOMPARE(WiFiMapLayout::startAngle(count), degrees * kDegree);
            QCOMPARE(WiFiMapLayout::angleStep(count), 6.283185307 / count);
        }
        const std::tuple<double, bool, int> rows[] = {
            {0.6, false, 1}, {0.56, false, 2}, {0.56, true, 1},  {0.3, false, 3},
            {0.25, true, 3}, {0.2, false, 4},  {0.19, false, 5}, {-0.2, false, 5}};
        for (const auto &[signal, own, ring] : rows) {
            m_delegate = FakePlotDelegate();
            // Levels are single-precision fractions in the record.
            m_delegate.add("aa", "Net", double(float(signal)));
            m_delegate.backend->currentBssid = QString::fromLatin1(own ? "aa" : "cc");
            const Placement p = map(QSize(490, 390), false).layout().first();
            QCOMPARE(std::make_pair(p.ring, p.current), std::make_pair(ring, own));
            if (ring == 1 && !own) {
                const double a = 10 * kDegree;
                QCOMPARE(p.point,
                         QPointF(245 + 70 * std::cos(a), 195 + 70 * std::sin(a) * 390 / 490));
                QCOMPARE(p.imageRect, QRectF(p.point, m_map->wifiImage(1).size()));
            }
        }
    }

    void weakNetworksAreCapped()
    {
        // Only the first 20 weak networks are drawn.
        for (int i = 0; i < 25; ++i)
            m_delegate.add(QStringLiteral("n%1").arg(i), "Weak", 0.1);
        m_delegate.add("strong", "Strong", 0.9);
        const WiFiMapView::Locations drawn = map(QSize(800, 600)).networkLocations();
        QCOMPARE(drawn.size(), 21);
        QVERIFY(drawn.contains("n19") && !drawn.contains("n20"));
    }

    void locationsAreTextAndNeverForgotten()
    {
        const NetworkObjectRef moving = m_delegate.add("aa", "Moving", 0.9);
        WiFiMapView &view = map();
        const QRectF imageRect = view.layout().first().imageRect;
        // 20 weak networks fill ring 5 ahead of it; once it turns weak it is drawn no more,
        // but it still answers at its last place, even when nothing looked it up in between.
        m_delegate.list = NetworkList();
        for (int i = 0; i < 20; ++i)
            m_delegate.list.append(makeNetwork(QStringLiteral("w%1").arg(i), "W", 0.05, i));
        m_delegate.list.append(moving);
        moving->setSignals({0.05f});
        paint(view);
        const QString imageText =
            view.networkLocations().value("aa").value(WiFiMapView::kImageRectKey);
        QCOMPARE(WiFiMapView::rectFromString(imageText), imageRect);
        QCOMPARE(view.networkAtPoint(imageRect.center()), moving);
        QCOMPARE(view.networkAtPoint(QPointF(2, 2)), nullptr); // far from everything: nothing
        // Control characters of hostile names show as replacement characters.
        QCOMPARE(WiFiView::displayText("a\tb\nc"), QString::fromUtf8("a\uFFFDb\uFFFDc"));
    }

    void channelFrameAndTicks()
    {
        const QRectF &b = kChannelBounds;
        QCOMPARE(WiFiChannelLayout::plotRect(b), QRectF(50, 50, 870, 400));
        QCOMPARE(WiFiChannelLayout::slotWidth(b, Band::GHz5), 870 / 28.4);
        // Level labels 10% ... 90% at h k + h / 2 + 45 with h = 80; grid every 10%.
        QCOMPARE(WiFiChannelLayout::levelLabelOrigin(b, 4), QPointF(25, 405));
        QCOMPARE(WiFiChannelLayout::gridLineY(b, 9), 410.0);
        QCOMPARE(WiFiChannelLayout::tickX(b, Band::GHz2_4, 12), 755.0);

        const QRectF wide(0, 0, 1000, 465);
        const double s = WiFiChannelLayout::slotWidth(wide, Band::GHz5);
        // One slot of gap before each of the three groups.
        QList<double> ticks;
        QList<qint64> numbers;
        for (int i = 0; i < WiFiChannelLayout::channelCount(Band::GHz5); ++i) {
            ticks.append(WiFiChannelLayout::tickX(wide, Band::GHz5, i));
            numbers.append(WiFiChannelLayout::channelNumber(Band::GHz5, i));
        }
        QCOMPARE(QList<double>({ticks[0], ticks[7], ticks[8], ticks[19]}),
                 QList<double>({s + 50, s + 50 + 7 * s, 2 * s + 50 + 8 * s, 3 * s + 50 + 19 * s}));
        QCOMPARE(numbers,
                 (QList<qint64>{36,  40,  44,  48,  52,  56,  60,  64,  100, 104, 108, 112,
                                116, 120, 124, 128, 132, 136, 140, 149, 153, 157, 161, 165}));
        const std::pair<qint64, qint64> rows[] = {
            {64, 7},   {96, 7}, {100, 8},
            {149, 19}, {6, -7}, {std::numeric_limits<qint64>::min(), -250009}};
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

    void occupancyChartsFollowTheBandsHeard()
    {
        ChannelOccupancyView view;
        view.setDelegate(&m_delegate);
        view.resize(1200, 700);
        view.relayout();
        QCOMPARE(view.charts().size(), 2); // nothing heard: 2.4 and 5 GHz, empty
        QVERIFY(view.charts().at(0).shapes.isEmpty());

        m_delegate.list = onAir({{6, kCWChannelBand2GHz, 20, 6},
                                 {6, kCWChannelBand2GHz, 20, 6},
                                 {36, kCWChannelBand5GHz, 80, 42},
                                 {37, kCWChannelBand6GHz, 20, 37}},
                                m_now);
        // A record heard two minutes before the newest scan no longer counts.
        m_delegate.list.append(onAir({{1, kCWChannelBand2GHz, 20, 1}}, m_now.addSecs(-120)).at(0));
        view.relayout();
        QCOMPARE(view.charts().size(), 3);
        QCOMPARE(view.entries().size(), 4);
        QCOMPARE(view.charts().at(0).shapes.size(), 2);
        QCOMPARE(view.charts().at(0).recommendation, "Best 2.4 GHz channel: 1");
        // The last shape is drawn in front: a point just above its feet, in its middle, is its.
        const auto &front = view.charts().at(0).shapes.last();
        const QPolygonF &p = front.polygons.first();
        view.hover(QPointF((p[0].x() + p[3].x()) / 2, p[0].y() - 1));
        QCOMPARE(view.highlightedBssid(), view.entries().at(front.entry).network->bssid());
        view.hover(QPointF(2, 2)); // over the title: nothing
        QVERIFY(view.highlightedBssid().isEmpty());
    }
};

QTEST_MAIN(TestPlotViews)
#include "tst_plotviews.moc"

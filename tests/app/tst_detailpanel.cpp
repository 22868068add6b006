// SPDX-License-Identifier: GPL-3.0-or-later
// The hover detail panel: its states, timers and contents, driven by synthetic mouse moves.
#include "support/AppHarness.h"

#include "app/SegmentedControl.h"
#include "plot/WiFiMapView.h"

#include <QCursor>
#include <QLabel>
#include <QMainWindow>
#include <QMouseEvent>
#include <QTableView>
#include <QTimer>
#include <QtTest>

namespace {
constexpr int kShowMs = 40;
constexpr int kHideMs = 400;

struct PanelFixture
{
    AppHarness h;
    QTableView *table = nullptr;

    PanelFixture()
    {
        QList<CWNetworkRef> scan;
        for (int i = 0; i < 4; ++i)
            scan << FakeBackend::network(QStringLiteral("00:00:00:00:00:0%1").arg(i),
                                         QStringLiteral("Net %1").arg(i), -50 - 5 * i);
        h.backend->scans = {scan};
        h.app().setDetailPanelDelays(kShowMs, kHideMs);
        h.app().window()->resize(1000, 700);
        h.app().window()->show();
        h.app().applicationDidFinishLaunching();
        table = h.find<QTableView>("scanResultsTable");
        selectSegment(5);
    }
    void selectSegment(int segment)
    {
        auto *segments = h.find<SegmentedControl>("segmentedControl");
        segments->setSelectedSegment(segment);
        h.app().changeTabView(segments);
    }
    QPointF rowPoint(int row) const
    {
        const int y = table->rowViewportPosition(row) + table->rowHeight(row) / 2;
        return QPointF(table->viewport()->mapToGlobal(QPoint(30, y)));
    }
    // A move as the window system delivers it, through the application's event filter.
    void moveOnTable(const QPointF &global)
    {
        QCursor::setPos(global.toPoint());
        // Moving the cursor queues the platform's own move event; let it pass first.
        QCoreApplication::processEvents();
        QWidget *viewport = table->viewport();
        const QPointF local = viewport->mapFromGlobal(global);
        QMouseEvent move(QEvent::MouseMove, local, global, Qt::NoButton, Qt::NoButton,
                         Qt::NoModifier);
        move.setTimestamp(++stamp);
        QApplication::sendEvent(viewport, &move);
    }
    void moveToRow(int row) { moveOnTable(rowPoint(row)); }
    bool panelVisible() const { return h.app().detailPanel()->isVisible(); }
    bool showPending() const
    {
        return h.app().showDetailTimer() && h.app().showDetailTimer()->isActive();
    }
    QString field(const char *name) const
    {
        return h.app().detailPanel()->findChild<QLabel *>(QLatin1String(name))->text();
    }
    quint64 stamp = 1000;
};
} // namespace

class TestDetailPanel : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void firstHoverOnRowZeroLoadsNothing();
    void hoverShowsThePanelAfterTheDelay();
    void anotherRowHidesAtOnceAndReArms();
    void emptyTableSpaceHidesAndArmsNothing();
    void movingOntoThePanelHidesIt();
    void leavingTheWindowHidesIt();
    void otherTabsChangeNothing();
    void hideTimerEndsIt();
    void placementStaysOnTheScreen();
    void mapIconsShowThePanelAndAnEmptyBssidReArms();
    void signalSwatchIsGreen();
    void dragIsNoHover();
    void firedTimersAreReleased();
};

void TestDetailPanel::firstHoverOnRowZeroLoadsNothing()
{
    PanelFixture f;
    QCOMPARE(f.h.app().lastMoveOnRow(), quint64(0));
    f.moveToRow(0);
    QVERIFY(f.showPending());
    QVERIFY(f.h.app().detailNetworkBssid().isEmpty());
    QTRY_VERIFY(f.panelVisible());
    QCOMPARE(f.field("bssidField"), QString());
    // The cycle refreshes nothing either: no network was chosen.
    f.h.app().performUpdateCycle();
    QCOMPARE(f.field("bssidField"), QString());
}

void TestDetailPanel::hoverShowsThePanelAfterTheDelay()
{
    PanelFixture f;
    f.moveToRow(2);
    QVERIFY(!f.panelVisible());
    QVERIFY(f.showPending());
    QCOMPARE(f.h.app().lastMoveOnRow(), quint64(2));
    QCOMPARE(f.h.app().detailNetworkBssid(), QStringLiteral("00:00:00:00:00:02"));
    QTRY_VERIFY(f.panelVisible());
    QCOMPARE(f.h.app().detailPanel()->windowTitle(), QStringLiteral("Detail ( SSID: Net 2 )"));
    QCOMPARE(f.field("detailTitleLabel"), QStringLiteral("Detail ( SSID: Net 2 )"));
    QCOMPARE(f.field("bssidField"), QStringLiteral("00:00:00:00:00:02"));
    QCOMPARE(f.field("channelField"), QStringLiteral("6"));
    QCOMPARE(f.field("bandField"), QStringLiteral("2.4GHz"));
    QCOMPARE(f.field("signalField"), QStringLiteral("43%"));
    QCOMPARE(f.field("noiseAvgField"), QStringLiteral("15%"));
    QCOMPARE(f.field("snrField"), QStringLiteral("40dB"));
    // The panel sits 17 points below the pointer, its left edge at the pointer.
    const QPoint cursor = QCursor::pos();
    const QPoint origin = f.h.app().detailPanel()->pos();
    QCOMPARE(origin.x(), cursor.x());
    QCOMPARE(origin.y(), cursor.y() + 17);
}

void TestDetailPanel::anotherRowHidesAtOnceAndReArms()
{
    PanelFixture f;
    f.moveToRow(1);
    QTRY_VERIFY(f.panelVisible());
    // The same row: stays, only the hide timer restarts.
    f.moveToRow(1);
    QVERIFY(f.panelVisible());
    QVERIFY(!f.showPending());
    f.moveToRow(3);
    QVERIFY(!f.panelVisible());
    QVERIFY(f.showPending());
    QCOMPARE(f.h.app().detailNetworkBssid(), QStringLiteral("00:00:00:00:00:03"));
    QTRY_VERIFY(f.panelVisible());
    QCOMPARE(f.field("bssidField"), QStringLiteral("00:00:00:00:00:03"));
}

void TestDetailPanel::emptyTableSpaceHidesAndArmsNothing()
{
    PanelFixture f;
    f.moveToRow(1);
    QTRY_VERIFY(f.panelVisible());
    const QPointer<QTimer> hide = f.h.app().hideDetailTimer();
    // Below the last row.
    const QPoint below = f.table->viewport()->mapToGlobal(
        QPoint(30, f.table->rowViewportPosition(3) + 3 * f.table->rowHeight(3)));
    f.moveOnTable(below);
    QVERIFY(!f.panelVisible());
    QVERIFY(!f.showPending());
    QCOMPARE(f.h.app().hideDetailTimer(), hide.data()); // not re-armed
    QCOMPARE(f.h.app().lastMoveOnRow(), quint64(1));
}

void TestDetailPanel::movingOntoThePanelHidesIt()
{
    PanelFixture f;
    f.moveToRow(1);
    QTRY_VERIFY(f.panelVisible());
    QWidget *panel = f.h.app().detailPanel();
    auto *label = panel->findChild<QLabel *>(QStringLiteral("bssidField"));
    const QPointF global = label->mapToGlobal(QPointF(2, 2));
    QMouseEvent move(QEvent::MouseMove, QPointF(2, 2), global, Qt::NoButton, Qt::NoButton,
                     Qt::NoModifier);
    move.setTimestamp(5000);
    QApplication::sendEvent(label, &move);
    QVERIFY(!f.panelVisible());
    QCOMPARE(f.h.app().lastMoveOnRow(), AppDelegate::kNoRow);
    // Back on the same row counts as new: the network is loaded again.
    f.moveToRow(1);
    QVERIFY(f.showPending());
}

void TestDetailPanel::leavingTheWindowHidesIt()
{
    PanelFixture f;
    f.moveToRow(2);
    QVERIFY(f.showPending());
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(f.h.app().window(), &leave);
    QVERIFY(!f.showPending());
    QVERIFY(!f.panelVisible());
    QCOMPARE(f.h.app().lastMoveOnRow(), AppDelegate::kNoRow);
    QTest::qWait(2 * kShowMs);
    QVERIFY(!f.panelVisible());
}

void TestDetailPanel::otherTabsChangeNothing()
{
    PanelFixture f;
    f.moveToRow(2);
    QTRY_VERIFY(f.panelVisible());
    f.selectSegment(0);
    f.h.app().mouseMoved(f.h.app().window(), QPointF(QCursor::pos()));
    QVERIFY(f.panelVisible());
    QVERIFY(!f.showPending());
    QCOMPARE(f.h.app().detailNetworkBssid(), QStringLiteral("00:00:00:00:00:02"));
}

void TestDetailPanel::hideTimerEndsIt()
{
    PanelFixture f;
    f.moveToRow(1);
    QTRY_VERIFY(f.panelVisible());
    QTRY_VERIFY_WITH_TIMEOUT(!f.panelVisible(), 5 * kHideMs);
    // A hide timer firing on a hidden panel does no harm.
    f.h.app().hideDetailPanel();
    QVERIFY(!f.panelVisible());
}

void TestDetailPanel::placementStaysOnTheScreen()
{
    PanelFixture f;
    const QSize screen = f.h.app().window()->screen()->geometry().size();
    const QSize panel = f.h.app().detailPanel()->frameGeometry().size();
    // The pointer position comes from the last move over the main window.
    QWidget *window = f.h.app().window();
    f.h.app().mouseMoved(window, QPointF(screen.width() - 5, screen.height() - 5));
    f.h.app().calcDetailPanelLocation();
    QCOMPARE(f.h.app().detailPanelLocation(),
             QPointF(screen.width() - panel.width(), screen.height() - panel.height()));
    f.h.app().mouseMoved(window, QPointF(-40, 10));
    f.h.app().calcDetailPanelLocation();
    QCOMPARE(f.h.app().detailPanelLocation(), QPointF(0, 27));
}

void TestDetailPanel::signalSwatchIsGreen()
{
    PanelFixture f;
    QWidget *swatch =
        f.h.app().detailPanel()->findChild<QWidget *>(QStringLiteral("signalRightView"));
    QVERIFY(swatch);
    const QImage image = swatch->grab().toImage();
    QCOMPARE(image.pixelColor(image.width() / 2, image.height() / 2), QColor(0, 255, 0));
}

void TestDetailPanel::mapIconsShowThePanelAndAnEmptyBssidReArms()
{
    AppHarness h;
    h.backend->scans = {
        {FakeBackend::network(QStringLiteral("00:00:00:00:00:0a"), QStringLiteral("Strong"), -30),
         FakeBackend::network(QString(), QStringLiteral("No address"), -90)}};
    h.app().setDetailPanelDelays(kShowMs, kHideMs);
    h.app().window()->resize(1000, 700);
    h.app().window()->show();
    h.app().applicationDidFinishLaunching();
    auto *segments = h.find<SegmentedControl>("segmentedControl");
    segments->setSelectedSegment(1);
    h.app().changeTabView(segments);
    auto *map = h.find<WiFiMapView>("wiFiMapView");
    map->grab(); // draws, and so places, every network
    auto iconCentre = [map](const QString &bssid) {
        const QRectF r = WiFiMapView::rectFromString(
            map->networkLocations().value(bssid).value(WiFiMapView::kImageRectKey));
        // Stored y-up; the widget's y grows downwards.
        return map->mapToGlobal(QPointF(r.center().x(), map->height() - r.center().y()));
    };
    auto moveTo = [&h](const QPointF &global) {
        QCursor::setPos(global.toPoint());
        h.app().mouseMoved(h.app().window(), global);
    };
    QVERIFY(map->networkLocations().contains(QStringLiteral("00:00:00:00:00:0a")));
    QVERIFY(map->networkLocations().contains(QString()));

    moveTo(iconCentre(QStringLiteral("00:00:00:00:00:0a")));
    QCOMPARE(h.app().detailNetworkBssid(), QStringLiteral("00:00:00:00:00:0a"));
    QTRY_VERIFY(h.app().detailPanel()->isVisible());
    moveTo(iconCentre(QStringLiteral("00:00:00:00:00:0a")));
    QVERIFY(h.app().detailPanel()->isVisible()); // the same network: it stays

    // A network whose BSSID is empty counts as new on every move.
    moveTo(iconCentre(QString()));
    QVERIFY(!h.app().detailPanel()->isVisible());
    QTRY_VERIFY(h.app().detailPanel()->isVisible());
    const QPointer<QTimer> hideBefore = h.app().hideDetailTimer();
    moveTo(iconCentre(QString()));
    QVERIFY(!h.app().detailPanel()->isVisible());
    QVERIFY(h.app().showDetailTimer() && h.app().showDetailTimer()->isActive());
    QVERIFY(h.app().hideDetailTimer() != hideBefore.data());

    // Empty map space hides the panel and arms nothing.
    QTRY_VERIFY(h.app().detailPanel()->isVisible());
    moveTo(map->mapToGlobal(QPointF(3, 3)));
    QVERIFY(!h.app().detailPanel()->isVisible());
    QVERIFY(!(h.app().showDetailTimer() && h.app().showDetailTimer()->isActive()));
}

void TestDetailPanel::dragIsNoHover()
{
    PanelFixture f;
    // Dragging over the rows (selecting them) neither loads a network nor arms a timer. The
    // move comes alone: moving the platform's cursor would add a hover of its own.
    QWidget *viewport = f.table->viewport();
    const QPointF global = f.rowPoint(2);
    QMouseEvent drag(QEvent::MouseMove, viewport->mapFromGlobal(global), global, Qt::NoButton,
                     Qt::LeftButton, Qt::NoModifier);
    drag.setTimestamp(++f.stamp);
    QApplication::sendEvent(viewport, &drag);
    QVERIFY(!f.showPending());
    QCOMPARE(f.h.app().lastMoveOnRow(), quint64(0));
    QVERIFY(f.h.app().detailNetworkBssid().isEmpty());
    QVERIFY(!f.h.app().hideDetailTimer());
    // Released, the same move is a hover.
    f.moveToRow(2);
    QVERIFY(f.showPending());
    QCOMPARE(f.h.app().lastMoveOnRow(), quint64(2));
}

void TestDetailPanel::firedTimersAreReleased()
{
    PanelFixture f;
    auto timers = [&f] { return f.h.app().findChildren<QTimer *>().size(); };
    const qsizetype before = timers();
    for (int round = 0; round < 3; ++round) {
        f.moveToRow(1 + round % 2);
        QTRY_VERIFY(f.panelVisible());
        QVERIFY(!f.h.app().showDetailTimer()); // fired and gone
        QTRY_VERIFY_WITH_TIMEOUT(!f.panelVisible(), 5 * kHideMs);
        QVERIFY(!f.h.app().hideDetailTimer());
    }
    // deleteLater() needs the event loop to come round once more.
    QTRY_COMPARE(timers(), before);
}

QTEST_MAIN(TestDetailPanel)
#include "tst_detailpanel.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
// The hover detail panel: its states, timers and contents, driven by synthetic mouse moves.
#include "support/AppHarness.h"

#include "app/SegmentedControl.h"
#include "plot/WiFiMapView.h"

#include <QCursor>
#include <QLabel>
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
    QPoint belowTheRows() const
    {
        return table->viewport()->mapToGlobal(
            QPoint(30, table->rowViewportPosition(3) + 3 * table->rowHeight(3)));
    }
    quint64 stamp = 1000;
};
} // namespace

class TestDetailPanel : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void hoverOverRowsShowsAndSwitchesThePanel()
    {
        PanelFixture f;
        // The first hover on row 0 loads nothing: row 0 counts as the last row already.
        QCOMPARE(f.h.app().lastMoveOnRow(), quint64(0));
        f.moveToRow(0);
        QVERIFY(f.showPending());
        QVERIFY(f.h.app().detailNetworkBssid().isEmpty());
        QTRY_VERIFY(f.panelVisible());
        f.h.app().performUpdateCycle(); // and the cycle refreshes nothing either
        QCOMPARE(f.field("bssidField"), QString());

        // Another row hides the panel at once and shows it again after the delay.
        f.moveToRow(2);
        QVERIFY(!f.panelVisible());
        QVERIFY(f.showPending());
        QCOMPARE(f.h.app().lastMoveOnRow(), quint64(2));
        QCOMPARE(f.h.app().detailNetworkBssid(), "00:00:00:00:00:02");
        QTRY_VERIFY(f.panelVisible());
        QCOMPARE(f.h.app().detailPanel()->windowTitle(), "Detail ( SSID: Net 2 )");
        QCOMPARE(f.field("detailTitleLabel"), "Detail ( SSID: Net 2 )");
        const QStringList fields = {
            f.field("bssidField"),  f.field("channelField"),   f.field("bandField"),
            f.field("signalField"), f.field("noiseAvgField"),  f.field("snrField"),
            f.field("snrAvgField"), f.field("signalMaxField"), f.field("signalQualityField")};
        QCOMPARE(fields, (QStringList{"00:00:00:00:00:02", "6", "2.4GHz", "43%", "15%", "40dB",
                                      "40dB", "43%", "Good"}));
        // The panel sits 17 points below the pointer, its left edge at the pointer.
        QCOMPARE(f.h.app().detailPanel()->pos(), QCursor::pos() + QPoint(0, 17));

        // The same row: it stays, only the hide timer restarts.
        f.moveToRow(2);
        QVERIFY(f.panelVisible());
        QVERIFY(!f.showPending());
        f.moveToRow(3);
        QVERIFY(!f.panelVisible());
        QTRY_VERIFY(f.panelVisible());
        QCOMPARE(f.field("bssidField"), "00:00:00:00:00:03");

        // Empty table space below the rows hides it and arms nothing.
        const QPointer<QTimer> hide = f.h.app().hideDetailTimer();
        f.moveOnTable(f.belowTheRows());
        QVERIFY(!f.panelVisible());
        QVERIFY(!f.showPending());
        QCOMPARE(f.h.app().hideDetailTimer(), hide.data()); // not re-armed
        QCOMPARE(f.h.app().lastMoveOnRow(), quint64(3));
    }
    void panelOrWindowLeftHidesIt()
    {
        PanelFixture f;
        f.moveToRow(1);
        QTRY_VERIFY(f.panelVisible());
        auto *label = f.h.app().detailPanel()->findChild<QLabel *>("bssidField");
        QMouseEvent onPanel(QEvent::MouseMove, QPointF(2, 2), label->mapToGlobal(QPointF(2, 2)),
                            Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        onPanel.setTimestamp(5000);
        QApplication::sendEvent(label, &onPanel);
        QVERIFY(!f.panelVisible());
        QCOMPARE(f.h.app().lastMoveOnRow(), AppDelegate::kNoRow);
        // Back on the same row counts as new: the network is loaded again.
        f.moveToRow(1);
        QVERIFY(f.showPending());

        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(f.h.app().window(), &leave);
        QVERIFY(!f.showPending());
        QCOMPARE(f.h.app().lastMoveOnRow(), AppDelegate::kNoRow);
        QTest::qWait(2 * kShowMs);
        QVERIFY(!f.panelVisible());
    }
    void otherTabsChangeNothing()
    {
        PanelFixture f;
        f.moveToRow(2);
        QTRY_VERIFY(f.panelVisible());
        f.selectSegment(0);
        f.h.app().mouseMoved(f.h.app().window(), QPointF(QCursor::pos()));
        QVERIFY(f.panelVisible());
        QVERIFY(!f.showPending());
        QCOMPARE(f.h.app().detailNetworkBssid(), "00:00:00:00:00:02");
    }
    void placementStaysOnTheScreen()
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
    void mapIconsShowThePanelAndAnEmptyBssidReArms()
    {
        PanelFixture f;
        const QString strong = "00:00:00:00:00:0a";
        f.h.backend->scans = {{FakeBackend::network(strong, "Strong", -30),
                               FakeBackend::network(QString(), "No address", -90)}};
        f.h.app().performUpdateCycle();
        f.selectSegment(1);
        auto *map = f.h.find<WiFiMapView>("wiFiMapView");
        map->grab(); // draws, and so places, every network
        auto moveTo = [&f](const QPointF &global) {
            QCursor::setPos(global.toPoint());
            f.h.app().mouseMoved(f.h.app().window(), global);
        };
        auto moveToIcon = [map, &moveTo](const QString &bssid) {
            const QRectF r = WiFiMapView::rectFromString(
                map->networkLocations().value(bssid).value(WiFiMapView::kImageRectKey));
            // Stored y-up; the widget's y grows downwards.
            moveTo(map->mapToGlobal(QPointF(r.center().x(), map->height() - r.center().y())));
        };
        moveToIcon(strong);
        QCOMPARE(f.h.app().detailNetworkBssid(), strong);
        QTRY_VERIFY(f.panelVisible());
        moveToIcon(strong);
        QVERIFY(f.panelVisible()); // the same network: it stays

        // A network whose BSSID is empty counts as new on every move.
        moveToIcon(QString());
        QVERIFY(!f.panelVisible());
        QTRY_VERIFY(f.panelVisible());
        const QPointer<QTimer> hideBefore = f.h.app().hideDetailTimer();
        moveToIcon(QString());
        QVERIFY(!f.panelVisible());
        QVERIFY(f.showPending());
        QVERIFY(f.h.app().hideDetailTimer() != hideBefore.data());

        // Empty map space hides the panel and arms nothing.
        QTRY_VERIFY(f.panelVisible());
        moveTo(map->mapToGlobal(QPointF(3, 3)));
        QVERIFY(!f.panelVisible());
        QVERIFY(!f.showPending());
    }
    void dragIsNoHover()
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
    }
    // Shown and hidden again by its timers, three times over: the fired one-shot timers are
    // freed, and a hide on a hidden panel does no harm.
    void firedTimersAreReleased()
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
        f.h.app().hideDetailPanel();
        QVERIFY(!f.panelVisible());
        // deleteLater() needs the event loop to come round once more.
        QTRY_COMPARE(timers(), before);
    }
};

QTEST_MAIN(TestDetailPanel)
#include "tst_detailpanel.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
// The hover detail panel: its states, timers and contents, driven by synthetic mouse moves.
#include "support/AppHarness.h"

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
    quint64 stamp = 1000;

    PanelFixture()
    {
        QList<CWNetworkRef> scan;
        for (int i = 0; i < 4; ++i)
            scan << FakeBackend::network(QStringLiteral("00:00:00:00:00:0%1").arg(i),
                                         QStringLiteral("Net %1").arg(i), -50 - 5 * i);
        h.app().setDetailPanelDelays(kShowMs, kHideMs);
        h.app().window()->resize(1000, 700);
        h.app().window()->show();
        h.launchWith(scan);
        table = h.find<QTableView>("scanResultsTable");
        h.showTab(5);
    }
    // A move over the table at `row` (4: the empty space below the rows) as the window system
    // delivers it, through the application's event filter; `buttons` held make it a drag.
    void moveToRow(int row, Qt::MouseButtons buttons = Qt::NoButton)
    {
        const int y = row < 4 ? table->rowViewportPosition(row) + table->rowHeight(row) / 2
                              : table->rowViewportPosition(3) + 3 * table->rowHeight(3);
        const QPointF global(table->viewport()->mapToGlobal(QPoint(30, y)));
        if (!buttons) {
            QCursor::setPos(global.toPoint());
            // Moving the cursor queues the platform's own move event; let it pass first.
            QCoreApplication::processEvents();
        }
        QMouseEvent move(QEvent::MouseMove, table->viewport()->mapFromGlobal(global), global,
                         Qt::NoButton, buttons, Qt::NoModifier);
        move.setTimestamp(++stamp);
        QApplication::sendEvent(table->viewport(), &move);
    }
    bool panelVisible() const { return h.app().detailPanel()->isVisible(); }
    bool showPending() const
    {
        return h.app().showDetailTimer() && h.app().showDetailTimer()->isActive();
    }
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
        f.moveToRow(0);
        QVERIFY(f.showPending());
        QVERIFY(f.h.app().detailNetworkBssid().isEmpty());
        QTRY_VERIFY(f.panelVisible());
        f.h.app().performUpdateCycle(); // and the cycle refreshes nothing either
        QCOMPARE(f.h.fieldTexts("bssid", f.h.app().detailPanel()), QStringList{QString()});

        // Another row hides the panel at once and shows it again after the delay.
        f.moveToRow(2);
        QVERIFY(!f.panelVisible());
        QCOMPARE(f.h.app().lastMoveOnRow(), quint64(2));
        QTRY_VERIFY(f.panelVisible());
        QCOMPARE(f.h.app().detailPanel()->windowTitle(), "Detail ( SSID: Net 2 )");
        QCOMPARE(f.h.fieldTexts("bssid channel band signal noiseAvg snr snrAvg signalMax "
                                "signalQuality",
                                f.h.app().detailPanel()),
                 (QStringList{"00:00:00:00:00:02", "6", "2.4GHz", "43%", "15%", "40dB", "40dB",
                              "43%", "Good"}));
        // The panel sits 17 points below the pointer, its left edge at the pointer.
        QCOMPARE(f.h.app().detailPanel()->pos(), QCursor::pos() + QPoint(0, 17));

        // The same row: it stays, only the hide timer restarts.
        f.moveToRow(2);
        QVERIFY(f.panelVisible() && !f.showPending());

        // Empty table space below the rows hides it and arms nothing.
        const QPointer<QTimer> hide = f.h.app().hideDetailTimer();
        f.moveToRow(4);
        QVERIFY(!f.panelVisible() && !f.showPending());
        QCOMPARE(f.h.app().hideDetailTimer(), hide.data()); // not re-armed
        QCOMPARE(f.h.app().lastMoveOnRow(), quint64(2));
    }
    void mapIconsShowThePanelAndAnEmptyBssidReArms()
    {
        PanelFixture f;
        const QString strong = "00:00:00:00:00:0a";
        f.h.backend->scans = {{FakeBackend::network(strong, "Strong", -30),
                               FakeBackend::network(QString(), "No address", -90)}};
        f.h.app().performUpdateCycle();
        f.h.showTab(1);
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
        // A network whose BSSID is empty counts as new on every move.
        moveToIcon(QString());
        QTRY_VERIFY(f.panelVisible());
        moveToIcon(QString());
        QVERIFY(!f.panelVisible() && f.showPending());
    }
    // Dragging over the rows (selecting them) neither loads a network nor arms a timer. Shown
    // and hidden again by its timers, the fired one-shot timers are freed. A move onto the
    // panel hides it; leaving the window cancels a pending show.
    void dragTimersAndLeaving()
    {
        PanelFixture f;
        const qsizetype timers = f.h.app().findChildren<QTimer *>().size();
        f.moveToRow(2, Qt::LeftButton);
        QVERIFY(!f.showPending() && !f.h.app().hideDetailTimer());
        QVERIFY(f.h.app().detailNetworkBssid().isEmpty());
        f.moveToRow(2);
        QTRY_VERIFY(f.panelVisible());
        QVERIFY(!f.h.app().showDetailTimer()); // fired and gone
        QTRY_VERIFY_WITH_TIMEOUT(!f.panelVisible(), 5 * kHideMs);
        QVERIFY(!f.h.app().hideDetailTimer());
        // deleteLater() needs the event loop to come round once more.
        QTRY_COMPARE(f.h.app().findChildren<QTimer *>().size(), timers);

        f.moveToRow(1);
        QTRY_VERIFY(f.panelVisible());
        auto *label = f.h.app().detailPanel()->findChild<QLabel *>("bssidField");
        QMouseEvent onPanel(QEvent::MouseMove, QPointF(2, 2), label->mapToGlobal(QPointF(2, 2)),
                            Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        onPanel.setTimestamp(5000);
        QApplication::sendEvent(label, &onPanel);
        QVERIFY(!f.panelVisible());
        QCOMPARE(f.h.app().lastMoveOnRow(), AppDelegate::kNoRow);
        f.moveToRow(1); // back on the same row counts as new
        QVERIFY(f.showPending());
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(f.h.app().window(), &leave);
        QVERIFY(!f.showPending());
        QTest::qWait(2 * kShowMs);
        QVERIFY(!f.panelVisible());
    }
};

QTEST_MAIN(TestDetailPanel)
#include "tst_detailpanel.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
// The hover detail panel as a native Wayland client (run by on_weston): hovering a table row
// shows the panel after the delay, at the place computed from the pointer inside the main
// window; the compositor shows it exactly there relative to the main window (checked on
// weston's own screenshot, by the panel's green swatch); moving onto the panel or leaving
// the window hides it. Pointer moves enter Qt through its window-system event path
// (QTest::mouseMove on the window), as the compositor's pointer events do.
#include "app/support/AppHarness.h"
#include "util/GeometryUtil.h"
#include "wireless/simulated/SimulatedBackend.h"

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QMainWindow>
#include <QProcess>
#include <QScreen>
#include <QTableView>
#include <QWindow>
#include <QtTest>

class TestPanelOnCompositor : public QObject
{
    Q_OBJECT

    std::unique_ptr<AppHarness> m_harness; // settings, clock, random source and alerts
    AppDelegate *m_app = nullptr;
    QMainWindow *m_window = nullptr;
    QTableView *m_table = nullptr;

    QPoint rowPointInWindow(int row) const
    {
        const QPoint inViewport(160,
                                m_table->rowViewportPosition(row) + m_table->rowHeight(row) / 2);
        return m_table->viewport()->mapTo(m_window, inViewport);
    }
    // The compositor's screenshot is at times a level off in every channel (seen: pure green
    // as 0, 254, 0), so colours are compared with that much room.
    static bool near(QRgb a, QRgb b)
    {
        return qAbs(qRed(a) - qRed(b)) <= 1 && qAbs(qGreen(a) - qGreen(b)) <= 1 &&
               qAbs(qBlue(a) - qBlue(b)) <= 1;
    }
    void hover(const QPoint &inWindow) { QTest::mouseMove(m_window->windowHandle(), inWindow); }
    QImage compositorScreenshot()
    {
        // weston-screenshooter writes wayland-screenshot-<time>.png into its working folder.
        QTemporaryDir dir;
        QProcess shooter;
        shooter.setWorkingDirectory(dir.path());
        shooter.start(QStringLiteral("weston-screenshooter"), {});
        if (!shooter.waitForFinished(20000) || shooter.exitCode() != 0) {
            qWarning("weston-screenshooter failed: %s", shooter.readAllStandardError().constData());
            return {};
        }
        const QStringList files = QDir(dir.path()).entryList({QStringLiteral("*.png")});
        if (files.isEmpty())
            return {};
        const QImage image(dir.filePath(files.constFirst()));
        const QString keep = qEnvironmentVariable("CORVANE_SCREENSHOT_DIR");
        if (!keep.isEmpty() && QDir().mkpath(keep))
            image.save(keep + QStringLiteral("/wayland-detail-panel.png"));
        return image;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QCOMPARE(QGuiApplication::platformName(), QStringLiteral("wayland"));
        m_harness = std::make_unique<AppHarness>();
        WirelessBackend::setCurrent(SimulatedBackend::createDefault(5));
        m_harness->preferences->setUpdateInterval(1);
        m_app = &m_harness->restart();
        m_app->setDetailPanelDelays(150, 60000);
        m_window = m_app->window();
        // Full screen, so that the compositor puts the main window at the output's top-left
        // corner, where the screenshot can be compared with it.
        m_window->showFullScreen();
        QVERIFY(QTest::qWaitForWindowExposed(m_window));
        m_app->applicationDidFinishLaunching();
        m_harness->runSeconds(10);
        m_harness->showTab(5);
        m_table = m_window->findChild<QTableView *>(QStringLiteral("scanResultsTable"));
        QVERIFY(m_table);
        QTest::qWait(200);
        QVERIFY(m_app->numberOfRowsInTableView() > 4);
    }
    void cleanupTestCase() { m_harness.reset(); }
    void hoverShowsThePanelWhereComputed()
    {
        QWidget *panel = m_app->detailPanel();
        const QPoint pointer = rowPointInWindow(3);
        hover(pointer);
        QVERIFY(!panel->isVisible());
        QVERIFY(m_app->showDetailTimer());
        QTRY_VERIFY(panel->isVisible());
        QVERIFY(QTest::qWaitForWindowExposed(panel));

        // The rule, from the pointer inside the main window and that window's screen.
        const QPointF m = m_window->mapToGlobal(QPointF(pointer));
        const QSizeF s = m_window->screen()->geometry().size();
        const QSizeF p = panel->frameGeometry().size();
        const QPointF expected(GeometryUtil::clampFloat(m.x(), 0, s.width() - p.width()),
                               GeometryUtil::clampFloat(m.y() + 17, 0, s.height() - p.height()));
        QCOMPARE(m_app->detailPanelLocation(), expected);
        QCOMPARE(panel->pos(), expected.toPoint());

        // Where the compositor shows it: the full-screen main window starts at the output's
        // top-left corner (checked on a piece of the table), so the panel's offset from the main
        // window is its place on the screenshot. Find its pure green swatch there.
        QTest::qWait(300);
        const QImage shot = compositorScreenshot();
        QVERIFY(!shot.isNull());
        const QRect header(m_table->mapTo(m_window, QPoint(0, 0)), QSize(300, 20));
        const QImage ours = m_window->grab(header).toImage(), theirs = shot.copy(header);
        for (int y = 0; y < header.height(); ++y) {
            for (int x = 0; x < header.width(); ++x)
                QVERIFY(near(theirs.pixel(x, y), ours.pixel(x, y)));
        }
        QWidget *swatch = panel->findChild<QWidget *>(QStringLiteral("signalRightView"));
        QVERIFY(swatch);
        const QPoint offset = panel->pos() - m_window->mapToGlobal(QPoint(0, 0));
        const QRect want(offset + swatch->mapTo(panel, QPoint(0, 0)), swatch->size());
        QRect found;
        const QRect search = want.adjusted(-60, -60, 60, 60).intersected(shot.rect());
        for (int y = search.top(); y <= search.bottom(); ++y) {
            for (int x = search.left(); x <= search.right(); ++x) {
                if (near(shot.pixel(x, y), qRgb(0, 255, 0)))
                    found |= QRect(x, y, 1, 1);
            }
        }
        QCOMPARE(found, want);
    }
    void movingOntoThePanelOrLeavingHidesIt()
    {
        QWidget *panel = m_app->detailPanel();
        if (!panel->isVisible()) {
            hover(rowPointInWindow(2));
            QTRY_VERIFY(panel->isVisible());
        }
        QVERIFY(QTest::qWaitForWindowExposed(panel));
        QTest::mouseMove(panel->windowHandle(), QPoint(10, 10));
        QTRY_VERIFY(!panel->isVisible());
        QCOMPARE(m_app->lastMoveOnRow(), AppDelegate::kNoRow);
        QVERIFY(!m_app->showDetailTimer());

        // What Qt delivers when the compositor reports that the pointer left the surface: a
        // shown panel hides, a pending show is cancelled.
        hover(rowPointInWindow(4));
        QTRY_VERIFY(panel->isVisible());
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(m_window, &leave);
        QVERIFY(!panel->isVisible());
        hover(rowPointInWindow(2));
        QVERIFY(m_app->showDetailTimer());
        QApplication::sendEvent(m_window, &leave);
        QTest::qWait(400);
        QVERIFY(!panel->isVisible());
    }
};

QTEST_MAIN(TestPanelOnCompositor)
#include "panel_on_compositor.moc"

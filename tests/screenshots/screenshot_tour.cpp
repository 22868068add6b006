// SPDX-License-Identifier: GPL-3.0-or-later
// Shows the main window on a real (virtual) display with the simulated radio, runs a minute
// of one-second cycles on a clock that moves one second per cycle, then saves a PNG of every
// tab at two window sizes, of the hover panel and of the join and ad-hoc sheets.
// Exit code 1 when a picture is blank (one colour) or cannot be written.
#include "app/AppDelegate.h"
#include "app/SegmentedControl.h"
#include "util/StreamAlertPresenter.h"
#include "prefs/PreferenceStore.h"
#include "util/Clock.h"
#include "util/RandomSource.h"
#include "wireless/WirelessBackend.h"
#include "wireless/simulated/SimulatedBackend.h"

#include <QApplication>
#include <QComboBox>
#include <QCursor>
#include <QDir>
#include <QImage>
#include <QScreen>
#include <QSettings>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <cstdio>

namespace {
int failures = 0;

bool isBlank(const QImage &image)
{
    if (image.isNull())
        return true;
    const QRgb first = image.pixel(0, 0);
    for (int y = 0; y < image.height(); y += 3) {
        for (int x = 0; x < image.width(); x += 3) {
            if (image.pixel(x, y) != first)
                return false;
        }
    }
    return true;
}

void save(const QImage &image, const QString &path)
{
    if (isBlank(image)) {
        std::fprintf(stderr, "BLANK: %s\n", qUtf8Printable(path));
        ++failures;
    }
    if (!image.save(path)) {
        std::fprintf(stderr, "cannot write %s\n", qUtf8Printable(path));
        ++failures;
    }
    std::printf("saved %s (%dx%d)\n", qUtf8Printable(path), image.width(), image.height());
}

void settle(int ms = 150)
{
    QTest::qWait(ms);
}

// The row of the first network whose security text is `security` ("" = open).
int rowWithSecurity(AppDelegate &app, const QString &security)
{
    for (qsizetype row = 0; row < app.numberOfRowsInTableView(); ++row) {
        const QVariant s = app.objectValueForTableColumn(QStringLiteral("SECURITY_MODE"), row);
        if (s.isValid() && s.toString() == security)
            return int(row);
    }
    return -1;
}
} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const QString out = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("screenshots");
    QDir().mkpath(out);
    QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());

    ManualClock clock(QDateTime::currentDateTime());
    Clock::setInstance(&clock);
    SeededRandomSource random(11);
    RandomSource::setInstance(&random);
    WirelessBackend::setCurrent(SimulatedBackend::createDefault(5));

    PreferenceStore preferences;
    preferences.setUpdateInterval(1);
    StreamAlertPresenter alerts(true);
    AppDelegate::Options options;
    options.alerts = &alerts;
    options.preferences = &preferences;
    options.runStartupProbe = false;
    options.startTimer = false;
    AppDelegate app(options);
    app.setDetailPanelDelays(100, 60000);
    QMainWindow *window = app.window();
    window->resize(1280, 800);
    window->move(0, 0);
    window->show();
    if (!QTest::qWaitForWindowExposed(window))
        std::fprintf(stderr, "the window was never shown\n");
    app.applicationDidFinishLaunching();
    for (int second = 0; second < 60; ++second) {
        clock.advance(1000);
        app.updateData();
    }
    settle();

    auto *segments = window->findChild<SegmentedControl *>(QStringLiteral("segmentedControl"));
    const char *names[] = {"interface", "map", "signal", "channels-2.4", "channels-5", "scan"};
    for (QSize size : {QSize(1280, 800), QSize(1920, 1080)}) {
        window->resize(size);
        settle(300);
        for (int tab = 0; tab < 6; ++tab) {
            segments->setSelectedSegment(tab);
            app.changeTabView(segments);
            clock.advance(1000);
            app.updateData();
            settle();
            save(window->grab().toImage(), QStringLiteral("%1/%2-%3x%4.png")
                                               .arg(out, QLatin1String(names[tab]))
                                               .arg(size.width())
                                               .arg(size.height()));
        }
    }
    window->resize(1280, 800);
    settle(300);

    // The hover panel over a table row.
    segments->setSelectedSegment(5);
    app.changeTabView(segments);
    auto *table = window->findChild<QTableView *>(QStringLiteral("scanResultsTable"));
    const QPoint rowPoint =
        table->viewport()->mapToGlobal(QPoint(200, table->rowViewportPosition(2) + 8));
    QCursor::setPos(rowPoint);
    app.mouseMoved(window, QPointF(rowPoint));
    QTest::qWait(400);
    if (app.detailPanel()->isVisible()) {
        save(app.detailPanel()->grab().toImage(), out + QStringLiteral("/detail-panel.png"));
        save(window->screen()->grabWindow(0).toImage().copy(0, 0, 1400, 1000),
             out + QStringLiteral("/detail-panel-on-screen.png"));
    } else {
        std::fprintf(stderr, "the detail panel did not show\n");
        ++failures;
    }
    app.hideDetailPanel();

    // The join sheet for an open, a WPA2 and an enterprise network, and the ad-hoc sheet.
    const QList<QPair<QString, QString>> joins = {
        {QString(), QStringLiteral("open")},
        {QStringLiteral("WPA2 Personal"), QStringLiteral("wpa2")},
        {QStringLiteral("WPA2 Enterprise"), QStringLiteral("enterprise")}};
    for (const auto &[security, name] : joins) {
        const int row = rowWithSecurity(app, security);
        if (row < 0) {
            std::fprintf(stderr, "no %s network in the scenario\n", qUtf8Printable(name));
            continue;
        }
        table->selectRow(row);
        app.joinButtonPressed();
        settle(300);
        save(app.joinDialogWindow()->grab().toImage(),
             QStringLiteral("%1/join-%2.png").arg(out, name));
        app.joinCancelButtonPressed();
        settle();
    }
    app.createIBSSButtonPressed();
    settle(300);
    save(app.ibssDialogWindow()->grab().toImage(), out + QStringLiteral("/adhoc.png"));
    app.ibssCancelButtonPressed();

    WirelessBackend::setCurrent(nullptr);
    RandomSource::setInstance(nullptr);
    Clock::setInstance(nullptr);
    std::printf("%d blank or unwritable pictures\n", failures);
    return failures == 0 ? 0 : 1;
}

// SPDX-License-Identifier: GPL-3.0-or-later
// The window and the headless run drive one engine: for the same seeded radio and a clock
// that stands still they must end with the same rows, byte for byte.
#include "app/AppDelegate.h"
#include "app/HeadlessRunner.h"
#include "model/ExportDocument.h"
#include "model/SurveyEngine.h"
#include "prefs/PreferenceStore.h"
#include "util/Clock.h"
#include "util/RandomSource.h"
#include "util/StreamAlertPresenter.h"
#include "wireless/simulated/SimulatedBackend.h"

#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

namespace {
// Both documents after `cycles` working cycles (the launch's included), from the window or
// from the headless runner, each in a fresh world of its own.
QString run(bool window, int cycles, const QString &filter)
{
    QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    ManualClock clock(QDateTime(QDate(2026, 11, 22), QTime(12, 0), Qt::UTC));
    SeededRandomSource random(11);
    Clock::setInstance(&clock);
    RandomSource::setInstance(&random);
    WirelessBackend::setCurrent(SimulatedBackend::createDefault(3));
    auto reset = qScopeGuard([] {
        WirelessBackend::setCurrent(nullptr);
        RandomSource::setInstance(nullptr);
        Clock::setInstance(nullptr);
    });
    PreferenceStore preferences;
    auto documents = [](const SurveyEngine &engine) {
        return ExportDocument::tabSeparated(engine.networks(), engine.filteredNetworks()) +
               ExportDocument::html(engine.networks(), engine.filteredNetworks());
    };
    if (window) {
        StreamAlertPresenter alerts(false);
        AppDelegate::Options options;
        options.alerts = &alerts;
        options.preferences = &preferences;
        options.runStartupProbe = false;
        options.startTimer = false;
        AppDelegate app(options);
        app.engine()->setSearchText(filter);
        app.applicationDidFinishLaunching();
        for (int i = 1; i < cycles; ++i)
            app.performUpdateCycle();
        return documents(*app.engine());
    }
    HeadlessRunner::Options options;
    options.cycles = cycles;
    options.interval = 0;
    options.filter = filter;
    options.progress = false;
    HeadlessRunner runner(options, &preferences);
    QSignalSpy finished(&runner, &HeadlessRunner::finished);
    if (!runner.start() || (finished.isEmpty() && !finished.wait(10000)))
        return "did not finish";
    if (runner.cyclesRun() != cycles)
        return QStringLiteral("ran %1 cycles").arg(runner.cyclesRun());
    return documents(*runner.engine());
}
} // namespace

class TestEnginePaths : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void windowAndHeadlessEndWithTheSameRows()
    {
        const std::pair<int, QString> rows[] = {{1, QString()}, {6, QString()}, {4, "flat"}};
        for (const auto &[cycles, filter] : rows) {
            const QString window = run(true, cycles, filter);
            QVERIFY(window.contains("<tr>"));
            QCOMPARE(run(false, cycles, filter), window);
        }
    }
};

QTEST_MAIN(TestEnginePaths)
#include "tst_enginepaths.moc"

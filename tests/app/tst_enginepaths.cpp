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

class TestEnginePaths : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void windowAndHeadlessEndWithTheSameRows_data();
    void windowAndHeadlessEndWithTheSameRows();

private:
    // Both documents after `cycles` working cycles (the launch's included).
    QString runWindow(int cycles, const QString &filter);
    QString runHeadless(int cycles, const QString &filter);
    void freshWorld();

    QTemporaryDir m_settings;
    ManualClock m_clock{QDateTime(QDate(2026, 11, 22), QTime(12, 0), Qt::UTC)};
    std::unique_ptr<SeededRandomSource> m_random;
    std::unique_ptr<PreferenceStore> m_preferences;
};

void TestEnginePaths::init()
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_settings.path());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settings.path());
    Clock::setInstance(&m_clock);
}

void TestEnginePaths::cleanup()
{
    WirelessBackend::setCurrent(nullptr);
    RandomSource::setInstance(nullptr);
    Clock::setInstance(nullptr);
}

void TestEnginePaths::freshWorld()
{
    m_random = std::make_unique<SeededRandomSource>(11);
    RandomSource::setInstance(m_random.get());
    WirelessBackend::setCurrent(SimulatedBackend::createDefault(3));
    m_preferences = std::make_unique<PreferenceStore>();
}

QString TestEnginePaths::runWindow(int cycles, const QString &filter)
{
    freshWorld();
    StreamAlertPresenter alerts(false);
    AppDelegate::Options options;
    options.alerts = &alerts;
    options.preferences = m_preferences.get();
    options.runStartupProbe = false;
    options.startTimer = false;
    AppDelegate app(options);
    app.engine()->setSearchText(filter);
    app.applicationDidFinishLaunching();
    for (int i = 1; i < cycles; ++i)
        app.performUpdateCycle();
    return ExportDocument::tabSeparated(app.networks(), app.filteredNetworks()) +
           ExportDocument::html(app.networks(), app.filteredNetworks());
}

QString TestEnginePaths::runHeadless(int cycles, const QString &filter)
{
    freshWorld();
    HeadlessRunner::Options options;
    options.cycles = cycles;
    options.interval = 0;
    options.filter = filter;
    options.progress = false;
    HeadlessRunner runner(options, m_preferences.get());
    QSignalSpy finished(&runner, &HeadlessRunner::finished);
    if (!runner.start())
        return QStringLiteral("did not start");
    if (finished.isEmpty() && !finished.wait(10000))
        return QStringLiteral("did not finish");
    if (runner.cyclesRun() != cycles)
        return QStringLiteral("ran %1 cycles").arg(runner.cyclesRun());
    const SurveyEngine &engine = *runner.engine();
    return ExportDocument::tabSeparated(engine.networks(), engine.filteredNetworks()) +
           ExportDocument::html(engine.networks(), engine.filteredNetworks());
}

void TestEnginePaths::windowAndHeadlessEndWithTheSameRows_data()
{
    QTest::addColumn<int>("cycles");
    QTest::addColumn<QString>("filter");
    QTest::newRow("one cycle") << 1 << QString();
    QTest::newRow("six cycles") << 6 << QString();
    QTest::newRow("filtered") << 4 << QStringLiteral("flat");
}

void TestEnginePaths::windowAndHeadlessEndWithTheSameRows()
{
    QFETCH(int, cycles);
    QFETCH(QString, filter);
    const QString window = runWindow(cycles, filter);
    const QString headless = runHeadless(cycles, filter);
    QVERIFY(window.contains(QLatin1String("<tr>")));
    QCOMPARE(headless, window);
}

QTEST_MAIN(TestEnginePaths)
#include "tst_enginepaths.moc"

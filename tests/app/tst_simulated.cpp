// SPDX-License-Identifier: GPL-3.0-or-later
// The sheets end to end against the simulated radio: joining with the right and a wrong
// passphrase, an enterprise network with a stored profile, and a new ad-hoc network.
#include "app/AppDelegate.h"
#include "util/StreamAlertPresenter.h"
#include "prefs/PreferenceStore.h"
#include "util/Clock.h"
#include "util/RandomSource.h"
#include "wireless/simulated/SimulatedBackend.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QSettings>
#include <QTableView>
#include <QTemporaryDir>
#include <QtTest>

namespace {
const QString kUmzug = QStringLiteral("44:d9:e7:0c:91:2b");   // WPA2 Personal, "kartons-kartons"
const QString kKanzlei = QStringLiteral("f0:9f:c2:40:aa:07"); // WPA2 Enterprise, profile "Work"

struct SimFixture
{
    QTemporaryDir settings;
    ManualClock clock{QDateTime(QDate(2026, 11, 22), QTime(12, 0), Qt::UTC)};
    SeededRandomSource random{3};
    std::shared_ptr<SimulatedBackend> radio;
    std::unique_ptr<PreferenceStore> preferences;
    StreamAlertPresenter alerts{false};
    std::unique_ptr<AppDelegate> app;

    SimFixture()
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
        Clock::setInstance(&clock);
        RandomSource::setInstance(&random);
        radio = SimulatedBackend::createDefault(1);
        WirelessBackend::setCurrent(radio);
        preferences = std::make_unique<PreferenceStore>();
        AppDelegate::Options options;
        options.alerts = &alerts;
        options.preferences = preferences.get();
        options.runStartupProbe = false;
        options.startTimer = false;
        app = std::make_unique<AppDelegate>(options);
        app->applicationDidFinishLaunching();
    }
    ~SimFixture()
    {
        app.reset();
        WirelessBackend::setCurrent(nullptr);
        RandomSource::setInstance(nullptr);
        Clock::setInstance(nullptr);
    }
    // Selects the row whose full-list position holds `bssid` (the join command reads the
    // row as a position in the full list) and opens the join sheet.
    bool openJoin(const QString &bssid)
    {
        for (qsizetype i = 0; i < app->networks().size(); ++i) {
            if (app->networks().at(i)->bssid() == bssid) {
                app->window()
                    ->findChild<QTableView *>(QStringLiteral("scanResultsTable"))
                    ->selectRow(int(i));
                app->joinButtonPressed();
                return app->joinDialogWindow()->isVisible();
            }
        }
        return false;
    }
    QLineEdit *joinEdit(const char *name) const
    {
        return app->joinDialogWindow()->findChild<QLineEdit *>(QLatin1String(name));
    }
    void cycle()
    {
        clock.advance(2000);
        app->performUpdateCycle();
    }
};
} // namespace

class TestSimulated : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void joinWithPassphrase();
    void enterpriseProfileFillsAndLocks();
    void adHocNetworkAppearsInTheNextScan();
};

void TestSimulated::joinWithPassphrase()
{
    SimFixture f;
    QVERIFY(f.openJoin(kUmzug));
    f.joinEdit("joinPassphraseField")->setText(QStringLiteral("wrong guess"));
    f.app->joinOKButtonPressed();
    QCOMPARE(f.alerts.lines().size(), 1);
    QVERIFY(f.alerts.lines().constFirst().contains(QStringLiteral("passphrase")));
    QVERIFY(f.app->joinDialogWindow()->isVisible());
    QCOMPARE(f.joinEdit("joinPassphraseField")->text(), QStringLiteral("wrong guess"));

    f.joinEdit("joinPassphraseField")->setText(QStringLiteral("kartons-kartons"));
    f.app->joinOKButtonPressed();
    QVERIFY(!f.app->joinDialogWindow()->isVisible());
    QCOMPARE(f.app->window()->findChild<QLabel *>(QStringLiteral("bssidField"))->text(), kUmzug);
    f.cycle();
    QCOMPARE(f.app->networks().at(0)->bssid(), kUmzug);
    QCOMPARE(f.app->window()->findChild<QLabel *>(QStringLiteral("ssidField"))->text(),
             QStringLiteral("Umzug 2B"));
}

void TestSimulated::enterpriseProfileFillsAndLocks()
{
    SimFixture f;
    QVERIFY(f.openJoin(kKanzlei));
    auto *profiles = f.app->joinDialogWindow()->findChild<QComboBox *>(
        QStringLiteral("joinUser8021XProfilePopupButton"));
    QCOMPARE(profiles->currentText(), QStringLiteral("Work"));
    QCOMPARE(f.joinEdit("joinUsernameField")->text(), QStringLiteral("j.weber"));
    QVERIFY(!f.joinEdit("joinUsernameField")->isEnabled());
    QVERIFY(!f.joinEdit("joinPassphraseField")->isEnabled());
    f.app->joinOKButtonPressed();
    QVERIFY(f.alerts.lines().isEmpty());
    QVERIFY(!f.app->joinDialogWindow()->isVisible());
    QVERIFY(
        f.radio->lastAssociationParameters().contains(QStringLiteral("ASSOC_KEY_8021X_PROFILE")));
}

void TestSimulated::adHocNetworkAppearsInTheNextScan()
{
    SimFixture f;
    f.app->createIBSSButtonPressed();
    f.app->ibssDialogWindow()
        ->findChild<QLineEdit *>(QStringLiteral("ibssNetworkNameField"))
        ->setText(QStringLiteral("Corvane Test IBSS"));
    f.app->ibssOKButtonPressed();
    QVERIFY(f.alerts.lines().isEmpty());
    QVERIFY(!f.app->ibssDialogWindow()->isVisible());
    f.cycle();
    bool found = false;
    for (qsizetype row = 0; row < f.app->numberOfRowsInTableView(); ++row) {
        if (f.app->objectValueForTableColumn(QStringLiteral("NETWORK_NAME"), row).toString() ==
            QLatin1String("Corvane Test IBSS")) {
            found = true;
            QCOMPARE(
                f.app->objectValueForTableColumn(QStringLiteral("NETWORK_MODE"), row).toString(),
                QStringLiteral("Yes"));
            QCOMPARE(f.app->objectValueForTableColumn(QStringLiteral("CHANNEL"), row).toLongLong(),
                     11);
        }
    }
    QVERIFY(found);
}

QTEST_MAIN(TestSimulated)
#include "tst_simulated.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
// The update cycle: the tick rule, launch, the merge of scans into records, scan alerts.
#include "support/AppHarness.h"

#include "prefs/PreferenceStore.h"

#include <QSettings>
#include <QTableView>
#include <QtTest>

class TestCycle : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void tickRuleFollowsTheInterval_data();
    void tickRuleFollowsTheInterval();
    void poweredOffRadioStillCountsTicks();
    void launchScansAndRunsOneCycle();
    void mergeUpdatesCreatesAndKeepsRecords();
    void storedCommentAppearsOnFirstSight();
    void associatedNetworkHeadsTheList();
    void scanErrorAlertsAndStillReloads();
    void refusedAuthorizationAlertsAndSkipsTheScan();
    void colourIsDrawnInRange();
    void scanActionMergesNothingAndSortsBySsid();
    void pendingAlertOrAuthorizationHoldsTheTicks_data();
    void pendingAlertOrAuthorizationHoldsTheTicks();
};

void TestCycle::tickRuleFollowsTheInterval_data()
{
    QTest::addColumn<int>("interval");
    QTest::addColumn<QList<int>>("workingTicks");
    QTest::newRow("1 s") << 1 << QList<int>{0, 1, 2, 3, 4, 5, 6};
    QTest::newRow("2 s") << 2 << QList<int>{0, 2, 4, 6};
    QTest::newRow("3 s") << 3 << QList<int>{0, 3, 6};
}

void TestCycle::tickRuleFollowsTheInterval()
{
    QFETCH(int, interval);
    QFETCH(QList<int>, workingTicks);
    AppHarness h;
    h.preferences->setUpdateInterval(interval); // positions 1 and 2 store 1 and 2 s
    if (interval == 3)
        QSettings(QStringLiteral("Corvane"), QStringLiteral("Wi-Fi Monitor"))
            .setValue(QStringLiteral("ui"), 3);
    h.app().applicationDidFinishLaunching();
    QCOMPARE(h.app().tickCount(), quint64(0));
    QList<int> worked;
    for (int tick = 0; tick < 7; ++tick) {
        const int before = h.backend->scanCount;
        h.app().updateData();
        if (h.backend->scanCount > before)
            worked << tick;
    }
    QCOMPARE(worked, workingTicks);
    QCOMPARE(h.app().tickCount(), quint64(7));
}

void TestCycle::poweredOffRadioStillCountsTicks()
{
    AppHarness h;
    h.preferences->setUpdateInterval(1);
    h.app().applicationDidFinishLaunching();
    const int scans = h.backend->scanCount;
    h.backend->power = false;
    for (int i = 0; i < 4; ++i)
        h.app().updateData();
    QCOMPARE(h.backend->scanCount, scans);
    QCOMPARE(h.app().tickCount(), quint64(4));
    h.backend->power = true;
    h.app().updateData();
    QCOMPARE(h.backend->scanCount, scans + 1);
}

void TestCycle::launchScansAndRunsOneCycle()
{
    AppHarness h;
    h.backend->scans = {
        {FakeBackend::network(QStringLiteral("00:11:22:33:44:55"), QStringLiteral("Home"))}};
    h.app().applicationDidFinishLaunching();
    // One scan before the plots exist, one in the full cycle; every scan is authorized.
    QCOMPARE(h.backend->scanCount, 2);
    QCOMPARE(h.backend->authorizationCount, 2);
    QVERIFY(h.backend->scanParameters.constFirst().isEmpty());
    QCOMPARE(h.app().networks().size(), 1);
    QCOMPARE(h.app().numberOfRowsInTableView(), 1);
    QCOMPARE(h.app().networks().at(0)->signals().size(), 2);
    QVERIFY(h.app().currentInterface());
    QCOMPARE(h.app().currentInterface()->interfaceName(), QStringLiteral("wlan0"));
}

void TestCycle::mergeUpdatesCreatesAndKeepsRecords()
{
    AppHarness h;
    const QString a = QStringLiteral("00:00:00:00:00:0a");
    const QString b = QStringLiteral("00:00:00:00:00:0b");
    const QString c = QStringLiteral("00:00:00:00:00:0c");
    // A BSSID twice in one scan: created by the first, updated by the second.
    h.backend->scans = {{FakeBackend::network(a, QStringLiteral("Bravo"), -50),
                         FakeBackend::network(a, QStringLiteral("Bravo"), -70),
                         FakeBackend::network(b, QStringLiteral("Alpha"))},
                        {FakeBackend::network(c, QStringLiteral("Charlie"))}};
    h.app().updateNetworks();
    QCOMPARE(h.app().networks().size(), 2);
    const NetworkObjectRef bravo = h.app().networkWithBssid(a);
    QVERIFY(bravo);
    QCOMPARE(bravo->signals().size(), 2);
    QCOMPARE(bravo->lastUpdated(), h.clock.currentDateTime());
    QCOMPARE(h.app().networks().at(0)->bssid(), b); // Alpha before Bravo

    // Both vanish from the next scan and keep their places and values.
    h.clock.advance(2000);
    h.app().updateNetworks();
    QCOMPARE(h.app().networks().size(), 3);
    QCOMPARE(h.app().networks().at(0)->bssid(), b);
    QCOMPARE(h.app().networks().at(1)->bssid(), a);
    QCOMPARE(h.app().networks().at(2)->bssid(), c);
    QCOMPARE(bravo->signals().size(), 2);
    QCOMPARE(h.app().scanResults().size(), 1);
}

void TestCycle::storedCommentAppearsOnFirstSight()
{
    AppHarness h;
    h.preferences->setComment(QStringLiteral("00:00:00:00:00:0a"), QStringLiteral("upstairs"));
    h.backend->scans = {
        {FakeBackend::network(QStringLiteral("00:00:00:00:00:0a"), QStringLiteral("Net"))}};
    h.app().updateNetworks();
    QCOMPARE(h.app().networks().at(0)->comment(),
             std::optional<QString>(QStringLiteral("upstairs")));
}

void TestCycle::associatedNetworkHeadsTheList()
{
    AppHarness h;
    h.backend->currentBssid = QStringLiteral("00:00:00:00:00:0c");
    h.backend->scans = {
        {FakeBackend::network(QStringLiteral("00:00:00:00:00:0a"), QStringLiteral("Alpha")),
         FakeBackend::network(QStringLiteral("00:00:00:00:00:0c"), QStringLiteral("Zulu")),
         FakeBackend::network(QStringLiteral("00:00:00:00:00:0b"), QStringLiteral("Bravo"))}};
    h.app().applicationDidFinishLaunching();
    QStringList order;
    for (const NetworkObjectRef &r : h.app().networks())
        order << *r->name();
    QCOMPARE(order, (QStringList{QStringLiteral("Zulu"), QStringLiteral("Alpha"),
                                 QStringLiteral("Bravo")}));
}

void TestCycle::scanErrorAlertsAndStillReloads()
{
    AppHarness h;
    h.backend->scans = {
        {FakeBackend::network(QStringLiteral("00:00:00:00:00:0a"), QStringLiteral("Alpha"))}};
    h.app().applicationDidFinishLaunching();
    h.alerts.clear();
    h.backend->failScans = true;
    h.app().updateNetworks();
    QCOMPARE(h.alerts.lines(), QStringList{QStringLiteral("Scan Error: The radio is busy")});
    QVERIFY(h.app().scanResults().isEmpty());
    QCOMPARE(h.app().networks().size(), 1);
    // The table was reloaded: a new filter result shows at once.
    QCOMPARE(h.find<QTableView>("scanResultsTable")->model()->rowCount(), 1);
}

void TestCycle::refusedAuthorizationAlertsAndSkipsTheScan()
{
    AppHarness h;
    h.backend->refuseAuthorization = true;
    h.app().updateNetworks();
    QCOMPARE(h.alerts.lines(), QStringList{QStringLiteral("Error: Auth failed")});
    QCOMPARE(h.backend->scanCount, 0);
    // Every cycle asks again, and alerts again.
    h.app().performUpdateCycle();
    QCOMPARE(h.alerts.lines().size(), 2);
}

void TestCycle::colourIsDrawnInRange()
{
    AppHarness h;
    QList<CWNetworkRef> scan;
    for (int i = 0; i < 40; ++i)
        scan << FakeBackend::network(
            QStringLiteral("00:00:00:00:01:%1").arg(i, 2, 16, QLatin1Char('0')),
            QStringLiteral("N%1").arg(i));
    h.backend->scans = {scan};
    h.app().updateNetworks();
    for (const NetworkObjectRef &r : h.app().networks()) {
        const QColor c = r->color().toHsv();
        QVERIFY(c.hsvSaturationF() >= 0.6f - 1e-3f && c.hsvSaturationF() <= 1.0f);
        QVERIFY(c.valueF() >= 0.6f - 1e-3f && c.valueF() <= 1.0f);
        QCOMPARE(c.alphaF(), 1.0f);
    }
    // The same seed gives the same colours.
    const QColor first = h.app().networks().at(0)->color();
    AppHarness again;
    again.backend->scans = {scan};
    again.app().updateNetworks();
    QCOMPARE(again.app().networks().at(0)->color(), first);
}

void TestCycle::scanActionMergesNothingAndSortsBySsid()
{
    AppHarness h;
    h.backend->scans = {
        {FakeBackend::network(QStringLiteral("00:00:00:00:00:01"), QStringLiteral("beta")),
         FakeBackend::network(QStringLiteral("00:00:00:00:00:02"), QStringLiteral("Alpha")),
         FakeBackend::network(QStringLiteral("00:00:00:00:00:03"), QStringLiteral("Gamma"))}};
    h.app().scan();
    QCOMPARE(h.backend->scanParameters.constFirst().value(QStringLiteral("SCAN_MERGE")).toBool(),
             true);
    QVERIFY(h.app().networks().isEmpty());
    QStringList order;
    for (const CWNetworkRef &n : h.app().scanResults())
        order << *n->ssid();
    QCOMPARE(order, (QStringList{QStringLiteral("Alpha"), QStringLiteral("beta"),
                                 QStringLiteral("Gamma")}));
}

QTEST_MAIN(TestCycle)
#include "tst_cycle.moc"

void TestCycle::pendingAlertOrAuthorizationHoldsTheTicks_data()
{
    QTest::addColumn<bool>("failingScans"); // else: a slow authorization
    QTest::newRow("scan error alert left open") << true;
    QTest::newRow("authorization answered late") << false;
}

// Ten seconds of ticks while something modal waits: no scan, no second alert, no count.
// Once it is answered, the tick rule goes on from where it stood.
void TestCycle::pendingAlertOrAuthorizationHoldsTheTicks()
{
    QFETCH(bool, failingScans);
    AppHarness h;
    h.preferences->setUpdateInterval(1);
    h.backend->scans = {
        {FakeBackend::network(QStringLiteral("00:00:00:00:00:0a"), QStringLiteral("Alpha"))}};
    h.app().applicationDidFinishLaunching();
    h.alerts.clear();
    const int scansBefore = h.backend->scanCount;
    const quint64 ticksBefore = h.app().tickCount();
    h.alerts.setKeepOpen(failingScans);
    h.backend->failScans = failingScans;
    h.backend->deferAnswers = !failingScans;

    h.app().updateData(); // this tick starts the cycle that then waits
    for (int second = 0; second < 10; ++second) {
        h.clock.advance(1000);
        h.app().updateData();
    }
    QCOMPARE(h.app().tickCount(), ticksBefore + 1);
    if (failingScans) {
        QCOMPARE(h.backend->scanCount, scansBefore + 1);
        QCOMPARE(h.alerts.lines(), QStringList{QStringLiteral("Scan Error: The radio is busy")});
        QCOMPARE(h.alerts.openAlerts(), 1);
        h.alerts.dismissAll();
    } else {
        QCOMPARE(h.backend->scanCount, scansBefore);
        QCOMPARE(h.backend->deferred.size(), 1);
        h.backend->deferAnswers = false;
        h.backend->answerDeferred();
        QCOMPARE(h.backend->scanCount, scansBefore + 1);
        QVERIFY(h.alerts.lines().isEmpty());
    }
    // The first tick after it works again, and counts.
    h.app().updateData();
    QCOMPARE(h.app().tickCount(), ticksBefore + 2);
    QCOMPARE(h.backend->scanCount, scansBefore + 2);
}

// SPDX-License-Identifier: GPL-3.0-or-later
// The update cycle: the tick rule, launch, the merge of scans into records, scan alerts.
#include "support/AppHarness.h"

#include "prefs/PreferenceStore.h"

#include <QSettings>
#include <QTableView>
#include <QtTest>

namespace {
const QString kA = "00:00:00:00:00:0a";
const QString kB = "00:00:00:00:00:0b";
const QString kC = "00:00:00:00:00:0c";
} // namespace

class TestCycle : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void tickRule_data()
    {
        QTest::addColumn<int>("interval");
        QTest::addColumn<bool>("powered"); // radio off: ticks count, nothing scans
        QTest::addColumn<QList<int>>("workingTicks");
        QTest::newRow("1 s") << 1 << true << QList<int>{0, 1, 2, 3, 4, 5, 6};
        QTest::newRow("2 s") << 2 << true << QList<int>{0, 2, 4, 6};
        QTest::newRow("3 s") << 3 << true << QList<int>{0, 3, 6};
        QTest::newRow("off") << 1 << false << QList<int>{};
    }
    void tickRule()
    {
        QFETCH(int, interval);
        QFETCH(bool, powered);
        QFETCH(QList<int>, workingTicks);
        AppHarness h;
        h.preferences->setUpdateInterval(interval); // positions 1 and 2 store 1 and 2 s
        if (interval == 3)
            QSettings("Corvane", "Wi-Fi Monitor").setValue("ui", 3);
        h.app().applicationDidFinishLaunching();
        QCOMPARE(h.app().tickCount(), quint64(0));
        h.backend->power = powered;
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
    // Launch scans twice (once before the plots exist, once in the full cycle), each authorized;
    // a BSSID twice in one scan is created by the first and updated by the second; records that
    // vanish keep their place and values; a stored comment shows at first sight; the associated
    // network heads the list.
    void launchMergesScansIntoRecords()
    {
        AppHarness h;
        h.preferences->setComment(kC, "upstairs");
        h.backend->currentBssid = kC;
        h.backend->scans = {{FakeBackend::network(kA, "Bravo", -50),
                             FakeBackend::network(kA, "Bravo", -70),
                             FakeBackend::network(kB, "Alpha")},
                            {FakeBackend::network(kC, "Zulu")}};
        h.app().applicationDidFinishLaunching();
        QCOMPARE(h.backend->scanCount, 2);
        QCOMPARE(h.backend->authorizationCount, 2);
        QVERIFY(h.backend->scanParameters.constFirst().isEmpty());
        QCOMPARE(h.app().currentInterface()->interfaceName(), "wlan0");
        QCOMPARE(h.rowNames(), (QStringList{"Zulu", "Alpha", "Bravo"}));
        const NetworkObjectRef bravo = h.app().networkWithBssid(kA);
        QCOMPARE(bravo->signals().size(), 2);
        QCOMPARE(bravo->lastUpdated(), h.clock.currentDateTime());
        QCOMPARE(h.app().networkWithBssid(kC)->comment(), std::optional<QString>("upstairs"));
        QCOMPARE(h.app().scanResults().size(), 1);
    }
    void failuresAlertAndStillReload()
    {
        AppHarness h;
        h.launchWith({FakeBackend::network(kA, "Alpha")});
        h.alerts.clear();
        h.backend->failScans = true;
        h.app().updateNetworks();
        QCOMPARE(h.alerts.lines(), QStringList{"Scan Error: The radio is busy"});
        QVERIFY(h.app().scanResults().isEmpty());
        QCOMPARE(h.app().networks().size(), 1);
        // The table was reloaded: a new filter result shows at once.
        QCOMPARE(h.find<QTableView>("scanResultsTable")->model()->rowCount(), 1);

        // A refused authorization skips the scan; every cycle asks again, and alerts again.
        h.alerts.clear();
        const int scans = h.backend->scanCount;
        h.backend->refuseAuthorization = true;
        h.app().updateNetworks();
        QCOMPARE(h.alerts.lines(), QStringList{"Error: Auth failed"});
        QCOMPARE(h.backend->scanCount, scans);
        h.app().performUpdateCycle();
        QCOMPARE(h.alerts.lines().size(), 2);
    }
    void colourIsDrawnInRange()
    {
        QList<CWNetworkRef> scan;
        for (int i = 0; i < 40; ++i)
            scan << FakeBackend::network(
                QStringLiteral("00:00:00:00:01:%1").arg(i, 2, 16, QLatin1Char('0')),
                QStringLiteral("N%1").arg(i));
        QList<QColor> colours[2];
        for (QList<QColor> &drawn : colours) {
            AppHarness h;
            h.backend->scans = {scan};
            h.app().updateNetworks();
            for (const NetworkObjectRef &r : h.app().networks())
                drawn << r->color().toHsv();
        }
        for (const QColor &c : colours[0]) {
            QVERIFY(c.hsvSaturationF() >= 0.6f - 1e-3f && c.valueF() >= 0.6f - 1e-3f);
            QCOMPARE(c.alphaF(), 1.0f);
        }
        QCOMPARE(colours[1], colours[0]); // the same seed gives the same colours
    }
    void scanActionMergesNothingAndSortsBySsid()
    {
        AppHarness h;
        h.backend->scans = {{FakeBackend::network(kA, "beta"), FakeBackend::network(kB, "Alpha"),
                             FakeBackend::network(kC, "Gamma")}};
        h.app().scan();
        QVERIFY(h.backend->scanParameters.constFirst().value("SCAN_MERGE").toBool());
        QVERIFY(h.app().networks().isEmpty());
        QStringList order;
        for (const CWNetworkRef &n : h.app().scanResults())
            order << *n->ssid();
        QCOMPARE(order, (QStringList{"Alpha", "beta", "Gamma"}));
    }
    // Ten seconds of ticks while something modal waits: no scan, no second alert, no count.
    // Once it is answered, the tick rule goes on from where it stood.
    void pendingAlertOrAuthorizationHoldsTheTicks()
    {
        // A scan error alert left open, or an authorization answered late.
        for (const bool failingScans : {true, false}) {
            AppHarness h;
            h.preferences->setUpdateInterval(1);
            h.launchWith({FakeBackend::network(kA, "Alpha")});
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
                QCOMPARE(h.alerts.lines(), QStringList{"Scan Error: The radio is busy"});
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
    }
};

QTEST_MAIN(TestCycle)
#include "tst_cycle.moc"

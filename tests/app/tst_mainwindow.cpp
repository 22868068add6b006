// SPDX-License-Identifier: GPL-3.0-or-later
// The update cycle (the tick rule, launch, the merge of scans into records, scan alerts), the
// interface tab, power/channel/disconnect, toolbar validation, tabs and the View menu.
#include "support/AppHarness.h"


#include <QAction>
#include <QComboBox>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QtTest>

namespace {
const QString kA = "00:00:00:00:00:0a";
const QString kB = "00:00:00:00:00:0b";
const QString kC = "00:00:00:00:00:0c";

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    // Associated to a listed network, to one not heard (only the interface's own readings),
    // and with the radio off (what it cannot vouch for is cleared, statistics stay). The
    // supported channels' text keeps its odd joins when the platform lists 36 first.
    void interfaceTab()
    {
        AppHarness h;
        h.backend->channels = {36, 1, 6, 11};
        h.backend->currentBssid = kA;
        h.launchWith({FakeBackend::network(kA, "Home", -60, -90, 6)});
        QCOMPARE(
            h.fieldTexts("ssid bssid opMode securityMode phyMode txRate txPower countryCode rssi "
                         "noise snr signalQuality supportedChannels"),
            (QStringList{"Home", kA, "Infrastructure", "WPA2 Personal", "802.11g/n", "144.50 Mbps",
                         "31 mW", "DE", "43%", "15%", "40dB", "Good", "1, 6, 1136, "}));
        QVERIFY(h.find<QPushButton>("disconnectButton")->isEnabled());
        QCOMPARE(h.find<QComboBox>("channelPopup")->currentText(), "6");

        h.backend->power = false;
        h.app().updateInterfaceInfoTab();
        QCOMPARE(h.find<SegmentedControl>("powerStateControl")->selectedSegment(), 1);
        QCOMPARE(h.fieldTexts("ssid bssid txRate txPower rssi noise countryCode supportedChannels "
                              "signalQuality snr"),
                 (QStringList(9) << "40dB")); // statistics keep their last values
        QCOMPARE(h.find<QComboBox>("channelPopup")->count(), 0);

        h.backend->power = true;
        h.backend->currentBssid = "00:00:00:00:00:99";
        h.backend->rssi = -53;
        h.backend->noise = -106;
        h.backend->mode.reset();
        h.backend->state = kCWInterfaceStateAssociating;
        h.app().updateInterfaceInfoTab();
        QCOMPARE(h.fieldTexts("rssi noise ssid opMode"), (QStringList{"50%", "0%", "", ""}));
        QVERIFY(!h.find<QPushButton>("disconnectButton")->isEnabled());
    }
    // The segment and the toolbar items switch the radio; the items that would change nothing
    // are disabled; a refused change alerts and leaves the tab as it was. Refresh scans only
    // on the tab labelled for it.
    void powerChannelDisconnectAndRefresh()
    {
        AppHarness h;
        auto *tabs = h.find<QTabWidget>("tabView");
        tabs->setCurrentIndex(5);
        h.app().refreshPressed();
        tabs->setCurrentIndex(0);
        h.app().refreshPressed();
        QCOMPARE(h.backend->scanCount, 1);
        auto *control = h.find<SegmentedControl>("powerStateControl");
        auto *on = h.find<QAction>("powerOn");
        auto *off = h.find<QAction>("powerOff");
        QVERIFY(!h.app().validateToolbarItem(on) && h.app().validateToolbarItem(off));
        control->setSelectedSegment(1);
        h.app().changePower(control);
        h.app().changePower(on);
        h.app().changePower(h.find<QAction>("actionRefresh")); // anything else switches it off
        QCOMPARE(h.backend->powerRequests, (QList<bool>{false, true, false}));
        QVERIFY(on->isEnabled() && !off->isEnabled());
        QCOMPARE(control->selectedSegment(), 1); // the tab follows the real state
        h.backend->refusePower = true;
        h.app().changePower(on);
        QCOMPARE(h.alerts.lines(), QStringList{"Error: Not permitted: power"});
        QCOMPARE(control->selectedSegment(), 1);

        h.alerts.clear();
        h.backend->power = true;
        h.app().updateInterfaceInfoTab();
        auto *popup = h.find<QComboBox>("channelPopup");
        popup->setCurrentText("11");
        h.app().changeChannel();
        QCOMPARE(h.backend->channelRequests.constLast(), quint64(11));
        popup->addItem("auto");
        popup->setCurrentText("auto");
        h.app().changeChannel();
        QCOMPARE(h.backend->channelRequests.constLast(), quint64(0));
        QCOMPARE(h.alerts.lines(), QStringList{"Error: Channel 0 is not supported"});
        QCOMPARE(popup->currentText(), "11"); // the tab was refreshed

        h.backend->currentBssid = kA;
        h.app().updateInterfaceInfoTab();
        QVERIFY(h.find<QAction>("actionDisconnect")->isEnabled());
        h.app().disconnect();
        QCOMPARE(h.backend->disassociateCount, 1);
        QVERIFY(!h.find<QAction>("actionDisconnect")->isEnabled()); // the menu follows
    }
    void tickRule()
    {
        // interval, radio on (off: ticks count, nothing scans), the ticks that scan
        const std::tuple<int, bool, QList<int>> rows[] = {{1, true, {0, 1, 2, 3, 4, 5, 6}},
                                                          {2, true, {0, 2, 4, 6}},
                                                          {3, true, {0, 3, 6}},
                                                          {1, false, {}}};
        for (const auto &[interval, powered, workingTicks] : rows) {
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
    }
    // Launch scans twice (once before the plots exist, once in the full cycle), each authorized;
    // a BSSID twice in one scan is created by the first and updated by the second; a stored
    // comment shows at first sight; the associated network heads the list. The scan action
    // merges nothing and sorts its results by name.
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
        QCOMPARE(h.rowNames(), (QStringList{"Zulu", "Alpha", "Bravo"}));
        const NetworkObjectRef bravo = h.app().networkWithBssid(kA);
        QCOMPARE(bravo->signals().size(), 2);
        QCOMPARE(bravo->lastUpdated(), h.clock.currentDateTime());
        QCOMPARE(h.app().networkWithBssid(kC)->comment(), std::optional<QString>("upstairs"));

        AppHarness s;
        s.backend->scans = {{FakeBackend::network(kA, "beta"), FakeBackend::network(kB, "Alpha"),
                             FakeBackend::network(kC, "Gamma")}};
        s.app().scan();
        QVERIFY(s.backend->scanParameters.constFirst().value("SCAN_MERGE").toBool());
        QVERIFY(s.app().networks().isEmpty());
        QStringList order;
        for (const CWNetworkRef &n : s.app().scanResults())
            order << *n->ssid();
        QCOMPARE(order, (QStringList{"Alpha", "beta", "Gamma"}));
    }
    // A failed scan or a refused authorization (which skips the scan) alerts, leaves no scan
    // results and still reloads the table; every cycle tries again, and alerts again.
    void failuresAlertAndStillReload()
    {
        for (const bool refused : {false, true}) {
            AppHarness h;
            h.launchWith({FakeBackend::network(kA, "Alpha")});
            h.alerts.clear();
            const int scans = h.backend->scanCount;
            h.backend->failScans = !refused;
            h.backend->refuseAuthorization = refused;
            h.app().performUpdateCycle();
            h.app().performUpdateCycle();
            QCOMPARE(h.alerts.lines(), QStringList(2, refused ? "Error: Auth failed"
                                                              : "Scan Error: The radio is busy"));
            QCOMPARE(h.backend->scanCount, scans + (refused ? 0 : 2));
            QVERIFY(refused || h.app().scanResults().isEmpty());
            QCOMPARE(h.find<QTableView>("scanResultsTable")->model()->rowCount(), 1);
        }
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
            h.runSeconds(11);
            QCOMPARE(h.app().tickCount(), ticksBefore + 1);
            QCOMPARE(h.backend->scanCount, scansBefore + (failingScans ? 1 : 0));
            if (failingScans) {
                QCOMPARE(h.alerts.lines(), QStringList{"Scan Error: The radio is busy"});
                h.alerts.dismissAll();
            } else {
                QCOMPARE(h.backend->deferred.size(), 1);
                h.backend->deferAnswers = false;
                h.backend->answerDeferred();
                QCOMPARE(h.backend->scanCount, scansBefore + 1);
            }
            h.app().updateData(); // the first tick after it works again, and counts
            QCOMPARE(h.app().tickCount(), ticksBefore + 2);
            QCOMPARE(h.backend->scanCount, scansBefore + 2);
        }
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"

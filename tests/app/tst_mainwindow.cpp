// SPDX-License-Identifier: GPL-3.0-or-later
// The update cycle (the tick rule, launch, the merge of scans into records, scan alerts), the
// interface tab, power/channel/disconnect, toolbar validation, tabs and the View menu.
#include "support/AppHarness.h"

#include "app/SegmentedControl.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QtTest>

namespace {
const QString kHome = "00:00:00:00:00:0a";
const QString kA = kHome;
const QString kB = "00:00:00:00:00:0b";
const QString kC = "00:00:00:00:00:0c";

QString text(AppHarness &h, const char *name)
{
    return h.find<QLabel>(name)->text();
}

QStringList texts(AppHarness &h, std::initializer_list<const char *> names)
{
    QStringList result;
    for (const char *name : names)
        result << text(h, name);
    return result;
}

QStringList popupItems(AppHarness &h)
{
    auto *popup = h.find<QComboBox>("channelPopup");
    QStringList items;
    for (int i = 0; i < popup->count(); ++i)
        items << popup->itemText(i);
    return items;
}
} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void associatedToKnownNetwork()
    {
        AppHarness h;
        h.backend->currentBssid = kHome;
        h.backend->scans = {{FakeBackend::network(kHome, "Home", -60, -90, 6)}};
        h.app().applicationDidFinishLaunching();
        QCOMPARE(texts(h, {"ssidField", "bssidField", "opModeField", "securityModeField",
                           "phyModeField", "supportedPHYModesField", "txRateField", "txPowerField",
                           "countryCodeField", "rssiField", "noiseField", "snrField", "snrAvgField",
                           "noiseMinField", "signalQualityField"}),
                 (QStringList{"Home", kHome, "Infrastructure", "WPA2 Personal", "802.11g/n",
                              "802.11g/n", "144.50 Mbps", "31 mW", "DE", "43%", "15%", "40dB",
                              "40dB", "15%", "Good"}));
        QVERIFY(h.find<QPushButton>("disconnectButton")->isEnabled());
        QCOMPARE(h.find<SegmentedControl>("powerStateControl")->selectedSegment(), 0);
        QCOMPARE(h.find<QComboBox>("channelPopup")->currentText(), "6");
        QVERIFY(h.find<QComboBox>("channelPopup")->isEnabled());
    }
    void associatedToUnknownNetworkShowsOnlyOwnReadings()
    {
        AppHarness h;
        h.backend->currentBssid = "00:00:00:00:00:99";
        h.backend->rssi = -53;
        h.backend->noise = -106;
        h.backend->mode.reset();
        h.backend->state = kCWInterfaceStateAssociating;
        h.backend->country.reset();
        h.app().updateInterfaceInfoTab();
        QCOMPARE(texts(h, {"rssiField", "noiseField", "ssidField", "snrField", "opModeField",
                           "countryCodeField"}),
                 (QStringList{"50%", "0%", "", "", "", ""}));
        QVERIFY(!h.find<QPushButton>("disconnectButton")->isEnabled());
    }
    void radioOffClearsWhatItCannotVouchFor()
    {
        AppHarness h;
        h.backend->currentBssid = kHome;
        h.backend->scans = {{FakeBackend::network(kHome, "Home")}};
        h.app().applicationDidFinishLaunching();
        const QString snr = text(h, "snrField");
        QVERIFY(!snr.isEmpty());
        h.backend->power = false;
        h.app().updateInterfaceInfoTab();
        QCOMPARE(h.find<SegmentedControl>("powerStateControl")->selectedSegment(), 1);
        QCOMPARE(texts(h, {"ssidField", "bssidField", "txRateField", "txPowerField", "rssiField",
                           "noiseField", "countryCodeField", "supportedChannelsField",
                           "supportedPHYModesField", "signalQualityField"}),
                 QStringList(10));
        QCOMPARE(h.find<QComboBox>("channelPopup")->count(), 0);
        QVERIFY(!h.find<QComboBox>("channelPopup")->isEnabled());
        QCOMPARE(text(h, "snrField"), snr); // statistics keep their last values
    }
    void supportedChannelsText()
    {
        // Ascending, and in the platform's order.
        const std::pair<QList<qint64>, QString> rows[] = {{{1, 6, 11, 36}, "1, 6, 11, 36"},
                                                          {{36, 1, 6, 11}, "1, 6, 1136, "}};
        for (const auto &[channels, expected] : rows) {
            AppHarness h;
            h.backend->channels = channels;
            h.app().updateInterfaceInfoTab();
            QCOMPARE(text(h, "supportedChannelsField"), expected);
            QCOMPARE(popupItems(h), (QStringList{"1", "6", "11", "36"}));
        }
    }
    // The segment and the toolbar items switch the radio; the items that would change nothing
    // are disabled; a refused change alerts and leaves the tab as it was.
    void powerFromSegmentAndToolbar()
    {
        AppHarness h;
        auto *control = h.find<SegmentedControl>("powerStateControl");
        auto *on = h.find<QAction>("powerOn");
        auto *off = h.find<QAction>("powerOff");
        auto *refresh = h.find<QAction>("actionRefresh");
        QCOMPARE((QList<bool>{h.app().validateToolbarItem(on), h.app().validateToolbarItem(off),
                              h.app().validateToolbarItem(refresh)}),
                 (QList<bool>{false, true, true}));
        control->setSelectedSegment(1);
        h.app().changePower(control);
        control->setSelectedSegment(0);
        h.app().changePower(control);
        h.app().changePower(off);
        QVERIFY(on->isEnabled() && !off->isEnabled() && refresh->isEnabled());
        h.app().changePower(on);
        h.app().changePower(refresh); // anything else switches it off
        QCOMPARE(h.backend->powerRequests, (QList<bool>{false, true, false, true, false}));
        QCOMPARE(control->selectedSegment(), 1); // the tab follows the real state
        QVERIFY(h.alerts.lines().isEmpty());

        h.backend->refusePower = true;
        h.app().changePower(on);
        QCOMPARE(h.alerts.lines(), QStringList{"Error: Not permitted: power"});
        QCOMPARE(control->selectedSegment(), 1);
    }
    void channelChangeParsesTheTitle()
    {
        AppHarness h;
        h.app().updateInterfaceInfoTab();
        auto *popup = h.find<QComboBox>("channelPopup");
        popup->setCurrentText("11");
        h.app().changeChannel();
        QCOMPARE(h.backend->channelRequests.constLast(), quint64(11));
        QCOMPARE(popup->currentText(), "11");
        QVERIFY(h.alerts.lines().isEmpty());

        popup->addItem("auto");
        popup->setCurrentText("auto");
        h.app().changeChannel();
        QCOMPARE(h.backend->channelRequests.constLast(), quint64(0));
        QCOMPARE(h.alerts.lines(), QStringList{"Error: Channel 0 is not supported"});
        QCOMPARE(popup->currentText(), "11"); // the tab was refreshed
    }
    void disconnectDropsTheLink()
    {
        AppHarness h;
        h.backend->currentBssid = kHome;
        h.app().updateInterfaceInfoTab();
        QVERIFY(h.find<QAction>("actionDisconnect")->isEnabled());
        h.app().disconnect();
        QCOMPARE(h.backend->disassociateCount, 1);
        // The menu item follows the button.
        QVERIFY(!h.find<QPushButton>("disconnectButton")->isEnabled());
        QVERIFY(!h.find<QAction>("actionDisconnect")->isEnabled());
        h.backend->currentBssid = kHome;
        h.backend->state = kCWInterfaceStateRunning;
        h.app().updateInterfaceInfoTab();
        QVERIFY(h.find<QAction>("actionDisconnect")->isEnabled());
    }
    void tabsSegmentsAndViewMenuStayInStep()
    {
        AppHarness h;
        auto *segments = h.find<SegmentedControl>("segmentedControl");
        auto *tabs = h.find<QTabWidget>("tabView");
        auto *menu = h.find<QMenu>("viewMenu");
        QCOMPARE(segments->segmentCount(), tabs->count());
        auto checkedTags = [menu] {
            QList<int> tags;
            for (QAction *a : menu->actions())
                if (a->isChecked())
                    tags << a->data().toInt();
            return tags;
        };
        QCOMPARE(checkedTags(), QList<int>{5});

        segments->setSelectedSegment(1);
        h.app().changeTabView(segments);
        QCOMPARE(tabs->currentIndex(), 1);
        QCOMPARE(checkedTags(), QList<int>{1});

        // Without a sender only the tab follows.
        segments->setSelectedSegment(2);
        h.app().changeTabView(nullptr);
        QCOMPARE(tabs->currentIndex(), 2);
        QCOMPARE(checkedTags(), QList<int>{1});

        QAction *map = menu->actions().at(1);
        h.app().viewAction(map); // already on: nothing changes
        QCOMPARE(tabs->currentIndex(), 2);

        menu->actions().at(5)->trigger(); // through the menu, as a user would
        QCOMPARE(checkedTags(), QList<int>{5});
        QCOMPARE(segments->selectedSegment(), 5);
        QCOMPARE(tabs->currentIndex(), 5);

        // With no item on, choosing a segment switches on just the new one.
        for (QAction *a : menu->actions())
            a->setChecked(false);
        segments->setSelectedSegment(3);
        h.app().changeTabView(segments);
        QCOMPARE(checkedTags(), QList<int>{3});
    }
    void refreshByTabLabel()
    {
        AppHarness h;
        auto *tabs = h.find<QTabWidget>("tabView");
        tabs->setCurrentIndex(5);
        h.app().refreshPressed();
        QCOMPARE(h.backend->scanCount, 1);
        tabs->setCurrentIndex(0);
        h.app().refreshPressed();
        tabs->setCurrentIndex(1);
        h.app().refreshPressed();
        QCOMPARE(h.backend->scanCount, 1);
        QVERIFY(!h.widget("refreshSpinner")->isVisible());
    }
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

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
// The interface tab, power/channel/disconnect, toolbar validation, tabs and the View menu.
#include "support/AppHarness.h"

#include "app/SegmentedControl.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTabWidget>
#include <QtTest>

namespace {
const QString kHome = "00:00:00:00:00:0a";

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

class TestInterface : public QObject
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
    void supportedChannelsText_data()
    {
        QTest::addColumn<QList<qint64>>("channels");
        QTest::addColumn<QString>("expected");
        QTest::newRow("ascending") << QList<qint64>{1, 6, 11, 36} << QStringLiteral("1, 6, 11, 36");
        QTest::newRow("platform order")
            << QList<qint64>{36, 1, 6, 11} << QStringLiteral("1, 6, 1136, ");
    }
    void supportedChannelsText()
    {
        QFETCH(QList<qint64>, channels);
        QFETCH(QString, expected);
        AppHarness h;
        h.backend->channels = channels;
        h.app().updateInterfaceInfoTab();
        QCOMPARE(text(h, "supportedChannelsField"), expected);
        QCOMPARE(popupItems(h), (QStringList{"1", "6", "11", "36"}));
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
};

QTEST_MAIN(TestInterface)
#include "tst_interface.moc"

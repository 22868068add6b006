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
const QString kHome = QStringLiteral("00:00:00:00:00:0a");

QString text(AppHarness &h, const char *name)
{
    return h.find<QLabel>(name)->text();
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
    void associatedToKnownNetwork();
    void associatedToUnknownNetworkShowsOnlyOwnReadings();
    void radioOffClearsWhatItCannotVouchFor();
    void supportedChannelsText_data();
    void supportedChannelsText();
    void powerFromSegmentAndToolbar();
    void refusedPowerChangeAlerts();
    void channelChangeParsesTheTitle();
    void disconnectDropsTheLink();
    void toolbarValidation();
    void tabsSegmentsAndViewMenuStayInStep();
    void refreshByTabLabel();
};

void TestInterface::associatedToKnownNetwork()
{
    AppHarness h;
    h.backend->currentBssid = kHome;
    h.backend->scans = {{FakeBackend::network(kHome, QStringLiteral("Home"), -60, -90, 6)}};
    h.app().applicationDidFinishLaunching();
    QCOMPARE(text(h, "ssidField"), QStringLiteral("Home"));
    QCOMPARE(text(h, "bssidField"), kHome);
    QCOMPARE(text(h, "opModeField"), QStringLiteral("Infrastructure"));
    QCOMPARE(text(h, "securityModeField"), QStringLiteral("WPA2 Personal"));
    QCOMPARE(text(h, "phyModeField"), QStringLiteral("802.11g/n"));
    QCOMPARE(text(h, "supportedPHYModesField"), QStringLiteral("802.11g/n"));
    QCOMPARE(text(h, "txRateField"), QStringLiteral("144.50 Mbps"));
    QCOMPARE(text(h, "txPowerField"), QStringLiteral("31 mW"));
    QCOMPARE(text(h, "countryCodeField"), QStringLiteral("DE"));
    QCOMPARE(text(h, "rssiField"), QStringLiteral("43%"));
    QCOMPARE(text(h, "noiseField"), QStringLiteral("15%"));
    QCOMPARE(text(h, "snrField"), QStringLiteral("40dB"));
    QCOMPARE(text(h, "snrAvgField"), QStringLiteral("40dB"));
    QCOMPARE(text(h, "noiseMinField"), QStringLiteral("15%"));
    QCOMPARE(text(h, "signalQualityField"), QStringLiteral("Good"));
    QVERIFY(h.find<QPushButton>("disconnectButton")->isEnabled());
    QCOMPARE(h.find<SegmentedControl>("powerStateControl")->selectedSegment(), 0);
    QCOMPARE(h.find<QComboBox>("channelPopup")->currentText(), QStringLiteral("6"));
    QVERIFY(h.find<QComboBox>("channelPopup")->isEnabled());
}

void TestInterface::associatedToUnknownNetworkShowsOnlyOwnReadings()
{
    AppHarness h;
    h.backend->currentBssid = QStringLiteral("00:00:00:00:00:99");
    h.backend->rssi = -53;
    h.backend->noise = -106;
    h.backend->mode.reset();
    h.backend->state = kCWInterfaceStateAssociating;
    h.backend->country.reset();
    h.app().updateInterfaceInfoTab();
    QCOMPARE(text(h, "rssiField"), QStringLiteral("50%"));
    QCOMPARE(text(h, "noiseField"), QStringLiteral("0%"));
    QCOMPARE(text(h, "ssidField"), QString());
    QCOMPARE(text(h, "snrField"), QString());
    QCOMPARE(text(h, "opModeField"), QString());
    QCOMPARE(text(h, "countryCodeField"), QString());
    QVERIFY(!h.find<QPushButton>("disconnectButton")->isEnabled());
}

void TestInterface::radioOffClearsWhatItCannotVouchFor()
{
    AppHarness h;
    h.backend->currentBssid = kHome;
    h.backend->scans = {{FakeBackend::network(kHome, QStringLiteral("Home"))}};
    h.app().applicationDidFinishLaunching();
    const QString snr = text(h, "snrField");
    QVERIFY(!snr.isEmpty());
    h.backend->power = false;
    h.app().updateInterfaceInfoTab();
    QCOMPARE(h.find<SegmentedControl>("powerStateControl")->selectedSegment(), 1);
    for (const char *cleared :
         {"ssidField", "bssidField", "txRateField", "txPowerField", "rssiField", "noiseField",
          "countryCodeField", "supportedChannelsField", "supportedPHYModesField",
          "signalQualityField"})
        QCOMPARE(text(h, cleared), QString());
    QCOMPARE(h.find<QComboBox>("channelPopup")->count(), 0);
    QVERIFY(!h.find<QComboBox>("channelPopup")->isEnabled());
    QCOMPARE(text(h, "snrField"), snr); // statistics keep their last values
}

void TestInterface::supportedChannelsText_data()
{
    QTest::addColumn<QList<qint64>>("channels");
    QTest::addColumn<QString>("expected");
    QTest::newRow("ascending") << QList<qint64>{1, 6, 11, 36} << QStringLiteral("1, 6, 11, 36");
    QTest::newRow("platform order")
        << QList<qint64>{36, 1, 6, 11} << QStringLiteral("1, 6, 1136, ");
}

void TestInterface::supportedChannelsText()
{
    QFETCH(QList<qint64>, channels);
    QFETCH(QString, expected);
    AppHarness h;
    h.backend->channels = channels;
    h.app().updateInterfaceInfoTab();
    QCOMPARE(text(h, "supportedChannelsField"), expected);
    QCOMPARE(popupItems(h), (QStringList{QStringLiteral("1"), QStringLiteral("6"),
                                         QStringLiteral("11"), QStringLiteral("36")}));
}

void TestInterface::powerFromSegmentAndToolbar()
{
    AppHarness h;
    auto *control = h.find<SegmentedControl>("powerStateControl");
    control->setSelectedSegment(1);
    h.app().changePower(control);
    control->setSelectedSegment(0);
    h.app().changePower(control);
    h.app().changePower(h.find<QAction>("powerOff"));
    h.app().changePower(h.find<QAction>("powerOn"));
    QAction other;
    other.setObjectName(QStringLiteral("actionRefresh"));
    h.app().changePower(&other);
    QCOMPARE(h.backend->powerRequests, (QList<bool>{false, true, false, true, false}));
    // The tab follows the real state.
    QCOMPARE(control->selectedSegment(), 1);
    QVERIFY(h.alerts.lines().isEmpty());
}

void TestInterface::refusedPowerChangeAlerts()
{
    AppHarness h;
    h.backend->refusePower = true;
    h.app().changePower(h.find<QAction>("powerOff"));
    QCOMPARE(h.alerts.lines(), QStringList{QStringLiteral("Error: Not permitted: power")});
    QCOMPARE(h.find<SegmentedControl>("powerStateControl")->selectedSegment(), 0);
}

void TestInterface::channelChangeParsesTheTitle()
{
    AppHarness h;
    h.app().updateInterfaceInfoTab();
    auto *popup = h.find<QComboBox>("channelPopup");
    popup->setCurrentText(QStringLiteral("11"));
    h.app().changeChannel();
    QCOMPARE(h.backend->channelRequests.constLast(), quint64(11));
    QCOMPARE(popup->currentText(), QStringLiteral("11"));
    QVERIFY(h.alerts.lines().isEmpty());

    popup->addItem(QStringLiteral("auto"));
    popup->setCurrentText(QStringLiteral("auto"));
    h.app().changeChannel();
    QCOMPARE(h.backend->channelRequests.constLast(), quint64(0));
    QCOMPARE(h.alerts.lines(), QStringList{QStringLiteral("Error: Channel 0 is not supported")});
    QCOMPARE(popup->currentText(), QStringLiteral("11")); // the tab was refreshed
}

void TestInterface::disconnectDropsTheLink()
{
    AppHarness h;
    h.backend->currentBssid = kHome;
    h.app().updateInterfaceInfoTab();
    QVERIFY(h.find<QPushButton>("disconnectButton")->isEnabled());
    QVERIFY(h.find<QAction>("actionDisconnect")->isEnabled());
    h.app().disconnect();
    QCOMPARE(h.backend->disassociateCount, 1);
    QVERIFY(!h.find<QPushButton>("disconnectButton")->isEnabled());
    // The menu item follows the button.
    QVERIFY(!h.find<QAction>("actionDisconnect")->isEnabled());
    h.backend->currentBssid = kHome;
    h.backend->state = kCWInterfaceStateRunning;
    h.app().updateInterfaceInfoTab();
    QVERIFY(h.find<QAction>("actionDisconnect")->isEnabled());
}

void TestInterface::toolbarValidation()
{
    AppHarness h;
    auto *on = h.find<QAction>("powerOn");
    auto *off = h.find<QAction>("powerOff");
    auto *refresh = h.find<QAction>("actionRefresh");
    QVERIFY(!h.app().validateToolbarItem(on));
    QVERIFY(h.app().validateToolbarItem(off));
    QVERIFY(h.app().validateToolbarItem(refresh));
    h.app().changePower(off);
    QVERIFY(on->isEnabled());
    QVERIFY(!off->isEnabled());
    QVERIFY(refresh->isEnabled());
}

void TestInterface::tabsSegmentsAndViewMenuStayInStep()
{
    AppHarness h;
    auto *segments = h.find<SegmentedControl>("segmentedControl");
    auto *tabs = h.find<QTabWidget>("tabView");
    auto *menu = h.find<QMenu>("viewMenu");
    QCOMPARE(segments->segmentCount(), 7);
    QCOMPARE(tabs->tabText(0), QStringLiteral("Interface Info"));
    QCOMPARE(tabs->tabText(5), QStringLiteral("Scan"));
    QCOMPARE(tabs->tabText(6), QStringLiteral("Channels"));
    QCOMPARE(menu->actions().at(6)->shortcut(), QKeySequence(QStringLiteral("Ctrl+7")));
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

    QAction *scanItem = menu->actions().at(5);
    QCOMPARE(scanItem->shortcut(), QKeySequence(QStringLiteral("Ctrl+6")));
    scanItem->trigger(); // through the menu, as a user would
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

void TestInterface::refreshByTabLabel()
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

QTEST_MAIN(TestInterface)
#include "tst_interface.moc"

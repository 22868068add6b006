// SPDX-License-Identifier: GPL-3.0-or-later
// The join and ad-hoc sheets.
#include "support/AppHarness.h"

#include "app/BusySpinner.h"
#include "wireless/CWKeys.h"

#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QTableView>
#include <QtTest>

namespace {
const QString kOpen = "00:00:00:00:00:01";
const QString kMixed = "00:00:00:00:00:02";
const QString kWpa2 = "00:00:00:00:00:03";
const QString kCorp = "00:00:00:00:00:04";

CW8021XProfileRef makeProfile(const QString &name, const QString &user, const QString &password)
{
    auto p = CW8021XProfile::profile();
    p->setUserDefinedName(name);
    p->setUsername(user);
    p->setPassword(password);
    return p;
}

struct DialogFixture
{
    AppHarness h;
    CW8021XProfileRef corpProfile = makeProfile("Office", "alice", "s3cret");

    DialogFixture()
    {
        h.backend->profiles = {makeProfile("Home lab", "bob", "pw"), corpProfile};
        auto stored = std::make_shared<CWWirelessProfile>();
        stored->setUser8021XProfile(corpProfile);
        // Names sort as listed: A.. D..
        h.backend->scans = {{
            FakeBackend::secured(kOpen, "A open", kCWSecurityNone, kCWSecurityModeOpen),
            FakeBackend::secured(kMixed, "B mixed", kCWSecurityWPAPersonalMixed,
                                 kCWSecurityModeWPA2_PSK),
            FakeBackend::secured(kWpa2, "C wpa2", kCWSecurityWPA2Personal, kCWSecurityModeWPA2_PSK),
            FakeBackend::secured(kCorp, "D corp", kCWSecurityWPA2Enterprise,
                                 kCWSecurityModeWPA2_Enterprise, stored),
        }};
        h.app().applicationDidFinishLaunching();
    }
    QComboBox *combo(const char *name)
    {
        return h.app().joinDialogWindow()->findChild<QComboBox *>(QLatin1String(name));
    }
    QLineEdit *edit(const char *name)
    {
        return h.app().joinDialogWindow()->findChild<QLineEdit *>(QLatin1String(name));
    }
    void openJoinOn(int row)
    {
        h.find<QTableView>("scanResultsTable")->selectRow(row);
        h.app().joinButtonPressed();
    }
};
} // namespace

class TestDialogs : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void securityItemFollowsTheNetwork()
    {
        // Open and WPA/WPA2 Personal select nothing; WPA2 Personal selects itself.
        const std::tuple<int, QString, bool> rows[] = {
            {0, QString(), false}, {1, QString(), false}, {2, "WPA2 Personal", true}};
        for (const auto &[row, selected, passEnabled] : rows) {
            DialogFixture f;
            f.openJoinOn(row);
            QVERIFY(f.h.app().joinDialogWindow()->isVisible());
            QCOMPARE(f.h.app().joinDialogContext(), qint8(1));
            QComboBox *security = f.combo("joinSecurityPopupButton");
            QCOMPARE(security->count(), 7);
            QCOMPARE(security->currentIndex() >= 0 ? security->currentText() : QString(), selected);
            QVERIFY(!security->isEnabled());
            QVERIFY(!f.edit("joinNetworkNameField")->isEnabled());
            QVERIFY(!f.edit("joinUsernameField")->isEnabled());
            QCOMPARE(f.edit("joinPassphraseField")->isEnabled(), passEnabled);
            QVERIFY(!f.combo("joinUser8021XProfilePopupButton")->isEnabled());
            QCOMPARE(f.edit("joinPassphraseField")->echoMode(), QLineEdit::Password);
        }
    }
    // A stored profile fills and locks the fields and is sent as it is; choosing another
    // profile fills from it, "Default" changes nothing and builds a new profile on OK.
    void enterpriseProfiles()
    {
        DialogFixture f;
        f.openJoinOn(3);
        QComboBox *profiles = f.combo("joinUser8021XProfilePopupButton");
        QCOMPARE(profiles->count(), 3);
        QCOMPARE(profiles->itemText(0), "Default");
        QCOMPARE(profiles->currentText(), "Office");
        QCOMPARE(f.edit("joinUsernameField")->text(), "alice");
        QCOMPARE(f.edit("joinPassphraseField")->text(), "s3cret");
        QVERIFY(!f.edit("joinUsernameField")->isEnabled());
        QVERIFY(!f.edit("joinPassphraseField")->isEnabled());
        f.h.app().joinOKButtonPressed();
        const QVariantMap sent = f.h.backend->associationParameters.constFirst();
        QCOMPARE(sent.keys(), QStringList{kCWAssocKey8021XProfile});
        QCOMPARE(sent.value(kCWAssocKey8021XProfile).value<CW8021XProfileRef>(), f.corpProfile);
        QVERIFY(!f.h.app().joinDialogWindow()->isVisible());
        QCOMPARE(f.h.app().joinDialogContext(), qint8(0));
        // Asking for the enterprise rows again moves items instead of doubling them, and
        // selects "Default".
        f.h.app().changeSecurityMode(nullptr);
        QCOMPARE(profiles->count(), 3);
        QCOMPARE(profiles->currentText(), "Default");

        f.openJoinOn(3);
        profiles->setCurrentIndex(1); // "Home lab"
        f.h.app().change8021XProfile();
        QCOMPARE(f.edit("joinUsernameField")->text(), "bob");
        profiles->setCurrentIndex(0); // "Default": no stored profile there, nothing changes
        f.h.app().change8021XProfile();
        QCOMPARE(f.edit("joinUsernameField")->text(), "bob");
        f.h.app().joinOKButtonPressed();
        const auto built = f.h.backend->associationParameters.constLast()
                               .value(kCWAssocKey8021XProfile)
                               .value<CW8021XProfileRef>();
        QVERIFY(built && built != f.corpProfile);
        QCOMPARE(built->userDefinedName(), "D corp");
        QCOMPARE(built->username(), "bob");
    }
    // An empty passphrase sends no parameters; a rejected one alerts and keeps the sheet open
    // with what was typed; the right one joins, and the next cycle puts the network first.
    void passphraseJoin()
    {
        DialogFixture f;
        f.h.backend->requiredPassphrase = "right one";
        f.openJoinOn(2);
        QVERIFY(f.edit("joinPassphraseField")->text().isEmpty());
        f.h.app().joinOKButtonPressed();
        QCOMPARE(f.h.backend->associationParameters, QList<QVariantMap>{QVariantMap()});
        f.h.alerts.clear();
        f.edit("joinPassphraseField")->setText("wrong one");
        f.h.app().joinOKButtonPressed();
        QCOMPARE(f.h.alerts.lines(), QStringList{"Error: The passphrase was rejected"});
        QVERIFY(f.h.app().joinDialogWindow()->isVisible());
        QCOMPARE(f.edit("joinPassphraseField")->text(), "wrong one");
        QVERIFY(!f.h.app().joinDialogWindow()->findChild<QWidget *>("joinSpinner")->isVisible());

        f.edit("joinPassphraseField")->setText("right one");
        f.h.app().joinOKButtonPressed();
        QVERIFY(!f.h.app().joinDialogWindow()->isVisible());
        QCOMPARE(f.h.backend->currentBssid, std::optional<QString>(kWpa2));
        f.h.app().performUpdateCycle();
        QCOMPARE(f.h.app().networks().at(0)->bssid(), kWpa2);
        // Reopening clears what was typed; after the sheet has ended, OK associates no more.
        f.openJoinOn(1);
        QVERIFY(f.edit("joinPassphraseField")->text().isEmpty());
        f.h.app().joinCancelButtonPressed();
        const qsizetype before = f.h.backend->associationParameters.size();
        f.h.app().joinOKButtonPressed();
        QCOMPARE(f.h.backend->associationParameters.size(), before);
    }
    void joinUsesTheFullListPosition()
    {
        DialogFixture f;
        f.h.find<QLineEdit>("searchField")->setText("corp");
        f.h.app().filterNetworks();
        QCOMPARE(f.h.app().numberOfRowsInTableView(), 1);
        // Row 0 shows "D corp", but the sheet opens for record 0 of the full list.
        f.openJoinOn(0);
        QCOMPARE(f.edit("joinNetworkNameField")->text(), "A open");
        f.h.app().joinCancelButtonPressed();
        // No selected row: nothing opens.
        f.h.find<QTableView>("scanResultsTable")->clearSelection();
        f.h.app().joinButtonPressed();
        QVERIFY(!f.h.app().joinDialogWindow()->isVisible());
        QCOMPARE(f.h.app().joinDialogContext(), qint8(0));
    }
    void adHocSheet()
    {
        DialogFixture f;
        QDialog *sheet = f.h.app().ibssDialogWindow();
        auto *name = sheet->findChild<QLineEdit *>("ibssNetworkNameField");
        auto *channel = sheet->findChild<QComboBox *>("ibssChannelPopupButton");
        auto *passphrase = sheet->findChild<QLineEdit *>("ibssPassphraseField");
        f.h.app().createIBSSButtonPressed();
        f.h.app().ibssCancelButtonPressed();
        f.h.app().createIBSSButtonPressed();
        QVERIFY(sheet->isVisible());
        QCOMPARE(channel->count(), 1);
        QCOMPARE(channel->currentText(), "11");
        QVERIFY(!channel->isEnabled());
        QCOMPARE(name->text(), QSysInfo::machineHostName());

        name->clear();
        passphrase->setText("adhocpass");
        f.h.app().ibssOKButtonPressed();
        QVERIFY(!sheet->isVisible());
        QVariantMap expected;
        expected.insert(kCWIBSSKeyChannel, 11);
        expected.insert(kCWIBSSKeyPassphrase, "adhocpass");
        QCOMPARE(f.h.backend->ibssParameters, QList<QVariantMap>{expected});
        // The passphrase is cleared when the sheet opens again.
        f.h.app().createIBSSButtonPressed();
        QVERIFY(passphrase->text().isEmpty());
    }
    // A join that the network answers only after three seconds: the spinner turns, no scan runs
    // in between; then the joined network heads the list.
    void slowJoinHoldsTheTicks()
    {
        DialogFixture f;
        f.h.preferences->setUpdateInterval(1);
        f.h.backend->deferAnswers = true;
        f.openJoinOn(3); // "D corp", last in the list
        auto *spinner = f.h.app().joinDialogWindow()->findChild<BusySpinner *>("joinSpinner");
        QVERIFY(spinner);
        f.h.app().joinOKButtonPressed(); // returns at once: the answer is not in yet
        QVERIFY(spinner->isVisible());
        QVERIFY(spinner->isAnimating());
        QCOMPARE(f.h.backend->deferred.size(), 1);

        const int scans = f.h.backend->scanCount;
        const quint64 ticks = f.h.app().tickCount();
        for (int second = 0; second < 3; ++second) {
            f.h.clock.advance(1000);
            f.h.app().updateData();
        }
        QCOMPARE(f.h.backend->scanCount, scans);
        QCOMPARE(f.h.app().tickCount(), ticks);
        // A second click meanwhile starts no second join.
        f.h.app().joinOKButtonPressed();
        QCOMPARE(f.h.backend->deferred.size(), 1);

        f.h.backend->deferAnswers = false;
        f.h.backend->answerDeferred();
        QVERIFY(!spinner->isVisible());
        QVERIFY(!f.h.app().joinDialogWindow()->isVisible());
        f.h.app().updateData();
        QCOMPARE(f.h.backend->scanCount, scans + 1);
        QCOMPARE(f.h.app().networks().at(0)->bssid(), kCorp);
    }
};

QTEST_MAIN(TestDialogs)
#include "tst_dialogs.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
// The join and ad-hoc sheets: what they offer and what they send.
#include "support/AppHarness.h"

#include "app/BusySpinner.h"
#include "wireless/CWKeys.h"

#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QTableView>
#include <QtTest>

namespace {
const QString kWpa2 = "00:00:00:00:00:03";

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
        h.launchWith({
            FakeBackend::secured("00:00:00:00:00:01", "A open", kCWSecurityNone,
                                 kCWSecurityModeOpen),
            FakeBackend::secured("00:00:00:00:00:02", "B mixed", kCWSecurityWPAPersonalMixed,
                                 kCWSecurityModeWPA2_PSK),
            FakeBackend::secured(kWpa2, "C wpa2", kCWSecurityWPA2Personal, kCWSecurityModeWPA2_PSK),
            FakeBackend::secured("00:00:00:00:00:04", "D corp", kCWSecurityWPA2Enterprise,
                                 kCWSecurityModeWPA2_Enterprise, stored),
        });
    }
    template <typename T> T *field(const char *name)
    {
        return h.app().joinDialogWindow()->findChild<T *>(QLatin1String(name));
    }
    QLineEdit *edit(const char *name) { return field<QLineEdit>(name); }
    void openJoinOn(int row)
    {
        h.find<QTableView>("scanResultsTable")->selectRow(row);
        h.app().joinButtonPressed();
    }
    QVariantMap lastSent() const { return h.backend->associationParameters.constLast(); }
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
            QCOMPARE(f.h.app().joinDialogContext(), qint8(1));
            auto *security = f.field<QComboBox>("joinSecurityPopupButton");
            QCOMPARE(security->currentIndex() >= 0 ? security->currentText() : QString(), selected);
            QCOMPARE(f.edit("joinPassphraseField")->isEnabled(), passEnabled);
        }
    }
    // A stored profile fills and locks the fields and is sent as it is; choosing another
    // profile fills from it, "Default" changes nothing and builds a new profile on OK.
    void enterpriseProfiles()
    {
        DialogFixture f;
        f.openJoinOn(3);
        auto *profiles = f.field<QComboBox>("joinUser8021XProfilePopupButton");
        QCOMPARE(profiles->itemText(0), "Default");
        QCOMPARE(profiles->currentText(), "Office");
        QCOMPARE(f.edit("joinPassphraseField")->text(), "s3cret");
        QVERIFY(!f.edit("joinUsernameField")->isEnabled());
        f.h.app().joinOKButtonPressed();
        QCOMPARE(f.lastSent().keys(), QStringList{kCWAssocKey8021XProfile});
        QCOMPARE(f.lastSent().value(kCWAssocKey8021XProfile).value<CW8021XProfileRef>(),
                 f.corpProfile);

        f.openJoinOn(3); // the rows are moved, not doubled
        QCOMPARE(profiles->count(), 3);
        profiles->setCurrentIndex(1); // "Home lab"
        f.h.app().change8021XProfile();
        profiles->setCurrentIndex(0); // "Default": no stored profile there, nothing changes
        f.h.app().change8021XProfile();
        QCOMPARE(f.edit("joinUsernameField")->text(), "bob");
        f.h.app().joinOKButtonPressed();
        const auto built = f.lastSent().value(kCWAssocKey8021XProfile).value<CW8021XProfileRef>();
        QVERIFY(built && built != f.corpProfile);
        QCOMPARE(QStringList({built->userDefinedName(), built->username()}),
                 QStringList({"D corp", "bob"}));
    }
    // An empty passphrase sends no parameters; a rejected one alerts and keeps the sheet open
    // with what was typed. The right one is answered late: the spinner turns, no tick counts
    // or scans meanwhile, a second click starts no second join; then the next cycle puts the
    // joined network first.
    void passphraseJoin()
    {
        DialogFixture f;
        f.h.preferences->setUpdateInterval(1);
        f.h.backend->requiredPassphrase = "right one";
        f.openJoinOn(2);
        f.h.app().joinOKButtonPressed();
        QCOMPARE(f.h.backend->associationParameters, QList<QVariantMap>{QVariantMap()});
        f.h.alerts.clear();
        f.edit("joinPassphraseField")->setText("wrong one");
        f.h.app().joinOKButtonPressed();
        QCOMPARE(f.h.alerts.lines(), QStringList{"Error: The passphrase was rejected"});
        QVERIFY(f.h.app().joinDialogWindow()->isVisible());
        QCOMPARE(f.edit("joinPassphraseField")->text(), "wrong one");

        f.edit("joinPassphraseField")->setText("right one");
        f.h.backend->deferAnswers = true;
        f.h.app().joinOKButtonPressed(); // returns at once: the answer is not in yet
        auto *spinner = f.field<BusySpinner>("joinSpinner");
        QVERIFY(spinner->isAnimating());
        const int scans = f.h.backend->scanCount;
        const quint64 ticks = f.h.app().tickCount();
        f.h.runSeconds(3);
        f.h.app().joinOKButtonPressed();
        QCOMPARE(f.h.backend->deferred.size(), 1);
        QCOMPARE(f.h.backend->scanCount, scans);
        QCOMPARE(f.h.app().tickCount(), ticks);
        f.h.backend->deferAnswers = false;
        f.h.backend->answerDeferred();
        QVERIFY(!f.h.app().joinDialogWindow()->isVisible() && !spinner->isVisible());
        f.h.app().updateData();
        QCOMPARE(f.h.backend->scanCount, scans + 1);
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
        // Row 0 shows "D corp", but the sheet opens for record 0 of the full list.
        f.openJoinOn(0);
        QCOMPARE(f.edit("joinNetworkNameField")->text(), "A open");
        f.h.app().joinCancelButtonPressed();
        // No selected row: nothing opens.
        f.h.find<QTableView>("scanResultsTable")->clearSelection();
        f.h.app().joinButtonPressed();
        QVERIFY(!f.h.app().joinDialogWindow()->isVisible());
    }
    void adHocSheet()
    {
        DialogFixture f;
        QDialog *sheet = f.h.app().ibssDialogWindow();
        auto *passphrase = sheet->findChild<QLineEdit *>("ibssPassphraseField");
        f.h.app().createIBSSButtonPressed();
        QCOMPARE(sheet->findChild<QComboBox *>("ibssChannelPopupButton")->currentText(), "11");
        auto *name = sheet->findChild<QLineEdit *>("ibssNetworkNameField");
        QCOMPARE(name->text(), QSysInfo::machineHostName());
        name->clear();
        passphrase->setText("adhocpass");
        f.h.app().ibssOKButtonPressed();
        QVERIFY(!sheet->isVisible());
        const QVariantMap sent{{kCWIBSSKeyChannel, 11}, {kCWIBSSKeyPassphrase, "adhocpass"}};
        QCOMPARE(f.h.backend->ibssParameters, QList<QVariantMap>{sent});
        f.h.app().createIBSSButtonPressed(); // the passphrase is cleared when it opens again
        QVERIFY(passphrase->text().isEmpty());
    }
};

QTEST_MAIN(TestDialogs)
#include "tst_dialogs.moc"

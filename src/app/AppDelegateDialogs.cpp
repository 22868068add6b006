// SPDX-License-Identifier: GPL-3.0-or-later
// The join and ad-hoc sheets.
#include "app/AppDelegate.h"
#include "app/BusySpinner.h"
#include "app/NetworkTableView.h"
#include "model/SurveyEngine.h"
#include "ui_IBSSDialog.h"
#include "ui_JoinDialog.h"
#include "ui_MainWindow.h"
#include "wireless/CW8021XProfile.h"
#include "wireless/CWKeys.h"

#include <QItemSelectionModel>
#include <QMainWindow>
#include <QPointer>
#include <QSysInfo>

namespace {
const QStringList kSecurityTitles = {
    QStringLiteral("Open"),           QStringLiteral("WEP"),
    QStringLiteral("WPA Personal"),   QStringLiteral("WPA2 Personal"),
    QStringLiteral("WPA Enterprise"), QStringLiteral("WPA2 Enterprise"),
    QStringLiteral("802.1X WEP")};

// Adds `title` at the end of the pop-up; one already there is moved rather than doubled.
void addItemMovingDuplicate(QComboBox *popup, const QString &title)
{
    const int existing = popup->findText(title, Qt::MatchExactly);
    if (existing >= 0)
        popup->removeItem(existing);
    popup->addItem(title);
}

void startSpinner(BusySpinner *spinner)
{
    // The action answers later; the spinner turns meanwhile.
    spinner->setVisible(true);
    spinner->startAnimation();
}

void stopSpinner(BusySpinner *spinner)
{
    spinner->stopAnimation();
    spinner->setVisible(false);
}
} // namespace

void AppDelegate::setupDialogs()
{
    m_joinDialogWindow = new QDialog(m_window);
    joinUi = std::make_unique<Ui::JoinDialog>();
    joinUi->setupUi(m_joinDialogWindow);
    m_joinDialogWindow->setWindowModality(Qt::WindowModal);
    m_ibssDialogWindow = new QDialog(m_window);
    ibssUi = std::make_unique<Ui::IBSSDialog>();
    ibssUi->setupUi(m_ibssDialogWindow);
    m_ibssDialogWindow->setWindowModality(Qt::WindowModal);

    connect(joinUi->joinSecurityPopupButton, &QComboBox::activated, this,
            [this] { changeSecurityMode(joinUi->joinSecurityPopupButton); });
    connect(joinUi->joinUser8021XProfilePopupButton, &QComboBox::activated, this,
            &AppDelegate::change8021XProfile);
    connect(joinUi->joinOKButton, &QPushButton::clicked, this, &AppDelegate::joinOKButtonPressed);
    connect(joinUi->joinCancelButton, &QPushButton::clicked, this,
            &AppDelegate::joinCancelButtonPressed);
    connect(m_joinDialogWindow, &QDialog::finished, this, &AppDelegate::sheetDidEnd);
    connect(ibssUi->ibssOKButton, &QPushButton::clicked, this, &AppDelegate::ibssOKButtonPressed);
    connect(ibssUi->ibssCancelButton, &QPushButton::clicked, this,
            &AppDelegate::ibssCancelButtonPressed);

    connect(ui->joinButton, &QPushButton::clicked, this, &AppDelegate::joinButtonPressed);
    connect(ui->actionJoin, &QAction::triggered, this, &AppDelegate::joinButtonPressed);
    connect(ui->actionCreateIBSS, &QAction::triggered, this, &AppDelegate::createIBSSButtonPressed);
}

void AppDelegate::resetDialog()
{
    for (QLineEdit *field :
         {joinUi->joinNetworkNameField, joinUi->joinUsernameField, joinUi->joinPassphraseField}) {
        field->clear();
        field->setEnabled(true);
    }
    QComboBox *security = joinUi->joinSecurityPopupButton;
    security->clear();
    security->addItems(kSecurityTitles);
    security->setCurrentIndex(0);
    security->setEnabled(true);
    joinUi->joinUser8021XProfilePopupButton->clear();
    changeSecurityMode(nullptr);
}

void AppDelegate::joinButtonPressed()
{
    // 1. The selected row of the table.
    const QModelIndexList rows = ui->scanResultsTable->selectionModel()->selectedRows();
    const int r = rows.isEmpty() ? -1 : rows.constFirst().row();
    if (r < 0)
        return;
    // 3. The row is used as a position in the full list, not through the filtered rows,
    // as the join command has always done; a row past the end of that list opens nothing.
    if (r >= networks().size()) {
        qWarning("joinButtonPressed: row %d is past the end of the list of networks", r);
        return;
    }
    // 2.
    resetDialog();
    const NetworkObjectRef n = networks().at(r);
    // 4-5.
    m_selectedNetwork = n->cwNetwork();
    joinUi->joinNetworkNameField->setText(
        m_selectedNetwork ? m_selectedNetwork->ssid().value_or(QString()) : QString());
    joinUi->joinNetworkNameField->setEnabled(false);
    // 6. A security text without a matching item (open, mixed modes) selects nothing.
    QComboBox *security = joinUi->joinSecurityPopupButton;
    security->setCurrentIndex(n->security() ? security->findText(*n->security(), Qt::MatchExactly)
                                            : -1);
    security->setEnabled(false);
    // 7.
    changeSecurityMode(nullptr);
    // 8-9. What the system has stored for this network.
    const CWWirelessProfileRef w =
        m_selectedNetwork ? m_selectedNetwork->wirelessProfile() : nullptr;
    const CW8021XProfileRef p = w ? w->user8021XProfile() : nullptr;
    const int m = m_selectedNetwork ? m_selectedNetwork->securityMode().value_or(0) : 0;
    if ((m == kCWSecurityModeWPA_Enterprise || m == kCWSecurityModeWPA2_Enterprise) && p) {
        QComboBox *profiles = joinUi->joinUser8021XProfilePopupButton;
        profiles->setCurrentIndex(profiles->findText(p->userDefinedName(), Qt::MatchExactly));
        joinUi->joinUsernameField->setText(p->username());
        joinUi->joinUsernameField->setEnabled(false);
        joinUi->joinPassphraseField->setText(p->password());
        joinUi->joinPassphraseField->setEnabled(false);
    } else if ((m == kCWSecurityModeWEP || m == kCWSecurityModeWPA_PSK ||
                m == kCWSecurityModeWPA2_PSK) &&
               w && !w->passphrase().isEmpty()) {
        joinUi->joinPassphraseField->setText(w->passphrase());
    }
    // 10.
    m_joinDialogContext = 1;
    m_joinDialogWindow->open();
    joinUi->joinNetworkNameField->setFocus();
}

void AppDelegate::changeSecurityMode(QObject *sender)
{
    Q_UNUSED(sender);
    const QComboBox *security = joinUi->joinSecurityPopupButton;
    const QString title = security->currentIndex() >= 0 ? security->currentText() : QString();
    QComboBox *profiles = joinUi->joinUser8021XProfilePopupButton;
    if (title == QLatin1String("WPA Enterprise") || title == QLatin1String("WPA2 Enterprise") ||
        title == QLatin1String("802.1X WEP")) {
        addItemMovingDuplicate(profiles, QStringLiteral("Default"));
        for (const CW8021XProfileRef &profile : CW8021XProfile::allUser8021XProfiles()) {
            if (profile)
                addItemMovingDuplicate(profiles, profile->userDefinedName());
        }
        profiles->setCurrentIndex(0);
        joinUi->joinUsernameField->setEnabled(true);
        profiles->setEnabled(true);
        joinUi->joinPassphraseField->setEnabled(true);
    } else if (title == QLatin1String("WPA Personal") || title == QLatin1String("WPA2 Personal") ||
               title == QLatin1String("WEP")) {
        profiles->clear();
        joinUi->joinUsernameField->setEnabled(false);
        profiles->setEnabled(false);
        joinUi->joinPassphraseField->setEnabled(true);
    } else {
        profiles->clear();
        joinUi->joinUsernameField->setEnabled(false);
        profiles->setEnabled(false);
        joinUi->joinPassphraseField->setEnabled(false);
    }
}

void AppDelegate::change8021XProfile()
{
    const QComboBox *profiles = joinUi->joinUser8021XProfilePopupButton;
    const QList<CW8021XProfileRef> stored = CW8021XProfile::allUser8021XProfiles();
    // Item 0 is "Default", so item i is stored profile i - 1. "Default" itself has no
    // stored profile: the choice is abandoned and the fields stay as they are.
    const int position = profiles->currentIndex() - 1;
    if (position < 0 || position >= stored.size() || !stored.at(position)) {
        qInfo("change8021XProfile: no stored profile at position %d", position);
        return;
    }
    const CW8021XProfileRef profile = stored.at(position);
    if (profiles->currentText() == QLatin1String("Default")) {
        joinUi->joinUsernameField->clear();
        joinUi->joinUsernameField->setEnabled(true);
        joinUi->joinPassphraseField->clear();
        joinUi->joinPassphraseField->setEnabled(true);
    } else {
        joinUi->joinUsernameField->setText(profile->username());
        joinUi->joinUsernameField->setEnabled(false);
        joinUi->joinPassphraseField->setText(profile->password());
        joinUi->joinPassphraseField->setEnabled(false);
    }
}

void AppDelegate::joinOKButtonPressed()
{
    // One join at a time: a second click while the first is under way does nothing.
    if (m_actionPending)
        return;
    // 1.
    startSpinner(joinUi->joinSpinner);
    // 2.
    CW8021XProfileRef profile;
    const QComboBox *profiles = joinUi->joinUser8021XProfilePopupButton;
    if (profiles->isEnabled()) {
        if (profiles->currentText() == QLatin1String("Default")) {
            profile = CW8021XProfile::profile();
            const QString name = joinUi->joinNetworkNameField->text();
            profile->setSsid(name);
            profile->setUserDefinedName(name);
            const QString user = joinUi->joinUsernameField->text();
            const QString password = joinUi->joinPassphraseField->text();
            profile->setUsername(user.isEmpty() ? QString() : user);
            profile->setPassword(password.isEmpty() ? QString() : password);
        } else {
            const QList<CW8021XProfileRef> stored = CW8021XProfile::allUser8021XProfiles();
            const int position = profiles->currentIndex() - 1;
            if (position >= 0 && position < stored.size())
                profile = stored.at(position);
        }
    }
    // 3. Only a join sheet that is still open may associate.
    if (!m_joinDialogContext) {
        stopSpinner(joinUi->joinSpinner);
        return;
    }
    // 4.
    QVariantMap parameters;
    if (profile) {
        parameters.insert(kCWAssocKey8021XProfile, QVariant::fromValue(profile));
    } else if (!joinUi->joinPassphraseField->text().isEmpty()) {
        parameters.insert(kCWAssocKeyPassphrase, joinUi->joinPassphraseField->text());
    }
    // 5-7. The join may take many seconds (a network that answers slowly, a key
    // exchange): the window keeps painting and the ticks wait for the answer.
    beginAction();
    QPointer<AppDelegate> self(this);
    iface().associateToNetwork(m_selectedNetwork, parameters, [self](const CWError &error) {
        if (!self)
            return;
        self->endAction();
        stopSpinner(self->joinUi->joinSpinner);
        if (error.isNull()) {
            self->joinCancelButtonPressed();
            self->updateInterfaceInfoTab();
        } else {
            self->m_engine->showError(error);
        }
    });
}

void AppDelegate::beginAction()
{
    m_actionPending = true;
    m_engine->hold();
}

void AppDelegate::endAction()
{
    m_actionPending = false;
    m_engine->release();
}

void AppDelegate::joinCancelButtonPressed()
{
    m_joinDialogWindow->reject();
}

void AppDelegate::sheetDidEnd(int returnCode)
{
    Q_UNUSED(returnCode);
    m_joinDialogContext = 0;
}

void AppDelegate::createIBSSButtonPressed()
{
    // 1. The computer's name, when there is one.
    const QString host = QSysInfo::machineHostName();
    if (!host.isEmpty())
        ibssUi->ibssNetworkNameField->setText(host);
    // 2. Ad-hoc networks always start on channel 11.
    QComboBox *channel = ibssUi->ibssChannelPopupButton;
    addItemMovingDuplicate(channel, QStringLiteral("11"));
    channel->setEnabled(false);
    channel->setCurrentIndex(channel->findText(QStringLiteral("11")));
    // 3.
    ibssUi->ibssPassphraseField->clear();
    // 4.
    m_ibssDialogWindow->open();
    ibssUi->ibssNetworkNameField->setFocus();
}

void AppDelegate::ibssOKButtonPressed()
{
    if (m_actionPending)
        return;
    startSpinner(ibssUi->ibssSpinner);
    const QString name = ibssUi->ibssNetworkNameField->text();
    const qint32 channel = leadingInteger(ibssUi->ibssChannelPopupButton->currentText());
    const QString passphrase = ibssUi->ibssPassphraseField->text();
    QVariantMap parameters;
    if (!name.isEmpty())
        parameters.insert(kCWIBSSKeySSID, name);
    if (channel > 0)
        parameters.insert(kCWIBSSKeyChannel, channel);
    if (!passphrase.isEmpty())
        parameters.insert(kCWIBSSKeyPassphrase, passphrase);
    beginAction();
    QPointer<AppDelegate> self(this);
    iface().enableIBSSWithParameters(parameters, [self](const CWError &error) {
        if (!self)
            return;
        self->endAction();
        stopSpinner(self->ibssUi->ibssSpinner);
        if (error.isNull()) {
            self->ibssCancelButtonPressed();
            self->updateInterfaceInfoTab();
        } else {
            self->m_engine->showError(error);
        }
    });
}

void AppDelegate::ibssCancelButtonPressed()
{
    m_ibssDialogWindow->reject();
}

// SPDX-License-Identifier: GPL-3.0-or-later
// Power, channel and disconnect, and the toolbar's enabled state.
#include "app/AppDelegate.h"
#include "app/SegmentedControl.h"
#include "model/SurveyEngine.h"
#include "ui_MainWindow.h"

#include <QAction>
#include <QPointer>
#include <QToolBar>

#include <cstdlib>

qint32 AppDelegate::leadingInteger(const QString &text)
{
    // Optional blanks and sign, then digits; text that does not start with a number gives 0.
    return qint32(std::strtol(text.toLatin1().constData(), nullptr, 10));
}

void AppDelegate::changePower(QObject *sender)
{
    CWInterface &ifc = iface();
    bool on = false;
    if (sender == ui->powerStateControl)
        on = ui->powerStateControl->selectedSegment() == 0;
    else
        on = sender && sender->objectName() == QLatin1String("powerOn");
    if (m_actionPending)
        return;
    // Switching the radio may wait for the daemon: the answer comes later.
    beginAction();
    QPointer<AppDelegate> self(this);
    ifc.setPower(on, [self](const CWError &error) {
        if (!self)
            return;
        self->endAction();
        if (!error.isNull())
            self->m_engine->showError(error);
        self->updateInterfaceInfoTab();
        self->validateToolbar();
    });
}

void AppDelegate::changeChannel()
{
    const qint32 channel = leadingInteger(ui->channelPopup->currentText());
    // Widened as the platform takes it: a negative number becomes a very large one.
    const quint64 wanted = quint64(qint64(channel));
    CWError error;
    if (!iface().setChannel(wanted, &error))
        m_engine->showError(error);
    updateInterfaceInfoTab();
    validateToolbar();
}

void AppDelegate::disconnect()
{
    iface().disassociate();
    updateInterfaceInfoTab();
    validateToolbar();
}

bool AppDelegate::validateToolbarItem(const QAction *item) const
{
    if (!item)
        return true;
    const QString id = item->objectName();
    if (id == QLatin1String("powerOn"))
        return !iface().powerOn();
    if (id == QLatin1String("powerOff"))
        return iface().powerOn();
    return true;
}

void AppDelegate::validateToolbar()
{
    for (QAction *action : ui->toolbar->actions()) {
        if (!action->isSeparator())
            action->setEnabled(validateToolbarItem(action));
    }
}

// SPDX-License-Identifier: GPL-3.0-or-later
// Power, channel and disconnect, and the toolbar's enabled state.
#include "app/AlertPresenter.h"
#include "app/AppDelegate.h"
#include "app/SegmentedControl.h"
#include "ui_MainWindow.h"

#include <QAction>
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
    CWError error;
    if (!ifc.setPower(on, &error))
        m_alerts->presentError(error);
    updateInterfaceInfoTab();
    validateToolbar();
}

void AppDelegate::changeChannel()
{
    const qint32 channel = leadingInteger(ui->channelPopup->currentText());
    // Widened as the platform takes it: a negative number becomes a very large one.
    const quint64 wanted = quint64(qint64(channel));
    CWError error;
    if (!iface().setChannel(wanted, &error))
        m_alerts->presentError(error);
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

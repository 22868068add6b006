// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MessageBoxAlertPresenter.h"

#include <QMessageBox>
#include <QPushButton>

void MessageBoxAlertPresenter::runCriticalAlert(const QString &title, const QString &message,
                                                const QString &button)
{
    QMessageBox box(QMessageBox::Critical, title, message, QMessageBox::NoButton, m_parent);
    box.addButton(button, QMessageBox::AcceptRole);
    box.exec();
}

void MessageBoxAlertPresenter::runAlert(const QString &message, const QString &informativeText,
                                        const QString &button)
{
    QMessageBox box(QMessageBox::Warning, message, message, QMessageBox::NoButton, m_parent);
    box.setInformativeText(informativeText);
    box.addButton(button, QMessageBox::AcceptRole);
    box.exec();
}

void MessageBoxAlertPresenter::presentError(const CWError &error)
{
    QMessageBox box(QMessageBox::Warning, QObject::tr("Error"), error.localizedDescription(),
                    QMessageBox::Ok, m_parent);
    box.exec();
}

void MessageBoxAlertPresenter::runTitledAlert(const QString &title, const QString &message,
                                              const QString &button)
{
    QMessageBox box(QMessageBox::Warning, title, message, QMessageBox::NoButton, m_parent);
    box.addButton(button, QMessageBox::AcceptRole);
    box.exec();
}

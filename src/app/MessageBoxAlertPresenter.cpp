// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MessageBoxAlertPresenter.h"

#include <QMessageBox>
#include <QPushButton>

namespace {
// Opens the box as a sheet of the window and returns at once; the box deletes itself when
// it is closed, after telling the caller.
void openBox(QMessageBox *box, AlertPresenter::Dismissed dismissed)
{
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(box->parentWidget() ? Qt::WindowModal : Qt::ApplicationModal);
    QObject::connect(box, &QMessageBox::finished, box, [dismissed = std::move(dismissed)] {
        if (dismissed)
            dismissed();
    });
    box->open();
}
} // namespace

void MessageBoxAlertPresenter::runCriticalAlert(const QString &title, const QString &message,
                                                const QString &button, Dismissed dismissed)
{
    auto *box =
        new QMessageBox(QMessageBox::Critical, title, message, QMessageBox::NoButton, m_parent);
    box->addButton(button, QMessageBox::AcceptRole);
    openBox(box, std::move(dismissed));
}

void MessageBoxAlertPresenter::runAlert(const QString &message, const QString &informativeText,
                                        const QString &button, Dismissed dismissed)
{
    auto *box =
        new QMessageBox(QMessageBox::Warning, message, message, QMessageBox::NoButton, m_parent);
    box->setInformativeText(informativeText);
    box->addButton(button, QMessageBox::AcceptRole);
    openBox(box, std::move(dismissed));
}

void MessageBoxAlertPresenter::presentError(const CWError &error, Dismissed dismissed)
{
    auto *box = new QMessageBox(QMessageBox::Warning, QObject::tr("Error"),
                                error.localizedDescription(), QMessageBox::Ok, m_parent);
    openBox(box, std::move(dismissed));
}

void MessageBoxAlertPresenter::runTitledAlert(const QString &title, const QString &message,
                                              const QString &button, Dismissed dismissed)
{
    auto *box =
        new QMessageBox(QMessageBox::Warning, title, message, QMessageBox::NoButton, m_parent);
    box->addButton(button, QMessageBox::AcceptRole);
    openBox(box, std::move(dismissed));
}

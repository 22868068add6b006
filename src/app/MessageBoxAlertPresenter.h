// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/AlertPresenter.h"

#include <QPointer>
#include <QWidget>

// Alerts as application-modal QMessageBoxes on the main window.
class MessageBoxAlertPresenter final : public AlertPresenter
{
public:
    explicit MessageBoxAlertPresenter(QWidget *parent) : m_parent(parent) {}

    void runCriticalAlert(const QString &title, const QString &message,
                          const QString &button) override;
    void runAlert(const QString &message, const QString &informativeText,
                  const QString &button) override;
    void presentError(const CWError &error) override;
    void runTitledAlert(const QString &title, const QString &message,
                        const QString &button) override;

private:
    QPointer<QWidget> m_parent;
};

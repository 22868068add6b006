// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/AlertPresenter.h"

#include <QPointer>
#include <QWidget>

// Alerts as window-modal message boxes on the main window, opened without waiting.
class MessageBoxAlertPresenter final : public AlertPresenter
{
public:
    explicit MessageBoxAlertPresenter(QWidget *parent) : m_parent(parent) {}

    void runCriticalAlert(const QString &title, const QString &message, const QString &button,
                          Dismissed dismissed = {}) override;
    void runAlert(const QString &message, const QString &informativeText, const QString &button,
                  Dismissed dismissed = {}) override;
    void presentError(const CWError &error, Dismissed dismissed = {}) override;
    void runTitledAlert(const QString &title, const QString &message, const QString &button,
                        Dismissed dismissed = {}) override;

private:
    QPointer<QWidget> m_parent;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWError.h"

#include <QString>

#include <functional>

// Every modal alert goes through here, so tests can record them and the headless mode can
// turn them into lines on standard error. An alert never blocks the caller: it is shown
// and the call returns; `dismissed` runs once the user has closed it (at once where nobody
// has to). The update cycle holds its ticks in between, as a modal alert should.
class AlertPresenter
{
public:
    using Dismissed = std::function<void()>;
    virtual ~AlertPresenter() = default;

    // A critical alert panel with one button ("Error" / "Auth failed" / "OK").
    virtual void runCriticalAlert(const QString &title, const QString &message,
                                  const QString &button, Dismissed dismissed = {}) = 0;
    // A modal alert with a message, an informative text and one button.
    virtual void runAlert(const QString &message, const QString &informativeText,
                          const QString &button, Dismissed dismissed = {}) = 0;
    // The platform's standard alert made from an error: its text is the description.
    virtual void presentError(const CWError &error, Dismissed dismissed = {}) = 0;
    // A modal alert with a title, a message and one button (export failures).
    virtual void runTitledAlert(const QString &title, const QString &message, const QString &button,
                                Dismissed dismissed = {}) = 0;
};

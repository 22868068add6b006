// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWError.h"

#include <QString>

// Every modal alert the controller shows goes through here, so tests can record them and
// the headless mode can turn them into lines on standard error instead of blocking.
class AlertPresenter
{
public:
    virtual ~AlertPresenter() = default;

    // A critical alert panel with one button ("Error" / "Auth failed" / "OK").
    virtual void runCriticalAlert(const QString &title, const QString &message,
                                  const QString &button) = 0;
    // A modal alert with a message, an informative text and one button.
    virtual void runAlert(const QString &message, const QString &informativeText,
                          const QString &button) = 0;
    // The platform's standard alert made from an error: its text is the description.
    virtual void presentError(const CWError &error) = 0;
    // A modal alert with a title, a message and one button (export failures).
    virtual void runTitledAlert(const QString &title, const QString &message,
                                const QString &button) = 0;
};

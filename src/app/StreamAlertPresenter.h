// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/AlertPresenter.h"

#include <QStringList>

// Alerts as lines on standard error (headless mode); never blocks. Also remembers the
// lines, which is what tests read.
class StreamAlertPresenter final : public AlertPresenter
{
public:
    explicit StreamAlertPresenter(bool print = true) : m_print(print) {}

    void runCriticalAlert(const QString &title, const QString &message,
                          const QString &button) override;
    void runAlert(const QString &message, const QString &informativeText,
                  const QString &button) override;
    void presentError(const CWError &error) override;
    void runTitledAlert(const QString &title, const QString &message,
                        const QString &button) override;

    const QStringList &lines() const { return m_lines; }
    void clear() { m_lines.clear(); }

private:
    void emitLine(const QString &line);

    bool m_print;
    QStringList m_lines;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/AlertPresenter.h"

#include <QList>
#include <QStringList>

// Alerts as lines on standard error (headless mode), dismissed as soon as they are written.
// Tests read the remembered lines, and may keep alerts open (setKeepOpen) to stand for a
// user who has not clicked yet.
class StreamAlertPresenter final : public AlertPresenter
{
public:
    explicit StreamAlertPresenter(bool print = true) : m_print(print) {}

    void runCriticalAlert(const QString &title, const QString &message, const QString &button,
                          Dismissed dismissed = {}) override;
    void runAlert(const QString &message, const QString &informativeText, const QString &button,
                  Dismissed dismissed = {}) override;
    void presentError(const CWError &error, Dismissed dismissed = {}) override;
    void runTitledAlert(const QString &title, const QString &message, const QString &button,
                        Dismissed dismissed = {}) override;

    const QStringList &lines() const { return m_lines; }
    void clear() { m_lines.clear(); }

    // While kept open, alerts wait for dismissAll() instead of being dismissed at once.
    void setKeepOpen(bool keep) { m_keepOpen = keep; }
    qsizetype openAlerts() const { return m_open.size(); }
    void dismissAll();

private:
    void emitLine(const QString &line, Dismissed dismissed);

    bool m_print;
    bool m_keepOpen = false;
    QStringList m_lines;
    QList<Dismissed> m_open;
};

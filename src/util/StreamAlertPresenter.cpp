// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/StreamAlertPresenter.h"

#include <cstdio>

void StreamAlertPresenter::runCriticalAlert(const QString &title, const QString &message,
                                            const QString &button, Dismissed dismissed)
{
    Q_UNUSED(button);
    emitLine(title + QStringLiteral(": ") + message, std::move(dismissed));
}

void StreamAlertPresenter::runAlert(const QString &message, const QString &informativeText,
                                    const QString &button, Dismissed dismissed)
{
    Q_UNUSED(button);
    emitLine(message + QStringLiteral(": ") + informativeText, std::move(dismissed));
}

void StreamAlertPresenter::presentError(const CWError &error, Dismissed dismissed)
{
    emitLine(QStringLiteral("Error: ") + error.localizedDescription(), std::move(dismissed));
}

void StreamAlertPresenter::runTitledAlert(const QString &title, const QString &message,
                                          const QString &button, Dismissed dismissed)
{
    Q_UNUSED(button);
    emitLine(title + QStringLiteral(": ") + message, std::move(dismissed));
}

void StreamAlertPresenter::dismissAll()
{
    // A dismissal may show the next alert: take the list first.
    const QList<Dismissed> open = std::exchange(m_open, {});
    for (const Dismissed &dismissed : open) {
        if (dismissed)
            dismissed();
    }
}

void StreamAlertPresenter::emitLine(const QString &line, Dismissed dismissed)
{
    m_lines.append(line);
    if (m_print) {
        // Keep one alert on one line, whatever the platform put into its description.
        QString flat = line;
        flat.replace(QLatin1Char('\n'), QLatin1Char(' '))
            .replace(QLatin1Char('\r'), QLatin1Char(' '));
        std::fprintf(stderr, "%s\n", flat.toLocal8Bit().constData());
        std::fflush(stderr);
    }
    if (m_keepOpen)
        m_open.append(std::move(dismissed));
    else if (dismissed)
        dismissed();
}

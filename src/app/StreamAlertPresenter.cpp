// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StreamAlertPresenter.h"

#include <cstdio>

void StreamAlertPresenter::runCriticalAlert(const QString &title, const QString &message,
                                            const QString &button)
{
    Q_UNUSED(button);
    emitLine(title + QStringLiteral(": ") + message);
}

void StreamAlertPresenter::runAlert(const QString &message, const QString &informativeText,
                                    const QString &button)
{
    Q_UNUSED(button);
    emitLine(message + QStringLiteral(": ") + informativeText);
}

void StreamAlertPresenter::presentError(const CWError &error)
{
    emitLine(QStringLiteral("Error: ") + error.localizedDescription());
}

void StreamAlertPresenter::emitLine(const QString &line)
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
}

void StreamAlertPresenter::runTitledAlert(const QString &title, const QString &message,
                                          const QString &button)
{
    Q_UNUSED(button);
    emitLine(title + QStringLiteral(": ") + message);
}

// SPDX-License-Identifier: GPL-3.0-or-later
// Export of the listed rows as tab-separated text or HTML.
#include "app/AppDelegate.h"
#include "app/FileChooser.h"
#include "model/ExportDocument.h"
#include "model/SurveyEngine.h"

#include <QDir>
#include <QMainWindow>
#include <QPointer>

void AppDelegate::exportToCSV()
{
    writeExport(false);
}

void AppDelegate::exportToHTML()
{
    writeExport(true);
}

void AppDelegate::writeExport(bool html)
{
    const QString startDirectory = QDir::home().absoluteFilePath(QStringLiteral("Documents"));
    const QString name =
        html ? QStringLiteral("wifi-details.html") : QStringLiteral("wifi-details.csv");
    // The save dialog is modal to the window: the cycle waits while it is open, so the file
    // holds the rows the user saw when choosing it.
    m_engine->hold();
    QPointer<AppDelegate> self(this);
    m_fileChooser->chooseSaveFile(
        m_window, startDirectory, name, [self, html](const QString &path) {
            if (!self)
                return;
            self->m_engine->release();
            if (path.isEmpty())
                return;
            const NetworkList &list = self->networks();
            const QList<quint64> &rows = self->filteredNetworks();
            const QString text =
                html ? ExportDocument::html(list, rows) : ExportDocument::tabSeparated(list, rows);
            QString errorText;
            if (!ExportDocument::writeDocument(path, text, &errorText)) {
                // The HTML export reports "csv" too; the message has always read that way.
                self->m_engine->showTitledAlert(
                    QStringLiteral("Error"),
                    QStringLiteral("Export to csv '%1' failed: %2.\rPlease try again.")
                        .arg(path, errorText),
                    QStringLiteral("Ok"));
            }
        });
}

// SPDX-License-Identifier: GPL-3.0-or-later
// Export of the listed rows as tab-separated text or HTML.
#include "app/AlertPresenter.h"
#include "app/AppDelegate.h"
#include "app/FileChooser.h"
#include "model/ExportDocument.h"

#include <QDir>
#include <QMainWindow>

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
    const QString path = m_fileChooser->chooseSaveFile(m_window, startDirectory, name);
    if (path.isEmpty())
        return;
    const QString text = html ? ExportDocument::html(m_networks, m_filteredNetworks)
                              : ExportDocument::tabSeparated(m_networks, m_filteredNetworks);
    QString errorText;
    if (!ExportDocument::writeDocument(path, text, &errorText)) {
        // The HTML export reports "csv" too; the message has always read that way.
        m_alerts->runTitledAlert(QStringLiteral("Error"),
                                 QStringLiteral("Export to csv '%1' failed: %2.\rPlease try again.")
                                     .arg(path, errorText),
                                 QStringLiteral("Ok"));
    }
}

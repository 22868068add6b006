// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DialogFileChooser.h"

#include <QDir>
#include <QFileDialog>

void DialogFileChooser::chooseSaveFile(QWidget *parent, const QString &startDirectory,
                                       const QString &representedName, Chosen chosen)
{
    auto *dialog = new QFileDialog(parent, representedName);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setDirectory(QDir(startDirectory).exists() ? startDirectory : QDir::homePath());
    dialog->selectFile(representedName);
    // A sheet of the window: it answers when closed, the event loop runs on meanwhile.
    dialog->setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    QObject::connect(
        dialog, &QFileDialog::finished, dialog, [dialog, chosen = std::move(chosen)](int result) {
            const QStringList files = dialog->selectedFiles();
            chosen(result == QDialog::Accepted && !files.isEmpty() ? files.first() : QString());
        });
    dialog->open();
}

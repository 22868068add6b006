// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DialogFileChooser.h"

#include <QDir>
#include <QFileDialog>

QString DialogFileChooser::chooseSaveFile(QWidget *parent, const QString &startDirectory,
                                          const QString &representedName)
{
    QFileDialog dialog(parent, representedName);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setDirectory(QDir(startDirectory).exists() ? startDirectory : QDir::homePath());
    dialog.selectFile(representedName);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return {};
    return dialog.selectedFiles().constFirst();
}

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QWidget;

// The save dialog, replaceable in tests.
class FileChooser
{
public:
    virtual ~FileChooser() = default;
    // Asks for a file to write; `representedName` is the suggested file name and the
    // dialog's title. Returns the chosen path, or an empty text when the user cancelled.
    virtual QString chooseSaveFile(QWidget *parent, const QString &startDirectory,
                                   const QString &representedName) = 0;
};

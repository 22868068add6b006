// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>

class QWidget;

// The save dialog, replaceable in tests.
class FileChooser
{
public:
    using Chosen = std::function<void(const QString &path)>;
    virtual ~FileChooser() = default;
    // Asks for a file to write; `representedName` is the suggested file name and the
    // dialog's title. Returns at once; `chosen` gets the path, or an empty text when the user
    // cancelled, once the dialog is closed.
    virtual void chooseSaveFile(QWidget *parent, const QString &startDirectory,
                                const QString &representedName, Chosen chosen) = 0;
};

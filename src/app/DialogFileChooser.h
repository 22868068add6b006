// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/FileChooser.h"

// The real save dialog: may create folders, starts in the given folder.
class DialogFileChooser final : public FileChooser
{
public:
    void chooseSaveFile(QWidget *parent, const QString &startDirectory,
                        const QString &representedName, Chosen chosen) override;
};

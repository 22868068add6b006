// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>

// One widget application for a whole benchmark run, on the offscreen platform unless one
// is chosen. It is never destroyed: tearing a QApplication down during static destruction
// crashes.
inline void ensureApplication()
{
    static QApplication *app = nullptr;
    if (app)
        return;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    static int argc = 1;
    static char name[] = "corvane_bench";
    static char *argv[] = {name, nullptr};
    app = new QApplication(argc, argv);
}

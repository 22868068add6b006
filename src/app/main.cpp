// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>
#include <QLabel>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QLabel label(QStringLiteral("Corvane Wi-Fi Monitor"));
    label.show();
    return app.exec();
}

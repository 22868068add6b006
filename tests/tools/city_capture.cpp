// SPDX-License-Identifier: GPL-3.0-or-later
// Writes a synthetic city capture for replay and benchmarks:
//   city_capture [--access-points N] [--beacons K] [--seconds S] FILE
#include "CityCapture.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Writes a radiotap capture of many access points beaconing over time."));
    parser.addHelpOption();
    parser.addOption({QStringLiteral("access-points"), QStringLiteral("Networks (1000)."),
                      QStringLiteral("N"), QStringLiteral("1000")});
    parser.addOption({QStringLiteral("beacons"), QStringLiteral("Beacons per network (3)."),
                      QStringLiteral("K"), QStringLiteral("3")});
    parser.addOption({QStringLiteral("seconds"), QStringLiteral("Length of the capture (600)."),
                      QStringLiteral("S"), QStringLiteral("600")});
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("The pcap file to write."));
    parser.process(app);

    CityCapture capture;
    bool okN = false, okK = false, okS = false;
    capture.accessPoints = parser.value(QStringLiteral("access-points")).toInt(&okN);
    capture.beaconsEach = parser.value(QStringLiteral("beacons")).toInt(&okK);
    capture.seconds = parser.value(QStringLiteral("seconds")).toDouble(&okS);
    const QStringList files = parser.positionalArguments();
    if (!okN || !okK || !okS || files.size() != 1 || capture.accessPoints > 16777215) {
        std::fprintf(stderr, "%s\n", qPrintable(parser.helpText()));
        return 2;
    }
    QString error;
    if (!capture.write(files.first(), &error)) {
        std::fprintf(stderr, "city_capture: %s\n", qPrintable(error));
        return 1;
    }
    return 0;
}

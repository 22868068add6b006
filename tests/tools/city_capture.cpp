// SPDX-License-Identifier: GPL-3.0-or-later
// Writes a synthetic city capture for replay and benchmarks:
//   city_capture [--access-points N] [--beacons K] [--seconds S] FILE
#include "CityCapture.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Writes a radiotap capture of many access points beaconing over time."_s);
    parser.addHelpOption();
    parser.addOption({u"access-points"_s, u"Networks (1000)."_s, u"N"_s, u"1000"_s});
    parser.addOption({u"beacons"_s, u"Beacons per network (3)."_s, u"K"_s, u"3"_s});
    parser.addOption({u"seconds"_s, u"Length of the capture (600)."_s, u"S"_s, u"600"_s});
    parser.addPositionalArgument(u"FILE"_s, u"The pcap file to write."_s);
    parser.process(app);

    CityCapture capture;
    bool okN = false, okK = false, okS = false;
    capture.accessPoints = parser.value(u"access-points"_s).toInt(&okN);
    capture.beaconsEach = parser.value(u"beacons"_s).toInt(&okK);
    capture.seconds = parser.value(u"seconds"_s).toDouble(&okS);
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

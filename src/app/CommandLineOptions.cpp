// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CommandLineOptions.h"

#include <QCommandLineParser>
#include <QHostAddress>

#include <cstring>

namespace {
void addOptions(QCommandLineParser &parser)
{
    parser.addOptions({
        {QStringLiteral("backend"),
         QStringLiteral(
             "Where the radio comes from: auto (the Linux radio when the machine has "
             "a wireless interface, else the simulated one), linux, simulated or replay."),
         QStringLiteral("auto|linux|simulated|replay"), QStringLiteral("auto")},
        {QStringLiteral("scenario"), QStringLiteral("Scenario file for the simulated radio."),
         QStringLiteral("file")},
        {QStringLiteral("seed"), QStringLiteral("Random seed of the simulated radio."),
         QStringLiteral("n")},
        {QStringLiteral("capture"), QStringLiteral("Capture file (pcap or pcapng) to replay."),
         QStringLiteral("file")},
        {QStringLiteral("speed"),
         QStringLiteral("Replay speed: 1 is real time, 10 ten times faster, 0 as fast as the "
                        "cycle allows."),
         QStringLiteral("n"), QStringLiteral("1")},
        {QStringLiteral("headless"),
         QStringLiteral("Run the update cycle without a window (no display needed).")},
        {QStringLiteral("cycles"),
         QStringLiteral("Headless: stop after this many cycles (default: until interrupted)."),
         QStringLiteral("n")},
        {QStringLiteral("interval"),
         QStringLiteral("Headless: seconds between cycles (default: the stored update "
                        "interval; 0 runs cycles back to back)."),
         QStringLiteral("seconds")},
        {QStringLiteral("export-tsv"),
         QStringLiteral("Headless: write the tab-separated export here at the end (- for "
                        "standard output)."),
         QStringLiteral("file")},
        {QStringLiteral("export-html"),
         QStringLiteral("Headless: write the HTML export here at the end (- for standard "
                        "output)."),
         QStringLiteral("file")},
        {QStringLiteral("log-tsv"),
         QStringLiteral("Headless: append one line per listed network and cycle to this file."),
         QStringLiteral("file")},
        {QStringLiteral("filter"), QStringLiteral("Headless: the search text."),
         QStringLiteral("text")},
        {QStringLiteral("serve"),
         QStringLiteral("Serve the survey over HTTP: Prometheus metrics at /metrics, JSON at "
                        "/api and a live page at /. The address defaults to 127.0.0.1 (this "
                        "machine only); 0.0.0.0 or [::] opens it to the network. Port 0 picks "
                        "a free one."),
         QStringLiteral("[address:]port")},
    });
}
QCommandLineOption helpOption()
{
    return QCommandLineOption({QStringLiteral("h"), QStringLiteral("help")},
                              QStringLiteral("Show this help."));
}

QCommandLineOption versionOption()
{
    return QCommandLineOption({QStringLiteral("v"), QStringLiteral("version")},
                              QStringLiteral("Show the version."));
}
} // namespace

bool CommandLineOptions::parse(const QStringList &arguments, QString *errorText)
{
    QCommandLineParser parser;
    addOptions(parser);
    parser.addOption(helpOption());
    parser.addOption(versionOption());
    auto fail = [errorText](const QString &text) {
        if (errorText)
            *errorText = text;
        return false;
    };
    if (!parser.parse(arguments))
        return fail(parser.errorText());
    if (!parser.positionalArguments().isEmpty())
        return fail(QStringLiteral("Unexpected argument: %1")
                        .arg(parser.positionalArguments().constFirst()));
    help = parser.isSet(QStringLiteral("help"));
    version = parser.isSet(QStringLiteral("version"));

    const QString backendName = parser.value(QStringLiteral("backend"));
    if (backendName == QLatin1String("auto"))
        backend = Backend::Auto;
    else if (backendName == QLatin1String("linux"))
        backend = Backend::Linux;
    else if (backendName == QLatin1String("simulated"))
        backend = Backend::Simulated;
    else if (backendName == QLatin1String("replay"))
        backend = Backend::Replay;
    else
        return fail(QStringLiteral("Unknown backend \"%1\" (use auto, linux, simulated or replay)")
                        .arg(backendName));

    scenario = parser.value(QStringLiteral("scenario"));
    capture = parser.value(QStringLiteral("capture"));
    if (parser.isSet(QStringLiteral("seed"))) {
        bool ok = false;
        const uint value = parser.value(QStringLiteral("seed")).toUInt(&ok);
        if (!ok)
            return fail(QStringLiteral("--seed takes a whole number from 0 to 4294967295"));
        seed = value;
    }
    bool ok = false;
    speed = parser.value(QStringLiteral("speed")).toDouble(&ok);
    if (!ok || speed < 0 || !qIsFinite(speed))
        return fail(QStringLiteral("--speed takes a number of 0 or more"));
    headless = parser.isSet(QStringLiteral("headless"));
    if (parser.isSet(QStringLiteral("cycles"))) {
        cycles = parser.value(QStringLiteral("cycles")).toLongLong(&ok);
        if (!ok || cycles < 1)
            return fail(QStringLiteral("--cycles takes a whole number of 1 or more"));
    }
    if (parser.isSet(QStringLiteral("interval"))) {
        const double seconds = parser.value(QStringLiteral("interval")).toDouble(&ok);
        if (!ok || seconds < 0 || !qIsFinite(seconds) || seconds > 86400)
            return fail(QStringLiteral("--interval takes a number of seconds from 0 to 86400"));
        interval = seconds;
    }
    exportTsv = parser.value(QStringLiteral("export-tsv"));
    exportHtml = parser.value(QStringLiteral("export-html"));
    logTsv = parser.value(QStringLiteral("log-tsv"));
    filter = parser.value(QStringLiteral("filter"));

    if (backend == Backend::Replay && capture.isEmpty())
        return fail(QStringLiteral("--backend=replay needs --capture FILE"));
    if (!capture.isEmpty() && backend == Backend::Auto)
        backend = Backend::Replay;
    if (!headless) {
        for (const char *name :
             {"cycles", "interval", "export-tsv", "export-html", "log-tsv", "filter"}) {
            if (parser.isSet(QString::fromLatin1(name)))
                return fail(
                    QStringLiteral("--%1 works only with --headless").arg(QLatin1String(name)));
        }
    }
    if (parser.isSet(QStringLiteral("serve"))) {
        QString why;
        if (!parseServe(parser.value(QStringLiteral("serve")), &serveAddress, &servePort, &why))
            return fail(QStringLiteral("--serve takes [ADDRESS:]PORT, such as 9100, "
                                       "0.0.0.0:9100 or [::1]:9100: %1")
                            .arg(why));
    }
    if (exportTsv == QLatin1String("-") && exportHtml == QLatin1String("-"))
        return fail(QStringLiteral("Only one export can go to standard output"));
    return true;
}

bool CommandLineOptions::parseServe(const QString &text, QString *address, int *port, QString *why)
{
    QString host = QStringLiteral("127.0.0.1");
    QString portText = text;
    const qsizetype colon = text.lastIndexOf(u':');
    if (text.startsWith(u'[')) {
        // An IPv6 address is written in brackets, as in URLs, so its colons stay apart.
        const qsizetype close = text.indexOf(u']');
        if (close < 0 || close + 1 >= text.size() || text.at(close + 1) != u':') {
            *why = QStringLiteral("an IPv6 address goes in brackets followed by :PORT");
            return false;
        }
        host = text.mid(1, close - 1);
        portText = text.mid(close + 2);
        if (!host.contains(u':')) {
            *why = QStringLiteral("\"%1\" is no IPv6 address").arg(host);
            return false;
        }
    } else if (colon >= 0) {
        host = text.left(colon);
        portText = text.mid(colon + 1);
        if (host.contains(u':')) {
            *why = QStringLiteral("write an IPv6 address in brackets, as [%1]").arg(host);
            return false;
        }
    }
    if (host == QLatin1String("localhost"))
        host = QStringLiteral("127.0.0.1");
    const QHostAddress parsed(host);
    if (parsed.isNull()) {
        *why = QStringLiteral("\"%1\" is no IP address (names other than localhost are "
                              "not looked up)")
                   .arg(host);
        return false;
    }
    bool ok = false;
    const uint value = portText.toUInt(&ok);
    if (!ok || value > 65535 || portText.startsWith(u'+')) {
        *why = QStringLiteral("\"%1\" is no port number from 0 to 65535").arg(portText);
        return false;
    }
    *address = parsed.toString();
    *port = int(value);
    return true;
}

QString CommandLineOptions::usage()
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Corvane Wi-Fi Monitor: a Wi-Fi scanner and signal monitor."));
    addOptions(parser);
    // The same help and version options that parse() accepts (Qt's own would also list
    // --help-all, which this program does not take).
    parser.addOption(helpOption());
    parser.addOption(versionOption());
    QString text = parser.helpText();
    text +=
        QStringLiteral("\nExit codes (headless): 0 done, 2 bad arguments, 3 no usable interface, "
                       "4 an output file could not be written, 5 --serve could not listen.\n");
    return text;
}

bool CommandLineOptions::wantsHeadless(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--headless") == 0 || std::strcmp(argv[i], "-headless") == 0)
            return true;
    }
    return false;
}

bool CommandLineOptions::wantsInfo(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        for (const char *flag : {"-h", "--help", "-v", "--version"}) {
            if (std::strcmp(argv[i], flag) == 0)
                return true;
        }
    }
    return false;
}

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// What the command line asked for. parse() never exits: it reports what was wrong and the
// caller prints the usage and exits with code 2.
struct CommandLineOptions
{
    enum class Backend { Auto, Linux, Simulated, Replay };

    Backend backend = Backend::Auto;
    QString scenario;            // simulated radio: scenario file (default: built in)
    std::optional<quint32> seed; // simulated radio: random seed
    QString capture;             // replay: capture file
    double speed = 1.0;          // replay: 1 = real time, 0 = as fast as possible
    bool headless = false;
    qint64 cycles = -1;             // headless: working cycles, -1 = until interrupted
    std::optional<double> interval; // headless: seconds between cycles
    QString exportTsv;
    QString exportHtml;
    QString logTsv;
    QString filter;
    QString serveAddress; // --serve: the address to listen on (an IP address)
    int servePort = -1;   // --serve: the port, 0 for any free one; -1 without --serve
    bool help = false;
    bool version = false;

    // Parses the arguments (argv[0] included). Returns false with a message on bad input.
    bool parse(const QStringList &arguments, QString *errorText);

    static QString usage();
    // "[ADDRESS:]PORT" with the address an IPv4 address, an IPv6 one in brackets or
    // localhost, 127.0.0.1 when left out. On failure `why` says what is wrong.
    static bool parseServe(const QString &text, QString *address, int *port, QString *why);
    // True when the raw arguments ask for headless mode (checked before Qt starts, so that
    // the offscreen platform can be chosen).
    static bool wantsHeadless(int argc, char **argv);
    // True when they ask only for the help or the version text.
    static bool wantsInfo(int argc, char **argv);
};

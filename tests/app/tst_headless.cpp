// SPDX-License-Identifier: GPL-3.0-or-later
// The built program in headless mode: cycles, the log, exports, exit codes, signals, and real
// captured beacons replayed through it.
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

namespace {
QString binary()
{
    return qEnvironmentVariable("CORVANE_BINARY");
}

struct Run
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

// The headless program with these options, on the seeded simulated radio unless they name
// a backend.
Run run(QStringList arguments, const QString &settingsDir)
{
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("XDG_CONFIG_HOME", settingsDir);
    // The headless program holds no widgets: every path, failures included, frees what it
    // holds, and a sanitizer build says so with a leak report (and another exit code).
    env.insert("ASAN_OPTIONS", "detect_leaks=1");
    p.setProcessEnvironment(env);
    if (!arguments.join(' ').contains("--backend="))
        arguments << "--backend=simulated"
                  << "--seed"
                  << "3";
    p.start(binary(), QStringList{"--headless"} + arguments);
    p.waitForFinished(60000);
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, p.readAllStandardOutput(),
            p.readAllStandardError()};
}

// The log's time stamps, one per line after the head line; empty if the log is not whole
// (no head line, a line cut short, or a stamp that is no time).
QStringList stamps(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    const QByteArray log = f.readAll();
    if (!log.startsWith("Time\tNetwork Name\tBSSID\t") || !log.endsWith('\n'))
        return {};
    QStringList result;
    for (const QByteArray &line : log.split('\n').mid(1, log.count('\n') - 1)) {
        const QString stamp = QString::fromUtf8(line.left(line.indexOf('\t')));
        if (!QDateTime::fromString(stamp, Qt::ISODateWithMs).isValid())
            return {};
        result << stamp;
    }
    return result;
}
} // namespace

class TestHeadless : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        if (binary().isEmpty())
            QSKIP("CORVANE_BINARY is not set");
        QVERIFY(QFile::exists(binary()));
    }
    // Each cycle writes one block of the log; a second run appends without a second head line;
    // exports go to standard output or a file, after the filter.
    void cyclesLogAndExport()
    {
        QTemporaryDir dir;
        const QString log = dir.filePath("log.tsv");
        const Run r =
            run({"--cycles", "5", "--interval", "0.02", "--log-tsv", log, "--export-tsv", "-"},
                m_settings.path());
        QCOMPARE(r.exitCode, 0);
        QVERIFY(r.out.startsWith("Network Name\tBSSID\tComment\t"));
        QVERIFY(r.out.count('\n') > 5);
        const QStringList s = stamps(log);
        QCOMPARE(QSet<QString>(s.begin(), s.end()).size(), 5);

        const QString html = dir.filePath("out.html");
        QCOMPARE(run({"--cycles", "1", "--filter", "no such network", "--export-html", html,
                      "--log-tsv", log},
                     m_settings.path())
                     .exitCode,
                 0);
        QFile f(log);
        QVERIFY(f.open(QIODevice::ReadOnly));
        QCOMPARE(f.readAll().count("Time\tNetwork Name"), 1);
        QFile page(html);
        QVERIFY(page.open(QIODevice::ReadOnly));
        const QByteArray document = page.readAll();
        QVERIFY(document.startsWith("<html><head>"));
        QVERIFY(!document.contains("<tr><td>")); // the filter left no rows
    }
    // A path below a plain file, or a device that is always full: exit code 4, the reason
    // named, and no file half written.
    void unwritableOutputGivesExitCode4()
    {
        const std::tuple<const char *, const char *, const char *> rows[] = {
            {"--export-tsv", "blocked", "Cannot write"},
            {"--log-tsv", "blocked", "Cannot write the log"},
            {"--export-html", "/dev/full", "No space left on device"},
            {"--log-tsv", "/dev/full", "No space left on device"}};
        for (const auto &[option, target, reason] : rows) {
            QTemporaryDir dir;
            QFile blocker(dir.filePath("file"));
            QVERIFY(blocker.open(QIODevice::WriteOnly));
            const QString path = QString(target) == "blocked" ? dir.filePath("file/out") : target;
            const Run r =
                run({"--cycles", "2", "--interval", "0", option, path}, m_settings.path());
            QCOMPARE(r.exitCode, 4);
            QVERIFY2(r.err.contains(reason) && !r.err.contains("Unknown error"), r.err.constData());
            QVERIFY(!QFileInfo(path).isFile()); // a device written to stays the device it was
        }
    }
    void badArgumentsGiveExitCode2()
    {
        for (const QStringList &args :
             {QStringList{"--cycles", "zero"}, QStringList{"--backend=martian"},
              QStringList{"--interval", "-1"}}) {
            const Run r = run(args, m_settings.path());
            QCOMPARE(r.exitCode, 2);
            QVERIFY(r.err.contains("--headless"));
        }
    }
    void sigtermLeavesACompleteLog()
    {
        QTemporaryDir dir;
        const QString log = dir.filePath("log.tsv");
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("XDG_CONFIG_HOME", m_settings.path());
        p.setProcessEnvironment(env);
        p.start(binary(),
                {"--headless", "--backend=simulated", "--interval", "0.05", "--log-tsv", log});
        QVERIFY(p.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(stamps(log).size() > 20, 30000);
        ::kill(pid_t(p.processId()), SIGTERM);
        QVERIFY(p.waitForFinished(20000));
        QCOMPARE(p.exitStatus(), QProcess::NormalExit);
        QCOMPARE(p.exitCode(), 0);
        QVERIFY(!stamps(log).isEmpty());
    }

    // Every network of the reference decoding is exported, on its channel and band, with its
    // name shown or hidden and its ad-hoc mode as the reference says. (The decoding itself is
    // checked field by field in the wireless tests.)
    void replayedBeaconsMatchTheReference()
    {
        const QString dir = qEnvironmentVariable("CORVANE_TESTDATA_DIR") + "/beacons";
        QFile reference(dir + "/expected.tsv");
        if (!reference.open(QIODevice::ReadOnly))
            QSKIP("the beacon captures are not available");
        const QStringList head = QString::fromUtf8(reference.readLine()).trimmed().split('\t');
        QHash<QString, QList<QStringList>> expected; // capture file -> reference rows
        while (!reference.atEnd()) {
            const QString line = QString::fromUtf8(reference.readLine()).trimmed();
            if (!line.isEmpty())
                expected[line.section('\t', 0, 0)] << line.split('\t');
        }
        auto cell = [&head](const QStringList &row, const char *column) {
            return row.value(head.indexOf(QLatin1String(column)));
        };
        QStringList mismatches;
        int compared = 0;
        for (auto it = expected.cbegin(); it != expected.cend(); ++it) {
            const Run r = run({"--backend=replay", "--capture", dir + '/' + it.key(), "--speed",
                               "0", "--interval", "0", "--export-tsv", "-"},
                              m_settings.path());
            QVERIFY2(r.exitCode == 0, qPrintable(it.key() + ' ' + r.err));
            QHash<QString, QStringList> rows; // BSSID -> exported row
            for (const QByteArray &line : r.out.split('\n')) {
                const QStringList cells = QString::fromUtf8(line).split('\t');
                if (cells.size() == 22)
                    rows.insert(cells.at(1), cells);
            }
            for (const QStringList &e : it.value()) {
                const QStringList row = rows.value(cell(e, "bssid"));
                const QString channel = cell(e, "channel").isEmpty() ? cell(e, "ht_primary_channel")
                                                                     : cell(e, "channel");
                const QStringList want = {cell(e, "ssid_hidden") == "no" ? "named" : "hidden",
                                          channel,
                                          cell(e, "label").contains("5GHz") ? "5GHz" : "2.4GHz",
                                          cell(e, "ibss") == "1" ? "Yes" : "No"};
                const QStringList got =
                    row.isEmpty() ? QStringList{"not exported"}
                                  : QStringList{row.at(0) == "(null)" ? "hidden" : "named",
                                                row.at(18), row.at(19), row.at(21)};
                if (got != want)
                    mismatches << QStringLiteral("%1 %2: got %3, expected %4")
                                      .arg(it.key(), cell(e, "bssid"), got.join(' '),
                                           want.join(' '));
                ++compared;
            }
        }
        QVERIFY2(mismatches.isEmpty(), qPrintable(mismatches.join('\n')));
        QVERIFY(compared > 40);
    }

private:
    QTemporaryDir m_settings;
};

QTEST_GUILESS_MAIN(TestHeadless)
#include "tst_headless.moc"

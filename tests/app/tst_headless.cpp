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

// The program with a settings folder of the test's own. It holds no widgets: every path,
// failures included, frees what it holds, and a sanitizer build says so with a leak report
// (and another exit code).
void prepare(QProcess &p)
{
    static QTemporaryDir settings;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("XDG_CONFIG_HOME", settings.path());
    env.insert("ASAN_OPTIONS", "detect_leaks=1");
    p.setProcessEnvironment(env);
}

// The headless program with these options, on the seeded simulated radio unless they name
// a backend.
Run run(QStringList arguments)
{
    QProcess p;
    prepare(p);
    if (!arguments.join(' ').contains("--backend="))
        arguments += {"--backend=simulated", "--seed", "3"};
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
            run({"--cycles", "5", "--interval", "0.02", "--log-tsv", log, "--export-tsv", "-"});
        QCOMPARE(r.exitCode, 0);
        QVERIFY(r.out.startsWith("Network Name\tBSSID\tComment\t"));
        QVERIFY(r.out.count('\n') > 5);
        const QStringList s = stamps(log);
        QCOMPARE(QSet<QString>(s.begin(), s.end()).size(), 5);

        const QString html = dir.filePath("out.html");
        QCOMPARE(run({"--cycles", "1", "--filter", "no such network", "--export-html", html,
                      "--log-tsv", log})
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
            const Run r = run({"--cycles", "2", "--interval", "0", option, path});
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
            const Run r = run(args);
            QCOMPARE(r.exitCode, 2);
            QVERIFY(r.err.contains("--headless"));
        }
    }
    void sigtermLeavesACompleteLog()
    {
        QTemporaryDir dir;
        const QString log = dir.filePath("log.tsv");
        QProcess p;
        prepare(p);
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

    // Real captured beacons replayed at full speed: every network of the reference decoding
    // is exported. (The decoding itself is checked field by field in the wireless tests.)
    void replayedBeaconsAreExported()
    {
        const QString dir = qEnvironmentVariable("CORVANE_TESTDATA_DIR") + "/beacons";
        QFile reference(dir + "/expected.tsv");
        if (!reference.open(QIODevice::ReadOnly))
            QSKIP("the beacon captures are not available");
        QHash<QString, QByteArray> exported; // capture file -> its export
        int compared = 0;
        for (const QByteArray &line : reference.readAll().split('\n').mid(1)) {
            const QList<QByteArray> cells = line.split('\t'); // file, frame, BSSID, ...
            if (cells.size() < 3)
                continue;
            const QString file = QString::fromUtf8(cells[0]);
            if (!exported.contains(file)) {
                const Run r = run({"--backend=replay", "--capture", dir + '/' + file, "--speed",
                                   "0", "--interval", "0", "--export-tsv", "-"});
                QVERIFY2(r.exitCode == 0, r.err.constData());
                exported[file] = r.out;
            }
            QVERIFY2(exported[file].contains('\t' + cells[2] + '\t'), line.constData());
            ++compared;
        }
        QVERIFY(compared > 40);
    }
};

QTEST_GUILESS_MAIN(TestHeadless)
#include "tst_headless.moc"

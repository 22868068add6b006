// SPDX-License-Identifier: GPL-3.0-or-later
// The built program in headless mode: cycles, the log, exports, exit codes, signals.
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

namespace {
QString binary()
{
    return qEnvironmentVariable("CORVANE_BINARY");
}

QStringList simulated()
{
    return {"--headless", "--backend=simulated", "--seed", "3"};
}

struct Run
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

Run run(const QStringList &arguments, const QString &settingsDir)
{
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("XDG_CONFIG_HOME", settingsDir);
    // The headless program holds no widgets: every path, failures included, frees what it
    // holds, and a sanitizer build says so with a leak report (and another exit code).
    env.insert("ASAN_OPTIONS", "detect_leaks=1");
    p.setProcessEnvironment(env);
    p.start(binary(), arguments);
    p.waitForFinished(60000);
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, p.readAllStandardOutput(),
            p.readAllStandardError()};
}

// The time stamps of a log, one per line, after the head line.
QStringList stamps(const QByteArray &log)
{
    QStringList result;
    const QList<QByteArray> lines = log.split('\n');
    for (qsizetype i = 1; i < lines.size(); ++i) {
        if (!lines.at(i).isEmpty())
            result << QString::fromUtf8(lines.at(i).left(lines.at(i).indexOf('\t')));
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
        const Run r = run(simulated() << QStringLiteral("--cycles") << QStringLiteral("5")
                                      << QStringLiteral("--interval") << QStringLiteral("0.02")
                                      << QStringLiteral("--log-tsv") << log
                                      << QStringLiteral("--export-tsv") << QStringLiteral("-"),
                          m_settings.path());
        QCOMPARE(r.exitCode, 0);
        QVERIFY(r.out.startsWith("Network Name\tBSSID\tComment\t"));
        QVERIFY(r.out.count('\n') > 5);
        QFile f(log);
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray text = f.readAll();
        QVERIFY(text.startsWith("Time\tNetwork Name\tBSSID\t"));
        QVERIFY(text.endsWith('\n'));
        const QStringList s = stamps(text);
        QCOMPARE(QSet<QString>(s.begin(), s.end()).size(), 5);
        for (const QString &stamp : s)
            QVERIFY2(QDateTime::fromString(stamp, Qt::ISODateWithMs).isValid(), qPrintable(stamp));

        const QString html = dir.filePath("out.html");
        QCOMPARE(run(simulated() << QStringLiteral("--cycles") << QStringLiteral("1")
                                 << QStringLiteral("--filter") << QStringLiteral("no such network")
                                 << QStringLiteral("--export-html") << html
                                 << QStringLiteral("--log-tsv") << log,
                     m_settings.path())
                     .exitCode,
                 0);
        f.close();
        QVERIFY(f.open(QIODevice::ReadOnly));
        QCOMPARE(f.readAll().count("Time\tNetwork Name"), 1);
        QFile page(html);
        QVERIFY(page.open(QIODevice::ReadOnly));
        const QByteArray document = page.readAll();
        QVERIFY(document.startsWith("<html><head>"));
        QVERIFY(!document.contains("<tr><td>")); // the filter left no rows
    }
    void unwritableOutputGivesExitCode4_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<QString>("target");    // "blocked": a path below a plain file
        QTest::addColumn<QByteArray>("reason"); // what the message must name
        auto row = [](const char *name, const char *option, const char *target,
                      const char *reason = "No space left on device") {
            QTest::newRow(name) << QString(option) << QString(target) << QByteArray(reason);
        };
        row("export below a file", "--export-tsv", "blocked", "Cannot write");
        row("log below a file", "--log-tsv", "blocked", "Cannot write the log");
        row("tsv to a full device", "--export-tsv", "/dev/full");
        row("html to a full device", "--export-html", "/dev/full");
        row("log to a full device", "--log-tsv", "/dev/full");
        row("tsv to a full file system", "--export-tsv", "tiny");
        row("log to a full file system", "--log-tsv", "tiny");
    }
    void unwritableOutputGivesExitCode4()
    {
        QFETCH(QString, option);
        QFETCH(QString, target);
        QFETCH(QByteArray, reason);
        QTemporaryDir dir;
        QString path = target;
        QString mountPoint;
        auto unmount = qScopeGuard([&mountPoint] {
            if (!mountPoint.isEmpty())
                QProcess::execute("umount", {mountPoint});
        });
        if (target == "blocked") {
            QFile blocker(dir.filePath("file"));
            QVERIFY(blocker.open(QIODevice::WriteOnly));
            blocker.close();
            path = dir.filePath("file/out");
        } else if (target == "tiny") {
            // A small file system, filled up: only root may make one.
            const QString point = dir.filePath("tiny");
            QVERIFY(QDir().mkpath(point));
            if (QProcess::execute("mount", {"-t", "tmpfs", "-o", "size=16k", "tmpfs", point}) != 0)
                QSKIP("no permission to mount a small tmpfs");
            mountPoint = point;
            QFile fill(point + "/fill");
            QVERIFY(fill.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
            const QByteArray block(512, 'x');
            while (fill.write(block) == block.size()) {
            }
            fill.close();
            path = point + "/out";
        }
        const Run r = run(simulated() << QStringLiteral("--cycles") << QStringLiteral("2")
                                      << QStringLiteral("--interval") << QStringLiteral("0")
                                      << option << path,
                          m_settings.path());
        QCOMPARE(r.exitCode, 4);
        QVERIFY2(r.err.contains(reason), r.err.constData());
        QVERIFY2(!r.err.contains("Unknown error"), r.err.constData());
        // A device written to stays the device it was.
        if (target.startsWith("/dev/"))
            QVERIFY(!QFileInfo(target).isFile());
        // Nothing half written replaces an export.
        if (option != "--log-tsv" && target == "tiny")
            QVERIFY(!QFileInfo::exists(path) || QFileInfo(path).size() == 0);
    }
    void badArgumentsGiveExitCode2()
    {
        for (const QStringList &args :
             {QStringList{"--headless", "--cycles", "zero"},
              QStringList{"--headless", "--backend=martian"},
              QStringList{"--headless", "--interval", "-1"}, QStringList{"--log-tsv", "x"}}) {
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
        p.start(binary(), simulated() << QStringLiteral("--interval") << QStringLiteral("0.05")
                                      << QStringLiteral("--log-tsv") << log);
        QVERIFY(p.waitForStarted());
        // Wait for a few cycles to land in the log.
        auto logLines = [&log] {
            QFile f(log);
            return f.open(QIODevice::ReadOnly) ? stamps(f.readAll()).size() : 0;
        };
        QTRY_VERIFY_WITH_TIMEOUT(logLines() > 20, 30000);
        ::kill(pid_t(p.processId()), SIGTERM);
        QVERIFY(p.waitForFinished(20000));
        QCOMPARE(p.exitStatus(), QProcess::NormalExit);
        QCOMPARE(p.exitCode(), 0);
        QFile f(log);
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray text = f.readAll();
        QVERIFY(text.endsWith('\n'));
        for (const QString &stamp : stamps(text))
            QVERIFY(QDateTime::fromString(stamp, Qt::ISODateWithMs).isValid());
    }

private:
    QTemporaryDir m_settings;
};

QTEST_GUILESS_MAIN(TestHeadless)
#include "tst_headless.moc"

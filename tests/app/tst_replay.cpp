// SPDX-License-Identifier: GPL-3.0-or-later
// Real captured beacons replayed through the built program, headless at full speed: the
// exported rows must say what the reference decoding of each frame implies.
#include <QDir>
#include <QFile>
#include <QHash>
#include <QProcess>
#include <QSet>
#include <QtTest>

namespace {
struct Expected
{
    QString file, bssid, ssidHidden, label, channel, htPrimary, rates, hasHt, ht40, vhtWidth, ibss;
};

QList<Expected> readExpected(const QString &path)
{
    QList<Expected> rows;
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return rows;
    const QList<QByteArray> lines = f.readAll().split('\n');
    const QList<QByteArray> head = lines.value(0).split('\t');
    auto col = [&head](const char *name) { return head.indexOf(QByteArray(name)); };
    for (qsizetype i = 1; i < lines.size(); ++i) {
        if (lines.at(i).isEmpty())
            continue;
        const QList<QByteArray> c = lines.at(i).split('\t');
        auto v = [&c](int index) { return QString::fromUtf8(c.value(index)); };
        rows.append({v(col("file")), v(col("bssid")), v(col("ssid_hidden")), v(col("label")),
                     v(col("channel")), v(col("ht_primary_channel")), v(col("rates")),
                     v(col("has_ht")), v(col("ht_40mhz")), v(col("vht_width")), v(col("ibss"))});
    }
    return rows;
}

// The security text the table shows for the reference label's security class.
QString securityText(const QString &label)
{
    const QString kind = label.section(QLatin1Char(' '), 0, 0);
    const bool mixed = kind.startsWith("WPA/");
    if (kind == "open" || kind == "OWE")
        return QString();
    if (kind == "WEP")
        return "WEP";
    if (kind.contains("EAP")) {
        if (mixed)
            return "WPA/WPA2 Enterprise";
        return kind.contains("WPA2") ? "WPA2 Enterprise" : "WPA Enterprise";
    }
    // PSK and SAE (which counts as WPA2 personal).
    if (mixed)
        return "WPA/WPA2 Personal";
    return kind == "WPA-PSK" ? "WPA Personal" : "WPA2 Personal";
}

QString phyText(const Expected &e, bool fiveGHz)
{
    bool cck = false, ofdm = false;
    for (QString rate : e.rates.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        rate.remove(QLatin1Char('*'));
        if (QStringList{"1", "2", "5.5", "11"}.contains(rate))
            cck = true;
        else if (QStringList{"6", "9", "12", "18", "24", "36", "48", "54"}.contains(rate))
            ofdm = true;
    }
    QStringList letters;
    if (fiveGHz && ofdm)
        letters << QStringLiteral("a");
    if (!fiveGHz && cck)
        letters << QStringLiteral("b");
    if (!fiveGHz && ofdm)
        letters << QStringLiteral("g");
    if (e.hasHt == "1")
        letters << QStringLiteral("n");
    return "802.11" + letters.join(QLatin1Char('/'));
}

QString widthText(const Expected &e)
{
    if (e.vhtWidth == "80" || e.vhtWidth == "160" || e.vhtWidth == "80+80")
        return QString(); // wider channels have no text of their own
    return e.ht40 == "1" ? "40MHz" : "20MHz";
}
} // namespace

class TestReplay : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void exportedRowsMatchTheReference()
    {
        const QString binary = qEnvironmentVariable("CORVANE_BINARY");
        const QString dir = qEnvironmentVariable("CORVANE_TESTDATA_DIR") + "/beacons";
        if (binary.isEmpty() || !QFile::exists(dir + "/expected.tsv"))
            QSKIP("the program or the beacon captures are not available");
        const QList<Expected> expected = readExpected(dir + "/expected.tsv");
        QVERIFY(expected.size() > 40);

        QSet<QString> files;
        for (const Expected &e : expected)
            files.insert(e.file);
        QTemporaryDir settings;
        QStringList mismatches;
        int compared = 0;
        for (const QString &file : files) {
            QProcess p;
            QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
            env.insert("XDG_CONFIG_HOME", settings.path());
            p.setProcessEnvironment(env);
            p.start(binary,
                    {"--headless", "--backend=replay", "--capture", dir + QLatin1Char('/') + file,
                     "--speed", "0", "--interval", "0", "--export-tsv", "-"});
            QVERIFY2(p.waitForFinished(60000), qPrintable(file));
            QVERIFY2(p.exitCode() == 0, qPrintable(file + QLatin1Char(' ') +
                                                   QString::fromUtf8(p.readAllStandardError())));
            QHash<QString, QStringList> rows;
            for (const QByteArray &line : p.readAllStandardOutput().split('\n')) {
                const QStringList cells = QString::fromUtf8(line).split(QLatin1Char('\t'));
                if (cells.size() == 22)
                    rows.insert(cells.at(1), cells);
            }
            for (const Expected &e : expected) {
                if (e.file != file)
                    continue;
                const QStringList row = rows.value(e.bssid);
                if (row.isEmpty()) {
                    mismatches << QStringLiteral("%1 %2: not exported").arg(file, e.bssid);
                    continue;
                }
                ++compared;
                const bool five = e.label.contains("5GHz");
                const QString channel = e.channel.isEmpty() ? e.htPrimary : e.channel;
                const QList<QPair<QString, QPair<QString, QString>>> checks = {
                    {"security", {row.at(16), securityText(e.label)}},
                    {"phy", {row.at(17), phyText(e, five)}},
                    {"channel", {row.at(18), channel}},
                    {"band", {row.at(19), five ? "5GHz" : "2.4GHz"}},
                    {"width", {row.at(20), widthText(e)}},
                    {"ibss", {row.at(21), e.ibss == "1" ? "Yes" : "No"}},
                    {"name",
                     {row.at(0) == "(null)" ? "hidden" : "named",
                      e.ssidHidden == "no" ? "named" : "hidden"}},
                };
                for (const auto &[what, values] : checks) {
                    if (values.first != values.second)
                        mismatches << QStringLiteral("%1 %2 %3: got \"%4\", expected \"%5\"")
                                          .arg(file, e.bssid, what, values.first, values.second);
                }
            }
        }
        QVERIFY2(mismatches.isEmpty(), qPrintable(mismatches.join(QLatin1Char('\n'))));
        QCOMPARE(compared, expected.size());
    }
};

QTEST_GUILESS_MAIN(TestReplay)
#include "tst_replay.moc"

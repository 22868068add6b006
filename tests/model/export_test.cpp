// SPDX-License-Identifier: GPL-3.0-or-later
// Export rows, heads and whole documents.
#include "model/ExportDocument.h"
#include "support/NetworkBuilder.h"
#include "util/Clock.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTimeZone>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <limits>

namespace {

const QDateTime kT0(QDate(2024, 5, 1), QTime(12, 0, 0), Qt::UTC);

NetworkObjectRef homeRecord()
{
    return NetworkObject::objectWithCWNetwork(NetworkBuilder(), kT0);
}

} // namespace

TEST(ExportRows, TabSeparatedAndHtmlRowsOfOneRecord)
{
    const auto rec = homeRecord();
    // 43% signal is "Good"; open security is the empty text, not "(null)".
    const QString expected = QStringLiteral("Home\t00:11:22:33:44:55\t\tGood\t43%\t43%\t43%\t43%\t"
                                            "15%\t15%\t15%\t15%\t40dB\t40dB\t40dB\t40dB\t\t"
                                            "802.11g/n\t6\t2.4GHz\t20MHz\tNo\n");
    EXPECT_EQ(rec->csvString(), expected);

    QString html = QStringLiteral("<tr>");
    const QStringList cells = expected.chopped(1).split(QLatin1Char('\t'));
    ASSERT_EQ(cells.size(), 22);
    for (const QString &cell : cells)
        html += QStringLiteral("<td>") + cell + QStringLiteral("</td>");
    EXPECT_EQ(rec->htmlRowString(), html + QStringLiteral("</tr>"));
}

TEST(ExportRows, ColumnValuesAsTheyAre)
{
    const struct
    {
        const char *what;
        NetworkBuilder network;
        std::optional<QString> comment;
        int column;       // 0-based, in the tab-separated line
        const char *text; // expected cell
        int cells;        // cells on the line (a tab in a value adds some)
    } rows[] = {
        {"absent comment is empty", NetworkBuilder(), std::nullopt, 2, "", 22},
        {"hidden name", NetworkBuilder().hidden(), std::nullopt, 0, "(null)", 22},
        {"unnamed security", NetworkBuilder().securities({}), std::nullopt, 16, "(null)", 22},
        {"channel 149", NetworkBuilder().channel(149, 2, 2), std::nullopt, 18, "149", 22},
        {"wide channel", NetworkBuilder().channel(42, 2, 3), std::nullopt, 20, "", 22},
        {"tab in name shifts", NetworkBuilder().ssid("a\tb"), std::nullopt, 1, "b", 23},
        {"tab in comment shifts", NetworkBuilder(), QStringLiteral("x\ty\tz"), 4, "z", 24},
        {"IBSS", NetworkBuilder().ibss(true), std::nullopt, 21, "Yes", 22},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        const auto rec = NetworkObject::objectWithCWNetwork(row.network, kT0);
        rec->setComment(row.comment);
        const QString line = rec->csvString();
        ASSERT_TRUE(line.endsWith(QLatin1Char('\n')));
        const QStringList cells = line.chopped(1).split(QLatin1Char('\t'));
        ASSERT_EQ(cells.size(), row.cells);
        EXPECT_EQ(cells.at(row.column), QString::fromUtf8(row.text));
        if (row.cells == 22) {
            const QString cell =
                QStringLiteral("<td>") + QString::fromUtf8(row.text) + QStringLiteral("</td>");
            EXPECT_TRUE(rec->htmlRowString().contains(cell));
        }
    }

    const auto markup = NetworkObject::objectWithCWNetwork(NetworkBuilder().ssid("<b>&amp;"), kT0);
    EXPECT_TRUE(markup->htmlRowString().startsWith(QStringLiteral("<tr><td><b>&amp;</td><td>")));
}

TEST(ExportRows, HeadsNameTwentyTwoColumns)
{
    const QString csv = NetworkObject::csvHeadString();
    EXPECT_TRUE(csv.startsWith(QStringLiteral("Network Name\tBSSID\tComment\tSignal Quality\t")));
    EXPECT_TRUE(csv.endsWith(QStringLiteral("\tChannel\tBand\tChannel Width\tIBSS\n")));
    EXPECT_EQ(csv.count(QLatin1Char('\t')), 21);
    // 10 single columns spanning both head rows, 3 groups of 4 with their sub-heads.
    const QString html = NetworkObject::htmlTableHeadString();
    EXPECT_EQ(std::tuple(html.count(QStringLiteral("<th rowspan=2>")),
                         html.count(QStringLiteral("<th colspan=4>")),
                         html.count(QStringLiteral(
                             "<th>Current</th><th>Avg</th><th>Min</th><th>Max</th>"))),
              std::tuple(10, 3, 3));
    EXPECT_TRUE(html.startsWith(QStringLiteral("<tr><th rowspan=2>Network Name</th>")));
}

TEST(ExportDocument, RowsInTableOrderSkippingIndicesPastTheEnd)
{
    NetworkList list;
    list.append(NetworkObject::objectWithCWNetwork(NetworkBuilder().ssid("first"), kT0));
    list.append(NetworkObject::objectWithCWNetwork(
        NetworkBuilder().ssid("second").bssid("00:00:00:00:00:02"), kT0));
    const QList<quint64> rows{1, 2, 0, 99, std::numeric_limits<quint64>::max()};

    EXPECT_EQ(ExportDocument::tabSeparated(list, rows),
              NetworkObject::csvHeadString() + list.at(1)->csvString() + list.at(0)->csvString());
    EXPECT_EQ(ExportDocument::tabSeparated(NetworkList(), rows), NetworkObject::csvHeadString());

    const QString html = ExportDocument::html(list, rows, kT0);
    EXPECT_EQ(html, ExportDocument::htmlHeader(kT0) + NetworkObject::htmlTableHeadString() +
                        list.at(1)->htmlRowString() + list.at(0)->htmlRowString() +
                        QStringLiteral("</table></body></html>"));
    EXPECT_EQ(ExportDocument::html(list, {}, kT0), ExportDocument::htmlHeader(kT0) +
                                                       NetworkObject::htmlTableHeadString() +
                                                       QStringLiteral("</table></body></html>"));
}

TEST(ExportDocument, HtmlHeaderNamesTheSiteAndTheDate)
{
    const QString site = QStringLiteral(CORVANE_WEB_ADDRESS);
    const QString expected =
        QStringLiteral("<html><head><meta http-equiv=\"Content-type\" content=\"text/html; "
                       "charset=utf-8\"><meta name=\"description\" content=\"Created by "
                       "Corvane (") +
        site + QStringLiteral(")\"><title> WiFi Details - Created by Corvane (") + site +
        QStringLiteral(")</title><style>th{background-color:#666;\ncolor:#eee;}</style></head>"
                       "<body><h2>WiFi Details</h2><div>2024-05-01 12:00:00 +0000</div>"
                       "<br><br><table>");
    EXPECT_EQ(ExportDocument::htmlHeader(kT0), expected);

    // The default date comes from the clock.
    ManualClock clock(kT0.addSecs(61));
    Clock::setInstance(&clock);
    EXPECT_TRUE(ExportDocument::html(NetworkList(), {})
                    .contains(QStringLiteral("<div>2024-05-01 12:01:01 +0000</div>")));
    Clock::setInstance(nullptr);

    const struct
    {
        QDateTime date;
        const char *text;
    } dates[] = {
        {QDateTime(QDate(2024, 5, 1), QTime(14, 3, 9), QTimeZone(7200)),
         "2024-05-01 14:03:09 +0200"},
        {QDateTime(QDate(1999, 12, 31), QTime(23, 59, 59, 999), QTimeZone(-(3 * 3600 + 1800))),
         "1999-12-31 23:59:59 -0330"},
        {QDateTime(), ""},
    };
    for (const auto &row : dates)
        EXPECT_EQ(ExportDocument::dateDescription(row.date), QLatin1StringView(row.text));
}

TEST(ExportDocument, WritesUtf8AtomicallyOrReportsWhy)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("wifi-details.csv"));
    const QString text = QStringLiteral("Caf\u00e9\t\u00fc\n");
    QString error;
    ASSERT_TRUE(ExportDocument::writeDocument(path, QStringLiteral("old and longer"), &error));
    ASSERT_TRUE(ExportDocument::writeDocument(path, text, &error)) << error.toStdString();
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), text.toUtf8());

    EXPECT_FALSE(ExportDocument::writeDocument(dir.filePath(QStringLiteral("missing/x.html")), text,
                                               &error));
    EXPECT_FALSE(error.isEmpty());

    // A full disk says so, even where Qt's own text lost the reason.
    if (QFile::exists(QStringLiteral("/dev/full"))) {
        EXPECT_FALSE(ExportDocument::writeDocument(QStringLiteral("/dev/full"), text, &error));
        EXPECT_EQ(error, QString::fromLocal8Bit(std::strerror(ENOSPC)));
    }
    QFile never(dir.filePath(QStringLiteral("never")));
    EXPECT_EQ(ExportDocument::failureReason(never, ENOSPC),
              QString::fromLocal8Bit(std::strerror(ENOSPC)));
    EXPECT_EQ(ExportDocument::failureReason(never, 0), never.errorString());
}

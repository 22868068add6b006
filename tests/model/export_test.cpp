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

TEST(ExportRows, RowsHeadsAndCellValuesAsTheyAre)
{
    const auto rec = NetworkBuilder().record();
    // 43% signal is "Good"; open security is the empty text, not "(null)".
    const QString expected = QStringLiteral("Home\t00:11:22:33:44:55\t\tGood\t43%\t43%\t43%\t43%\t"
                                            "15%\t15%\t15%\t15%\t40dB\t40dB\t40dB\t40dB\t\t"
                                            "802.11g/n\t6\t2.4GHz\t20MHz\tNo\n");
    EXPECT_EQ(rec->csvString(), expected);
    const QStringList cells = expected.chopped(1).split(u'\t');
    EXPECT_EQ(rec->htmlRowString(), QStringLiteral("<tr><td>") +
                                        cells.join(QStringLiteral("</td><td>")) +
                                        QStringLiteral("</td></tr>"));
    const QString head = NetworkObject::csvHeadString();
    EXPECT_TRUE(head.startsWith(QStringLiteral("Network Name\tBSSID\tComment\tSignal Quality\t")));
    EXPECT_TRUE(head.endsWith(QStringLiteral("\tChannel\tBand\tChannel Width\tIBSS\n")));
    EXPECT_EQ(head.count(u'\t'), 21);
    // 10 single columns spanning both head rows, 3 groups of 4 with their sub-heads.
    const QString html = NetworkObject::htmlTableHeadString();
    EXPECT_EQ(std::pair(html.count(QStringLiteral("<th rowspan=2>")),
                        html.count(QStringLiteral("<th colspan=4>"))),
              std::pair(qsizetype(10), qsizetype(3)));

    const struct
    {
        NetworkBuilder network;
        std::optional<QString> comment;
        int column, cells; // a tab in a value adds cells
        const char *text;
    } rows[] = {
        {NetworkBuilder().hidden(), std::nullopt, 0, 22, "(null)"},
        {NetworkBuilder().securities({}), std::nullopt, 16, 22, "(null)"},
        {NetworkBuilder().channel(42, 2, 3), std::nullopt, 20, 22, ""}, // an 80 MHz code
        {NetworkBuilder().ssid("a\tb"), std::nullopt, 1, 23, "b"},
        {NetworkBuilder(), QStringLiteral("x\ty\tz"), 4, 24, "z"},
        {NetworkBuilder().ibss(true), std::nullopt, 21, 22, "Yes"},
    };
    for (const auto &row : rows) {
        const auto r = row.network.record();
        r->setComment(row.comment);
        const QStringList cells = r->csvString().chopped(1).split(u'\t');
        ASSERT_EQ(cells.size(), row.cells) << row.text;
        EXPECT_EQ(cells.at(row.column), QString::fromUtf8(row.text));
    }
    const auto markup = NetworkBuilder().ssid("<b>&amp;").record();
    EXPECT_TRUE(markup->htmlRowString().startsWith(QStringLiteral("<tr><td><b>&amp;</td><td>")));
}

TEST(ExportDocument, RowsInTableOrderSkippingIndicesPastTheEnd)
{
    NetworkList list;
    list.append(NetworkBuilder().ssid("first").record());
    list.append(NetworkBuilder().ssid("second").bssid("00:00:00:00:00:02").record());
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

    // The default date comes from the clock; offsets west of UTC keep their minutes.
    ManualClock clock(kT0.addSecs(61));
    Clock::setInstance(&clock);
    EXPECT_TRUE(ExportDocument::html(NetworkList(), {})
                    .contains(QStringLiteral("<div>2024-05-01 12:01:01 +0000</div>")));
    Clock::setInstance(nullptr);
    EXPECT_EQ(ExportDocument::dateDescription(QDateTime(QDate(1999, 12, 31), QTime(23, 59, 59, 999),
                                                        QTimeZone(-(3 * 3600 + 1800)))),
              QStringLiteral("1999-12-31 23:59:59 -0330"));
    EXPECT_EQ(ExportDocument::dateDescription(QDateTime()), QString());
}

TEST(ExportDocument, WritesUtf8AtomicallyOrReportsWhy)
{
    QTemporaryDir dir;
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

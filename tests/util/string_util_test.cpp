// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/StreamAlertPresenter.h"
#include "util/StringUtil.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

TEST(StringUtil, Searches)
{
    struct Row
    {
        const char *text;
        const char *needle;
        bool ignoreCase;
        bool exact;
    };
    const Row rows[] = {
        {"MyNetwork", "NET", true, false},
        {"MyNetwork", "Net", true, true},
        {"MyNetwork", "", false, false},             // nothing is never found
        {"CAF\xc3\x89", "caf\xc3\xa9", true, false}, // Unicode lower-casing
        {"abc", "abcd", false, false},
    };
    for (const Row &row : rows) {
        const QString text = QString::fromUtf8(row.text);
        const QString needle = QString::fromUtf8(row.needle);
        SCOPED_TRACE(row.text);
        EXPECT_EQ(StringUtil::containsStringIgnoreCase(text, needle), row.ignoreCase);
        EXPECT_EQ(StringUtil::containsString(text, needle), row.exact);
    }
    EXPECT_TRUE(StringUtil::hasPrefixIgnoreCase("MyNetwork", "mYn"));
    EXPECT_FALSE(StringUtil::hasPrefixIgnoreCase("MyNetwork", "Net"));
    EXPECT_FALSE(StringUtil::hasPrefixIgnoreCase("MyNetwork", ""));
    EXPECT_TRUE(StringUtil::hasSuffixIgnoreCase("MyNetwork", "WORK"));
    EXPECT_FALSE(StringUtil::hasSuffixIgnoreCase("MyNetwork", "My"));
}

TEST(StringUtil, PaddingIsAsymmetric)
{
    // Right padding reaches n - L, left padding exactly n.
    EXPECT_EQ(StringUtil::stringByAppendingSpaceToFixLength("ab", 10), "ab      ");
    EXPECT_EQ(StringUtil::stringByAppendingChar("abcdef", '.', 10), "abcdef");
    EXPECT_EQ(StringUtil::stringByAppendingChar("abcd", '.', 10), "abcd..");
    EXPECT_EQ(StringUtil::stringByPrependingSpaceToFixLength("ab", 10), "        ab");
    EXPECT_EQ(StringUtil::stringByPrependingChar("1234", '0', 3), "1234");
    // Lengths are UTF-16 units: one emoji counts as two.
    const QString emoji = QString::fromUtf8("\xf0\x9f\x93\xb6");
    EXPECT_EQ(StringUtil::stringByPrependingChar(emoji, ' ', 4), "  " + emoji);
}

TEST(StringUtil, UrlEncoding)
{
    const std::pair<const char *, const char *> rows[] = {
        {"a b", "a+b"},
        {"a/b", "a%2Fb"},
        {"\xc3\xa9", "%C3%A9"},
        {"~-._AZaz09", "~-._AZaz09"},
        {"100%&x=1", "100%25%26x%3D1"},
    };
    for (const auto &[in, out] : rows)
        EXPECT_EQ(StringUtil::urlEncodedString(QString::fromUtf8(in)), QString::fromUtf8(out))
            << in;
    EXPECT_EQ(StringUtil::urlEncodedString(QString(QChar(0))), "%00");
}

TEST(StringUtil, Digests)
{
    EXPECT_EQ(StringUtil::md5("abc"), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(StringUtil::sha1("abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
    // UTF-8 bytes are hashed: é is C3 A9.
    EXPECT_EQ(StringUtil::md5(QString::fromUtf8("\xc3\xa9")),
              StringUtil::md5(QString::fromLatin1("\xc3\xa9").toLatin1()));

    QTemporaryDir dir;
    const QString path = dir.filePath("data.bin");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    // Longer than one read chunk, and not a multiple of it.
    const QByteArray content = QByteArray("abc").repeated(5000);
    file.write(content);
    file.close();
    EXPECT_EQ(StringUtil::fileMD5(path), StringUtil::md5(QString::fromLatin1(content)));
    EXPECT_EQ(StringUtil::fileMD5(dir.filePath("missing")), "ERROR GETTING FILE MD5");
    EXPECT_EQ(StringUtil::fileMD5(dir.path()), "ERROR GETTING FILE MD5"); // a directory
}

TEST(StringUtil, TempPath)
{
    EXPECT_EQ(StringUtil::tempPathWithFilename("wifi-details", "csv"),
              QDir::temp().filePath("wifi-details.csv"));
    const QString escaped = StringUtil::tempPathWithFilename("../../etc/passwd", "x");
    EXPECT_EQ(QFileInfo(escaped).absolutePath(), QDir::temp().absolutePath());
    EXPECT_EQ(QFileInfo(StringUtil::tempPathWithFilename(QStringLiteral("a\\b") + QChar(0), "x"))
                  .fileName(),
              "a_b_.x");
}

TEST(StringUtil, SizeTexts)
{
    struct Row
    {
        qint64 size;
        bool decimal;
        int precision;
        const char *unit;
        bool space;
        const char *text;
    };
    const qint64 k = 1024;
    const Row rows[] = {
        {0, false, 2, "", false, "0B"},
        {1023, false, 2, "", true, "1023 B"},
        {1023, false, 2, "GMK", false, "1KB"}, // 0.999... prints 1.00
        {512, false, 2, "GMK", false, "0.5KB"},
        {1536, false, 2, "", true, "1.50 KB"}, // a space keeps the zeros
        {k * k * k * 2, false, 2, "", false, "2GB"},
        {999, true, 1, "", false, "999B"},
        {1000, true, 1, "", false, "1KB"},
        {10 * k, false, 0, "", false, "10KB"}, // no decimals: the zero is a digit
        {1126, false, 3, "", false, "1.1KB"},
        {k * k * k * k * 5, false, 1, "", false, "5120GB"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(StringUtil::stringOfSize(row.size, row.decimal, row.precision,
                                           QString::fromLatin1(row.unit), row.space),
                  QString::fromLatin1(row.text));
    }
    EXPECT_EQ(StringUtil::stringOfSize(1600, 1), "1.6KB");
    EXPECT_EQ(StringUtil::stringOfSizeWithDynamicUnitAndPrecision(100, 1), "0.1KB");
    EXPECT_EQ(StringUtil::stringOfSize1000(250, 2), "0.25KB");
}

TEST(StreamAlertPresenter, OneLineEachDismissedAtOnceOrWhenAllAre)
{
    StreamAlertPresenter alerts(false);
    int dismissed = 0;
    alerts.presentError(CWError(1, QStringLiteral("no radio")), [&] { ++dismissed; });
    EXPECT_EQ(alerts.lines(), QStringList{QStringLiteral("Error: no radio")});
    EXPECT_EQ(dismissed, 1);
    alerts.setKeepOpen(true);
    alerts.runAlert(QStringLiteral("a"), QStringLiteral("b"), {}, [&] { ++dismissed; });
    alerts.runAlert(QStringLiteral("c"), QStringLiteral("d"), {}, {}); // no callback: fine
    EXPECT_EQ(alerts.openAlerts(), 2);
    alerts.dismissAll();
    EXPECT_EQ(dismissed, 2);
    EXPECT_EQ(alerts.lines().last(), QStringLiteral("c: d"));
}

} // namespace

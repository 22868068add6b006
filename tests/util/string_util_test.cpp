// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/StringUtil.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

TEST(StringUtil, SearchesAndPadding)
{
    // Unicode lower-casing; nothing is never found.
    EXPECT_TRUE(StringUtil::containsStringIgnoreCase(QString::fromUtf8("CAF\xc3\x89"),
                                                     QString::fromUtf8("caf\xc3\xa9")));
    EXPECT_FALSE(StringUtil::containsString("MyNetwork", "NET") ||
                 StringUtil::containsStringIgnoreCase("MyNetwork", ""));
    EXPECT_TRUE(StringUtil::hasPrefixIgnoreCase("MyNetwork", "mYn") &&
                !StringUtil::hasPrefixIgnoreCase("MyNetwork", "") &&
                StringUtil::hasSuffixIgnoreCase("MyNetwork", "WORK"));

    // Right padding reaches n - L, left padding exactly n; lengths are UTF-16 units.
    EXPECT_EQ(StringUtil::stringByAppendingSpaceToFixLength("ab", 10), "ab      ");
    EXPECT_EQ(StringUtil::stringByAppendingChar("abcd", '.', 10), "abcd..");
    EXPECT_EQ(StringUtil::stringByPrependingChar("1234", '0', 3), "1234");
    const QString emoji = QString::fromUtf8("\xf0\x9f\x93\xb6");
    EXPECT_EQ(StringUtil::stringByPrependingChar(emoji, ' ', 4), "  " + emoji);
}

TEST(StringUtil, UrlEncodingDigestsAndTempPaths)
{
    const std::pair<const char *, const char *> rows[] = {{"a b", "a+b"},
                                                          {"\xc3\xa9", "%C3%A9"},
                                                          {"~-._AZaz09", "~-._AZaz09"},
                                                          {"100%&x=1", "100%25%26x%3D1"}};
    for (const auto &[in, out] : rows)
        EXPECT_EQ(StringUtil::urlEncodedString(QString::fromUtf8(in)), QString::fromUtf8(out));

    EXPECT_EQ(StringUtil::sha1("abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
    QTemporaryDir dir;
    QFile file(dir.filePath("data.bin"));
    // Longer than one read chunk, and not a multiple of it.
    const QByteArray content = QByteArray("abc").repeated(5000);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    file.close();
    EXPECT_EQ(StringUtil::fileMD5(file.fileName()), StringUtil::md5(QString::fromLatin1(content)));
    EXPECT_EQ(StringUtil::fileMD5(dir.filePath("missing")), "ERROR GETTING FILE MD5");

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
    const qint64 k = 1024;
    // Size, decimal units, precision, unit letters, space, text.
    const std::tuple<qint64, bool, int, const char *, bool, const char *> rows[] = {
        {0, false, 2, "", false, "0B"},
        {1023, false, 2, "GMK", false, "1KB"}, // 0.999... prints 1.00
        {1536, false, 2, "", true, "1.50 KB"}, // a space keeps the zeros
        {10 * k, false, 0, "", false, "10KB"}, // no decimals: the zero is a digit
        {k * k * k * k * 5, false, 1, "", false, "5120GB"},
    };
    for (const auto &[size, decimal, precision, unit, space, text] : rows)
        EXPECT_EQ(
            StringUtil::stringOfSize(size, decimal, precision, QString::fromLatin1(unit), space),
            QString::fromLatin1(text));
    EXPECT_EQ(StringUtil::stringOfSize(1600, 1), "1.6KB");
    EXPECT_EQ(StringUtil::stringOfSizeWithDynamicUnitAndPrecision(100, 1), "0.1KB");
    EXPECT_EQ(StringUtil::stringOfSize1000(250, 2), "0.25KB");
}

} // namespace

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// Small text helpers. Lengths count UTF-16 code units (QString::size()); operations on bytes
// work on the UTF-8 form.
class StringUtil
{
public:
    StringUtil() = delete;

    // Both sides lower-cased with Unicode rules, then searched. An empty needle is never
    // found (as with a plain substring search that reports no match for nothing), so a
    // filter with an empty text has to be handled by its caller.
    static bool containsStringIgnoreCase(const QString &text, const QString &needle);
    // Case-sensitive; an empty needle is not found either.
    static bool containsString(const QString &text, const QString &needle);
    // An empty prefix or suffix does not match, in line with the searches above.
    static bool hasPrefixIgnoreCase(const QString &text, const QString &prefix);
    static bool hasSuffixIgnoreCase(const QString &text, const QString &suffix);

    // Right padding pads to n - L, not to n: the result is max(L, n - L) long (two
    // characters padded to 10 give 8). Column texts have been laid out with this for a long
    // time, so it is not "fixed"; use the prepending forms for an exact width.
    static QString stringByAppendingChar(const QString &text, QChar c, qsizetype length);
    static QString stringByAppendingSpaceToFixLength(const QString &text, qsizetype length);
    // Left padding to exactly n (longer texts are returned unchanged).
    static QString stringByPrependingChar(const QString &text, QChar c, qsizetype length);
    static QString stringByPrependingSpaceToFixLength(const QString &text, qsizetype length);

    // Form encoding of the UTF-8 bytes: space -> "+", A-Z a-z 0-9 - . _ ~ as they are,
    // every other byte "%XX" with upper-case hex digits.
    static QString urlEncodedString(const QString &text);

    // Lower-case hexadecimal digests of the UTF-8 bytes.
    static QString md5(const QString &text);
    static QString sha1(const QString &text);
    // MD5 of a file's contents, or kFileMD5Error when it cannot be opened or read.
    static QString fileMD5(const QString &path);
    static inline const QString kFileMD5Error = QStringLiteral("ERROR GETTING FILE MD5");

    // "<temp dir>/<name>.<extension>". Separators in the parts are replaced by "_" so that a
    // name cannot lead out of the temporary directory.
    static QString tempPathWithFilename(const QString &filename, const QString &extension);

    // Size texts in B, KB, MB or GB (1000- or 1024-based). With unit "GMK" sizes below one
    // unit are shown in KB too. Zeros after the decimal point are dropped when the unit
    // follows the number directly ("1.50MB" -> "1.5MB", "2.00GB" -> "2GB"); with a space
    // before the unit the text stays as printed. Precision is clamped to 0..15.
    static QString stringOfSize(qint64 size, bool isDecimal, int precision, const QString &unit,
                                bool hasSpace);
    // The same without a space before the unit.
    static QString stringOfSize(qint64 size, bool isDecimal, int precision, const QString &unit);
    static QString stringOfSize(qint64 size, bool isDecimal, int precision);
    static QString stringOfSize(qint64 size, int precision);
    static QString stringOfSize(qint64 size); // 1024-based, two decimals
    // "GMK" units (never plain bytes), 1024- or 1000-based.
    static QString stringOfSizeWithDynamicUnitAndPrecision(qint64 size, int precision);
    static QString stringOfSize1000(qint64 size, int precision);
};

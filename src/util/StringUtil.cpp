// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/StringUtil.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>

#include <algorithm>

namespace {

const QString kDynamicUnit = QStringLiteral("GMK");

bool isUnreserved(unsigned char b)
{
    return (b >= 'A' && b <= 'Z') || (b >= 'a' && b <= 'z') || (b >= '0' && b <= '9') || b == '-' ||
           b == '.' || b == '_' || b == '~';
}

QString hexDigest(const QByteArray &bytes, QCryptographicHash::Algorithm algorithm)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, algorithm).toHex());
}

// "1.50MB" -> "1.5MB", "2.00GB" -> "2GB". Only a number with a decimal point is touched: with
// precision 0 the zeros before the unit are digits of the value ("10KB").
QString dropTrailingZeros(QString text)
{
    static const QString units[] = {QStringLiteral("KB"), QStringLiteral("MB"),
                                    QStringLiteral("GB")};
    if (std::none_of(std::begin(units), std::end(units),
                     [&](const QString &u) { return text.endsWith(u); }))
        return text;
    qsizetype end = text.size() - 2; // index just past the number
    const QString number = text.left(end);
    if (!number.contains(QLatin1Char('.')) || number.endsWith(QLatin1Char(' ')))
        return text;
    while (end > 0 && text.at(end - 1) == QLatin1Char('0'))
        text.remove(--end, 1);
    if (end > 0 && text.at(end - 1) == QLatin1Char('.'))
        text.remove(end - 1, 1);
    return text;
}

QString scaled(qint64 size, double divisor, int precision, const QString &space, const char *unit)
{
    // printf rounding, as the size texts have always been printed.
    return QString::asprintf("%.*f", precision, double(size) / divisor) + space +
           QLatin1String(unit);
}

QString safePathPart(QString part)
{
    part.replace(QLatin1Char('/'), QLatin1Char('_'));
    part.replace(QLatin1Char('\\'), QLatin1Char('_'));
    part.replace(QChar(0), QLatin1Char('_'));
    return part;
}

} // namespace

bool StringUtil::containsStringIgnoreCase(const QString &text, const QString &needle)
{
    if (needle.isEmpty())
        return false;
    return text.toLower().contains(needle.toLower());
}

bool StringUtil::containsString(const QString &text, const QString &needle)
{
    return !needle.isEmpty() && text.contains(needle);
}

bool StringUtil::hasPrefixIgnoreCase(const QString &text, const QString &prefix)
{
    return !prefix.isEmpty() && text.toLower().startsWith(prefix.toLower());
}

bool StringUtil::hasSuffixIgnoreCase(const QString &text, const QString &suffix)
{
    return !suffix.isEmpty() && text.toLower().endsWith(suffix.toLower());
}

QString StringUtil::stringByAppendingChar(const QString &text, QChar c, qsizetype length)
{
    const qsizetype l = text.size();
    if (l >= length)
        return text;
    QString out = text;
    if (out.size() < length - l)
        out.append(QString(length - l - out.size(), c));
    return out;
}

QString StringUtil::stringByAppendingSpaceToFixLength(const QString &text, qsizetype length)
{
    return stringByAppendingChar(text, QLatin1Char(' '), length);
}

QString StringUtil::stringByPrependingChar(const QString &text, QChar c, qsizetype length)
{
    const qsizetype l = text.size();
    if (l >= length)
        return text;
    return QString(length - l, c) + text;
}

QString StringUtil::stringByPrependingSpaceToFixLength(const QString &text, qsizetype length)
{
    return stringByPrependingChar(text, QLatin1Char(' '), length);
}

QString StringUtil::urlEncodedString(const QString &text)
{
    static const char hex[] = "0123456789ABCDEF";
    const QByteArray utf8 = text.toUtf8();
    QByteArray out;
    out.reserve(utf8.size() * 3);
    for (const char ch : utf8) {
        const auto b = static_cast<unsigned char>(ch);
        if (b == ' ') {
            out.append('+');
        } else if (isUnreserved(b)) {
            out.append(char(b));
        } else {
            out.append('%');
            out.append(hex[b >> 4]);
            out.append(hex[b & 0x0F]);
        }
    }
    return QString::fromLatin1(out);
}

QString StringUtil::md5(const QString &text)
{
    return hexDigest(text.toUtf8(), QCryptographicHash::Md5);
}

QString StringUtil::sha1(const QString &text)
{
    return hexDigest(text.toUtf8(), QCryptographicHash::Sha1);
}

QString StringUtil::fileMD5(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return kFileMD5Error;
    QCryptographicHash hash(QCryptographicHash::Md5);
    // Chunked so that a large file is never held in memory at once.
    char buffer[4096];
    for (;;) {
        const qint64 n = file.read(buffer, sizeof buffer);
        if (n < 0)
            return kFileMD5Error;
        if (n == 0)
            break;
        hash.addData(QByteArrayView(buffer, n));
    }
    return QString::fromLatin1(hash.result().toHex());
}

QString StringUtil::tempPathWithFilename(const QString &filename, const QString &extension)
{
    return QDir::temp().filePath(safePathPart(filename) + QLatin1Char('.') +
                                 safePathPart(extension));
}

QString StringUtil::stringOfSize(qint64 size, bool isDecimal, int precision, const QString &unit,
                                 bool hasSpace)
{
    const qint64 b = isDecimal ? 1000 : 1024;
    const qint64 m = b * b;
    const qint64 g = m * b;
    const QString space = hasSpace ? QStringLiteral(" ") : QString();
    precision = std::clamp(precision, 0, 15);

    if (unit != kDynamicUnit && size < b)
        return QString::number(size) + space + QLatin1Char('B');
    QString text;
    if (size < m)
        text = scaled(size, double(b), precision, space, "KB");
    else if (size < g)
        text = scaled(size, double(m), precision, space, "MB");
    else
        text = scaled(size, double(g), precision, space, "GB");
    return dropTrailingZeros(text);
}

QString StringUtil::stringOfSize(qint64 size, bool isDecimal, int precision, const QString &unit)
{
    return stringOfSize(size, isDecimal, precision, unit, false);
}

QString StringUtil::stringOfSize(qint64 size, bool isDecimal, int precision)
{
    return stringOfSize(size, isDecimal, precision, QString());
}

QString StringUtil::stringOfSize(qint64 size, int precision)
{
    return stringOfSize(size, false, precision);
}

QString StringUtil::stringOfSize(qint64 size)
{
    return stringOfSize(size, 2);
}

QString StringUtil::stringOfSizeWithDynamicUnitAndPrecision(qint64 size, int precision)
{
    return stringOfSize(size, false, precision, kDynamicUnit);
}

QString StringUtil::stringOfSize1000(qint64 size, int precision)
{
    return stringOfSize(size, true, precision, kDynamicUnit);
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "prefs/SettingsFileCheck.h"

#include <QFile>
#include <QFileInfo>
#include <QMetaType>
#include <QSaveFile>

namespace {

// Bigger files are not ours; they are left for QSettings and the store's own defaults.
constexpr qint64 kLargestChecked = 16 * 1024 * 1024;
constexpr int kDeepestNesting = 8;

// Reads a QDataStream (version 4.0, big-endian) payload without ever allocating: every
// count and length must fit in the bytes that are left.
class PayloadWalker
{
public:
    explicit PayloadWalker(const QByteArray &bytes) : m_data(bytes) {}

    bool variant(int depth)
    {
        quint32 type = 0;
        if (depth > kDeepestNesting || !number(type))
            return false;
        // Streams of this version number types past 127 differently; none of them is
        // anything this program stores.
        switch (type) {
        case QMetaType::UnknownType:
            return string(); // an empty variant is followed by an empty text
        case QMetaType::Bool:
            return skip(1);
        case QMetaType::QChar:
            return skip(2);
        case QMetaType::Int:
        case QMetaType::UInt:
            return skip(4);
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Double:
            return skip(8);
        case QMetaType::QString:
            return string();
        case QMetaType::QByteArray:
            return bytes();
        case QMetaType::QStringList:
            return sequence(4, [this] { return string(); });
        case QMetaType::QVariantList:
            return sequence(4, [this, depth] { return variant(depth + 1); });
        case QMetaType::QVariantMap:
        case QMetaType::QVariantHash:
            return sequence(8, [this, depth] { return string() && variant(depth + 1); });
        default:
            return false;
        }
    }

private:
    bool number(quint32 &out)
    {
        if (left() < 4)
            return false;
        const auto *p = reinterpret_cast<const uchar *>(m_data.constData()) + m_at;
        out = quint32(p[0]) << 24 | quint32(p[1]) << 16 | quint32(p[2]) << 8 | quint32(p[3]);
        m_at += 4;
        return true;
    }
    bool skip(quint32 count)
    {
        if (left() < count)
            return false;
        m_at += count;
        return true;
    }
    bool string()
    {
        quint32 length = 0;
        if (!number(length))
            return false;
        if (length == 0xffffffffu) // a null text
            return true;
        return length % 2 == 0 && skip(length);
    }
    bool bytes()
    {
        quint32 length = 0;
        if (!number(length))
            return false;
        return length == 0xffffffffu || skip(length);
    }
    template <typename Element> bool sequence(quint32 smallestElement, Element element)
    {
        quint32 count = 0;
        if (!number(count) || count > left() / smallestElement)
            return false;
        for (quint32 i = 0; i < count; ++i) {
            if (!element())
                return false;
        }
        return true;
    }
    quint64 left() const { return quint64(m_data.size() - m_at); }

    const QByteArray &m_data;
    qsizetype m_at = 0;
};

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// The texts of one INI value after the same unescaping QSettings does: the escapes \a \b \f
// \n \r \t \v \" \? \' \\, \x followed by hex digits and \ followed by octal digits, quotes
// that only group, and commas outside quotes that make a list.
QStringList unescapedTexts(const QByteArray &raw)
{
    static const char named[][2] = {{'a', '\a'}, {'b', '\b'},  {'f', '\f'}, {'n', '\n'},
                                    {'r', '\r'}, {'t', '\t'},  {'v', '\v'}, {'"', '"'},
                                    {'?', '?'},  {'\'', '\''}, {'\\', '\\'}};
    QStringList texts;
    QString current;
    QByteArray plain; // undecoded UTF-8 run
    const auto flush = [&] {
        current += QString::fromUtf8(plain);
        plain.clear();
    };
    bool quoted = false;
    for (qsizetype i = 0; i < raw.size();) {
        const char c = raw.at(i);
        if (c == '\\') {
            flush();
            if (++i >= raw.size())
                break;
            const char e = raw.at(i++);
            bool done = false;
            for (const auto &pair : named) {
                if (e == pair[0]) {
                    current += QLatin1Char(pair[1]);
                    done = true;
                    break;
                }
            }
            if (done)
                continue;
            if (e == 'x' || (e >= '0' && e <= '7')) {
                const int base = e == 'x' ? 16 : 8;
                char16_t value = e == 'x' ? 0 : char16_t(e - '0');
                bool digits = e != 'x';
                while (i < raw.size()) {
                    const int d = hexDigit(raw.at(i));
                    if (d < 0 || d >= base)
                        break;
                    value = char16_t(value * base + d);
                    digits = true;
                    ++i;
                }
                if (digits) // a bare \x stands for nothing
                    current += QChar(value);
            }
            continue; // any other escaped character is dropped, as QSettings does
        }
        if (c == '"') {
            quoted = !quoted;
            ++i;
            continue;
        }
        if (c == ',' && !quoted) {
            flush();
            texts.append(current.trimmed());
            current.clear();
            ++i;
            continue;
        }
        plain.append(c);
        ++i;
    }
    flush();
    texts.append(current.trimmed());
    return texts;
}

// A settings file's logical lines: a backslash at the end of a line continues it.
QList<QByteArray> logicalLines(const QByteArray &data)
{
    QList<QByteArray> lines;
    qsizetype start = 0;
    for (qsizetype i = 0; i < data.size(); ++i) {
        if (data.at(i) == '\\') {
            ++i; // an escaped character, a line break included, stays in the line
            if (i < data.size() && data.at(i) == '\r' && i + 1 < data.size() &&
                data.at(i + 1) == '\n')
                ++i;
            continue;
        }
        if (data.at(i) == '\n' || data.at(i) == '\r') {
            lines.append(data.mid(start, i + 1 - start));
            start = i + 1;
        }
    }
    if (start < data.size())
        lines.append(data.mid(start));
    return lines;
}

QString backupName(const QString &path)
{
    QString name = path + QStringLiteral(".damaged");
    for (int n = 1; QFileInfo::exists(name) && n < 10; ++n)
        name = path + QStringLiteral(".damaged.%1").arg(n);
    return name;
}

} // namespace

bool SettingsFileCheck::isSafeVariant(const QByteArray &payload)
{
    PayloadWalker walker(payload);
    return walker.variant(0);
}

bool SettingsFileCheck::isSafeValue(const QByteArray &rawValue)
{
    static const QString kVariant = QStringLiteral("@Variant(");
    const QStringList texts = unescapedTexts(rawValue);
    for (const QString &text : texts) {
        // QSettings only decodes "@Variant(...)" when it closes; other texts stay text.
        if (!text.startsWith(kVariant) || !text.endsWith(QLatin1Char(')')))
            continue;
        if (!isSafeVariant(text.mid(kVariant.size(), text.size() - kVariant.size() - 1).toLatin1()))
            return false;
    }
    return true;
}

QStringList SettingsFileCheck::repair(const QString &path)
{
    QFile file(path);
    if (file.size() > kLargestChecked || !file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray data = file.readAll();
    file.close();

    QByteArray kept;
    QStringList removed;
    int lineNumber = 1;
    for (const QByteArray &line : logicalLines(data)) {
        const qsizetype equals = line.indexOf('=');
        const bool safe = equals < 0 || line.trimmed().startsWith(';') ||
                          isSafeValue(line.mid(equals + 1).trimmed());
        if (safe) {
            kept += line;
        } else {
            removed.append(
                QStringLiteral("%1:%2: the value of \"%3\" cannot be read and was removed")
                    .arg(path)
                    .arg(lineNumber)
                    .arg(QString::fromUtf8(line.left(equals).trimmed()).left(64)));
        }
        lineNumber += int(line.count('\n'));
    }
    if (removed.isEmpty())
        return {};

    const QString backup = backupName(path);
    QFile::remove(backup);
    if (!QFile::copy(path, backup)) {
        return {QStringLiteral("%1: the file holds values that cannot be read, and no copy "
                               "could be kept at %2: left as it is")
                    .arg(path, backup)};
    }
    QSaveFile out(path);
    if (!out.open(QIODevice::WriteOnly) || out.write(kept) != kept.size() || !out.commit()) {
        return {QStringLiteral("%1: the file holds values that cannot be read and could not be "
                               "rewritten: %2")
                    .arg(path, out.errorString())};
    }
    removed.append(QStringLiteral("%1: the original file was kept as %2").arg(path, backup));
    return removed;
}

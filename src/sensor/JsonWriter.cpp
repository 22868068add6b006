// SPDX-License-Identifier: GPL-3.0-or-later
#include "sensor/JsonWriter.h"

#include <QLocale>

#include <charconv>
#include <cmath>

namespace {

void appendInteger(std::string &out, qint64 number)
{
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    out.append(digits, end);
}

} // namespace

void JsonWriter::separate()
{
    if (m_afterKey) {
        m_afterKey = false;
        return;
    }
    if (!m_first.empty()) {
        if (!m_first.back())
            m_out += ',';
        m_first.back() = false;
    }
}

JsonWriter &JsonWriter::beginObject()
{
    separate();
    m_out += '{';
    m_first.push_back(true);
    return *this;
}

JsonWriter &JsonWriter::endObject()
{
    m_out += '}';
    m_first.pop_back();
    return *this;
}

JsonWriter &JsonWriter::beginArray()
{
    separate();
    m_out += '[';
    m_first.push_back(true);
    return *this;
}

JsonWriter &JsonWriter::endArray()
{
    m_out += ']';
    m_first.pop_back();
    return *this;
}

JsonWriter &JsonWriter::key(const char *name)
{
    separate();
    m_out += '"';
    m_out += name;
    m_out += "\":";
    m_afterKey = true;
    return *this;
}

void JsonWriter::appendString(std::string &out, const QString &text)
{
    static const char hex[] = "0123456789abcdef";
    out += '"';
    const char16_t *p = reinterpret_cast<const char16_t *>(text.utf16());
    const char16_t *const end = p + text.size();
    while (p != end) {
        char32_t c = *p++;
        if (c < 0x80) {
            switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (c < 0x20) {
                    out += "\\u00";
                    out += hex[c >> 4];
                    out += hex[c & 0xf];
                } else {
                    out += char(c);
                }
            }
            continue;
        }
        if (c >= 0xD800 && c <= 0xDFFF) {
            // A surrogate pair makes one code point; half of one is not text.
            if (c <= 0xDBFF && p != end && *p >= 0xDC00 && *p <= 0xDFFF)
                c = 0x10000 + ((c - 0xD800) << 10) + (*p++ - 0xDC00);
            else
                c = 0xFFFD;
        }
        if (c < 0x800) {
            out += char(0xC0 | c >> 6);
        } else if (c < 0x10000) {
            out += char(0xE0 | c >> 12);
            out += char(0x80 | (c >> 6 & 0x3F));
        } else {
            out += char(0xF0 | c >> 18);
            out += char(0x80 | (c >> 12 & 0x3F));
            out += char(0x80 | (c >> 6 & 0x3F));
        }
        out += char(0x80 | (c & 0x3F));
    }
    out += '"';
}

JsonWriter &JsonWriter::value(const QString &text)
{
    separate();
    appendString(m_out, text);
    return *this;
}

JsonWriter &JsonWriter::value(const std::optional<QString> &text)
{
    return text ? value(*text) : null();
}

JsonWriter &JsonWriter::value(qint64 number)
{
    separate();
    appendInteger(m_out, number);
    return *this;
}

JsonWriter &JsonWriter::value(double number)
{
    if (!std::isfinite(number))
        return null();
    separate();
    // Six decimals are more than any reading here carries (levels are single-precision
    // fractions, durations microseconds); whole-number arithmetic writes them much faster
    // than a shortest-form conversion.
    if (std::fabs(number) < 1e12) {
        qint64 scaled = std::llround(number * 1e6);
        if (scaled < 0) {
            m_out += '-';
            scaled = -scaled;
        }
        appendInteger(m_out, scaled / 1000000);
        qint64 fraction = scaled % 1000000;
        if (fraction != 0) {
            char digits[8] = {'.'};
            int length = 7;
            for (int i = 6; i >= 1; --i, fraction /= 10)
                digits[i] = char('0' + fraction % 10);
            while (digits[length - 1] == '0')
                --length;
            m_out.append(digits, size_t(length));
        }
        return *this;
    }
    m_out += QByteArray::number(number, 'g', QLocale::FloatingPointShortest).toStdString();
    return *this;
}

JsonWriter &JsonWriter::value(bool flag)
{
    separate();
    m_out += flag ? "true" : "false";
    return *this;
}

JsonWriter &JsonWriter::null()
{
    separate();
    m_out += "null";
    return *this;
}

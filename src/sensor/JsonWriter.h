// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <string>
#include <vector>

// Writes compact JSON straight into a buffer. The big document of the sensor (every
// network, once per cycle) is written with it because building a QJsonObject per network
// and serialising it costs several times as much. Strings are escaped as RFC 8259 asks
// (quote, backslash, control characters) and encoded as UTF-8 with unpaired surrogates
// replaced; keys are literals of this program.
class JsonWriter
{
public:
    explicit JsonWriter(qsizetype reserve = 0) { m_out.reserve(size_t(reserve)); }

    JsonWriter &beginObject();
    JsonWriter &endObject();
    JsonWriter &beginArray();
    JsonWriter &endArray();
    JsonWriter &key(const char *name);

    JsonWriter &value(const QString &text);
    JsonWriter &value(const std::optional<QString> &text); // none: null
    JsonWriter &value(qint64 number);
    JsonWriter &value(int number) { return value(static_cast<qint64>(number)); }
    JsonWriter &value(double number); // NaN and infinities: null, which JSON lacks
    JsonWriter &value(bool flag);
    JsonWriter &null();

    QByteArray take() const { return QByteArray(m_out.data(), qsizetype(m_out.size())); }

    static void appendString(std::string &out, const QString &text);

private:
    void separate();

    std::string m_out;
    std::vector<bool> m_first; // per open container: nothing written in it yet
    bool m_afterKey = false;
};

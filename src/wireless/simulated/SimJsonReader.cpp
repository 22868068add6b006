// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/simulated/SimJsonReader.h"

#include <cmath>

namespace {
QString typeName(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Null:
        return QStringLiteral("null");
    case QJsonValue::Bool:
        return QStringLiteral("a boolean");
    case QJsonValue::Double:
        return QStringLiteral("a number");
    case QJsonValue::String:
        return QStringLiteral("a text");
    case QJsonValue::Array:
        return QStringLiteral("a list");
    case QJsonValue::Object:
        return QStringLiteral("an object");
    case QJsonValue::Undefined:
        break;
    }
    return QStringLiteral("nothing");
}
} // namespace

SimJsonReader::SimJsonReader(QJsonObject object, QString path)
    : SimJsonReader(std::move(object), std::move(path), std::make_shared<QString>())
{
}

SimJsonReader::SimJsonReader(QJsonObject object, QString path, std::shared_ptr<QString> error)
    : m_object(std::move(object)), m_path(std::move(path)), m_error(std::move(error))
{
}

QString SimJsonReader::pathOf(const QString &key) const
{
    if (key.isEmpty())
        return m_path.isEmpty() ? QStringLiteral("scenario") : m_path;
    if (key.startsWith(QLatin1Char('[')) || m_path.isEmpty())
        return m_path + key;
    return m_path + QLatin1Char('.') + key;
}

void SimJsonReader::failAt(const QString &path, const QString &message) const
{
    if (m_error->isEmpty())
        *m_error = path + QStringLiteral(": ") + message;
}

void SimJsonReader::fail(const QString &key, const QString &message) const
{
    failAt(pathOf(key), message);
}

bool SimJsonReader::missing(const QString &key, bool required) const
{
    if (m_object.contains(key))
        return false;
    if (required)
        fail(key, QStringLiteral("missing"));
    return true;
}

SimJsonReader SimJsonReader::object(const QString &key, bool required) const
{
    QJsonObject nested;
    if (!missing(key, required)) {
        const QJsonValue value = m_object.value(key);
        if (value.isObject())
            nested = value.toObject();
        else
            fail(key, QStringLiteral("expected an object, found %1").arg(typeName(value)));
    }
    return SimJsonReader(nested, pathOf(key), m_error);
}

SimJsonReader SimJsonReader::element(const QJsonArray &array, qsizetype index,
                                     const QString &key) const
{
    const QString path = pathOf(key) + QStringLiteral("[%1]").arg(index);
    QJsonObject nested;
    const QJsonValue value = index < array.size() ? array.at(index) : QJsonValue();
    if (value.isObject())
        nested = value.toObject();
    else
        failAt(path, QStringLiteral("expected an object, found %1").arg(typeName(value)));
    return SimJsonReader(nested, path, m_error);
}

QString SimJsonReader::text(const QString &key, const QString &fallback, bool required) const
{
    if (missing(key, required))
        return fallback;
    const QJsonValue value = m_object.value(key);
    if (!value.isString()) {
        fail(key, QStringLiteral("expected a text, found %1").arg(typeName(value)));
        return fallback;
    }
    return value.toString();
}

std::optional<QString> SimJsonReader::optionalText(const QString &key) const
{
    if (!m_object.contains(key) || m_object.value(key).isNull())
        return std::nullopt;
    return text(key, QString());
}

double SimJsonReader::number(const QString &key, double fallback, double min, double max,
                             bool required) const
{
    if (missing(key, required))
        return fallback;
    const QJsonValue value = m_object.value(key);
    if (!value.isDouble()) {
        fail(key, QStringLiteral("expected a number, found %1").arg(typeName(value)));
        return fallback;
    }
    const double v = value.toDouble();
    if (!std::isfinite(v) || v < min || v > max) {
        fail(key, QStringLiteral("%1 is outside %2..%3").arg(v).arg(min).arg(max));
        return fallback;
    }
    return v;
}

qint64 SimJsonReader::integer(const QString &key, qint64 fallback, qint64 min, qint64 max,
                              bool required) const
{
    const double v = number(key, double(fallback), double(min), double(max), required);
    if (v != std::floor(v)) {
        fail(key, QStringLiteral("expected a whole number, found %1").arg(v));
        return fallback;
    }
    return qint64(v);
}

bool SimJsonReader::boolean(const QString &key, bool fallback) const
{
    if (missing(key, false))
        return fallback;
    const QJsonValue value = m_object.value(key);
    if (!value.isBool()) {
        fail(key, QStringLiteral("expected true or false, found %1").arg(typeName(value)));
        return fallback;
    }
    return value.toBool();
}

QJsonArray SimJsonReader::array(const QString &key, bool required) const
{
    if (missing(key, required))
        return {};
    const QJsonValue value = m_object.value(key);
    if (!value.isArray()) {
        fail(key, QStringLiteral("expected a list, found %1").arg(typeName(value)));
        return {};
    }
    return value.toArray();
}

bool SimJsonReader::point(const QJsonValue &value, const QString &path, double out[3]) const
{
    const QJsonArray a = value.toArray();
    bool ok = value.isArray() && (a.size() == 2 || a.size() == 3);
    for (qsizetype i = 0; ok && i < a.size(); ++i)
        ok = a.at(i).isDouble() && std::isfinite(a.at(i).toDouble()) &&
             std::abs(a.at(i).toDouble()) <= 1e6;
    if (!ok) {
        failAt(path, QStringLiteral("expected a position [x, y] or [x, y, z] in metres"));
        return false;
    }
    for (qsizetype i = 0; i < 3; ++i)
        out[i] = i < a.size() ? a.at(i).toDouble() : 0.0;
    return true;
}

void SimJsonReader::allowOnly(std::initializer_list<const char *> keys) const
{
    for (auto it = m_object.constBegin(); it != m_object.constEnd(); ++it) {
        bool known = it.key() == QLatin1String("comment");
        for (const char *k : keys)
            known = known || it.key() == QLatin1String(k);
        if (!known) {
            fail(it.key(), QStringLiteral("unknown field"));
            return;
        }
    }
}

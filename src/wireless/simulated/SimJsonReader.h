// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <initializer_list>
#include <memory>
#include <optional>

// Typed reading of one JSON object of a scenario, with messages that name the offending
// field by its path ("accessPoints[3].channel: ..."). The first problem is kept and every
// later read answers its default, so a parser can read on and check failed() once.
class SimJsonReader
{
public:
    SimJsonReader(QJsonObject object, QString path);

    // A reader on a nested object; a missing optional object reads as empty.
    SimJsonReader object(const QString &key, bool required = false) const;
    // A reader on an element of an array that must be an object.
    SimJsonReader element(const QJsonArray &array, qsizetype index, const QString &key) const;

    bool has(const QString &key) const { return m_object.contains(key); }
    QJsonValue value(const QString &key) const { return m_object.value(key); }
    QString text(const QString &key, const QString &fallback, bool required = false) const;
    std::optional<QString> optionalText(const QString &key) const;
    double number(const QString &key, double fallback, double min, double max,
                  bool required = false) const;
    qint64 integer(const QString &key, qint64 fallback, qint64 min, qint64 max,
                   bool required = false) const;
    bool boolean(const QString &key, bool fallback) const;
    QJsonArray array(const QString &key, bool required = false) const;
    // A [x, y] or [x, y, z] position in metres.
    bool point(const QJsonValue &value, const QString &path, double out[3]) const;

    // Fields other than these (and "comment", free text for people) are refused, so a
    // misspelt optional field does not silently fall back to its default.
    void allowOnly(std::initializer_list<const char *> keys) const;

    // Record a problem with the field `key` (empty: the object itself).
    void fail(const QString &key, const QString &message) const;
    void failAt(const QString &path, const QString &message) const;
    bool failed() const { return !m_error->isEmpty(); }
    QString error() const { return *m_error; }
    QString pathOf(const QString &key) const;

private:
    SimJsonReader(QJsonObject object, QString path, std::shared_ptr<QString> error);
    bool missing(const QString &key, bool required) const;

    QJsonObject m_object;
    QString m_path;
    std::shared_ptr<QString> m_error;
};

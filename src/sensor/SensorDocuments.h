// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <QStringList>

class NetworkObject;
class SensorSource;

// The JSON documents of the sensor's /api. Every network carries the 22 values of the
// export columns (absent texts as null) and the raw numbers behind them; times are
// ISO 8601 in UTC.
class SensorDocuments
{
public:
    // The heads of the 22 export columns, in column order.
    static QStringList columnNames();

    // {"time", "cycle", "searchText", "columns", "networks": [...]}: every record, each
    // saying whether the search text lets it through ("listed").
    static QByteArray networks(const SensorSource &source, quint64 cycle, const QDateTime &now);
    static QByteArray interface(const SensorSource &source, const QDateTime &now);
    // The sensor's own figures and the cycle count, cheap enough to poll.
    static QByteArray status(const SensorSource &source, quint64 cycle, const QDateTime &now);

    enum class HistoryResult { Ok, MalformedBssid, UnknownBssid };
    // The three histories of the record with that BSSID (any case), gaps as null. On an
    // error `body` holds {"error": message}.
    static HistoryResult history(const SensorSource &source, const QString &bssid,
                                 QByteArray *body);

    static QByteArray error(const QString &message);
    static QString isoTime(const QDateTime &time);
};

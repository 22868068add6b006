// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

class SensorSource;

// The survey as Prometheus text exposition (format 0.0.4): one series per network and
// figure labelled by BSSID, the texts on an info series, the interface and the sensor's
// own counters. Label values are escaped; SSIDs arrive already made valid UTF-8.
class MetricsExposition
{
public:
    // Networks not heard for longer than this leave the exposition (their records stay),
    // so that a dashboard does not show a network that left an hour ago as present.
    static constexpr qint64 kStaleAfterSeconds = 300;

    static QByteArray render(const SensorSource &source, const QDateTime &now);

    // Backslash, double quote and line feed become \\, \" and \n; all else passes as UTF-8.
    static void appendLabelValue(QByteArray &out, const QString &value);
    static QByteArray escapeLabelValue(const QString &value);
    // Prometheus' float syntax: NaN, +Inf, -Inf, else the shortest exact decimal.
    static QByteArray formatValue(double value);
};

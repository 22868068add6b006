// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>
#include <QVariant>

#include <utility>

// Labels of the signal plots' time axis. The axis value is a sample index; the labels count
// minutes down from "5 min" at the left in steps of 30 samples, whatever the number of samples
// shown (30 samples at the default 2 s interval are one minute, and the axis is read that
// way), so indices of 180 and more give negative numbers.
class TimeFormatter
{
public:
    // The label for an axis value; a value that is not a number gives an empty label.
    static QString stringForObjectValue(const QVariant &value);
    static QString stringForObjectValue(double value);
    static QString stringForSample(quint64 sample);

    // Labels at `count` equal divisions of [min, max], both ends included, ready for
    // QCategoryAxis::append(label, value) with labels drawn on the value. A category axis
    // drops a label equal to an earlier one, so repeats are made distinct with trailing
    // zero-width spaces, which draw as nothing.
    static QList<std::pair<qreal, QString>> categories(qreal min, qreal max, int count);
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>
#include <QVariant>

#include <utility>

// Labels of the interface plot's right-hand SNR axis: the axis value is a fraction, printed
// as a whole percentage clamped to 0..100 with the suffix "dB" and no space ("25dB").
class SNRFormatter
{
public:
    // The label for an axis value; a value that is not a number gives an empty label. NaN is a
    // number here: it escapes the clamp and prints as "nandB".
    static QString stringForObjectValue(const QVariant &value);
    static QString stringForObjectValue(double value);

    // Labels at `count` equal divisions of [min, max], both ends included, for
    // QCategoryAxis::append(label, value); repeats carry trailing zero-width spaces because a
    // category axis drops a label equal to an earlier one.
    static QList<std::pair<qreal, QString>> categories(qreal min, qreal max, int count);
};

// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/TimeFormatter.h"

#include "util/AxisCategories.h"

#include <cmath>
#include <limits>

namespace {

// Samples per labelled step and the number of steps from the left edge.
constexpr quint64 kSamplesPerStep = 30;
constexpr qint64 kSteps = 5;

// The axis value as a sample index. Converting a negative or NaN double to an unsigned
// integer is undefined, so those read as the first sample; the chart may ask for a label a
// little left of 0 when the range is padded.
quint64 sampleFromDouble(double value)
{
    if (!(value > 0.0))
        return 0;
    if (value >= 18446744073709551616.0) // 2^64
        return std::numeric_limits<quint64>::max();
    return quint64(value);
}

} // namespace

QString TimeFormatter::stringForSample(quint64 sample)
{
    const qint64 minutes = kSteps - qint64(sample / kSamplesPerStep);
    if (sample < kSamplesPerStep)
        return QString::number(minutes) + QStringLiteral(" min");
    return QString::number(minutes);
}

QString TimeFormatter::stringForObjectValue(double value)
{
    return stringForSample(sampleFromDouble(value));
}

QString TimeFormatter::stringForObjectValue(const QVariant &value)
{
    switch (value.metaType().id()) {
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::SChar: {
        const qint64 v = value.toLongLong();
        return stringForSample(v < 0 ? 0 : quint64(v));
    }
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
    case QMetaType::UShort:
    case QMetaType::UChar:
        return stringForSample(value.toULongLong());
    default:
        break;
    }
    bool ok = false;
    const double d = value.toDouble(&ok);
    return ok ? stringForObjectValue(d) : QString();
}

QList<std::pair<qreal, QString>> TimeFormatter::categories(qreal min, qreal max, int count)
{
    return AxisCategories::build(min, max, count,
                                 [](qreal v) { return stringForObjectValue(double(v)); });
}

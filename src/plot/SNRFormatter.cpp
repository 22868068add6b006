// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/SNRFormatter.h"

#include "util/AxisCategories.h"

QString SNRFormatter::stringForObjectValue(double value)
{
    // Far outside the axis anyway; bounded first so the narrowing below stays in range.
    if (value > 1.0e6)
        value = 1.0e6;
    else if (value < -1.0e6)
        value = -1.0e6;
    // Single precision on purpose: 0.999 must print as 100dB the way the axis always has.
    float percent = float(value) * 100.0f;
    if (percent < 0.0f)
        percent = 0.0f;
    else if (percent > 100.0f)
        percent = 100.0f;
    else if (percent == 0.0f)
        percent = 0.0f; // a negative zero would print as "-0dB"
    return QString::asprintf("%.0fdB", double(percent));
}

QString SNRFormatter::stringForObjectValue(const QVariant &value)
{
    bool ok = false;
    const double d = value.toDouble(&ok);
    return ok ? stringForObjectValue(d) : QString();
}

QList<std::pair<qreal, QString>> SNRFormatter::categories(qreal min, qreal max, int count)
{
    return AxisCategories::build(min, max, count,
                                 [](qreal v) { return stringForObjectValue(double(v)); });
}

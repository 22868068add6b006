// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/AxisCategories.h"

#include <QHash>

#include <cmath>

QList<std::pair<qreal, QString>> AxisCategories::build(qreal min, qreal max, int count,
                                                       const Label &label)
{
    QList<std::pair<qreal, QString>> out;
    if (count < 1 || !std::isfinite(min) || !std::isfinite(max) || !label)
        return out;
    out.reserve(count);
    QHash<QString, int> seen;
    const qreal step = count > 1 ? (max - min) / (count - 1) : 0.0;
    for (int i = 0; i < count; ++i) {
        // The last position is max itself, free of accumulated rounding.
        const qreal position = i == count - 1 && count > 1 ? max : min + step * i;
        QString text = label(position);
        int &repeats = seen[text];
        if (repeats > 0)
            text += QString(repeats, QChar(0x200B));
        ++repeats;
        out.append({position, text});
    }
    return out;
}

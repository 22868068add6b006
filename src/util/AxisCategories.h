// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>

#include <functional>
#include <utility>

// Tick labels for a chart axis whose texts come from a formatter rather than a printf
// pattern (Qt Charts' category axis): positions at equal divisions of a range, each with the
// formatter's text.
class AxisCategories
{
public:
    using Label = std::function<QString(qreal)>;

    // `count` positions from min to max, both ends included (one position: min only). A range
    // that is not finite, or a count below 1, gives no positions. QCategoryAxis refuses a
    // label equal to an earlier one, so a repeated text gets one trailing zero-width space per
    // earlier occurrence; it draws as nothing.
    static QList<std::pair<qreal, QString>> build(qreal min, qreal max, int count,
                                                  const Label &label);
};

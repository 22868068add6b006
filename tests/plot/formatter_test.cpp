// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/SNRFormatter.h"
#include "plot/TimeFormatter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

TEST(Formatters, TimeCountsDownMinutesAndSnrClampsWholePercent)
{
    // Thirty samples a minute; left of the origin or no number at all: the first sample.
    const std::pair<double, const char *> times[] = {
        {0, "5 min"},    {29.9, "5 min"},        {30, "4"}, {150, "0"}, {180, "-1"},
        {-0.5, "5 min"}, {std::nan(""), "5 min"}};
    for (const auto &[value, label] : times)
        EXPECT_EQ(TimeFormatter::stringForObjectValue(QVariant(value)), label) << value;
    // The largest index still gives a number, not an overflow.
    const quint64 maxSample = std::numeric_limits<quint64>::max();
    EXPECT_EQ(TimeFormatter::stringForObjectValue(1e30),
              QString::number(5 - qint64(maxSample / 30)));
    EXPECT_EQ(TimeFormatter::stringForObjectValue(QVariant(QStringLiteral("later"))), QString());

    const double inf = std::numeric_limits<double>::infinity();
    const std::pair<double, const char *> snrs[] = {{0.25, "25dB"}, {0.999, "100dB"},
                                                    {1.2, "100dB"}, {-0.1, "0dB"},
                                                    {0.004, "0dB"}, {-inf, "0dB"}};
    for (const auto &[value, label] : snrs)
        EXPECT_EQ(SNRFormatter::stringForObjectValue(QVariant(value)), label) << value;
}

} // namespace

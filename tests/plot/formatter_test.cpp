// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/SNRFormatter.h"
#include "plot/TimeFormatter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using Row = std::pair<double, const char *>;

TEST(TimeFormatter, CountsMinutesDownInStepsOfThirtySamples)
{
    // The last three: left of the axis origin, or not a number at all: the first sample.
    const Row rows[] = {
        {0, "5 min"}, {29, "5 min"}, {29.9, "5 min"}, {30, "4"},        {59, "4"},
        {60, "3"},    {149, "1"},    {150, "0"},      {179, "0"},       {180, "-1"},
        {209, "-1"},  {299, "-4"},   {-0.5, "5 min"}, {-1000, "5 min"}, {std::nan(""), "5 min"}};
    for (const auto &[value, label] : rows) {
        SCOPED_TRACE(value);
        EXPECT_EQ(TimeFormatter::stringForObjectValue(value), QString::fromUtf8(label));
        EXPECT_EQ(TimeFormatter::stringForObjectValue(QVariant(value)), QString::fromUtf8(label));
    }
}

TEST(TimeFormatter, TakesIntegersAndRejectsNonNumbers)
{
    EXPECT_EQ(TimeFormatter::stringForObjectValue(QVariant(qint64(30))), "4");
    EXPECT_EQ(TimeFormatter::stringForObjectValue(QVariant(qint64(-30))), "5 min");
    EXPECT_EQ(TimeFormatter::stringForObjectValue(QVariant(quint64(300))), "-5");
    // The largest index still gives a number, not an overflow.
    const quint64 maxSample = std::numeric_limits<quint64>::max();
    EXPECT_EQ(TimeFormatter::stringForSample(maxSample),
              QString::number(5 - qint64(maxSample / 30)));
    EXPECT_EQ(TimeFormatter::stringForObjectValue(1e30), TimeFormatter::stringForSample(maxSample));
    EXPECT_EQ(TimeFormatter::stringForObjectValue(QVariant(QStringLiteral("later"))), QString());
    EXPECT_EQ(TimeFormatter::stringForObjectValue(QVariant()), QString());
}

TEST(SNRFormatter, PrintsClampedWholePercentWithDb)
{
    const double inf = std::numeric_limits<double>::infinity();
    const Row rows[] = {{0.0, "0dB"},     {0.5, "50dB"},   {0.25, "25dB"},         {0.999, "100dB"},
                        {1.2, "100dB"},   {5.0, "100dB"},  {-0.3, "0dB"},          {-0.1, "0dB"},
                        {-0.0, "0dB"},    {0.004, "0dB"},  {inf, "100dB"},         {-inf, "0dB"},
                        {1e300, "100dB"}, {-1e300, "0dB"}, {std::nan(""), "nandB"}};
    for (const auto &[value, label] : rows) {
        SCOPED_TRACE(value);
        EXPECT_EQ(SNRFormatter::stringForObjectValue(value), QString::fromUtf8(label));
        EXPECT_EQ(SNRFormatter::stringForObjectValue(QVariant(value)), QString::fromUtf8(label));
    }
    EXPECT_EQ(SNRFormatter::stringForObjectValue(QVariant(QStringLiteral("x"))), QString());
}

TEST(AxisCategories, EqualDivisionsWithDistinctLabels)
{
    using Categories = QList<std::pair<double, QString>>;
    EXPECT_EQ(TimeFormatter::categories(0, 150, 6),
              (Categories{{0, "5 min"}, {30, "4"}, {60, "3"}, {90, "2"}, {120, "1"}, {150, "0"}}));

    // A short range repeats a text; a category axis would drop the repeats.
    const auto shortRange = TimeFormatter::categories(0, 20, 3);
    ASSERT_EQ(shortRange.size(), 3);
    EXPECT_EQ(shortRange[0].second, "5 min");
    EXPECT_NE(shortRange[1].second, shortRange[0].second);
    EXPECT_NE(shortRange[2].second, shortRange[1].second);
    EXPECT_EQ(shortRange[2].second.trimmed().remove(QChar(0x200B)), "5 min");

    const auto snr = SNRFormatter::categories(0, 1, 5);
    ASSERT_EQ(snr.size(), 5);
    EXPECT_EQ(snr[2].second, "50dB");
    EXPECT_DOUBLE_EQ(snr[4].first, 1.0);

    EXPECT_EQ(SNRFormatter::categories(0, 1, 1).size(), 1);
    EXPECT_TRUE(SNRFormatter::categories(0, 1, 0).isEmpty());
    EXPECT_TRUE(TimeFormatter::categories(0, std::nan(""), 6).isEmpty());
}

} // namespace

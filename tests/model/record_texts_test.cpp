// SPDX-License-Identifier: GPL-3.0-or-later
// Texts a record derives for the table, the panels and the exports, and its icon.
#include "model/NetworkObject.h"
#include "support/NetworkBuilder.h"
#include "util/Clock.h"

#include <gtest/gtest.h>

#include <limits>

namespace {
const QDateTime kT0(QDate(2024, 5, 1), QTime(12, 0, 0), Qt::UTC);
}

TEST(NetworkObjectTexts, PhyModeLettersInFixedOrder)
{
    const struct
    {
        std::initializer_list<int> modes;
        const char *text;
    } rows[] = {
        {{2, 3, 4}, "802.11b/g/n"}, {{1}, "802.11a"},      {{1, 2, 3, 4}, "802.11a/b/g/n"},
        {{4, 3}, "802.11g/n"},      {{4}, "802.11n"},      {{}, "802.11"},
        {{0, 5, 6}, "802.11"},      {{1, 4}, "802.11a/n"},
    };
    for (const auto &row : rows) {
        const auto rec =
            NetworkObject::objectWithCWNetwork(NetworkBuilder().phyModes(row.modes), kT0);
        EXPECT_EQ(rec->phyMode(), QLatin1StringView(row.text));
    }
}

TEST(NetworkObjectTexts, SecurityTakesFirstSupportedCodeMixedFirst)
{
    const struct
    {
        std::initializer_list<int> codes;
        std::optional<QString> text;
        int mode;
    } rows[] = {
        {{2, 3, 4}, QStringLiteral("WPA/WPA2 Personal"), 0},
        {{0}, QStringLiteral(""), 0},
        {{0, 4}, QStringLiteral(""), 0},
        {{1, 9}, QStringLiteral("WEP"), 1},
        {{2}, QStringLiteral("WPA Personal"), 2},
        {{4, 9}, QStringLiteral("WPA2 Personal"), 3},
        {{6}, QStringLiteral("802.1X WEP"), 4},
        {{7, 8, 9}, QStringLiteral("WPA/WPA2 Enterprise"), 0},
        {{7}, QStringLiteral("WPA Enterprise"), 5},
        {{9}, QStringLiteral("WPA2 Enterprise"), 6},
        {{}, std::nullopt, 0},
        {{5, 10}, std::nullopt, 0},
    };
    for (const auto &row : rows) {
        const auto rec =
            NetworkObject::objectWithCWNetwork(NetworkBuilder().securities(row.codes), kT0);
        EXPECT_EQ(rec->security(), row.text);
        EXPECT_EQ(NetworkObject::securityModeForString(rec->security()), row.mode);
    }
    EXPECT_EQ(NetworkObject::securityModeForString(QStringLiteral("wep")), 0); // exact match
    EXPECT_EQ(NetworkObject::securityModeForString(QStringLiteral("WEP ")), 0);
}

TEST(NetworkObjectTexts, BandAndWidthKnowOnlyTwoCodesEach)
{
    const struct
    {
        qint64 code;
        const char *band;
        const char *width;
    } rows[] = {{0, "", ""}, {1, "2.4GHz", "20MHz"}, {2, "5GHz", "40MHz"}, {3, "", ""},
                {4, "", ""}, {-1, "", ""},           {1LL << 40, "", ""}};
    NetworkObject rec;
    for (const auto &row : rows) {
        rec.setChannelBand(row.code);
        rec.setChannelWidth(row.code);
        EXPECT_EQ(rec.channelBandString(), QLatin1StringView(row.band)) << row.code;
        EXPECT_EQ(rec.channelWidthString(), QLatin1StringView(row.width)) << row.code;
    }
}

TEST(NetworkObjectTexts, QualityBoundsAreStrict)
{
    const struct
    {
        float signal;
        const char *text;
    } rows[] = {{-0.3f, "Bad"},  {0.0999f, "Bad"},   {0.1f, "Poor"},
                {0.2f, "Ok"},    {0.35f, "Good"},    {0.4999f, "Good"},
                {0.5f, "Great"}, {0.6499f, "Great"}, {0.65f, "Perfect"}};
    NetworkObject rec;
    for (const auto &row : rows) {
        rec.setSignals({row.signal});
        EXPECT_EQ(rec.signalQualityString(), QLatin1StringView(row.text)) << row.signal;
    }
}

TEST(NetworkObjectTexts, PercentAndDecibelFormats)
{
    const struct
    {
        double value;
        const char *text;
    } percents[] = {{0.434, "43%"}, {0.151, "15%"},   {0.0, "0%"},
                    {1.0, "100%"},  {-0.132, "-13%"}, {0.125, "12%"}, /* C rounds halves to even */
                    {0.135, "14%"}, {1.094, "109%"}};
    for (const auto &row : percents) {
        EXPECT_EQ(NetworkObject::stringOfSignal(row.value), QLatin1StringView(row.text));
        EXPECT_EQ(NetworkObject::stringOfNoise(row.value), QLatin1StringView(row.text));
    }
    const struct
    {
        qint64 value;
        const char *text;
    } snrs[] = {{40, "40dB"},
                {-3, "-3dB"},
                {0, "0dB"},
                {std::numeric_limits<qint64>::min(), "-9223372036854775808dB"}};
    for (const auto &row : snrs)
        EXPECT_EQ(NetworkObject::stringOfSNR(row.value), QLatin1StringView(row.text));

    const auto rec = NetworkObject::objectWithCWNetwork(NetworkBuilder(), kT0);
    EXPECT_EQ(rec->signalString(), QStringLiteral("43%"));
    EXPECT_EQ(rec->noiseString(), QStringLiteral("15%"));
    EXPECT_EQ(rec->snrString(), QStringLiteral("40dB"));
}

TEST(NetworkObjectTexts, LastSeenAgainstTheClock)
{
    const struct
    {
        qint64 msecs;
        const char *text;
    } rows[] = {
        {-10'000, "Just now"},
        {0, "Just now"},
        {4'900, "Just now"},
        {5'000, "5 sec ago"},
        {59'600, "60 sec ago"},
        {60'000, "1 min ago"},
        {90'000, "2 min ago"},
        {150'000, "2 min ago"}, // 2.5 rounds to even
        {3'599'000, "60 min ago"},
        {3'600'000, "1h 0min ago"},
        {7'384'000, "2h 3min ago"},
        {90'061'000, "25h 1min ago"},
        {10'000'000'000'000LL, "596523h 14min ago"}, // clamped to 32 bits
    };
    ManualClock clock(kT0);
    Clock::setInstance(&clock);
    const auto rec = NetworkObject::objectWithCWNetwork(NetworkBuilder(), kT0);
    for (const auto &row : rows) {
        clock.set(kT0.addMSecs(row.msecs));
        EXPECT_EQ(rec->lastSeen(), QLatin1StringView(row.text)) << row.msecs;
    }
    Clock::setInstance(nullptr);
}

TEST(NetworkObjectIcon, ColourBehindLockOrOpenPadlockDrawnOnce)
{
    const QColor colour = QColor::fromRgbF(0.2f, 0.6f, 0.9f);

    const auto open = NetworkObject::objectWithCWNetwork(NetworkBuilder().securities({0}), kT0);
    const auto locked = NetworkObject::objectWithCWNetwork(NetworkBuilder().securities({4}), kT0);
    open->setColor(colour);
    locked->setColor(colour);
    const QImage openIcon = open->icon();
    const QImage lockedIcon = locked->icon();

    for (const QImage &image : {openIcon, lockedIcon}) {
        EXPECT_EQ(image.size(), QSize(19, 17));
        // Column 0 and the top row lie outside the drawing rectangle: pure fill colour.
        for (const QPoint p : {QPoint(0, 0), QPoint(0, 16), QPoint(18, 0)})
            EXPECT_EQ(image.pixelColor(p).rgba(), colour.rgba());
        int drawn = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                drawn += image.pixelColor(x, y).rgba() != colour.rgba();
        EXPECT_GT(drawn, 20);
    }
    EXPECT_NE(openIcon, lockedIcon);

    // Kept for the life of the record: a new colour does not redraw it.
    open->setColor(Qt::red);
    EXPECT_EQ(open->icon(), openIcon);
}

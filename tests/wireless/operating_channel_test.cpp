// SPDX-License-Identifier: GPL-3.0-or-later
// Real widths and segment centres from hand-made operation elements.
#include "support/ElementText.h"
#include "wireless/CWTypes.h"
#include "wireless/ie/BssNetworkMapper.h"
#include "wireless/ie/ElementDecoder.h"
#include "wireless/ie/FrequencyPlan.h"

#include <gtest/gtest.h>

namespace {
#define ZERO20 "0000000000000000000000000000000000000000 "
#define HT_OP(primary, info) "3d 16 " primary " " info " " ZERO20
#define HE6(primary, control, seg0, seg1)                                                          \
    "ff 0c 24 000002 00 0000 " primary " " control " " seg0 " " seg1 " 01 "
} // namespace

TEST(OperatingChannel, WidthAndCentresFromOperationElements)
{
    const struct
    {
        const char *name;
        const char *hex;
        int frequency;
        int primary;
        int band;
        int width;
        int center0;
        int center1;
        const char *text;
    } rows[] = {
        {"plain 20 MHz", "03 01 06", 0, 6, kCWChannelBand2GHz, 20, 2437, 0, "20 MHz"},
        {"ht 40 above", "03 01 01 " HT_OP("01", "05"), 0, 1, kCWChannelBand2GHz, 40, 2422, 0,
         "40 MHz"},
        {"ht 40 below", "03 01 0b " HT_OP("0b", "07"), 0, 11, kCWChannelBand2GHz, 40, 2452, 0,
         "40 MHz"},
        {"ht 40 below channel 1 is impossible", "03 01 01 " HT_OP("01", "07"), 0, 1,
         kCWChannelBand2GHz, 20, 2412, 0, "20 MHz"},
        {"ht pair built on its own primary", "03 01 06 " HT_OP("05", "05"), 0, 6,
         kCWChannelBand2GHz, 40, 2442, 0, "40 MHz"},
        {"vht 80", HT_OP("24", "05") "c0 05 01 2a 00 0000", 5180, 36, kCWChannelBand5GHz, 80, 5210,
         0, "80 MHz"},
        {"vht 160 by segments", HT_OP("2c", "07") "c0 05 01 2a 32 0000", 5220, 44,
         kCWChannelBand5GHz, 160, 5250, 0, "160 MHz"},
        {"vht 160 old form", HT_OP("24", "05") "c0 05 02 32 00 0000", 0, 36, kCWChannelBand5GHz,
         160, 5250, 0, "160 MHz"},
        {"vht 80+80", HT_OP("24", "05") "c0 05 01 2a 9b 0000", 0, 36, kCWChannelBand5GHz, 80, 5210,
         5775, "80+80 MHz"},
        {"vht 80+80 old form", HT_OP("9d", "07") "c0 05 03 9b 6a 0000", 0, 157, kCWChannelBand5GHz,
         80, 5775, 5530, "80+80 MHz"},
        {"vht segment missing the primary falls back to ht",
         HT_OP("24", "05") "c0 05 01 3a 00 0000", 0, 36, kCWChannelBand5GHz, 40, 5190, 0, "40 MHz"},
        {"vht on 2.4 GHz is passed over", "03 01 06 " HT_OP("06", "00") "c0 05 01 2a 00 0000", 0, 6,
         kCWChannelBand2GHz, 20, 2437, 0, "20 MHz"},
        {"he vht information", HT_OP("95", "05") "ff 0a 24 004000 00 0000 01 9b 00", 0, 149,
         kCWChannelBand5GHz, 80, 5775, 0, "80 MHz"},
        {"6 GHz 80", HE6("25", "02", "27", "00"), 0, 37, kCWChannelBand6GHz, 80, 6145, 0, "80 MHz"},
        {"6 GHz 160", HE6("25", "03", "27", "2f"), 0, 37, kCWChannelBand6GHz, 160, 6185, 0,
         "160 MHz"},
        {"6 GHz 160 in segment 0 only", HE6("25", "03", "2f", "00"), 0, 37, kCWChannelBand6GHz, 160,
         6185, 0, "160 MHz"},
        {"6 GHz 80+80", HE6("25", "03", "27", "67"), 0, 37, kCWChannelBand6GHz, 80, 6145, 6465,
         "80+80 MHz"},
        {"6 GHz 40", HE6("01", "01", "03", "00"), 0, 1, kCWChannelBand6GHz, 40, 5965, 0, "40 MHz"},
        {"eht 320 over he 160", HE6("25", "03", "27", "2f") "ff 09 6a 01 00000000 04 2f 1f", 0, 37,
         kCWChannelBand6GHz, 320, 6105, 0, "320 MHz"},
        {"eht 320 missing the primary falls back to he",
         HE6("25", "03", "27", "2f") "ff 09 6a 01 00000000 04 2f 9f", 0, 37, kCWChannelBand6GHz,
         160, 6185, 0, "160 MHz"},
        {"eht 160 on 5 GHz", HT_OP("24", "05") "ff 09 6a 01 00000000 03 2a 32", 0, 36,
         kCWChannelBand5GHz, 160, 5250, 0, "160 MHz"},
        {"eht reserved width", HT_OP("24", "05") "ff 09 6a 01 00000000 07 2a 32", 0, 36,
         kCWChannelBand5GHz, 40, 5190, 0, "40 MHz"},
        {"frequency only", "", 5745, 149, kCWChannelBand5GHz, 20, 5745, 0, "20 MHz"},
        {"nothing known", "", 0, 0, kCWChannelBandUnknown, 0, 0, 0, ""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const BssElements e = ElementDecoder::decode(ElementText::fromHex(row.hex));
        ASSERT_TRUE(e.ok()) << ElementText::summary(e).toStdString();
        const CWOperatingChannel c = BssNetworkMapper::operatingChannel(e, row.frequency);
        EXPECT_EQ(c.primaryChannel, row.primary);
        EXPECT_EQ(c.band, row.band);
        EXPECT_EQ(c.widthMHz, row.width);
        EXPECT_EQ(c.centerMHz[0], row.center0);
        EXPECT_EQ(c.centerMHz[1], row.center1);
        EXPECT_EQ(c.widthText(), QString::fromLatin1(row.text));
        if (c.isKnown()) {
            EXPECT_TRUE(c.coversPrimary());
        }
    }
}

TEST(OperatingChannel, ChannelBlocks)
{
    const struct
    {
        int channel;
        int band;
        int width;
        int center; // 0: no such block
    } rows[] = {
        {6, kCWChannelBand2GHz, 20, 6},     {1, kCWChannelBand2GHz, 40, 3},
        {7, kCWChannelBand2GHz, 40, 9},     {11, kCWChannelBand2GHz, 40, 9},
        {6, kCWChannelBand2GHz, 80, 0},     {14, kCWChannelBand2GHz, 20, 0},
        {40, kCWChannelBand5GHz, 40, 38},   {48, kCWChannelBand5GHz, 80, 42},
        {64, kCWChannelBand5GHz, 160, 50},  {116, kCWChannelBand5GHz, 160, 114},
        {144, kCWChannelBand5GHz, 80, 138}, {140, kCWChannelBand5GHz, 160, 0},
        {165, kCWChannelBand5GHz, 80, 171}, {177, kCWChannelBand5GHz, 160, 163},
        {36, kCWChannelBand5GHz, 320, 0},   {38, kCWChannelBand5GHz, 20, 0},
        {37, kCWChannelBand6GHz, 160, 47},  {69, kCWChannelBand6GHz, 320, 95},
        {233, kCWChannelBand6GHz, 40, 0},   {229, kCWChannelBand6GHz, 40, 227},
        {36, kCWChannelBand6GHz, 20, 0},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(QStringLiteral("channel %1 band %2 width %3")
                         .arg(row.channel)
                         .arg(row.band)
                         .arg(row.width)
                         .toStdString());
        EXPECT_EQ(FrequencyPlan::blockCenter(row.channel, row.band, row.width), row.center);
    }
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ElementText.h"
#include "wireless/CWTypes.h"
#include "wireless/ie/BssNetworkMapper.h"
#include "wireless/ie/ElementDecoder.h"
#include "wireless/ie/FrequencyPlan.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace {
unsigned bits(std::initializer_list<int> list)
{
    unsigned out = 0;
    for (int n : list)
        out |= 1u << n;
    return out;
}

constexpr std::uint16_t kPrivacy = BssNetworkMapper::kCapabilityPrivacy;
constexpr std::uint16_t kEss = BssNetworkMapper::kCapabilityESS;

#define WPA_PSK "dd 16 0050f201 0100 0050f202 0100 0050f202 0100 0050f202 "
#define WPA_EAP "dd 16 0050f201 0100 0050f202 0100 0050f202 0100 0050f201 "
#define RSN_AKM(n) "30 14 0100 000fac04 0100 000fac04 0100 000fac" n " 0000 "
#define RATES_BG "01 08 82848b960c121824 "
#define RATES_B "01 04 82848b96 "
#define RATES_A "01 08 8c129824b048606c "
#define HT_CAP "2d 1a 6e10 1b 0000000000000000000000000000000000000000000000 "
} // namespace

TEST(BssNetworkMapper, SecurityFromCapabilityAndSuites)
{
    const struct
    {
        const char *name;
        const char *hex;
        std::uint16_t capability;
        unsigned securities;
        int mode;
    } rows[] = {
        {"open", "", kEss, bits({kCWSecurityNone}), kCWSecurityModeOpen},
        {"wep", "", kEss | kPrivacy, bits({kCWSecurityWEP}), kCWSecurityModeWEP},
        {"wpa psk", WPA_PSK, kPrivacy, bits({kCWSecurityWPAPersonal}), kCWSecurityModeWPA_PSK},
        {"wpa2 psk", RSN_AKM("02"), kPrivacy, bits({kCWSecurityWPA2Personal}),
         kCWSecurityModeWPA2_PSK},
        {"mixed psk", WPA_PSK RSN_AKM("02"), kPrivacy,
         bits({kCWSecurityWPAPersonal, kCWSecurityWPAPersonalMixed, kCWSecurityWPA2Personal}),
         kCWSecurityModeWPA2_PSK},
        {"sae counts as wpa2 personal", RSN_AKM("08"), kPrivacy, bits({kCWSecurityWPA2Personal}),
         kCWSecurityModeWPA2_PSK},
        {"ft psk", RSN_AKM("04"), kPrivacy, bits({kCWSecurityWPA2Personal}),
         kCWSecurityModeWPA2_PSK},
        {"wpa eap", WPA_EAP, kPrivacy, bits({kCWSecurityWPAEnterprise}),
         kCWSecurityModeWPA_Enterprise},
        {"wpa2 eap", RSN_AKM("01"), kPrivacy, bits({kCWSecurityWPA2Enterprise}),
         kCWSecurityModeWPA2_Enterprise},
        {"suite b 192", RSN_AKM("0c"), kPrivacy, bits({kCWSecurityWPA2Enterprise}),
         kCWSecurityModeWPA2_Enterprise},
        {"mixed eap", WPA_EAP RSN_AKM("03"), kPrivacy,
         bits({kCWSecurityWPAEnterprise, kCWSecurityWPAEnterpriseMixed, kCWSecurityWPA2Enterprise}),
         kCWSecurityModeWPA2_Enterprise},
        {"owe is open to the user", RSN_AKM("12"), kPrivacy, bits({kCWSecurityNone}),
         kCWSecurityModeOpen},
        {"unknown akm only", RSN_AKM("07"), kPrivacy, 0, kCWSecurityModeOpen},
        {"broken rsn is not trusted", "30 04 0100 0000", kPrivacy, bits({kCWSecurityWEP}),
         kCWSecurityModeWEP},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const BssElements e = ElementDecoder::decode(ElementText::fromHex(row.hex));
        const unsigned s = BssNetworkMapper::securities(e, row.capability);
        EXPECT_EQ(s, row.securities);
        EXPECT_EQ(BssNetworkMapper::securityMode(s), row.mode);
        EXPECT_FALSE(s & (1u << kCWSecurityDynamicWEP));
    }
}

TEST(BssNetworkMapper, ChannelPhyAndWidth)
{
    const struct
    {
        const char *name;
        const char *hex;
        int frequency;
        int channel;
        int band;
        int width;
        unsigned phy;
    } rows[] = {
        {"b only, heard frequency ignored", RATES_B "03 01 01", 2422, 1, kCWChannelBand2GHz,
         kCWChannelWidth20MHz, bits({kCWPHYMode11b})},
        {"b/g/n 40",
         RATES_BG "03 01 06" HT_CAP "3d 16 0601"
                  "0000000000000000000000000000000000000000",
         2437, 6, kCWChannelBand2GHz, kCWChannelWidth40MHz,
         bits({kCWPHYMode11b, kCWPHYMode11g, kCWPHYMode11n})},
        {"g only", "01 08 8c129824b048606c 03 01 0b", 0, 11, kCWChannelBand2GHz,
         kCWChannelWidth20MHz, bits({kCWPHYMode11g})},
        {"ht primary when no ds",
         RATES_A HT_CAP "3d 16 2401"
                        "0000000000000000000000000000000000000000"
                        "c0 05 01 2a 00 0000",
         5180, 36, kCWChannelBand5GHz, kCWChannelWidth80MHz, bits({kCWPHYMode11a, kCWPHYMode11n})},
        {"a without frequency", RATES_A "03 01 24", 0, 36, kCWChannelBand5GHz, kCWChannelWidth20MHz,
         bits({kCWPHYMode11a})},
        {"vht 160", RATES_A "03 01 24 c0 05 01 2a 32 0000", 5180, 36, kCWChannelBand5GHz,
         kCWChannelWidth160MHz, bits({kCWPHYMode11a})},
        {"frequency only", RATES_BG, 2484, 14, kCWChannelBand2GHz, kCWChannelWidth20MHz,
         bits({kCWPHYMode11b, kCWPHYMode11g})},
        {"6 GHz he operation", RATES_A "ff 0c 24 000002 00 0000 25 03 2b 00 01", 0, 37,
         kCWChannelBand6GHz, kCWChannelWidth160MHz, 0},
        {"6 GHz by frequency", RATES_A, 6115, 33, kCWChannelBand6GHz, kCWChannelWidth20MHz, 0},
        {"nothing known", "", 0, 0, kCWChannelBandUnknown, kCWChannelWidth20MHz, 0},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const BssElements e = ElementDecoder::decode(ElementText::fromHex(row.hex));
        ASSERT_TRUE(e.ok()) << ElementText::summary(e).toStdString();
        const CWChannel c = BssNetworkMapper::channel(e, row.frequency);
        EXPECT_EQ(c.channelNumber(), row.channel);
        EXPECT_EQ(c.channelBand(), row.band);
        EXPECT_EQ(c.channelWidth(), row.width);
        EXPECT_EQ(BssNetworkMapper::phyModes(e, c.channelBand()), row.phy);
    }
}

TEST(BssNetworkMapper, NetworkDataFromObservation)
{
    const BssElements e = ElementDecoder::decode(
        ElementText::fromHex("00 04 43616665 " RATES_BG "03 01 0b 07 03 667220 " RSN_AKM("02")));
    BssObservation o;
    o.bssid = ElementText::fromHex("0012BF1232A9");
    o.capability = kPrivacy | BssNetworkMapper::kCapabilityIBSS;
    o.beaconInterval = 100;
    o.frequencyMHz = 2462;
    o.signalDbm = -48;
    o.noiseDbm = -91;
    const CWNetwork::Data d = BssNetworkMapper::networkData(e, o);
    EXPECT_EQ(d.ssidData, QByteArray("Cafe"));
    EXPECT_TRUE(d.ssidPresent);
    EXPECT_EQ(d.bssid, QStringLiteral("00:12:bf:12:32:a9"));
    EXPECT_EQ(d.rssiValue, -48);
    EXPECT_EQ(d.noiseMeasurement, -91);
    EXPECT_EQ(d.wlanChannel, CWChannel(11, kCWChannelBand2GHz, kCWChannelWidth20MHz));
    EXPECT_EQ(d.securityMode, kCWSecurityModeWPA2_PSK);
    EXPECT_TRUE(d.ibss);
    EXPECT_EQ(d.beaconInterval, 100);
    EXPECT_EQ(d.countryCode, QStringLiteral("FR"));

    // A hidden network keeps its raw (NUL) bytes but has no name.
    const BssElements hidden =
        ElementDecoder::decode(ElementText::fromHex("00 02 0000 07 03 01 02 20"));
    const CWNetwork::Data h = BssNetworkMapper::networkData(hidden, BssObservation{});
    EXPECT_FALSE(h.ssidPresent);
    EXPECT_EQ(h.ssidData, QByteArray(2, '\0'));
    EXPECT_TRUE(h.bssid.isEmpty());
    EXPECT_EQ(h.beaconInterval, 0);       // not heard: unknown
    EXPECT_TRUE(h.countryCode.isEmpty()); // not letters
}

TEST(FrequencyPlan, AnnexEChannels)
{
    const struct
    {
        int mhz;
        int channel;
        int band;
    } rows[] = {
        {2412, 1, kCWChannelBand2GHz},   {2437, 6, kCWChannelBand2GHz},
        {2472, 13, kCWChannelBand2GHz},  {2484, 14, kCWChannelBand2GHz},
        {2414, 0, kCWChannelBand2GHz},   {4920, 184, kCWChannelBand5GHz},
        {5180, 36, kCWChannelBand5GHz},  {5745, 149, kCWChannelBand5GHz},
        {5885, 177, kCWChannelBand5GHz}, {5935, 2, kCWChannelBand6GHz},
        {5955, 1, kCWChannelBand6GHz},   {6115, 33, kCWChannelBand6GHz},
        {7115, 233, kCWChannelBand6GHz}, {7125, 0, kCWChannelBand6GHz},
        {5957, 0, kCWChannelBand6GHz},   {0, 0, kCWChannelBandUnknown},
        {-5, 0, kCWChannelBandUnknown},  {60480, 0, kCWChannelBandUnknown},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.mhz);
        EXPECT_EQ(FrequencyPlan::channelForFrequency(row.mhz), row.channel);
        EXPECT_EQ(FrequencyPlan::bandForFrequency(row.mhz), row.band);
        if (row.channel != 0) {
            EXPECT_EQ(FrequencyPlan::frequencyForChannel(row.channel, row.band), row.mhz);
        }
    }
    EXPECT_EQ(FrequencyPlan::bandForChannel(14), kCWChannelBand2GHz);
    EXPECT_EQ(FrequencyPlan::bandForChannel(36), kCWChannelBand5GHz);
    EXPECT_EQ(FrequencyPlan::bandForChannel(0), kCWChannelBandUnknown);
}

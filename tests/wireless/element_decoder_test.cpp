// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ElementText.h"
#include "wireless/ie/ElementDecoder.h"
#include "wireless/ie/SuiteDecoder.h"

#include <gtest/gtest.h>

namespace {
struct DecodeRow
{
    const char *name;
    const char *hex;
    const char *expected; // ElementText::summary of the result
};

// RSN bodies used below: PSK/CCMP, and SAE+PSK transition mode.
#define RSN_PSK "30 14 0100 000fac04 0100 000fac04 0100 000fac02 0c00"
#define HT_CAP "2d 1a 6e10 1b ffff0000 000000000000000000000000 0000 00000000 00"

const DecodeRow kDecodeRows[] = {
    {"empty input", "", ""},
    {"ssid rates ds", "00 03 616263 01 08 82848b960c121824 03 01 06",
     "ssid=616263 ds=6 rates=1*,2*,5.5*,11*,6,9,12,18"},
    {"extended rates follow supported", "01 04 02040b16 32 04 0c121824",
     "rates=1,2,5.5,11,6,9,12,18"},
    {"membership selectors are not rates", "01 04 82 ff fb 8c", "rates=1*,6*,HT-sel,SAE-H2E-sel"},
    {"empty ssid", "00 00", "ssid="},
    {"zeroed ssid kept raw", "00 03 000000", "ssid=000000"},
    {"ssid longer than 32 dropped",
     "00 21 414141414141414141414141414141414141414141414141414141414141414141 03 01 0b",
     "ds=11 flags=M"},
    {"second ssid ignored", "00 01 41 00 01 42", "ssid=41 flags=D"},
    {"truncated last element", "00 01 41 30 14 0100", "ssid=41 flags=T"},
    {"one stray byte", "03 01 01 dd", "ds=1 flags=T"},
    {"length byte past the end", "03 05 01", "flags=T"},
    {"ds of wrong length", "03 02 0101", "flags=M"},
    {"rsn psk", RSN_PSK, "rsn=g4/p4/a2"},
    {"rsn sae and psk", "30 18 0100 000fac04 0100 000fac04 0200 000fac02 000fac08 8000",
     "rsn=g4/p4/a2,8"},
    {"rsn vendor akm", "30 12 0100 000fac04 0100 000fac04 0100 506f9a01", "rsn=g4/p4/a506f9a:1"},
    {"rsn version only takes defaults", "30 02 0100", "rsn=g4/p4/a1/default"},
    {"rsn akm count past the end", "30 12 0100 000fac04 0100 000fac04 0300 000fac02", "flags=M"},
    {"rsn version 2", "30 02 0200", "flags=M"},
    {"rsn zero pairwise", "30 08 0100 000fac04 0000", "flags=M"},
    {"wpa psk tkip", "dd 16 0050f201 0100 0050f202 0100 0050f202 0100 0050f202",
     "wpa=g2/p0050f2:2/a0050f2:2"},
    {"wmm is not wpa", "dd 07 0050f202 000100", ""},
    {"short vendor element", "dd 02 0050", "flags=M"},
    {"ht capabilities and 40 MHz below",
     HT_CAP " 3d 16 0b07 0000000000000000000000000000000000000000", "htcap htop=11/3"},
    {"ht operation of wrong length", "3d 15 0b07 00000000000000000000000000000000000000",
     "flags=M"},
    {"vht 80", "bf 0c 00000000 0000000000000000 c0 05 012a00 0000", "vhtcap vhtop=80"},
    {"vht 160 by segments", "c0 05 01 2a 32 0000", "vhtop=160"},
    {"vht 80+80 by segments", "c0 05 01 2a 9b 0000", "vhtop=80+80"},
    {"vht old 160", "c0 05 02 32 00 0000", "vhtop=160"},
    {"vht 20/40", "c0 05 00 00 00 0000", "vhtop=20/40"},
    {"vht operation of wrong length", "c0 06 01 2a 00 0000 00", "flags=M"},
    {"he capabilities", "ff 16 23 000000000000 0000000000000000000000 00000000", "hecap"},
    {"he capabilities too short", "ff 02 23 00", "flags=M"},
    {"he operation with 6 GHz info", "ff 0c 24 000002 00 0000 25 02 27 00 01", "heop=6g37/80"},
    {"he operation with vht, co-hosted and 6 GHz info",
     "ff 10 24 00c002 00 0000 012a00 05 25 02 27 00 01", "heop=6g37/80"},
    {"he operation announcing missing 6 GHz info", "ff 07 24 000002 00 0000", "flags=M"},
    {"eht operation 320", "ff 09 6a 01 00000000 04 1f 1f", "ehtop=320/31,31"},
    {"eht operation with disabled subchannels", "ff 0b 6a 03 00000000 03 2a 32 0200",
     "ehtop=160/42,50"},
    {"eht operation without its information", "ff 06 6a 00 00000000", "ehtop"},
    {"eht operation missing announced information", "ff 07 6a 01 00000000 02", "flags=M"},
    {"eht operation missing announced bitmap", "ff 09 6a 03 00000000 03 2a 32", "flags=M"},
    {"empty extension element", "ff 00", "flags=M"},
    {"unknown extension element", "ff 03 6c 0000", ""},
    {"country", "07 06 444520 010d14", "country=444520"},
    {"mesh id", "72 04 6d657368", "mesh=6d657368"},
    {"unknown elements skipped", "05 04 00010000 0b 05 0100000000 03 01 24", "ds=36"},
};
} // namespace

TEST(ElementDecoder, DecodesRawElements)
{
    for (const DecodeRow &row : kDecodeRows) {
        SCOPED_TRACE(row.name);
        const BssElements e = ElementDecoder::decode(ElementText::fromHex(row.hex));
        EXPECT_EQ(ElementText::summary(e).toStdString(), row.expected);
    }
    EXPECT_EQ(ElementText::summary(ElementDecoder::decode(nullptr, 8)), QString());
}

TEST(ElementDecoder, HiddenSsidRule)
{
    const struct
    {
        const char *hex;
        bool hidden;
    } rows[] = {{"", true},
                {"00 00", true},
                {"00 02 0000", true},
                {"00 02 0041", false},
                {"00 01 20", false}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.hex);
        EXPECT_EQ(ElementDecoder::decode(ElementText::fromHex(row.hex)).ssidHidden(), row.hidden);
    }
}

TEST(SuiteDecoder, EachFailurePointHasItsStatus)
{
    using S = SuiteDecoder::Status;
    const struct
    {
        const char *hex;
        S status;
    } rows[] = {
        {"", S::TooShort},
        {"01", S::TooShort},
        {"0200", S::BadVersion},
        {"0100 000f", S::TruncatedGroup},
        {"0100 000fac04 01", S::TruncatedPairwise},
        {"0100 000fac04 0200 000fac04", S::TruncatedPairwise},
        {"0100 000fac04 0000", S::ZeroPairwise},
        {"0100 000fac04 0100 000fac04 01", S::TruncatedAkm},
        {"0100 000fac04 0100 000fac04 0000", S::ZeroAkm},
        {"0100 000fac04 0100 000fac04 0100 000fac02 0c", S::TruncatedCapabilities},
        {"0100 000fac04 0100 000fac04 0100 000fac02 0c00 0000 000fac06", S::Ok},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.hex);
        const QByteArray body = ElementText::fromHex(row.hex);
        const auto r = SuiteDecoder::decodeRsn(reinterpret_cast<const std::uint8_t *>(body.data()),
                                               static_cast<std::size_t>(body.size()));
        EXPECT_EQ(r.status, row.status);
    }
}

TEST(SuiteDecoder, AkmAndCipherBits)
{
    const QByteArray body = ElementText::fromHex(
        "0100 000fac02 0200 000fac04 000fac09 0600 000fac01 000fac03 000fac0c 000fac12 000fac18 "
        "00904c01");
    const auto r = SuiteDecoder::decodeRsn(reinterpret_cast<const std::uint8_t *>(body.data()),
                                           static_cast<std::size_t>(body.size()));
    ASSERT_EQ(r.status, SuiteDecoder::Status::Ok);
    EXPECT_EQ(r.suites.groupCipher, kCipherTKIP);
    EXPECT_EQ(r.suites.pairwiseCiphers, kCipherCCMP128 | kCipherGCMP256);
    EXPECT_EQ(r.suites.akms,
              kAkm8021X | kAkmFT8021X | kAkmSuiteB192 | kAkmOWE | kAkmSAEExtKey | kAkmOther);
    EXPECT_FALSE(r.suites.capabilities.has_value());
}

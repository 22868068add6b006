// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ElementText.h"
#include "support/ReferenceRows.h"
#include "wireless/ie/ElementDecoder.h"
#include "wireless/ie/SuiteDecoder.h"

#include <gtest/gtest.h>

namespace {
SuiteDecoder::Result decodeRsn(const char *hex)
{
    const QByteArray body = ElementText::fromHex(hex);
    return SuiteDecoder::decodeRsn(reinterpret_cast<const std::uint8_t *>(body.data()),
                                   static_cast<std::size_t>(body.size()));
}
} // namespace

// Hand-made and damaged elements (data/elements.tsv): what is decoded, what is flagged as
// truncated, malformed or repeated, and the hidden-name rule.
TEST(ElementDecoder, DecodesRawElements)
{
    for (const ReferenceRows::Row &row : ReferenceRows::table("elements")) {
        SCOPED_TRACE(row["name"].toStdString());
        const BssElements e = ElementDecoder::decode(ElementText::fromHex(qPrintable(row["hex"])));
        EXPECT_EQ(ElementText::summary(e), row["summary"]);
        EXPECT_EQ(e.ssidHidden(), row["hidden"] == u"1");
    }
    EXPECT_EQ(ElementText::summary(ElementDecoder::decode(nullptr, 8)), QString());
}

TEST(SuiteDecoder, EachFailurePointHasItsStatus)
{
    using S = SuiteDecoder::Status;
    const std::pair<const char *, S> rows[] = {
        {"", S::TooShort},
        {"0200", S::BadVersion},
        {"0100 000f", S::TruncatedGroup},
        {"0100 000fac04 0200 000fac04", S::TruncatedPairwise},
        {"0100 000fac04 0000", S::ZeroPairwise},
        {"0100 000fac04 0100 000fac04 01", S::TruncatedAkm},
        {"0100 000fac04 0100 000fac04 0000", S::ZeroAkm},
        {"0100 000fac04 0100 000fac04 0100 000fac02 0c", S::TruncatedCapabilities},
        {"0100 000fac04 0100 000fac04 0100 000fac02 0c00 0000 000fac06", S::Ok},
    };
    for (const auto &[hex, status] : rows)
        EXPECT_EQ(decodeRsn(hex).status, status) << hex;

    const auto r = decodeRsn("0100 000fac02 0200 000fac04 000fac09 0600 000fac01 000fac03 "
                             "000fac0c 000fac12 000fac18 00904c01");
    ASSERT_EQ(r.status, S::Ok);
    EXPECT_EQ(
        std::tuple(r.suites.groupCipher, r.suites.pairwiseCiphers, r.suites.akms),
        std::tuple(kCipherTKIP, kCipherCCMP128 | kCipherGCMP256,
                   kAkm8021X | kAkmFT8021X | kAkmSuiteB192 | kAkmOWE | kAkmSAEExtKey | kAkmOther));
    EXPECT_FALSE(r.suites.capabilities.has_value());
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/ie/SuiteDecoder.h"

namespace {
constexpr std::uint32_t kIeeeOui = 0x000FAC;
constexpr std::uint32_t kWpaOui = 0x0050F2;

std::uint16_t le16(const std::uint8_t *p)
{
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

std::uint32_t suiteAt(const std::uint8_t *p)
{
    return (std::uint32_t(p[0]) << 24) | (std::uint32_t(p[1]) << 16) | (std::uint32_t(p[2]) << 8) |
           p[3];
}

// RSN and WPA share one layout after the version (802.11-2020 9.4.2.24.1): group suite,
// pairwise count + suites, AKM count + suites, then (RSN) capabilities and more. A field may be
// missing only together with everything after it; missing ones take the defaults of the
// clause (CCMP-128 / 802.1X for RSN, TKIP / 802.1X for the WPA element).
SuiteDecoder::Result decodeSuites(const std::uint8_t *p, std::size_t len, bool wpa)
{
    using Status = SuiteDecoder::Status;
    SuiteDecoder::Result r;
    SecuritySuites &s = r.suites;
    const std::uint32_t oui = wpa ? kWpaOui : kIeeeOui;
    const std::uint32_t defaultCipher = (oui << 8) | (wpa ? 2u : 4u);
    const std::uint32_t defaultAkm = (oui << 8) | 1u;

    if (len < 2)
        return r;
    s.version = le16(p);
    if (s.version != 1) {
        r.status = Status::BadVersion;
        return r;
    }
    p += 2;
    len -= 2;

    auto applyDefaults = [&](bool group, bool pairwise, bool akm) {
        s.defaulted = true;
        if (group)
            s.groupCipher = SuiteDecoder::cipherBit(defaultCipher, wpa);
        if (pairwise) {
            s.pairwiseSuites.append(defaultCipher);
            s.pairwiseCiphers = SuiteDecoder::cipherBit(defaultCipher, wpa);
        }
        if (akm) {
            s.akmSuites.append(defaultAkm);
            s.akms = SuiteDecoder::akmBit(defaultAkm, wpa);
        }
        r.status = Status::Ok;
        return r;
    };

    if (len == 0)
        return applyDefaults(true, true, true);
    if (len < 4) {
        r.status = Status::TruncatedGroup;
        return r;
    }
    s.groupCipher = SuiteDecoder::cipherBit(suiteAt(p), wpa);
    p += 4;
    len -= 4;

    if (len == 0)
        return applyDefaults(false, true, true);
    if (len < 2) {
        r.status = Status::TruncatedPairwise;
        return r;
    }
    const std::size_t pairwiseCount = le16(p);
    p += 2;
    len -= 2;
    if (pairwiseCount == 0) {
        r.status = Status::ZeroPairwise;
        return r;
    }
    if (len / 4 < pairwiseCount) {
        r.status = Status::TruncatedPairwise;
        return r;
    }
    for (std::size_t i = 0; i < pairwiseCount; ++i, p += 4, len -= 4) {
        const std::uint32_t suite = suiteAt(p);
        s.pairwiseSuites.append(suite);
        s.pairwiseCiphers |= SuiteDecoder::cipherBit(suite, wpa);
    }

    if (len == 0)
        return applyDefaults(false, false, true);
    if (len < 2) {
        r.status = Status::TruncatedAkm;
        return r;
    }
    const std::size_t akmCount = le16(p);
    p += 2;
    len -= 2;
    if (akmCount == 0) {
        r.status = Status::ZeroAkm;
        return r;
    }
    if (len / 4 < akmCount) {
        r.status = Status::TruncatedAkm;
        return r;
    }
    for (std::size_t i = 0; i < akmCount; ++i, p += 4, len -= 4) {
        const std::uint32_t suite = suiteAt(p);
        s.akmSuites.append(suite);
        s.akms |= SuiteDecoder::akmBit(suite, wpa);
    }

    if (!wpa && len > 0) {
        if (len < 2) {
            r.status = Status::TruncatedCapabilities;
            return r;
        }
        s.capabilities = le16(p);
    }
    // PMKIDs and the group management cipher follow; nothing here needs them, and an
    // element may grow further fields, so trailing bytes are not an error.
    r.status = Status::Ok;
    return r;
}
} // namespace

SuiteDecoder::Result SuiteDecoder::decodeRsn(const std::uint8_t *body, std::size_t length)
{
    return decodeSuites(body, length, false);
}

SuiteDecoder::Result SuiteDecoder::decodeWpa(const std::uint8_t *body, std::size_t length)
{
    return decodeSuites(body, length, true);
}

std::uint32_t SuiteDecoder::cipherBit(std::uint32_t suite, bool wpa)
{
    const std::uint32_t oui = suite >> 8;
    const std::uint32_t type = suite & 0xFF;
    if (oui == kIeeeOui && type <= 10)
        return 1u << type;
    // The WPA element only ever defined WEP-40, TKIP, CCMP and WEP-104 under its own OUI.
    if (wpa && oui == kWpaOui && (type == 0 || type == 1 || type == 2 || type == 4 || type == 5))
        return 1u << type;
    return kCipherOther;
}

std::uint32_t SuiteDecoder::akmBit(std::uint32_t suite, bool wpa)
{
    const std::uint32_t oui = suite >> 8;
    const std::uint32_t type = suite & 0xFF;
    if (wpa && oui == kWpaOui) {
        if (type == 1)
            return kAkm8021X;
        if (type == 2)
            return kAkmPSK;
        return kAkmOther;
    }
    if (oui != kIeeeOui)
        return kAkmOther;
    // 802.11-2020 Table 9-151 (and 802.11az/be additions for 24 and 25).
    switch (type) {
    case 1:
        return kAkm8021X;
    case 2:
        return kAkmPSK;
    case 3:
        return kAkmFT8021X;
    case 4:
        return kAkmFTPSK;
    case 5:
        return kAkm8021XSHA256;
    case 6:
        return kAkmPSKSHA256;
    case 8:
        return kAkmSAE;
    case 9:
        return kAkmFTSAE;
    case 11:
        return kAkmSuiteB;
    case 12:
        return kAkmSuiteB192;
    case 13:
        return kAkmFT8021XSHA384;
    case 18:
        return kAkmOWE;
    case 24:
        return kAkmSAEExtKey;
    case 25:
        return kAkmFTSAEExtKey;
    default:
        return kAkmOther;
    }
}

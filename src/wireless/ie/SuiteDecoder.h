// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/ie/BssElements.h"

#include <cstddef>
#include <cstdint>

// Decodes the body of an RSN element (ID 48) or of the WPA vendor element (00:50:F2 type 1,
// body after the OUI and type). Each point where the body can fail has its own status, so a
// malformed element can be reported exactly and is never half-trusted.
class SuiteDecoder
{
public:
    enum class Status {
        Ok,
        TooShort,             // no room for the version
        BadVersion,           // version other than 1
        TruncatedGroup,       // a partial group cipher suite
        TruncatedPairwise,    // pairwise count or list cut short
        ZeroPairwise,         // a pairwise count of 0
        TruncatedAkm,         // AKM count or list cut short
        ZeroAkm,              // an AKM count of 0
        TruncatedCapabilities // a single byte where the 2-byte capabilities belong
    };

    struct Result
    {
        Status status = Status::TooShort;
        SecuritySuites suites;
    };

    static Result decodeRsn(const std::uint8_t *body, std::size_t length);
    static Result decodeWpa(const std::uint8_t *body, std::size_t length);

    static std::uint32_t cipherBit(std::uint32_t suite, bool wpa);
    static std::uint32_t akmBit(std::uint32_t suite, bool wpa);
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QVarLengthArray>

#include <cstdint>
#include <optional>

// Cipher suites as a bit set. Bit n stands for suite type n of the IEEE OUI 00-0F-AC (the WPA
// element uses the same type numbers under 00:50:F2); anything else sets kCipherOther.
enum CipherBit : std::uint32_t {
    kCipherUseGroup = 1u << 0,
    kCipherWEP40 = 1u << 1,
    kCipherTKIP = 1u << 2,
    kCipherCCMP128 = 1u << 4,
    kCipherWEP104 = 1u << 5,
    kCipherBIPCMAC128 = 1u << 6,
    kCipherGroupNotAllowed = 1u << 7,
    kCipherGCMP128 = 1u << 8,
    kCipherGCMP256 = 1u << 9,
    kCipherCCMP256 = 1u << 10,
    kCipherOther = 1u << 31,
};

// AKM suites as a bit set, named after what they mean rather than their suite numbers.
enum AkmBit : std::uint32_t {
    kAkm8021X = 1u << 0,          // 00-0F-AC:1, WPA 00:50:F2:1
    kAkmPSK = 1u << 1,            // :2, WPA 00:50:F2:2
    kAkmFT8021X = 1u << 2,        // :3
    kAkmFTPSK = 1u << 3,          // :4
    kAkm8021XSHA256 = 1u << 4,    // :5
    kAkmPSKSHA256 = 1u << 5,      // :6
    kAkmSAE = 1u << 6,            // :8
    kAkmFTSAE = 1u << 7,          // :9
    kAkmSuiteB = 1u << 8,         // :11
    kAkmSuiteB192 = 1u << 9,      // :12
    kAkmFT8021XSHA384 = 1u << 10, // :13
    kAkmOWE = 1u << 11,           // :18
    kAkmSAEExtKey = 1u << 12,     // :24
    kAkmFTSAEExtKey = 1u << 13,   // :25
    kAkmOther = 1u << 31,
};

// Everything decoded from one RSN element or one WPA vendor element.
struct SecuritySuites
{
    std::uint16_t version = 0;
    std::uint32_t groupCipher = 0; // one CipherBit
    std::uint32_t pairwiseCiphers = 0;
    std::uint32_t akms = 0;
    // The suites exactly as sent, in element order: (OUI << 8) | type.
    QVarLengthArray<std::uint32_t, 4> pairwiseSuites;
    QVarLengthArray<std::uint32_t, 4> akmSuites;
    std::optional<std::uint16_t> capabilities; // RSN only
    bool defaulted = false; // optional fields were absent and take the standard's defaults
};

// A rate of the Supported or Extended Supported Rates element.
struct RateEntry
{
    std::uint8_t halfMbps = 0; // units of 500 kb/s
    bool basic = false;
};

// BSS membership selectors found among the rates (not rates themselves).
enum MembershipSelector : unsigned {
    kSelectorHT = 1u << 0,     // 0xFF
    kSelectorVHT = 1u << 1,    // 0xFE
    kSelectorGLK = 1u << 2,    // 0xFD
    kSelectorEPD = 1u << 3,    // 0xFC
    kSelectorSAEH2E = 1u << 4, // 0xFB
    kSelectorHE = 1u << 5,     // 0xFA
};

struct HtCapabilities
{
    std::uint16_t info = 0;
    bool supports40MHz() const { return info & 0x0002; }
};

struct HtOperation
{
    std::uint8_t primaryChannel = 0;
    std::uint8_t secondaryOffset = 0; // 0 none, 1 above, 3 below, 2 reserved
    bool anyWidth = false;            // STA Channel Width bit
    bool is40MHz() const { return secondaryOffset == 1 || secondaryOffset == 3; }
};

// Widths a VHT or HE operation can announce.
enum class OperatingWidth { W20or40, W80, W160, W80p80 };

struct VhtCapabilities
{
    std::uint32_t info = 0;
};

struct VhtOperation
{
    std::uint8_t channelWidth = 0; // the raw field
    std::uint8_t centerSegment0 = 0;
    std::uint8_t centerSegment1 = 0;
    OperatingWidth width() const;
};

struct HeCapabilities
{
    QByteArray macCapabilities; // 6 bytes
};

struct HeOperation
{
    std::uint32_t parameters = 0; // 24 bits
    std::optional<VhtOperation> vhtInfo;
    struct SixGHzInfo
    {
        std::uint8_t primaryChannel = 0;
        std::uint8_t control = 0;
        std::uint8_t centerSegment0 = 0;
        std::uint8_t centerSegment1 = 0;
        OperatingWidth width() const;
    };
    std::optional<SixGHzInfo> sixGHz;
};

// EHT Operation (802.11be-2024 9.4.2.321). Only the optional EHT Operation Information
// matters here: the width of the BSS (20 to 320 MHz) and its centre frequency segments.
struct EhtOperation
{
    std::uint8_t parameters = 0;
    struct Info
    {
        std::uint8_t control = 0; // bits 0-2: 0 20, 1 40, 2 80, 3 160, 4 320 MHz
        std::uint8_t centerSegment0 = 0;
        std::uint8_t centerSegment1 = 0;
        int widthMHz() const; // 0 for a reserved value
    };
    std::optional<Info> info;
};

// The decoded information elements of one beacon or probe response. Each field is present
// only when its element was there and passed its checks; flags tell what was skipped.
struct BssElements
{
    enum Flag : unsigned {
        kTruncated = 1u << 0, // bytes left over that do not form a whole element
        kMalformed = 1u << 1, // an element whose length or contents failed its checks
        kDuplicate = 1u << 2, // a second copy of a single-instance element (ignored)
    };
    unsigned flags = 0;
    int elementCount = 0; // whole elements walked
    int skippedCount = 0; // of those, malformed or duplicate ones

    std::optional<QByteArray> ssid;       // raw bytes, 0..32
    QVarLengthArray<RateEntry, 16> rates; // Supported then Extended, in element order
    unsigned selectors = 0;               // MembershipSelector bits
    std::optional<std::uint8_t> dsChannel;
    std::optional<QByteArray> country; // country string, 3 bytes as sent
    std::optional<SecuritySuites> rsn;
    std::optional<SecuritySuites> wpa;
    std::optional<HtCapabilities> htCapabilities;
    std::optional<HtOperation> htOperation;
    std::optional<VhtCapabilities> vhtCapabilities;
    std::optional<VhtOperation> vhtOperation;
    std::optional<HeCapabilities> heCapabilities;
    std::optional<HeOperation> heOperation;
    std::optional<EhtOperation> ehtOperation;
    std::optional<QByteArray> meshId;

    bool ok() const { return flags == 0; }
    // The SSID counts as hidden when it is absent, empty or all NUL bytes.
    bool ssidHidden() const;
};

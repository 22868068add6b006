// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/ie/ElementDecoder.h"

#include "wireless/ie/SuiteDecoder.h"

#include <array>

namespace {
using Bytes = const std::uint8_t *;

// A decoder gets a body whose length its table row has already checked. It returns false
// when the contents are wrong in a way the length cannot show; the element is then dropped.
using DecodeFn = bool (*)(Bytes body, std::size_t length, BssElements &out);

struct ElementRow
{
    int id;
    int extension; // Element ID Extension for ID 255, -1 otherwise
    const char *name;
    std::size_t minLength; // of the body (after the extension byte, for ID 255)
    std::size_t maxLength;
    bool repeatable; // several copies are normal (rates, vendor elements)
    DecodeFn decode;
};

std::uint16_t le16(Bytes p)
{
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

bool decodeSsid(Bytes body, std::size_t length, BssElements &out)
{
    out.ssid = QByteArray(reinterpret_cast<const char *>(body), static_cast<qsizetype>(length));
    return true;
}

// Supported Rates and Extended Supported Rates (802.11-2020 9.4.2.3, 9.4.2.12): bit 7 marks a
// basic rate; the values in Table 9-78 with bit 7 set are BSS membership selectors instead.
bool decodeRates(Bytes body, std::size_t length, BssElements &out)
{
    for (std::size_t i = 0; i < length; ++i) {
        const std::uint8_t b = body[i];
        switch (b) {
        case 0xFF:
            out.selectors |= kSelectorHT;
            continue;
        case 0xFE:
            out.selectors |= kSelectorVHT;
            continue;
        case 0xFD:
            out.selectors |= kSelectorGLK;
            continue;
        case 0xFC:
            out.selectors |= kSelectorEPD;
            continue;
        case 0xFB:
            out.selectors |= kSelectorSAEH2E;
            continue;
        case 0xFA:
            out.selectors |= kSelectorHE;
            continue;
        default:
            break;
        }
        if ((b & 0x7F) == 0)
            continue; // a zero rate carries nothing
        out.rates.append(RateEntry{static_cast<std::uint8_t>(b & 0x7F), (b & 0x80) != 0});
    }
    return true;
}

bool decodeDs(Bytes body, std::size_t, BssElements &out)
{
    out.dsChannel = body[0];
    return true;
}

bool decodeCountry(Bytes body, std::size_t, BssElements &out)
{
    out.country = QByteArray(reinterpret_cast<const char *>(body), 3);
    return true;
}

bool decodeRsn(Bytes body, std::size_t length, BssElements &out)
{
    SuiteDecoder::Result r = SuiteDecoder::decodeRsn(body, length);
    if (r.status != SuiteDecoder::Status::Ok)
        return false;
    out.rsn = std::move(r.suites);
    return true;
}

bool decodeHtCapabilities(Bytes body, std::size_t, BssElements &out)
{
    out.htCapabilities = HtCapabilities{le16(body)};
    return true;
}

// HT Operation (802.11-2020 9.4.2.56): primary channel, then HT Operation Information.
bool decodeHtOperation(Bytes body, std::size_t, BssElements &out)
{
    HtOperation op;
    op.primaryChannel = body[0];
    op.secondaryOffset = body[1] & 0x03;
    op.anyWidth = (body[1] & 0x04) != 0;
    out.htOperation = op;
    return true;
}

bool decodeVhtCapabilities(Bytes body, std::size_t, BssElements &out)
{
    out.vhtCapabilities = VhtCapabilities{static_cast<std::uint32_t>(le16(body)) |
                                          (static_cast<std::uint32_t>(le16(body + 2)) << 16)};
    return true;
}

bool decodeVhtOperation(Bytes body, std::size_t, BssElements &out)
{
    out.vhtOperation = VhtOperation{body[0], body[1], body[2]};
    return true;
}

bool decodeMeshId(Bytes body, std::size_t length, BssElements &out)
{
    out.meshId = QByteArray(reinterpret_cast<const char *>(body), static_cast<qsizetype>(length));
    return true;
}

// Vendor Specific (9.4.2.25). Only the WPA element (00:50:F2 type 1) matters; other vendor
// elements are well-formed and simply not ours.
bool decodeVendor(Bytes body, std::size_t length, BssElements &out)
{
    if (length < 4 || body[0] != 0x00 || body[1] != 0x50 || body[2] != 0xF2 || body[3] != 0x01)
        return true;
    if (out.wpa)
        return true; // a second WPA element is ignored like any other duplicate
    SuiteDecoder::Result r = SuiteDecoder::decodeWpa(body + 4, length - 4);
    if (r.status != SuiteDecoder::Status::Ok)
        return false;
    out.wpa = std::move(r.suites);
    return true;
}

bool decodeHeCapabilities(Bytes body, std::size_t, BssElements &out)
{
    out.heCapabilities = HeCapabilities{QByteArray(reinterpret_cast<const char *>(body), 6)};
    return true;
}

// HE Operation (802.11ax-2021 9.4.2.249): 3 bytes of parameters, BSS colour, basic HE-MCS
// set, then optional parts announced by parameter bits 14 (VHT Operation Information),
// 15 (co-hosted BSSID indicator) and 17 (6 GHz Operation Information).
bool decodeHeOperation(Bytes body, std::size_t length, BssElements &out)
{
    HeOperation op;
    op.parameters = body[0] | (std::uint32_t(body[1]) << 8) | (std::uint32_t(body[2]) << 16);
    std::size_t at = 6;
    const bool hasVht = op.parameters & (1u << 14);
    const bool hasCohosted = op.parameters & (1u << 15);
    const bool hasSixGHz = op.parameters & (1u << 17);
    const std::size_t needed = at + (hasVht ? 3 : 0) + (hasCohosted ? 1 : 0) + (hasSixGHz ? 5 : 0);
    if (length < needed)
        return false;
    if (hasVht) {
        op.vhtInfo = VhtOperation{body[at], body[at + 1], body[at + 2]};
        at += 3;
    }
    if (hasCohosted)
        at += 1;
    if (hasSixGHz)
        op.sixGHz = HeOperation::SixGHzInfo{body[at], body[at + 1], body[at + 2], body[at + 3]};
    out.heOperation = op;
    return true;
}

// EHT Operation (802.11be-2024 9.4.2.321): parameters, the basic EHT-MCS and NSS set (4),
// then EHT Operation Information (control and two centre segments) when parameter bit 0 is
// set, followed by a 2-byte disabled subchannel bitmap when bit 1 is.
bool decodeEhtOperation(Bytes body, std::size_t length, BssElements &out)
{
    EhtOperation op;
    op.parameters = body[0];
    const bool hasInfo = op.parameters & 0x01;
    const bool hasBitmap = hasInfo && (op.parameters & 0x02);
    if (length < 5 + (hasInfo ? 3u : 0u) + (hasBitmap ? 2u : 0u))
        return false;
    if (hasInfo)
        op.info = EhtOperation::Info{body[5], body[6], body[7]};
    out.ehtOperation = op;
    return true;
}

// One row per element. Lengths are those of 802.11-2020 clause 9.4.2, with two allowances
// seen on real access points: rate elements longer than 8 and country elements with no
// triplets. Rows for single-instance elements keep the first copy.
constexpr std::array<ElementRow, 16> kElements{{
    {0, -1, "SSID", 0, 32, false, decodeSsid},
    {1, -1, "Supported Rates", 1, 255, true, decodeRates},
    {3, -1, "DS Parameter Set", 1, 1, false, decodeDs},
    {7, -1, "Country", 3, 255, false, decodeCountry},
    {45, -1, "HT Capabilities", 26, 26, false, decodeHtCapabilities},
    {48, -1, "RSN", 2, 255, false, decodeRsn},
    {50, -1, "Extended Supported Rates", 1, 255, true, decodeRates},
    {61, -1, "HT Operation", 22, 22, false, decodeHtOperation},
    {114, -1, "Mesh ID", 0, 32, false, decodeMeshId},
    {191, -1, "VHT Capabilities", 12, 12, false, decodeVhtCapabilities},
    {192, -1, "VHT Operation", 5, 5, false, decodeVhtOperation},
    {221, -1, "Vendor Specific", 3, 255, true, decodeVendor},
    // HE Capabilities: MAC (6) + PHY (11) + the mandatory 80 MHz MCS map (4).
    {255, 35, "HE Capabilities", 21, 254, false, decodeHeCapabilities},
    {255, 36, "HE Operation", 6, 254, false, decodeHeOperation},
    {255, 106, "EHT Operation", 5, 254, false, decodeEhtOperation},
    {255, -2, "Element ID Extension", 0, 254, true, nullptr}, // other extensions
}};

const ElementRow *findRow(int id, int extension)
{
    for (const ElementRow &row : kElements) {
        if (row.id != id)
            continue;
        if (id != 255 || row.extension == extension || row.extension == -2)
            return &row;
    }
    return nullptr;
}

// Which single-instance elements were seen, by table row.
using SeenSet = std::array<bool, kElements.size()>;
} // namespace

BssElements ElementDecoder::decode(const std::uint8_t *data, std::size_t length)
{
    BssElements out;
    SeenSet seen{};
    if (!data)
        length = 0;
    const std::uint8_t *ie = data;
    std::size_t len = length;
    // The guard keeps ie[1] in range and the element inside the buffer.
    while (len >= 2 && len - 2 >= ie[1]) {
        const int id = ie[0];
        std::size_t bodyLength = ie[1];
        const std::uint8_t *body = ie + 2;
        ie += 2 + bodyLength;
        len -= 2 + bodyLength;
        ++out.elementCount;

        int extension = -1;
        if (id == 255) {
            if (bodyLength < 1) {
                out.flags |= BssElements::kMalformed;
                ++out.skippedCount;
                continue;
            }
            extension = body[0];
            ++body;
            --bodyLength;
        }
        const ElementRow *row = findRow(id, extension);
        if (!row || !row->decode)
            continue; // an element nothing here needs
        const std::size_t index = static_cast<std::size_t>(row - kElements.data());
        if (!row->repeatable && seen[index]) {
            out.flags |= BssElements::kDuplicate;
            ++out.skippedCount;
            continue;
        }
        seen[index] = true;
        if (bodyLength < row->minLength || bodyLength > row->maxLength ||
            !row->decode(body, bodyLength, out)) {
            out.flags |= BssElements::kMalformed;
            ++out.skippedCount;
        }
    }
    if (len > 0)
        out.flags |= BssElements::kTruncated;
    return out;
}

const char *ElementDecoder::elementName(int id, int extension)
{
    const ElementRow *row = findRow(id, extension);
    return row && row->decode ? row->name : nullptr;
}

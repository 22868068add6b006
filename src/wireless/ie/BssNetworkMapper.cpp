// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/ie/BssNetworkMapper.h"

#include "wireless/CWTypes.h"
#include "wireless/ie/FrequencyPlan.h"

#include <array>

namespace {
// AKMs that authenticate with a shared password and with 802.1X. SAE is the WPA3 form of a
// personal network; FT and Suite B are variants of the same two kinds.
constexpr std::uint32_t kPersonalAkms =
    kAkmPSK | kAkmFTPSK | kAkmPSKSHA256 | kAkmSAE | kAkmFTSAE | kAkmSAEExtKey | kAkmFTSAEExtKey;
constexpr std::uint32_t kEnterpriseAkms =
    kAkm8021X | kAkmFT8021X | kAkm8021XSHA256 | kAkmSuiteB | kAkmSuiteB192 | kAkmFT8021XSHA384;

// Rates in units of 500 kb/s: the DSSS/CCK set of 802.11b and the OFDM set of 802.11a/g.
bool isCck(std::uint8_t halfMbps)
{
    return halfMbps == 2 || halfMbps == 4 || halfMbps == 11 || halfMbps == 22;
}

bool isOfdm(std::uint8_t halfMbps)
{
    switch (halfMbps) {
    case 12:
    case 18:
    case 24:
    case 36:
    case 48:
    case 72:
    case 96:
    case 108:
        return true;
    default:
        return false;
    }
}

int widthCode(OperatingWidth width)
{
    switch (width) {
    case OperatingWidth::W80:
        return kCWChannelWidth80MHz;
    // 80+80 MHz spans 160 MHz of spectrum; the boundary knows no separate code for it.
    case OperatingWidth::W160:
    case OperatingWidth::W80p80:
        return kCWChannelWidth160MHz;
    default:
        return kCWChannelWidthUnknown;
    }
}
// A candidate reading of the width: centre channel numbers of one or two segments.
CWOperatingChannel candidate(int primary, int band, int widthMHz, int center0, int center1 = 0)
{
    CWOperatingChannel c;
    c.primaryChannel = primary;
    c.band = band;
    c.widthMHz = widthMHz;
    c.centerMHz = {FrequencyPlan::frequencyForChannel(center0, band),
                   center1 ? FrequencyPlan::frequencyForChannel(center1, band) : 0};
    if (c.centerMHz[0] == 0 || (center1 && c.centerMHz[1] == 0))
        c.widthMHz = 0;
    return c;
}

// VHT Operation and the VHT part of HE Operation (802.11-2020 Table 9-274): since 802.11-2016
// 160 MHz sends the 80 MHz centre of the primary half in segment 0 and the 160 MHz centre in
// segment 1; 80+80 sends both 80 MHz centres. Widths 2 and 3 are the older forms.
CWOperatingChannel fromVht(const VhtOperation &op, int primary, int band)
{
    const int seg0 = op.centerSegment0;
    const int seg1 = op.centerSegment1;
    switch (op.width()) {
    case OperatingWidth::W80:
        return candidate(primary, band, 80, seg0);
    case OperatingWidth::W160:
        return op.channelWidth == 2 ? candidate(primary, band, 160, seg0)
                                    : candidate(primary, band, 160, seg1);
    case OperatingWidth::W80p80:
        return candidate(primary, band, 80, seg0, seg1);
    default:
        return {};
    }
}

// 6 GHz Operation Information of HE Operation (802.11ax-2021 9.4.2.249): segment 0 is the
// centre of a 20, 40 or 80 MHz channel; for 160 it is the primary 80's and segment 1 the
// 160's; for 80+80 they are the two 80 MHz centres.
CWOperatingChannel fromSixGHz(const HeOperation::SixGHzInfo &info, int primary, int band)
{
    switch (info.control & 0x03) {
    case 0:
        return candidate(primary, band, 20, info.centerSegment0);
    case 1:
        return candidate(primary, band, 40, info.centerSegment0);
    case 2:
        return candidate(primary, band, 80, info.centerSegment0);
    default:
        if (info.width() == OperatingWidth::W80p80)
            return candidate(primary, band, 80, info.centerSegment0, info.centerSegment1);
        // Early 6 GHz access points put the 160 MHz centre in segment 0 and leave 1 empty.
        return candidate(primary, band, 160,
                         info.centerSegment1 ? info.centerSegment1 : info.centerSegment0);
    }
}

// EHT Operation Information (802.11be-2024 9.4.2.321): segment 0 is the centre of a 20, 40
// or 80 MHz channel; for 160 and 320 MHz segment 1 is the centre of the whole channel.
CWOperatingChannel fromEht(const EhtOperation::Info &info, int primary, int band)
{
    const int width = info.widthMHz();
    if (width == 0)
        return {};
    return candidate(primary, band, width,
                     width >= 160 ? info.centerSegment1 : info.centerSegment0);
}
} // namespace

CWOperatingChannel BssNetworkMapper::operatingChannel(const BssElements &elements, int frequencyMHz)
{
    const CWChannel announced = channel(elements, frequencyMHz);
    const int primary = int(announced.channelNumber());
    const int band = announced.channelBand();
    if (FrequencyPlan::frequencyForChannel(primary, band) == 0)
        return CWOperatingChannel{primary, band, 0, {}};

    // Widest first; a reading whose span misses the primary channel is garbled or meant for
    // another band (some 2.4 GHz access points send a VHT element) and is passed over.
    std::array<CWOperatingChannel, 5> readings;
    if (elements.ehtOperation && elements.ehtOperation->info)
        readings[0] = fromEht(*elements.ehtOperation->info, primary, band);
    if (elements.heOperation && elements.heOperation->sixGHz)
        readings[1] = fromSixGHz(*elements.heOperation->sixGHz, primary, band);
    if (elements.vhtOperation)
        readings[2] = fromVht(*elements.vhtOperation, primary, band);
    if (elements.heOperation && elements.heOperation->vhtInfo)
        readings[3] = fromVht(*elements.heOperation->vhtInfo, primary, band);
    if (elements.htOperation && elements.htOperation->is40MHz()) {
        // The pair is built on HT Operation's own primary channel, 10 MHz above or below it.
        const HtOperation &ht = *elements.htOperation;
        const int htPrimary = ht.primaryChannel ? ht.primaryChannel : primary;
        readings[4] = candidate(primary, band, 40, htPrimary + (ht.secondaryOffset == 1 ? 2 : -2));
    }
    for (const CWOperatingChannel &reading : readings) {
        if (reading.coversPrimary())
            return reading;
    }
    return candidate(primary, band, 20, primary);
}

CWChannel BssNetworkMapper::channel(const BssElements &elements, int frequencyMHz)
{
    const int heardBand = FrequencyPlan::bandForFrequency(frequencyMHz);
    int number = 0;
    int band = kCWChannelBandUnknown;
    if (elements.dsChannel && *elements.dsChannel != 0) {
        number = *elements.dsChannel;
    } else if (elements.htOperation && elements.htOperation->primaryChannel != 0) {
        number = elements.htOperation->primaryChannel;
    } else if (elements.heOperation && elements.heOperation->sixGHz &&
               elements.heOperation->sixGHz->primaryChannel != 0) {
        number = elements.heOperation->sixGHz->primaryChannel;
        band = kCWChannelBand6GHz;
    }
    if (number == 0)
        number = FrequencyPlan::channelForFrequency(frequencyMHz);
    if (band == kCWChannelBandUnknown)
        band =
            heardBand != kCWChannelBandUnknown ? heardBand : FrequencyPlan::bandForChannel(number);
    return CWChannel(number, band, channelWidth(elements));
}

int BssNetworkMapper::channelWidth(const BssElements &elements)
{
    if (elements.heOperation && elements.heOperation->sixGHz) {
        const OperatingWidth w = elements.heOperation->sixGHz->width();
        if (w != OperatingWidth::W20or40)
            return widthCode(w);
        // 20 or 40: the control field tells them apart directly.
        return (elements.heOperation->sixGHz->control & 0x03) == 1 ? kCWChannelWidth40MHz
                                                                   : kCWChannelWidth20MHz;
    }
    if (elements.vhtOperation && elements.vhtOperation->width() != OperatingWidth::W20or40)
        return widthCode(elements.vhtOperation->width());
    if (elements.heOperation && elements.heOperation->vhtInfo &&
        elements.heOperation->vhtInfo->width() != OperatingWidth::W20or40)
        return widthCode(elements.heOperation->vhtInfo->width());
    if (elements.htOperation && elements.htOperation->is40MHz())
        return kCWChannelWidth40MHz;
    return kCWChannelWidth20MHz;
}

unsigned BssNetworkMapper::securities(const BssElements &elements, std::uint16_t capability)
{
    const bool privacy = capability & kCapabilityPrivacy;
    if (!elements.rsn && !elements.wpa)
        return privacy ? 1u << kCWSecurityWEP : 1u << kCWSecurityNone;

    const std::uint32_t rsnAkms = elements.rsn ? elements.rsn->akms : 0;
    const std::uint32_t wpaAkms = elements.wpa ? elements.wpa->akms : 0;
    unsigned bits = 0;
    // Opportunistic Wireless Encryption asks the user for nothing and does not authenticate
    // the access point, so for joining and for trust it is an open network: it counts as
    // "none", which also keeps the join dialog from asking for a passphrase.
    if (rsnAkms & kAkmOWE)
        bits |= 1u << kCWSecurityNone;

    const bool wpaPersonal = wpaAkms & kPersonalAkms;
    const bool rsnPersonal = rsnAkms & kPersonalAkms;
    if (wpaPersonal)
        bits |= 1u << kCWSecurityWPAPersonal;
    if (rsnPersonal)
        bits |= 1u << kCWSecurityWPA2Personal;
    if (wpaPersonal && rsnPersonal)
        bits |= 1u << kCWSecurityWPAPersonalMixed;

    const bool wpaEnterprise = wpaAkms & kEnterpriseAkms;
    const bool rsnEnterprise = rsnAkms & kEnterpriseAkms;
    if (wpaEnterprise)
        bits |= 1u << kCWSecurityWPAEnterprise;
    if (rsnEnterprise)
        bits |= 1u << kCWSecurityWPA2Enterprise;
    if (wpaEnterprise && rsnEnterprise)
        bits |= 1u << kCWSecurityWPAEnterpriseMixed;
    // Dynamic WEP (kCWSecurityDynamicWEP) is invisible in a beacon: it looks like static WEP.
    return bits;
}

int BssNetworkMapper::securityMode(unsigned securities)
{
    // Same order as the security text, so the dialog and the table agree; the mixed modes
    // are joined as their WPA2 half.
    static constexpr struct
    {
        int security;
        int mode;
    } kOrder[] = {
        {kCWSecurityNone, kCWSecurityModeOpen},
        {kCWSecurityWEP, kCWSecurityModeWEP},
        {kCWSecurityWPAPersonalMixed, kCWSecurityModeWPA2_PSK},
        {kCWSecurityWPAPersonal, kCWSecurityModeWPA_PSK},
        {kCWSecurityWPA2Personal, kCWSecurityModeWPA2_PSK},
        {kCWSecurityDynamicWEP, kCWSecurityMode8021XWEP},
        {kCWSecurityWPAEnterpriseMixed, kCWSecurityModeWPA2_Enterprise},
        {kCWSecurityWPAEnterprise, kCWSecurityModeWPA_Enterprise},
        {kCWSecurityWPA2Enterprise, kCWSecurityModeWPA2_Enterprise},
    };
    for (const auto &row : kOrder) {
        if (securities & (1u << row.security))
            return row.mode;
    }
    return kCWSecurityModeOpen;
}

unsigned BssNetworkMapper::phyModes(const BssElements &elements, int band)
{
    bool cck = false;
    bool ofdm = false;
    for (const RateEntry &rate : elements.rates) {
        cck = cck || isCck(rate.halfMbps);
        ofdm = ofdm || isOfdm(rate.halfMbps);
    }
    unsigned bits = 0;
    if (band == kCWChannelBand2GHz) {
        if (cck)
            bits |= 1u << kCWPHYMode11b;
        if (ofdm)
            bits |= 1u << kCWPHYMode11g;
    } else if (band == kCWChannelBand5GHz && ofdm) {
        bits |= 1u << kCWPHYMode11a;
    }
    if (elements.htCapabilities)
        bits |= 1u << kCWPHYMode11n;
    return bits;
}

QString BssNetworkMapper::bssidText(const QByteArray &bssid)
{
    if (bssid.size() != 6)
        return {};
    return QString::fromLatin1(bssid.toHex(':'));
}

QString BssNetworkMapper::countryCode(const BssElements &elements)
{
    if (!elements.country || elements.country->size() < 2)
        return {};
    const char a = elements.country->at(0);
    const char b = elements.country->at(1);
    auto ok = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
    };
    if (!ok(a) || !ok(b))
        return {};
    return QString::fromLatin1(elements.country->left(2)).toUpper();
}

CWNetwork::Data BssNetworkMapper::networkData(const BssElements &elements,
                                              const BssObservation &observation)
{
    CWNetwork::Data d;
    d.ssidPresent = !elements.ssidHidden();
    if (elements.ssid)
        d.ssidData = *elements.ssid;
    d.bssid = bssidText(observation.bssid);
    d.rssiValue = observation.signalDbm;
    d.noiseMeasurement = observation.noiseDbm;
    d.wlanChannel = channel(elements, observation.frequencyMHz);
    d.phyModes = phyModes(elements, d.wlanChannel.channelBand());
    d.securities = securities(elements, observation.capability);
    d.securityMode = securityMode(d.securities);
    d.ibss = observation.capability & kCapabilityIBSS;
    d.beaconInterval = observation.beaconInterval;
    d.countryCode = countryCode(elements);
    d.operatingChannel = operatingChannel(elements, observation.frequencyMHz);
    return d;
}

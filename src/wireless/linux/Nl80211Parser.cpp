// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/linux/Nl80211Parser.h"

#include <linux/nl80211.h>
#include <netlink/genl/genl.h>
#include <netlink/msg.h>

#include <array>

namespace {

using TopAttrs = std::array<nlattr *, NL80211_ATTR_MAX + 1>;

// The top level of an nl80211 reply. Its policy is checked per read below rather than
// through a table, because the kernel's attribute list is long and mostly unused here.
bool parseTop(nl_msg *msg, TopAttrs &tb)
{
    tb.fill(nullptr);
    if (!msg)
        return false;
    nlmsghdr *hdr = nlmsg_hdr(msg);
    if (!hdr || hdr->nlmsg_len < NLMSG_HDRLEN + GENL_HDRLEN)
        return false;
    auto *gnlh = static_cast<genlmsghdr *>(nlmsg_data(hdr));
    return nla_parse(tb.data(), NL80211_ATTR_MAX, genlmsg_attrdata(gnlh, 0),
                     genlmsg_attrlen(gnlh, 0), nullptr) == 0;
}

std::optional<quint32> u32(const nlattr *a)
{
    if (!a || nla_len(a) < 4)
        return std::nullopt;
    return nla_get_u32(const_cast<nlattr *>(a));
}

std::optional<quint16> u16(const nlattr *a)
{
    if (!a || nla_len(a) < 2)
        return std::nullopt;
    return nla_get_u16(const_cast<nlattr *>(a));
}

std::optional<quint8> u8(const nlattr *a)
{
    if (!a || nla_len(a) < 1)
        return std::nullopt;
    return nla_get_u8(const_cast<nlattr *>(a));
}

QByteArray bytes(const nlattr *a)
{
    if (!a || nla_len(a) <= 0)
        return {};
    return QByteArray(static_cast<const char *>(nla_data(a)), nla_len(a));
}

// A NUL-terminated string attribute; a missing terminator is tolerated, never read past.
QString string(const nlattr *a)
{
    const QByteArray raw = bytes(a);
    const qsizetype end = raw.indexOf('\0');
    return QString::fromUtf8(end < 0 ? raw : raw.left(end));
}

} // namespace

std::optional<Nl80211Interface> Nl80211Parser::parseInterface(nl_msg *msg)
{
    TopAttrs tb;
    if (!parseTop(msg, tb))
        return std::nullopt;
    const auto ifindex = u32(tb[NL80211_ATTR_IFINDEX]);
    if (!ifindex || !tb[NL80211_ATTR_IFNAME])
        return std::nullopt; // wdev-only interfaces (P2P device, NAN) have no netdev
    Nl80211Interface info;
    info.ifindex = int(*ifindex);
    info.name = string(tb[NL80211_ATTR_IFNAME]);
    info.wiphy = u32(tb[NL80211_ATTR_WIPHY]).value_or(0);
    info.iftype = u32(tb[NL80211_ATTR_IFTYPE]);
    const QByteArray mac = bytes(tb[NL80211_ATTR_MAC]);
    if (mac.size() == 6)
        info.mac = mac;
    info.ssid = bytes(tb[NL80211_ATTR_SSID]).left(32);
    info.frequency = u32(tb[NL80211_ATTR_WIPHY_FREQ]).value_or(0);
    info.chanWidth = u32(tb[NL80211_ATTR_CHANNEL_WIDTH]);
    if (const auto level = u32(tb[NL80211_ATTR_WIPHY_TX_POWER_LEVEL]))
        info.txPowerMbm = qint32(*level);
    if (info.name.isEmpty())
        return std::nullopt;
    return info;
}

std::optional<Nl80211Station> Nl80211Parser::parseStation(nl_msg *msg)
{
    TopAttrs tb;
    if (!parseTop(msg, tb) || !tb[NL80211_ATTR_STA_INFO])
        return std::nullopt;
    static nla_policy staPolicy[NL80211_STA_INFO_MAX + 1] = {};
    staPolicy[NL80211_STA_INFO_SIGNAL].type = NLA_U8;
    staPolicy[NL80211_STA_INFO_TX_BITRATE].type = NLA_NESTED;
    std::array<nlattr *, NL80211_STA_INFO_MAX + 1> sta{};
    if (nla_parse_nested(sta.data(), NL80211_STA_INFO_MAX, tb[NL80211_ATTR_STA_INFO], staPolicy))
        return std::nullopt;
    Nl80211Station station;
    if (const auto signal = u8(sta[NL80211_STA_INFO_SIGNAL]))
        station.signalDbm = int(qint8(*signal));
    if (sta[NL80211_STA_INFO_TX_BITRATE]) {
        static nla_policy ratePolicy[NL80211_RATE_INFO_MAX + 1] = {};
        ratePolicy[NL80211_RATE_INFO_BITRATE].type = NLA_U16;
        ratePolicy[NL80211_RATE_INFO_BITRATE32].type = NLA_U32;
        std::array<nlattr *, NL80211_RATE_INFO_MAX + 1> rate{};
        if (!nla_parse_nested(rate.data(), NL80211_RATE_INFO_MAX, sta[NL80211_STA_INFO_TX_BITRATE],
                              ratePolicy)) {
            // Both are in units of 100 kbit/s; the 16-bit one saturates above 6.5 Gbit/s.
            if (const auto r32 = u32(rate[NL80211_RATE_INFO_BITRATE32]))
                station.txBitrateMbps = *r32 / 10.0;
            else if (const auto r16 = u16(rate[NL80211_RATE_INFO_BITRATE]))
                station.txBitrateMbps = *r16 / 10.0;
        }
    }
    return station;
}

std::optional<Nl80211Survey> Nl80211Parser::parseSurvey(nl_msg *msg)
{
    TopAttrs tb;
    if (!parseTop(msg, tb) || !tb[NL80211_ATTR_SURVEY_INFO])
        return std::nullopt;
    static nla_policy policy[NL80211_SURVEY_INFO_MAX + 1] = {};
    policy[NL80211_SURVEY_INFO_FREQUENCY].type = NLA_U32;
    policy[NL80211_SURVEY_INFO_NOISE].type = NLA_U8;
    policy[NL80211_SURVEY_INFO_IN_USE].type = NLA_FLAG;
    std::array<nlattr *, NL80211_SURVEY_INFO_MAX + 1> sinfo{};
    if (nla_parse_nested(sinfo.data(), NL80211_SURVEY_INFO_MAX, tb[NL80211_ATTR_SURVEY_INFO],
                         policy))
        return std::nullopt;
    const auto freq = u32(sinfo[NL80211_SURVEY_INFO_FREQUENCY]);
    if (!freq)
        return std::nullopt;
    Nl80211Survey survey;
    survey.frequency = *freq;
    if (const auto noise = u8(sinfo[NL80211_SURVEY_INFO_NOISE]))
        survey.noiseDbm = int(qint8(*noise));
    survey.inUse = sinfo[NL80211_SURVEY_INFO_IN_USE] != nullptr;
    return survey;
}

std::optional<Nl80211Bss> Nl80211Parser::parseBss(nl_msg *msg)
{
    TopAttrs tb;
    if (!parseTop(msg, tb) || !tb[NL80211_ATTR_BSS])
        return std::nullopt;
    static nla_policy policy[NL80211_BSS_MAX + 1] = {};
    policy[NL80211_BSS_FREQUENCY].type = NLA_U32;
    policy[NL80211_BSS_BEACON_INTERVAL].type = NLA_U16;
    policy[NL80211_BSS_CAPABILITY].type = NLA_U16;
    policy[NL80211_BSS_SIGNAL_MBM].type = NLA_U32;
    policy[NL80211_BSS_SIGNAL_UNSPEC].type = NLA_U8;
    policy[NL80211_BSS_STATUS].type = NLA_U32;
    policy[NL80211_BSS_SEEN_MS_AGO].type = NLA_U32;
    std::array<nlattr *, NL80211_BSS_MAX + 1> bss{};
    if (nla_parse_nested(bss.data(), NL80211_BSS_MAX, tb[NL80211_ATTR_BSS], policy))
        return std::nullopt;
    const QByteArray bssid = bytes(bss[NL80211_BSS_BSSID]);
    if (bssid.size() != 6)
        return std::nullopt;
    Nl80211Bss entry;
    entry.bssid = bssid;
    entry.frequency = u32(bss[NL80211_BSS_FREQUENCY]).value_or(0);
    entry.capability = u16(bss[NL80211_BSS_CAPABILITY]).value_or(0);
    entry.beaconInterval = u16(bss[NL80211_BSS_BEACON_INTERVAL]).value_or(0);
    entry.ies = bytes(bss[NL80211_BSS_INFORMATION_ELEMENTS]);
    if (entry.ies.isEmpty())
        entry.ies = bytes(bss[NL80211_BSS_BEACON_IES]);
    if (const auto mbm = u32(bss[NL80211_BSS_SIGNAL_MBM]))
        entry.signalMbm = int(qint32(*mbm));
    if (const auto unspec = u8(bss[NL80211_BSS_SIGNAL_UNSPEC]))
        entry.signalUnspec = int(*unspec);
    entry.seenMsAgo = u32(bss[NL80211_BSS_SEEN_MS_AGO]).value_or(0);
    entry.status = u32(bss[NL80211_BSS_STATUS]);
    return entry;
}

std::optional<quint32> Nl80211Parser::wiphyIndex(nl_msg *msg)
{
    TopAttrs tb;
    if (!parseTop(msg, tb))
        return std::nullopt;
    return u32(tb[NL80211_ATTR_WIPHY]);
}

QList<Nl80211Frequency> Nl80211Parser::parseWiphyFrequencies(nl_msg *msg)
{
    QList<Nl80211Frequency> out;
    TopAttrs tb;
    if (!parseTop(msg, tb) || !tb[NL80211_ATTR_WIPHY_BANDS])
        return out;
    static nla_policy freqPolicy[NL80211_FREQUENCY_ATTR_MAX + 1] = {};
    freqPolicy[NL80211_FREQUENCY_ATTR_FREQ].type = NLA_U32;
    freqPolicy[NL80211_FREQUENCY_ATTR_DISABLED].type = NLA_FLAG;
    nlattr *band = nullptr;
    int bandRem = 0;
    nla_for_each_nested(band, tb[NL80211_ATTR_WIPHY_BANDS], bandRem)
    {
        std::array<nlattr *, NL80211_BAND_ATTR_MAX + 1> tbBand{};
        if (nla_parse_nested(tbBand.data(), NL80211_BAND_ATTR_MAX, band, nullptr) ||
            !tbBand[NL80211_BAND_ATTR_FREQS])
            continue;
        nlattr *freq = nullptr;
        int freqRem = 0;
        nla_for_each_nested(freq, tbBand[NL80211_BAND_ATTR_FREQS], freqRem)
        {
            std::array<nlattr *, NL80211_FREQUENCY_ATTR_MAX + 1> tbFreq{};
            if (nla_parse_nested(tbFreq.data(), NL80211_FREQUENCY_ATTR_MAX, freq, freqPolicy))
                continue;
            const auto mhz = u32(tbFreq[NL80211_FREQUENCY_ATTR_FREQ]);
            if (!mhz)
                continue;
            out.append({*mhz, tbFreq[NL80211_FREQUENCY_ATTR_DISABLED] != nullptr});
        }
    }
    return out;
}

QString Nl80211Parser::parseRegulatoryCountry(nl_msg *msg)
{
    TopAttrs tb;
    if (!parseTop(msg, tb))
        return {};
    const QString alpha2 = string(tb[NL80211_ATTR_REG_ALPHA2]).left(2);
    for (const QChar c : alpha2)
        if (!(c.isLetterOrNumber() && c.unicode() < 128))
            return {};
    return alpha2;
}

int Nl80211Parser::commandOf(nl_msg *msg)
{
    if (!msg)
        return 0;
    nlmsghdr *hdr = nlmsg_hdr(msg);
    if (!hdr || hdr->nlmsg_len < NLMSG_HDRLEN + GENL_HDRLEN)
        return 0;
    return static_cast<genlmsghdr *>(nlmsg_data(hdr))->cmd;
}

std::optional<int> Nl80211Parser::ifindexOf(nl_msg *msg)
{
    TopAttrs tb;
    if (!parseTop(msg, tb))
        return std::nullopt;
    if (const auto idx = u32(tb[NL80211_ATTR_IFINDEX]))
        return int(*idx);
    return std::nullopt;
}

QString Nl80211Parser::macToText(const QByteArray &mac)
{
    if (mac.size() != 6)
        return {};
    return QString::fromLatin1(mac.toHex(':'));
}

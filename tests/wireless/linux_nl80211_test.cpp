// SPDX-License-Identifier: GPL-3.0-or-later
// nl80211 replies crafted byte by byte, as a driver could send them, through the parser
// and on into scan results.

#include "wireless/CWTypes.h"
#include "wireless/linux/LinuxScanResults.h"
#include "wireless/linux/Nl80211Parser.h"

#include <gtest/gtest.h>

#include <linux/nl80211.h>
#include <netlink/attr.h>
#include <netlink/genl/genl.h>
#include <netlink/msg.h>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

// One generic-netlink message as the kernel would deliver it.
class Message
{
public:
    explicit Message(int cmd = NL80211_CMD_NEW_SCAN_RESULTS) : m_msg(nlmsg_alloc())
    {
        genlmsg_put(m_msg, 0, 0, 0x1c, 0, 0, quint8(cmd), 1);
    }
    ~Message() { nlmsg_free(m_msg); }
    Message(const Message &) = delete;
    Message &operator=(const Message &) = delete;

    nl_msg *get() const { return m_msg; }
    Message &u32(int type, quint32 v) { return put(nla_put_u32(m_msg, type, v)); }
    Message &u16(int type, quint16 v) { return put(nla_put_u16(m_msg, type, v)); }
    Message &u8(int type, quint8 v) { return put(nla_put_u8(m_msg, type, v)); }
    Message &flag(int type) { return put(nla_put_flag(m_msg, type)); }
    Message &bytes(int type, const QByteArray &v)
    {
        return put(nla_put(m_msg, type, int(v.size()), v.constData()));
    }
    Message &nest(int type, const std::function<void(Message &)> &inner)
    {
        nlattr *start = nla_nest_start(m_msg, type);
        inner(*this);
        nla_nest_end(m_msg, start);
        return *this;
    }

private:
    Message &put(int) { return *this; }
    nl_msg *m_msg;
};

const QByteArray kBssid = QByteArray::fromHex("02AB00CD0001");
// SSID "Caf\xc3\xa9", DS Parameter Set channel 6.
const QByteArray kIes = QByteArray::fromHex("0005436166c3a9") + QByteArray::fromHex("030106");

void fullBss(Message &m, quint32 seenMsAgo = 1200)
{
    m.nest(NL80211_ATTR_BSS, [&](Message &b) {
        b.bytes(NL80211_BSS_BSSID, kBssid)
            .u32(NL80211_BSS_FREQUENCY, 2437)
            .u16(NL80211_BSS_CAPABILITY, 0x0411)
            .u16(NL80211_BSS_BEACON_INTERVAL, 100)
            .bytes(NL80211_BSS_INFORMATION_ELEMENTS, kIes)
            .u32(NL80211_BSS_SIGNAL_MBM, quint32(-4500))
            .u32(NL80211_BSS_SEEN_MS_AGO, seenMsAgo)
            .u32(NL80211_BSS_STATUS, NL80211_BSS_STATUS_ASSOCIATED);
    });
}

} // namespace

TEST(LinuxNl80211Parser, BssWithEveryFieldOrBeaconElementsOnly)
{
    Message m;
    fullBss(m);
    const auto bss = Nl80211Parser::parseBss(m.get());
    ASSERT_TRUE(bss);
    EXPECT_EQ(std::tuple(bss->bssid, bss->frequency, bss->capability, bss->beaconInterval, bss->ies,
                         bss->signalMbm, bss->seenMsAgo, bss->signalUnspec, bss->status),
              std::tuple(kBssid, 2437u, 0x0411, 100, kIes, std::optional(-4500), 1200u,
                         std::optional<int>(),
                         std::optional(quint32(NL80211_BSS_STATUS_ASSOCIATED))));
    EXPECT_EQ(Nl80211Parser::macToText(bss->bssid), u"02:ab:00:cd:00:01"_s);

    Message beacon;
    beacon.nest(NL80211_ATTR_BSS, [&](Message &b) {
        b.bytes(NL80211_BSS_BSSID, kBssid)
            .bytes(NL80211_BSS_BEACON_IES, kIes)
            .u8(NL80211_BSS_SIGNAL_UNSPEC, 60);
    });
    const auto fromBeacon = Nl80211Parser::parseBss(beacon.get());
    ASSERT_TRUE(fromBeacon);
    EXPECT_EQ(std::tuple(fromBeacon->ies, fromBeacon->signalUnspec, fromBeacon->frequency),
              std::tuple(kIes, std::optional(60), 0u));
}

TEST(LinuxNl80211Parser, MalformedBssIsDropped)
{
    // Each row builds a whole message; bss() wraps its attributes in a BSS attribute.
    using Build = std::function<void(Message &)>;
    auto bss = [](Build inner) -> Build {
        return [inner](Message &m) { m.nest(NL80211_ATTR_BSS, inner); };
    };
    const std::pair<const char *, Build> rows[] = {
        {"no BSS attribute", [](Message &m) { m.u32(NL80211_ATTR_IFINDEX, 3); }},
        {"no BSSID", bss([](Message &b) { b.u32(NL80211_BSS_FREQUENCY, 2412); })},
        {"short BSSID", bss([](Message &b) { b.bytes(NL80211_BSS_BSSID, "\x02\x00\x00"); })},
        {"frequency of two bytes", bss([](Message &b) {
             b.bytes(NL80211_BSS_BSSID, kBssid).u16(NL80211_BSS_FREQUENCY, 2412);
         })},
        {"BSS attribute that is not nested",
         [](Message &m) { m.bytes(NL80211_ATTR_BSS, QByteArray::fromHex("ffffffffffff")); }},
    };
    for (const auto &[name, build] : rows) {
        Message m;
        build(m);
        EXPECT_FALSE(Nl80211Parser::parseBss(m.get())) << name;
    }
    EXPECT_FALSE(Nl80211Parser::parseBss(nullptr));

    // A header that claims less than a generic-netlink header.
    Message truncated;
    fullBss(truncated);
    nlmsg_hdr(truncated.get())->nlmsg_len = NLMSG_HDRLEN + 2;
    EXPECT_FALSE(Nl80211Parser::parseBss(truncated.get()));
    EXPECT_EQ(Nl80211Parser::commandOf(truncated.get()), 0);
}

TEST(LinuxNl80211Parser, StationPrefersTheWideBitrate)
{
    for (bool wide : {true, false}) {
        Message m(NL80211_CMD_NEW_STATION);
        m.bytes(NL80211_ATTR_MAC, kBssid).nest(NL80211_ATTR_STA_INFO, [&](Message &s) {
            s.u8(NL80211_STA_INFO_SIGNAL, quint8(-52));
            s.nest(NL80211_STA_INFO_TX_BITRATE, [&](Message &r) {
                if (wide)
                    r.u32(NL80211_RATE_INFO_BITRATE32, 8667);
                r.u16(NL80211_RATE_INFO_BITRATE, wide ? 65535 : 540);
            });
        });
        const auto station = Nl80211Parser::parseStation(m.get());
        ASSERT_TRUE(station);
        EXPECT_EQ(std::tuple(station->signalDbm, station->txBitrateMbps),
                  std::tuple(std::optional(-52), std::optional(wide ? 866.7 : 54.0)));
    }
}

// The well-formed replies of a real kernel are read in the hwsim VM tests; here the odd ones.
TEST(LinuxNl80211Parser, IncompleteSurveyInterfaceAndRegulatoryReplies)
{
    Message noFrequency(NL80211_CMD_NEW_SURVEY_RESULTS);
    noFrequency.nest(NL80211_ATTR_SURVEY_INFO,
                     [](Message &i) { i.u8(NL80211_SURVEY_INFO_NOISE, quint8(-90)); });
    EXPECT_FALSE(Nl80211Parser::parseSurvey(noFrequency.get()));
    // A wireless device without a netdev (P2P device) is no interface of ours.
    Message wdevOnly(NL80211_CMD_NEW_INTERFACE);
    wdevOnly.u32(NL80211_ATTR_IFTYPE, NL80211_IFTYPE_P2P_DEVICE).u32(NL80211_ATTR_WIPHY, 0);
    EXPECT_FALSE(Nl80211Parser::parseInterface(wdevOnly.get()));
    EXPECT_TRUE(Nl80211Parser::parseWiphyFrequencies(wdevOnly.get()).isEmpty()); // no bands
    Message wiphy(NL80211_CMD_NEW_WIPHY);
    wiphy.u32(NL80211_ATTR_WIPHY, 1).nest(NL80211_ATTR_WIPHY_BANDS, [](Message &bands) {
        bands.nest(NL80211_BAND_2GHZ, [](Message &band) {
            band.nest(NL80211_BAND_ATTR_FREQS, [](Message &freqs) {
                freqs.nest(0, [](Message &f) {
                    f.u32(NL80211_FREQUENCY_ATTR_FREQ, 2467).flag(NL80211_FREQUENCY_ATTR_DISABLED);
                });
                freqs.nest(1, [](Message &f) { f.flag(NL80211_FREQUENCY_ATTR_DISABLED); });
            });
        });
    });
    const auto freqs = Nl80211Parser::parseWiphyFrequencies(wiphy.get());
    ASSERT_EQ(freqs.size(), 1);
    EXPECT_EQ(std::pair(freqs[0].frequency, freqs[0].disabled), std::pair(2467u, true));
    Message badReg(NL80211_CMD_GET_REG);
    badReg.bytes(NL80211_ATTR_REG_ALPHA2, QByteArray("\n<", 2));
    EXPECT_EQ(Nl80211Parser::parseRegulatoryCountry(badReg.get()), QString());
}

TEST(LinuxScanResults, StaleEntriesSignalAndNoise)
{
    auto bssAt = [](quint32 freq, quint32 seen, std::optional<int> mbm, std::optional<int> unspec) {
        return Nl80211Bss{kBssid, freq, 0, 0, kIes, mbm, unspec, seen, {}};
    };
    QList<Nl80211Bss> bsses{bssAt(2437, 0, -4500, std::nullopt),
                            bssAt(2437, LinuxScanResults::kMaxAgeMs + 1, -3000, std::nullopt),
                            bssAt(2412, 500, std::nullopt, 60),
                            bssAt(5180, 30000, std::nullopt, std::nullopt)};
    QList<Nl80211Survey> survey{{2437, -88, true}, {2412, std::nullopt, false}};
    QList<QByteArray> asked;
    const auto networks = LinuxScanResults::networks(
        bsses, LinuxScanResults::noiseByFrequency(survey), [&](const QByteArray &ssid) {
            asked.append(ssid);
            return nullptr;
        });
    ASSERT_EQ(networks.size(), 3);
    EXPECT_EQ(std::pair(networks[0]->bssid(), networks[0]->ssid()),
              std::pair(u"02:ab:00:cd:00:01"_s, std::optional(u"Café"_s)));
    // Measured noise, else the band's floor; an unspecified signal of 60 % of -100..-50.
    EXPECT_EQ(std::tuple(networks[0]->rssiValue(), networks[0]->noiseMeasurement(),
                         networks[1]->rssiValue(), networks[1]->noiseMeasurement(),
                         networks[2]->rssiValue(), networks[2]->noiseMeasurement()),
              std::tuple(-45, -88, -70, -95, 0, -92));
    EXPECT_EQ(asked.size(), 3);
    EXPECT_EQ(asked.first(), QByteArray("Caf\xc3\xa9"));
}

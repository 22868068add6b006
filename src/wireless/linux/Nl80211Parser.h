// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/linux/Nl80211Records.h"

#include <QList>
#include <QString>

#include <optional>

struct nl_msg;

// Turns nl80211 reply messages into plain records. Every attribute read is guarded: a
// message that is short, truncated or carries attributes of the wrong size yields the
// fields that were sound and leaves the others empty; none of these calls can crash on
// what a driver (or a test) hands in.
class Nl80211Parser
{
public:
    static std::optional<Nl80211Interface> parseInterface(nl_msg *msg);
    static std::optional<Nl80211Station> parseStation(nl_msg *msg);
    static std::optional<Nl80211Survey> parseSurvey(nl_msg *msg);
    static std::optional<Nl80211Bss> parseBss(nl_msg *msg);
    // One message of a split NL80211_CMD_GET_WIPHY dump: the wiphy index it belongs to and
    // the channels it lists (a band's channels may be spread over several messages).
    static std::optional<quint32> wiphyIndex(nl_msg *msg);
    static QList<Nl80211Frequency> parseWiphyFrequencies(nl_msg *msg);
    // NL80211_CMD_GET_REG: the two-letter regulatory domain ("00" is the world domain).
    static QString parseRegulatoryCountry(nl_msg *msg);
    // The command byte and interface index of a multicast event, for link-change hooks.
    static int commandOf(nl_msg *msg);
    static std::optional<int> ifindexOf(nl_msg *msg);

    // Text form of a BSSID: lower-case, colon-separated; empty for anything but 6 bytes.
    static QString macToText(const QByteArray &mac);
};

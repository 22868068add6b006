// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

// Plain facts read from nl80211 replies, before any mapping onto the wireless boundary.
// Every field the kernel may leave out is optional (or zero with a documented meaning).

// One NL80211_CMD_GET_INTERFACE reply.
struct Nl80211Interface
{
    int ifindex = 0;
    quint32 wiphy = 0;
    QString name;
    std::optional<quint32> iftype;    // enum nl80211_iftype
    QByteArray mac;                   // 6 bytes when present
    QByteArray ssid;                  // raw bytes; empty when not associated
    quint32 frequency = 0;            // MHz, 0 when not on a channel
    std::optional<quint32> chanWidth; // enum nl80211_chan_width
    std::optional<qint32> txPowerMbm; // 1/100 dBm
};

// The station entry of the access point we are associated with.
struct Nl80211Station
{
    std::optional<int> signalDbm;
    std::optional<double> txBitrateMbps;
};

// One channel of an NL80211_CMD_GET_SURVEY dump.
struct Nl80211Survey
{
    quint32 frequency = 0;
    std::optional<int> noiseDbm;
    bool inUse = false;
};

// One cached BSS of an NL80211_CMD_GET_SCAN dump.
struct Nl80211Bss
{
    QByteArray bssid;      // 6 bytes
    quint32 frequency = 0; // MHz
    quint16 capability = 0;
    quint16 beaconInterval = 0;      // time units
    QByteArray ies;                  // probe response IEs, else beacon IEs
    std::optional<int> signalMbm;    // 1/100 dBm
    std::optional<int> signalUnspec; // 0..100, drivers without dBm readings
    quint32 seenMsAgo = 0;
    std::optional<quint32> status; // enum nl80211_bss_status
};

// One channel a wiphy offers, in the wiphy's order.
struct Nl80211Frequency
{
    quint32 frequency = 0;
    bool disabled = false;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/linux/Nl80211Records.h"

#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QString>

#include <optional>

class Nl80211Client;

// The interfaces and their links as nl80211 reports them, read on demand and reused for
// a moment: an update cycle asks a dozen questions in a row, and they should cost one
// round of netlink requests, while the next cycle must see fresh readings.
class LinuxLinkState
{
public:
    struct Link
    {
        Nl80211Interface iface;
        std::optional<Nl80211Bss> associated;  // the BSS the kernel marks as ours
        std::optional<Nl80211Station> station; // the access point's station entry
        std::optional<int> noiseDbm;           // of the channel in use
        QElapsedTimer age;
    };

    explicit LinuxLinkState(Nl80211Client *nl) : m_nl(nl) {}

    const QList<Nl80211Interface> &interfaces();
    const Nl80211Interface *interfaceInfo(const QString &name);
    const Link *link(const QString &name);
    // The wiphy's channels that regulatory rules leave enabled, in its order.
    QList<Nl80211Frequency> enabledFrequencies(const Nl80211Interface &iface);
    void invalidate();

private:
    Nl80211Client *m_nl;
    QElapsedTimer m_interfacesAge;
    QList<Nl80211Interface> m_interfaces;
    QHash<QString, Link> m_links;
};

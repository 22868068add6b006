// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/linux/LinuxLinkState.h"

#include "wireless/linux/LinuxScanResults.h"
#include "wireless/linux/Nl80211Client.h"

#include <linux/nl80211.h>

namespace {
// One update cycle's queries arrive within a few milliseconds; the next cycle comes a
// second or more later.
constexpr qint64 kCacheMs = 250;
} // namespace

const QList<Nl80211Interface> &LinuxLinkState::interfaces()
{
    if (!m_interfacesAge.isValid() || m_interfacesAge.elapsed() > kCacheMs) {
        m_interfaces = m_nl->interfaces();
        m_interfacesAge.start();
    }
    return m_interfaces;
}

const Nl80211Interface *LinuxLinkState::interfaceInfo(const QString &name)
{
    for (const Nl80211Interface &iface : interfaces())
        if (iface.name == name)
            return &iface;
    return nullptr;
}

const LinuxLinkState::Link *LinuxLinkState::link(const QString &name)
{
    auto it = m_links.find(name);
    if (it != m_links.end() && it->age.isValid() && it->age.elapsed() <= kCacheMs)
        return &*it;
    const Nl80211Interface *iface = interfaceInfo(name);
    if (!iface) {
        m_links.remove(name);
        return nullptr;
    }
    Link fresh;
    fresh.age.start();
    fresh.iface = *iface;
    if (iface->frequency) {
        for (const Nl80211Bss &bss : m_nl->scanDump(iface->ifindex, nullptr)) {
            if (bss.status == NL80211_BSS_STATUS_ASSOCIATED ||
                bss.status == NL80211_BSS_STATUS_IBSS_JOINED) {
                fresh.associated = bss;
                break;
            }
        }
        if (fresh.associated)
            fresh.station = m_nl->station(iface->ifindex, fresh.associated->bssid);
        // The channel marked in use, else the one the interface is on: some drivers
        // (mac80211_hwsim among them) measure every channel but mark none.
        for (const Nl80211Survey &survey : m_nl->survey(iface->ifindex)) {
            if (!survey.noiseDbm)
                continue;
            if (survey.inUse)
                fresh.noiseDbm = survey.noiseDbm;
            else if (survey.frequency == iface->frequency && !fresh.noiseDbm)
                fresh.noiseDbm = survey.noiseDbm;
        }
        if (!fresh.noiseDbm)
            fresh.noiseDbm = LinuxScanResults::noiseFloor(iface->frequency);
    }
    return &*m_links.insert(name, fresh);
}

QList<Nl80211Frequency> LinuxLinkState::enabledFrequencies(const Nl80211Interface &iface)
{
    QList<Nl80211Frequency> out;
    for (const Nl80211Frequency &f : m_nl->wiphyFrequencies(iface.wiphy))
        if (!f.disabled)
            out.append(f);
    return out;
}

void LinuxLinkState::invalidate()
{
    m_interfacesAge.invalidate();
    m_links.clear();
}

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CW8021XProfile.h"
#include "wireless/CWNetwork.h"
#include "wireless/simulated/SimScenario.h"

#include <QDateTime>
#include <QList>
#include <QRandomGenerator>

// The simulated neighbourhood in motion: where each own interface is at a given second,
// which stations are on the air, and how loud each one is heard. Everything time-dependent
// is a pure function of the seed and the seconds since start, so readings are repeatable.
//
// Signal: log-distance path loss, RSSI = P_tx - L0(band) - 10 n log10(d / d0) - extraLoss,
// plus a smooth random walk of a few dB per link, rounded and clamped to -100..-20 dBm.
// Noise: the band's floor plus a jitter that changes once a second, clamped to -100..-85.
class SimWorld
{
public:
    // A transmitter on the air: an access point of the scenario or an ad-hoc network an
    // own interface started (owner >= 0; it travels with that interface).
    struct Station
    {
        SimScenario::AccessPoint ap;
        quint64 seed = 0;
        CWWirelessProfileRef stored;
        int owner = -1;
    };

    SimWorld(SimScenario scenario, quint32 seed, QDateTime start);

    const SimScenario &scenario() const { return m_scenario; }
    // Seconds since start; 0 before it.
    double elapsed(const QDateTime &now) const;

    SimScenario::Point positionOf(int interfaceIndex, double t) const;

    int stationCount() const { return int(m_stations.size()); }
    const Station &station(int index) const { return m_stations.at(index); }
    int indexOf(const QString &bssid) const;
    bool isPresent(int station, double t) const;
    int signal(int station, int interfaceIndex, double t) const;
    int noise(int band, int interfaceIndex, double t) const;
    // On the air and louder than the hearing threshold for that interface.
    bool isHeard(int station, int interfaceIndex, double t) const;

    CWNetworkRef networkOf(int station, int interfaceIndex, double t) const;
    QList<CWNetworkRef> scan(int interfaceIndex, double t) const;

    int addStation(SimScenario::AccessPoint ap, int owner);
    void removeStation(const QString &bssid);
    void setChannel(const QString &bssid, int channel);
    // A fresh, locally administered unicast address that no station uses yet.
    QString randomLocalBssid();

    QList<CW8021XProfileRef> userProfiles() const { return m_profiles; }

private:
    CWWirelessProfileRef storedProfileOf(const SimScenario::AccessPoint &ap) const;

    SimScenario m_scenario;
    QRandomGenerator m_random;
    QDateTime m_start;
    quint64 m_noiseSeed = 0;
    QList<Station> m_stations;
    QList<CW8021XProfileRef> m_profiles;
};

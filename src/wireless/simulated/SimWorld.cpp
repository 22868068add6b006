// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/simulated/SimWorld.h"

#include "wireless/CWTypes.h"
#include "wireless/simulated/SimNoise.h"
#include "wireless/simulated/SimRadioFacts.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr int kSignalMin = -100;
constexpr int kSignalMax = -20;
constexpr int kNoiseMin = -100;
constexpr int kNoiseMax = -85;

double distance(const SimScenario::Point &a, const SimScenario::Point &b)
{
    return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}

// One seed per link, so two interfaces hear the same station fade differently.
quint64 linkSeed(quint64 stationSeed, int interfaceIndex)
{
    return stationSeed ^ SimNoise::mix(quint64(interfaceIndex) + 0x51ed270b27cull);
}
} // namespace

SimWorld::SimWorld(SimScenario scenario, quint32 seed, QDateTime start)
    : m_scenario(std::move(scenario)), m_random(seed), m_start(std::move(start))
{
    m_noiseSeed = m_random.generate64();
    for (const SimScenario::Profile &p : std::as_const(m_scenario.userProfiles)) {
        auto profile = CW8021XProfile::profile();
        profile->setUserDefinedName(p.name);
        profile->setUsername(p.account.username);
        profile->setPassword(p.account.password);
        m_profiles.append(profile);
    }
    for (const SimScenario::AccessPoint &ap : std::as_const(m_scenario.accessPoints))
        addStation(ap, -1);
}

double SimWorld::elapsed(const QDateTime &now) const
{
    return std::max<qint64>(0, m_start.msecsTo(now)) / 1000.0;
}

SimScenario::Point SimWorld::positionOf(int interfaceIndex, double t) const
{
    if (interfaceIndex < 0 || interfaceIndex >= m_scenario.interfaces.size())
        return {};
    const SimScenario::Interface &i = m_scenario.interfaces.at(interfaceIndex);
    const QList<SimScenario::Point> &path = i.path;
    if (path.isEmpty())
        return {};
    // The path is a closed loop: after the last waypoint the walk heads back to the first.
    double loop = 0.0;
    for (qsizetype k = 0; k < path.size(); ++k)
        loop += distance(path.at(k), path.at((k + 1) % path.size()));
    if (loop <= 0.0 || i.speed <= 0.0)
        return path.first();
    double along = std::fmod(i.speed * t, loop);
    for (qsizetype k = 0; k < path.size(); ++k) {
        const SimScenario::Point &a = path.at(k);
        const SimScenario::Point &b = path.at((k + 1) % path.size());
        const double leg = distance(a, b);
        if (along <= leg && leg > 0.0) {
            const double f = along / leg;
            return {a.x + (b.x - a.x) * f, a.y + (b.y - a.y) * f, a.z + (b.z - a.z) * f};
        }
        along -= leg;
    }
    return path.first();
}

int SimWorld::indexOf(const QString &bssid) const
{
    for (int k = 0; k < m_stations.size(); ++k) {
        if (m_stations.at(k).ap.bssid == bssid)
            return k;
    }
    return -1;
}

bool SimWorld::isPresent(int station, double t) const
{
    if (station < 0 || station >= m_stations.size())
        return false;
    const SimScenario::AccessPoint &ap = m_stations.at(station).ap;
    if (t < ap.appearsAt || (ap.vanishesAt && t >= *ap.vanishesAt))
        return false;
    if (ap.onFor > 0.0 && ap.offFor > 0.0)
        return std::fmod(t + ap.phase, ap.onFor + ap.offFor) < ap.onFor;
    return true;
}

int SimWorld::signal(int station, int interfaceIndex, double t) const
{
    if (station < 0 || station >= m_stations.size())
        return kSignalMin;
    const Station &s = m_stations.at(station);
    const SimScenario::Radio &r = m_scenario.radio;
    const SimScenario::Point where = s.owner >= 0 ? positionOf(s.owner, t) : s.ap.position;
    const double d = std::max(distance(where, positionOf(interfaceIndex, t)), r.referenceDistance);
    const double l0 = s.ap.band == kCWChannelBand6GHz   ? r.referenceLoss6
                      : s.ap.band == kCWChannelBand5GHz ? r.referenceLoss5
                                                        : r.referenceLoss24;
    const double loss =
        l0 + 10.0 * r.pathLossExponent * std::log10(d / r.referenceDistance) + s.ap.extraLoss;
    // Two octaves: a slow swell every walkPeriod and a quicker ripple on top.
    const quint64 seed = linkSeed(s.seed, interfaceIndex);
    const double walk = std::clamp(0.7 * SimNoise::smooth(seed, t / r.walkPeriod) +
                                       0.3 * SimNoise::smooth(~seed, 4.0 * t / r.walkPeriod),
                                   -1.0, 1.0);
    const double rssi = s.ap.txPower - loss + r.walkAmplitude * walk;
    return std::clamp(int(std::lround(rssi)), kSignalMin, kSignalMax);
}

int SimWorld::noise(int band, int interfaceIndex, double t) const
{
    const SimScenario::Radio &r = m_scenario.radio;
    // 6 GHz shares the 5 GHz floor: both are quieter than the crowded 2.4 GHz band.
    const int floor = band == kCWChannelBand2GHz ? r.noiseFloor24 : r.noiseFloor5;
    const quint64 seed = m_noiseSeed ^ SimNoise::mix(quint64(band) << 32 | quint64(interfaceIndex));
    const int n = floor + SimNoise::jitter(seed, qint64(std::floor(t)), r.noiseJitter);
    return std::clamp(n, kNoiseMin, kNoiseMax);
}

bool SimWorld::isHeard(int station, int interfaceIndex, double t) const
{
    return isPresent(station, t) &&
           signal(station, interfaceIndex, t) >= m_scenario.radio.hearingThreshold;
}

CWNetworkRef SimWorld::networkOf(int station, int interfaceIndex, double t) const
{
    if (station < 0 || station >= m_stations.size())
        return nullptr;
    const Station &s = m_stations.at(station);
    const int band = s.ap.band;
    CWNetwork::Data d;
    d.ssidData = s.ap.hidden ? QByteArray() : s.ap.ssid;
    d.ssidPresent = !s.ap.hidden;
    d.bssid = s.ap.bssid;
    d.rssiValue = signal(station, interfaceIndex, t);
    d.noiseMeasurement = noise(band, interfaceIndex, t);
    d.wlanChannel = CWChannel(s.ap.channel, band, s.ap.width);
    d.phyModes = s.ap.phyModes;
    d.securities = SimSecurity::securityBits(s.ap.security);
    d.securityMode = SimSecurity::securityMode(s.ap.security);
    d.ibss = s.ap.ibss;
    d.wirelessProfile = s.stored;
    d.beaconInterval = s.ap.beaconInterval;
    d.countryCode = s.ap.countryCode;
    d.operatingChannel = SimRadioFacts::operatingChannel(s.ap);
    return CWNetwork::create(std::move(d));
}

QList<CWNetworkRef> SimWorld::scan(int interfaceIndex, double t) const
{
    QList<CWNetworkRef> heard;
    for (int k = 0; k < m_stations.size(); ++k) {
        if (isHeard(k, interfaceIndex, t))
            heard.append(networkOf(k, interfaceIndex, t));
    }
    return heard;
}

int SimWorld::addStation(SimScenario::AccessPoint ap, int owner)
{
    Station s;
    s.seed = m_random.generate64();
    s.stored = storedProfileOf(ap);
    s.owner = owner;
    s.ap = std::move(ap);
    m_stations.append(std::move(s));
    return int(m_stations.size()) - 1;
}

void SimWorld::removeStation(const QString &bssid)
{
    const int k = indexOf(bssid);
    if (k >= 0)
        m_stations.removeAt(k);
}

void SimWorld::setChannel(const QString &bssid, int channel)
{
    const int k = indexOf(bssid);
    if (k >= 0) {
        m_stations[k].ap.channel = channel;
        m_stations[k].ap.band = SimScenario::bandOf(channel);
    }
}

QString SimWorld::randomLocalBssid()
{
    for (;;) {
        quint64 bits = m_random.generate64();
        QStringList bytes;
        for (int k = 0; k < 6; ++k) {
            quint8 b = quint8(bits >> (8 * k));
            // Locally administered (bit 1) and unicast (bit 0 clear) in the first octet.
            if (k == 0)
                b = quint8((b & 0xfc) | 0x02);
            bytes << QStringLiteral("%1").arg(b, 2, 16, QLatin1Char('0'));
        }
        const QString bssid = bytes.join(QLatin1Char(':'));
        if (indexOf(bssid) < 0)
            return bssid;
    }
}

CWWirelessProfileRef SimWorld::storedProfileOf(const SimScenario::AccessPoint &ap) const
{
    if (!ap.storedPassphrase && !ap.storedProfile)
        return nullptr;
    auto stored = std::make_shared<CWWirelessProfile>();
    stored->setSsid(QString::fromUtf8(ap.ssid));
    if (ap.storedPassphrase)
        stored->setPassphrase(*ap.storedPassphrase);
    if (ap.storedProfile) {
        for (const CW8021XProfileRef &p : m_profiles) {
            if (p->userDefinedName() == *ap.storedProfile)
                stored->setUser8021XProfile(p);
        }
    }
    return stored;
}

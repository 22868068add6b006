// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/simulated/SimulatedBackend.h"

#include "util/Clock.h"
#include "wireless/CWKeys.h"
#include "wireless/CWTypes.h"
#include "wireless/SFAuthorization.h"
#include "wireless/simulated/SimAdHoc.h"
#include "wireless/simulated/SimCredentials.h"
#include "wireless/simulated/SimLinkRate.h"

#include <QFile>

#include <cmath>
#include <limits>

namespace {
QStringList linkKeys(const QString &name)
{
    return {QStringLiteral("State:/Network/Interface/%1/AirPort").arg(name),
            QStringLiteral("State:/Network/Interface/%1/Link").arg(name)};
}

void poweredOff(CWError *error)
{
    CWError::set(error, kCWErrorPoweredOff, QStringLiteral("The Wi-Fi radio is switched off"));
}
} // namespace

SimulatedBackend::SimulatedBackend(SimScenario scenario, quint32 seed)
    : m_world(std::move(scenario), seed, Clock::now()), m_faults(m_world.scenario().faults)
{
    for (const SimScenario::Interface &config : m_world.scenario().interfaces) {
        Interface iface;
        iface.config = config;
        iface.powerOn = config.powerOn;
        iface.serviceActive = config.serviceActive;
        iface.channel = config.channel;
        iface.joined = config.associatedTo;
        const int station = m_world.indexOf(config.associatedTo);
        if (station >= 0)
            iface.channel = m_world.station(station).ap.channel;
        m_interfaces.append(iface);
    }
    for (int k = 0; k < m_interfaces.size(); ++k)
        m_interfaces[k].linkReported = linkedStation(k) >= 0;
}

std::shared_ptr<SimulatedBackend> SimulatedBackend::fromJson(const QByteArray &json, quint32 seed,
                                                             QString *errorText)
{
    std::optional<SimScenario> scenario = SimScenario::fromJson(json, errorText);
    if (!scenario)
        return nullptr;
    return std::make_shared<SimulatedBackend>(std::move(*scenario), seed);
}

std::shared_ptr<SimulatedBackend> SimulatedBackend::fromFile(const QString &path, quint32 seed,
                                                             QString *errorText)
{
    QFile file(path);
    // A scenario is a few kilobytes; refuse anything absurd before reading it whole.
    constexpr qint64 kLargest = 16 * 1024 * 1024;
    if (!file.open(QIODevice::ReadOnly)) {
        if (errorText)
            *errorText =
                QStringLiteral("Cannot read the scenario \"%1\": %2").arg(path, file.errorString());
        return nullptr;
    }
    if (file.size() > kLargest) {
        if (errorText)
            *errorText = QStringLiteral("The scenario \"%1\" is too large").arg(path);
        return nullptr;
    }
    QString error;
    auto backend = fromJson(file.read(kLargest), seed, &error);
    if (errorText)
        *errorText = backend
                         ? QString()
                         : QStringLiteral("The scenario \"%1\" is not valid: %2").arg(path, error);
    return backend;
}

std::shared_ptr<SimulatedBackend> SimulatedBackend::createDefault(quint32 seed)
{
    QString error;
    auto backend = fromFile(QStringLiteral(":/scenarios/default.json"), seed, &error);
    if (!backend)
        qFatal("The built-in scenario is broken: %s", qPrintable(error));
    return backend;
}

double SimulatedBackend::now() const
{
    return m_world.elapsed(Clock::now());
}

double SimulatedBackend::elapsedSeconds() const
{
    return now();
}

int SimulatedBackend::indexOf(const QString &name) const
{
    for (int k = 0; k < m_interfaces.size(); ++k) {
        if (m_interfaces.at(k).config.name == name)
            return k;
    }
    return -1;
}

SimulatedBackend::Interface *SimulatedBackend::find(const QString &name, CWError *error)
{
    CWError::reset(error);
    const int k = indexOf(name);
    if (k < 0) {
        CWError::set(error, kCWErrorNoInterface,
                     QStringLiteral("There is no wireless interface named \"%1\"").arg(name));
        return nullptr;
    }
    return &m_interfaces[k];
}

int SimulatedBackend::linkedStation(int index) const
{
    if (index < 0)
        return -1;
    const Interface &iface = m_interfaces.at(index);
    if (!iface.powerOn || iface.joined.isEmpty())
        return -1;
    const int station = m_world.indexOf(iface.joined);
    return m_world.isHeard(station, index, now()) ? station : -1;
}

void SimulatedBackend::reportLink(int index, bool force)
{
    Interface &iface = m_interfaces[index];
    const bool up = linkedStation(index) >= 0;
    if (force || up != iface.linkReported) {
        iface.linkReported = up;
        Q_EMIT linkChanged(iface.config.name, linkKeys(iface.config.name));
    }
}

void SimulatedBackend::endOwnIBSS(Interface &iface)
{
    if (iface.ownIBSS.isEmpty())
        return;
    m_world.removeStation(iface.ownIBSS);
    if (iface.joined == iface.ownIBSS)
        iface.joined.clear();
    iface.ownIBSS.clear();
}

QStringList SimulatedBackend::interfaceNames() const
{
    QStringList names;
    for (const Interface &iface : m_interfaces)
        names << iface.config.name;
    return names;
}

QList<CW8021XProfileRef> SimulatedBackend::allUser8021XProfiles() const
{
    return m_world.userProfiles();
}

bool SimulatedBackend::obtainAuthorization(const QString &, quint32, CWError *error)
{
    ++m_authorizationCount;
    if (m_faults.refuseAuthorization) {
        CWError::set(error, kCWErrorNotPermitted,
                     QStringLiteral("The authorization to change network settings was refused"));
        return false;
    }
    CWError::reset(error);
    return true;
}

bool SimulatedBackend::powerOn(const QString &name) const
{
    const int k = indexOf(name);
    return k >= 0 && m_interfaces.at(k).powerOn;
}

std::optional<QString> SimulatedBackend::ssid(const QString &name) const
{
    const int station = linkedStation(indexOf(name));
    if (station < 0)
        return std::nullopt;
    // A joined interface knows the name even of a network that hides it in its beacons.
    return QString::fromUtf8(m_world.station(station).ap.ssid);
}

std::optional<QString> SimulatedBackend::bssid(const QString &name) const
{
    const int station = linkedStation(indexOf(name));
    if (station < 0)
        return std::nullopt;
    return m_world.station(station).ap.bssid;
}

qint64 SimulatedBackend::security(const QString &name) const
{
    const int station = linkedStation(indexOf(name));
    return station < 0 ? 0 : SimSecurity::interfaceSecurity(m_world.station(station).ap.security);
}

qint64 SimulatedBackend::rssiValue(const QString &name) const
{
    const int k = indexOf(name);
    const int station = linkedStation(k);
    return station < 0 ? 0 : m_world.signal(station, k, now());
}

qint64 SimulatedBackend::noiseMeasurement(const QString &name) const
{
    const int k = indexOf(name);
    const int station = linkedStation(k);
    if (station < 0)
        return 0;
    return m_world.noise(m_world.station(station).ap.band, k, now());
}

double SimulatedBackend::transmitRate(const QString &name) const
{
    const int k = indexOf(name);
    const int station = linkedStation(k);
    if (station < 0)
        return 0.0;
    const SimScenario::AccessPoint &ap = m_world.station(station).ap;
    const double t = now();
    const int snr = m_world.signal(station, k, t) - m_world.noise(ap.band, k, t);
    return SimLinkRate::transmitRate(ap.phyModes, ap.vht, ap.width,
                                     m_interfaces.at(k).config.spatialStreams, snr);
}

qint64 SimulatedBackend::transmitPower(const QString &name) const
{
    const int k = indexOf(name);
    return k >= 0 && m_interfaces.at(k).powerOn ? m_interfaces.at(k).config.txPowerMw : 0;
}

std::optional<QString> SimulatedBackend::countryCode(const QString &name) const
{
    const int k = indexOf(name);
    if (k < 0 || !m_interfaces.at(k).powerOn || m_interfaces.at(k).config.countryCode.isEmpty())
        return std::nullopt;
    return m_interfaces.at(k).config.countryCode;
}

QList<qint64> SimulatedBackend::supportedChannels(const QString &name) const
{
    const int k = indexOf(name);
    if (k < 0 || !m_interfaces.at(k).powerOn)
        return {};
    return m_interfaces.at(k).config.supportedChannels;
}

std::optional<CWChannel> SimulatedBackend::wlanChannel(const QString &name) const
{
    const int k = indexOf(name);
    if (k < 0 || !m_interfaces.at(k).powerOn)
        return std::nullopt;
    const int station = linkedStation(k);
    if (station >= 0) {
        const SimScenario::AccessPoint &ap = m_world.station(station).ap;
        return CWChannel(ap.channel, ap.band, ap.width);
    }
    const qint64 c = m_interfaces.at(k).channel;
    if (c == 0)
        return std::nullopt;
    return CWChannel(c, SimScenario::bandOf(c), kCWChannelWidth20MHz);
}

std::optional<int> SimulatedBackend::interfaceState(const QString &name) const
{
    const int k = indexOf(name);
    if (k < 0)
        return std::nullopt;
    return linkedStation(k) >= 0 ? kCWInterfaceStateRunning : kCWInterfaceStateInactive;
}

std::optional<int> SimulatedBackend::opMode(const QString &name) const
{
    const int k = indexOf(name);
    if (k < 0 || !m_interfaces.at(k).powerOn)
        return std::nullopt;
    const int station = linkedStation(k);
    return station >= 0 && m_world.station(station).ap.ibss ? kCWOpModeIBSS : kCWOpModeStation;
}

bool SimulatedBackend::serviceActive(const QString &name) const
{
    const int k = indexOf(name);
    return k >= 0 && m_interfaces.at(k).serviceActive;
}

void SimulatedBackend::setAuthorization(const QString &name, std::shared_ptr<SFAuthorization> auth)
{
    const int k = indexOf(name);
    if (k >= 0)
        m_interfaces[k].authorization = std::move(auth);
}

std::shared_ptr<SFAuthorization> SimulatedBackend::authorizationOf(const QString &name) const
{
    const int k = indexOf(name);
    return k >= 0 ? m_interfaces.at(k).authorization : nullptr;
}

void SimulatedBackend::setServiceActive(const QString &name, bool active)
{
    const int k = indexOf(name);
    if (k >= 0)
        m_interfaces[k].serviceActive = active;
}

QString SimulatedBackend::ownIBSSBssid(const QString &name) const
{
    const int k = indexOf(name);
    return k >= 0 ? m_interfaces.at(k).ownIBSS : QString();
}

QList<CWNetworkRef> SimulatedBackend::scanForNetworks(const QString &name,
                                                      const QVariantMap &parameters, CWError *error)
{
    Interface *iface = find(name, error);
    if (!iface)
        return {};
    ++m_scanCount;
    // kCWScanKeyMerge is accepted and has nothing to do: every scan is complete here.
    m_lastScanParameters = parameters;
    const int k = indexOf(name);
    reportLink(k);
    if (!iface->powerOn) {
        poweredOff(error);
        return {};
    }
    if (m_faults.scanErrorEvery > 0 && m_scanCount % m_faults.scanErrorEvery == 0) {
        CWError::set(error, kCWErrorBusy,
                     QStringLiteral("The scan failed: the device is busy (simulated fault)"));
        return {};
    }
    if (m_faults.emptyScanEvery > 0 && m_scanCount % m_faults.emptyScanEvery == 0)
        return {};
    return m_world.scan(k, now());
}

bool SimulatedBackend::setPower(const QString &name, bool on, CWError *error)
{
    Interface *iface = find(name, error);
    if (!iface)
        return false;
    if (iface->powerOn == on)
        return true;
    iface->powerOn = on;
    // Switching off ends an ad-hoc network; an infrastructure network is joined again on
    // power-up as the system does with known networks, so `joined` stays.
    if (!on)
        endOwnIBSS(*iface);
    reportLink(indexOf(name), true);
    return true;
}

bool SimulatedBackend::setChannel(const QString &name, quint64 channel, CWError *error)
{
    Interface *iface = find(name, error);
    if (!iface)
        return false;
    if (!iface->powerOn) {
        poweredOff(error);
        return false;
    }
    if (iface->serviceActive) {
        CWError::set(
            error, kCWErrorBusy,
            QStringLiteral("The channel cannot be changed while the Wi-Fi service is active"));
        return false;
    }
    if (channel > quint64(std::numeric_limits<qint64>::max()) ||
        !iface->config.supportedChannels.contains(qint64(channel))) {
        CWError::set(error, kCWErrorInvalidParameter,
                     QStringLiteral("Channel %1 is not supported by %2").arg(channel).arg(name));
        return false;
    }
    const int k = indexOf(name);
    const int station = linkedStation(k);
    if (iface->channel == qint64(channel) &&
        (station < 0 || m_world.station(station).ap.channel == qint64(channel)))
        return true;
    iface->channel = qint64(channel);
    if (!iface->ownIBSS.isEmpty()) {
        // The ad-hoc network belongs to this interface and moves with it.
        m_world.setChannel(iface->ownIBSS, int(channel));
    } else if (const int wanted = m_world.indexOf(iface->joined);
               wanted >= 0 && m_world.station(wanted).ap.channel != qint64(channel)) {
        // A station cannot stay with a network on another channel: the link is dropped, and
        // the network is not joined again when it is back in range.
        iface->joined.clear();
    }
    iface->linkReported = linkedStation(k) >= 0;
    Q_EMIT linkChanged(name, {QStringLiteral("State:/Network/Interface/%1/AirPort").arg(name)});
    return true;
}

void SimulatedBackend::disassociate(const QString &name)
{
    Interface *iface = find(name, nullptr);
    if (!iface || (iface->joined.isEmpty() && iface->ownIBSS.isEmpty()))
        return;
    endOwnIBSS(*iface);
    iface->joined.clear();
    reportLink(indexOf(name), true);
}

bool SimulatedBackend::associateToNetwork(const QString &name, const CWNetworkRef &network,
                                          const QVariantMap &parameters, CWError *error)
{
    Interface *iface = find(name, error);
    if (!iface)
        return false;
    m_lastAssociationParameters = parameters;
    if (!iface->powerOn) {
        poweredOff(error);
        return false;
    }
    if (!network) {
        CWError::set(error, kCWErrorInvalidParameter, QStringLiteral("No network was given"));
        return false;
    }
    const int k = indexOf(name);
    const int station = m_world.indexOf(network->bssid());
    if (station < 0 || !m_world.isHeard(station, k, now())) {
        CWError::set(error, kCWErrorTimeout,
                     QStringLiteral("The network %1 is out of range")
                         .arg(station < 0 ? QStringLiteral("\"%1\"").arg(network->bssid())
                                          : SimCredentials::label(m_world.station(station).ap)));
        return false;
    }
    const SimWorld::Station &target = m_world.station(station);
    if (target.owner == k)
        return true; // already running it
    if (!SimCredentials::check(target.ap, parameters, target.stored, error))
        return false;
    const QString bssid = target.ap.bssid;
    const int channel = target.ap.channel;
    endOwnIBSS(*iface);
    iface->joined = bssid;
    iface->channel = channel;
    reportLink(k, true);
    return true;
}

bool SimulatedBackend::enableIBSS(const QString &name, const QVariantMap &parameters,
                                  CWError *error)
{
    Interface *iface = find(name, error);
    if (!iface)
        return false;
    m_lastIBSSParameters = parameters;
    if (!iface->powerOn) {
        poweredOff(error);
        return false;
    }
    std::optional<SimScenario::AccessPoint> ap =
        SimAdHoc::fromParameters(parameters, iface->config, error);
    if (!ap)
        return false;
    endOwnIBSS(*iface);
    ap->bssid = m_world.randomLocalBssid();
    ap->txPower = 10.0 * std::log10(double(iface->config.txPowerMw));
    ap->countryCode = iface->config.countryCode;
    const int k = indexOf(name);
    m_world.addStation(*ap, k);
    iface->ownIBSS = ap->bssid;
    iface->joined = ap->bssid;
    iface->channel = ap->channel;
    reportLink(k, true);
    return true;
}

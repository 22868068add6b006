// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/linux/LinuxBackend.h"

#include "wireless/CWTypes.h"
#include "wireless/ie/FrequencyPlan.h"
#include "wireless/linux/LinuxChannelMap.h"
#include "wireless/linux/LinuxLinkState.h"
#include "wireless/linux/LinuxScanResults.h"
#include "wireless/linux/NetworkManagerClient.h"
#include "wireless/linux/Nl80211Client.h"
#include "wireless/linux/Nl80211EventWatcher.h"
#include "wireless/linux/Nl80211Parser.h"
#include "wireless/linux/NmConnector.h"
#include "wireless/linux/NmSavedProfiles.h"
#include "wireless/linux/PolkitClient.h"

#include <QFile>
#include <QLoggingCategory>
#include <QStringDecoder>
#include <QSysInfo>

#include <linux/nl80211.h>

#include <cerrno>
#include <cmath>
#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcLinux, "corvane.linux")

// The kernel refuses a scan while one runs; a full scan of all bands takes seconds.
constexpr qint64 kTriggerIntervalMs = 10000;
// polkit may keep an authorization for a while itself; asking again on every cycle
// would put a password prompt up every few seconds for "auth_admin" policies.
constexpr qint64 kAuthorizationKeepMs = 300000;
// NMDeviceState: below this the device is unmanaged or unavailable.
constexpr uint kNmDeviceDisconnected = 30;

QString linkKey(const QString &name)
{
    return QStringLiteral("State:/Network/Interface/%1/AirPort").arg(name);
}

bool hasNetAdminCapability()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return false;
    const QList<QByteArray> lines = status.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (!line.startsWith("CapEff:"))
            continue;
        bool ok = false;
        const quint64 caps = line.mid(7).trimmed().toULongLong(&ok, 16);
        return ok && (caps & (quint64(1) << 12)); // CAP_NET_ADMIN
    }
    return false;
}

QString decodeSsid(const QByteArray &raw)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    return decoder.decode(raw);
}

} // namespace

std::shared_ptr<LinuxBackend> LinuxBackend::create(QString *errorText)
{
    return create(Options(), errorText);
}

std::shared_ptr<LinuxBackend> LinuxBackend::create(const Options &options, QString *errorText)
{
    auto backend = std::make_shared<LinuxBackend>(options);
    if (!backend->nl80211Available()) {
        if (errorText)
            *errorText = backend->nl80211UnavailableReason();
        return nullptr;
    }
    return backend;
}

bool LinuxBackend::machineHasWirelessInterface()
{
    return SysfsReader().hasWirelessInterface();
}

LinuxBackend::LinuxBackend(const Options &options)
    : m_nl(std::make_unique<Nl80211Client>()),
      m_state(std::make_unique<LinuxLinkState>(m_nl.get())), m_sysfs(options.sysfsRoot)
{
    const QString nmService = options.networkManagerService.isEmpty()
                                  ? NetworkManagerClient::defaultService()
                                  : options.networkManagerService;
    m_nm = new NetworkManagerClient(options.bus, nmService, this);
    m_profiles = new NmSavedProfiles(m_nm, this);
    m_connector = new NmConnector(m_nm, m_profiles, this);
    m_polkit = new PolkitClient(options.bus,
                                options.polkitService.isEmpty() ? PolkitClient::defaultService()
                                                                : options.polkitService,
                                this);
    m_events = new Nl80211EventWatcher(this);

    connect(m_nm, &NetworkManagerClient::deviceStateChanged, this,
            [this](const QString &name, uint, uint, uint) { emitLinkChanged(name); });
    connect(m_nm, &NetworkManagerClient::wirelessEnabledChanged, this, [this] {
        const QStringList names = interfaceNames();
        for (const QString &name : names)
            emitLinkChanged(name);
    });
    connect(m_nm, &NetworkManagerClient::runningChanged, this, [this](bool running) {
        if (running)
            m_loggedStaleScans = false; // a later loss deserves its own note
    });
    connect(m_events, &Nl80211EventWatcher::linkEvent, this, [this](int ifindex, int) {
        m_state->invalidate();
        const QList<Nl80211Interface> all = m_state->interfaces();
        for (const Nl80211Interface &iface : all)
            if (iface.ifindex == ifindex)
                emitLinkChanged(iface.name);
    });
}

LinuxBackend::~LinuxBackend() = default;

bool LinuxBackend::nl80211Available() const
{
    return m_nl->isAvailable();
}

QString LinuxBackend::nl80211UnavailableReason() const
{
    return m_nl->unavailableReason();
}

void LinuxBackend::emitLinkChanged(const QString &name)
{
    invalidate();
    Q_EMIT linkChanged(name, {linkKey(name)});
}

void LinuxBackend::invalidate()
{
    m_state->invalidate();
}

QStringList LinuxBackend::interfaceNames() const
{
    QStringList names;
    for (const Nl80211Interface &iface : m_state->interfaces())
        names.append(iface.name);
    return names;
}

QList<CW8021XProfileRef> LinuxBackend::allUser8021XProfiles() const
{
    return m_nm->isRunning() ? m_profiles->user8021XProfiles() : QList<CW8021XProfileRef>{};
}

bool LinuxBackend::obtainAuthorization(const QString &right, quint32, CWError *error)
{
    CWError::reset(error);
    if (m_authorizedAt.isValid() && m_authorizedAt.elapsed() < kAuthorizationKeepMs)
        return true;
    qCDebug(lcLinux) << "quiet authorization for" << right << "as network control";
    if (!m_polkit->checkAuthorization(PolkitClient::networkControlAction(), error))
        return false;
    m_authorizedAt.start();
    return true;
}

void LinuxBackend::obtainAuthorizationAsync(const QString &right, quint32 flags, Completion done)
{
    if (m_authorizedAt.isValid() && m_authorizedAt.elapsed() < kAuthorizationKeepMs) {
        done({});
        return;
    }
    const bool interactive = flags & 1u;
    QList<Completion> &waiters = m_authorizationWaiters[interactive ? 1 : 0];
    waiters.append(std::move(done));
    if (waiters.size() > 1)
        return; // the question is out already
    qCDebug(lcLinux) << "authorization for" << right << "as network control";
    m_polkit->checkAuthorization(PolkitClient::networkControlAction(), interactive,
                                 [this, interactive](const CWError &error) {
                                     if (error.isNull())
                                         m_authorizedAt.start();
                                     // A waiter may ask again from its completion: that is a new
                                     // question.
                                     const QList<Completion> answered = std::exchange(
                                         m_authorizationWaiters[interactive ? 1 : 0], {});
                                     for (const Completion &waiter : answered)
                                         waiter(error);
                                 });
}

void LinuxBackend::setActivationTimeout(int msec)
{
    m_connector->setActivationTimeout(msec);
}

void LinuxBackend::setAuthorizationPromptTimeout(int msec)
{
    m_polkit->setInteractiveTimeout(msec);
}

bool LinuxBackend::powerOn(const QString &name) const
{
    if (!m_state->interfaceInfo(name))
        return false;
    const SysfsReader::Rfkill rfkill = m_sysfs.rfkill(name);
    if (rfkill.softBlocked || rfkill.hardBlocked || !m_sysfs.linkUp(name))
        return false;
    // With NetworkManager in charge, its Wi-Fi switch is the power switch.
    return m_nm->cachedWirelessEnabled().value_or(true);
}

std::optional<QString> LinuxBackend::ssid(const QString &name) const
{
    const LinuxLinkState::Link *l = m_state->link(name);
    if (!l || l->iface.ssid.isEmpty())
        return std::nullopt;
    return decodeSsid(l->iface.ssid);
}

std::optional<QString> LinuxBackend::bssid(const QString &name) const
{
    const LinuxLinkState::Link *l = m_state->link(name);
    if (!l || !l->associated)
        return std::nullopt;
    return Nl80211Parser::macToText(l->associated->bssid);
}

qint64 LinuxBackend::security(const QString &name) const
{
    const LinuxLinkState::Link *l = m_state->link(name);
    if (!l || !l->associated)
        return 0;
    return LinuxScanResults::networkData(*l->associated, 0).securityMode.value_or(0);
}

qint64 LinuxBackend::rssiValue(const QString &name) const
{
    const LinuxLinkState::Link *l = m_state->link(name);
    if (!l)
        return 0;
    if (l->station && l->station->signalDbm)
        return *l->station->signalDbm;
    if (l->associated)
        return LinuxScanResults::signalDbm(*l->associated).value_or(0);
    return 0;
}

qint64 LinuxBackend::noiseMeasurement(const QString &name) const
{
    const LinuxLinkState::Link *l = m_state->link(name);
    return l ? l->noiseDbm.value_or(0) : 0;
}

double LinuxBackend::transmitRate(const QString &name) const
{
    const LinuxLinkState::Link *l = m_state->link(name);
    return l && l->station ? l->station->txBitrateMbps.value_or(0.0) : 0.0;
}

qint64 LinuxBackend::transmitPower(const QString &name) const
{
    const Nl80211Interface *iface = m_state->interfaceInfo(name);
    if (!iface || !iface->txPowerMbm)
        return 0;
    // mBm are hundredths of dBm; mW = 10^(dBm / 10).
    return qRound64(std::pow(10.0, *iface->txPowerMbm / 1000.0));
}

std::optional<QString> LinuxBackend::countryCode(const QString &name) const
{
    const Nl80211Interface *iface = m_state->interfaceInfo(name);
    if (!iface)
        return std::nullopt;
    const QString code = m_nl->regulatoryCountry(iface->wiphy);
    return code.isEmpty() ? std::nullopt : std::optional<QString>(code);
}

QList<qint64> LinuxBackend::supportedChannels(const QString &name) const
{
    const Nl80211Interface *iface = m_state->interfaceInfo(name);
    if (!iface)
        return {};
    QList<qint64> channels;
    // 6 GHz numbers repeat 2.4 and 5 GHz ones; a number is listed once, for its first band.
    for (const Nl80211Frequency &f : m_state->enabledFrequencies(*iface)) {
        const int number = FrequencyPlan::channelForFrequency(int(f.frequency));
        if (number > 0 && !channels.contains(number))
            channels.append(number);
    }
    return channels;
}

std::optional<CWChannel> LinuxBackend::wlanChannel(const QString &name) const
{
    const Nl80211Interface *iface = m_state->interfaceInfo(name);
    if (!iface)
        return std::nullopt;
    return LinuxChannelMap::channel(iface->frequency, iface->chanWidth);
}

std::optional<int> LinuxBackend::interfaceState(const QString &name) const
{
    const LinuxLinkState::Link *l = m_state->link(name);
    if (!l)
        return std::nullopt;
    const bool hosting = l->iface.iftype == NL80211_IFTYPE_AP && !l->iface.ssid.isEmpty();
    return (l->associated || hosting) ? kCWInterfaceStateRunning : kCWInterfaceStateInactive;
}

std::optional<int> LinuxBackend::opMode(const QString &name) const
{
    const Nl80211Interface *iface = m_state->interfaceInfo(name);
    if (!iface || !iface->iftype)
        return std::nullopt;
    switch (*iface->iftype) {
    case NL80211_IFTYPE_STATION:
    case NL80211_IFTYPE_P2P_CLIENT:
        return kCWOpModeStation;
    case NL80211_IFTYPE_ADHOC:
        return kCWOpModeIBSS;
    case NL80211_IFTYPE_AP:
    case NL80211_IFTYPE_P2P_GO:
        return kCWOpModeHostAP;
    case NL80211_IFTYPE_MONITOR:
        return kCWOpModeMonitorMode;
    default:
        return std::nullopt;
    }
}

bool LinuxBackend::serviceActive(const QString &name) const
{
    // An interface that hosts a network (access point, ad-hoc) carries its clients on
    // its channel; moving it is not the user's call from here.
    const auto mode = opMode(name);
    return mode == kCWOpModeHostAP || (mode == kCWOpModeIBSS && interfaceState(name) == 4);
}

bool LinuxBackend::failIfUnknown(const QString &name, CWError *error) const
{
    if (m_state->interfaceInfo(name))
        return false;
    CWError::set(error, kCWErrorNoInterface,
                 QStringLiteral("There is no wireless interface named %1").arg(name));
    return true;
}

void LinuxBackend::requestFreshResults(const Nl80211Interface &iface)
{
    if (m_nm->isRunning()) {
        // NetworkManager lists the devices it leaves alone too; those it does not scan.
        const QString device = m_nm->deviceForInterface(iface.name, nullptr);
        if (!device.isEmpty() && m_nm->deviceState(device) >= kNmDeviceDisconnected) {
            m_nm->requestScan(device);
            return;
        }
    }
    if (hasNetAdminCapability()) {
        QElapsedTimer &last = m_lastTrigger[iface.ifindex];
        if (last.isValid() && last.elapsed() < kTriggerIntervalMs)
            return;
        last.start();
        QString kernelText;
        const int err = m_nl->triggerScan(iface.ifindex, &kernelText);
        if (err < 0 && err != -EBUSY)
            qCInfo(lcLinux) << "scan trigger on" << iface.name
                            << "refused:" << Nl80211Client::errnoText(err, kernelText);
        return;
    }
    if (!m_loggedStaleScans) {
        m_loggedStaleScans = true;
        qCWarning(lcLinux).noquote()
            << QStringLiteral("note: scan results for %1 come from the kernel's cache and may be "
                              "old: NetworkManager does not manage it and this process may not "
                              "start scans itself (it lacks CAP_NET_ADMIN)")
                   .arg(iface.name);
    }
}

QList<CWNetworkRef> LinuxBackend::scanForNetworks(const QString &name, const QVariantMap &,
                                                  CWError *error)
{
    CWError::reset(error);
    invalidate();
    if (failIfUnknown(name, error))
        return {};
    const Nl80211Interface iface = *m_state->interfaceInfo(name);
    const SysfsReader::Rfkill rfkill = m_sysfs.rfkill(name);
    if (rfkill.hardBlocked) {
        CWError::set(error, kCWErrorPoweredOff,
                     QStringLiteral("Wi-Fi is switched off by a hardware switch"));
        return {};
    }
    if (!powerOn(name)) {
        CWError::set(error, kCWErrorPoweredOff, QStringLiteral("Wi-Fi is switched off"));
        return {};
    }
    requestFreshResults(iface);
    QString dumpError;
    const QList<Nl80211Bss> bsses = m_nl->scanDump(iface.ifindex, &dumpError);
    if (!dumpError.isEmpty()) {
        CWError::set(error, kCWErrorUnknown, dumpError);
        return {};
    }
    const auto noise = LinuxScanResults::noiseByFrequency(m_nl->survey(iface.ifindex));
    LinuxScanResults::ProfileLookup lookup;
    if (m_nm->isRunning())
        lookup = [this](const QByteArray &ssid) { return m_profiles->profileForSsid(ssid); };
    return LinuxScanResults::networks(bsses, noise, lookup);
}

bool LinuxBackend::powerSwitchRefuses(const QString &name, bool on, CWError *error) const
{
    if (failIfUnknown(name, error))
        return true;
    if (on && m_sysfs.rfkill(name).hardBlocked) {
        CWError::set(error, kCWErrorPoweredOff,
                     QStringLiteral("Wi-Fi is switched off by a hardware switch"));
        return true;
    }
    return false;
}

WirelessBackend::Completion LinuxBackend::refreshingThen(Completion done)
{
    // The connector, and with it this completion, goes before the backend does.
    return [this, done = std::move(done)](const CWError &error) {
        invalidate();
        done(error);
    };
}

bool LinuxBackend::setPower(const QString &name, bool on, CWError *error)
{
    CWError::reset(error);
    if (powerSwitchRefuses(name, on, error))
        return false;
    const bool ok = m_connector->setPower(on, error);
    invalidate();
    return ok;
}

void LinuxBackend::setPowerAsync(const QString &name, bool on, Completion done)
{
    CWError error;
    if (powerSwitchRefuses(name, on, &error)) {
        done(error);
        return;
    }
    m_connector->setPower(on, refreshingThen(std::move(done)));
}

bool LinuxBackend::setChannel(const QString &name, quint64 channel, CWError *error)
{
    CWError::reset(error);
    if (failIfUnknown(name, error))
        return false;
    const Nl80211Interface iface = *m_state->interfaceInfo(name);
    quint32 frequency = 0;
    if (channel > 0 && channel < 256) {
        for (const Nl80211Frequency &f : m_state->enabledFrequencies(iface)) {
            if (FrequencyPlan::channelForFrequency(int(f.frequency)) == int(channel)) {
                frequency = f.frequency;
                break;
            }
        }
    }
    if (!frequency) {
        CWError::set(error, kCWErrorInvalidParameter,
                     QStringLiteral("Channel %1 is not available on %2").arg(channel).arg(name));
        return false;
    }
    QString kernelText;
    const int err = m_nl->setFrequency(iface.ifindex, frequency, &kernelText);
    invalidate();
    if (err == 0)
        return true;
    if (err == -EPERM || err == -EACCES) {
        CWError::set(error, kCWErrorNotPermitted,
                     QStringLiteral("Not permitted: changing the channel needs the CAP_NET_ADMIN "
                                    "capability"));
        return false;
    }
    QString text = QStringLiteral("%1 refused channel %2: %3")
                       .arg(name)
                       .arg(channel)
                       .arg(Nl80211Client::errnoText(err, kernelText));
    if (iface.iftype == NL80211_IFTYPE_STATION)
        text += QStringLiteral(". A station uses the channel of the network it joins.");
    CWError::set(error, err == -EBUSY ? kCWErrorBusy : kCWErrorNotSupported, text);
    return false;
}

void LinuxBackend::disassociate(const QString &name)
{
    CWError error;
    if (!m_connector->disassociate(name, &error))
        qCInfo(lcLinux).noquote() << "disconnect of" << name
                                  << "failed:" << error.localizedDescription();
    invalidate();
}

void LinuxBackend::associateToNetworkAsync(const QString &name, const CWNetworkRef &network,
                                           const QVariantMap &parameters, Completion done)
{
    CWError error;
    if (failIfUnknown(name, &error)) {
        done(error);
        return;
    }
    if (!network) {
        done(CWError(kCWErrorInvalidParameter, QStringLiteral("No network was chosen")));
        return;
    }
    m_connector->associate(name, *network, parameters, refreshingThen(std::move(done)));
}

void LinuxBackend::enableIBSSAsync(const QString &name, const QVariantMap &parameters,
                                   Completion done)
{
    CWError error;
    if (failIfUnknown(name, &error)) {
        done(error);
        return;
    }
    m_connector->enableIBSS(name, parameters, QSysInfo::machineHostName(),
                            refreshingThen(std::move(done)));
}

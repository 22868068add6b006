// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/linux/NmConnector.h"

#include "wireless/CWKeys.h"
#include "wireless/linux/NmFailureText.h"
#include "wireless/linux/NmSavedProfiles.h"
#include "wireless/linux/NmSettingsBuilder.h"

#include <QEventLoop>
#include <QLoggingCategory>
#include <QTimer>

#include <algorithm>

Q_LOGGING_CATEGORY(lcNmConnector, "corvane.networkmanager.join")

namespace {
// NMActiveConnectionState and NMDeviceState values.
constexpr uint kActiveActivated = 2;
constexpr uint kActiveDeactivated = 4;
constexpr uint kDeviceFailed = 120;
// When the active connection is already gone, its last signals are still in the queue.
constexpr int kGoneGraceMs = 2000;

bool notRunning(NetworkManagerClient *nm, CWError *error)
{
    if (nm->isRunning())
        return false;
    CWError::set(error, kCWErrorServiceUnavailable,
                 QStringLiteral("NetworkManager is not running"));
    return true;
}
} // namespace

NmConnector::NmConnector(NetworkManagerClient *nm, NmSavedProfiles *profiles, QObject *parent)
    : QObject(parent), m_nm(nm), m_profiles(profiles)
{
}

QString NmConnector::deviceOrFail(const QString &interfaceName, CWError *error) const
{
    if (notRunning(m_nm, error))
        return {};
    return m_nm->deviceForInterface(interfaceName, error);
}

bool NmConnector::setPower(bool on, CWError *error)
{
    CWError::reset(error);
    if (notRunning(m_nm, error))
        return false;
    if (on && m_nm->wirelessHardwareEnabled() == false) {
        CWError::set(error, kCWErrorPoweredOff,
                     QStringLiteral("Wi-Fi is switched off by a hardware switch"));
        return false;
    }
    return m_nm->setWirelessEnabled(on, error);
}

bool NmConnector::associate(const QString &interfaceName, const CWNetwork &network,
                            const QVariantMap &parameters, CWError *error)
{
    CWError::reset(error);
    const QString device = deviceOrFail(interfaceName, error);
    if (device.isEmpty())
        return false;
    const auto profile = parameters.value(kCWAssocKey8021XProfile).value<CW8021XProfileRef>();
    const bool newCredentials =
        !parameters.value(kCWAssocKeyPassphrase).toString().isEmpty() || profile;
    const auto ap = m_nm->accessPointFor(device, network.bssid());
    const QString specific = ap ? ap->path : QString();

    QString active;
    const QString saved =
        m_profiles ? m_profiles->connectionForSsid(network.ssidData()) : QString();
    if (!saved.isEmpty() && !newCredentials) {
        active = m_nm->activate(saved, device, specific, error);
    } else {
        const auto security = NmSettingsBuilder::securityFor(
            network, ap ? (ap->rsnFlags | ap->wpaFlags) : 0u, profile != nullptr);
        auto settings = NmSettingsBuilder::joinSettings(network, security, parameters, error);
        if (!settings)
            return false;
        // New keys for a network NetworkManager already knows replace the old ones, so
        // the next join without a key uses them and no second entry piles up.
        if (!saved.isEmpty() && updateSaved(saved, *settings))
            active = m_nm->activate(saved, device, specific, error);
        else
            active = m_nm->addAndActivate(*settings, device, specific, error);
    }
    if (active.isEmpty())
        return false;
    return waitForActivation(active, interfaceName, error);
}

bool NmConnector::updateSaved(const QString &path, NmSettings settings)
{
    const NmSettings old = m_nm->connectionSettings(path, nullptr);
    const QString connection = QStringLiteral("connection");
    // The saved entry keeps its identity and the name the user may have given it.
    for (const char *key : {"uuid", "id"}) {
        const QString name = QString::fromLatin1(key);
        const QVariant value = old.value(connection).value(name);
        if (value.isValid())
            settings[connection][name] = value;
    }
    CWError error;
    if (m_nm->updateConnection(path, settings, &error))
        return true;
    // Not allowed to change a connection shared by all users, say: a new one of our own.
    qCInfo(lcNmConnector) << "saved connection kept:" << error.localizedDescription();
    return false;
}

bool NmConnector::enableIBSS(const QString &interfaceName, const QVariantMap &parameters,
                             const QString &defaultSsid, CWError *error)
{
    CWError::reset(error);
    const auto settings = NmSettingsBuilder::adhocSettings(parameters, defaultSsid, error);
    if (!settings)
        return false;
    const QString device = deviceOrFail(interfaceName, error);
    if (device.isEmpty())
        return false;
    const QString active = m_nm->addAndActivate(*settings, device, {}, error);
    if (active.isEmpty())
        return false;
    return waitForActivation(active, interfaceName, error);
}

bool NmConnector::disassociate(const QString &interfaceName, CWError *error)
{
    CWError::reset(error);
    const QString device = deviceOrFail(interfaceName, error);
    if (device.isEmpty())
        return false;
    return m_nm->disconnectDevice(device, error);
}

bool NmConnector::waitForActivation(const QString &activePath, const QString &interfaceName,
                                    CWError *error)
{
    std::optional<uint> finalState;
    uint activeReason = 0;
    uint deviceReason = 0;
    bool daemonGone = false;

    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    auto c1 = connect(m_nm, &NetworkManagerClient::activeConnectionStateChanged, &loop,
                      [&](const QString &path, uint state, uint reason) {
                          if (path != activePath)
                              return;
                          if (state == kActiveActivated || state >= kActiveDeactivated) {
                              finalState = state;
                              activeReason = reason;
                              loop.quit();
                          }
                      });
    auto c2 = connect(m_nm, &NetworkManagerClient::deviceStateChanged, &loop,
                      [&](const QString &name, uint newState, uint, uint reason) {
                          if (name == interfaceName && newState == kDeviceFailed)
                              deviceReason = reason;
                      });
    auto c3 = connect(m_nm, &NetworkManagerClient::runningChanged, &loop, [&](bool running) {
        if (!running) {
            daemonGone = true;
            loop.quit();
        }
    });

    const auto now = m_nm->activeConnectionState(activePath);
    if (now == kActiveActivated) {
        finalState = now;
    } else {
        timer.start(now ? m_timeoutMs : std::min(m_timeoutMs, kGoneGraceMs));
        // Timers keep running (the spinner turns); clicks wait until the answer is in.
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    }
    disconnect(c1);
    disconnect(c2);
    disconnect(c3);

    if (finalState == kActiveActivated)
        return true;
    if (daemonGone) {
        CWError::set(error, kCWErrorServiceUnavailable,
                     QStringLiteral("NetworkManager is not running"));
        return false;
    }
    if (!finalState) {
        if (now) { // still trying: give up rather than leave it half-joined
            m_nm->deactivate(activePath);
            CWError::set(error, kCWErrorTimeout, QStringLiteral("The network did not answer"));
            return false;
        }
        CWError::set(error, kCWErrorUnknown, NmFailureText::describe(0, deviceReason));
        return false;
    }
    const QString text = NmFailureText::describe(activeReason, deviceReason);
    const bool rejected = text == NmFailureText::forDeviceReason(7);
    CWError::set(error, rejected ? kCWErrorAuthenticationFailed : kCWErrorUnknown, text);
    return false;
}

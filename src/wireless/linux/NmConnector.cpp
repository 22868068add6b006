// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/linux/NmConnector.h"

#include "wireless/CWKeys.h"
#include "wireless/linux/NmActivation.h"
#include "wireless/linux/NmSavedProfiles.h"
#include "wireless/linux/NmSettingsBuilder.h"

#include <utility>

namespace {
bool notRunning(NetworkManagerClient *nm, CWError *error)
{
    if (nm->isRunning())
        return false;
    CWError::set(error, kCWErrorServiceUnavailable,
                 QStringLiteral("NetworkManager is not running"));
    return true;
}

CWError hardwareSwitchOff()
{
    return CWError(kCWErrorPoweredOff,
                   QStringLiteral("Wi-Fi is switched off by a hardware switch"));
}
} // namespace

NmConnector::NmConnector(NetworkManagerClient *nm, NmSavedProfiles *profiles, QObject *parent)
    : QObject(parent), m_nm(nm), m_profiles(profiles)
{
}

// Joins still under way go with their children, unanswered: whoever waited for them is
// being torn down too.
NmConnector::~NmConnector() = default;

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
        if (error)
            *error = hardwareSwitchOff();
        return false;
    }
    return m_nm->setWirelessEnabled(on, error);
}

void NmConnector::setPower(bool on, Completion done)
{
    CWError error;
    if (notRunning(m_nm, &error)) {
        done(error);
        return;
    }
    if (!on) {
        m_nm->setWirelessEnabled(false, this, std::move(done));
        return;
    }
    m_nm->wirelessHardwareEnabled(this, [this, done](std::optional<bool> hardware) {
        if (hardware == false)
            done(hardwareSwitchOff());
        else
            m_nm->setWirelessEnabled(true, this, done);
    });
}

bool NmConnector::refuseIfBusy(const QString &interfaceName, const Completion &done) const
{
    if (!isJoining(interfaceName))
        return false;
    // Two activations on one device would cancel each other in NetworkManager, and each
    // caller would learn of the other's outcome; the first one asked goes on.
    done(CWError(kCWErrorBusy,
                 QStringLiteral("%1 is still joining another network").arg(interfaceName)));
    return true;
}

NmActivation *NmConnector::startJoin(const QString &interfaceName, Completion done)
{
    auto *join = new NmActivation(
        m_nm, interfaceName, m_timeoutMs,
        [this, interfaceName, done = std::move(done)](const CWError &error) {
            if (NmActivation *finished = m_joins.take(interfaceName))
                finished->deleteLater();
            done(error);
        },
        this);
    m_joins.insert(interfaceName, join);
    return join;
}

void NmConnector::associate(const QString &interfaceName, const CWNetwork &network,
                            const QVariantMap &parameters, Completion done)
{
    if (refuseIfBusy(interfaceName, done))
        return;
    CWError error;
    const QString device = deviceOrFail(interfaceName, &error);
    if (device.isEmpty()) {
        done(error);
        return;
    }
    // Under way from here on, while NetworkManager's view of the access point is fetched.
    NmActivation *join = startJoin(interfaceName, std::move(done));
    m_nm->accessPointFor(
        device, network.bssid(), join,
        [this, join, network, parameters,
         device](std::optional<NetworkManagerClient::AccessPoint> ap) {
            if (join->isFinished())
                return;
            const auto profile =
                parameters.value(kCWAssocKey8021XProfile).value<CW8021XProfileRef>();
            const bool newCredentials =
                !parameters.value(kCWAssocKeyPassphrase).toString().isEmpty() || profile;
            const QString specific = ap ? ap->path : QString();
            const QString saved =
                m_profiles ? m_profiles->connectionForSsid(network.ssidData()) : QString();
            if (!saved.isEmpty() && !newCredentials) {
                join->activate(saved, device, specific);
                return;
            }
            const auto security = NmSettingsBuilder::securityFor(
                network, ap ? (ap->rsnFlags | ap->wpaFlags) : 0u, profile != nullptr);
            CWError refusal;
            const auto settings =
                NmSettingsBuilder::joinSettings(network, security, parameters, &refusal);
            if (!settings)
                join->fail(refusal);
            // New keys for a network NetworkManager already knows replace the old ones, so
            // the next join without a key uses them and no second entry piles up.
            else if (!saved.isEmpty())
                join->replaceAndActivate(saved, *settings, device, specific);
            else
                join->addAndActivate(*settings, device, specific);
        });
}

void NmConnector::enableIBSS(const QString &interfaceName, const QVariantMap &parameters,
                             const QString &defaultSsid, Completion done)
{
    if (refuseIfBusy(interfaceName, done))
        return;
    CWError error;
    const auto settings = NmSettingsBuilder::adhocSettings(parameters, defaultSsid, &error);
    if (!settings) {
        done(error);
        return;
    }
    const QString device = deviceOrFail(interfaceName, &error);
    if (device.isEmpty()) {
        done(error);
        return;
    }
    startJoin(interfaceName, std::move(done))->addAndActivate(*settings, device, {});
}

bool NmConnector::disassociate(const QString &interfaceName, CWError *error)
{
    CWError::reset(error);
    const QString device = deviceOrFail(interfaceName, error);
    if (device.isEmpty())
        return false;
    return m_nm->disconnectDevice(device, error);
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/CWInterface.h"

#include "wireless/SFAuthorization.h"
#include "wireless/WirelessBackend.h"

namespace {
void noInterface(CWError *error)
{
    CWError::set(error, kCWErrorNoInterface, QStringLiteral("No wireless interface is available"));
}
} // namespace

CWInterface::CWInterface(std::shared_ptr<WirelessBackend> backend, QString name)
    : m_backend(std::move(backend)), m_name(std::move(name))
{
}

QStringList CWInterface::supportedInterfaces()
{
    auto backend = WirelessBackend::current();
    return backend ? backend->interfaceNames() : QStringList{};
}

CWInterfaceRef CWInterface::interfaceWithName(const QString &name)
{
    auto backend = WirelessBackend::current();
    if (!backend || !backend->hasInterface(name))
        return nullptr;
    return std::make_shared<CWInterface>(backend, name);
}

const CWInterface &CWInterface::null()
{
    static const CWInterface none(nullptr, QString());
    return none;
}

bool CWInterface::powerOn() const
{
    return m_backend && m_backend->powerOn(m_name);
}

std::optional<QString> CWInterface::ssid() const
{
    return m_backend ? m_backend->ssid(m_name) : std::nullopt;
}

std::optional<QString> CWInterface::bssid() const
{
    return m_backend ? m_backend->bssid(m_name) : std::nullopt;
}

qint64 CWInterface::security() const
{
    return m_backend ? m_backend->security(m_name) : 0;
}

qint64 CWInterface::rssiValue() const
{
    return m_backend ? m_backend->rssiValue(m_name) : 0;
}

qint64 CWInterface::noiseMeasurement() const
{
    return m_backend ? m_backend->noiseMeasurement(m_name) : 0;
}

double CWInterface::transmitRate() const
{
    return m_backend ? m_backend->transmitRate(m_name) : 0.0;
}

qint64 CWInterface::transmitPower() const
{
    return m_backend ? m_backend->transmitPower(m_name) : 0;
}

std::optional<QString> CWInterface::countryCode() const
{
    return m_backend ? m_backend->countryCode(m_name) : std::nullopt;
}

QList<qint64> CWInterface::supportedChannels() const
{
    return m_backend ? m_backend->supportedChannels(m_name) : QList<qint64>{};
}

std::optional<CWChannel> CWInterface::wlanChannel() const
{
    return m_backend ? m_backend->wlanChannel(m_name) : std::nullopt;
}

std::optional<int> CWInterface::interfaceState() const
{
    return m_backend ? m_backend->interfaceState(m_name) : std::nullopt;
}

std::optional<int> CWInterface::opMode() const
{
    return m_backend ? m_backend->opMode(m_name) : std::nullopt;
}

bool CWInterface::serviceActive() const
{
    return m_backend && m_backend->serviceActive(m_name);
}

void CWInterface::setAuthorization(std::shared_ptr<SFAuthorization> authorization)
{
    if (m_backend)
        m_backend->setAuthorization(m_name, std::move(authorization));
}

QList<CWNetworkRef> CWInterface::scanForNetworksWithParameters(const QVariantMap &parameters,
                                                               CWError *error)
{
    CWError::reset(error);
    if (!m_backend) {
        noInterface(error);
        return {};
    }
    return m_backend->scanForNetworks(m_name, parameters, error);
}

bool CWInterface::setPower(bool on, CWError *error)
{
    CWError::reset(error);
    if (!m_backend) {
        noInterface(error);
        return false;
    }
    return m_backend->setPower(m_name, on, error);
}

bool CWInterface::setChannel(quint64 channel, CWError *error)
{
    CWError::reset(error);
    if (!m_backend) {
        noInterface(error);
        return false;
    }
    return m_backend->setChannel(m_name, channel, error);
}

void CWInterface::disassociate()
{
    if (m_backend)
        m_backend->disassociate(m_name);
}

bool CWInterface::associateToNetwork(const CWNetworkRef &network, const QVariantMap &parameters,
                                     CWError *error)
{
    CWError::reset(error);
    if (!m_backend || !network) {
        noInterface(error);
        return false;
    }
    return m_backend->associateToNetwork(m_name, network, parameters, error);
}

bool CWInterface::enableIBSSWithParameters(const QVariantMap &parameters, CWError *error)
{
    CWError::reset(error);
    if (!m_backend) {
        noInterface(error);
        return false;
    }
    return m_backend->enableIBSS(m_name, parameters, error);
}

void CWInterface::setPower(bool on, Completion done)
{
    if (!m_backend) {
        CWError error;
        noInterface(&error);
        done(error);
        return;
    }
    m_backend->setPowerAsync(m_name, on, std::move(done));
}

void CWInterface::associateToNetwork(const CWNetworkRef &network, const QVariantMap &parameters,
                                     Completion done)
{
    if (!m_backend || !network) {
        CWError error;
        noInterface(&error);
        done(error);
        return;
    }
    m_backend->associateToNetworkAsync(m_name, network, parameters, std::move(done));
}

void CWInterface::enableIBSSWithParameters(const QVariantMap &parameters, Completion done)
{
    if (!m_backend) {
        CWError error;
        noInterface(&error);
        done(error);
        return;
    }
    m_backend->enableIBSSAsync(m_name, parameters, std::move(done));
}

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWChannel.h"
#include "wireless/CWError.h"
#include "wireless/CWNetwork.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <optional>

class SFAuthorization;
class WirelessBackend;
class CWInterface;
using CWInterfaceRef = std::shared_ptr<CWInterface>;

// A handle on one wireless interface. It holds no state of its own: every query goes to
// the backend afresh. A handle whose backend is gone or does not know the name (and the
// null handle) answers zero, false or none, and its actions fail.
class CWInterface
{
public:
    CWInterface(std::shared_ptr<WirelessBackend> backend, QString name);

    // Names of the system's wireless interfaces, in the system's order.
    static QStringList supportedInterfaces();
    // The interface of that name, or null for a name the system does not know.
    static CWInterfaceRef interfaceWithName(const QString &name);
    // A handle that answers like a missing interface; for callers holding no interface.
    static const CWInterface &null();

    QString interfaceName() const { return m_name; }

    bool powerOn() const;
    std::optional<QString> ssid() const;
    std::optional<QString> bssid() const;
    qint64 security() const;
    qint64 rssiValue() const;
    qint64 noiseMeasurement() const;
    double transmitRate() const;
    qint64 transmitPower() const;
    std::optional<QString> countryCode() const;
    QList<qint64> supportedChannels() const;
    std::optional<CWChannel> wlanChannel() const;
    std::optional<int> interfaceState() const;
    std::optional<int> opMode() const;
    bool serviceActive() const;

    void setAuthorization(std::shared_ptr<SFAuthorization> authorization);
    // Empty parameters stand for "none".
    QList<CWNetworkRef> scanForNetworksWithParameters(const QVariantMap &parameters,
                                                      CWError *error);
    bool setPower(bool on, CWError *error);
    bool setChannel(quint64 channel, CWError *error);
    void disassociate();
    bool associateToNetwork(const CWNetworkRef &network, const QVariantMap &parameters,
                            CWError *error);
    bool enableIBSSWithParameters(const QVariantMap &parameters, CWError *error);

    // The same actions answered through `done` (see WirelessBackend): what the window uses,
    // so that a join waiting for the network never holds up the event loop.
    using Completion = std::function<void(const CWError &error)>;
    void setPower(bool on, Completion done);
    void associateToNetwork(const CWNetworkRef &network, const QVariantMap &parameters,
                            Completion done);
    void enableIBSSWithParameters(const QVariantMap &parameters, Completion done);

private:
    std::shared_ptr<WirelessBackend> m_backend;
    QString m_name;
};

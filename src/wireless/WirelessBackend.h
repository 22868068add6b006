// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CW8021XProfile.h"
#include "wireless/CWChannel.h"
#include "wireless/CWError.h"
#include "wireless/CWNetwork.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <optional>

class SFAuthorization;

// What lies behind the wireless boundary: the simulated radio, the Linux radio (nl80211,
// NetworkManager, polkit) or a replayed capture. One backend is chosen at start-up and
// installed with setCurrent(); CWInterface, CW8021XProfile and SFAuthorization forward to it.
//
// Every query takes the interface name and answers afresh. A name the backend does not know
// answers zero, false or none; an action on it fails with an error.
class WirelessBackend : public QObject
{
    Q_OBJECT
public:
    explicit WirelessBackend(QObject *parent = nullptr) : QObject(parent) {}
    ~WirelessBackend() override = default;

    static std::shared_ptr<WirelessBackend> current();
    static void setCurrent(std::shared_ptr<WirelessBackend> backend);

    // Short name for logs and the title bar ("simulated", "linux", "replay").
    virtual QString backendName() const = 0;

    // Class-level services.
    virtual QStringList interfaceNames() const = 0;
    virtual QList<CW8021XProfileRef> allUser8021XProfiles() const { return {}; }
    virtual bool obtainAuthorization(const QString &right, quint32 flags, CWError *error);

    // Interface queries.
    virtual bool hasInterface(const QString &name) const { return interfaceNames().contains(name); }
    virtual bool powerOn(const QString &name) const = 0;
    virtual std::optional<QString> ssid(const QString &name) const = 0;
    virtual std::optional<QString> bssid(const QString &name) const = 0;
    virtual qint64 security(const QString &name) const = 0;
    virtual qint64 rssiValue(const QString &name) const = 0;
    virtual qint64 noiseMeasurement(const QString &name) const = 0;
    virtual double transmitRate(const QString &name) const = 0;
    virtual qint64 transmitPower(const QString &name) const = 0;
    virtual std::optional<QString> countryCode(const QString &name) const = 0;
    virtual QList<qint64> supportedChannels(const QString &name) const = 0;
    virtual std::optional<CWChannel> wlanChannel(const QString &name) const = 0;
    virtual std::optional<int> interfaceState(const QString &name) const = 0;
    virtual std::optional<int> opMode(const QString &name) const = 0;
    virtual bool serviceActive(const QString &name) const = 0;

    // Interface actions. Each fills *error on failure and leaves it empty on success.
    virtual void setAuthorization(const QString &name, std::shared_ptr<SFAuthorization> auth);
    virtual QList<CWNetworkRef> scanForNetworks(const QString &name, const QVariantMap &parameters,
                                                CWError *error) = 0;
    virtual bool setPower(const QString &name, bool on, CWError *error) = 0;
    virtual bool setChannel(const QString &name, quint64 channel, CWError *error) = 0;
    virtual void disassociate(const QString &name) = 0;
    // Synchronous joins exist only where a join needs no daemon (the simulated and replayed
    // radios); the default refuses, and callers use the asynchronous form below.
    virtual bool associateToNetwork(const QString &name, const CWNetworkRef &network,
                                    const QVariantMap &parameters, CWError *error);
    virtual bool enableIBSS(const QString &name, const QVariantMap &parameters, CWError *error);

    // The long actions: each answers through `done` exactly once, on the main thread; an
    // empty error means success. By default they run the synchronous action and answer
    // before returning. A backend that waits for a daemon (NetworkManager, polkit) answers
    // later, and the caller's event loop keeps running meanwhile: no nested loop.
    using Completion = std::function<void(const CWError &error)>;
    virtual void obtainAuthorizationAsync(const QString &right, quint32 flags, Completion done);
    virtual void setPowerAsync(const QString &name, bool on, Completion done);
    virtual void associateToNetworkAsync(const QString &name, const CWNetworkRef &network,
                                         const QVariantMap &parameters, Completion done);
    virtual void enableIBSSAsync(const QString &name, const QVariantMap &parameters,
                                 Completion done);

Q_SIGNALS:
    // The link of an interface changed (association, power, channel). `keys` are
    // "State:/Network/Interface/<name>/..."-style paths, split by wifi_network_changed().
    void linkChanged(const QString &interfaceName, const QStringList &keys);
};

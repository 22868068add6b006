// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/WirelessBackend.h"
#include "wireless/simulated/SimScenario.h"
#include "wireless/simulated/SimWorld.h"

#include <QDateTime>
#include <QList>
#include <QVariantMap>

#include <memory>

// A radio without hardware: the interfaces and access points of a scenario file, moving and
// fading over time (Clock::now() since construction) with repeatable randomness (the seed).
// Actions change that world for real: a switched-off radio hears nothing, a joined network
// shows in the interface's readings, an ad-hoc network started here appears in later scans.
class SimulatedBackend final : public WirelessBackend
{
    Q_OBJECT
public:
    SimulatedBackend(SimScenario scenario, quint32 seed);

    // Null and *errorText set when the file cannot be read or is no valid scenario.
    static std::shared_ptr<SimulatedBackend> fromFile(const QString &path, quint32 seed,
                                                      QString *errorText);
    static std::shared_ptr<SimulatedBackend> fromJson(const QByteArray &json, quint32 seed,
                                                      QString *errorText);
    // The built-in block of flats (:/scenarios/default.json).
    static std::shared_ptr<SimulatedBackend> createDefault(quint32 seed);

    QString backendName() const override { return QStringLiteral("simulated"); }

    QStringList interfaceNames() const override;
    QList<CW8021XProfileRef> allUser8021XProfiles() const override;
    bool obtainAuthorization(const QString &right, quint32 flags, CWError *error) override;

    bool powerOn(const QString &name) const override;
    std::optional<QString> ssid(const QString &name) const override;
    std::optional<QString> bssid(const QString &name) const override;
    qint64 security(const QString &name) const override;
    qint64 rssiValue(const QString &name) const override;
    qint64 noiseMeasurement(const QString &name) const override;
    double transmitRate(const QString &name) const override;
    qint64 transmitPower(const QString &name) const override;
    std::optional<QString> countryCode(const QString &name) const override;
    QList<qint64> supportedChannels(const QString &name) const override;
    std::optional<CWChannel> wlanChannel(const QString &name) const override;
    std::optional<int> interfaceState(const QString &name) const override;
    std::optional<int> opMode(const QString &name) const override;
    bool serviceActive(const QString &name) const override;

    void setAuthorization(const QString &name, std::shared_ptr<SFAuthorization> auth) override;
    QList<CWNetworkRef> scanForNetworks(const QString &name, const QVariantMap &parameters,
                                        CWError *error) override;
    bool setPower(const QString &name, bool on, CWError *error) override;
    bool setChannel(const QString &name, quint64 channel, CWError *error) override;
    void disassociate(const QString &name) override;
    bool associateToNetwork(const QString &name, const CWNetworkRef &network,
                            const QVariantMap &parameters, CWError *error) override;
    bool enableIBSS(const QString &name, const QVariantMap &parameters, CWError *error) override;

    // Hooks for tests and demonstrations.
    const SimWorld &world() const { return m_world; }
    double elapsedSeconds() const;
    int scanCount() const { return m_scanCount; }
    int authorizationCount() const { return m_authorizationCount; }
    QVariantMap lastScanParameters() const { return m_lastScanParameters; }
    QVariantMap lastAssociationParameters() const { return m_lastAssociationParameters; }
    QVariantMap lastIBSSParameters() const { return m_lastIBSSParameters; }
    std::shared_ptr<SFAuthorization> authorizationOf(const QString &name) const;
    void setServiceActive(const QString &name, bool active);
    SimScenario::Faults faults() const { return m_faults; }
    void setFaults(const SimScenario::Faults &faults) { m_faults = faults; }
    // The BSSID of the ad-hoc network the interface runs, empty when none.
    QString ownIBSSBssid(const QString &name) const;

private:
    struct Interface
    {
        SimScenario::Interface config;
        bool powerOn = true;
        bool serviceActive = false;
        qint64 channel = 0;
        QString joined;  // BSSID the interface wants to be on; the link is up while heard
        QString ownIBSS; // BSSID of the ad-hoc network it started, if any
        bool linkReported = false;
        std::shared_ptr<SFAuthorization> authorization;
    };

    int indexOf(const QString &name) const;
    Interface *find(const QString &name, CWError *error);
    double now() const;
    // The station the interface is linked to right now, or -1.
    int linkedStation(int index) const;
    void endOwnIBSS(Interface &iface);
    // Tell listeners when the link came up or went down, including by time (range, AP gone).
    void reportLink(int index, bool force = false);

    SimWorld m_world;
    QList<Interface> m_interfaces;
    SimScenario::Faults m_faults;
    int m_scanCount = 0;
    int m_authorizationCount = 0;
    QVariantMap m_lastScanParameters;
    QVariantMap m_lastAssociationParameters;
    QVariantMap m_lastIBSSParameters;
};

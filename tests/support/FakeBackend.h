// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/WirelessBackend.h"

#include <QList>

#include <functional>

// A backend whose every answer the test sets by hand, and which records what it was asked.
// It needs no widgets, so every test area and the benchmarks share it.
class FakeBackend final : public WirelessBackend
{
    Q_OBJECT
public:
    QString backendName() const override { return QStringLiteral("fake"); }
    QStringList interfaceNames() const override { return names; }
    QList<CW8021XProfileRef> allUser8021XProfiles() const override { return profiles; }
    bool obtainAuthorization(const QString &right, quint32 flags, CWError *error) override;

    bool powerOn(const QString &) const override { return power; }
    std::optional<QString> ssid(const QString &) const override { return currentSsid; }
    std::optional<QString> bssid(const QString &) const override { return currentBssid; }
    qint64 security(const QString &) const override { return 0; }
    qint64 rssiValue(const QString &) const override { return rssi; }
    qint64 noiseMeasurement(const QString &) const override { return noise; }
    double transmitRate(const QString &) const override { return rate; }
    qint64 transmitPower(const QString &) const override { return txPower; }
    std::optional<QString> countryCode(const QString &) const override { return country; }
    QList<qint64> supportedChannels(const QString &) const override { return channels; }
    std::optional<CWChannel> wlanChannel(const QString &) const override { return channel; }
    std::optional<int> interfaceState(const QString &) const override { return state; }
    std::optional<int> opMode(const QString &) const override { return mode; }
    bool serviceActive(const QString &) const override { return active; }

    QList<CWNetworkRef> scanForNetworks(const QString &name, const QVariantMap &parameters,
                                        CWError *error) override;
    bool setPower(const QString &name, bool on, CWError *error) override;
    bool setChannel(const QString &name, quint64 channel, CWError *error) override;
    void disassociate(const QString &name) override;
    bool associateToNetwork(const QString &name, const CWNetworkRef &network,
                            const QVariantMap &parameters, CWError *error) override;
    bool enableIBSS(const QString &name, const QVariantMap &parameters, CWError *error) override;
    // With `deferAnswers`, authorizations and joins are answered only by answerDeferred(),
    // as a daemon that takes its time would.
    void obtainAuthorizationAsync(const QString &right, quint32 flags, Completion done) override;
    void associateToNetworkAsync(const QString &name, const CWNetworkRef &network,
                                 const QVariantMap &parameters, Completion done) override;
    void answerDeferred();
    bool deferAnswers = false;
    QList<std::function<void()>> deferred;

    // A network as a scan reports it.
    static CWNetworkRef network(const QString &bssid, const std::optional<QString> &ssid,
                                qint64 rssi = -60, qint64 noise = -90, qint64 channel = 6);
    // The same with the given security bit (CWSecurity), security mode and stored profile.
    static CWNetworkRef secured(const QString &bssid, const QString &ssid, int security,
                                int securityMode, CWWirelessProfileRef profile = nullptr);

    QStringList names{QStringLiteral("wlan0")};
    bool power = true;
    std::optional<QString> currentSsid;
    std::optional<QString> currentBssid;
    qint64 rssi = -55;
    qint64 noise = -92;
    double rate = 144.5;
    qint64 txPower = 31;
    std::optional<QString> country = QStringLiteral("DE");
    QList<qint64> channels{1, 6, 11, 36};
    std::optional<CWChannel> channel = CWChannel(6, kCWChannelBand2GHz, kCWChannelWidth20MHz);
    std::optional<int> state = kCWInterfaceStateRunning;
    std::optional<int> mode = kCWOpModeStation;
    bool active = false;

    // Scans hand out these lists in turn (the last one repeats); empty: no networks.
    QList<QList<CWNetworkRef>> scans;
    // When set, scans answer what this returns instead and are not recorded (generated
    // surveys of any length).
    std::function<QList<CWNetworkRef>(CWError *error)> scanner;
    bool refuseAuthorization = false;
    bool failScans = false;
    bool refusePower = false;

    int scanCount = 0;
    int authorizationCount = 0;
    QList<QVariantMap> scanParameters;
    QList<bool> powerRequests;
    QList<quint64> channelRequests;
    int disassociateCount = 0;
    QList<CW8021XProfileRef> profiles;
    QString requiredPassphrase; // non-empty: associations need exactly this passphrase
    QList<QVariantMap> associationParameters;
    QList<QVariantMap> ibssParameters;
};

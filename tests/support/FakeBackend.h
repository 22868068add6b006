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
    QStringList interfaceNames() const override { return {QStringLiteral("wlan0")}; }
    QList<CW8021XProfileRef> allUser8021XProfiles() const override { return profiles; }
    bool obtainAuthorization(const QString &, quint32, CWError *error) override
    {
        ++authorizationCount;
        if (refuseAuthorization)
            CWError::set(error, kCWErrorNotPermitted, QStringLiteral("Not permitted"));
        return !refuseAuthorization;
    }

    bool powerOn(const QString &) const override { return power; }
    std::optional<QString> ssid(const QString &) const override { return currentSsid; }
    std::optional<QString> bssid(const QString &) const override { return currentBssid; }
    qint64 security(const QString &) const override { return 0; }
    qint64 rssiValue(const QString &) const override { return rssi; }
    qint64 noiseMeasurement(const QString &) const override { return noise; }
    double transmitRate(const QString &) const override { return 144.5; }
    qint64 transmitPower(const QString &) const override { return 31; }
    std::optional<QString> countryCode(const QString &) const override { return country; }
    QList<qint64> supportedChannels(const QString &) const override { return channels; }
    std::optional<CWChannel> wlanChannel(const QString &) const override { return channel; }
    std::optional<int> interfaceState(const QString &) const override { return state; }
    std::optional<int> opMode(const QString &) const override { return mode; }
    bool serviceActive(const QString &) const override { return false; }

    QList<CWNetworkRef> scanForNetworks(const QString &name, const QVariantMap &parameters,
                                        CWError *error) override;
    bool setPower(const QString &name, bool on, CWError *error) override;
    bool setChannel(const QString &name, quint64 channel, CWError *error) override;
    void disassociate(const QString &) override
    {
        ++disassociateCount;
        std::tie(currentBssid, currentSsid, state) =
            std::tuple(std::nullopt, std::nullopt, kCWInterfaceStateInactive);
    }
    bool associateToNetwork(const QString &name, const CWNetworkRef &network,
                            const QVariantMap &parameters, CWError *error) override;
    bool enableIBSS(const QString &, const QVariantMap &parameters, CWError *) override
    {
        ibssParameters.append(parameters);
        return true;
    }
    // With `deferAnswers`, authorizations and joins are answered only by answerDeferred(),
    // as a daemon that takes its time would.
    void obtainAuthorizationAsync(const QString &right, quint32 flags, Completion done) override;
    void associateToNetworkAsync(const QString &name, const CWNetworkRef &network,
                                 const QVariantMap &parameters, Completion done) override;
    void answerDeferred()
    {
        for (const auto &answer : std::exchange(deferred, {}))
            answer();
    }
    void later(std::function<void()> answer)
    {
        if (deferAnswers)
            deferred.append(std::move(answer));
        else
            answer();
    }
    bool deferAnswers = false;
    QList<std::function<void()>> deferred;

    // A network as a scan reports it.
    static CWNetworkRef network(const QString &bssid, const std::optional<QString> &ssid,
                                qint64 rssi = -60, qint64 noise = -90, qint64 channel = 6);
    // The same with the given security bit (CWSecurity), security mode and stored profile.
    static CWNetworkRef secured(const QString &bssid, const QString &ssid, int security,
                                int securityMode, CWWirelessProfileRef profile = nullptr);

    bool power = true;
    std::optional<QString> currentSsid;
    std::optional<QString> currentBssid;
    qint64 rssi = -55;
    qint64 noise = -92;
    std::optional<QString> country = QStringLiteral("DE");
    QList<qint64> channels{1, 6, 11, 36};
    std::optional<CWChannel> channel = CWChannel(6, kCWChannelBand2GHz, kCWChannelWidth20MHz);
    std::optional<int> state = kCWInterfaceStateRunning;
    std::optional<int> mode = kCWOpModeStation;

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

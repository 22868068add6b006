// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/WirelessBackend.h"

// A backend with one interface, "wlan0", whose BSSID the test sets; every other query
// answers nothing and every action fails.
class FakeBackend : public WirelessBackend
{
    Q_OBJECT

public:
    std::optional<QString> associatedBssid;

    QString backendName() const override { return QStringLiteral("fake"); }
    QStringList interfaceNames() const override { return {QStringLiteral("wlan0")}; }
    bool powerOn(const QString &) const override { return true; }
    std::optional<QString> ssid(const QString &) const override { return std::nullopt; }
    std::optional<QString> bssid(const QString &) const override { return associatedBssid; }
    qint64 security(const QString &) const override { return 0; }
    qint64 rssiValue(const QString &) const override { return 0; }
    qint64 noiseMeasurement(const QString &) const override { return 0; }
    double transmitRate(const QString &) const override { return 0.0; }
    qint64 transmitPower(const QString &) const override { return 0; }
    std::optional<QString> countryCode(const QString &) const override { return std::nullopt; }
    QList<qint64> supportedChannels(const QString &) const override { return {}; }
    std::optional<CWChannel> wlanChannel(const QString &) const override { return std::nullopt; }
    std::optional<int> interfaceState(const QString &) const override { return std::nullopt; }
    std::optional<int> opMode(const QString &) const override { return std::nullopt; }
    bool serviceActive(const QString &) const override { return false; }
    QList<CWNetworkRef> scanForNetworks(const QString &, const QVariantMap &, CWError *) override
    {
        return {};
    }
    bool setPower(const QString &, bool, CWError *) override { return false; }
    bool setChannel(const QString &, quint64, CWError *) override { return false; }
    void disassociate(const QString &) override {}
    bool associateToNetwork(const QString &, const CWNetworkRef &, const QVariantMap &,
                            CWError *) override
    {
        return false;
    }
    bool enableIBSS(const QString &, const QVariantMap &, CWError *) override { return false; }
};

// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FakeBackend.h"

QList<CWNetworkRef> FakeBackend::scanForNetworks(const QString &, const QVariantMap &parameters,
                                                 CWError *error)
{
    ++scanCount;
    if (scanner) // a long generated survey: recording every request would grow without end
        return scanner(error);
    scanParameters.append(parameters);
    if (failScans) {
        CWError::set(error, kCWErrorBusy, QStringLiteral("The radio is busy"));
        return {};
    }
    // The lists in turn, the last one repeating.
    return scans.size() > 1 ? scans.takeFirst() : scans.value(0);
}

bool FakeBackend::setPower(const QString &, bool on, CWError *error)
{
    powerRequests.append(on);
    if (refusePower)
        CWError::set(error, kCWErrorNotPermitted, QStringLiteral("Not permitted: power"));
    else
        power = on;
    return !refusePower;
}

bool FakeBackend::setChannel(const QString &, quint64 wanted, CWError *error)
{
    channelRequests.append(wanted);
    const bool ok = channels.contains(qint64(wanted));
    if (ok)
        channel = CWChannel(qint64(wanted), wanted > 14 ? kCWChannelBand5GHz : kCWChannelBand2GHz,
                            kCWChannelWidth20MHz);
    else
        CWError::set(error, kCWErrorInvalidParameter,
                     QStringLiteral("Channel %1 is not supported").arg(wanted));
    return ok;
}

bool FakeBackend::associateToNetwork(const QString &, const CWNetworkRef &network,
                                     const QVariantMap &parameters, CWError *error)
{
    associationParameters.append(parameters);
    if (!requiredPassphrase.isEmpty() &&
        parameters.value(QStringLiteral("ASSOC_KEY_PASSPHRASE")).toString() != requiredPassphrase) {
        CWError::set(error, kCWErrorAuthenticationFailed,
                     QStringLiteral("The passphrase was rejected"));
        return false;
    }
    std::tie(currentBssid, currentSsid, state) =
        std::tuple(network->bssid(), network->ssid(), kCWInterfaceStateRunning);
    return true;
}

CWNetworkRef FakeBackend::network(const QString &bssid, const std::optional<QString> &ssid,
                                  qint64 rssi, qint64 noise, qint64 channel)
{
    CWNetwork::Data d;
    d.ssidPresent = ssid.has_value();
    d.ssidData = ssid ? ssid->toUtf8() : QByteArray();
    d.bssid = bssid;
    d.rssiValue = rssi;
    d.noiseMeasurement = noise;
    d.wlanChannel = CWChannel(channel, channel > 14 ? kCWChannelBand5GHz : kCWChannelBand2GHz,
                              kCWChannelWidth20MHz);
    d.phyModes = (1u << kCWPHYMode11g) | (1u << kCWPHYMode11n);
    d.securities = 1u << kCWSecurityWPA2Personal;
    d.securityMode = kCWSecurityModeWPA2_PSK;
    return CWNetwork::create(d);
}

CWNetworkRef FakeBackend::secured(const QString &bssid, const QString &ssid, int security,
                                  int securityMode, CWWirelessProfileRef profile)
{
    CWNetwork::Data d = network(bssid, ssid)->data();
    d.securities = 1u << security;
    d.securityMode = securityMode;
    d.wirelessProfile = std::move(profile);
    return CWNetwork::create(d);
}

void FakeBackend::obtainAuthorizationAsync(const QString &right, quint32 flags, Completion done)
{
    later([=, this] { WirelessBackend::obtainAuthorizationAsync(right, flags, done); });
}

void FakeBackend::associateToNetworkAsync(const QString &name, const CWNetworkRef &network,
                                          const QVariantMap &parameters, Completion done)
{
    later([=, this] { WirelessBackend::associateToNetworkAsync(name, network, parameters, done); });
}

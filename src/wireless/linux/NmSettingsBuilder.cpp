// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/linux/NmSettingsBuilder.h"

#include "wireless/CWKeys.h"
#include "wireless/CWTypes.h"

#include <QRegularExpression>
#include <QStringDecoder>

namespace {

const QString kWireless = QStringLiteral("802-11-wireless");
const QString kWirelessSecurity = QStringLiteral("802-11-wireless-security");
const QString k8021X = QStringLiteral("802-1x");
const QString kConnection = QStringLiteral("connection");

// NM80211ApSecurityFlags.
constexpr uint kApKeyMgmtPsk = 0x100;
constexpr uint kApKeyMgmt8021X = 0x200;
constexpr uint kApKeyMgmtSae = 0x400;

bool isHex(const QString &text)
{
    static const QRegularExpression hex(QStringLiteral("^[0-9A-Fa-f]*$"));
    return hex.match(text).hasMatch();
}

void fail(CWError *error, const QString &text)
{
    CWError::set(error, kCWErrorInvalidParameter, text);
}

QVariantMap wepSecurity(const QString &key)
{
    // Type 1 is a key given as is (ASCII or hex); NetworkManager's type 2 hashes a
    // passphrase instead, which is not what a 5/13/10/26-long key means.
    return {{QStringLiteral("key-mgmt"), QStringLiteral("none")},
            {QStringLiteral("auth-alg"), QStringLiteral("open")},
            {QStringLiteral("wep-key0"), key},
            {QStringLiteral("wep-key-type"), QVariant::fromValue(1u)},
            {QStringLiteral("wep-tx-keyidx"), QVariant::fromValue(0u)}};
}

QString stringSetting(const NmSettings &settings, const QString &group, const QString &key)
{
    return settings.value(group).value(key).toString();
}

} // namespace

QString NmSettingsBuilder::connectionId(const QByteArray &ssid)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(ssid);
    QString clean;
    for (const QChar c : std::as_const(text))
        if (c.isPrint())
            clean.append(c);
    return clean.isEmpty() ? QStringLiteral("Wi-Fi") : clean;
}

bool NmSettingsBuilder::isWepKey(const QString &key)
{
    const qsizetype n = key.size();
    return n == 5 || n == 13 || ((n == 10 || n == 26) && isHex(key));
}

bool NmSettingsBuilder::isWpaPassphrase(const QString &passphrase)
{
    const qsizetype n = passphrase.size();
    return (n >= 8 && n <= 63) || (n == 64 && isHex(passphrase));
}

NmSettingsBuilder::Security NmSettingsBuilder::securityFor(const CWNetwork &network,
                                                           uint apRsnFlags, bool haveProfile)
{
    const auto mode = network.securityMode();
    const bool enterprise = network.supportsSecurity(kCWSecurityWPAEnterprise) ||
                            network.supportsSecurity(kCWSecurityWPAEnterpriseMixed) ||
                            network.supportsSecurity(kCWSecurityWPA2Enterprise) ||
                            mode == kCWSecurityModeWPA_Enterprise ||
                            mode == kCWSecurityModeWPA2_Enterprise ||
                            (apRsnFlags & kApKeyMgmt8021X);
    const bool dynamicWep =
        network.supportsSecurity(kCWSecurityDynamicWEP) || mode == kCWSecurityMode8021XWEP;
    if (enterprise)
        return Security::Enterprise;
    if (dynamicWep)
        return Security::DynamicWep;
    if (haveProfile)
        return Security::Enterprise;
    const bool sae = (apRsnFlags & kApKeyMgmtSae) && !(apRsnFlags & kApKeyMgmtPsk);
    if (sae)
        return Security::Sae;
    if (network.supportsSecurity(kCWSecurityWPAPersonal) ||
        network.supportsSecurity(kCWSecurityWPAPersonalMixed) ||
        network.supportsSecurity(kCWSecurityWPA2Personal) || mode == kCWSecurityModeWPA_PSK ||
        mode == kCWSecurityModeWPA2_PSK || (apRsnFlags & kApKeyMgmtPsk))
        return Security::Psk;
    if (network.supportsSecurity(kCWSecurityWEP) || mode == kCWSecurityModeWEP)
        return Security::Wep;
    return Security::Open;
}

std::optional<NmSettings> NmSettingsBuilder::joinSettings(const CWNetwork &network,
                                                          Security security,
                                                          const QVariantMap &parameters,
                                                          CWError *error)
{
    if (!network.ssid() || network.ssidData().isEmpty()) {
        fail(error, QStringLiteral("This network hides its name, so it cannot be joined from "
                                   "the list"));
        return std::nullopt;
    }
    const QString passphrase = parameters.value(kCWAssocKeyPassphrase).toString();
    const auto profile = parameters.value(kCWAssocKey8021XProfile).value<CW8021XProfileRef>();

    NmSettings settings;
    settings[kConnection] = {{QStringLiteral("id"), connectionId(network.ssidData())},
                             {QStringLiteral("type"), kWireless}};
    settings[kWireless] = {{QStringLiteral("ssid"), network.ssidData()},
                           {QStringLiteral("mode"), QStringLiteral("infrastructure")}};

    auto needPassphrase = [&](const QString &kind) {
        if (passphrase.isEmpty()) {
            fail(error, QStringLiteral("This %1 network needs a passphrase").arg(kind));
            return false;
        }
        return true;
    };
    switch (security) {
    case Security::Open:
        return settings;
    case Security::Wep:
        if (!needPassphrase(QStringLiteral("WEP")))
            return std::nullopt;
        if (!isWepKey(passphrase)) {
            fail(error, QStringLiteral("A WEP key has 5 or 13 characters, or 10 or 26 "
                                       "hexadecimal digits"));
            return std::nullopt;
        }
        settings[kWirelessSecurity] = wepSecurity(passphrase);
        return settings;
    case Security::Psk:
    case Security::Sae:
        if (!needPassphrase(QStringLiteral("WPA")))
            return std::nullopt;
        if (security == Security::Psk && !isWpaPassphrase(passphrase)) {
            fail(error, QStringLiteral("A WPA passphrase has 8 to 63 characters, or 64 "
                                       "hexadecimal digits"));
            return std::nullopt;
        }
        settings[kWirelessSecurity] = {
            {QStringLiteral("key-mgmt"),
             security == Security::Sae ? QStringLiteral("sae") : QStringLiteral("wpa-psk")},
            {QStringLiteral("psk"), passphrase}};
        return settings;
    case Security::Enterprise:
    case Security::DynamicWep: {
        if (!profile || profile->username().isEmpty()) {
            fail(error, QStringLiteral("This network needs an 802.1X user name and password"));
            return std::nullopt;
        }
        settings[kWirelessSecurity] = {
            {QStringLiteral("key-mgmt"), security == Security::Enterprise
                                             ? QStringLiteral("wpa-eap")
                                             : QStringLiteral("ieee8021x")}};
        // PEAP with MSCHAPv2 inside is what enterprise networks expect when nothing
        // else is said; the server certificate is not pinned (no CA is known here).
        QVariantMap eap{{QStringLiteral("eap"), QStringList{QStringLiteral("peap")}},
                        {QStringLiteral("identity"), profile->username()},
                        {QStringLiteral("phase2-auth"), QStringLiteral("mschapv2")}};
        if (!profile->password().isEmpty())
            eap.insert(QStringLiteral("password"), profile->password());
        settings[k8021X] = eap;
        return settings;
    }
    }
    return settings;
}

std::optional<NmSettings> NmSettingsBuilder::adhocSettings(const QVariantMap &parameters,
                                                           const QString &defaultSsid,
                                                           CWError *error)
{
    QString ssid = parameters.value(kCWIBSSKeySSID).toString();
    if (ssid.isEmpty())
        ssid = defaultSsid;
    const QByteArray ssidBytes = ssid.toUtf8();
    if (ssidBytes.isEmpty() || ssidBytes.size() > 32) {
        fail(error, QStringLiteral("A network name has 1 to 32 bytes"));
        return std::nullopt;
    }
    const qint64 channel = parameters.value(kCWIBSSKeyChannel).toLongLong();
    const QString passphrase = parameters.value(kCWIBSSKeyPassphrase).toString();

    NmSettings settings;
    settings[kConnection] = {{QStringLiteral("id"), connectionId(ssidBytes)},
                             {QStringLiteral("type"), kWireless},
                             {QStringLiteral("autoconnect"), false}};
    QVariantMap wireless{{QStringLiteral("ssid"), ssidBytes},
                         {QStringLiteral("mode"), QStringLiteral("adhoc")}};
    if (channel > 0) {
        if (channel > 196) {
            fail(error, QStringLiteral("Channel %1 does not exist").arg(channel));
            return std::nullopt;
        }
        wireless.insert(QStringLiteral("band"),
                        channel <= 14 ? QStringLiteral("bg") : QStringLiteral("a"));
        wireless.insert(QStringLiteral("channel"), QVariant::fromValue(uint(channel)));
    }
    settings[kWireless] = wireless;
    // No DHCP server answers on an ad-hoc network: addresses are link-local.
    settings[QStringLiteral("ipv4")] = {{QStringLiteral("method"), QStringLiteral("link-local")}};
    settings[QStringLiteral("ipv6")] = {{QStringLiteral("method"), QStringLiteral("link-local")}};
    if (!passphrase.isEmpty()) {
        if (!isWepKey(passphrase)) {
            fail(error, QStringLiteral("NetworkManager can protect an ad-hoc network only with a "
                                       "WEP key: 5 or 13 characters, or 10 or 26 hexadecimal "
                                       "digits"));
            return std::nullopt;
        }
        settings[kWirelessSecurity] = wepSecurity(passphrase);
    }
    return settings;
}

bool NmSettingsBuilder::isWifiInfrastructure(const NmSettings &settings)
{
    if (stringSetting(settings, kConnection, QStringLiteral("type")) != kWireless)
        return false;
    const QString mode = stringSetting(settings, kWireless, QStringLiteral("mode"));
    return mode.isEmpty() || mode == u"infrastructure";
}

QByteArray NmSettingsBuilder::ssidOf(const NmSettings &settings)
{
    return settings.value(kWireless).value(QStringLiteral("ssid")).toByteArray().left(32);
}

bool NmSettingsBuilder::has8021X(const NmSettings &settings)
{
    return settings.contains(k8021X);
}

CW8021XProfileRef NmSettingsBuilder::profileFrom(const NmSettings &settings,
                                                 const NmSettings &secrets)
{
    if (!has8021X(settings))
        return nullptr;
    auto profile = CW8021XProfile::profile();
    QString name = stringSetting(settings, kConnection, QStringLiteral("id"));
    if (name.isEmpty())
        name = connectionId(ssidOf(settings));
    profile->setUserDefinedName(name);
    profile->setSsid(connectionId(ssidOf(settings)));
    const QString identity = stringSetting(settings, k8021X, QStringLiteral("identity"));
    if (!identity.isEmpty())
        profile->setUsername(identity);
    QString password = stringSetting(secrets, k8021X, QStringLiteral("password"));
    if (password.isEmpty())
        password = stringSetting(settings, k8021X, QStringLiteral("password"));
    if (!password.isEmpty())
        profile->setPassword(password);
    return profile;
}

CWWirelessProfileRef NmSettingsBuilder::wirelessProfileFrom(const NmSettings &settings,
                                                            const NmSettings &secrets)
{
    auto profile = std::make_shared<CWWirelessProfile>();
    profile->setSsid(connectionId(ssidOf(settings)));
    const QString keyMgmt = stringSetting(settings, kWirelessSecurity, QStringLiteral("key-mgmt"));
    QString passphrase;
    if (keyMgmt == u"wpa-psk" || keyMgmt == u"sae")
        passphrase = stringSetting(secrets, kWirelessSecurity, QStringLiteral("psk"));
    else if (keyMgmt == u"none")
        passphrase = stringSetting(secrets, kWirelessSecurity, QStringLiteral("wep-key0"));
    profile->setPassphrase(passphrase);
    profile->setUser8021XProfile(profileFrom(settings, secrets));
    return profile;
}

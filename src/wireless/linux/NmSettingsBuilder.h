// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CW8021XProfile.h"
#include "wireless/CWError.h"
#include "wireless/CWNetwork.h"
#include "wireless/CWWirelessProfile.h"
#include "wireless/linux/NetworkManagerClient.h"

#include <QByteArray>
#include <QString>
#include <QVariantMap>

#include <optional>

// Builds NetworkManager connection settings from what the join and ad-hoc dialogs hand
// over, and reads the program's profiles back out of saved connections. Pure: no D-Bus.
class NmSettingsBuilder
{
public:
    enum class Security { Open, Wep, Psk, Sae, Enterprise, DynamicWep };

    // NetworkManager's view of the access point (NM80211ApSecurityFlags) is the better
    // source for WPA3 (SAE), which the beacon-derived securities cannot tell from WPA2.
    static Security securityFor(const CWNetwork &network, uint apRsnFlags, bool haveProfile);

    // Settings for joining `network` with the dialog's parameters (kCWAssocKeyPassphrase,
    // kCWAssocKey8021XProfile). None with *error set when they cannot work.
    static std::optional<NmSettings> joinSettings(const CWNetwork &network, Security security,
                                                  const QVariantMap &parameters, CWError *error);
    // An ad-hoc network (kCWIBSSKeySSID, kCWIBSSKeyChannel, kCWIBSSKeyPassphrase);
    // `defaultSsid` is used when the parameters carry none.
    static std::optional<NmSettings> adhocSettings(const QVariantMap &parameters,
                                                   const QString &defaultSsid, CWError *error);

    // Reading saved connections.
    static bool isWifiInfrastructure(const NmSettings &settings);
    static QByteArray ssidOf(const NmSettings &settings);
    static bool has8021X(const NmSettings &settings);
    // `secrets` are what GetSecrets returned (possibly nothing).
    static CW8021XProfileRef profileFrom(const NmSettings &settings, const NmSettings &secrets);
    static CWWirelessProfileRef wirelessProfileFrom(const NmSettings &settings,
                                                    const NmSettings &secrets);

    // WEP keys as NetworkManager takes them: 5 or 13 characters, or 10 or 26 hex digits.
    static bool isWepKey(const QString &key);
    // WPA passphrases: 8 to 63 characters, or exactly 64 hex digits.
    static bool isWpaPassphrase(const QString &passphrase);

    // A connection name safe to show: the SSID without control characters.
    static QString connectionId(const QByteArray &ssid);
};

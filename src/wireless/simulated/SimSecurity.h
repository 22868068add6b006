// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// The security an access point of a scenario offers, and how it shows across the boundary:
// the set of supportsSecurity() codes, the securityMode number and the interface's
// security() value. Mixed modes carry both single parts, as real WPA/WPA2 beacons do.
class SimSecurity
{
public:
    enum Kind {
        Open,
        WEP,
        WPAPersonal,
        WPA2Personal,
        WPAMixedPersonal,
        DynamicWEP,
        WPAEnterprise,
        WPA2Enterprise,
        WPAMixedEnterprise,
    };

    // Scenario names: "open", "wep", "wpa-personal", "wpa2-personal", "wpa/wpa2-personal",
    // "dynamic-wep", "wpa-enterprise", "wpa2-enterprise", "wpa/wpa2-enterprise".
    static std::optional<Kind> fromName(const QString &name);
    static QStringList names();

    // Bit n set: the network supports security code n (CWSecurity).
    static unsigned securityBits(Kind kind);
    // CWSecurityMode of the network.
    static int securityMode(Kind kind);
    // CWSecurity value reported by an interface joined to such a network.
    static int interfaceSecurity(Kind kind);

    static bool needsPassphrase(Kind kind) { return kind == WEP || isPersonal(kind); }
    static bool isPersonal(Kind kind)
    {
        return kind == WPAPersonal || kind == WPA2Personal || kind == WPAMixedPersonal;
    }
    // 802.1X networks: joined with a user name and password, not a passphrase.
    static bool isEnterprise(Kind kind)
    {
        return kind == DynamicWEP || kind == WPAEnterprise || kind == WPA2Enterprise ||
               kind == WPAMixedEnterprise;
    }
};

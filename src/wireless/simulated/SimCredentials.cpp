// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/simulated/SimCredentials.h"

#include "wireless/CWKeys.h"

namespace {
// A parameter that is there but of the wrong kind is the caller's mistake, not a wrong key.
bool readPassphrase(const QVariantMap &parameters, std::optional<QString> *out, CWError *error)
{
    const QVariant v = parameters.value(kCWAssocKeyPassphrase);
    if (!v.isValid() || v.isNull())
        return true;
    if (v.metaType() != QMetaType::fromType<QString>()) {
        CWError::set(error, kCWErrorInvalidParameter,
                     QStringLiteral("The passphrase parameter is not a text"));
        return false;
    }
    *out = v.toString();
    return true;
}

bool readProfile(const QVariantMap &parameters, CW8021XProfileRef *out, CWError *error)
{
    const QVariant v = parameters.value(kCWAssocKey8021XProfile);
    if (!v.isValid() || v.isNull())
        return true;
    if (v.metaType() != QMetaType::fromType<CW8021XProfileRef>() || !v.value<CW8021XProfileRef>()) {
        CWError::set(error, kCWErrorInvalidParameter,
                     QStringLiteral("The 802.1X profile parameter holds no profile"));
        return false;
    }
    *out = v.value<CW8021XProfileRef>();
    return true;
}
} // namespace

QString SimCredentials::label(const SimScenario::AccessPoint &ap)
{
    if (ap.hidden || ap.ssid.isEmpty())
        return QStringLiteral("the hidden network");
    return QStringLiteral("\"%1\"").arg(QString::fromUtf8(ap.ssid));
}

bool SimCredentials::check(const SimScenario::AccessPoint &ap, const QVariantMap &parameters,
                           const CWWirelessProfileRef &stored, CWError *error)
{
    std::optional<QString> passphrase;
    CW8021XProfileRef profile;
    if (!readPassphrase(parameters, &passphrase, error) ||
        !readProfile(parameters, &profile, error))
        return false;

    if (SimSecurity::needsPassphrase(ap.security)) {
        // Without a passphrase the system falls back to the one it keeps for the network.
        if ((!passphrase || passphrase->isEmpty()) && stored && !stored->passphrase().isEmpty())
            passphrase = stored->passphrase();
        if (!passphrase || passphrase->isEmpty()) {
            CWError::set(error, kCWErrorAuthenticationFailed,
                         QStringLiteral("A passphrase is required to join %1").arg(label(ap)));
            return false;
        }
        if (*passphrase != ap.passphrase) {
            CWError::set(error, kCWErrorAuthenticationFailed,
                         QStringLiteral("The passphrase was rejected"));
            return false;
        }
        return true;
    }

    if (SimSecurity::isEnterprise(ap.security)) {
        if (!profile && stored)
            profile = stored->user8021XProfile();
        if (!profile || profile->username().isEmpty() || profile->password().isEmpty()) {
            CWError::set(
                error, kCWErrorAuthenticationFailed,
                QStringLiteral("A user name and password are required to join %1").arg(label(ap)));
            return false;
        }
        for (const SimScenario::Account &a : ap.accounts) {
            if (a.username == profile->username() && a.password == profile->password())
                return true;
        }
        CWError::set(error, kCWErrorAuthenticationFailed,
                     QStringLiteral("The 802.1X user name or password was rejected"));
        return false;
    }
    return true; // open: nothing to check, and a passphrase given anyway is ignored
}

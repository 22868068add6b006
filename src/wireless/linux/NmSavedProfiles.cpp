// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/linux/NmSavedProfiles.h"

#include "wireless/linux/NmSettingsBuilder.h"

namespace {
// Change signals cover NetworkManager's own edits; this bounds how long an edit made
// while its signals were missed (a restart of the daemon) can go unseen.
constexpr qint64 kMaxAgeMs = 30000;
} // namespace

NmSavedProfiles::NmSavedProfiles(NetworkManagerClient *nm, QObject *parent)
    : QObject(parent), m_nm(nm)
{
    connect(m_nm, &NetworkManagerClient::savedConnectionsChanged, this,
            &NmSavedProfiles::invalidate);
}

void NmSavedProfiles::refreshIfNeeded()
{
    if (!m_stale && m_age.isValid() && m_age.elapsed() < kMaxAgeMs)
        return;
    m_stale = false;
    m_age.start();
    m_entries.clear();
    CWError error;
    const QStringList paths = m_nm->connections(&error);
    for (const QString &path : paths) {
        const NmSettings settings = m_nm->connectionSettings(path, nullptr);
        if (!NmSettingsBuilder::isWifiInfrastructure(settings))
            continue;
        NmSettings secrets;
        if (NmSettingsBuilder::has8021X(settings))
            secrets = m_nm->connectionSecrets(path, QStringLiteral("802-1x"));
        else if (settings.contains(QStringLiteral("802-11-wireless-security")))
            secrets = m_nm->connectionSecrets(path, QStringLiteral("802-11-wireless-security"));
        Entry entry;
        entry.path = path;
        entry.ssid = NmSettingsBuilder::ssidOf(settings);
        entry.profile = NmSettingsBuilder::wirelessProfileFrom(settings, secrets);
        m_entries.append(entry);
    }
}

QList<CW8021XProfileRef> NmSavedProfiles::user8021XProfiles()
{
    refreshIfNeeded();
    QList<CW8021XProfileRef> out;
    for (const Entry &entry : std::as_const(m_entries))
        if (entry.profile && entry.profile->user8021XProfile())
            out.append(entry.profile->user8021XProfile());
    return out;
}

CWWirelessProfileRef NmSavedProfiles::profileForSsid(const QByteArray &ssid)
{
    refreshIfNeeded();
    for (const Entry &entry : std::as_const(m_entries))
        if (!ssid.isEmpty() && entry.ssid == ssid)
            return entry.profile;
    return nullptr;
}

QString NmSavedProfiles::connectionForSsid(const QByteArray &ssid)
{
    refreshIfNeeded();
    for (const Entry &entry : std::as_const(m_entries))
        if (!ssid.isEmpty() && entry.ssid == ssid)
            return entry.path;
    return {};
}

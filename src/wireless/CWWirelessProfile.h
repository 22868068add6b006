// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CW8021XProfile.h"

#include <QString>

#include <memory>

// What the system has stored for one network: its passphrase or its 802.1X profile.
class CWWirelessProfile
{
public:
    QString ssid() const { return m_ssid; }
    void setSsid(const QString &ssid) { m_ssid = ssid; }
    QString passphrase() const { return m_passphrase; }
    void setPassphrase(const QString &passphrase) { m_passphrase = passphrase; }
    CW8021XProfileRef user8021XProfile() const { return m_user8021XProfile; }
    void setUser8021XProfile(CW8021XProfileRef profile) { m_user8021XProfile = std::move(profile); }

private:
    QString m_ssid;
    QString m_passphrase;
    CW8021XProfileRef m_user8021XProfile;
};

using CWWirelessProfileRef = std::shared_ptr<const CWWirelessProfile>;

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QMetaType>
#include <QString>

#include <memory>

class CW8021XProfile;
using CW8021XProfileRef = std::shared_ptr<CW8021XProfile>;

// A user's stored 802.1X credentials. Profiles are shared: the join dialog hands the same
// object the backend listed back to it in the association parameters.
class CW8021XProfile
{
public:
    // The user's stored profiles, in the backend's order.
    static QList<CW8021XProfileRef> allUser8021XProfiles();
    // A new, empty profile.
    static CW8021XProfileRef profile();

    QString userDefinedName() const { return m_userDefinedName; }
    void setUserDefinedName(const QString &name) { m_userDefinedName = name; }
    QString ssid() const { return m_ssid; }
    void setSsid(const QString &ssid) { m_ssid = ssid; }
    // Null text means "none" (the join dialog sets none for an empty field).
    QString username() const { return m_username; }
    void setUsername(const QString &username) { m_username = username; }
    QString password() const { return m_password; }
    void setPassword(const QString &password) { m_password = password; }

private:
    QString m_userDefinedName;
    QString m_ssid;
    QString m_username;
    QString m_password;
};

Q_DECLARE_METATYPE(CW8021XProfileRef)

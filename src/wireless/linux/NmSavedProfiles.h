// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CW8021XProfile.h"
#include "wireless/CWWirelessProfile.h"
#include "wireless/linux/NetworkManagerClient.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QString>

// The user's saved Wi-Fi connections as the program's profiles. Read once and kept until
// NetworkManager reports a change (or a while has passed), since scans ask for them on
// every cycle.
class NmSavedProfiles : public QObject
{
    Q_OBJECT
public:
    explicit NmSavedProfiles(NetworkManagerClient *nm, QObject *parent = nullptr);

    QList<CW8021XProfileRef> user8021XProfiles();
    // The saved profile for an SSID, or null.
    CWWirelessProfileRef profileForSsid(const QByteArray &ssid);
    // The saved infrastructure connection for an SSID, or empty.
    QString connectionForSsid(const QByteArray &ssid);

    void invalidate() { m_stale = true; }

private:
    struct Entry
    {
        QString path;
        QByteArray ssid;
        CWWirelessProfileRef profile;
    };
    void refreshIfNeeded();

    NetworkManagerClient *m_nm;
    QList<Entry> m_entries;
    QElapsedTimer m_age;
    bool m_stale = true;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWError.h"
#include "wireless/CWNetwork.h"
#include "wireless/linux/NetworkManagerClient.h"

#include <QHash>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>

class NmActivation;
class NmSavedProfiles;

// The actions that go through NetworkManager: radio power, joining, ad-hoc networks and
// disconnecting. Joins and the Wi-Fi switch answer through a completion once the daemon
// has answered, so the event loop (and the dialog's spinner) keeps running meanwhile.
// One join at a time per interface: another one asked for meanwhile is refused.
class NmConnector : public QObject
{
    Q_OBJECT
public:
    using Completion = std::function<void(const CWError &error)>;

    NmConnector(NetworkManagerClient *nm, NmSavedProfiles *profiles, QObject *parent = nullptr);
    ~NmConnector() override;

    // How long a join may take before it is given up; 802.1X with a slow RADIUS server
    // needs most of the default.
    void setActivationTimeout(int msec) { m_timeoutMs = msec; }

    bool setPower(bool on, CWError *error);
    void setPower(bool on, Completion done);
    // Each answers through `done` exactly once: at once when refused before NetworkManager
    // is asked, later otherwise.
    void associate(const QString &interfaceName, const CWNetwork &network,
                   const QVariantMap &parameters, Completion done);
    void enableIBSS(const QString &interfaceName, const QVariantMap &parameters,
                    const QString &defaultSsid, Completion done);
    bool disassociate(const QString &interfaceName, CWError *error);

    bool isJoining(const QString &interfaceName) const { return m_joins.contains(interfaceName); }

private:
    QString deviceOrFail(const QString &interfaceName, CWError *error) const;
    bool refuseIfBusy(const QString &interfaceName, const Completion &done) const;
    NmActivation *startJoin(const QString &interfaceName, Completion done);

    NetworkManagerClient *m_nm;
    NmSavedProfiles *m_profiles;
    QHash<QString, NmActivation *> m_joins;
    int m_timeoutMs = 60000;
};

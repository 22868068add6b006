// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWError.h"
#include "wireless/CWNetwork.h"
#include "wireless/linux/NetworkManagerClient.h"

#include <QObject>
#include <QString>
#include <QVariantMap>

class NmSavedProfiles;

// The actions that go through NetworkManager: radio power, joining, ad-hoc networks and
// disconnecting. Joining waits for the outcome in a local event loop so the window keeps
// painting (the dialog's spinner turns) while the network answers.
class NmConnector : public QObject
{
    Q_OBJECT
public:
    NmConnector(NetworkManagerClient *nm, NmSavedProfiles *profiles, QObject *parent = nullptr);

    // How long a join may take before it is given up; 802.1X with a slow RADIUS server
    // needs most of the default.
    void setActivationTimeout(int msec) { m_timeoutMs = msec; }

    bool setPower(bool on, CWError *error);
    bool associate(const QString &interfaceName, const CWNetwork &network,
                   const QVariantMap &parameters, CWError *error);
    bool enableIBSS(const QString &interfaceName, const QVariantMap &parameters,
                    const QString &defaultSsid, CWError *error);
    bool disassociate(const QString &interfaceName, CWError *error);

private:
    QString deviceOrFail(const QString &interfaceName, CWError *error) const;
    bool updateSaved(const QString &path, NmSettings settings);
    bool waitForActivation(const QString &activePath, const QString &interfaceName, CWError *error);

    NetworkManagerClient *m_nm;
    NmSavedProfiles *m_profiles;
    int m_timeoutMs = 60000;
};

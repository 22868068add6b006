// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWError.h"

#include <QDBusConnection>
#include <QString>

// Asks polkit whether this process may perform an action. NetworkManager checks every
// privileged call against polkit again itself; this check only lets the program learn of
// a refusal (and let an authentication agent prompt) before it tries.
class PolkitClient
{
public:
    static QString defaultService() { return QStringLiteral("org.freedesktop.PolicyKit1"); }
    static QString networkControlAction()
    {
        return QStringLiteral("org.freedesktop.NetworkManager.network-control");
    }

    explicit PolkitClient(const QDBusConnection &bus, const QString &service = defaultService());

    // True when authorized, or when the system has no polkit at all. With
    // allowInteraction an agent may prompt the user, which can take a while; the wait
    // keeps the user interface painting.
    bool checkAuthorization(const QString &action, bool allowInteraction, CWError *error) const;

    // The process start time polkit identifies us by (field 22 of /proc/self/stat, in
    // clock ticks since boot); 0 when unreadable.
    static quint64 processStartTime(const QByteArray &procStat);

private:
    QDBusConnection m_bus;
    QString m_service;
};

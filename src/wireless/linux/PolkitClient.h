// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWError.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <functional>

class QDBusMessage;

// Asks polkit whether this process may perform an action. NetworkManager checks every
// privileged call against polkit again itself; this check only lets the program learn of
// a refusal (and let an authentication agent prompt) before it tries.
class PolkitClient final : public QObject
{
    Q_OBJECT
public:
    static QString defaultService() { return QStringLiteral("org.freedesktop.PolicyKit1"); }
    static QString networkControlAction()
    {
        return QStringLiteral("org.freedesktop.NetworkManager.network-control");
    }

    explicit PolkitClient(const QDBusConnection &bus, const QString &service = defaultService(),
                          QObject *parent = nullptr);

    // True when authorized, or when the system has no polkit at all. Never prompts, and
    // polkit answers such a question at once: a short blocking call.
    bool checkAuthorization(const QString &action, CWError *error) const;
    // The same answered through `done` (an empty error: authorized), exactly once unless
    // this object goes first. With allowInteraction an authentication agent may ask the
    // user for a password, which can take minutes; the event loop runs on meanwhile.
    using Completion = std::function<void(const CWError &error)>;
    void checkAuthorization(const QString &action, bool allowInteraction, Completion done);
    // How long a person at the agent's prompt is given.
    void setInteractiveTimeout(int msec) { m_interactiveTimeoutMs = msec; }

    // The process start time polkit identifies us by (field 22 of /proc/self/stat, in
    // clock ticks since boot); 0 when unreadable.
    static quint64 processStartTime(const QByteArray &procStat);

private:
    QDBusMessage request(const QString &action, bool allowInteraction) const;
    static CWError outcome(const QDBusMessage &reply);

    QDBusConnection m_bus;
    QString m_service;
    int m_interactiveTimeoutMs = 120000;
};

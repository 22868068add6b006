// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWError.h"
#include "wireless/linux/NetworkManagerClient.h"

#include <QHash>
#include <QObject>
#include <QPair>
#include <QString>
#include <QTimer>

#include <functional>

// One join (or ad-hoc network) under way through NetworkManager. It asks for the
// activation, then follows the active connection until it is up or has failed, the
// daemon leaves the bus, or the time-out passes, and reports exactly once through the
// completion. Nothing here waits: every step is a reply or a signal on the event loop.
// Deleting the object drops a join still under way without an answer.
class NmActivation final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(NmActivation)
public:
    using Completion = std::function<void(const CWError &error)>;

    NmActivation(NetworkManagerClient *nm, const QString &interfaceName, int timeoutMs,
                 Completion done, QObject *parent = nullptr);

    // One of these starts it, once.
    void addAndActivate(const NmSettings &settings, const QString &device, const QString &specific);
    void activate(const QString &connection, const QString &device, const QString &specific);
    // New keys for a saved connection: the entry keeps its identity and the name the user
    // may have given it. When NetworkManager will not change it (a connection shared by
    // all users, say) a new one of our own is added instead.
    void replaceAndActivate(const QString &connection, const NmSettings &settings,
                            const QString &device, const QString &specific);

    // Ends it before NetworkManager was asked (the settings could not be made, say).
    void fail(const CWError &error) { finish(error); }

    bool isFinished() const { return !m_done; }

private:
    void onActivationReply(const QString &activePath, const CWError &error);
    void onActiveState(const QString &path, uint state, uint reason);
    void onTimeout();
    void conclude(uint state, uint reason);
    void finish(const CWError &error);

    NetworkManagerClient *m_nm;
    QString m_interface;
    int m_timeoutMs;
    Completion m_done;
    QTimer m_timer;
    QString m_activePath;
    // Final states of active connections seen before NetworkManager told us which one is
    // ours: with a quick failure the signal can beat the reply.
    QHash<QString, QPair<uint, uint>> m_early;
    uint m_deviceReason = 0;
    // Whether the active connection was still there when first looked at; a join that
    // then times out is cancelled rather than left half-done.
    bool m_objectGone = false;
};

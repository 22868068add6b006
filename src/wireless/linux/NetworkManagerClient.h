// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWError.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <optional>

class QDBusMessage;
class QDBusServiceWatcher;

// NetworkManager's connection settings: setting name -> property -> value (a{sa{sv}}).
using NmSettings = QMap<QString, QVariantMap>;

// Typed calls to NetworkManager over D-Bus. The bus and the service name are injected so
// tests can point them at a mock. The reads a scan makes are synchronous with a bounded
// wait (and mostly cached); the actions that make NetworkManager work (joining, saving
// keys, the Wi-Fi switch) and the reads a join needs answer later through a callback,
// which runs only while its `context` object lives. Every failure
// becomes a CWError a user can act on; a daemon that is gone makes calls fail with
// "NetworkManager is not running" and they work again once it is back.
class NetworkManagerClient : public QObject
{
    Q_OBJECT
public:
    static QString defaultService() { return QStringLiteral("org.freedesktop.NetworkManager"); }

    explicit NetworkManagerClient(const QDBusConnection &bus,
                                  const QString &service = defaultService(),
                                  QObject *parent = nullptr);
    ~NetworkManagerClient() override;

    // While it runs, known from the bus's name-owner signals at no cost; a call that finds
    // the daemon gone before that signal arrived fails cleanly all the same.
    bool isRunning() const;

    // Manager.
    std::optional<bool> wirelessEnabled(CWError *error = nullptr) const;
    // The same, kept until NetworkManager reports a change: for queries made every cycle.
    std::optional<bool> cachedWirelessEnabled() const;
    std::optional<bool> wirelessHardwareEnabled(CWError *error = nullptr) const;
    bool setWirelessEnabled(bool on, CWError *error);
    using Done = std::function<void(const CWError &error)>;
    void setWirelessEnabled(bool on, QObject *context, Done done);
    void wirelessHardwareEnabled(QObject *context, std::function<void(std::optional<bool>)> done);
    // The device object of a kernel interface; empty with *error set when NM has none.
    // Kept until devices come or go.
    QString deviceForInterface(const QString &interfaceName, CWError *error) const;
    // NMDeviceState of a device, 0 when unknown; followed through its signals.
    uint deviceState(const QString &devicePath) const;
    bool disconnectDevice(const QString &devicePath, CWError *error);

    // Asks the device to scan without waiting for it. Requests closer together than
    // NetworkManager accepts are not sent; "already scanning" is fine. Returns whether a
    // request went out.
    bool requestScan(const QString &devicePath);
    void setScanInterval(int msec) { m_scanIntervalMs = msec; }

    // The access point object NetworkManager holds for a BSSID on that device, if any,
    // with its RSN flags (NM80211ApSecurityFlags).
    struct AccessPoint
    {
        QString path;
        uint rsnFlags = 0;
        uint wpaFlags = 0;
    };
    void accessPointFor(const QString &devicePath, const QString &bssid, QObject *context,
                        std::function<void(std::optional<AccessPoint>)> done);

    // Saved connections.
    QStringList connections(CWError *error) const;
    NmSettings connectionSettings(const QString &path, CWError *error) const;
    // Only what NetworkManager hands over to this user; none when it keeps them.
    NmSettings connectionSecrets(const QString &path, const QString &settingName) const;
    void connectionSettings(const QString &path, QObject *context,
                            std::function<void(const NmSettings &settings)> done);
    // Replaces a saved connection's settings (new keys for a known network).
    void updateConnection(const QString &path, const NmSettings &settings, QObject *context,
                          Done done);

    // Activation: `done` gets the active connection's path, or an error.
    using Activated = std::function<void(const QString &activePath, const CWError &error)>;
    void addAndActivate(const NmSettings &settings, const QString &devicePath,
                        const QString &specificObject, QObject *context, Activated done);
    void activate(const QString &connectionPath, const QString &devicePath,
                  const QString &specificObject, QObject *context, Activated done);
    // Without waiting; a failure is only logged.
    void deactivate(const QString &activePath);
    // NMActiveConnectionState, none when the object is gone.
    void activeConnectionState(const QString &activePath, QObject *context,
                               std::function<void(std::optional<uint> state)> done);

    // The CWError for a failed call; `what` names the action for unexpected failures.
    static CWError errorFrom(const QDBusError &error, const QString &what);

Q_SIGNALS:
    void deviceStateChanged(const QString &interfaceName, uint newState, uint oldState,
                            uint reason);
    void activeConnectionStateChanged(const QString &activePath, uint state, uint reason);
    void savedConnectionsChanged();
    void wirelessEnabledChanged();
    void runningChanged(bool running);

private Q_SLOTS:
    void onDeviceStateChanged(const QDBusMessage &message);
    void onActiveStateChanged(const QDBusMessage &message);
    void onSettingsChanged(const QDBusMessage &message);
    void onManagerPropertiesChanged(const QDBusMessage &message);
    void onDevicesChanged(const QDBusMessage &message);

private:
    QDBusMessage call(const QString &path, const QString &interface, const QString &method,
                      const QVariantList &args, int timeoutMs = -1) const;
    // The call sent without waiting; `answer` gets the reply (or the error) later.
    void callLater(const QString &path, const QString &interface, const QString &method,
                   const QVariantList &args, QObject *context,
                   std::function<void(const QDBusMessage &reply)> answer) const;
    // errorFrom(), knowing that a call left unanswered by a daemon that has since left
    // the bus was not slow but cut off.
    CWError failureOf(const QDBusMessage &reply, const QString &what) const;
    std::optional<QVariant> property(const QString &path, const QString &interface,
                                     const QString &name, CWError *error = nullptr) const;
    QString interfaceOfDevice(const QString &devicePath);
    void forgetDaemonState() const;

    QDBusConnection m_bus;
    QString m_service;
    QDBusServiceWatcher *m_watcher = nullptr;
    QHash<QString, QElapsedTimer> m_lastScan;
    QHash<QString, QString> m_deviceNames;
    // What the running daemon said, dropped when it changes owner or reports a change.
    mutable std::optional<bool> m_running;
    mutable std::optional<bool> m_wirelessEnabled;
    mutable QHash<QString, QString> m_devicePaths;
    mutable QHash<QString, uint> m_deviceStates;
    int m_scanIntervalMs = 10000;
};

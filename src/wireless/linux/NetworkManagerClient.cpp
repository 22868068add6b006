// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/linux/NetworkManagerClient.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(lcNm, "corvane.networkmanager")

const QString kManagerPath = QStringLiteral("/org/freedesktop/NetworkManager");
const QString kSettingsPath = QStringLiteral("/org/freedesktop/NetworkManager/Settings");
const QString kManagerIface = QStringLiteral("org.freedesktop.NetworkManager");
const QString kSettingsIface = QStringLiteral("org.freedesktop.NetworkManager.Settings");
const QString kConnectionIface =
    QStringLiteral("org.freedesktop.NetworkManager.Settings.Connection");
const QString kDeviceIface = QStringLiteral("org.freedesktop.NetworkManager.Device");
const QString kWirelessIface = QStringLiteral("org.freedesktop.NetworkManager.Device.Wireless");
const QString kApIface = QStringLiteral("org.freedesktop.NetworkManager.AccessPoint");
const QString kActiveIface = QStringLiteral("org.freedesktop.NetworkManager.Connection.Active");
const QString kPropsIface = QStringLiteral("org.freedesktop.DBus.Properties");

// NetworkManager answers its own calls at once; only a hung daemon takes longer.
constexpr int kCallTimeoutMs = 5000;

QString notRunningText()
{
    return QStringLiteral("NetworkManager is not running");
}

} // namespace

NetworkManagerClient::NetworkManagerClient(const QDBusConnection &bus, const QString &service,
                                           QObject *parent)
    : QObject(parent), m_bus(bus), m_service(service)
{
    qDBusRegisterMetaType<NmSettings>();
    m_watcher =
        new QDBusServiceWatcher(m_service, m_bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &newOwner) {
                // Object paths and scan timing belong to the daemon instance that is gone.
                forgetDaemonState();
                m_deviceNames.clear();
                m_lastScan.clear();
                m_running = !newOwner.isEmpty();
                Q_EMIT runningChanged(!newOwner.isEmpty());
                Q_EMIT savedConnectionsChanged();
            });
    // QtDBus only offers string-based slots for message-level subscriptions.
    m_bus.connect(m_service, QString(), kDeviceIface, QStringLiteral("StateChanged"), this,
                  SLOT(onDeviceStateChanged(QDBusMessage)));
    m_bus.connect(m_service, QString(), kActiveIface, QStringLiteral("StateChanged"), this,
                  SLOT(onActiveStateChanged(QDBusMessage)));
    for (const char *name : {"NewConnection", "ConnectionRemoved"})
        m_bus.connect(m_service, kSettingsPath, kSettingsIface, QString::fromLatin1(name), this,
                      SLOT(onSettingsChanged(QDBusMessage)));
    m_bus.connect(m_service, QString(), kConnectionIface, QStringLiteral("Updated"), this,
                  SLOT(onSettingsChanged(QDBusMessage)));
    m_bus.connect(m_service, kManagerPath, kPropsIface, QStringLiteral("PropertiesChanged"), this,
                  SLOT(onManagerPropertiesChanged(QDBusMessage)));
    m_bus.connect(m_service, kManagerPath, kManagerIface, QStringLiteral("PropertiesChanged"), this,
                  SLOT(onManagerPropertiesChanged(QDBusMessage)));
    for (const char *name : {"DeviceAdded", "DeviceRemoved"})
        m_bus.connect(m_service, kManagerPath, kManagerIface, QString::fromLatin1(name), this,
                      SLOT(onDevicesChanged(QDBusMessage)));
}

void NetworkManagerClient::forgetDaemonState() const
{
    m_wirelessEnabled.reset();
    m_devicePaths.clear();
    m_deviceStates.clear();
}

void NetworkManagerClient::onDevicesChanged(const QDBusMessage &)
{
    m_devicePaths.clear();
    m_deviceStates.clear();
}

NetworkManagerClient::~NetworkManagerClient() = default;

bool NetworkManagerClient::isRunning() const
{
    if (!m_bus.isConnected() || !m_bus.interface())
        return false;
    // Only "running" is trusted from the cache: a daemon that has just come back may not
    // have been announced yet, and asking the bus about an absent one is cheap enough.
    if (m_running.value_or(false))
        return true;
    m_running = m_bus.interface()->isServiceRegistered(m_service).value();
    return *m_running;
}

QDBusMessage NetworkManagerClient::call(const QString &path, const QString &interface,
                                        const QString &method, const QVariantList &args,
                                        int timeoutMs) const
{
    QDBusMessage msg = QDBusMessage::createMethodCall(m_service, path, interface, method);
    msg.setArguments(args);
    return m_bus.call(msg, QDBus::Block, timeoutMs < 0 ? kCallTimeoutMs : timeoutMs);
}

void NetworkManagerClient::callLater(const QString &path, const QString &interface,
                                     const QString &method, const QVariantList &args,
                                     QObject *context,
                                     std::function<void(const QDBusMessage &)> answer) const
{
    QDBusMessage msg = QDBusMessage::createMethodCall(m_service, path, interface, method);
    msg.setArguments(args);
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(msg, kCallTimeoutMs), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                     [answer](QDBusPendingCallWatcher *w) {
                         w->deleteLater();
                         answer(w->reply());
                     });
}

CWError NetworkManagerClient::failureOf(const QDBusMessage &reply, const QString &what) const
{
    const QDBusError error(reply);
    // The bus answers "no reply" both for a hung daemon and for one that quit while the
    // call was out; only the second one is gone from the bus.
    if ((error.type() == QDBusError::NoReply || error.type() == QDBusError::Disconnected) &&
        (!m_bus.isConnected() || !m_bus.interface() ||
         !m_bus.interface()->isServiceRegistered(m_service).value()))
        return CWError(kCWErrorServiceUnavailable, notRunningText());
    return errorFrom(error, what);
}

std::optional<QVariant> NetworkManagerClient::property(const QString &path,
                                                       const QString &interface,
                                                       const QString &name, CWError *error) const
{
    const QDBusMessage reply = call(path, kPropsIface, QStringLiteral("Get"), {interface, name});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        if (error)
            *error = errorFrom(QDBusError(reply), QStringLiteral("Reading %1").arg(name));
        return std::nullopt;
    }
    return reply.arguments().constFirst().value<QDBusVariant>().variant();
}

CWError NetworkManagerClient::errorFrom(const QDBusError &error, const QString &what)
{
    const QString name = error.name();
    if (name.endsWith(u".NameHasNoOwner"))
        return CWError(kCWErrorServiceUnavailable, notRunningText());
    switch (error.type()) {
    case QDBusError::ServiceUnknown:
    case QDBusError::Disconnected:
    case QDBusError::NoServer:
        return CWError(kCWErrorServiceUnavailable, notRunningText());
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
        return CWError(kCWErrorTimeout, QStringLiteral("NetworkManager did not answer in time"));
    case QDBusError::AccessDenied:
        return CWError(kCWErrorNotPermitted,
                       QStringLiteral("Not permitted: %1").arg(error.message()));
    default:
        break;
    }
    if (name.endsWith(u".PermissionDenied") || name.endsWith(u".NotAuthorized"))
        return CWError(kCWErrorNotPermitted,
                       QStringLiteral("Not permitted: %1").arg(error.message()));
    const QString detail = error.message().isEmpty() ? name : error.message();
    return CWError(kCWErrorUnknown, QStringLiteral("%1 failed: %2").arg(what, detail));
}

std::optional<bool> NetworkManagerClient::wirelessEnabled(CWError *error) const
{
    const auto value =
        property(kManagerPath, kManagerIface, QStringLiteral("WirelessEnabled"), error);
    return value ? std::optional<bool>(value->toBool()) : std::nullopt;
}

std::optional<bool> NetworkManagerClient::cachedWirelessEnabled() const
{
    if (!m_wirelessEnabled && isRunning())
        m_wirelessEnabled = wirelessEnabled();
    return m_wirelessEnabled;
}

std::optional<bool> NetworkManagerClient::wirelessHardwareEnabled(CWError *error) const
{
    const auto value =
        property(kManagerPath, kManagerIface, QStringLiteral("WirelessHardwareEnabled"), error);
    return value ? std::optional<bool>(value->toBool()) : std::nullopt;
}

bool NetworkManagerClient::setWirelessEnabled(bool on, CWError *error)
{
    const QDBusMessage reply = call(
        kManagerPath, kPropsIface, QStringLiteral("Set"),
        {kManagerIface, QStringLiteral("WirelessEnabled"), QVariant::fromValue(QDBusVariant(on))});
    m_wirelessEnabled.reset();
    if (reply.type() == QDBusMessage::ReplyMessage)
        return true;
    if (error)
        *error = errorFrom(QDBusError(reply), on ? QStringLiteral("Switching Wi-Fi on")
                                                 : QStringLiteral("Switching Wi-Fi off"));
    return false;
}

void NetworkManagerClient::setWirelessEnabled(bool on, QObject *context, Done done)
{
    callLater(
        kManagerPath, kPropsIface, QStringLiteral("Set"),
        {kManagerIface, QStringLiteral("WirelessEnabled"), QVariant::fromValue(QDBusVariant(on))},
        context, [this, on, done](const QDBusMessage &reply) {
            m_wirelessEnabled.reset();
            if (reply.type() == QDBusMessage::ReplyMessage)
                done({});
            else
                done(failureOf(reply, on ? QStringLiteral("Switching Wi-Fi on")
                                         : QStringLiteral("Switching Wi-Fi off")));
        });
}

void NetworkManagerClient::wirelessHardwareEnabled(QObject *context,
                                                   std::function<void(std::optional<bool>)> done)
{
    callLater(kManagerPath, kPropsIface, QStringLiteral("Get"),
              {kManagerIface, QStringLiteral("WirelessHardwareEnabled")}, context,
              [done](const QDBusMessage &reply) {
                  if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty())
                      done(reply.arguments().constFirst().value<QDBusVariant>().variant().toBool());
                  else
                      done(std::nullopt);
              });
}

QString NetworkManagerClient::deviceForInterface(const QString &interfaceName, CWError *error) const
{
    if (const auto it = m_devicePaths.constFind(interfaceName); it != m_devicePaths.constEnd())
        return *it;
    const QDBusMessage reply =
        call(kManagerPath, kManagerIface, QStringLiteral("GetDeviceByIpIface"), {interfaceName});
    if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty()) {
        const QString path = reply.arguments().constFirst().value<QDBusObjectPath>().path();
        if (!path.isEmpty() && path != u"/") {
            m_devicePaths.insert(interfaceName, path);
            return path;
        }
    }
    const QDBusError dbusError(reply);
    if (error) {
        if (dbusError.type() == QDBusError::ServiceUnknown ||
            dbusError.type() == QDBusError::NoReply || dbusError.type() == QDBusError::Disconnected)
            *error = errorFrom(dbusError, {});
        else
            *error =
                CWError(kCWErrorNoInterface,
                        QStringLiteral("NetworkManager does not manage %1").arg(interfaceName));
    }
    return {};
}

uint NetworkManagerClient::deviceState(const QString &devicePath) const
{
    if (const auto it = m_deviceStates.constFind(devicePath); it != m_deviceStates.constEnd())
        return *it;
    const auto value = property(devicePath, kDeviceIface, QStringLiteral("State"));
    if (!value)
        return 0;
    m_deviceStates.insert(devicePath, value->toUInt());
    return value->toUInt();
}

bool NetworkManagerClient::disconnectDevice(const QString &devicePath, CWError *error)
{
    const QDBusMessage reply = call(devicePath, kDeviceIface, QStringLiteral("Disconnect"), {});
    if (reply.type() == QDBusMessage::ReplyMessage)
        return true;
    if (error)
        *error = errorFrom(QDBusError(reply), QStringLiteral("Disconnecting"));
    return false;
}

bool NetworkManagerClient::requestScan(const QString &devicePath)
{
    QElapsedTimer &last = m_lastScan[devicePath];
    if (last.isValid() && last.elapsed() < m_scanIntervalMs)
        return false;
    last.start();
    QDBusMessage msg = QDBusMessage::createMethodCall(m_service, devicePath, kWirelessIface,
                                                      QStringLiteral("RequestScan"));
    msg.setArguments({QVariant::fromValue(QVariantMap())});
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(msg, kCallTimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [](QDBusPendingCallWatcher *w) {
        w->deleteLater();
        const QDBusPendingReply<> reply = *w;
        if (!reply.isError())
            return;
        // NetworkManager refuses a scan while one runs or right after one; the results
        // of that scan serve just as well.
        const QString message = reply.error().message();
        if (message.contains(u"already scanning", Qt::CaseInsensitive) ||
            message.contains(u"not allowed immediately", Qt::CaseInsensitive))
            qCDebug(lcNm) << "scan request skipped:" << message;
        else
            qCInfo(lcNm) << "scan request refused:" << reply.error().name() << message;
    });
    return true;
}

void NetworkManagerClient::accessPointFor(const QString &devicePath, const QString &bssid,
                                          QObject *context,
                                          std::function<void(std::optional<AccessPoint>)> done)
{
    callLater(devicePath, kPropsIface, QStringLiteral("Get"),
              {kWirelessIface, QStringLiteral("AccessPoints")}, context,
              [this, bssid, context, done](const QDBusMessage &reply) {
                  const auto paths =
                      reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty()
                          ? qdbus_cast<QList<QDBusObjectPath>>(reply.arguments()
                                                                   .constFirst()
                                                                   .value<QDBusVariant>()
                                                                   .variant()
                                                                   .value<QDBusArgument>())
                          : QList<QDBusObjectPath>();
                  if (paths.isEmpty()) {
                      done(std::nullopt);
                      return;
                  }
                  // All access points are asked at once; the answer comes when the last replies.
                  struct Search
                  {
                      qsizetype pending = 0;
                      std::optional<AccessPoint> found;
                  };
                  auto search = std::make_shared<Search>();
                  search->pending = paths.size();
                  for (const QDBusObjectPath &ap : paths) {
                      callLater(
                          ap.path(), kPropsIface, QStringLiteral("GetAll"), {kApIface}, context,
                          [ap, bssid, search, done](const QDBusMessage &props) {
                              const QVariantMap values =
                                  props.type() == QDBusMessage::ReplyMessage &&
                                          !props.arguments().isEmpty()
                                      ? qdbus_cast<QVariantMap>(props.arguments().constFirst())
                                      : QVariantMap();
                              const QString hw =
                                  values.value(QStringLiteral("HwAddress")).toString();
                              if (!search->found && !hw.isEmpty() &&
                                  hw.compare(bssid, Qt::CaseInsensitive) == 0)
                                  search->found = AccessPoint{
                                      ap.path(), values.value(QStringLiteral("RsnFlags")).toUInt(),
                                      values.value(QStringLiteral("WpaFlags")).toUInt()};
                              if (--search->pending == 0)
                                  done(search->found);
                          });
                  }
              });
}

QStringList NetworkManagerClient::connections(CWError *error) const
{
    const QDBusMessage reply =
        call(kSettingsPath, kSettingsIface, QStringLiteral("ListConnections"), {});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        if (error)
            *error = errorFrom(QDBusError(reply), QStringLiteral("Listing saved networks"));
        return {};
    }
    QStringList out;
    const auto paths =
        qdbus_cast<QList<QDBusObjectPath>>(reply.arguments().constFirst().value<QDBusArgument>());
    for (const QDBusObjectPath &path : paths)
        out.append(path.path());
    return out;
}

NmSettings NetworkManagerClient::connectionSettings(const QString &path, CWError *error) const
{
    const QDBusMessage reply = call(path, kConnectionIface, QStringLiteral("GetSettings"), {});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        if (error)
            *error = errorFrom(QDBusError(reply), QStringLiteral("Reading a saved network"));
        return {};
    }
    return qdbus_cast<NmSettings>(reply.arguments().constFirst().value<QDBusArgument>());
}

NmSettings NetworkManagerClient::connectionSecrets(const QString &path,
                                                   const QString &settingName) const
{
    const QDBusMessage reply =
        call(path, kConnectionIface, QStringLiteral("GetSecrets"), {settingName});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    return qdbus_cast<NmSettings>(reply.arguments().constFirst().value<QDBusArgument>());
}

void NetworkManagerClient::connectionSettings(const QString &path, QObject *context,
                                              std::function<void(const NmSettings &)> done)
{
    callLater(
        path, kConnectionIface, QStringLiteral("GetSettings"), {}, context,
        [done](const QDBusMessage &reply) {
            const bool ok =
                reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty();
            done(ok ? qdbus_cast<NmSettings>(reply.arguments().constFirst().value<QDBusArgument>())
                    : NmSettings());
        });
}

void NetworkManagerClient::updateConnection(const QString &path, const NmSettings &settings,
                                            QObject *context, Done done)
{
    callLater(path, kConnectionIface, QStringLiteral("Update"), {QVariant::fromValue(settings)},
              context, [this, done](const QDBusMessage &reply) {
                  done(reply.type() == QDBusMessage::ReplyMessage
                           ? CWError()
                           : failureOf(reply, QStringLiteral("Saving the network's new key")));
              });
}

void NetworkManagerClient::addAndActivate(const NmSettings &settings, const QString &devicePath,
                                          const QString &specificObject, QObject *context,
                                          Activated done)
{
    callLater(kManagerPath, kManagerIface, QStringLiteral("AddAndActivateConnection"),
              {QVariant::fromValue(settings), QVariant::fromValue(QDBusObjectPath(devicePath)),
               QVariant::fromValue(QDBusObjectPath(specificObject.isEmpty() ? QStringLiteral("/")
                                                                            : specificObject))},
              context, [this, done](const QDBusMessage &reply) {
                  // (connection, active connection)
                  if (reply.type() == QDBusMessage::ReplyMessage && reply.arguments().size() >= 2)
                      done(reply.arguments().at(1).value<QDBusObjectPath>().path(), {});
                  else
                      done({}, failureOf(reply, QStringLiteral("Joining the network")));
              });
}

void NetworkManagerClient::activate(const QString &connectionPath, const QString &devicePath,
                                    const QString &specificObject, QObject *context, Activated done)
{
    callLater(kManagerPath, kManagerIface, QStringLiteral("ActivateConnection"),
              {QVariant::fromValue(QDBusObjectPath(connectionPath)),
               QVariant::fromValue(QDBusObjectPath(devicePath)),
               QVariant::fromValue(QDBusObjectPath(specificObject.isEmpty() ? QStringLiteral("/")
                                                                            : specificObject))},
              context, [this, done](const QDBusMessage &reply) {
                  if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty())
                      done(reply.arguments().constFirst().value<QDBusObjectPath>().path(), {});
                  else
                      done({}, failureOf(reply, QStringLiteral("Joining the network")));
              });
}

void NetworkManagerClient::deactivate(const QString &activePath)
{
    callLater(kManagerPath, kManagerIface, QStringLiteral("DeactivateConnection"),
              {QVariant::fromValue(QDBusObjectPath(activePath))}, this,
              [](const QDBusMessage &reply) {
                  if (reply.type() != QDBusMessage::ReplyMessage)
                      qCInfo(lcNm) << "deactivation failed:" << reply.errorMessage();
              });
}

void NetworkManagerClient::activeConnectionState(const QString &activePath, QObject *context,
                                                 std::function<void(std::optional<uint>)> done)
{
    callLater(activePath, kPropsIface, QStringLiteral("Get"),
              {kActiveIface, QStringLiteral("State")}, context, [done](const QDBusMessage &reply) {
                  if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
                      done(std::nullopt);
                  else
                      done(reply.arguments().constFirst().value<QDBusVariant>().variant().toUInt());
              });
}

QString NetworkManagerClient::interfaceOfDevice(const QString &devicePath)
{
    auto it = m_deviceNames.constFind(devicePath);
    if (it != m_deviceNames.constEnd())
        return *it;
    const auto name = property(devicePath, kDeviceIface, QStringLiteral("Interface"));
    if (!name)
        return {};
    m_deviceNames.insert(devicePath, name->toString());
    return name->toString();
}

void NetworkManagerClient::onDeviceStateChanged(const QDBusMessage &message)
{
    const QVariantList args = message.arguments();
    if (args.size() < 3)
        return;
    m_deviceStates.insert(message.path(), args.at(0).toUInt());
    const QString name = interfaceOfDevice(message.path());
    if (!name.isEmpty())
        Q_EMIT deviceStateChanged(name, args.at(0).toUInt(), args.at(1).toUInt(),
                                  args.at(2).toUInt());
}

void NetworkManagerClient::onActiveStateChanged(const QDBusMessage &message)
{
    const QVariantList args = message.arguments();
    if (args.size() < 2)
        return;
    Q_EMIT activeConnectionStateChanged(message.path(), args.at(0).toUInt(), args.at(1).toUInt());
}

void NetworkManagerClient::onSettingsChanged(const QDBusMessage &)
{
    Q_EMIT savedConnectionsChanged();
}

void NetworkManagerClient::onManagerPropertiesChanged(const QDBusMessage &message)
{
    for (const QVariant &arg : message.arguments()) {
        const QVariantMap changed = qdbus_cast<QVariantMap>(arg);
        if (changed.contains(QStringLiteral("WirelessEnabled")) ||
            changed.contains(QStringLiteral("WirelessHardwareEnabled"))) {
            m_wirelessEnabled.reset();
            Q_EMIT wirelessEnabledChanged();
            return;
        }
    }
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/linux/PolkitClient.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QFile>
#include <QLoggingCategory>
#include <QVariantMap>

#include <unistd.h>

namespace {
Q_LOGGING_CATEGORY(lcPolkit, "corvane.polkit")

// An authentication dialog waits for a person; without one polkit answers at once.
constexpr int kInteractiveTimeoutMs = 120000;
constexpr int kQuietTimeoutMs = 5000;
constexpr uint kAllowUserInteraction = 1;
} // namespace

PolkitClient::PolkitClient(const QDBusConnection &bus, const QString &service)
    : m_bus(bus), m_service(service)
{
    qDBusRegisterMetaType<QMap<QString, QString>>(); // the "details" of a request (a{ss})
}

quint64 PolkitClient::processStartTime(const QByteArray &procStat)
{
    // The command name (field 2) is in parentheses and may itself hold spaces or ')':
    // count fields from the last ')'.
    const qsizetype close = procStat.lastIndexOf(')');
    if (close < 0)
        return 0;
    const QList<QByteArray> fields = procStat.mid(close + 1).simplified().split(' ');
    // After ')' come field 3 (state) onwards, so field 22 is at index 19.
    if (fields.size() < 20)
        return 0;
    bool ok = false;
    const quint64 value = fields.at(19).toULongLong(&ok);
    return ok ? value : 0;
}

bool PolkitClient::checkAuthorization(const QString &action, bool allowInteraction,
                                      CWError *error) const
{
    CWError::reset(error);
    QFile stat(QStringLiteral("/proc/self/stat"));
    const QByteArray statText = stat.open(QIODevice::ReadOnly) ? stat.readAll() : QByteArray();

    QDBusArgument subject;
    subject.beginStructure();
    subject << QStringLiteral("unix-process");
    subject << QVariantMap{
        {QStringLiteral("pid"), QVariant::fromValue(quint32(getpid()))},
        {QStringLiteral("start-time"), QVariant::fromValue(quint64(processStartTime(statText)))}};
    subject.endStructure();

    QDBusMessage msg = QDBusMessage::createMethodCall(
        m_service, QStringLiteral("/org/freedesktop/PolicyKit1/Authority"),
        QStringLiteral("org.freedesktop.PolicyKit1.Authority"),
        QStringLiteral("CheckAuthorization"));
    msg.setArguments(
        {QVariant::fromValue(subject), action, QVariant::fromValue(QMap<QString, QString>()),
         QVariant::fromValue(allowInteraction ? kAllowUserInteraction : 0u), QString()});
    const QDBusMessage reply =
        m_bus.call(msg, allowInteraction ? QDBus::BlockWithGui : QDBus::Block,
                   allowInteraction ? kInteractiveTimeoutMs : kQuietTimeoutMs);

    if (reply.type() != QDBusMessage::ReplyMessage) {
        const QDBusError dbusError(reply);
        const bool noOwner = dbusError.name().endsWith(u".NameHasNoOwner");
        switch (noOwner ? QDBusError::ServiceUnknown : dbusError.type()) {
        case QDBusError::ServiceUnknown:
        case QDBusError::NoServer:
        case QDBusError::Disconnected:
            // No polkit on this system: NetworkManager then decides by its own rules.
            qCDebug(lcPolkit) << "no polkit; leaving the decision to NetworkManager";
            return true;
        case QDBusError::NoReply:
        case QDBusError::Timeout:
        case QDBusError::TimedOut:
            CWError::set(error, kCWErrorTimeout,
                         QStringLiteral("Not permitted: the authorization request timed out"));
            return false;
        default:
            CWError::set(error, kCWErrorNotPermitted,
                         QStringLiteral("Not permitted: %1").arg(dbusError.message()));
            return false;
        }
    }

    bool authorized = false;
    bool challenge = false;
    if (!reply.arguments().isEmpty()) {
        const QDBusArgument result = reply.arguments().constFirst().value<QDBusArgument>();
        if (result.currentType() == QDBusArgument::StructureType) {
            QMap<QString, QString> details;
            result.beginStructure();
            result >> authorized >> challenge >> details;
            result.endStructure();
        }
    }
    if (authorized)
        return true;
    if (challenge)
        CWError::set(
            error, kCWErrorNotPermitted,
            QStringLiteral("Not permitted: controlling the network needs an administrator's "
                           "password, and no authentication agent is running"));
    else
        CWError::set(error, kCWErrorNotPermitted,
                     QStringLiteral("Not permitted: the system's policy does not let this user "
                                    "control the network"));
    return false;
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/linux/PolkitClient.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QFile>
#include <QLoggingCategory>
#include <QVariantMap>

#include <unistd.h>

namespace {
Q_LOGGING_CATEGORY(lcPolkit, "corvane.polkit")

// Without an authentication dialog polkit answers at once.
constexpr int kQuietTimeoutMs = 5000;
constexpr uint kAllowUserInteraction = 1;
} // namespace

PolkitClient::PolkitClient(const QDBusConnection &bus, const QString &service, QObject *parent)
    : QObject(parent), m_bus(bus), m_service(service)
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

QDBusMessage PolkitClient::request(const QString &action, bool allowInteraction) const
{
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
    return msg;
}

bool PolkitClient::checkAuthorization(const QString &action, CWError *error) const
{
    const CWError result =
        outcome(m_bus.call(request(action, false), QDBus::Block, kQuietTimeoutMs));
    if (error)
        *error = result;
    return result.isNull();
}

void PolkitClient::checkAuthorization(const QString &action, bool allowInteraction, Completion done)
{
    const int timeout = allowInteraction ? m_interactiveTimeoutMs : kQuietTimeoutMs;
    auto *watcher = new QDBusPendingCallWatcher(
        m_bus.asyncCall(request(action, allowInteraction), timeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [done](QDBusPendingCallWatcher *w) {
        w->deleteLater();
        done(outcome(w->reply()));
    });
}

CWError PolkitClient::outcome(const QDBusMessage &reply)
{
    if (reply.type() != QDBusMessage::ReplyMessage) {
        const QDBusError dbusError(reply);
        const bool noOwner = dbusError.name().endsWith(u".NameHasNoOwner");
        switch (noOwner ? QDBusError::ServiceUnknown : dbusError.type()) {
        case QDBusError::ServiceUnknown:
        case QDBusError::NoServer:
        case QDBusError::Disconnected:
            // No polkit on this system: NetworkManager then decides by its own rules.
            qCDebug(lcPolkit) << "no polkit; leaving the decision to NetworkManager";
            return {};
        case QDBusError::NoReply:
        case QDBusError::Timeout:
        case QDBusError::TimedOut:
            return CWError(kCWErrorTimeout,
                           QStringLiteral("Not permitted: the authorization request timed out"));
        default:
            return CWError(kCWErrorNotPermitted,
                           QStringLiteral("Not permitted: %1").arg(dbusError.message()));
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
        return {};
    if (challenge)
        return CWError(kCWErrorNotPermitted,
                       QStringLiteral("Not permitted: controlling the network needs an "
                                      "administrator's password, and no authentication agent "
                                      "is running"));
    return CWError(kCWErrorNotPermitted,
                   QStringLiteral("Not permitted: the system's policy does not let this user "
                                  "control the network"));
}

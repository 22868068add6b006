// SPDX-License-Identifier: GPL-3.0-or-later
#include "sensor/SensorTcpServer.h"

#include <QTcpSocket>
#include <QTimer>

namespace {

// Watches one connection. It connects to readyRead before the HTTP server does, so each
// time it runs the bytes still unread are the ones that just arrived.
class RequestGuard final : public QObject
{
public:
    RequestGuard(QTcpSocket *socket, const SensorTcpServer::Limits &limits)
        : QObject(socket), m_socket(socket), m_limits(limits)
    {
        m_timer.setSingleShot(true);
        m_timer.setInterval(limits.requestTimeoutMs);
        QObject::connect(&m_timer, &QTimer::timeout, this, &RequestGuard::timedOut);
        QObject::connect(socket, &QTcpSocket::readyRead, this, &RequestGuard::arrived);
        m_timer.start();
    }

    void answered()
    {
        m_received = 0;
        m_timer.start();
    }

private:
    void arrived()
    {
        m_received += m_socket->bytesAvailable();
        if (m_received > m_limits.maxRequestBytes)
            refuse("431 Request Header Fields Too Large");
    }

    void timedOut()
    {
        if (m_received > 0) {
            refuse("408 Request Timeout");
        } else {
            m_socket->abort();
            m_socket->deleteLater();
        }
    }

    void refuse(const char *status)
    {
        // The request is cut off here, so the HTTP server will never answer it.
        m_timer.stop();
        QObject::disconnect(m_socket, nullptr, this, nullptr);
        m_socket->write(QByteArray("HTTP/1.1 ") + status +
                        "\r\nConnection: close\r\nContent-Length: 0\r\n\r\n");
        m_socket->disconnectFromHost();
        // A peer that stops reading must not hold the socket open. The HTTP server may
        // have let go of the socket after a request it could not parse, so it goes here.
        QObject::connect(m_socket, &QTcpSocket::disconnected, m_socket, &QObject::deleteLater);
        QTimer::singleShot(1000, m_socket, [s = m_socket] {
            s->abort();
            s->deleteLater();
        });
    }

    QTcpSocket *m_socket;
    SensorTcpServer::Limits m_limits;
    QTimer m_timer;
    qint64 m_received = 0;
};

constexpr const char *kGuardProperty = "corvaneRequestGuard";

} // namespace

SensorTcpServer::SensorTcpServer(Limits limits, QObject *parent)
    : QTcpServer(parent), m_limits(limits)
{
}

void SensorTcpServer::requestAnswered(QTcpSocket *socket)
{
    // The guard has no meta-object of its own, so it is found through a property set by
    // this file alone rather than by a cast.
    if (!socket)
        return;
    if (auto *guard =
            static_cast<RequestGuard *>(socket->property(kGuardProperty).value<QObject *>()))
        guard->answered();
}

void SensorTcpServer::incomingConnection(qintptr descriptor)
{
    auto *socket = new QTcpSocket(this);
    if (!socket->setSocketDescriptor(descriptor)) {
        delete socket;
        return;
    }
    if (m_open >= m_limits.maxConnections) {
        socket->write("HTTP/1.1 503 Service Unavailable\r\nConnection: close\r\n"
                      "Content-Length: 0\r\n\r\n");
        socket->disconnectFromHost();
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        QTimer::singleShot(1000, socket, &QTcpSocket::abort);
        return;
    }
    ++m_open;
    connect(socket, &QObject::destroyed, this, [this] { --m_open; });
    socket->setProperty(kGuardProperty,
                        QVariant::fromValue<QObject *>(new RequestGuard(socket, m_limits)));
    // QTcpServer announces it with newConnection once this returns.
    addPendingConnection(socket);
}

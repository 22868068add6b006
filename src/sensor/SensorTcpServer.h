// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTcpServer>

class QTcpSocket;

// The listening socket of the sensor's HTTP server, with the limits a server open to a
// network needs: a request that grows past maxRequestBytes or is not complete within
// requestTimeoutMs is answered with 431 or 408 and its connection closed; past
// maxConnections new connections get 503. An idle kept-alive connection is closed
// silently after the same timeout.
class SensorTcpServer final : public QTcpServer
{
    Q_OBJECT
public:
    struct Limits
    {
        qint64 maxRequestBytes = 16 * 1024;
        int requestTimeoutMs = 10'000;
        int maxConnections = 512;
    };

    explicit SensorTcpServer(Limits limits, QObject *parent = nullptr);
    SensorTcpServer(QObject *parent = nullptr) : SensorTcpServer(Limits{}, parent) {}

    int openConnections() const { return m_open; }
    // A response went out on `socket`: its next request starts afresh.
    static void requestAnswered(QTcpSocket *socket);

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    Limits m_limits;
    int m_open = 0;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "sensor/SensorTcpServer.h"

#include <QAbstractHttpServer>
#include <QByteArray>
#include <QElapsedTimer>
#include <QHostAddress>
#include <QHttpServerResponder>

class SensorSource;

// The sensor's HTTP server: /metrics for Prometheus, /api/* as JSON and the live page at /.
// It only reads: no request changes the radio, the settings or the records. Each document
// is built at most once per cycle and served from memory; the ones clients read are
// rebuilt right after each cycle, so that requests only copy bytes and many clients cost
// the update cycle little.
class SensorServer final : public QAbstractHttpServer
{
    Q_OBJECT
public:
    explicit SensorServer(const SensorSource *source, QObject *parent = nullptr,
                          SensorTcpServer::Limits limits = {});
    ~SensorServer() override;

    // Listens on `address`:`port` (0: any free port). Returns false with the reason.
    bool start(const QHostAddress &address, quint16 port, QString *errorText);
    quint16 port() const;

    // The engine finished a cycle: documents are built afresh on their next request.
    void noteCycleFinished();
    quint64 cycle() const { return m_cycle; }

    // "Not loopback": the survey would be visible to the network.
    static bool isLocalAddress(const QHostAddress &address);

protected:
    bool handleRequest(const QHttpServerRequest &request, QTcpSocket *socket) override;
    void missingHandler(const QHttpServerRequest &request, QTcpSocket *socket) override;

private:
    struct CachedDocument
    {
        QByteArray (SensorServer::*build)() const = nullptr;
        QByteArray body;
        quint64 cycle = 0;
        QElapsedTimer age;       // since built
        QElapsedTimer requested; // since last asked for
    };
    static void
    respond(QTcpSocket *socket, const QHttpServerRequest &request, const QByteArray &body,
            const QByteArray &type,
            QHttpServerResponder::StatusCode status = QHttpServerResponder::StatusCode::Ok);
    const QByteArray &cached(CachedDocument &document);
    void rebuild(CachedDocument &document);
    void prebuild();
    QByteArray buildMetrics() const;
    QByteArray buildNetworks() const;
    QByteArray buildInterface() const;
    QByteArray buildStatus() const;

    const SensorSource *m_source;
    SensorTcpServer *m_tcpServer;
    quint64 m_cycle = 0;
    CachedDocument m_metrics, m_networks, m_interface, m_status;
};

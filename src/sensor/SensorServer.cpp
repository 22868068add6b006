// SPDX-License-Identifier: GPL-3.0-or-later
#include "sensor/SensorServer.h"

#include "sensor/MetricsExposition.h"
#include "sensor/SensorDocuments.h"
#include "util/Clock.h"

#include <QFile>
#include <QHttpServerRequest>
#include <QHttpServerResponder>
#include <QTcpSocket>
#include <QTimer>
#include <QUrlQuery>

namespace {

using Status = QHttpServerResponder::StatusCode;

// Without cycles (a stalled radio) documents still follow the interface now and then.
constexpr qint64 kMaxDocumentAgeMs = 5000;
// Documents someone asked for in this time are rebuilt right after each cycle.
constexpr qint64 kKeepWarmMs = 60'000;

const QByteArray kJson = QByteArrayLiteral("application/json");
const QByteArray kMetricsType = QByteArrayLiteral("text/plain; version=0.0.4; charset=utf-8");

struct PageFile
{
    const char *path;
    const char *resource;
    const char *type;
};

// The live page and its parts, compiled into the program.
constexpr PageFile kPageFiles[] = {
    {"/", ":/sensor/index.html", "text/html; charset=utf-8"},
    {"/index.html", ":/sensor/index.html", "text/html; charset=utf-8"},
    {"/sensor.js", ":/sensor/sensor.js", "text/javascript; charset=utf-8"},
    {"/sensor.css", ":/sensor/sensor.css", "text/css; charset=utf-8"},
};

} // namespace

void SensorServer::respond(QTcpSocket *socket, const QHttpServerRequest &request,
                           const QByteArray &body, const QByteArray &type,
                           QHttpServerResponder::StatusCode status)
{
    auto responder = makeResponder(request, socket);
    // The page takes nothing from elsewhere; the policy says so to the browser too.
    responder.write(
        body,
        {{"Content-Type", type},
         {"Cache-Control", "no-store"},
         {"X-Content-Type-Options", "nosniff"},
         {"Content-Security-Policy", "default-src 'none'; script-src 'self'; style-src 'self'; "
                                     "connect-src 'self'; img-src 'self'; base-uri 'none'; "
                                     "form-action 'none'; frame-ancestors 'none'"}},
        status);
    SensorTcpServer::requestAnswered(socket);
}

SensorServer::SensorServer(const SensorSource *source, QObject *parent,
                           SensorTcpServer::Limits limits)
    : QAbstractHttpServer(parent), m_source(source), m_tcpServer(new SensorTcpServer(limits, this))
{
    m_metrics.build = &SensorServer::buildMetrics;
    m_networks.build = &SensorServer::buildNetworks;
    m_interface.build = &SensorServer::buildInterface;
    m_status.build = &SensorServer::buildStatus;
}

SensorServer::~SensorServer() = default;

bool SensorServer::start(const QHostAddress &address, quint16 port, QString *errorText)
{
    if (!m_tcpServer->listen(address, port)) {
        if (errorText)
            *errorText = m_tcpServer->errorString();
        return false;
    }
    bind(m_tcpServer);
    return true;
}

quint16 SensorServer::port() const
{
    return m_tcpServer->serverPort();
}

void SensorServer::noteCycleFinished()
{
    ++m_cycle;
    // Rebuild what clients read once the cycle has returned, so that the requests of the
    // next interval are answered from memory and none of them holds up a cycle.
    QTimer::singleShot(0, this, &SensorServer::prebuild);
}

void SensorServer::prebuild()
{
    for (CachedDocument *document : {&m_metrics, &m_networks, &m_interface, &m_status}) {
        if (document->requested.isValid() && document->requested.elapsed() < kKeepWarmMs &&
            document->cycle != m_cycle)
            rebuild(*document);
    }
}

void SensorServer::rebuild(CachedDocument &document)
{
    document.body = (this->*document.build)();
    document.cycle = m_cycle;
    document.age.start();
}

bool SensorServer::isLocalAddress(const QHostAddress &address)
{
    return address.isLoopback();
}

const QByteArray &SensorServer::cached(CachedDocument &document)
{
    document.requested.start();
    if (!document.age.isValid() || document.cycle != m_cycle ||
        document.age.elapsed() > kMaxDocumentAgeMs)
        rebuild(document);
    return document.body;
}

QByteArray SensorServer::buildMetrics() const
{
    return MetricsExposition::render(*m_source, Clock::now());
}

QByteArray SensorServer::buildNetworks() const
{
    return SensorDocuments::networks(*m_source, m_cycle, Clock::now());
}

QByteArray SensorServer::buildInterface() const
{
    return SensorDocuments::interface(*m_source, Clock::now());
}

QByteArray SensorServer::buildStatus() const
{
    return SensorDocuments::status(*m_source, m_cycle, Clock::now());
}

bool SensorServer::handleRequest(const QHttpServerRequest &request, QTcpSocket *socket)
{
    const QString path = request.url().path();
    if (request.method() != QHttpServerRequest::Method::Get) {
        auto responder = makeResponder(request, socket);
        responder.write(SensorDocuments::error(QStringLiteral("only GET is served here")),
                        {{"Content-Type", kJson}, {"Allow", "GET"}}, Status::MethodNotAllowed);
        SensorTcpServer::requestAnswered(socket);
        return true;
    }
    if (path == u"/metrics") {
        respond(socket, request, cached(m_metrics), kMetricsType);
    } else if (path == u"/api/networks") {
        respond(socket, request, cached(m_networks), kJson);
    } else if (path == u"/api/interface") {
        respond(socket, request, cached(m_interface), kJson);
    } else if (path == u"/api/status") {
        respond(socket, request, cached(m_status), kJson);
    } else if (path == u"/api/history") {
        const QUrlQuery query(request.url());
        QByteArray body;
        if (!query.hasQueryItem(QStringLiteral("bssid"))) {
            respond(socket, request,
                    SensorDocuments::error(QStringLiteral("add ?bssid=aa:bb:cc:dd:ee:ff")), kJson,
                    Status::BadRequest);
            return true;
        }
        const QString bssid = query.queryItemValue(QStringLiteral("bssid"), QUrl::FullyDecoded);
        switch (SensorDocuments::history(*m_source, bssid, &body)) {
        case SensorDocuments::HistoryResult::Ok:
            respond(socket, request, body, kJson);
            break;
        case SensorDocuments::HistoryResult::MalformedBssid:
            respond(socket, request, body, kJson, Status::BadRequest);
            break;
        case SensorDocuments::HistoryResult::UnknownBssid:
            respond(socket, request, body, kJson, Status::NotFound);
            break;
        }
    } else {
        for (const PageFile &file : kPageFiles) {
            if (path == QLatin1String(file.path)) {
                QFile resource(QString::fromLatin1(file.resource));
                if (resource.open(QIODevice::ReadOnly)) {
                    respond(socket, request, resource.readAll(), file.type);
                    return true;
                }
            }
        }
        respond(socket, request, SensorDocuments::error(QStringLiteral("no such page: ") + path),
                kJson, Status::NotFound);
    }
    return true;
}

void SensorServer::missingHandler(const QHttpServerRequest &request, QTcpSocket *socket)
{
    respond(socket, request, SensorDocuments::error(QStringLiteral("no such page")), kJson,
            Status::NotFound);
}

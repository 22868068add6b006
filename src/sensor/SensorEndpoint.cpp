// SPDX-License-Identifier: GPL-3.0-or-later
#include "sensor/SensorEndpoint.h"

#include "model/SurveyEngine.h"

#include <cstdio>

SensorEndpoint::SensorEndpoint(SurveyEngine *engine) : m_source(engine), m_server(&m_source)
{
    connect(engine, &SurveyEngine::cycleFinished, &m_server, &SensorServer::noteCycleFinished);
}

std::unique_ptr<SensorEndpoint> SensorEndpoint::start(SurveyEngine *engine, const QString &address,
                                                      int port, QString *errorText)
{
    std::unique_ptr<SensorEndpoint> endpoint(new SensorEndpoint(engine));
    const QHostAddress host(address);
    QString reason;
    if (!endpoint->m_server.start(host, quint16(port), &reason)) {
        *errorText =
            QStringLiteral("Cannot serve on %1 port %2: %3").arg(address).arg(port).arg(reason);
        return nullptr;
    }
    const QString shown = host.protocol() == QAbstractSocket::IPv6Protocol
                              ? QStringLiteral("[%1]").arg(host.toString())
                              : host.toString();
    endpoint->m_url = QStringLiteral("http://%1:%2/").arg(shown).arg(endpoint->m_server.port());
    std::fprintf(stderr, "Serving the survey on %s (metrics at %smetrics)\n",
                 qUtf8Printable(endpoint->m_url), qUtf8Printable(endpoint->m_url));
    if (!SensorServer::isLocalAddress(host))
        std::fprintf(stderr,
                     "Warning: the survey is visible on the network: anyone who can reach "
                     "this machine on port %u can read every network it hears.\n",
                     endpoint->m_server.port());
    std::fflush(stderr);
    return endpoint;
}

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "sensor/EngineSensorSource.h"
#include "sensor/SensorServer.h"

#include <QObject>
#include <QString>

#include <memory>

class SurveyEngine;

// What --serve starts: the server over a running survey, told about every finished cycle.
class SensorEndpoint final : public QObject
{
    Q_OBJECT
public:
    // The exit code of a headless run whose server could not listen.
    static constexpr int kListenFailed = 5;

    // Listens on `address`:`port` and says where on standard error; an address other than
    // loopback adds one warning. Null, with the reason in `errorText`, when it cannot.
    static std::unique_ptr<SensorEndpoint> start(SurveyEngine *engine, const QString &address,
                                                 int port, QString *errorText);

    QString url() const { return m_url; }

private:
    explicit SensorEndpoint(SurveyEngine *engine);

    EngineSensorSource m_source;
    SensorServer m_server;
    QString m_url;
};

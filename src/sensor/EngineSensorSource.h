// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "sensor/SensorSource.h"

class SurveyEngine;

// The running survey as the sensor reads it.
class EngineSensorSource final : public SensorSource
{
public:
    explicit EngineSensorSource(const SurveyEngine *engine) : m_engine(engine) {}

    const NetworkList &networks() const override;
    const QList<quint64> &filteredNetworks() const override;
    QString searchText() const override;
    CWInterfaceRef currentInterface() const override;
    SensorStatistics statistics() const override;

private:
    const SurveyEngine *m_engine;
};

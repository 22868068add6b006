// SPDX-License-Identifier: GPL-3.0-or-later
#include "sensor/EngineSensorSource.h"

#include "model/SurveyEngine.h"

const NetworkList &EngineSensorSource::networks() const
{
    return m_engine->networks();
}

const QList<quint64> &EngineSensorSource::filteredNetworks() const
{
    return m_engine->filteredNetworks();
}

QString EngineSensorSource::searchText() const
{
    return m_engine->searchText();
}

CWInterfaceRef EngineSensorSource::currentInterface() const
{
    return m_engine->currentInterface();
}

SensorStatistics EngineSensorSource::statistics() const
{
    const SurveyEngine::Statistics &s = m_engine->statistics();
    return {s.scansTotal, s.scanErrorsTotal, s.lastScanSeconds, s.lastCycleSeconds};
}

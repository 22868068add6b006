// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/NetworkList.h"
#include "wireless/CWInterface.h"

#include <QList>
#include <QString>

// The sensor's own figures: how many scans ran and failed and how long the last ones took.
struct SensorStatistics
{
    quint64 scansTotal = 0;
    quint64 scanErrorsTotal = 0;
    double lastScanSeconds = 0;
    double lastCycleSeconds = 0;
};

// Everything the sensor's outputs are made of, read on the main thread between cycles.
// The program hands it the survey engine; tests hand it a fixed list.
class SensorSource
{
public:
    virtual ~SensorSource() = default;
    // Every record ever seen; the list never shrinks.
    virtual const NetworkList &networks() const = 0;
    // Indices into networks() that the search text lets through, in display order.
    virtual const QList<quint64> &filteredNetworks() const = 0;
    virtual QString searchText() const = 0;
    // May be null when the machine has no usable interface.
    virtual CWInterfaceRef currentInterface() const = 0;
    virtual SensorStatistics statistics() const = 0;
};

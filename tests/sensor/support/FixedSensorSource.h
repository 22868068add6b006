// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "sensor/SensorSource.h"

// A sensor source whose records and figures the test sets by hand.
class FixedSensorSource final : public SensorSource
{
public:
    const NetworkList &networks() const override { return list; }
    const QList<quint64> &filteredNetworks() const override { return filtered; }
    QString searchText() const override { return search; }
    CWInterfaceRef currentInterface() const override { return iface; }
    SensorStatistics statistics() const override { return stats; }

    // Adds a record made from `network` heard at `time`, listed by the search.
    NetworkObjectRef add(const CWNetworkRef &network, const QDateTime &time)
    {
        NetworkObjectRef record = NetworkObject::objectWithCWNetwork(network, time);
        record->setColor(QColor(10, 20, 30));
        filtered.append(static_cast<quint64>(list.count()));
        list.append(record);
        return record;
    }

    NetworkList list;
    QList<quint64> filtered;
    QString search;
    CWInterfaceRef iface;
    SensorStatistics stats;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#include "FixedSensorSource.h"

NetworkObjectRef FixedSensorSource::add(const CWNetworkRef &network, const QDateTime &time)
{
    NetworkObjectRef record = NetworkObject::objectWithCWNetwork(network, time);
    record->setColor(QColor(10, 20, 30));
    filtered.append(static_cast<quint64>(list.count()));
    list.append(record);
    return record;
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/support/FakePlotDelegate.h"

FakePlotDelegate::FakePlotDelegate()
    : interface(std::make_shared<CWInterface>(backend, QStringLiteral("wlan0")))
{
}

NetworkObjectRef FakePlotDelegate::add(const QString &bssid, const std::optional<QString> &name,
                                       double signal, const QDateTime &updated)
{
    NetworkObjectRef network = makeNetwork(bssid, name, signal, int(list.count()));
    network->setLastUpdated(updated);
    list.append(network);
    return network;
}

NetworkObjectRef makeNetwork(const QString &bssid, const std::optional<QString> &name,
                             double signal, int index)
{
    auto network = std::make_shared<NetworkObject>();
    network->setBssid(bssid);
    network->setName(name);
    network->setSignals({LevelSample(float(signal))});
    network->setNoises({LevelSample(0.1f)});
    network->setSNRs({SNRSample(signal * 100.0)});
    network->setChannel(1);
    network->setChannelBand(1);
    network->setColor(QColor::fromHsvF(float(index % 50) / 49.0f, 0.8f, 0.9f));
    return network;
}

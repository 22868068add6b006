// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plot/PlotDelegate.h"
#include "support/FakeBackend.h"
#include "util/Clock.h"

#include <QObject>

// A record with one signal sample `signal` (a level fraction); neighbours' hues differ.
inline NetworkObjectRef makeNetwork(const QString &bssid, const std::optional<QString> &name,
                                    double signal, int index = 0)
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

// The controller as the views see it: records, an interface whose BSSID can be set (nullopt:
// not associated), and the two numbers from the preferences.
struct FakePlotDelegate : PlotDelegate
{
    const NetworkList &networks() const override { return list; }
    CWInterfaceRef currentInterface() const override { return interface; }
    qint64 numberOfDatas() const override { return datas; }
    qint64 numberOfTopNetworks() const override { return top; }
    NetworkObjectRef add(const QString &bssid, const std::optional<QString> &name, double signal,
                         const QDateTime &updated = QDateTime())
    {
        NetworkObjectRef network = makeNetwork(bssid, name, signal, int(list.count()));
        network->setLastUpdated(updated);
        list.append(network);
        return network;
    }

    NetworkList list;
    std::shared_ptr<FakeBackend> backend = std::make_shared<FakeBackend>();
    CWInterfaceRef interface = std::make_shared<CWInterface>(backend, "wlan0");
    qint64 datas = 300;
    qint64 top = 10;
};

// What both plot programs share: the fake controller, a clock that stands still (the clock
// of the whole program).
class PlotFixture : public QObject
{
protected:
    PlotFixture() { Clock::setInstance(&m_clock); }
    ~PlotFixture() override { Clock::setInstance(nullptr); }
    ManualClock m_clock{QDateTime(QDate(2024, 5, 1), QTime(12, 0), Qt::UTC)};
    const QDateTime m_now = m_clock.currentDateTime();
    FakePlotDelegate m_delegate;
};

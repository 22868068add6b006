// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plot/PlotDelegate.h"
#include "support/FakeBackend.h"

#include <QColor>
#include <QDateTime>

#include <memory>
#include <optional>

// The controller as the views see it: a list of records, an interface whose BSSID can be
// set, and the two numbers from the preferences.
class FakePlotDelegate : public PlotDelegate
{
public:
    FakePlotDelegate();

    const NetworkList &networks() const override { return list; }
    CWInterfaceRef currentInterface() const override { return interface; }
    qint64 numberOfDatas() const override { return datas; }
    qint64 numberOfTopNetworks() const override { return top; }

    // Makes the own interface associated with `bssid` (nullopt: not associated).
    void associate(const std::optional<QString> &bssid) { backend->currentBssid = bssid; }

    // A record with one signal sample `signal` (a level fraction), updated at `updated`.
    NetworkObjectRef add(const QString &bssid, const std::optional<QString> &name, double signal,
                         const QDateTime &updated = QDateTime());

    NetworkList list;
    std::shared_ptr<FakeBackend> backend = std::make_shared<FakeBackend>();
    CWInterfaceRef interface;
    qint64 datas = 300;
    qint64 top = 10;
};

// A record for tests; its colour is the hue of `index` so neighbours differ.
NetworkObjectRef makeNetwork(const QString &bssid, const std::optional<QString> &name,
                             double signal, int index = 0);

// SPDX-License-Identifier: GPL-3.0-or-later
// One working cycle of the controller (scan, merge, sort, filter, table reload, plot data,
// interface tab) with many records, the views hidden.
#include "app/AppDelegate.h"
#include "prefs/PreferenceStore.h"
#include "support/FakeBackend.h"
#include "util/Clock.h"
#include "util/StreamAlertPresenter.h"
#include "wireless/WirelessBackend.h"

#include <QSettings>
#include <QTemporaryDir>

#include "BenchApplication.h"
#include "BenchNetwork.h"

#include <benchmark/benchmark.h>

namespace {

// `total` networks: once `everything` is set the next scan reports all of them, every other
// scan the next 200 in turn, `newPerScan` of them never heard before.
struct Rotation
{
    QList<CWNetworkRef> all;
    int total = 0;
    int newPerScan = 0;
    int next = 0;
    bool everything = false;

    QList<CWNetworkRef> scan()
    {
        if (everything) {
            everything = false;
            return all;
        }
        QList<CWNetworkRef> scan;
        const int known = int(all.size());
        for (int k = 0; k < 200 - newPerScan && k < known; ++k)
            scan.append(all.at((next + k) % known));
        next = (next + 200 - newPerScan) % known;
        // New ones get names spread over the whole alphabet of the old ones.
        for (int k = 0; k < newPerScan && all.size() < 0xffffff; ++k) {
            const int i = int(all.size());
            all.append(benchNetwork(i, int(quint32(i) * 2654435761u % quint32(total))));
            scan.append(all.constLast());
        }
        return scan;
    }
};

std::shared_ptr<FakeBackend> rotatingBackend(const std::shared_ptr<Rotation> &rotation)
{
    for (int i = 0; i < rotation->total; ++i)
        rotation->all.append(benchNetwork(i, i * 7919 % rotation->total));
    auto backend = std::make_shared<FakeBackend>();
    backend->currentSsid = *rotation->all.at(0)->ssid();
    backend->currentBssid = rotation->all.at(0)->bssid();
    backend->scanner = [rotation](CWError *) { return rotation->scan(); };
    return backend;
}

// state.range(1) of the 200 networks of each scan are new: the list grows and is sorted
// every cycle, as on a drive through a city.
void BM_UpdateCycle(benchmark::State &state)
{
    ensureApplication();
    QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    auto rotation = std::make_shared<Rotation>();
    rotation->total = int(state.range(0));
    rotation->newPerScan = int(state.range(1));
    auto backend = rotatingBackend(rotation);
    WirelessBackend::setCurrent(backend);
    PreferenceStore preferences;
    StreamAlertPresenter alerts(false);
    AppDelegate::Options options;
    options.alerts = &alerts;
    options.preferences = &preferences;
    options.runStartupProbe = false;
    options.startTimer = false;
    // Two seconds between cycles, as with the default interval: only the networks of the
    // latest scan count as heard for the plot.
    ManualClock clock(QDateTime(QDate(2024, 5, 1), QTime(12, 0), Qt::UTC));
    Clock::setInstance(&clock);
    {
        AppDelegate app(options);
        // Launched on a few networks (the plots then start with a few series, as when a
        // survey grows), then one scan hears them all; the cycles measured merge 200 each.
        app.applicationDidFinishLaunching();
        rotation->everything = true;
        app.performUpdateCycle();
        for (auto _ : state) {
            clock.advance(2000);
            app.performUpdateCycle();
        }
        state.counters["records"] = double(app.networks().size());
    }
    Clock::setInstance(nullptr);
    WirelessBackend::setCurrent(nullptr);
}
BENCHMARK(BM_UpdateCycle)
    ->ArgNames({"records", "new"})
    ->Args({100, 0})
    ->Args({1000, 0})
    ->Args({10000, 0})
    ->Args({100000, 0})
    ->Args({10000, 20})
    ->Args({100000, 20})
    ->Unit(benchmark::kMillisecond);
} // namespace

// SPDX-License-Identifier: GPL-3.0-or-later
// Costs of the simulated radio: loading the built-in scenario, one scan of it, and the
// interface queries one update cycle makes.
#include "util/Clock.h"
#include "wireless/simulated/SimulatedBackend.h"

#include <benchmark/benchmark.h>

namespace {

const QDateTime kT0(QDate(2024, 5, 1), QTime(12, 0, 0), Qt::UTC);
const QString kIf = QStringLiteral("wlp2s0");

void BM_LoadDefaultScenario(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(SimulatedBackend::createDefault(1));
}
BENCHMARK(BM_LoadDefaultScenario);

void BM_ScanDefaultScenario(benchmark::State &state)
{
    ManualClock clock(kT0);
    Clock::setInstance(&clock);
    auto sim = SimulatedBackend::createDefault(1);
    for (auto _ : state) {
        clock.advance(1000);
        benchmark::DoNotOptimize(sim->scanForNetworks(kIf, {}, nullptr));
    }
    Clock::setInstance(nullptr);
}
BENCHMARK(BM_ScanDefaultScenario);

void BM_InterfaceQueries(benchmark::State &state)
{
    ManualClock clock(kT0);
    Clock::setInstance(&clock);
    auto sim = SimulatedBackend::createDefault(1);
    for (auto _ : state) {
        clock.advance(1000);
        benchmark::DoNotOptimize(sim->rssiValue(kIf) + sim->noiseMeasurement(kIf));
        benchmark::DoNotOptimize(sim->transmitRate(kIf));
        benchmark::DoNotOptimize(sim->wlanChannel(kIf));
        benchmark::DoNotOptimize(sim->ssid(kIf));
        benchmark::DoNotOptimize(sim->bssid(kIf));
        benchmark::DoNotOptimize(sim->interfaceState(kIf));
    }
    Clock::setInstance(nullptr);
}
BENCHMARK(BM_InterfaceQueries);

} // namespace

// SPDX-License-Identifier: GPL-3.0-or-later
// Costs of the record update and of merging one scan into a large list of records.
#include "model/NetworkList.h"
#include "util/RandomSource.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

const QDateTime kT0(QDate(2024, 5, 1), QTime(12, 0, 0), Qt::UTC);

CWNetworkRef scanResult(int id, qint64 rssi, bool hidden, int nameNumber)
{
    CWNetwork::Data d;
    d.bssid = QStringLiteral("02:00:00:%1").arg(id, 8, 16, QLatin1Char('0'));
    d.ssidPresent = !hidden;
    if (!hidden)
        d.ssidData = "net-" + QByteArray::number(nameNumber);
    d.rssiValue = rssi;
    d.noiseMeasurement = -92;
    d.wlanChannel = CWChannel(1 + id % 11, 1, 1);
    d.phyModes = 0b11100;
    d.securities = 1u << 4;
    return CWNetwork::create(std::move(d));
}

void BM_UpdateWithFullHistory(benchmark::State &state)
{
    const auto record = NetworkObject::objectWithCWNetwork(scanResult(1, -60, false, 1), kT0);
    for (int i = 0; i < NetworkObject::kHistoryCapacity; ++i)
        record->updateWithCWNetwork(scanResult(1, -60 - i % 20, false, 1), kT0);
    const CWNetworkRef next = scanResult(1, -55, false, 1);
    for (auto _ : state) {
        record->updateWithCWNetwork(next, kT0);
        benchmark::DoNotOptimize(record->avgSNR());
    }
}
BENCHMARK(BM_UpdateWithFullHistory);

// A list of `existing` records (one in five hidden) and a scan of 200 results: 190 known
// networks, whose histories are full, and 10 new ones. Each iteration merges the scan
// into a fresh list holding the same records, so new records are created every time.
void BM_MergeScan(benchmark::State &state)
{
    const int existing = int(state.range(0));
    constexpr int kScanned = 200, kNew = 10;
    SeededRandomSource random(11);

    NetworkList base;
    base.reserve(existing);
    for (int id = 0; id < existing; ++id)
        base.append(NetworkObject::objectWithCWNetwork(scanResult(id, -50 - random.uniform(0, 40),
                                                                  random.uniform(0, 4) == 0,
                                                                  random.uniform(0, existing)),
                                                       kT0));
    std::vector<CWNetworkRef> scan;
    for (int i = 0; i < kScanned - kNew; ++i) {
        const int id = random.uniform(0, existing - 1);
        const NetworkObjectRef record = base.at(id);
        for (int h = 0; h < NetworkObject::kHistoryCapacity; ++h)
            record->updateWithCWNetwork(record->cwNetwork(), kT0);
        scan.push_back(scanResult(id, -70, false, id));
    }
    for (int i = 0; i < kNew; ++i)
        scan.push_back(scanResult(existing + i, -80, false, i));
    base.sortForDisplay(std::nullopt);
    const std::optional<QString> current = base.at(existing / 2)->bssid();

    for (auto _ : state) {
        state.PauseTiming();
        // A fresh list (not a copy sharing its hash with `base`) so no detach is timed.
        NetworkList networks;
        networks.reserve(existing + kNew);
        for (const NetworkObjectRef &record : base)
            networks.append(record);
        state.ResumeTiming();
        for (const CWNetworkRef &result : scan) {
            if (const NetworkObjectRef known = networks.networkWithBssid(result->bssid())) {
                known->updateWithCWNetwork(result, kT0);
            } else {
                const NetworkObjectRef created = NetworkObject::objectWithCWNetwork(result, kT0);
                created->setColor(QColor::fromHsvF(random.uniform(0, 49) / 49.0, 0.8f, 0.8f));
                networks.append(created);
            }
        }
        networks.sortForDisplay(current);
        benchmark::DoNotOptimize(networks.count());
    }
    state.SetItemsProcessed(state.iterations() * kScanned);
}
BENCHMARK(BM_MergeScan)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);

// The sort alone, on a list already in display order (the steady state of every cycle).
void BM_SortForDisplay(benchmark::State &state)
{
    const int existing = int(state.range(0));
    SeededRandomSource random(12);
    NetworkList networks;
    for (int id = 0; id < existing; ++id)
        networks.append(NetworkObject::objectWithCWNetwork(
            scanResult(id, -60, random.uniform(0, 4) == 0, random.uniform(0, existing)), kT0));
    const std::optional<QString> current = networks.at(existing / 3)->bssid();
    for (auto _ : state)
        networks.sortForDisplay(current);
}
BENCHMARK(BM_SortForDisplay)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);

// Lookup through the hash against the plain first-match walk it replaces.
void BM_Lookup(benchmark::State &state)
{
    const int existing = int(state.range(0));
    const bool linear = state.range(1) != 0;
    NetworkList networks;
    for (int id = 0; id < existing; ++id)
        networks.append(NetworkObject::objectWithCWNetwork(scanResult(id, -60, false, id), kT0));
    std::vector<QString> wanted;
    for (int i = 0; i < 200; ++i)
        wanted.push_back(networks.at((i * 7919) % existing)->bssid());
    for (auto _ : state) {
        for (const QString &bssid : wanted) {
            NetworkObjectRef found;
            if (linear) {
                for (const NetworkObjectRef &r : networks) {
                    if (r->bssid() == bssid) {
                        found = r;
                        break;
                    }
                }
            } else {
                found = networks.networkWithBssid(bssid);
            }
            benchmark::DoNotOptimize(found.get());
        }
    }
}
BENCHMARK(BM_Lookup)->Args({10000, 0})->Args({10000, 1})->Unit(benchmark::kMicrosecond);

} // namespace

// SPDX-License-Identifier: GPL-3.0-or-later
// Decoding the elements of a typical beacon (WPA/WPA2 mixed, HT 40 MHz, VHT, HE, WMM,
// country): nanoseconds per frame, and with the mapping to the boundary's answers.
#include "wireless/ie/BssNetworkMapper.h"
#include "wireless/ie/ElementDecoder.h"

#include <benchmark/benchmark.h>

namespace {
QByteArray typicalBeaconElements()
{
    QByteArray hex("000a436166652d4669627265"
                   "0108828b0c129824b048"
                   "030106"
                   "0706465220010d14"
                   "050400010000"
                   "30140100000fac040100000fac040100000fac020c00"
                   "2d1a6e101bffff000000000000000000000000000000000000000000"
                   "3d1606050000000000000000000000000000000000000000"
                   "bf0cb2798333aaff0000aaff0000"
                   "c005012a000000"
                   "ff1623000000000000000000000000000000000000000000"
                   "dd160050f20101000050f20201000050f20201000050f202"
                   "dd180050f2020101800003a4000027a4000042435e0062322f00"
                   "32040c121860");
    return QByteArray::fromHex(hex);
}

void BM_DecodeElements(benchmark::State &state)
{
    const QByteArray elements = typicalBeaconElements();
    for (auto _ : state) {
        BssElements e = ElementDecoder::decode(elements);
        benchmark::DoNotOptimize(e);
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * elements.size());
}
BENCHMARK(BM_DecodeElements);

void BM_DecodeAndMap(benchmark::State &state)
{
    const QByteArray elements = typicalBeaconElements();
    BssObservation o;
    o.bssid = QByteArray::fromHex("02aabbccdd01");
    o.capability = 0x0411;
    o.frequencyMHz = 2437;
    o.signalDbm = -57;
    o.noiseDbm = -92;
    for (auto _ : state) {
        CWNetwork::Data d = BssNetworkMapper::networkData(ElementDecoder::decode(elements), o);
        benchmark::DoNotOptimize(d);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DecodeAndMap);
} // namespace

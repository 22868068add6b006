// SPDX-License-Identifier: GPL-3.0-or-later
// Replaying a synthetic radiotap capture of 100,000 beacons (500 access points, one beacon
// every 2 ms, 2-second scan windows) at full speed: frames read, decoded and served per
// second, and the same with every scan merged into the network records.
#include "model/NetworkList.h"
#include "model/NetworkObject.h"
#include "wireless/replay/ReplayBackend.h"

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <pcap/pcap.h>

namespace {
constexpr int kFrames = 100000;
constexpr int kAccessPoints = 500;

QByteArray beaconPacket(int ap, int seq)
{
    // Radiotap: channel (2437 MHz) and antenna signal.
    QByteArray p = QByteArray::fromHex("00000d0028000000"
                                       "8509a000");
    p.append(char(-40 - (seq + ap) % 50));
    p.append(QByteArray::fromHex("80000000ffffffffffff"));
    QByteArray address = QByteArray::fromHex("020000000000");
    address[4] = char(ap >> 8);
    address[5] = char(ap & 0xFF);
    p.append(address).append(address).append(2, '\0');
    p.append(8, '\0').append(QByteArray::fromHex("64001104"));
    const QByteArray ssid = "bench-" + QByteArray::number(ap);
    p.append('\0').append(char(ssid.size())).append(ssid);
    p.append(QByteArray::fromHex("0108828b0c129824b048 030106 0706465220010d14"
                                 "30140100000fac040100000fac040100000fac020c00"
                                 "2d1a6e101bffff000000000000000000000000000000000000000000"
                                 "3d1606050000000000000000000000000000000000000000"
                                 "dd180050f2020101800003a4000027a4000042435e0062322f00"
                                 "32040c121860"));
    return p;
}

const QString &capturePath()
{
    static QTemporaryDir dir;
    static const QString path = [] {
        const QString file = dir.filePath(QStringLiteral("bench.pcap"));
        pcap_t *dead = pcap_open_dead(DLT_IEEE802_11_RADIO, 65535);
        pcap_dumper_t *dumper = pcap_dump_open(dead, QFile::encodeName(file).constData());
        for (int i = 0; i < kFrames; ++i) {
            const QByteArray packet = beaconPacket(i % kAccessPoints, i / kAccessPoints);
            pcap_pkthdr h{};
            h.ts.tv_sec = 1700000000 + (i * 2) / 1000;
            h.ts.tv_usec = ((i * 2) % 1000) * 1000;
            h.caplen = h.len = bpf_u_int32(packet.size());
            pcap_dump(reinterpret_cast<u_char *>(dumper), &h,
                      reinterpret_cast<const u_char *>(packet.constData()));
        }
        pcap_dump_close(dumper);
        pcap_close(dead);
        return file;
    }();
    return path;
}

void BM_ReplayServe(benchmark::State &state)
{
    const QString path = capturePath();
    qint64 served = 0;
    for (auto _ : state) {
        auto replay = ReplayBackend::open(path, 0, nullptr);
        replay->setScanWindow(2.0);
        const QString name = replay->interfaceNames().value(0);
        while (!replay->finished())
            served += replay->scanForNetworks(name, {}, nullptr).size();
    }
    state.SetItemsProcessed(state.iterations() * kFrames);
    state.counters["networks_served"] = double(served) / double(state.iterations());
}
BENCHMARK(BM_ReplayServe)->Unit(benchmark::kMillisecond);

void BM_ReplayIntoRecords(benchmark::State &state)
{
    const QString path = capturePath();
    qint64 records = 0;
    for (auto _ : state) {
        auto replay = ReplayBackend::open(path, 0, nullptr);
        replay->setScanWindow(2.0);
        const QString name = replay->interfaceNames().value(0);
        NetworkList networks;
        QDateTime time = QDateTime::fromMSecsSinceEpoch(1700000000000);
        while (!replay->finished()) {
            for (const CWNetworkRef &n : replay->scanForNetworks(name, {}, nullptr)) {
                if (const NetworkObjectRef known = networks.networkWithBssid(n->bssid()))
                    known->updateWithCWNetwork(n, time);
                else
                    networks.append(NetworkObject::objectWithCWNetwork(n, time));
            }
            time = time.addSecs(2);
        }
        records = networks.count();
    }
    state.SetItemsProcessed(state.iterations() * kFrames);
    state.counters["records"] = double(records);
}
BENCHMARK(BM_ReplayIntoRecords)->Unit(benchmark::kMillisecond);
} // namespace

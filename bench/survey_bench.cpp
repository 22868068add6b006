// SPDX-License-Identifier: GPL-3.0-or-later
// Large surveys: a synthetic city capture of N networks (three beacons each over 600 s,
// tests/tools/CityCapture) replayed scan window by scan window (2 s) through the survey
// engine, with the CPU time of one working cycle and the memory one record costs.
//   build/release/bench/bench_survey --benchmark_filter=Replay/100000
#include "CityCapture.h"
#include "model/SurveyEngine.h"
#include "prefs/PreferenceStore.h"
#include "util/RandomSource.h"
#include "util/StreamAlertPresenter.h"
#include "wireless/replay/ReplayBackend.h"

#include <QSettings>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <ctime>
#include <map>
#include <unistd.h>

namespace {

const QDateTime kT0(QDate(2024, 5, 1), QTime(12, 0, 0), Qt::UTC);

double residentBytes()
{
    long pages = 0, resident = 0;
    if (FILE *f = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2)
            resident = 0;
        std::fclose(f);
    }
    return double(resident) * double(sysconf(_SC_PAGESIZE));
}

double cpuSeconds()
{
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

const QString &capturePath(int accessPoints)
{
    static QTemporaryDir dir;
    static std::map<int, QString> paths;
    auto found = paths.find(accessPoints);
    if (found == paths.end()) {
        CityCapture capture;
        capture.accessPoints = accessPoints;
        const QString path = dir.filePath(QStringLiteral("city-%1.pcap").arg(accessPoints));
        QString error;
        if (!capture.write(path, &error))
            qFatal("%s", qPrintable(error));
        found = paths.emplace(accessPoints, path).first;
    }
    return found->second;
}

// The whole capture, back to back, through the engine the window and the headless run use
// (authorize, scan, merge, sort, filter): CPU time per working cycle, decoding the window
// included, and resident memory per record at the end.
void BM_Replay(benchmark::State &state)
{
    const int accessPoints = int(state.range(0));
    const QString path = capturePath(accessPoints);
    for (auto _ : state) {
        const double rssBefore = residentBytes();
        auto replay = ReplayBackend::open(path, 0, nullptr);
        if (!replay) {
            state.SkipWithError("the capture cannot be replayed");
            return;
        }
        replay->setScanWindow(2.0);
        WirelessBackend::setCurrent(replay);
        QTemporaryDir settingsDir;
        QSettings settings(settingsDir.filePath(QStringLiteral("bench.conf")),
                           QSettings::IniFormat);
        PreferenceStore preferences(&settings);
        StreamAlertPresenter alerts(false);
        SeededRandomSource random(7);
        RandomSource::setInstance(&random);
        qsizetype records = 0;
        int cycles = 0;
        double cpu = 0.0;
        {
            SurveyEngine engine(&preferences, &alerts);
            engine.setCurrentInterface(
                std::make_shared<CWInterface>(replay, replay->interfaceNames().value(0)));
            const double cpuBefore = cpuSeconds();
            while (!replay->finished() && engine.performUpdateCycle())
                ++cycles;
            cpu = cpuSeconds() - cpuBefore;
            records = engine.networks().count();
            state.counters["bytes_per_record"] =
                (residentBytes() - rssBefore) / double(std::max<qsizetype>(1, records));
        }
        RandomSource::setInstance(nullptr);
        WirelessBackend::setCurrent(nullptr);
        state.counters["records"] = double(records);
        state.counters["cycles"] = cycles;
        state.counters["cpu_ms_per_cycle"] = cpu * 1e3 / std::max(1, cycles);
    }
}
BENCHMARK(BM_Replay)->Arg(1000)->Arg(10000)->Arg(100000)->Iterations(1)->Unit(benchmark::kSecond);

// What one record with full histories costs, icon included: N records made from scan
// results like the capture's, each updated 301 times, as resident memory per record.
void BM_RecordMemory(benchmark::State &state)
{
    const int count = int(state.range(0));
    for (auto _ : state) {
        const double rssBefore = residentBytes();
        NetworkList networks;
        networks.reserve(count);
        for (int i = 0; i < count; ++i) {
            CWNetwork::Data d;
            d.bssid = QStringLiteral("02:00:%1").arg(i, 8, 16, QLatin1Char('0'));
            d.ssidPresent = i % 10 != 9;
            d.ssidData = "city-net-" + QByteArray::number(i);
            d.rssiValue = -40 - i % 50;
            d.noiseMeasurement = -92;
            d.wlanChannel = CWChannel(1 + i % 11, kCWChannelBand2GHz, kCWChannelWidth20MHz);
            d.phyModes = (1u << kCWPHYMode11g) | (1u << kCWPHYMode11n);
            d.securities = 1u << (i % 2 ? kCWSecurityWPA2Personal : kCWSecurityNone);
            const CWNetworkRef result = CWNetwork::create(std::move(d));
            const NetworkObjectRef record = NetworkObject::objectWithCWNetwork(result, kT0);
            record->setColor(QColor::fromHsvF(float((i % 50) / 49.0), 0.8f, 0.8f));
            for (int k = 1; k < NetworkObject::kHistoryCapacity; ++k)
                record->updateWithCWNetwork(result, kT0);
            benchmark::DoNotOptimize(record->icon().constBits());
            networks.append(record);
        }
        state.counters["bytes_per_record"] = (residentBytes() - rssBefore) / count;
        state.counters["history_entries"] = networks.at(count - 1)->signals().size();
    }
}
BENCHMARK(BM_RecordMemory)->Arg(1000)->Arg(10000)->Arg(100000)->Iterations(1);

} // namespace

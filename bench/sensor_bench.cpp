// SPDX-License-Identifier: GPL-3.0-or-later
// Cost of the sensor's two big documents for a survey of many networks with full
// histories: /metrics and /api/networks are built once per cycle, on the first request.
#include "sensor/MetricsExposition.h"
#include "sensor/SensorDocuments.h"
#include "sensor/SensorServer.h"
#include "sensor/SensorSource.h"
#include "util/Clock.h"

#include <QCoreApplication>
#include <QTcpSocket>

#include <benchmark/benchmark.h>

namespace {

const QDateTime kT0(QDate(2024, 5, 1), QTime(12, 0, 0), Qt::UTC);

class BenchSource final : public SensorSource
{
public:
    explicit BenchSource(int count)
    {
        for (int id = 0; id < count; ++id) {
            CWNetwork::Data d;
            d.bssid = QStringLiteral("02:00:00:%1:%2:%3")
                          .arg(id >> 16 & 0xff, 2, 16, QLatin1Char('0'))
                          .arg(id >> 8 & 0xff, 2, 16, QLatin1Char('0'))
                          .arg(id & 0xff, 2, 16, QLatin1Char('0'));
            // Names that need escaping, as hostile ones do.
            d.ssidData = "net \"" + QByteArray::number(id) + "\"\\\n";
            d.rssiValue = -40 - id % 50;
            d.noiseMeasurement = -92;
            d.wlanChannel = CWChannel(1 + id % 11, 1, 1);
            d.phyModes = 0b11100;
            d.securities = 1u << 4;
            NetworkObjectRef record = NetworkObject::objectWithCWNetwork(CWNetwork::create(d), kT0);
            // Readings that wander, so that every network has averages of its own.
            for (int i = 0; i < NetworkObject::kHistoryCapacity; ++i) {
                d.rssiValue = -40 - (id + i * 7) % 50;
                d.noiseMeasurement = -90 - (id + i) % 6;
                record->updateWithCWNetwork(CWNetwork::create(d), kT0);
            }
            record->setComment(QStringLiteral("room %1").arg(id));
            m_list.append(record);
            m_filtered.append(static_cast<quint64>(id));
        }
    }
    const NetworkList &networks() const override { return m_list; }
    const QList<quint64> &filteredNetworks() const override { return m_filtered; }
    QString searchText() const override { return {}; }
    CWInterfaceRef currentInterface() const override { return nullptr; }
    SensorStatistics statistics() const override { return {100, 1, 0.2, 0.25}; }

private:
    NetworkList m_list;
    QList<quint64> m_filtered;
};

void BM_Metrics(benchmark::State &state)
{
    const BenchSource source(int(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(MetricsExposition::render(source, kT0));
}
BENCHMARK(BM_Metrics)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

void BM_NetworksDocument(benchmark::State &state)
{
    const BenchSource source(int(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(SensorDocuments::networks(source, 1, kT0));
}
BENCHMARK(BM_NetworksDocument)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

void BM_History(benchmark::State &state)
{
    const BenchSource source(1000);
    QByteArray body;
    for (auto _ : state)
        benchmark::DoNotOptimize(SensorDocuments::history(source, "02:00:00:00:01:f3", &body));
}
BENCHMARK(BM_History)->Unit(benchmark::kMicrosecond);

// A whole scrape of /metrics over loopback once the cycle's document is built: what a
// request costs the thread that runs the cycle. Client and server share this thread, so
// the figure is an upper bound of the server's part.
void BM_ScrapeBuiltMetrics(benchmark::State &state)
{
    static int argc = 1;
    static char name[] = "bench_sensor";
    static char *argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    const BenchSource source(int(state.range(0)));
    SensorServer server(&source);
    QString error;
    if (!server.start(QHostAddress::LocalHost, 0, &error)) {
        state.SkipWithError(qPrintable(error));
        return;
    }
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, server.port());
    client.waitForConnected(2000);
    const QByteArray request = "GET /metrics HTTP/1.1\r\nHost: bench\r\n\r\n";
    auto scrape = [&] {
        client.write(request);
        QByteArray reply;
        qsizetype expected = -1;
        while (expected < 0 || reply.size() < expected) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            reply += client.readAll();
            const qsizetype head = reply.indexOf("\r\n\r\n");
            const qsizetype at = reply.indexOf("Content-Length: ");
            if (expected < 0 && head > 0 && at > 0)
                expected =
                    head + 4 + reply.mid(at + 16, reply.indexOf("\r\n", at) - at - 16).toLongLong();
        }
        return reply.size();
    };
    scrape(); // builds the document
    for (auto _ : state)
        benchmark::DoNotOptimize(scrape());
}
BENCHMARK(BM_ScrapeBuiltMetrics)->Arg(1000)->Unit(benchmark::kMicrosecond);

} // namespace

// SPDX-License-Identifier: GPL-3.0-or-later
// Paint times of the network map, the two channel views and the all-networks plot at
// 1280 x 800, and the plot work of one update cycle (re-choosing the series and feeding
// every record's history). The budgets, in CPU time: the map and both channel views under
// 16 ms at 1,000 networks and under 100 ms at 100,000; one update plus paint of the
// all-networks plot with 200 networks under 16 ms. Run in a Release build:
//   QT_QPA_PLATFORM=offscreen build/release/bench/bench_plot --benchmark_min_time=1
#include "plot/PlotDelegate.h"
#include "plot/PlotView.h"
#include "plot/RealTimePlot.h"
#include "plot/WiFiChannelView.h"
#include "plot/WiFiMapView.h"
#include "util/Clock.h"
#include "util/RandomSource.h"

#include <QApplication>
#include <QPainter>

#include "BenchApplication.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>

namespace {

constexpr QSize kSize(1280, 800);

// `count` records with full histories, on 2.4 GHz channels, levels spread over all rings.
class BenchDelegate : public PlotDelegate
{
public:
    BenchDelegate(int count, int samples, qint64 top) : m_top(top)
    {
        SeededRandomSource random(42);
        const QDateTime now = Clock::now();
        for (int i = 0; i < count; ++i) {
            auto network = std::make_shared<NetworkObject>();
            network->setBssid(QStringLiteral("02:00:00:00:%1").arg(i, 4, 16, QLatin1Char('0')));
            network->setName(QStringLiteral("Network %1").arg(i));
            QList<LevelSample> history;
            double level = 0.05 + random.uniformReal() * 0.7;
            for (int k = 0; k < samples; ++k) {
                level = std::clamp(level + (random.uniformReal() - 0.5) * 0.04, 0.0, 1.0);
                history.append(float(level));
            }
            network->setSignals(LevelHistory::fromList(history));
            network->setChannel(random.uniform(1, 13));
            network->setChannelBand(1);
            network->setColor(QColor::fromHsvF(float(random.uniform(0, 49) / 49.0), 0.8f, 0.9f));
            network->setLastUpdated(now);
            m_list.append(network);
        }
    }

    const NetworkList &networks() const override { return m_list; }
    CWInterfaceRef currentInterface() const override { return nullptr; }
    qint64 numberOfDatas() const override { return 301; }
    qint64 numberOfTopNetworks() const override { return m_top; }

    // One more sample for every record, as a scan would bring.
    void advance(int cycle)
    {
        const QDateTime now = Clock::now();
        for (const NetworkObjectRef &network : m_list) {
            LevelHistory history = network->signals();
            history.append(float(0.3 + 0.2 * ((cycle + history.size()) % 7) / 7.0));
            network->setSignals(history);
            network->setLastUpdated(now);
        }
    }

private:
    NetworkList m_list;
    qint64 m_top;
};

void paintLoop(benchmark::State &state, QWidget &widget)
{
    QImage image(widget.size(), QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        widget.render(&painter);
        painter.end();
        benchmark::DoNotOptimize(image.constBits());
    }
}

void BM_MapPaint(benchmark::State &state)
{
    ensureApplication();
    BenchDelegate delegate(int(state.range(0)), 1, 10);
    WiFiMapView view;
    view.setDelegate(&delegate);
    view.resize(kSize);
    paintLoop(state, view);
}
BENCHMARK(BM_MapPaint)->Arg(100)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_ChannelPaint(benchmark::State &state)
{
    ensureApplication();
    BenchDelegate delegate(int(state.range(0)), 1, 10);
    WiFiChannelView view;
    view.setDelegate(&delegate);
    view.setIdentifier(state.range(1) == 5 ? QStringLiteral("5") : QString());
    view.resize(kSize);
    paintLoop(state, view);
}
BENCHMARK(BM_ChannelPaint)
    ->ArgNames({"networks", "GHz"})
    ->Args({100, 24})
    ->Args({1000, 24})
    ->Args({100, 5})
    ->Args({1000, 5})
    ->Args({100000, 24})
    ->Args({100000, 5})
    ->Unit(benchmark::kMillisecond);

// The all-networks plot in its view, as the window holds it.
struct SignalPlot
{
    explicit SignalPlot(BenchDelegate &delegate)
    {
        host.setIdentifier(QStringLiteral("signal"));
        host.resize(kSize);
        plot.setDelegate(&delegate);
        plot.render(QList<QVariantMap>(), &host, nullptr, false);
    }
    // What an update cycle does: choose the series again, then feed every record's history.
    void update(const BenchDelegate &delegate)
    {
        plot.updateSignalPlot();
        for (const NetworkObjectRef &network : delegate.networks())
            plot.setData(network->signals(), network->bssid());
    }
    PlotView host;
    RealTimePlot plot;
};

void BM_SignalPlotPaint(benchmark::State &state)
{
    ensureApplication();
    const int count = int(state.range(0));
    BenchDelegate delegate(count, NetworkObject::kHistoryCapacity, count);
    SignalPlot signal(delegate);
    signal.update(delegate);
    QCoreApplication::sendPostedEvents();
    paintLoop(state, signal.host);
}
BENCHMARK(BM_SignalPlotPaint)->Arg(0)->Arg(10)->Arg(50)->Arg(200)->Unit(benchmark::kMillisecond);

// What the all-networks plot costs per update: one more sample for every network, the
// series chosen again and fed, then the plot drawn.
void BM_SignalPlotUpdatePaint(benchmark::State &state)
{
    ensureApplication();
    const int count = int(state.range(0));
    BenchDelegate delegate(count, NetworkObject::kHistoryCapacity, count);
    SignalPlot signal(delegate);
    QCoreApplication::sendPostedEvents();
    QImage image(signal.host.size(), QImage::Format_ARGB32_Premultiplied);
    int cycle = 0;
    for (auto _ : state) {
        state.PauseTiming();
        delegate.advance(cycle++);
        state.ResumeTiming();
        signal.update(delegate);
        QCoreApplication::sendPostedEvents();
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        signal.host.render(&painter);
        painter.end();
        benchmark::DoNotOptimize(image.constBits());
    }
}
BENCHMARK(BM_SignalPlotUpdatePaint)->Arg(200)->Unit(benchmark::kMillisecond);

// One working cycle's plot work: choose the series, then feed every record.
void BM_PlotCycle(benchmark::State &state)
{
    ensureApplication();
    BenchDelegate delegate(int(state.range(0)), NetworkObject::kHistoryCapacity, 10);
    SignalPlot signal(delegate);
    QCoreApplication::sendPostedEvents();
    int cycle = 0;
    for (auto _ : state) {
        state.PauseTiming();
        delegate.advance(cycle++);
        state.ResumeTiming();
        signal.update(delegate);
    }
}
BENCHMARK(BM_PlotCycle)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);

} // namespace

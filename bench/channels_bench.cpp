// SPDX-License-Identifier: GPL-3.0-or-later
// Paint time of the Channels tab at 1280 x 800 and 1920 x 1080 with 100 and 1,000 networks
// spread over 2.4, 5 and 6 GHz in every width, and the layout alone (geometry, label
// placement and channel rating, no painting). Each paint lays the tab out afresh from the
// records, as the first paint after a scan does. The budget is one frame: under 16 ms CPU
// at 1,000 networks and 1280 x 800. Run in a Release build and read the CPU column:
//   QT_QPA_PLATFORM=offscreen build/release/bench/bench_channels --benchmark_min_time=1
#include "plot/ChannelOccupancyView.h"
#include "plot/PlotDelegate.h"
#include "util/Clock.h"
#include "util/RandomSource.h"
#include "wireless/CWNetwork.h"
#include "wireless/ie/FrequencyPlan.h"

#include <QApplication>
#include <QPainter>

#include "BenchApplication.h"

#include <benchmark/benchmark.h>

namespace {

// `count` records made from scan results: half on 2.4 GHz, most others on 5 GHz in every
// width, a tenth on 6 GHz up to 320 MHz; signals from -90 to -30 dBm.
class BenchDelegate : public PlotDelegate
{
public:
    explicit BenchDelegate(int count)
    {
        SeededRandomSource random(42);
        const QDateTime now = Clock::now();
        for (int i = 0; i < count; ++i) {
            CWNetwork::Data d;
            d.ssidData = QStringLiteral("Network %1").arg(i).toUtf8();
            d.bssid = QStringLiteral("02:00:00:00:%1:%2")
                          .arg(i >> 8 & 0xff, 2, 16, QLatin1Char('0'))
                          .arg(i & 0xff, 2, 16, QLatin1Char('0'));
            d.rssiValue = random.uniform(-90, -30);
            d.noiseMeasurement = -95;
            CWOperatingChannel &c = d.operatingChannel;
            const int kind = random.uniform(0, 9);
            static const int k5GHz[] = {36, 44, 52, 60, 100, 108, 116, 124, 149, 157, 165};
            static const int kWidths[] = {20, 40, 80, 160, 320};
            c.band = kind < 5   ? kCWChannelBand2GHz
                     : kind < 9 ? kCWChannelBand5GHz
                                : kCWChannelBand6GHz;
            c.primaryChannel = c.band == kCWChannelBand2GHz   ? random.uniform(1, 13)
                               : c.band == kCWChannelBand5GHz ? k5GHz[random.uniform(0, 10)]
                                                              : 1 + 4 * random.uniform(0, 58);
            c.widthMHz = kWidths[random.uniform(0, c.band == kCWChannelBand2GHz   ? 1
                                                   : c.band == kCWChannelBand5GHz ? 3
                                                                                  : 4)];
            int center = FrequencyPlan::blockCenter(c.primaryChannel, c.band, c.widthMHz);
            if (center == 0) {
                c.widthMHz = 20;
                center = c.primaryChannel;
            }
            c.centerMHz = {FrequencyPlan::frequencyForChannel(center, c.band), 0};
            NetworkObjectRef n = NetworkObject::objectWithCWNetwork(CWNetwork::create(d), now);
            n->setColor(QColor::fromHsvF(float(random.uniform(0, 49) / 49.0), 0.8f, 0.9f));
            m_list.append(n);
        }
    }

    const NetworkList &networks() const override { return m_list; }
    CWInterfaceRef currentInterface() const override { return nullptr; }
    qint64 numberOfDatas() const override { return 301; }
    qint64 numberOfTopNetworks() const override { return 10; }

private:
    NetworkList m_list;
};

void BM_ChannelsTabPaint(benchmark::State &state)
{
    ensureApplication();
    BenchDelegate delegate(int(state.range(0)));
    ChannelOccupancyView view;
    view.setDelegate(&delegate);
    view.resize(int(state.range(1)), int(state.range(2)));
    QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        QPainter painter(&image);
        view.draw(painter);
        painter.end();
        benchmark::DoNotOptimize(image.constBits());
    }
}
BENCHMARK(BM_ChannelsTabPaint)
    ->ArgNames({"networks", "width", "height"})
    ->Args({100, 1280, 800})
    ->Args({1000, 1280, 800})
    ->Args({1000, 1920, 1080})
    ->Unit(benchmark::kMillisecond);

void BM_ChannelsTabLayout(benchmark::State &state)
{
    ensureApplication();
    BenchDelegate delegate(int(state.range(0)));
    ChannelOccupancyView view;
    view.setDelegate(&delegate);
    view.resize(1280, 800);
    for (auto _ : state) {
        view.relayout();
        benchmark::DoNotOptimize(view.charts().size());
    }
}
BENCHMARK(BM_ChannelsTabLayout)->Arg(1000)->Unit(benchmark::kMillisecond);

} // namespace

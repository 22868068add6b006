// SPDX-License-Identifier: GPL-3.0-or-later
// Scrolling the network table through a survey of a city: the window at 1280 x 800 with
// 100,000 (or 1,000) networks listed, the table moved down one page per iteration (from the
// top again at the end) and its rows painted. Run in a Release build and read the CPU
// column, the time per page:
//   QT_QPA_PLATFORM=offscreen build/release/bench/bench_table --benchmark_min_time=1
#include "app/AppDelegate.h"
#include "app/NetworkTableView.h"
#include "prefs/PreferenceStore.h"
#include "support/FakeBackend.h"
#include "util/StreamAlertPresenter.h"
#include "wireless/WirelessBackend.h"

#include <QApplication>
#include <QPainter>
#include <QScrollBar>
#include <QSettings>
#include <QTemporaryDir>

#include "BenchApplication.h"
#include "BenchNetwork.h"

#include <benchmark/benchmark.h>

namespace {

// Hears `total` networks in its first scan and nothing after.
std::shared_ptr<FakeBackend> cityBackend(int total)
{
    QList<CWNetworkRef> all;
    for (int i = 0; i < total; ++i)
        all.append(benchNetwork(i, i * 7919 % total,
                                1u << (i % 3 ? kCWSecurityWPA2Personal : kCWSecurityNone)));
    auto backend = std::make_shared<FakeBackend>();
    backend->scanner = [all](CWError *) mutable { return std::exchange(all, {}); };
    return backend;
}

void BM_TableScrollPage(benchmark::State &state)
{
    ensureApplication();
    QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    WirelessBackend::setCurrent(cityBackend(int(state.range(0))));
    PreferenceStore preferences;
    StreamAlertPresenter alerts(false);
    AppDelegate::Options options;
    options.alerts = &alerts;
    options.preferences = &preferences;
    options.runStartupProbe = false;
    options.startTimer = false;
    {
        AppDelegate app(options);
        app.applicationDidFinishLaunching(); // hears every network once
        app.window()->resize(1280, 800);
        app.window()->show();
        QCoreApplication::sendPostedEvents();
        auto *table = app.window()->findChild<NetworkTableView *>();
        QScrollBar *bar = table->verticalScrollBar();
        QWidget *rows = table->viewport();
        QImage image(rows->size(), QImage::Format_ARGB32_Premultiplied);
        for (auto _ : state) {
            const int next = bar->value() + bar->pageStep();
            bar->setValue(next > bar->maximum() ? 0 : next);
            QPainter painter(&image);
            rows->render(&painter);
            painter.end();
            benchmark::DoNotOptimize(image.constBits());
        }
        state.counters["rows"] = double(table->model()->rowCount());
        state.counters["pageRows"] = double(bar->pageStep());
    }
    WirelessBackend::setCurrent(nullptr);
}
BENCHMARK(BM_TableScrollPage)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);

} // namespace

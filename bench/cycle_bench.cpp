// SPDX-License-Identifier: GPL-3.0-or-later
// One working cycle of the controller (scan, merge, sort, filter, table reload, plot data,
// interface tab) with many records, the views hidden.
#include "app/AppDelegate.h"
#include "prefs/PreferenceStore.h"
#include "support/FakeBackend.h"
#include "util/StreamAlertPresenter.h"
#include "wireless/WirelessBackend.h"

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {
// `total` networks; each scan after the first (which hears them all) reports the next 200
// of them in turn.
std::shared_ptr<FakeBackend> rotatingBackend(int total)
{
    QList<CWNetworkRef> all;
    for (int i = 0; i < total; ++i) {
        CWNetwork::Data d;
        d.ssidData = QStringLiteral("Network %1").arg(i * 7919 % total).toUtf8();
        d.bssid = QStringLiteral("02:00:00:%1:%2:%3")
                      .arg((i >> 16) & 0xff, 2, 16, QLatin1Char('0'))
                      .arg((i >> 8) & 0xff, 2, 16, QLatin1Char('0'))
                      .arg(i & 0xff, 2, 16, QLatin1Char('0'));
        d.rssiValue = -40 - i % 50;
        d.noiseMeasurement = -92;
        d.wlanChannel = CWChannel(1 + i % 11, kCWChannelBand2GHz, kCWChannelWidth20MHz);
        d.phyModes = (1u << kCWPHYMode11g) | (1u << kCWPHYMode11n);
        d.securities = 1u << kCWSecurityWPA2Personal;
        all.append(CWNetwork::create(d));
    }
    auto backend = std::make_shared<FakeBackend>();
    backend->currentSsid = *all.at(0)->ssid();
    backend->currentBssid = all.at(0)->bssid();
    backend->scanner = [all, next = -1](CWError *) mutable {
        if (next < 0) {
            next = 0;
            return all;
        }
        QList<CWNetworkRef> scan;
        for (int k = 0; k < 200 && k < all.size(); ++k)
            scan.append(all.at((next + k) % all.size()));
        next = (next + 200) % all.size();
        return scan;
    };
    return backend;
}

QApplication &application()
{
    static int argc = 1;
    static char name[] = "bench_cycle";
    static char *argv[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Never destroyed: Qt's own statics may be gone by the time exit handlers would run.
    static QApplication *app = new QApplication(argc, argv);
    return *app;
}

void BM_UpdateCycle(benchmark::State &state)
{
    application();
    QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    auto backend = rotatingBackend(int(state.range(0)));
    WirelessBackend::setCurrent(backend);
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
        for (auto _ : state)
            app.performUpdateCycle();
        state.counters["records"] = double(app.networks().size());
    }
    WirelessBackend::setCurrent(nullptr);
}
BENCHMARK(BM_UpdateCycle)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
} // namespace

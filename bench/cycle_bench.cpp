// SPDX-License-Identifier: GPL-3.0-or-later
// One working cycle of the controller (scan, merge, sort, filter, table reload, plot data,
// interface tab) with many records, the views hidden.
#include "app/AppDelegate.h"
#include "util/StreamAlertPresenter.h"
#include "prefs/PreferenceStore.h"
#include "wireless/WirelessBackend.h"

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {
// Hears `total` networks; each scan reports the next 200 of them in turn.
class RotatingBackend final : public WirelessBackend
{
public:
    explicit RotatingBackend(int total)
    {
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
    }
    QString backendName() const override { return QStringLiteral("bench"); }
    QStringList interfaceNames() const override { return {QStringLiteral("wlan0")}; }
    bool powerOn(const QString &) const override { return true; }
    std::optional<QString> ssid(const QString &) const override { return *all.at(0)->ssid(); }
    std::optional<QString> bssid(const QString &) const override { return all.at(0)->bssid(); }
    qint64 security(const QString &) const override { return 4; }
    qint64 rssiValue(const QString &) const override { return -50; }
    qint64 noiseMeasurement(const QString &) const override { return -92; }
    double transmitRate(const QString &) const override { return 300; }
    qint64 transmitPower(const QString &) const override { return 20; }
    std::optional<QString> countryCode(const QString &) const override
    {
        return QStringLiteral("DE");
    }
    QList<qint64> supportedChannels(const QString &) const override { return {1, 6, 11, 36, 40}; }
    std::optional<CWChannel> wlanChannel(const QString &) const override
    {
        return CWChannel(1, 1, 1);
    }
    std::optional<int> interfaceState(const QString &) const override { return 4; }
    std::optional<int> opMode(const QString &) const override { return 0; }
    bool serviceActive(const QString &) const override { return false; }
    QList<CWNetworkRef> scanForNetworks(const QString &, const QVariantMap &, CWError *) override
    {
        if (everything) {
            everything = false;
            return all;
        }
        QList<CWNetworkRef> scan;
        for (int k = 0; k < 200 && k < all.size(); ++k)
            scan.append(all.at((next + k) % all.size()));
        next = (next + 200) % all.size();
        return scan;
    }
    bool setPower(const QString &, bool, CWError *) override { return true; }
    bool setChannel(const QString &, quint64, CWError *) override { return true; }
    void disassociate(const QString &) override {}
    bool associateToNetwork(const QString &, const CWNetworkRef &, const QVariantMap &,
                            CWError *) override
    {
        return true;
    }
    bool enableIBSS(const QString &, const QVariantMap &, CWError *) override { return true; }

    QList<CWNetworkRef> all;
    bool everything = true;
    int next = 0;
};

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
    auto backend = std::make_shared<RotatingBackend>(int(state.range(0)));
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

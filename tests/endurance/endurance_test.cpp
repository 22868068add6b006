// SPDX-License-Identifier: GPL-3.0-or-later
// A long survey in simulated time: the update cycle runs against a radio whose networks
// come and go all day (20,000 BSSIDs, each first heard at its own moment and back now and
// then for a few minutes), with failed and empty scans mixed in, on the manual clock.
// ctest runs one hour; the whole day is
//   CORVANE_ENDURANCE_HOURS=24 build/test/tests/test_endurance
// Every simulated hour prints the records, the memory in use and the CPU time per cycle.
#include "model/SurveyEngine.h"
#include "prefs/PreferenceStore.h"
#include "support/FakeBackend.h"
#include "util/Clock.h"
#include "util/StreamAlertPresenter.h"
#include "wireless/CWError.h"
#include "wireless/CWInterface.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <ctime>
#include <set>
#include <unistd.h>
#include <vector>

// The compiler defines this when AddressSanitizer is on.
#ifdef __SANITIZE_ADDRESS__
// From the sanitizer runtime (its header does not ship with every compiler).
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#else
#include <malloc.h>
#endif

namespace {

constexpr int kDistinct = 20000;
constexpr qint64 kArrivalsEnd = 20 * 3600; // every BSSID has been heard once by then

quint64 mix(quint64 x)
{
    x += 0x9e3779b97f4a7c15ULL;
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ULL;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebULL;
    return x ^ (x >> 31);
}

// Network k is first heard at arrival[k], then for onFor[k] seconds out of every period[k]:
// a car passing, a phone's hotspot, a neighbour's router that reboots.
class Churn
{
public:
    Churn()
    {
        for (int k = 0; k < kDistinct; ++k) {
            const quint64 h = mix(quint64(k));
            m_timing.push_back({qint64(k) * kArrivalsEnd / kDistinct,
                                60 + qint64(h % 540),                   // 1 to 10 minutes
                                4 * 3600 + qint64((h >> 20) % 14400)}); // every 4 to 8 hours
        }
    }

    void setTime(qint64 seconds) { m_t = seconds; }
    const std::set<int> &distinctHeard() const { return m_heard; }

    QList<CWNetworkRef> scan(CWError *error)
    {
        ++m_scans;
        // Now and then a failed scan, now and then an empty one.
        if (m_scans % 97 == 0 || m_scans % 89 == 0) {
            if (m_scans % 97 == 0)
                CWError::set(error, kCWErrorUnknown, QStringLiteral("The driver did not answer"));
            return {};
        }
        QList<CWNetworkRef> scan;
        for (int k = 0; k < kDistinct && m_timing[size_t(k)].arrival <= m_t; ++k) {
            const Timing &t = m_timing[size_t(k)];
            // Even a network on the air is missed by one scan in five.
            if ((m_t - t.arrival) % t.period >= t.onFor ||
                mix(quint64(k) * 1000003ULL + quint64(m_scans)) % 5 == 0)
                continue;
            scan.append(networkOf(k));
            m_heard.insert(k);
        }
        return scan;
    }

private:
    CWNetworkRef networkOf(int k) const
    {
        CWNetwork::Data d;
        d.bssid = QString::asprintf("02:%02x:%02x:%02x:%02x:%02x", (k >> 24) & 0xff,
                                    (k >> 16) & 0xff, (k >> 8) & 0xff, k & 0xff, k % 7);
        d.ssidPresent = k % 10 != 9;
        d.ssidData = "churn-" + QByteArray::number(k % 3001);
        d.rssiValue = -40 - qint64(mix(quint64(k) + quint64(m_t)) % 55);
        d.wlanChannel = CWChannel(1 + k % 11, kCWChannelBand2GHz, kCWChannelWidth20MHz);
        d.securities = 1u << (k % 3 == 0 ? kCWSecurityNone : kCWSecurityWPA2Personal);
        return CWNetwork::create(std::move(d));
    }

    struct Timing
    {
        qint64 arrival, onFor, period;
    };
    std::vector<Timing> m_timing;
    std::set<int> m_heard;
    qint64 m_t = 0;
    quint64 m_scans = 0;
};

double allocatedMegabytes()
{
#ifdef __SANITIZE_ADDRESS__
    return double(__sanitizer_get_current_allocated_bytes()) / 1e6;
#else
    return double(mallinfo2().uordblks) / 1e6;
#endif
}

double residentMegabytes()
{
    QFile statm(QStringLiteral("/proc/self/statm")); // size and resident set, in pages
    const QList<QByteArray> pages =
        statm.open(QIODevice::ReadOnly) ? statm.readAll().split(' ') : QList<QByteArray>();
    return pages.value(1).toDouble() * double(sysconf(_SC_PAGESIZE)) / 1e6;
}

double cpuSeconds()
{
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

} // namespace

TEST(Endurance, ChurningDayKeepsOneRecordPerBssidAndFlatMemory)
{
    const int hours = qBound(1, qEnvironmentVariableIntValue("CORVANE_ENDURANCE_HOURS"), 24);
    QTemporaryDir settingsDir;
    QSettings settings(settingsDir.filePath(QStringLiteral("settings.conf")), QSettings::IniFormat);
    PreferenceStore preferences(&settings);
    StreamAlertPresenter alerts(false);
    ManualClock clock(QDateTime(QDate(2024, 5, 1), QTime(0, 0), Qt::UTC));
    Clock::setInstance(&clock);
    Churn churn;
    auto backend = std::make_shared<FakeBackend>();
    backend->scanner = [&churn](CWError *error) { return churn.scan(error); };
    WirelessBackend::setCurrent(backend);
    {
        SurveyEngine engine(&preferences, &alerts);
        engine.setCurrentInterface(std::make_shared<CWInterface>(backend, QStringLiteral("wlan0")));

        std::printf("hour records distinct_bssids allocated_MB rss_MB cpu_ms_per_cycle\n");
        double settledMegabytes = -1.0, hourStart = cpuSeconds();
        quint64 scansBefore = 0;
        for (qint64 t = 0; t < qint64(hours) * 3600; ++t) {
            churn.setTime(t);
            engine.updateData(); // one tick a second; the cycle runs every update interval
            clock.advance(1000);
            alerts.clear(); // the failed scans' alert lines are the presenter's, not ours
            if ((t + 1) % 3600 != 0)
                continue;
            const double allocated = allocatedMegabytes();
            const qint64 hour = (t + 1) / 3600, records = engine.networks().count();
            const quint64 cycles = engine.statistics().scansTotal - scansBefore;
            const double now = cpuSeconds();
            std::printf("%4lld %7lld %15zu %12.1f %6.1f %16.2f\n", hour, records,
                        churn.distinctHeard().size(), allocated, residentMegabytes(),
                        cycles ? (now - hourStart) * 1e3 / double(cycles) : 0.0);
            hourStart = now;
            scansBefore = engine.statistics().scansTotal;
            std::fflush(stdout);
            EXPECT_EQ(size_t(records), churn.distinctHeard().size()) << "hour " << hour;
            // Once every BSSID is known, records only take new samples into their rings.
            if (t + 1 > kArrivalsEnd + 3600) {
                if (settledMegabytes < 0)
                    settledMegabytes = allocated;
                EXPECT_LT(allocated, settledMegabytes * 1.02 + 1.0) << "hour " << hour;
            }
        }
        EXPECT_GT(engine.statistics().scanErrorsTotal, 0u);
        if (hours == 24) {
            EXPECT_EQ(engine.networks().count(), kDistinct);
        }
    }
    WirelessBackend::setCurrent(nullptr);
    Clock::setInstance(nullptr);
}

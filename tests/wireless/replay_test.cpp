// SPDX-License-Identifier: GPL-3.0-or-later
// Captures served as scans. The captures are in data/ (make-captures.py writes them): in
// office.pcap every frame's signal tells which frame it was.
#include "util/Clock.h"
#include "wireless/CWTypes.h"
#include "wireless/capture/CaptureReader.h"
#include "wireless/replay/ReplayBackend.h"

#include <QFile>
#include <QScopeGuard>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

using namespace Qt::StringLiterals;

namespace {
constexpr qint64 kT0 = 1700000000LL * 1000000; // capture time of the first frame, µs
const qint64 kFrameUs[] = {0, 500000, 1200000, 1900000, 2100000, 7500000, 7900000};

QString data(const char *name)
{
    return qEnvironmentVariable("CORVANE_SOURCE_DIR") + u"/tests/wireless/data/"_s +
           QLatin1String(name);
}

// "bssid-last-byte@signal" for each network of a scan, in scan order.
std::vector<std::string> describe(const QList<CWNetworkRef> &scan)
{
    std::vector<std::string> out;
    for (const CWNetworkRef &n : scan)
        out.push_back(n->bssid().right(2).toStdString() + '@' + std::to_string(n->rssiValue()));
    return out;
}

using Scan = std::vector<std::string>;

} // namespace

TEST(ReplayBackend, FullSpeedServesOneWindowPerScan)
{
    QString error;
    auto replay = ReplayBackend::open(data("office.pcap"), 0, &error);
    ASSERT_TRUE(replay) << error.toStdString();
    replay->setScanWindow(2.0);
    int finishedSignals = 0;
    QObject::connect(replay.get(), &ReplayBackend::replayFinished, [&] { ++finishedSignals; });

    const QString name = u"office"_s;
    ASSERT_EQ(replay->interfaceNames(), QStringList{name});
    // The reader hands out each frame's own time stamp, to the microsecond.
    auto reader = CaptureReader::open(data("office.pcap"), &error);
    ASSERT_TRUE(reader);
    CaptureReader::Frame frame;
    for (qint64 at : kFrameUs) {
        ASSERT_TRUE(reader->next(&frame));
        EXPECT_EQ(frame.timeUs, kT0 + at);
    }
    // A stamp past about 73,000 years is held there, where window arithmetic cannot overflow.
    reader = CaptureReader::open(data("far-future.pcapng"), &error);
    ASSERT_TRUE(reader && reader->next(&frame));
    EXPECT_EQ(frame.timeUs / 1000000, (qint64(1) << 61) / 1000000);
    // [0, 2): the latest frame of each BSSID, in order of first appearance; [2, 4); [4, 6)
    // holds nothing and is skipped, [6, 8) is the last; then nothing, and no second signal.
    const std::pair<Scan, bool> scans[] = {{{"01@-43", "02@-52", "03@-63"}, false},
                                           {{"01@-44"}, false},
                                           {{"02@-56"}, true},
                                           {{}, true}};
    for (const auto &[scan, finished] : scans) {
        CWError e;
        EXPECT_EQ(describe(replay->scanForNetworks(name, {}, &e)), scan);
        EXPECT_TRUE(e.isNull());
        EXPECT_EQ(std::pair(replay->finished(), finishedSignals),
                  std::pair(finished, int(finished)));
    }

    // The window may change between scans; a length below zero is ignored.
    replay = ReplayBackend::open(data("office.pcap"), 0, nullptr);
    replay->setScanWindow(1.0);
    EXPECT_EQ(describe(replay->scanForNetworks(name, {}, nullptr)), (Scan{"01@-41", "02@-52"}));
    replay->setScanWindow(5.0);
    replay->setScanWindow(-3);
    EXPECT_DOUBLE_EQ(replay->scanWindow(), 5.0);
    EXPECT_EQ(describe(replay->scanForNetworks(name, {}, nullptr)),
              (Scan{"01@-44", "03@-63"}));                                             // [1, 6)
    EXPECT_EQ(describe(replay->scanForNetworks(name, {}, nullptr)), (Scan{"02@-56"})); // [6, 11)
}

TEST(ReplayBackend, RealSpeedFollowsTheClock)
{
    ManualClock clock(QDateTime::fromMSecsSinceEpoch(1000000));
    Clock::setInstance(&clock);
    const auto restore = qScopeGuard([] { Clock::setInstance(nullptr); });
    QString error;
    auto replay = ReplayBackend::open(data("office.pcap"), 2.0, &error);
    ASSERT_TRUE(replay) << error.toStdString();
    replay->setScanWindow(2.0);
    const QString name = u"office"_s;

    const struct
    {
        qint64 advanceMs;
        Scan scan;
        bool finished;
    } steps[] = {
        {0, {}, false},                             // capture time 0: no window has ended
        {999, {}, false},                           // 1.998 s
        {1, {"01@-43", "02@-52", "03@-63"}, false}, // 2 s: [0, 2) has ended
        {500, {}, false},                           // 3 s
        {2500, {"01@-44", "02@-56"}, true},         // 8 s: [2, 8) merged into one scan
        {10000, {}, true},
    };
    for (const auto &step : steps) {
        clock.advance(step.advanceMs);
        SCOPED_TRACE(clock.currentDateTime().toMSecsSinceEpoch());
        CWError e;
        EXPECT_EQ(describe(replay->scanForNetworks(name, {}, &e)), step.scan);
        EXPECT_TRUE(e.isNull());
        EXPECT_EQ(replay->finished(), step.finished);
    }
}

TEST(ReplayBackend, ReadOnlyRadioNamedAfterTheFile)
{
    // Plain 802.11 has no radio header: signal and noise take the documented defaults.
    auto replay = ReplayBackend::open(data("lab.capture.pcap"), 0, nullptr);
    ASSERT_TRUE(replay);
    const QString name = u"lab.capture"_s;
    EXPECT_EQ(std::tuple(replay->powerOn(name), replay->powerOn(u"wlan0"_s), replay->opMode(name),
                         replay->ssid(name)),
              std::tuple(true, false, std::optional<int>(kCWOpModeMonitorMode),
                         std::optional<QString>()));
    const QList<CWNetworkRef> scan = replay->scanForNetworks(name, {}, nullptr);
    ASSERT_EQ(scan.size(), 1);
    EXPECT_EQ(std::tuple(scan[0]->rssiValue(), scan[0]->noiseMeasurement(), scan[0]->wlanChannel()),
              std::tuple(-60, -95, CWChannel(11, kCWChannelBand2GHz, kCWChannelWidth20MHz)));
    EXPECT_TRUE(scan[0]->supportsSecurity(kCWSecurityWPA2Personal));
    EXPECT_EQ(replay->supportedChannels(name), QList<qint64>{11});

    // Every control is refused with the same reason.
    const std::function<bool(CWError *)> controls[] = {
        [&](CWError *e) { return replay->setPower(name, false, e); },
        [&](CWError *e) { return replay->setChannel(name, 6, e); },
        [&](CWError *e) { return replay->associateToNetwork(name, scan[0], {}, e); },
        [&](CWError *e) { return replay->enableIBSS(name, {}, e); },
    };
    for (const auto &control : controls) {
        CWError e;
        EXPECT_FALSE(control(&e));
        EXPECT_EQ(e.localizedDescription(), u"A replayed capture cannot be controlled"_s);
    }
    CWError e;
    replay->disassociate(name); // only logged
    EXPECT_TRUE(replay->powerOn(name));
    EXPECT_TRUE(replay->scanForNetworks(u"wlan0"_s, {}, &e).isEmpty());
    EXPECT_FALSE(e.isNull());
}

TEST(ReplayBackend, BadCapturesGiveClearErrors)
{
    QTemporaryDir dir;
    auto file = [&](const char *name, const QByteArray &bytes) {
        QFile f(dir.filePath(QLatin1String(name)));
        EXPECT_TRUE(f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size());
        return f.fileName();
    };
    QFile goodFile(data("office.pcap"));
    ASSERT_TRUE(goodFile.open(QIODevice::ReadOnly));
    const QByteArray whole = goodFile.readAll();

    const struct
    {
        const char *name;
        QString path;
        const char *errorPart;
    } rows[] = {
        {"missing file", dir.filePath(u"nothing.pcap"_s), "not a readable capture"},
        {"not a capture", file("notes.pcap", "Hello <world>\t\n"), "not a readable capture"},
        {"empty file", file("empty.pcap", {}), "not a readable capture"},
        {"header only", file("header.pcap", whole.left(24)), "no beacons or probe responses"},
        {"first packet cut", file("cut1.pcap", whole.left(24 + 16 + 10)), "could be read"},
        {"ethernet", data("ethernet.pcap"), "no 802.11 frames"},
        {"data frames only", data("data.pcap"), "no beacons or probe responses"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        QString error;
        EXPECT_FALSE(ReplayBackend::open(row.path, 0, &error));
        EXPECT_TRUE(error.contains(QLatin1String(row.errorPart))) << error.toStdString();
    }
    QString error;
    EXPECT_FALSE(ReplayBackend::open(data("office.pcap"), -1, &error));
    EXPECT_FALSE(error.isEmpty());

    // Cut in the middle of the fourth packet: the first three are still served.
    const qsizetype packet = (whole.size() - 24) / 7;
    auto cut = ReplayBackend::open(file("cut.pcap", whole.left(24 + 3 * packet + 20)), 0, &error);
    ASSERT_TRUE(cut) << error.toStdString();
    cut->setScanWindow(10);
    EXPECT_EQ(describe(cut->scanForNetworks(u"cut"_s, {}, nullptr)), (Scan{"01@-43", "02@-52"}));
    EXPECT_TRUE(cut->finished());

    // Broken elements and hostile SSIDs: whatever decodes is served.
    auto replay = ReplayBackend::open(data("broken.pcap"), 0, &error);
    ASSERT_TRUE(replay) << error.toStdString();
    const QList<CWNetworkRef> scan = replay->scanForNetworks(u"broken"_s, {}, nullptr);
    ASSERT_EQ(scan.size(), 2);
    EXPECT_EQ(scan[0]->ssidData(), QByteArray("a\tb\n<c>\xff\0", 9));
    EXPECT_TRUE(scan[0]->ssid().has_value());
    EXPECT_EQ(scan[0]->wlanChannel().channelNumber(), 6);
    EXPECT_TRUE(replay->finished());
}

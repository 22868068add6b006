// SPDX-License-Identifier: GPL-3.0-or-later
// The simulated radio: its built-in scenario, repeatability, the actions and the faults.
#include "util/Clock.h"
#include "wireless/CWInterface.h"
#include "wireless/CWKeys.h"
#include "wireless/CWTypes.h"
#include "wireless/SFAuthorization.h"
#include "wireless/simulated/SimulatedBackend.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>

using namespace Qt::StringLiterals;

namespace {

const QDateTime kStart(QDate(2024, 5, 1), QTime(12, 0, 0), Qt::UTC);
const QString kIf = u"wlp2s0"_s;
const QString kHome5 = u"a4:2b:b0:5e:12:02"_s;

CWNetworkRef find(const QList<CWNetworkRef> &list, const QString &bssid)
{
    const auto it =
        std::find_if(list.begin(), list.end(), [&](auto &n) { return n->bssid() == bssid; });
    return it == list.end() ? nullptr : *it;
}

class SimulatedRadio : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Clock::setInstance(&clock);
        sim = SimulatedBackend::createDefault(42);
        ASSERT_TRUE(sim);
        QObject::connect(sim.get(), &WirelessBackend::linkChanged,
                         [this](const QString &name, const QStringList &keys) {
                             changes << name;
                             lastKeys = keys;
                         });
    }
    void TearDown() override
    {
        WirelessBackend::setCurrent(nullptr);
        Clock::setInstance(nullptr);
    }

    void at(double seconds) { clock.set(kStart.addMSecs(qint64(seconds * 1000.0))); }
    QList<CWNetworkRef> scan(const QString &name = kIf)
    {
        CWError error;
        auto list = sim->scanForNetworks(name, {}, &error);
        EXPECT_TRUE(error.isNull()) << qPrintable(error.localizedDescription());
        return list;
    }
    // Every station as a scan would report it, even those too faint to be in one.
    QList<CWNetworkRef> all() const
    {
        QList<CWNetworkRef> list;
        for (int k = 0; k < sim->world().stationCount(); ++k)
            list << sim->world().networkOf(k, 0, sim->elapsedSeconds());
        return list;
    }
    QString bssidOf(const QString &ssid) const
    {
        const auto list = all();
        const auto it =
            std::find_if(list.begin(), list.end(), [&](auto &n) { return n->ssid() == ssid; });
        return it == list.end() ? QString() : (*it)->bssid();
    }

    ManualClock clock{kStart};
    std::shared_ptr<SimulatedBackend> sim;
    QStringList changes;
    QStringList lastKeys;
};

} // namespace

// Every security code appears with the securityMode that belongs to it (a mixed network
// has that of its mixed code); the interface starts joined and reads what a scan reports.
TEST_F(SimulatedRadio, DefaultScenarioCoversTheBoundary)
{
    std::map<int, int> modeOf = {{0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 3},
                                 {6, 4}, {7, 5}, {8, 6}, {9, 6}};
    for (const auto &n : all()) {
        for (int code = 9; code >= 0; --code) {
            if (n->supportsSecurity(code) && modeOf.count(code)) {
                EXPECT_EQ(n->securityMode(), modeOf[code]) << code << qPrintable(n->bssid());
                break;
            }
        }
    }
    at(17.0);
    EXPECT_EQ(std::tuple(sim->ssid(kIf), sim->bssid(kIf), sim->interfaceState(kIf)),
              std::tuple(std::optional(u"Flat 12 Home"_s), std::optional(kHome5),
                         std::optional<int>(kCWInterfaceStateRunning)));
    const CWNetworkRef home = find(scan(), kHome5);
    ASSERT_TRUE(home);
    EXPECT_EQ(sim->wlanChannel(kIf), home->wlanChannel());
    EXPECT_EQ(std::pair(sim->rssiValue(kIf), sim->noiseMeasurement(kIf)),
              std::pair(home->rssiValue(), home->noiseMeasurement()));
    EXPECT_GT(sim->transmitRate(kIf), 6.0);
    EXPECT_LE(sim->transmitRate(kIf), 866.7);
}

// Readings stay in range and move smoothly; the same seed gives the same air, another seed
// another one, whatever the order of the questions. Networks come and go on their schedules.
TEST_F(SimulatedRadio, RepeatableSmoothInRangeAndOnSchedule)
{
    auto twin = SimulatedBackend::createDefault(42);
    auto other = SimulatedBackend::createDefault(7);
    const QString hotspot = bssidOf(u"Jonas’s Phone"_s);
    const QString leaving = bssidOf(u"Umzug 2B"_s);
    ASSERT_FALSE(hotspot.isEmpty() || leaving.isEmpty());
    bool differs = false;
    int hotspotOn = 0, hiddenSeen = 0;
    std::map<QString, qint64> previous;
    std::map<QString, std::set<qint64>> values;
    for (int s = 0; s <= 600; ++s) {
        at(s);
        const auto a = scan();
        std::map<QString, qint64> now;
        for (const auto &n : a) {
            EXPECT_TRUE(n->rssiValue() >= -95 && n->rssiValue() <= -20); // heard at all
            EXPECT_TRUE(n->noiseMeasurement() >= -100 && n->noiseMeasurement() <= -85);
            now[n->bssid()] = n->rssiValue();
            values[n->bssid()].insert(n->rssiValue());
            if (previous.count(n->bssid())) {
                EXPECT_LE(std::abs(n->rssiValue() - previous[n->bssid()]), 4) << s;
            }
            hiddenSeen += !n->ssid() && n->ssidData().isEmpty();
        }
        previous = now;
        const bool heard = find(a, hotspot) != nullptr;
        hotspotOn += heard;
        if (heard) {
            EXPECT_LT(std::fmod(s + 30.0, 150.0), 90.0) << "hotspot heard while off at " << s;
        }
        if (s >= 300 || s < 60) {
            EXPECT_EQ(find(a, leaving) != nullptr, s < 60) << s;
        }
        if (s % 15 != 0)
            continue;
        const auto b = twin->scanForNetworks(kIf, {}, nullptr);
        const auto c = other->scanForNetworks(kIf, {}, nullptr);
        ASSERT_EQ(a.size(), b.size());
        for (qsizetype k = 0; k < a.size(); ++k) {
            EXPECT_EQ(std::tuple(a[k]->bssid(), a[k]->rssiValue(), a[k]->noiseMeasurement()),
                      std::tuple(b[k]->bssid(), b[k]->rssiValue(), b[k]->noiseMeasurement()));
            const auto o = find(c, a[k]->bssid());
            differs = differs || !o || o->rssiValue() != a[k]->rssiValue();
        }
        EXPECT_EQ(std::pair(sim->rssiValue(kIf), sim->transmitRate(kIf)),
                  std::pair(twin->rssiValue(kIf), twin->transmitRate(kIf)));
    }
    EXPECT_TRUE(differs);
    EXPECT_TRUE(hotspotOn > 100 && hotspotOn < 500) << hotspotOn;
    EXPECT_GT(hiddenSeen, 0);
    for (const auto &[bssid, seen] : values)
        EXPECT_GE(seen.size(), 3u) << qPrintable(bssid); // it does move
}

TEST_F(SimulatedRadio, PowerChannelAndDisassociate)
{
    CWError error;
    ASSERT_TRUE(sim->setPower(kIf, false, &error) && error.isNull());
    EXPECT_EQ(changes, QStringList{kIf});
    EXPECT_EQ(lastKeys.first(), u"State:/Network/Interface/wlp2s0/AirPort"_s);
    EXPECT_FALSE(sim->powerOn(kIf) || sim->ssid(kIf) || sim->bssid(kIf));
    EXPECT_EQ(sim->rssiValue(kIf) + sim->noiseMeasurement(kIf) + sim->transmitRate(kIf), 0);
    EXPECT_NE(sim->interfaceState(kIf), kCWInterfaceStateRunning);
    EXPECT_TRUE(sim->scanForNetworks(kIf, {}, &error).isEmpty());
    EXPECT_EQ(error.localizedDescription(), u"The Wi-Fi radio is switched off"_s);
    EXPECT_FALSE(sim->setChannel(kIf, 6, nullptr));
    ASSERT_TRUE(sim->setPower(kIf, true, &error));
    EXPECT_EQ(changes.size(), 2);
    EXPECT_EQ(sim->bssid(kIf), kHome5); // a known network is joined again

    // Service active, channel asked for, granted.
    const std::tuple<bool, quint64, bool> rows[] = {{true, 6, false},
                                                    {false, 14, false},
                                                    {false, quint64(qint64(-1)), false},
                                                    {false, 6, true}};
    for (const auto &[serviceActive, channel, ok] : rows) {
        sim->setServiceActive(kIf, serviceActive);
        EXPECT_EQ(sim->serviceActive(kIf), serviceActive);
        error.clear();
        const bool granted = sim->setChannel(kIf, channel, &error);
        EXPECT_EQ(std::tuple(granted, error.isNull(), sim->wlanChannel(kIf)->channelNumber()),
                  std::tuple(ok, ok, ok ? 6 : 36))
            << channel;
    }
    // Leaving the joined network's channel leaves the network.
    EXPECT_FALSE(sim->bssid(kIf));
    EXPECT_EQ(changes.size(), 3);
    ASSERT_TRUE(sim->setChannel(kIf, 36, &error));
    ASSERT_TRUE(sim->associateToNetwork(kIf, find(all(), kHome5), {}, &error));
    const qsizetype before = changes.size();
    sim->disassociate(kIf);
    EXPECT_EQ(changes.size(), before + 1);
    EXPECT_FALSE(sim->bssid(kIf) || sim->ssid(kIf) ||
                 sim->interfaceState(kIf) == kCWInterfaceStateRunning);
    EXPECT_EQ(sim->opMode(kIf), kCWOpModeStation);
    at(60.0);
    EXPECT_FALSE(sim->bssid(kIf)); // no automatic return after leaving on purpose
}

TEST_F(SimulatedRadio, AssociationChecksCredentials)
{
    auto profile = [](const char *user, const char *password) {
        auto p = CW8021XProfile::profile();
        p->setUsername(QString::fromUtf8(user));
        p->setPassword(QString::fromUtf8(password));
        return QVariant::fromValue(p);
    };
    auto key = [](const QVariant &v) { return QVariantMap{{kCWAssocKeyPassphrase, v}}; };
    auto eap = [](const QVariant &v) { return QVariantMap{{kCWAssocKey8021XProfile, v}}; };
    const char *praxis = "Praxis Dr. Özdemir";
    const struct
    {
        const char *ssid;
        QVariantMap parameters;
        const char *error; // empty: joins
    } rows[] = {
        {"Café Olé Gäste", {}, ""},
        {"Müller WLAN", {}, "A passphrase is required to join \"Müller WLAN\""},
        {"Müller WLAN", key(u"sonnenblume77"_s), "The passphrase was rejected"},
        {"Müller WLAN", key(u"Sonnenblume77"_s), ""},
        {"Müller WLAN", key(77), "The passphrase parameter is not a text"},
        {"Oma's Netz", {}, "The passphrase was rejected"}, // its stored key is outdated
        {"Flat 12 Home", {}, ""},                          // the stored passphrase
        {"Kanzlei Berg", {}, ""},                          // the stored 802.1X profile
        {praxis, {}, "A user name and password are required to join \"Praxis Dr. Özdemir\""},
        {praxis, eap(profile("empfang", "zahnbürste!")),
         "The 802.1X user name or password was rejected"},
        {praxis, eap(profile("empfang", "Zahnbürste!")), ""},
        {praxis, eap(u"empfang"_s), "The 802.1X profile parameter holds no profile"},
    };
    for (const auto &row : rows) {
        const CWNetworkRef target = find(all(), bssidOf(QString::fromUtf8(row.ssid)));
        ASSERT_TRUE(target) << row.ssid;
        sim->disassociate(kIf);
        CWError error;
        const bool ok = sim->associateToNetwork(kIf, target, row.parameters, &error);
        EXPECT_EQ(sim->lastAssociationParameters(), row.parameters);
        EXPECT_EQ(std::tuple(error.localizedDescription(), ok, sim->bssid(kIf)),
                  std::tuple(QString::fromUtf8(row.error), !*row.error,
                             ok ? std::optional(target->bssid()) : std::nullopt))
            << row.ssid;
        if (ok) {
            EXPECT_EQ(sim->wlanChannel(kIf), target->wlanChannel()) << row.ssid;
        }
    }
    // A hidden network joined by its BSSID: the interface knows its name.
    at(10.0);
    const CWNetworkRef cam = find(all(), u"60:38:e0:1a:c5:72"_s);
    ASSERT_TRUE(cam && !cam->ssid());
    ASSERT_TRUE(sim->associateToNetwork(kIf, cam, key(u"kamera-geheim"_s), nullptr));
    EXPECT_EQ(sim->ssid(kIf), u"cam-treppenhaus"_s);
}

TEST_F(SimulatedRadio, AdHocNetworkAppearsInLaterScans)
{
    CWError error, channel14, shortKey;
    EXPECT_FALSE(sim->enableIBSS(kIf, {{kCWIBSSKeyChannel, 14}}, &channel14) || channel14.isNull());
    EXPECT_FALSE(sim->enableIBSS(kIf, {{kCWIBSSKeyPassphrase, u"abc"_s}}, &shortKey) ||
                 shortKey.isNull());

    const QVariantMap parameters = {{kCWIBSSKeySSID, u"Spielwiese"_s}};
    ASSERT_TRUE(sim->enableIBSS(kIf, parameters, &error));
    EXPECT_EQ(sim->lastIBSSParameters(), parameters);
    const QString own = sim->ownIBSSBssid(kIf);
    EXPECT_EQ(own.left(2).toInt(nullptr, 16) & 3, 2); // locally administered unicast
    EXPECT_EQ(std::tuple(sim->opMode(kIf), sim->ssid(kIf), sim->bssid(kIf),
                         sim->wlanChannel(kIf)->channelNumber(), sim->interfaceState(kIf)),
              std::tuple(std::optional<int>(kCWOpModeIBSS), std::optional(u"Spielwiese"_s),
                         std::optional(own), qint64(11),
                         std::optional<int>(kCWInterfaceStateRunning)));
    at(5.0);
    const CWNetworkRef heard = find(scan(), own);
    EXPECT_TRUE(heard && heard->ibss() && heard->ssid() == u"Spielwiese"_s);
    EXPECT_TRUE(find(scan(u"wlx00c0ca3e5f01"_s), own)); // the desk stick hears it too
    sim->disassociate(kIf);
    EXPECT_FALSE(find(scan(), own));
    EXPECT_EQ(sim->opMode(kIf), kCWOpModeStation);

    // Without a name the interface's own name is used; with a key, it is a secured network.
    ASSERT_TRUE(sim->enableIBSS(kIf, {{kCWIBSSKeyPassphrase, u"geheim123"_s}}, &error));
    const CWNetworkRef secured = find(scan(), sim->ownIBSSBssid(kIf));
    EXPECT_TRUE(secured && secured->ssid() == kIf && !secured->supportsSecurity(kCWSecurityNone));
}

TEST(SimulatedBackendFaults, ScanErrorsEmptyScansRefusedAuthorizationAndLostLinks)
{
    ManualClock clock(kStart);
    Clock::setInstance(&clock);
    QString text;
    auto sim = SimulatedBackend::fromJson(R"({
        "faults": {"refuseAuthorization": true, "scanErrorEvery": 3, "emptyScanEvery": 2},
        "accessPoints": [{"ssid": "near", "bssid": "02:00:00:00:00:01", "channel": 6,
                          "position": [2, 0]}]})",
                                          1, &text);
    ASSERT_TRUE(sim) << qPrintable(text);
    WirelessBackend::setCurrent(sim);
    const QString name = CWInterface::supportedInterfaces().value(0);
    EXPECT_EQ(name, kIf);
    // 1 full, 2 empty, 3 error, 4 empty, 5 full, 6 error (an error wins over empty).
    for (int want : {1, 0, -1, 0, 1, -1}) {
        CWError error;
        const auto list = sim->scanForNetworks(name, {{kCWScanKeyMerge, true}}, &error);
        EXPECT_EQ(error.isNull(), want >= 0);
        EXPECT_EQ(list.size(), std::max(want, 0));
    }
    EXPECT_EQ(sim->scanCount(), 6);
    EXPECT_EQ(sim->lastScanParameters().value(kCWScanKeyMerge), true);
    auto auth = SFAuthorization::authorization();
    CWError error;
    EXPECT_FALSE(auth->obtainWithRight(u"system.preferences"_s, 19, &error) ||
                 error.localizedDescription().isEmpty());
    sim->setFaults({});
    EXPECT_TRUE(auth->obtainWithRight(u"system.preferences"_s, 19, &error) && error.isNull());
    EXPECT_EQ(sim->authorizationCount(), 2);
    // Without a backend every interface answers zero, false or none, and refuses.
    WirelessBackend::setCurrent(nullptr);
    EXPECT_TRUE(CWInterface::supportedInterfaces().isEmpty());
    EXPECT_EQ(CWInterface::interfaceWithName(name), nullptr);
    CWInterface handle(nullptr, name);
    EXPECT_FALSE(handle.powerOn() || handle.ssid() || handle.setPower(true, &error));
    EXPECT_TRUE(handle.scanForNetworksWithParameters({}, &error).isEmpty() &&
                !error.localizedDescription().isEmpty());

    // The link is lost when the joined network vanishes.
    sim = SimulatedBackend::fromJson(R"({
        "interfaces": [{"name": "wlan0", "associatedTo": "02:00:00:00:00:01"}],
        "accessPoints": [{"ssid": "brief", "bssid": "02:00:00:00:00:01", "channel": 6,
                          "position": [2, 0], "vanishesAt": 10}]})",
                                     1, nullptr);
    ASSERT_TRUE(sim);
    int changes = 0;
    QObject::connect(sim.get(), &WirelessBackend::linkChanged, [&] { ++changes; });
    EXPECT_EQ(sim->interfaceState(u"wlan0"_s), kCWInterfaceStateRunning);
    clock.advance(11000);
    EXPECT_EQ((std::tuple{sim->interfaceState(u"wlan0"_s),
                          sim->scanForNetworks(u"wlan0"_s, {}, nullptr).size(), changes}),
              std::tuple(std::optional<int>(kCWInterfaceStateInactive), 0, 1));
    Clock::setInstance(nullptr);
}

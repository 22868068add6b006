// SPDX-License-Identifier: GPL-3.0-or-later
// The Linux backend's NetworkManager and polkit side against python-dbusmock daemons on a
// private bus: power, joining (open, WEP, WPA2, 802.1X, saved), ad-hoc, disconnect, saved
// profiles, authorization, a daemon that goes away and comes back; and the long actions when
// the daemons take their time. Each action must answer once, after its call has returned, with
// the event loop running meanwhile (a timer stands for the window's clock).

#include "wireless/CWKeys.h"
#include "wireless/CWTypes.h"
#include "wireless/dbusmock/MockDaemons.h"
#include "wireless/linux/PolkitClient.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QTest>
#include <QTimer>

#include <algorithm>

class TestLinuxNetworkManager : public QObject
{
    Q_OBJECT

public:
    TestLinuxNetworkManager()
    {
        connect(&ticker, &QTimer::timeout, this, [this] { ++ticks; });
    }
    MockDaemons m;

private:
    // Stands for the window's clock: it must keep ticking while an action is out. A blocked
    // loop fires a late timer once, not once per missed period, so a few ticks prove it ran;
    // asking for one per period would fail on a loaded machine.
    int ticks = 0;
    QTimer ticker;
    void startTicking()
    {
        ticks = 0;
        ticker.start(20);
    }
    CWError setPower(bool on)
    {
        return m.run([&](auto done) { m.connector->setPower(on, done); });
    }

private Q_SLOTS:
    // A bus for the program, fresh daemons for each test.
    void initTestCase() { QVERIFY(m.startBus()); }
    void cleanupTestCase() { m.stopBus(); }
    void init() { QVERIFY(m.startDaemons(this)); }
    void cleanup()
    {
        const QString twice = m.stopDaemons();
        QVERIFY2(twice.isEmpty(), qPrintable(twice));
    }

    void power()
    {
        QVERIFY(setPower(false).isNull());
        QCOMPARE(m.nm->wirelessEnabled(), std::optional<bool>(false));
        // The synchronous form, for callers that need the answer before going on.
        CWError error;
        QVERIFY(m.connector->setPower(true, &error));
        QCOMPARE(m.nm->wirelessEnabled(), std::optional<bool>(true));

        // A hardware switch in the off position: NetworkManager cannot help.
        m.mockCall(u"UpdateProperties"_s,
                   {MockDaemons::kNmService, QVariantMap{{u"WirelessHardwareEnabled"_s, false}}});
        QVERIFY(!m.connector->setPower(true, &error));
        for (const CWError &e : {error, setPower(true)}) {
            QCOMPARE(e.localizedDescription(), u"Wi-Fi is switched off by a hardware switch"_s);
            QCOMPARE(e.code(), int(kCWErrorPoweredOff));
        }
    }

    void join_data()
    {
        QTest::addColumn<unsigned>("securities");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("passphrase");
        QTest::addColumn<QString>("username");
        QTest::addColumn<QList<uint>>("outcome"); // active state, reason, device reason
        QTest::addColumn<QString>("expectedError");
        QTest::addColumn<QString>("expectedKeyMgmt"); // empty: refused before asking

        const QList<uint> ok{2, 1, 0};
        const unsigned wpa2 = 1u << kCWSecurityWPA2Personal;
        const int psk = kCWSecurityModeWPA2_PSK;
        const QString horse = u"correct horse"_s;
        QTest::newRow("open") << 1u << 0 << QString() << QString() << ok << QString() << u"open"_s;
        QTest::newRow("wep") << (1u << kCWSecurityWEP) << int(kCWSecurityModeWEP) << u"abcde"_s
                             << QString() << ok << QString() << u"none"_s;
        QTest::newRow("wpa2") << wpa2 << psk << horse << QString() << ok << QString()
                              << u"wpa-psk"_s;
        QTest::newRow("enterprise")
            << (1u << kCWSecurityWPA2Enterprise) << int(kCWSecurityModeWPA2_Enterprise)
            << u"secret"_s << u"alice"_s << ok << QString() << u"wpa-eap"_s;
        QTest::newRow("wrong passphrase")
            << wpa2 << psk << u"not the key"_s << QString() << QList<uint>{4, 3, 7}
            << u"The passphrase was rejected"_s << u"wpa-psk"_s;
        QTest::newRow("silence") << 1u << 0 << QString() << QString() << QList<uint>{0, 0, 0}
                                 << u"The network did not answer"_s << u"open"_s;
        QTest::newRow("short passphrase")
            << wpa2 << psk << u"short"_s << QString() << ok
            << u"A WPA passphrase has 8 to 63 characters, or 64 hexadecimal digits"_s << QString();
    }

    void join()
    {
        QFETCH(unsigned, securities);
        QFETCH(int, mode);
        QFETCH(QString, passphrase);
        QFETCH(QString, username);
        QFETCH(QList<uint>, outcome);
        QFETCH(QString, expectedError);
        QFETCH(QString, expectedKeyMgmt);

        m.connector->setActivationTimeout(1000);
        m.mockCall(u"SetOutcome"_s,
                   {outcome[0], outcome[1], outcome[2], QVariant::fromValue(100u)});
        QVariantMap parameters;
        if (!username.isEmpty()) {
            auto profile = CW8021XProfile::profile();
            profile->setUsername(username);
            profile->setPassword(passphrase);
            parameters.insert(kCWAssocKey8021XProfile, QVariant::fromValue(profile));
        } else if (!passphrase.isEmpty()) {
            parameters.insert(kCWAssocKeyPassphrase, passphrase);
        }
        QCOMPARE(m.join(testNetwork("caf\xc3\xa9\tnet", securities, mode), parameters),
                 expectedError);
        QVERIFY(!m.connector->isJoining(MockDaemons::kIf));
        if (expectedKeyMgmt.isEmpty()) {
            QCOMPARE(m.counter(u"addandactivate"_s), 0);
            return;
        }
        // Raw SSID bytes to NetworkManager, a name without control characters for its list.
        const QJsonObject settings = m.lastSettings();
        QCOMPARE(settings[u"802-11-wireless"_s][u"ssid"_s].toString(), u"hex:636166c3a9096e6574"_s);
        QCOMPARE(settings[u"connection"_s][u"id"_s].toString(), u"cafénet"_s);
        // The key where NetworkManager expects it: PSK, WEP key 0, or 802.1X with PEAP.
        const QJsonValue security = settings[u"802-11-wireless-security"_s];
        const QJsonValue eap = settings[u"802-1x"_s];
        const QString secret = expectedKeyMgmt == u"wpa-psk" ? security[u"psk"_s].toString()
                               : expectedKeyMgmt == u"none"  ? security[u"wep-key0"_s].toString()
                                                             : eap[u"password"_s].toString();
        QCOMPARE(QStringList({security[u"key-mgmt"_s].toString(), secret,
                              eap[u"identity"_s].toString(), eap[u"phase2-auth"_s].toString()}),
                 QStringList({expectedKeyMgmt == u"open" ? QString() : expectedKeyMgmt, passphrase,
                              username, username.isEmpty() ? QString() : u"mschapv2"_s}));
    }

    void joinSavedConnection()
    {
        // A saved connection for the SSID is activated as it is when no new key is given;
        // NetworkManager's access point object is named as the specific object.
        const QString path = m.addSaved(
            u"Home"_s, "home", {}, {{u"802-11-wireless"_s, {{u"mode"_s, u"infrastructure"_s}}}});
        QVERIFY(!path.isEmpty());
        m.mockCall(u"AddAccessPoint"_s, {u"02:00:00:00:01:00"_s, 0x188u});

        // A new passphrase replaces the saved one: same entry, same name, no second one.
        const auto home = testNetwork("home", 1u << kCWSecurityWPA2Personal, 3);
        for (const QVariantMap &parameters :
             {QVariantMap(), QVariantMap{{kCWAssocKeyPassphrase, u"new passphrase"_s}}}) {
            QCOMPARE(m.join(home, parameters), QString());
            QCOMPARE(m.mockCall(u"LastActivated"_s).toString(), path);
            QCOMPARE(m.counter(u"addandactivate"_s), 0);
        }
        const QJsonObject updated =
            m.json(u"SavedSettingsJson"_s, {QVariant::fromValue(QDBusObjectPath(path))});
        QCOMPARE(updated[u"connection"_s][u"id"_s].toString(), u"Home"_s);
        QCOMPARE(updated[u"802-11-wireless-security"_s][u"psk"_s].toString(), u"new passphrase"_s);

        // A network without a saved connection gets a new one.
        QCOMPARE(m.join(testNetwork("cafe", 1u << kCWSecurityWPA2Personal, 3),
                        {{kCWAssocKeyPassphrase, u"espresso"_s}}),
                 QString());
        QCOMPARE(m.counter(u"addandactivate"_s), 1);
        QVERIFY(m.lastSettings().value(u"_specific"_s).toString().contains(u"AccessPoint"));
    }

    void adhoc_data()
    {
        QTest::addColumn<QVariantMap>("parameters");
        QTest::addColumn<QString>("expectedError");
        QTest::addColumn<QByteArray>("expectedWireless"); // the 802-11-wireless settings

        const QString party = u"party"_s;
        QTest::newRow("open on 11")
            << QVariantMap{{kCWIBSSKeySSID, party}, {kCWIBSSKeyChannel, 11}} << QString()
            << QByteArray(R"({"band":"bg","channel":11,"mode":"adhoc","ssid":"hex:7061727479"})");
        QTest::newRow("wep key on 36")
            << QVariantMap{{kCWIBSSKeySSID, party},
                           {kCWIBSSKeyChannel, 36},
                           {kCWIBSSKeyPassphrase, u"0123456789abc"_s}}
            << QString()
            << QByteArray(R"({"band":"a","channel":36,"mode":"adhoc","ssid":"hex:7061727479"})");
        QTest::newRow("wpa passphrase")
            << QVariantMap{{kCWIBSSKeySSID, party},
                           {kCWIBSSKeyPassphrase, u"a long wpa passphrase"_s}}
            << QStringLiteral(
                   "NetworkManager can protect an ad-hoc network only with a WEP key: 5 or "
                   "13 characters, or 10 or 26 hexadecimal digits")
            << QByteArray();
    }

    void adhoc()
    {
        QFETCH(QVariantMap, parameters);
        QFETCH(QString, expectedError);
        QFETCH(QByteArray, expectedWireless);

        const CWError error = m.run([&](auto done) {
            m.connector->enableIBSS(MockDaemons::kIf, parameters, u"this-host"_s, done);
        });
        QCOMPARE(error.localizedDescription(), expectedError);
        QCOMPARE(m.counter(u"addandactivate"_s), error.isNull() ? 1 : 0);
        if (error.isNull()) {
            const QJsonObject wireless = m.lastSettings()[u"802-11-wireless"_s].toObject();
            QCOMPARE(QJsonDocument(wireless).toJson(QJsonDocument::Compact), expectedWireless);
        }
    }

    void disconnectAndScan()
    {
        CWError error;
        QVERIFY(m.connector->disassociate(MockDaemons::kIf, &error));
        QCOMPARE(m.counter(u"disconnect"_s), 1);
        QVERIFY(!m.connector->disassociate(u"wlan9"_s, &error));
        QCOMPARE(error.localizedDescription(), u"NetworkManager does not manage wlan9"_s);
        QCOMPARE(m.counter(u"disconnect"_s), 1);

        const QString device = m.nm->deviceForInterface(MockDaemons::kIf, nullptr);
        QVERIFY(!device.isEmpty());
        QVERIFY(m.nm->requestScan(device));
        QVERIFY(!m.nm->requestScan(device)); // rate-limited
        QTRY_COMPARE(m.counter(u"scan"_s), 1);
        // "Already scanning" is no error worth reporting; requests keep going out.
        m.nm->setScanInterval(0);
        m.mockCall(u"SetScanBusy"_s, {true});
        QVERIFY(m.nm->requestScan(device));
        QVERIFY(m.nm->requestScan(device));
        QTRY_COMPARE(m.counter(u"scan"_s), 3);
    }

    void savedProfiles()
    {
        const NmSettings eap{
            {u"802-1x"_s, {{u"identity"_s, u"alice"_s}, {u"eap"_s, QStringList{u"peap"_s}}}}};
        const QString wpaEap = u"wpa-eap"_s;
        m.addSaved(u"Work"_s, "corp", wpaEap, eap, {{u"802-1x"_s, {{u"password"_s, u"s3cret"_s}}}});
        m.addSaved(u"Home"_s, "home", u"wpa-psk"_s, {},
                   {{u"802-11-wireless-security"_s, {{u"psk"_s, u"home passphrase"_s}}}});
        const NmSettings wired{
            {u"connection"_s, {{u"id"_s, u"Cable"_s}, {u"type"_s, u"802-3-ethernet"_s}}}};
        m.mockCall(u"AddSavedConnection"_s,
                   {QVariant::fromValue(wired), QVariant::fromValue(NmSettings())});
        m.addSaved(u"Guest"_s, "guest", wpaEap, eap);

        // Through the backend, as the join dialog asks for them; NetworkManager kept Guest's
        // secret.
        const auto profiles = m.makeBackend()->allUser8021XProfiles();
        QCOMPARE(profiles.size(), 2);
        QCOMPARE(QStringList({profiles[0]->userDefinedName(), profiles[0]->username(),
                              profiles[0]->password(), profiles[1]->userDefinedName()}),
                 QStringList({"Work", "alice", "s3cret", "Guest"}));
        QVERIFY(profiles[1]->password().isNull());

        const auto home = m.profiles->profileForSsid("home");
        QVERIFY(home && !home->user8021XProfile() && home->passphrase() == u"home passphrase"_s);
        const auto corp = m.profiles->profileForSsid("corp");
        QVERIFY(corp && corp->user8021XProfile() &&
                corp->user8021XProfile()->username() == u"alice"_s);
        QVERIFY(!m.profiles->profileForSsid("elsewhere"));
    }

    // Refused by the policy, then without polkit at all (allowed). The prompting form and the
    // quiet synchronous one, each on a backend of its own (a backend keeps a granted
    // authorization for a while).
    void authorization()
    {
        QVERIFY(m.polkitCall(u"SetAllowed"_s, {QStringList{u"org.example.other"_s}}));
        for (const QString &expected :
             {u"Not permitted: the system's policy does not let this user control the network"_s,
              QString()}) {
            const auto backend = m.makeBackend();
            CWError error = m.run([&](auto done) {
                backend->obtainAuthorizationAsync(u"system.preferences"_s, 19, done);
            });
            QCOMPARE(error.localizedDescription(), expected);
            QCOMPARE(m.makeBackend()->obtainAuthorization(u"system.preferences"_s, 19, &error),
                     expected.isEmpty());
            QCOMPARE(error.localizedDescription(), expected);
            m.stopPolkit();
            QTRY_VERIFY(!m.registered(MockDaemons::kPolkitService));
        }
    }

    void daemonDisappears()
    {
        CWError error;
        QVERIFY(m.connector->setPower(true, &error));
        m.stopNetworkManager();
        QTRY_VERIFY(!m.registered(MockDaemons::kNmService));

        const QString gone = u"NetworkManager is not running"_s;
        QVERIFY(!m.connector->setPower(false, &error));
        QCOMPARE(error.code(), int(kCWErrorServiceUnavailable));
        const auto x = testNetwork("x");
        const auto joinAnswer =
            m.start([&](auto done) { m.connector->associate(m.kIf, *x, {}, done); });
        QVERIFY(m.waitFor(joinAnswer));
        QCOMPARE(joinAnswer->error.code(), int(kCWErrorServiceUnavailable));
        for (const CWError &e : {error, setPower(false), joinAnswer->error})
            QCOMPARE(e.localizedDescription(), gone);
        QVERIFY(!m.nm->wirelessEnabled(&error));
        QCOMPARE(error.localizedDescription(), gone);
        QVERIFY(m.profiles->user8021XProfiles().isEmpty());

        // Back again: the same objects work without a restart of the program.
        QVERIFY(m.startNetworkManager());
        QVERIFY(setPower(false).isNull());
        QCOMPARE(m.nm->wirelessEnabled(), std::optional<bool>(false));
        QCOMPARE(m.join(x), QString());
    }

    void lateAnswers_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<uint>("replyDelay");     // of the activation call itself
        QTest::addColumn<QList<uint>>("outcome"); // active state, reason, device reason, delay
        QTest::addColumn<QString>("expectedError");

        const QList<uint> slowOk{2, 1, 0, 600};
        // The outcome signals come before the reply that names the active connection.
        QTest::newRow("join, joined before the reply")
            << u"join"_s << 500u << QList<uint>{2, 1, 0, 50} << QString();
        QTest::newRow("join, refused before the reply")
            << u"join"_s << 500u << QList<uint>{4, 3, 7, 50} << u"The passphrase was rejected"_s;
        QTest::newRow("ad-hoc, slow") << u"adhoc"_s << 400u << slowOk << QString();
    }

    void lateAnswers()
    {
        QFETCH(QString, action);
        QFETCH(uint, replyDelay);
        QFETCH(QList<uint>, outcome);
        QFETCH(QString, expectedError);

        m.connector->setActivationTimeout(5000);
        m.mockCall(u"SetOutcome"_s, {outcome[0], outcome[1], outcome[2], outcome[3]});
        m.mockCall(u"SetReplyDelay"_s, {replyDelay});

        startTicking();
        const auto net = testNetwork("late");
        QElapsedTimer clock;
        clock.start();
        const auto answer = m.start([&](auto done) {
            if (action == u"adhoc")
                m.connector->enableIBSS(m.kIf, {{kCWIBSSKeySSID, u"late"_s}}, {}, done);
            else
                m.connector->associate(m.kIf, *net, {}, done);
        });
        // Nothing was run in between: no answer, no tick before the call returned.
        QCOMPARE(answer->count, 0);
        QCOMPARE(ticks, 0);
        QVERIFY(m.waitFor(answer));
        const qint64 waited = clock.elapsed();
        QCOMPARE(answer->error.localizedDescription(), expectedError);
        QVERIFY2(waited >= std::min<qint64>(replyDelay, outcome[3]) - 50,
                 qPrintable(QString::number(waited)));
        QVERIFY2(ticks >= 3, qPrintable(u"%1 ticks in %2 ms"_s.arg(ticks).arg(waited)));
        QTest::qWait(300); // later signals of the same activation change nothing
        QCOMPARE(answer->count, 1);
        QVERIFY(!m.connector->isJoining(m.kIf));
    }

    void oneJoinAtATime()
    {
        m.mockCall(u"SetOutcome"_s, {2u, 1u, 0u, 600u});
        const auto a = testNetwork("first");
        const auto b = testNetwork("second");
        const auto first = m.start([&](auto done) { m.connector->associate(m.kIf, *a, {}, done); });
        const auto second =
            m.start([&](auto done) { m.connector->associate(m.kIf, *b, {}, done); });
        const auto adhoc =
            m.start([&](auto done) { m.connector->enableIBSS(m.kIf, {}, u"host"_s, done); });
        for (const auto &refused : {second, adhoc}) {
            QCOMPARE(refused->count, 1);
            QCOMPARE(refused->error.localizedDescription(),
                     u"wlan0 is still joining another network"_s);
            QCOMPARE(refused->error.code(), int(kCWErrorBusy));
        }
        QCOMPARE(first->count, 0);
        QVERIFY(m.waitFor(first));
        QVERIFY(first->error.isNull());
        QCOMPARE(m.counter(u"addandactivate"_s), 1);
        // Once it is over, the next one goes ahead.
        QCOMPARE(m.join(b), QString());
        QCOMPARE(m.counter(u"addandactivate"_s), 2);
    }

    void daemonVanishesMidJoin_data()
    {
        QTest::addColumn<uint>("replyDelay");
        QTest::newRow("while the network is asked") << 0u;
        QTest::newRow("before NetworkManager replied") << 20000u;
    }

    void daemonVanishesMidJoin()
    {
        QFETCH(uint, replyDelay);
        m.connector->setActivationTimeout(20000);
        m.mockCall(u"SetOutcome"_s, {0u, 0u, 0u, 0u}); // never answers
        m.mockCall(u"SetReplyDelay"_s, {replyDelay});
        const auto net = testNetwork("gone");
        const auto answer =
            m.start([&](auto done) { m.connector->associate(m.kIf, *net, {}, done); });
        QTest::qWait(300);
        QCOMPARE(answer->count, 0);
        m.stopNetworkManager();
        QVERIFY(m.waitFor(answer, 5000));
        QCOMPARE(answer->error.localizedDescription(), u"NetworkManager is not running"_s);
        QCOMPARE(answer->error.code(), int(kCWErrorServiceUnavailable));
        QTest::qWait(200);
        QCOMPARE(answer->count, 1);
        QVERIFY(!m.connector->isJoining(m.kIf));
    }

    void authorizationAnsweredLate_data()
    {
        QTest::addColumn<int>("releaseAfterMs"); // -1: nobody at the prompt answers
        QTest::addColumn<QString>("expectedError");

        QTest::newRow("granted after a while") << 500 << QString();
        QTest::newRow("nobody answers")
            << -1 << u"Not permitted: the authorization request timed out"_s;
    }

    void authorizationAnsweredLate()
    {
        QFETCH(int, releaseAfterMs);
        QFETCH(QString, expectedError);

        QVERIFY(m.polkitCall(u"SetAllowed"_s, {QStringList{PolkitClient::networkControlAction()}}));
        // The prompt is up; the user reads it.
        QVERIFY(m.polkitCall(u"SimulateHang"_s, {true}));
        const auto backend = m.makeBackend();
        backend->setAuthorizationPromptTimeout(1000);
        startTicking();
        // Two callers ask while the prompt is up; both get the one answer.
        const MockDaemons::Action ask = [&](auto done) {
            backend->obtainAuthorizationAsync(u"system.preferences"_s, 19, done);
        };
        const QList<std::shared_ptr<MockDaemons::Answer>> answers{m.start(ask), m.start(ask)};
        QCOMPARE(answers[0]->count, 0);
        QCOMPARE(ticks, 0);
        if (releaseAfterMs >= 0) {
            QTest::qWait(releaseAfterMs);
            QCOMPARE(answers[0]->count, 0);
            QVERIFY(m.polkitCall(u"ReleaseHangingCalls"_s, {}));
        }
        for (const auto &answer : answers) {
            QVERIFY(m.waitFor(answer, 5000));
            QCOMPARE(answer->error.localizedDescription(), expectedError);
        }
        QVERIFY2(ticks >= 3, qPrintable(QString::number(ticks)));
        if (expectedError.isEmpty()) {
            // Granted a moment ago: the next cycle does not ask polkit again.
            const auto again = m.start(ask);
            QVERIFY(again->count == 1 && again->error.isNull());
        }
        QTest::qWait(200);
        for (const auto &answer : answers)
            QCOMPARE(answer->count, 1);
    }
};

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    TestLinuxNetworkManager test;
    return MockDaemons::exec(&test, test.m, argc, argv);
}
#include "tst_linux_networkmanager.moc"

using namespace Qt::StringLiterals;

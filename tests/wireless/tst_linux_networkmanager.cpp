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

#include <QDBusVariant>
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
    // Stands for the window's clock: it must keep ticking while an action is out.
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
        QDBusMessage set = QDBusMessage::createMethodCall(
            MockDaemons::kNmService, MockDaemons::kNmPath,
            QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Set"));
        set.setArguments({MockDaemons::kNmService, QStringLiteral("WirelessHardwareEnabled"),
                          QVariant::fromValue(QDBusVariant(false))});
        QCOMPARE(m.bus().call(set).type(), QDBusMessage::ReplyMessage);
        QVERIFY(!m.connector->setPower(true, &error));
        for (const CWError &e : {error, setPower(true)}) {
            QCOMPARE(e.localizedDescription(),
                     QStringLiteral("Wi-Fi is switched off by a hardware switch"));
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
        const QString horse = QStringLiteral("correct horse");
        QTest::newRow("open") << 1u << 0 << QString() << QString() << ok << QString()
                              << QStringLiteral("open");
        QTest::newRow("wep") << (1u << kCWSecurityWEP) << int(kCWSecurityModeWEP)
                             << QStringLiteral("abcde") << QString() << ok << QString()
                             << QStringLiteral("none");
        QTest::newRow("wpa2") << wpa2 << psk << horse << QString() << ok << QString()
                              << QStringLiteral("wpa-psk");
        QTest::newRow("enterprise")
            << (1u << kCWSecurityWPA2Enterprise) << int(kCWSecurityModeWPA2_Enterprise)
            << QStringLiteral("secret") << QStringLiteral("alice") << ok << QString()
            << QStringLiteral("wpa-eap");
        QTest::newRow("wrong passphrase")
            << wpa2 << psk << QStringLiteral("not the key") << QString() << QList<uint>{4, 3, 7}
            << QStringLiteral("The passphrase was rejected") << QStringLiteral("wpa-psk");
        QTest::newRow("silence") << 1u << 0 << QString() << QString() << QList<uint>{0, 0, 0}
                                 << QStringLiteral("The network did not answer")
                                 << QStringLiteral("open");
        QTest::newRow("short passphrase")
            << wpa2 << psk << QStringLiteral("short") << QString() << ok
            << QStringLiteral("A WPA passphrase has 8 to 63 characters, or 64 hexadecimal digits")
            << QString();
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
        m.mockCall(QStringLiteral("SetOutcome"),
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
        QCOMPARE(m.join(MockDaemons::network("caf\xc3\xa9\tnet", securities, mode), parameters),
                 expectedError);
        QVERIFY(!m.connector->isJoining(MockDaemons::kIf));
        if (expectedKeyMgmt.isEmpty()) {
            QCOMPARE(m.counter(QStringLiteral("addandactivate")), 0);
            return;
        }
        // Raw SSID bytes to NetworkManager, a name without control characters for its list.
        const QJsonObject settings = m.lastSettings();
        QCOMPARE(settings[QStringLiteral("802-11-wireless")][QStringLiteral("ssid")].toString(),
                 QStringLiteral("hex:636166c3a9096e6574"));
        QCOMPARE(settings[QStringLiteral("connection")][QStringLiteral("id")].toString(),
                 QStringLiteral("cafénet"));
        const QJsonValue security = settings[QStringLiteral("802-11-wireless-security")];
        const QJsonValue eap = settings[QStringLiteral("802-1x")];
        QCOMPARE(security[QStringLiteral("key-mgmt")].toString(),
                 expectedKeyMgmt == u"open" ? QString() : expectedKeyMgmt);
        if (expectedKeyMgmt == u"wpa-psk")
            QCOMPARE(security[QStringLiteral("psk")].toString(), passphrase);
        if (expectedKeyMgmt == u"none")
            QCOMPARE(security[QStringLiteral("wep-key0")].toString(), passphrase);
        if (expectedKeyMgmt == u"wpa-eap") {
            QCOMPARE(eap[QStringLiteral("identity")].toString(), username);
            QCOMPARE(eap[QStringLiteral("password")].toString(), passphrase);
            QCOMPARE(eap[QStringLiteral("eap")][0].toString(), QStringLiteral("peap"));
            QCOMPARE(eap[QStringLiteral("phase2-auth")].toString(), QStringLiteral("mschapv2"));
        }
    }

    void joinSavedConnection()
    {
        // A saved connection for the SSID is activated as it is when no new key is given;
        // NetworkManager's access point object is named as the specific object.
        NmSettings infrastructure;
        infrastructure[QStringLiteral("802-11-wireless")] = {
            {QStringLiteral("mode"), QStringLiteral("infrastructure")}};
        const QString path = m.addSaved(QStringLiteral("Home"), "home", {}, infrastructure);
        QVERIFY(!path.isEmpty());
        m.mockCall(QStringLiteral("AddAccessPoint"), {QStringLiteral("02:00:00:00:01:00"), 0x188u});

        const auto home = MockDaemons::network("home", 1u << kCWSecurityWPA2Personal, 3);
        QCOMPARE(m.join(home), QString());
        QCOMPARE(m.mockCall(QStringLiteral("LastActivated")).toString(), path);
        QCOMPARE(m.counter(QStringLiteral("addandactivate")), 0);

        // A new passphrase replaces the saved one: same entry, same name, no second one.
        QCOMPARE(m.join(home, {{kCWAssocKeyPassphrase, QStringLiteral("new passphrase")}}),
                 QString());
        QCOMPARE(m.counter(QStringLiteral("addandactivate")), 0);
        QCOMPARE(m.mockCall(QStringLiteral("LastActivated")).toString(), path);
        const QJsonObject updated = m.json(QStringLiteral("SavedSettingsJson"),
                                           {QVariant::fromValue(QDBusObjectPath(path))});
        QCOMPARE(updated[QStringLiteral("connection")][QStringLiteral("id")].toString(),
                 QStringLiteral("Home"));
        QCOMPARE(
            updated[QStringLiteral("802-11-wireless-security")][QStringLiteral("psk")].toString(),
            QStringLiteral("new passphrase"));

        // A network without a saved connection gets a new one.
        QCOMPARE(m.join(MockDaemons::network("cafe", 1u << kCWSecurityWPA2Personal, 3),
                        {{kCWAssocKeyPassphrase, QStringLiteral("espresso")}}),
                 QString());
        QCOMPARE(m.counter(QStringLiteral("addandactivate")), 1);
        QVERIFY(m.lastSettings()
                    .value(QStringLiteral("_specific"))
                    .toString()
                    .contains(u"AccessPoint"));
    }

    void adhoc_data()
    {
        QTest::addColumn<QVariantMap>("parameters");
        QTest::addColumn<QString>("expectedError");
        QTest::addColumn<QString>("expectedSsidHex");
        QTest::addColumn<int>("expectedChannel");
        QTest::addColumn<QString>("expectedBand");

        const QString party = QStringLiteral("party");
        const QString partyHex = QStringLiteral("hex:7061727479");
        QTest::newRow("open on 11") << QVariantMap{{kCWIBSSKeySSID, party}, {kCWIBSSKeyChannel, 11}}
                                    << QString() << partyHex << 11 << QStringLiteral("bg");
        QTest::newRow("wep key on 36")
            << QVariantMap{{kCWIBSSKeySSID, party},
                           {kCWIBSSKeyChannel, 36},
                           {kCWIBSSKeyPassphrase, QStringLiteral("0123456789abc")}}
            << QString() << partyHex << 36 << QStringLiteral("a");
        QTest::newRow("wpa passphrase")
            << QVariantMap{{kCWIBSSKeySSID, party},
                           {kCWIBSSKeyPassphrase, QStringLiteral("a long wpa passphrase")}}
            << QStringLiteral(
                   "NetworkManager can protect an ad-hoc network only with a WEP key: 5 or "
                   "13 characters, or 10 or 26 hexadecimal digits")
            << QString() << 0 << QString();
    }

    void adhoc()
    {
        QFETCH(QVariantMap, parameters);
        QFETCH(QString, expectedError);
        QFETCH(QString, expectedSsidHex);
        QFETCH(int, expectedChannel);
        QFETCH(QString, expectedBand);

        const CWError error = m.run([&](auto done) {
            m.connector->enableIBSS(MockDaemons::kIf, parameters, QStringLiteral("this-host"),
                                    done);
        });
        QCOMPARE(error.localizedDescription(), expectedError);
        if (!error.isNull()) {
            QCOMPARE(m.counter(QStringLiteral("addandactivate")), 0);
            return;
        }
        const QJsonValue wireless = m.lastSettings()[QStringLiteral("802-11-wireless")];
        QCOMPARE(wireless[QStringLiteral("mode")].toString(), QStringLiteral("adhoc"));
        QCOMPARE(wireless[QStringLiteral("ssid")].toString(), expectedSsidHex);
        QCOMPARE(wireless[QStringLiteral("channel")].toInt(), expectedChannel);
        QCOMPARE(wireless[QStringLiteral("band")].toString(), expectedBand);
    }

    void disconnectAndScan()
    {
        CWError error;
        QVERIFY(m.connector->disassociate(MockDaemons::kIf, &error));
        QCOMPARE(m.counter(QStringLiteral("disconnect")), 1);
        QVERIFY(!m.connector->disassociate(QStringLiteral("wlan9"), &error));
        QCOMPARE(error.localizedDescription(),
                 QStringLiteral("NetworkManager does not manage wlan9"));
        QCOMPARE(m.counter(QStringLiteral("disconnect")), 1);

        const QString device = m.nm->deviceForInterface(MockDaemons::kIf, nullptr);
        QVERIFY(!device.isEmpty());
        QVERIFY(m.nm->requestScan(device));
        QVERIFY(!m.nm->requestScan(device)); // rate-limited
        QTRY_COMPARE(m.counter(QStringLiteral("scan")), 1);
        // "Already scanning" is no error worth reporting; requests keep going out.
        m.nm->setScanInterval(0);
        m.mockCall(QStringLiteral("SetScanBusy"), {true});
        QVERIFY(m.nm->requestScan(device));
        QVERIFY(m.nm->requestScan(device));
        QTRY_COMPARE(m.counter(QStringLiteral("scan")), 3);
    }

    void savedProfiles()
    {
        auto section = [](const char *name, const QVariantMap &values) {
            NmSettings s;
            s[QLatin1String(name)] = values;
            return s;
        };
        const NmSettings eap =
            section("802-1x", {{QStringLiteral("identity"), QStringLiteral("alice")},
                               {QStringLiteral("eap"), QStringList{QStringLiteral("peap")}}});
        const QString wpaEap = QStringLiteral("wpa-eap");
        m.addSaved(QStringLiteral("Work"), "corp", wpaEap, eap,
                   section("802-1x", {{QStringLiteral("password"), QStringLiteral("s3cret")}}));
        m.addSaved(QStringLiteral("Home"), "home", QStringLiteral("wpa-psk"), {},
                   section("802-11-wireless-security",
                           {{QStringLiteral("psk"), QStringLiteral("home passphrase")}}));
        NmSettings wired;
        wired[QStringLiteral("connection")] = {
            {QStringLiteral("id"), QStringLiteral("Cable")},
            {QStringLiteral("type"), QStringLiteral("802-3-ethernet")}};
        m.mockCall(QStringLiteral("AddSavedConnection"),
                   {QVariant::fromValue(wired), QVariant::fromValue(NmSettings())});
        m.addSaved(QStringLiteral("Guest"), "guest", wpaEap, eap);

        // Through the backend, as the join dialog asks for them; NetworkManager kept Guest's
        // secret.
        const auto profiles = m.makeBackend()->allUser8021XProfiles();
        QCOMPARE(profiles.size(), 2);
        QCOMPARE(QStringList({profiles[0]->userDefinedName(), profiles[0]->username(),
                              profiles[0]->password(), profiles[1]->userDefinedName()}),
                 QStringList({"Work", "alice", "s3cret", "Guest"}));
        QVERIFY(profiles[1]->password().isNull());

        const auto home = m.profiles->profileForSsid("home");
        QVERIFY(home && !home->user8021XProfile());
        QCOMPARE(home->passphrase(), QStringLiteral("home passphrase"));
        const auto corp = m.profiles->profileForSsid("corp");
        QVERIFY(corp && corp->user8021XProfile());
        QCOMPARE(corp->user8021XProfile()->username(), QStringLiteral("alice"));
        QVERIFY(!m.profiles->profileForSsid("elsewhere"));
    }

    void authorization_data()
    {
        QTest::addColumn<QString>("allowed");
        QTest::addColumn<bool>("polkitRunning");
        QTest::addColumn<QString>("expectedError");

        QTest::newRow("granted") << PolkitClient::networkControlAction() << true << QString();
        QTest::newRow("refused")
            << QStringLiteral("org.example.other") << true
            << QStringLiteral(
                   "Not permitted: the system's policy does not let this user control the network");
        QTest::newRow("no polkit") << QString() << false << QString();
    }

    void authorization()
    {
        QFETCH(QString, allowed);
        QFETCH(bool, polkitRunning);
        QFETCH(QString, expectedError);

        if (polkitRunning) {
            QVERIFY(m.polkitCall(QStringLiteral("SetAllowed"), {QStringList{allowed}}));
        } else {
            m.stopPolkit();
            QTRY_VERIFY(!m.registered(MockDaemons::kPolkitService));
        }
        // The prompting form and the quiet synchronous one, each on a backend of its own (a
        // backend keeps a granted authorization for a while).
        const auto backend = m.makeBackend();
        CWError error = m.run([&](auto done) {
            backend->obtainAuthorizationAsync(QStringLiteral("system.preferences"), 19, done);
        });
        QCOMPARE(error.localizedDescription(), expectedError);
        QCOMPARE(
            m.makeBackend()->obtainAuthorization(QStringLiteral("system.preferences"), 19, &error),
            expectedError.isEmpty());
        QCOMPARE(error.localizedDescription(), expectedError);
    }

    void daemonDisappears()
    {
        CWError error;
        QVERIFY(m.connector->setPower(true, &error));
        m.stopNetworkManager();
        QTRY_VERIFY(!m.registered(MockDaemons::kNmService));

        const QString gone = QStringLiteral("NetworkManager is not running");
        QVERIFY(!m.connector->setPower(false, &error));
        QCOMPARE(error.code(), int(kCWErrorServiceUnavailable));
        const auto x = MockDaemons::network("x");
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
        QTest::newRow("join, slow network") << QStringLiteral("join") << 0u << slowOk << QString();
        // The outcome signals come before the reply that names the active connection.
        QTest::newRow("join, joined before the reply")
            << QStringLiteral("join") << 500u << QList<uint>{2, 1, 0, 50} << QString();
        QTest::newRow("join, refused before the reply")
            << QStringLiteral("join") << 500u << QList<uint>{4, 3, 7, 50}
            << QStringLiteral("The passphrase was rejected");
        QTest::newRow("saved network, slow daemon")
            << QStringLiteral("saved") << 500u << slowOk << QString();
        QTest::newRow("ad-hoc, slow") << QStringLiteral("adhoc") << 400u << slowOk << QString();
    }

    void lateAnswers()
    {
        QFETCH(QString, action);
        QFETCH(uint, replyDelay);
        QFETCH(QList<uint>, outcome);
        QFETCH(QString, expectedError);

        if (action == u"saved")
            m.addSaved(QStringLiteral("Home"), "home");
        m.connector->setActivationTimeout(5000);
        m.mockCall(QStringLiteral("SetOutcome"), {outcome[0], outcome[1], outcome[2], outcome[3]});
        m.mockCall(QStringLiteral("SetReplyDelay"), {replyDelay});

        startTicking();
        const auto net = MockDaemons::network(action == u"saved" ? "home" : "late");
        QElapsedTimer clock;
        clock.start();
        const auto answer = m.start([&](auto done) {
            if (action == u"adhoc")
                m.connector->enableIBSS(m.kIf, {{kCWIBSSKeySSID, QStringLiteral("late")}}, {},
                                        done);
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
        QVERIFY2(ticks >= 10,
                 qPrintable(QStringLiteral("%1 ticks in %2 ms").arg(ticks).arg(waited)));
        QTest::qWait(300); // later signals of the same activation change nothing
        QCOMPARE(answer->count, 1);
        QVERIFY(!m.connector->isJoining(m.kIf));
    }

    void oneJoinAtATime()
    {
        m.mockCall(QStringLiteral("SetOutcome"), {2u, 1u, 0u, 600u});
        const auto a = MockDaemons::network("first");
        const auto b = MockDaemons::network("second");
        const auto first = m.start([&](auto done) { m.connector->associate(m.kIf, *a, {}, done); });
        const auto second =
            m.start([&](auto done) { m.connector->associate(m.kIf, *b, {}, done); });
        const auto adhoc = m.start(
            [&](auto done) { m.connector->enableIBSS(m.kIf, {}, QStringLiteral("host"), done); });
        for (const auto &refused : {second, adhoc}) {
            QCOMPARE(refused->count, 1);
            QCOMPARE(refused->error.localizedDescription(),
                     QStringLiteral("wlan0 is still joining another network"));
            QCOMPARE(refused->error.code(), int(kCWErrorBusy));
        }
        QCOMPARE(first->count, 0);
        QVERIFY(m.waitFor(first));
        QVERIFY(first->error.isNull());
        QCOMPARE(m.counter(QStringLiteral("addandactivate")), 1);
        // Once it is over, the next one goes ahead.
        QCOMPARE(m.join(b), QString());
        QCOMPARE(m.counter(QStringLiteral("addandactivate")), 2);
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
        m.mockCall(QStringLiteral("SetOutcome"), {0u, 0u, 0u, 0u}); // never answers
        m.mockCall(QStringLiteral("SetReplyDelay"), {replyDelay});
        const auto net = MockDaemons::network("gone");
        const auto answer =
            m.start([&](auto done) { m.connector->associate(m.kIf, *net, {}, done); });
        QTest::qWait(300);
        QCOMPARE(answer->count, 0);
        m.stopNetworkManager();
        QVERIFY(m.waitFor(answer, 5000));
        QCOMPARE(answer->error.localizedDescription(),
                 QStringLiteral("NetworkManager is not running"));
        QCOMPARE(answer->error.code(), int(kCWErrorServiceUnavailable));
        QTest::qWait(200);
        QCOMPARE(answer->count, 1);
        QVERIFY(!m.connector->isJoining(m.kIf));
    }

    void authorizationAnsweredLate_data()
    {
        QTest::addColumn<bool>("allowed");
        QTest::addColumn<int>("releaseAfterMs"); // -1: nobody at the prompt answers
        QTest::addColumn<QString>("expectedError");

        QTest::newRow("granted after a while") << true << 500 << QString();
        QTest::newRow("refused after a while")
            << false << 500
            << QStringLiteral(
                   "Not permitted: the system's policy does not let this user control the network");
        QTest::newRow("nobody answers")
            << true << -1 << QStringLiteral("Not permitted: the authorization request timed out");
    }

    void authorizationAnsweredLate()
    {
        QFETCH(bool, allowed);
        QFETCH(int, releaseAfterMs);
        QFETCH(QString, expectedError);

        QVERIFY(m.polkitCall(
            QStringLiteral("SetAllowed"),
            {QStringList{allowed ? PolkitClient::networkControlAction() : QString()}}));
        // The prompt is up; the user reads it.
        QVERIFY(m.polkitCall(QStringLiteral("SimulateHang"), {true}));
        const auto backend = m.makeBackend();
        backend->setAuthorizationPromptTimeout(1000);
        startTicking();
        // Two callers ask while the prompt is up; both get the one answer.
        QList<std::shared_ptr<MockDaemons::Answer>> answers;
        for (int i = 0; i < 2; ++i)
            answers.append(m.start([&](auto done) {
                backend->obtainAuthorizationAsync(QStringLiteral("system.preferences"), 19, done);
            }));
        QCOMPARE(answers[0]->count, 0);
        QCOMPARE(ticks, 0);
        if (releaseAfterMs >= 0) {
            QTest::qWait(releaseAfterMs);
            QCOMPARE(answers[0]->count, 0);
            QVERIFY(m.polkitCall(QStringLiteral("ReleaseHangingCalls"), {}));
        }
        for (const auto &answer : answers) {
            QVERIFY(m.waitFor(answer, 5000));
            QCOMPARE(answer->error.localizedDescription(), expectedError);
        }
        QVERIFY2(ticks >= 20, qPrintable(QString::number(ticks)));
        if (expectedError.isEmpty()) {
            // Granted a moment ago: the next cycle does not ask polkit again.
            const auto again = m.start([&](auto done) {
                backend->obtainAuthorizationAsync(QStringLiteral("system.preferences"), 19, done);
            });
            QCOMPARE(again->count, 1);
            QVERIFY(again->error.isNull());
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

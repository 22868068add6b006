// SPDX-License-Identifier: GPL-3.0-or-later
// The Linux backend's NetworkManager and polkit side against python-dbusmock daemons on a
// private bus: power, joining (open, WEP, WPA2, 802.1X, saved), ad-hoc, disconnect, saved
// profiles, authorization and a daemon that goes away and comes back.

#include "wireless/CWKeys.h"
#include "wireless/CWTypes.h"
#include "wireless/dbusmock/MockDaemons.h"
#include "wireless/linux/PolkitClient.h"

#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QJsonArray>
#include <QTest>

class TestLinuxNetworkManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { m.stopBus(); }
    void init();
    void cleanup();

    void power();
    void join_data();
    void join();
    void joinSavedConnection();
    void adhoc_data();
    void adhoc();
    void disconnect();
    void scanRequests();
    void savedProfiles();
    void authorization_data();
    void authorization();
    void daemonDisappears();

private:
    MockDaemons m;
};

void TestLinuxNetworkManager::initTestCase()
{
    const QString missing = m.missing();
    // CI installs them: there a missing daemon is a failure, not a reason to skip.
    if (!missing.isEmpty() && qgetenv("CI") == "true")
        QFAIL(qPrintable(missing));
    if (!missing.isEmpty())
        QSKIP(qPrintable(missing));
    QVERIFY(m.startBus());
}

void TestLinuxNetworkManager::init()
{
    QVERIFY(m.startDaemons(this));
}

void TestLinuxNetworkManager::cleanup()
{
    const QString twice = m.stopDaemons();
    QVERIFY2(twice.isEmpty(), qPrintable(twice));
}

void TestLinuxNetworkManager::power()
{
    CWError error = m.run([&](auto done) { m.connector->setPower(false, done); });
    QVERIFY(error.isNull());
    QCOMPARE(m.nm->wirelessEnabled(), std::optional<bool>(false));
    QVERIFY(m.run([&](auto done) { m.connector->setPower(true, done); }).isNull());
    QCOMPARE(m.nm->wirelessEnabled(), std::optional<bool>(true));
    // The synchronous form, for callers that need the answer before going on.
    QVERIFY(m.connector->setPower(false, &error));
    QCOMPARE(m.nm->wirelessEnabled(), std::optional<bool>(false));

    // A hardware switch in the off position: NetworkManager cannot help.
    QDBusMessage set = QDBusMessage::createMethodCall(
        MockDaemons::kNmService, MockDaemons::kNmPath,
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Set"));
    set.setArguments({MockDaemons::kNmService, QStringLiteral("WirelessHardwareEnabled"),
                      QVariant::fromValue(QDBusVariant(false))});
    QCOMPARE(m.bus().call(set).type(), QDBusMessage::ReplyMessage);
    QVERIFY(!m.connector->setPower(true, &error));
    QCOMPARE(error.localizedDescription(),
             QStringLiteral("Wi-Fi is switched off by a hardware switch"));
    QCOMPARE(error.code(), int(kCWErrorPoweredOff));
    error = m.run([&](auto done) { m.connector->setPower(true, done); });
    QCOMPARE(error.localizedDescription(),
             QStringLiteral("Wi-Fi is switched off by a hardware switch"));
    QCOMPARE(error.code(), int(kCWErrorPoweredOff));
    QCOMPARE(m.nm->wirelessEnabled(), std::optional<bool>(false));
}

void TestLinuxNetworkManager::join_data()
{
    QTest::addColumn<unsigned>("securities");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("passphrase");
    QTest::addColumn<QString>("username");
    QTest::addColumn<QList<uint>>("outcome"); // active state, reason, device reason
    QTest::addColumn<QString>("expectedError");
    QTest::addColumn<QString>("expectedKeyMgmt");

    const QList<uint> ok{2, 1, 0};
    QTest::newRow("open") << 1u << int(kCWSecurityModeOpen) << QString() << QString() << ok
                          << QString() << QString();
    QTest::newRow("wep") << (1u << kCWSecurityWEP) << int(kCWSecurityModeWEP)
                         << QStringLiteral("abcde") << QString() << ok << QString()
                         << QStringLiteral("none");
    QTest::newRow("wpa2") << (1u << kCWSecurityWPA2Personal) << int(kCWSecurityModeWPA2_PSK)
                          << QStringLiteral("correct horse") << QString() << ok << QString()
                          << QStringLiteral("wpa-psk");
    QTest::newRow("enterprise") << (1u << kCWSecurityWPA2Enterprise)
                                << int(kCWSecurityModeWPA2_Enterprise) << QStringLiteral("secret")
                                << QStringLiteral("alice") << ok << QString()
                                << QStringLiteral("wpa-eap");
    QTest::newRow("wrong passphrase")
        << (1u << kCWSecurityWPA2Personal) << int(kCWSecurityModeWPA2_PSK)
        << QStringLiteral("not the key") << QString() << QList<uint>{4, 3, 7}
        << QStringLiteral("The passphrase was rejected") << QStringLiteral("wpa-psk");
    QTest::newRow("no answer") << (1u << kCWSecurityWPA2Personal) << int(kCWSecurityModeWPA2_PSK)
                               << QStringLiteral("correct horse") << QString()
                               << QList<uint>{4, 6, 0}
                               << QStringLiteral("The network did not answer")
                               << QStringLiteral("wpa-psk");
    QTest::newRow("silence") << 1u << int(kCWSecurityModeOpen) << QString() << QString()
                             << QList<uint>{0, 0, 0} << QStringLiteral("The network did not answer")
                             << QString();
    QTest::newRow("missing passphrase")
        << (1u << kCWSecurityWPA2Personal) << int(kCWSecurityModeWPA2_PSK) << QString() << QString()
        << ok << QStringLiteral("This WPA network needs a passphrase") << QString();
    QTest::newRow("short passphrase")
        << (1u << kCWSecurityWPA2Personal) << int(kCWSecurityModeWPA2_PSK)
        << QStringLiteral("short") << QString() << ok
        << QStringLiteral("A WPA passphrase has 8 to 63 characters, or 64 hexadecimal digits")
        << QString();
}

void TestLinuxNetworkManager::join()
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
    const auto net = MockDaemons::network(QByteArrayLiteral("caf\xc3\xa9\tnet"), securities, mode);
    const CWError error = m.run([&](auto done) {
        m.connector->associate(QStringLiteral("wlan0"), *net, parameters, done);
    });
    QCOMPARE(error.localizedDescription(), expectedError);
    QCOMPARE(error.isNull(), expectedError.isEmpty());
    QVERIFY(!m.connector->isJoining(QStringLiteral("wlan0")));
    if (expectedKeyMgmt.isEmpty() && !expectedError.isEmpty() && outcome[0] == 2)
        return; // refused before NetworkManager was asked

    const QJsonObject settings = m.lastSettings();
    QCOMPARE(settings.value(QStringLiteral("802-11-wireless"))
                 .toObject()
                 .value(QStringLiteral("ssid"))
                 .toString(),
             QStringLiteral("hex:636166c3a9096e6574"));
    QCOMPARE(settings.value(QStringLiteral("connection"))
                 .toObject()
                 .value(QStringLiteral("id"))
                 .toString(),
             QStringLiteral("café"
                            "net"));
    const QJsonObject security =
        settings.value(QStringLiteral("802-11-wireless-security")).toObject();
    QCOMPARE(security.value(QStringLiteral("key-mgmt")).toString(), expectedKeyMgmt);
    if (expectedKeyMgmt == u"wpa-psk")
        QCOMPARE(security.value(QStringLiteral("psk")).toString(), passphrase);
    if (expectedKeyMgmt == u"none")
        QCOMPARE(security.value(QStringLiteral("wep-key0")).toString(), passphrase);
    if (expectedKeyMgmt == u"wpa-eap") {
        const QJsonObject eap = settings.value(QStringLiteral("802-1x")).toObject();
        QCOMPARE(eap.value(QStringLiteral("identity")).toString(), username);
        QCOMPARE(eap.value(QStringLiteral("password")).toString(), passphrase);
        QCOMPARE(eap.value(QStringLiteral("eap")).toArray().first().toString(),
                 QStringLiteral("peap"));
        QCOMPARE(eap.value(QStringLiteral("phase2-auth")).toString(), QStringLiteral("mschapv2"));
    }
}

void TestLinuxNetworkManager::joinSavedConnection()
{
    // A saved connection for the SSID is activated as it is when no new key is given;
    // NetworkManager's access point object is named as the specific object.
    NmSettings saved;
    saved[QStringLiteral("connection")] = {
        {QStringLiteral("id"), QStringLiteral("Home")},
        {QStringLiteral("type"), QStringLiteral("802-11-wireless")}};
    saved[QStringLiteral("802-11-wireless")] = {
        {QStringLiteral("ssid"), QByteArray("home")},
        {QStringLiteral("mode"), QStringLiteral("infrastructure")}};
    const QString path = m.mockCall(QStringLiteral("AddSavedConnection"),
                                    {QVariant::fromValue(saved), QVariant::fromValue(NmSettings())})
                             .value<QDBusObjectPath>()
                             .path();
    QVERIFY(!path.isEmpty());
    m.mockCall(QStringLiteral("AddAccessPoint"), {QStringLiteral("02:00:00:00:01:00"), 0x188u});

    const auto home = MockDaemons::network("home", 1u << kCWSecurityWPA2Personal, 3);
    QCOMPARE(m.run([&](auto done) {
                  m.connector->associate(QStringLiteral("wlan0"), *home, {}, done);
              }).localizedDescription(),
             QString());
    QCOMPARE(m.mockCall(QStringLiteral("LastActivated")).toString(), path);
    QCOMPARE(m.counter(QStringLiteral("addandactivate")), 0);

    // A new passphrase replaces the saved one: same entry, same name, no second one.
    QCOMPARE(m.run([&](auto done) {
                  m.connector->associate(
                      QStringLiteral("wlan0"), *home,
                      {{kCWAssocKeyPassphrase, QStringLiteral("new passphrase")}}, done);
              }).localizedDescription(),
             QString());
    QCOMPARE(m.counter(QStringLiteral("addandactivate")), 0);
    QCOMPARE(m.mockCall(QStringLiteral("LastActivated")).toString(), path);
    const QJsonObject updated =
        QJsonDocument::fromJson(m.mockCall(QStringLiteral("SavedSettingsJson"),
                                           {QVariant::fromValue(QDBusObjectPath(path))})
                                    .toString()
                                    .toUtf8())
            .object();
    QCOMPARE(updated.value(QStringLiteral("connection"))[QStringLiteral("id")].toString(),
             QStringLiteral("Home"));
    QCOMPARE(
        updated.value(QStringLiteral("802-11-wireless-security"))[QStringLiteral("psk")].toString(),
        QStringLiteral("new passphrase"));

    // A network without a saved connection gets a new one.
    const auto cafe = MockDaemons::network("cafe", 1u << kCWSecurityWPA2Personal, 3);
    QCOMPARE(m.run([&](auto done) {
                  m.connector->associate(QStringLiteral("wlan0"), *cafe,
                                         {{kCWAssocKeyPassphrase, QStringLiteral("espresso")}},
                                         done);
              }).localizedDescription(),
             QString());
    QCOMPARE(m.counter(QStringLiteral("addandactivate")), 1);
    QVERIFY(
        m.lastSettings().value(QStringLiteral("_specific")).toString().contains(u"AccessPoint"));
}

void TestLinuxNetworkManager::adhoc_data()
{
    QTest::addColumn<QVariantMap>("parameters");
    QTest::addColumn<QString>("expectedError");
    QTest::addColumn<QString>("expectedSsidHex");
    QTest::addColumn<int>("expectedChannel");
    QTest::addColumn<QString>("expectedBand");

    QTest::newRow("open on 11") << QVariantMap{{kCWIBSSKeySSID, QStringLiteral("party")},
                                               {kCWIBSSKeyChannel, 11}}
                                << QString() << QStringLiteral("hex:7061727479") << 11
                                << QStringLiteral("bg");
    QTest::newRow("wep key on 36")
        << QVariantMap{{kCWIBSSKeySSID, QStringLiteral("party")},
                       {kCWIBSSKeyChannel, 36},
                       {kCWIBSSKeyPassphrase, QStringLiteral("0123456789abc")}}
        << QString() << QStringLiteral("hex:7061727479") << 36 << QStringLiteral("a");
    QTest::newRow("no name") << QVariantMap{{kCWIBSSKeyChannel, 11}} << QString()
                             << QStringLiteral("hex:") +
                                    QString::fromLatin1(QByteArray("this-host").toHex())
                             << 11 << QStringLiteral("bg");
    QTest::newRow("wpa passphrase")
        << QVariantMap{{kCWIBSSKeySSID, QStringLiteral("party")},
                       {kCWIBSSKeyPassphrase, QStringLiteral("a long wpa passphrase")}}
        << QStringLiteral("NetworkManager can protect an ad-hoc network only with a WEP key: 5 or "
                          "13 characters, or 10 or 26 hexadecimal digits")
        << QString() << 0 << QString();
}

void TestLinuxNetworkManager::adhoc()
{
    QFETCH(QVariantMap, parameters);
    QFETCH(QString, expectedError);
    QFETCH(QString, expectedSsidHex);
    QFETCH(int, expectedChannel);
    QFETCH(QString, expectedBand);

    const CWError error = m.run([&](auto done) {
        m.connector->enableIBSS(QStringLiteral("wlan0"), parameters, QStringLiteral("this-host"),
                                done);
    });
    QCOMPARE(error.localizedDescription(), expectedError);
    if (!error.isNull()) {
        QCOMPARE(m.counter(QStringLiteral("addandactivate")), 0);
        return;
    }
    const QJsonObject wireless =
        m.lastSettings().value(QStringLiteral("802-11-wireless")).toObject();
    QCOMPARE(wireless.value(QStringLiteral("mode")).toString(), QStringLiteral("adhoc"));
    QCOMPARE(wireless.value(QStringLiteral("ssid")).toString(), expectedSsidHex);
    QCOMPARE(wireless.value(QStringLiteral("channel")).toInt(), expectedChannel);
    QCOMPARE(wireless.value(QStringLiteral("band")).toString(), expectedBand);
}

void TestLinuxNetworkManager::disconnect()
{
    CWError error;
    QVERIFY(m.connector->disassociate(QStringLiteral("wlan0"), &error));
    QCOMPARE(m.counter(QStringLiteral("disconnect")), 1);
    QVERIFY(!m.connector->disassociate(QStringLiteral("wlan9"), &error));
    QCOMPARE(error.localizedDescription(), QStringLiteral("NetworkManager does not manage wlan9"));
    QCOMPARE(m.counter(QStringLiteral("disconnect")), 1);
}

void TestLinuxNetworkManager::scanRequests()
{
    const QString device = m.nm->deviceForInterface(QStringLiteral("wlan0"), nullptr);
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

void TestLinuxNetworkManager::savedProfiles()
{
    NmSettings eap;
    eap[QStringLiteral("connection")] = {
        {QStringLiteral("id"), QStringLiteral("Work")},
        {QStringLiteral("type"), QStringLiteral("802-11-wireless")}};
    eap[QStringLiteral("802-11-wireless")] = {{QStringLiteral("ssid"), QByteArray("corp")}};
    eap[QStringLiteral("802-11-wireless-security")] = {
        {QStringLiteral("key-mgmt"), QStringLiteral("wpa-eap")}};
    eap[QStringLiteral("802-1x")] = {{QStringLiteral("identity"), QStringLiteral("alice")},
                                     {QStringLiteral("eap"), QStringList{QStringLiteral("peap")}}};
    NmSettings eapSecrets;
    eapSecrets[QStringLiteral("802-1x")] = {{QStringLiteral("password"), QStringLiteral("s3cret")}};
    NmSettings psk;
    psk[QStringLiteral("connection")] = {
        {QStringLiteral("id"), QStringLiteral("Home")},
        {QStringLiteral("type"), QStringLiteral("802-11-wireless")}};
    psk[QStringLiteral("802-11-wireless")] = {{QStringLiteral("ssid"), QByteArray("home")}};
    psk[QStringLiteral("802-11-wireless-security")] = {
        {QStringLiteral("key-mgmt"), QStringLiteral("wpa-psk")}};
    NmSettings pskSecrets;
    pskSecrets[QStringLiteral("802-11-wireless-security")] = {
        {QStringLiteral("psk"), QStringLiteral("home passphrase")}};
    NmSettings wired;
    wired[QStringLiteral("connection")] = {
        {QStringLiteral("id"), QStringLiteral("Cable")},
        {QStringLiteral("type"), QStringLiteral("802-3-ethernet")}};
    NmSettings eapNoSecrets = eap;
    eapNoSecrets[QStringLiteral("connection")][QStringLiteral("id")] = QStringLiteral("Guest");
    eapNoSecrets[QStringLiteral("802-11-wireless")][QStringLiteral("ssid")] = QByteArray("guest");
    for (const auto &[settings, secrets] :
         {std::pair{eap, eapSecrets}, std::pair{psk, pskSecrets}, std::pair{wired, NmSettings()},
          std::pair{eapNoSecrets, NmSettings()}})
        m.mockCall(QStringLiteral("AddSavedConnection"),
                   {QVariant::fromValue(settings), QVariant::fromValue(secrets)});

    // Through the backend, as the join dialog asks for them.
    LinuxBackend::Options options;
    options.bus = m.bus();
    options.networkManagerService = MockDaemons::kNmService;
    options.polkitService = MockDaemons::kPolkitService;
    LinuxBackend backend(options);
    const auto profiles = backend.allUser8021XProfiles();
    QCOMPARE(profiles.size(), 2);
    QCOMPARE(profiles[0]->userDefinedName(), QStringLiteral("Work"));
    QCOMPARE(profiles[0]->username(), QStringLiteral("alice"));
    QCOMPARE(profiles[0]->password(), QStringLiteral("s3cret"));
    QCOMPARE(profiles[1]->userDefinedName(), QStringLiteral("Guest"));
    QVERIFY(profiles[1]->password().isNull()); // NetworkManager kept the secret

    const auto home = m.profiles->profileForSsid("home");
    QVERIFY(home);
    QCOMPARE(home->passphrase(), QStringLiteral("home passphrase"));
    QVERIFY(!home->user8021XProfile());
    const auto corp = m.profiles->profileForSsid("corp");
    QVERIFY(corp && corp->user8021XProfile());
    QCOMPARE(corp->user8021XProfile()->username(), QStringLiteral("alice"));
    QVERIFY(!m.profiles->profileForSsid("elsewhere"));
}

void TestLinuxNetworkManager::authorization_data()
{
    QTest::addColumn<QString>("allowed");
    QTest::addColumn<bool>("polkitRunning");
    QTest::addColumn<bool>("expected");
    QTest::addColumn<QString>("expectedErrorStart");

    QTest::newRow("granted") << PolkitClient::networkControlAction() << true << true << QString();
    QTest::newRow("refused")
        << QStringLiteral("org.example.other") << true << false
        << QStringLiteral(
               "Not permitted: the system's policy does not let this user control the network");
    QTest::newRow("no polkit") << QString() << false << true << QString();
}

void TestLinuxNetworkManager::authorization()
{
    QFETCH(QString, allowed);
    QFETCH(bool, polkitRunning);
    QFETCH(bool, expected);
    QFETCH(QString, expectedErrorStart);

    if (polkitRunning) {
        QDBusMessage msg = QDBusMessage::createMethodCall(
            MockDaemons::kPolkitService, QStringLiteral("/org/freedesktop/PolicyKit1/Authority"),
            MockDaemons::kMockIface, QStringLiteral("SetAllowed"));
        msg.setArguments({QStringList{allowed}});
        QCOMPARE(m.bus().call(msg).type(), QDBusMessage::ReplyMessage);
    } else {
        m.stopPolkit();
        QTRY_VERIFY(!m.bus().interface()->isServiceRegistered(MockDaemons::kPolkitService).value());
    }
    // The prompting form and the quiet synchronous one, each on a backend of its own (a
    // backend keeps a granted authorization for a while).
    const auto backend = m.makeBackend();
    CWError error = m.run([&](auto done) {
        backend->obtainAuthorizationAsync(QStringLiteral("system.preferences"), 19, done);
    });
    QVERIFY2(error.localizedDescription().startsWith(expectedErrorStart),
             qPrintable(error.localizedDescription()));
    QCOMPARE(error.isNull(), expected);
    QCOMPARE(m.makeBackend()->obtainAuthorization(QStringLiteral("system.preferences"), 19, &error),
             expected);
    QVERIFY(error.localizedDescription().startsWith(expectedErrorStart));
    QCOMPARE(error.isNull(), expected);
}

void TestLinuxNetworkManager::daemonDisappears()
{
    CWError error;
    QVERIFY(m.connector->setPower(true, &error));
    m.stopNetworkManager();
    QTRY_VERIFY(!m.bus().interface()->isServiceRegistered(MockDaemons::kNmService).value());

    QVERIFY(!m.connector->setPower(false, &error));
    QCOMPARE(error.localizedDescription(), QStringLiteral("NetworkManager is not running"));
    QCOMPARE(error.code(), int(kCWErrorServiceUnavailable));
    error = m.run([&](auto done) { m.connector->setPower(false, done); });
    QCOMPARE(error.localizedDescription(), QStringLiteral("NetworkManager is not running"));
    const auto x = MockDaemons::network("x", 1, 0);
    error =
        m.run([&](auto done) { m.connector->associate(QStringLiteral("wlan0"), *x, {}, done); });
    QCOMPARE(error.localizedDescription(), QStringLiteral("NetworkManager is not running"));
    QCOMPARE(error.code(), int(kCWErrorServiceUnavailable));
    QVERIFY(!m.nm->wirelessEnabled(&error));
    QCOMPARE(error.localizedDescription(), QStringLiteral("NetworkManager is not running"));
    QVERIFY(m.profiles->user8021XProfiles().isEmpty());

    // Back again: the same objects work without a restart of the program.
    QVERIFY(m.startNetworkManager());
    QVERIFY(m.run([&](auto done) { m.connector->setPower(false, done); }).isNull());
    QCOMPARE(m.nm->wirelessEnabled(), std::optional<bool>(false));
    QCOMPARE(m.run([&](auto done) {
                  m.connector->associate(QStringLiteral("wlan0"), *x, {}, done);
              }).localizedDescription(),
             QString());
}

QTEST_GUILESS_MAIN(TestLinuxNetworkManager)
#include "tst_linux_networkmanager.moc"

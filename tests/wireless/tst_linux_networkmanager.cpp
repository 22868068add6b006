// SPDX-License-Identifier: GPL-3.0-or-later
// The Linux backend's NetworkManager and polkit side against python-dbusmock daemons on a
// private bus: power, joining (open, WEP, WPA2, 802.1X, saved), ad-hoc, disconnect, saved
// profiles, authorization and a daemon that goes away and comes back. The long actions
// answer through completions; every answer is counted, and cleanup() fails a test whose
// actions were answered twice, even after the daemons have gone.

#include "wireless/CWKeys.h"
#include "wireless/CWTypes.h"
#include "wireless/linux/LinuxBackend.h"
#include "wireless/linux/NetworkManagerClient.h"
#include "wireless/linux/NmConnector.h"
#include "wireless/linux/NmSavedProfiles.h"
#include "wireless/linux/PolkitClient.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <functional>
#include <memory>

namespace {

const QString kMockIface = QStringLiteral("org.freedesktop.DBus.Mock");
const QString kNmPath = QStringLiteral("/org/freedesktop/NetworkManager");
const QString kNmService = QStringLiteral("org.freedesktop.NetworkManager");
const QString kPolkitService = QStringLiteral("org.freedesktop.PolicyKit1");

QString findPythonWithDbusmock()
{
    for (const QString &candidate :
         {QStringLiteral("/usr/bin/python3"), QStringLiteral("python3")}) {
        QProcess probe;
        probe.start(candidate, {QStringLiteral("-c"), QStringLiteral("import dbusmock")});
        if (probe.waitForFinished(20000) && probe.exitStatus() == QProcess::NormalExit &&
            probe.exitCode() == 0)
            return candidate;
    }
    return {};
}

CWNetworkRef network(const QByteArray &ssid, unsigned securities, std::optional<int> mode,
                     const QString &bssid = QStringLiteral("02:00:00:00:01:00"))
{
    CWNetwork::Data d;
    d.ssidData = ssid;
    d.bssid = bssid;
    d.securities = securities;
    d.securityMode = mode;
    return CWNetwork::create(d);
}

// What came back through one completion.
struct Answer
{
    int count = 0;
    CWError error;
};

} // namespace

class TestLinuxNetworkManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void power();
    void join_data();
    void join();
    void joinSavedConnection();
    void lateAnswers_data();
    void lateAnswers();
    void oneJoinAtATime();
    void daemonVanishesMidJoin_data();
    void daemonVanishesMidJoin();
    void adhoc_data();
    void adhoc();
    void disconnect();
    void scanRequests();
    void savedProfiles();
    void authorization_data();
    void authorization();
    void authorizationAnsweredLate_data();
    void authorizationAnsweredLate();
    void daemonDisappears();

private:
    using Action = std::function<void(NmConnector::Completion)>;
    // Starts an action and returns its answer record at once.
    std::shared_ptr<Answer> start(const Action &action);
    // Runs an action and waits in the test's event loop for its answer.
    CWError run(const Action &action, int timeoutMs = 10000);
    static bool waitFor(const std::shared_ptr<Answer> &answer, int timeoutMs = 10000);
    std::unique_ptr<LinuxBackend> makeBackend();
    void polkitCall(const QString &method, const QVariantList &args);
    bool startMock(QProcess &process, const QStringList &templateArgs, const QString &service);
    void stopMock(QProcess &process);
    QVariant mockCall(const QString &method, const QVariantList &args = {});
    QJsonObject lastSettings();
    int counter(const QString &name);

    QTemporaryDir m_dir;
    QString m_python;
    QString m_address;
    QProcess m_daemon;
    QProcess m_nmMock;
    QProcess m_polkitMock;
    QList<std::shared_ptr<Answer>> m_answers;
    std::unique_ptr<QDBusConnection> m_bus;
    NetworkManagerClient *m_nm = nullptr;
    NmSavedProfiles *m_profiles = nullptr;
    NmConnector *m_connector = nullptr;
};

void TestLinuxNetworkManager::initTestCase()
{
    const QString daemon = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
    if (daemon.isEmpty())
        QSKIP("dbus-daemon is not installed (Debian package dbus)");
    m_python = findPythonWithDbusmock();
    if (m_python.isEmpty())
        QSKIP("python3 with dbusmock is not installed (Debian package python3-dbusmock)");
    QVERIFY(m_dir.isValid());
    const QString socket = m_dir.filePath(QStringLiteral("bus"));
    QFile config(m_dir.filePath(QStringLiteral("bus.conf")));
    QVERIFY(config.open(QIODevice::WriteOnly));
    config.write(QStringLiteral(
                     "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration "
                     "1.0//EN\" \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
                     "<busconfig><type>system</type><listen>unix:path=%1</listen>"
                     "<auth>EXTERNAL</auth><policy context=\"default\">"
                     "<allow user=\"*\"/><allow own=\"*\"/>"
                     "<allow send_type=\"method_call\"/><allow send_type=\"signal\"/>"
                     "<allow send_type=\"method_return\"/><allow send_type=\"error\"/>"
                     "<allow receive_type=\"method_call\"/><allow receive_type=\"signal\"/>"
                     "<allow receive_type=\"method_return\"/><allow receive_type=\"error\"/>"
                     "</policy></busconfig>\n")
                     .arg(socket)
                     .toUtf8());
    config.close();
    m_daemon.start(daemon, {QStringLiteral("--config-file=") + config.fileName(),
                            QStringLiteral("--nofork"), QStringLiteral("--nopidfile")});
    QVERIFY(m_daemon.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(socket), 10000);
    m_address = QStringLiteral("unix:path=") + socket;
    m_bus = std::make_unique<QDBusConnection>(
        QDBusConnection::connectToBus(m_address, QStringLiteral("corvane-mock-bus")));
    QTRY_VERIFY_WITH_TIMEOUT(m_bus->isConnected(), 10000);
    qDBusRegisterMetaType<NmSettings>();
}

void TestLinuxNetworkManager::cleanupTestCase()
{
    m_bus.reset();
    QDBusConnection::disconnectFromBus(QStringLiteral("corvane-mock-bus"));
    if (m_daemon.state() != QProcess::NotRunning) {
        m_daemon.terminate();
        m_daemon.waitForFinished(5000);
    }
}

bool TestLinuxNetworkManager::startMock(QProcess &process, const QStringList &templateArgs,
                                        const QString &service)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), m_address);
    process.setProcessEnvironment(env);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(m_python, QStringList{QStringLiteral("-m"), QStringLiteral("dbusmock"),
                                        QStringLiteral("--system")} +
                                templateArgs);
    if (!process.waitForStarted())
        return false;
    QDeadlineTimer deadline(20000);
    while (!deadline.hasExpired()) {
        if (m_bus->interface()->isServiceRegistered(service).value())
            return true;
        QTest::qWait(50);
    }
    return false;
}

void TestLinuxNetworkManager::stopMock(QProcess &process)
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(5000))
        process.kill();
    process.waitForFinished(5000);
}

void TestLinuxNetworkManager::init()
{
    const QString nmTemplate = QString::fromUtf8(qgetenv("CORVANE_SOURCE_DIR")) +
                               QStringLiteral("/tests/wireless/dbusmock/networkmanager.py");
    QVERIFY2(QFile::exists(nmTemplate), qPrintable(nmTemplate));
    QVERIFY(startMock(m_nmMock, {QStringLiteral("-t"), nmTemplate}, kNmService));
    QVERIFY(
        startMock(m_polkitMock, {QStringLiteral("-t"), QStringLiteral("polkitd")}, kPolkitService));
    m_nm = new NetworkManagerClient(*m_bus, kNmService, this);
    m_profiles = new NmSavedProfiles(m_nm, this);
    m_connector = new NmConnector(m_nm, m_profiles, this);
    m_connector->setActivationTimeout(3000);
}

void TestLinuxNetworkManager::cleanup()
{
    // The daemons leave while the connector still listens: an action that had already
    // answered must not answer again when it hears of that.
    stopMock(m_nmMock);
    stopMock(m_polkitMock);
    // Let the bus notice the names are gone before the next test starts new owners.
    QTRY_VERIFY(!m_bus->interface()->isServiceRegistered(kNmService).value());
    QTest::qWait(100);
    const QList<std::shared_ptr<Answer>> answers = std::exchange(m_answers, {});
    delete m_connector;
    delete m_profiles;
    delete m_nm;
    m_connector = nullptr;
    m_profiles = nullptr;
    m_nm = nullptr;
    for (const auto &answer : answers)
        QVERIFY2(answer->count <= 1, qPrintable(QStringLiteral("answered %1 times: %2")
                                                    .arg(answer->count)
                                                    .arg(answer->error.localizedDescription())));
}

std::shared_ptr<Answer> TestLinuxNetworkManager::start(const Action &action)
{
    auto answer = std::make_shared<Answer>();
    m_answers.append(answer);
    action([answer](const CWError &error) {
        ++answer->count;
        answer->error = error;
    });
    return answer;
}

bool TestLinuxNetworkManager::waitFor(const std::shared_ptr<Answer> &answer, int timeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    while (answer->count == 0 && !deadline.hasExpired())
        QTest::qWait(10);
    return answer->count > 0;
}

CWError TestLinuxNetworkManager::run(const Action &action, int timeoutMs)
{
    const auto answer = start(action);
    if (!waitFor(answer, timeoutMs))
        return CWError(-1, QStringLiteral("(no answer)"));
    return answer->error;
}

std::unique_ptr<LinuxBackend> TestLinuxNetworkManager::makeBackend()
{
    LinuxBackend::Options options;
    options.bus = *m_bus;
    options.networkManagerService = kNmService;
    options.polkitService = kPolkitService;
    return std::make_unique<LinuxBackend>(options);
}

void TestLinuxNetworkManager::polkitCall(const QString &method, const QVariantList &args)
{
    QDBusMessage msg = QDBusMessage::createMethodCall(
        kPolkitService, QStringLiteral("/org/freedesktop/PolicyKit1/Authority"), kMockIface,
        method);
    msg.setArguments(args);
    QCOMPARE(m_bus->call(msg).type(), QDBusMessage::ReplyMessage);
}

QVariant TestLinuxNetworkManager::mockCall(const QString &method, const QVariantList &args)
{
    QDBusMessage msg = QDBusMessage::createMethodCall(kNmService, kNmPath, kMockIface, method);
    msg.setArguments(args);
    const QDBusMessage reply = m_bus->call(msg, QDBus::Block, 5000);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        qWarning() << "mock call" << method << "failed:" << reply.errorMessage();
        return {};
    }
    return reply.arguments().value(0);
}

QJsonObject TestLinuxNetworkManager::lastSettings()
{
    return QJsonDocument::fromJson(mockCall(QStringLiteral("LastSettingsJson")).toString().toUtf8())
        .object();
}

int TestLinuxNetworkManager::counter(const QString &name)
{
    const QVariant v = mockCall(QStringLiteral("Counters"));
    return qdbus_cast<QMap<QString, int>>(v).value(name, -1);
}

void TestLinuxNetworkManager::power()
{
    CWError error = run([&](auto done) { m_connector->setPower(false, done); });
    QVERIFY(error.isNull());
    QCOMPARE(m_nm->wirelessEnabled(), std::optional<bool>(false));
    QVERIFY(run([&](auto done) { m_connector->setPower(true, done); }).isNull());
    QCOMPARE(m_nm->wirelessEnabled(), std::optional<bool>(true));
    // The synchronous form, for callers that need the answer before going on.
    QVERIFY(m_connector->setPower(false, &error));
    QCOMPARE(m_nm->wirelessEnabled(), std::optional<bool>(false));

    // A hardware switch in the off position: NetworkManager cannot help.
    QDBusMessage set = QDBusMessage::createMethodCall(
        kNmService, kNmPath, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Set"));
    set.setArguments({kNmService, QStringLiteral("WirelessHardwareEnabled"),
                      QVariant::fromValue(QDBusVariant(false))});
    QCOMPARE(m_bus->call(set).type(), QDBusMessage::ReplyMessage);
    QVERIFY(!m_connector->setPower(true, &error));
    QCOMPARE(error.localizedDescription(),
             QStringLiteral("Wi-Fi is switched off by a hardware switch"));
    QCOMPARE(error.code(), int(kCWErrorPoweredOff));
    error = run([&](auto done) { m_connector->setPower(true, done); });
    QCOMPARE(error.localizedDescription(),
             QStringLiteral("Wi-Fi is switched off by a hardware switch"));
    QCOMPARE(error.code(), int(kCWErrorPoweredOff));
    QCOMPARE(m_nm->wirelessEnabled(), std::optional<bool>(false));
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

    m_connector->setActivationTimeout(1000);
    mockCall(QStringLiteral("SetOutcome"),
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
    const auto net = network(QByteArrayLiteral("caf\xc3\xa9\tnet"), securities, mode);
    const CWError error = run([&](auto done) {
        m_connector->associate(QStringLiteral("wlan0"), *net, parameters, done);
    });
    QCOMPARE(error.localizedDescription(), expectedError);
    QCOMPARE(error.isNull(), expectedError.isEmpty());
    QVERIFY(!m_connector->isJoining(QStringLiteral("wlan0")));
    if (expectedKeyMgmt.isEmpty() && !expectedError.isEmpty() && outcome[0] == 2)
        return; // refused before NetworkManager was asked

    const QJsonObject settings = lastSettings();
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
    const QString path = mockCall(QStringLiteral("AddSavedConnection"),
                                  {QVariant::fromValue(saved), QVariant::fromValue(NmSettings())})
                             .value<QDBusObjectPath>()
                             .path();
    QVERIFY(!path.isEmpty());
    mockCall(QStringLiteral("AddAccessPoint"), {QStringLiteral("02:00:00:00:01:00"), 0x188u});

    const auto home = network("home", 1u << kCWSecurityWPA2Personal, 3);
    QCOMPARE(run([&](auto done) {
                 m_connector->associate(QStringLiteral("wlan0"), *home, {}, done);
             }).localizedDescription(),
             QString());
    QCOMPARE(mockCall(QStringLiteral("LastActivated")).toString(), path);
    QCOMPARE(counter(QStringLiteral("addandactivate")), 0);

    // A new passphrase replaces the saved one: same entry, same name, no second one.
    QCOMPARE(run([&](auto done) {
                 m_connector->associate(QStringLiteral("wlan0"), *home,
                                        {{kCWAssocKeyPassphrase, QStringLiteral("new passphrase")}},
                                        done);
             }).localizedDescription(),
             QString());
    QCOMPARE(counter(QStringLiteral("addandactivate")), 0);
    QCOMPARE(mockCall(QStringLiteral("LastActivated")).toString(), path);
    const QJsonObject updated =
        QJsonDocument::fromJson(mockCall(QStringLiteral("SavedSettingsJson"),
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
    const auto cafe = network("cafe", 1u << kCWSecurityWPA2Personal, 3);
    QCOMPARE(run([&](auto done) {
                 m_connector->associate(QStringLiteral("wlan0"), *cafe,
                                        {{kCWAssocKeyPassphrase, QStringLiteral("espresso")}},
                                        done);
             }).localizedDescription(),
             QString());
    QCOMPARE(counter(QStringLiteral("addandactivate")), 1);
    QVERIFY(lastSettings().value(QStringLiteral("_specific")).toString().contains(u"AccessPoint"));
}

void TestLinuxNetworkManager::lateAnswers_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<uint>("replyDelay");     // of the activation call itself
    QTest::addColumn<QList<uint>>("outcome"); // active state, reason, device reason, delay
    QTest::addColumn<QString>("expectedError");

    const QList<uint> slowOk{2, 1, 0, 600};
    QTest::newRow("join, slow network") << QStringLiteral("join") << 0u << slowOk << QString();
    QTest::newRow("join, slow daemon")
        << QStringLiteral("join") << 600u << QList<uint>{2, 1, 0, 700} << QString();
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

void TestLinuxNetworkManager::lateAnswers()
{
    QFETCH(QString, action);
    QFETCH(uint, replyDelay);
    QFETCH(QList<uint>, outcome);
    QFETCH(QString, expectedError);

    if (action == u"saved") {
        NmSettings saved;
        saved[QStringLiteral("connection")] = {{QStringLiteral("id"), QStringLiteral("Home")}};
        saved[QStringLiteral("802-11-wireless")] = {{QStringLiteral("ssid"), QByteArray("home")}};
        mockCall(QStringLiteral("AddSavedConnection"),
                 {QVariant::fromValue(saved), QVariant::fromValue(NmSettings())});
    }
    m_connector->setActivationTimeout(5000);
    mockCall(QStringLiteral("SetOutcome"), {outcome[0], outcome[1], outcome[2], outcome[3]});
    mockCall(QStringLiteral("SetReplyDelay"), {replyDelay});

    // Stands for the window's clock: it must keep ticking while the join is out.
    int ticks = 0;
    QTimer ticker;
    connect(&ticker, &QTimer::timeout, [&] { ++ticks; });
    ticker.start(20);
    const auto net = network(action == u"saved" ? "home" : "late", 1, 0);
    QElapsedTimer clock;
    clock.start();
    const auto answer = start([&](auto done) {
        if (action == u"adhoc")
            m_connector->enableIBSS(QStringLiteral("wlan0"),
                                    {{kCWIBSSKeySSID, QStringLiteral("late")}}, {}, done);
        else
            m_connector->associate(QStringLiteral("wlan0"), *net, {}, done);
    });
    // Nothing was run in between: no answer, no tick before the call returned.
    QCOMPARE(answer->count, 0);
    QCOMPARE(ticks, 0);
    QVERIFY(waitFor(answer));
    const qint64 waited = clock.elapsed();
    QCOMPARE(answer->error.localizedDescription(), expectedError);
    QVERIFY2(waited >= std::min<qint64>(replyDelay, outcome[3]) - 50,
             qPrintable(QString::number(waited)));
    QVERIFY2(ticks >= 10, qPrintable(QStringLiteral("%1 ticks in %2 ms").arg(ticks).arg(waited)));
    QTest::qWait(300); // later signals of the same activation change nothing
    QCOMPARE(answer->count, 1);
    QVERIFY(!m_connector->isJoining(QStringLiteral("wlan0")));
}

void TestLinuxNetworkManager::oneJoinAtATime()
{
    mockCall(QStringLiteral("SetOutcome"), {2u, 1u, 0u, 600u});
    const auto a = network("first", 1, 0);
    const auto b = network("second", 1, 0);
    const auto first =
        start([&](auto done) { m_connector->associate(QStringLiteral("wlan0"), *a, {}, done); });
    const auto second =
        start([&](auto done) { m_connector->associate(QStringLiteral("wlan0"), *b, {}, done); });
    const auto adhoc = start([&](auto done) {
        m_connector->enableIBSS(QStringLiteral("wlan0"), {}, QStringLiteral("host"), done);
    });
    for (const auto &refused : {second, adhoc}) {
        QCOMPARE(refused->count, 1);
        QCOMPARE(refused->error.localizedDescription(),
                 QStringLiteral("wlan0 is still joining another network"));
        QCOMPARE(refused->error.code(), int(kCWErrorBusy));
    }
    QCOMPARE(first->count, 0);
    QVERIFY(waitFor(first));
    QVERIFY(first->error.isNull());
    QCOMPARE(counter(QStringLiteral("addandactivate")), 1);
    // Once it is over, the next one goes ahead.
    QCOMPARE(run([&](auto done) {
                 m_connector->associate(QStringLiteral("wlan0"), *b, {}, done);
             }).localizedDescription(),
             QString());
    QCOMPARE(counter(QStringLiteral("addandactivate")), 2);
}

void TestLinuxNetworkManager::daemonVanishesMidJoin_data()
{
    QTest::addColumn<uint>("replyDelay");
    QTest::newRow("while the network is asked") << 0u;
    QTest::newRow("before NetworkManager replied") << 20000u;
}

void TestLinuxNetworkManager::daemonVanishesMidJoin()
{
    QFETCH(uint, replyDelay);
    m_connector->setActivationTimeout(20000);
    mockCall(QStringLiteral("SetOutcome"), {0u, 0u, 0u, 0u}); // never answers
    mockCall(QStringLiteral("SetReplyDelay"), {replyDelay});
    const auto net = network("gone", 1, 0);
    const auto answer =
        start([&](auto done) { m_connector->associate(QStringLiteral("wlan0"), *net, {}, done); });
    QTest::qWait(300);
    QCOMPARE(answer->count, 0);
    stopMock(m_nmMock);
    QVERIFY(waitFor(answer, 5000));
    QCOMPARE(answer->error.localizedDescription(), QStringLiteral("NetworkManager is not running"));
    QCOMPARE(answer->error.code(), int(kCWErrorServiceUnavailable));
    QTest::qWait(200);
    QCOMPARE(answer->count, 1);
    QVERIFY(!m_connector->isJoining(QStringLiteral("wlan0")));
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

    const CWError error = run([&](auto done) {
        m_connector->enableIBSS(QStringLiteral("wlan0"), parameters, QStringLiteral("this-host"),
                                done);
    });
    QCOMPARE(error.localizedDescription(), expectedError);
    if (!error.isNull()) {
        QCOMPARE(counter(QStringLiteral("addandactivate")), 0);
        return;
    }
    const QJsonObject wireless = lastSettings().value(QStringLiteral("802-11-wireless")).toObject();
    QCOMPARE(wireless.value(QStringLiteral("mode")).toString(), QStringLiteral("adhoc"));
    QCOMPARE(wireless.value(QStringLiteral("ssid")).toString(), expectedSsidHex);
    QCOMPARE(wireless.value(QStringLiteral("channel")).toInt(), expectedChannel);
    QCOMPARE(wireless.value(QStringLiteral("band")).toString(), expectedBand);
}

void TestLinuxNetworkManager::disconnect()
{
    CWError error;
    QVERIFY(m_connector->disassociate(QStringLiteral("wlan0"), &error));
    QCOMPARE(counter(QStringLiteral("disconnect")), 1);
    QVERIFY(!m_connector->disassociate(QStringLiteral("wlan9"), &error));
    QCOMPARE(error.localizedDescription(), QStringLiteral("NetworkManager does not manage wlan9"));
    QCOMPARE(counter(QStringLiteral("disconnect")), 1);
}

void TestLinuxNetworkManager::scanRequests()
{
    const QString device = m_nm->deviceForInterface(QStringLiteral("wlan0"), nullptr);
    QVERIFY(!device.isEmpty());
    QVERIFY(m_nm->requestScan(device));
    QVERIFY(!m_nm->requestScan(device)); // rate-limited
    QTRY_COMPARE(counter(QStringLiteral("scan")), 1);

    // "Already scanning" is no error worth reporting; requests keep going out.
    m_nm->setScanInterval(0);
    mockCall(QStringLiteral("SetScanBusy"), {true});
    QVERIFY(m_nm->requestScan(device));
    QVERIFY(m_nm->requestScan(device));
    QTRY_COMPARE(counter(QStringLiteral("scan")), 3);
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
        mockCall(QStringLiteral("AddSavedConnection"),
                 {QVariant::fromValue(settings), QVariant::fromValue(secrets)});

    // Through the backend, as the join dialog asks for them.
    LinuxBackend::Options options;
    options.bus = *m_bus;
    options.networkManagerService = kNmService;
    options.polkitService = kPolkitService;
    LinuxBackend backend(options);
    const auto profiles = backend.allUser8021XProfiles();
    QCOMPARE(profiles.size(), 2);
    QCOMPARE(profiles[0]->userDefinedName(), QStringLiteral("Work"));
    QCOMPARE(profiles[0]->username(), QStringLiteral("alice"));
    QCOMPARE(profiles[0]->password(), QStringLiteral("s3cret"));
    QCOMPARE(profiles[1]->userDefinedName(), QStringLiteral("Guest"));
    QVERIFY(profiles[1]->password().isNull()); // NetworkManager kept the secret

    const auto home = m_profiles->profileForSsid("home");
    QVERIFY(home);
    QCOMPARE(home->passphrase(), QStringLiteral("home passphrase"));
    QVERIFY(!home->user8021XProfile());
    const auto corp = m_profiles->profileForSsid("corp");
    QVERIFY(corp && corp->user8021XProfile());
    QCOMPARE(corp->user8021XProfile()->username(), QStringLiteral("alice"));
    QVERIFY(!m_profiles->profileForSsid("elsewhere"));
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
            kPolkitService, QStringLiteral("/org/freedesktop/PolicyKit1/Authority"), kMockIface,
            QStringLiteral("SetAllowed"));
        msg.setArguments({QStringList{allowed}});
        QCOMPARE(m_bus->call(msg).type(), QDBusMessage::ReplyMessage);
    } else {
        stopMock(m_polkitMock);
        QTRY_VERIFY(!m_bus->interface()->isServiceRegistered(kPolkitService).value());
    }
    // The prompting form and the quiet synchronous one, each on a backend of its own (a
    // backend keeps a granted authorization for a while).
    const auto backend = makeBackend();
    CWError error = run([&](auto done) {
        backend->obtainAuthorizationAsync(QStringLiteral("system.preferences"), 19, done);
    });
    QVERIFY2(error.localizedDescription().startsWith(expectedErrorStart),
             qPrintable(error.localizedDescription()));
    QCOMPARE(error.isNull(), expected);
    QCOMPARE(makeBackend()->obtainAuthorization(QStringLiteral("system.preferences"), 19, &error),
             expected);
    QVERIFY(error.localizedDescription().startsWith(expectedErrorStart));
    QCOMPARE(error.isNull(), expected);
}

void TestLinuxNetworkManager::authorizationAnsweredLate_data()
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

void TestLinuxNetworkManager::authorizationAnsweredLate()
{
    QFETCH(bool, allowed);
    QFETCH(int, releaseAfterMs);
    QFETCH(QString, expectedError);

    polkitCall(QStringLiteral("SetAllowed"),
               {QStringList{allowed ? PolkitClient::networkControlAction() : QString()}});
    polkitCall(QStringLiteral("SimulateHang"), {true}); // the prompt is up, the user reads
    const auto backend = makeBackend();
    backend->setAuthorizationPromptTimeout(1000);
    int ticks = 0;
    QTimer ticker;
    connect(&ticker, &QTimer::timeout, [&] { ++ticks; });
    ticker.start(20);
    // Two callers ask while the prompt is up; both get the one answer.
    QList<std::shared_ptr<Answer>> answers;
    for (int i = 0; i < 2; ++i)
        answers.append(start([&](auto done) {
            backend->obtainAuthorizationAsync(QStringLiteral("system.preferences"), 19, done);
        }));
    QCOMPARE(answers[0]->count, 0);
    QCOMPARE(ticks, 0);
    if (releaseAfterMs >= 0) {
        QTest::qWait(releaseAfterMs);
        QCOMPARE(answers[0]->count, 0);
        polkitCall(QStringLiteral("ReleaseHangingCalls"), {});
    }
    for (const auto &answer : answers) {
        QVERIFY(waitFor(answer, 5000));
        QCOMPARE(answer->error.localizedDescription(), expectedError);
    }
    QVERIFY2(ticks >= 20, qPrintable(QString::number(ticks)));
    if (expectedError.isEmpty()) {
        // Granted a moment ago: the next cycle does not ask polkit again.
        const auto again = start([&](auto done) {
            backend->obtainAuthorizationAsync(QStringLiteral("system.preferences"), 19, done);
        });
        QCOMPARE(again->count, 1);
        QVERIFY(again->error.isNull());
    }
    QTest::qWait(200);
    for (const auto &answer : answers)
        QCOMPARE(answer->count, 1);
}

void TestLinuxNetworkManager::daemonDisappears()
{
    CWError error;
    QVERIFY(m_connector->setPower(true, &error));
    stopMock(m_nmMock);
    QTRY_VERIFY(!m_bus->interface()->isServiceRegistered(kNmService).value());

    QVERIFY(!m_connector->setPower(false, &error));
    QCOMPARE(error.localizedDescription(), QStringLiteral("NetworkManager is not running"));
    QCOMPARE(error.code(), int(kCWErrorServiceUnavailable));
    error = run([&](auto done) { m_connector->setPower(false, done); });
    QCOMPARE(error.localizedDescription(), QStringLiteral("NetworkManager is not running"));
    const auto x = network("x", 1, 0);
    error = run([&](auto done) { m_connector->associate(QStringLiteral("wlan0"), *x, {}, done); });
    QCOMPARE(error.localizedDescription(), QStringLiteral("NetworkManager is not running"));
    QCOMPARE(error.code(), int(kCWErrorServiceUnavailable));
    QVERIFY(!m_nm->wirelessEnabled(&error));
    QCOMPARE(error.localizedDescription(), QStringLiteral("NetworkManager is not running"));
    QVERIFY(m_profiles->user8021XProfiles().isEmpty());

    // Back again: the same objects work without a restart of the program.
    const QString nmTemplate = QString::fromUtf8(qgetenv("CORVANE_SOURCE_DIR")) +
                               QStringLiteral("/tests/wireless/dbusmock/networkmanager.py");
    QVERIFY(startMock(m_nmMock, {QStringLiteral("-t"), nmTemplate}, kNmService));
    QVERIFY(run([&](auto done) { m_connector->setPower(false, done); }).isNull());
    QCOMPARE(m_nm->wirelessEnabled(), std::optional<bool>(false));
    QCOMPARE(run([&](auto done) {
                 m_connector->associate(QStringLiteral("wlan0"), *x, {}, done);
             }).localizedDescription(),
             QString());
}

QTEST_GUILESS_MAIN(TestLinuxNetworkManager)
#include "tst_linux_networkmanager.moc"

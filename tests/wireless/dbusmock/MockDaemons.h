// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// A private system bus with python-dbusmock's polkit and our NetworkManager template on
// it, and the program's NetworkManager objects pointed at them, for the Linux backend's
// QtTest program. Only tests include it; it may wait in loops of its own.
//
// The long actions answer through completions. start() counts every answer, and the
// fixture's cleanup reports an action answered more than once, even one that hears of the
// daemons leaving only after it had answered.

#include "wireless/linux/LinuxBackend.h"
#include "wireless/linux/NetworkManagerClient.h"
#include "wireless/linux/NmConnector.h"
#include "wireless/linux/NmSavedProfiles.h"
#include "wireless/support/TestNetwork.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDeadlineTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <functional>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals; // test-only header

class MockDaemons
{
public:
    static inline const QString kMockIface = u"org.freedesktop.DBus.Mock"_s;
    static inline const QString kNmPath = u"/org/freedesktop/NetworkManager"_s;
    static inline const QString kNmService = u"org.freedesktop.NetworkManager"_s;
    static inline const QString kPolkitService = u"org.freedesktop.PolicyKit1"_s;
    static inline const QString kIf = u"wlan0"_s;

    // What came back through one completion.
    struct Answer
    {
        int count = 0;
        CWError error;
    };
    using Action = std::function<void(NmConnector::Completion)>;

    ~MockDaemons() { stopBus(); }

    // Runs the test object, or skips with exit code 77 (what ctest counts as skipped) when
    // dbus-daemon or python3's dbusmock is missing. CI installs them: there a missing one fails.
    static int exec(QObject *test, MockDaemons &m, int argc, char **argv)
    {
        m.m_busDaemon = QStandardPaths::findExecutable(u"dbus-daemon"_s);
        for (const QString &python : {u"/usr/bin/python3"_s, u"python3"_s}) {
            QProcess probe;
            probe.start(python, {u"-c"_s, u"import dbusmock"_s});
            if (probe.waitForFinished(20000) && probe.exitStatus() == QProcess::NormalExit &&
                probe.exitCode() == 0) {
                m.m_python = python;
                break;
            }
        }
        if (!m.m_busDaemon.isEmpty() && !m.m_python.isEmpty())
            return QTest::qExec(test, argc, argv);
        const bool ci = qgetenv("CI") == "true";
        std::fprintf(stderr,
                     "%s: dbus-daemon or python3 with dbusmock is missing. Install them with:\n  "
                     "sudo apt-get update && sudo apt-get install -y --no-install-recommends dbus "
                     "python3 python3-dbusmock\n",
                     ci ? "FAIL" : "SKIP");
        return ci ? 1 : 77;
    }

    bool startBus()
    {
        if (!m_dir.isValid())
            return false;
        // A session-type bus allows everything to everyone on it: all a test needs.
        const QString socket = m_dir.filePath(u"bus"_s);
        m_daemon.start(m_busDaemon, {u"--session"_s, u"--nofork"_s, u"--nopidfile"_s,
                                     u"--address=unix:path="_s + socket});
        if (!m_daemon.waitForStarted() || !waitUntil([&] { return QFile::exists(socket); }))
            return false;
        m_address = u"unix:path="_s + socket;
        m_bus = std::make_unique<QDBusConnection>(
            QDBusConnection::connectToBus(m_address, u"corvane-mock-bus"_s));
        qDBusRegisterMetaType<NmSettings>();
        return waitUntil([&] { return m_bus->isConnected(); });
    }

    void stopBus()
    {
        if (!m_bus)
            return;
        m_bus.reset();
        QDBusConnection::disconnectFromBus(u"corvane-mock-bus"_s);
        stop(m_daemon);
    }

    // Both daemons, and the client objects on a fresh start.
    bool startDaemons(QObject *owner)
    {
        if (!startNetworkManager() || !start(m_polkitMock, {u"-t"_s, u"polkitd"_s}, kPolkitService))
            return false;
        nm = new NetworkManagerClient(*m_bus, kNmService, owner);
        profiles = new NmSavedProfiles(nm, owner);
        connector = new NmConnector(nm, profiles, owner);
        connector->setActivationTimeout(3000);
        return true;
    }

    bool startNetworkManager()
    {
        const QString nmTemplate = QString::fromUtf8(qgetenv("CORVANE_SOURCE_DIR")) +
                                   u"/tests/wireless/dbusmock/networkmanager.py"_s;
        return QFile::exists(nmTemplate) && start(m_nmMock, {u"-t"_s, nmTemplate}, kNmService);
    }
    void stopNetworkManager() { stop(m_nmMock); }
    void stopPolkit() { stop(m_polkitMock); }

    // The daemons leave while the connector still listens; then the objects go. Empty
    // when every action was answered at most once.
    QString stopDaemons()
    {
        stop(m_nmMock);
        stop(m_polkitMock);
        // The bus must have noticed before the next test starts new owners.
        waitUntil([&] { return !registered(kNmService) && !registered(kPolkitService); });
        QTest::qWait(100);
        delete std::exchange(connector, nullptr);
        delete std::exchange(profiles, nullptr);
        delete std::exchange(nm, nullptr);
        QString twice;
        for (const auto &answer : std::exchange(m_answers, {}))
            if (answer->count > 1)
                twice += u"answered %1 times: %2; "_s.arg(answer->count)
                             .arg(answer->error.localizedDescription());
        return twice;
    }

    bool registered(const QString &service) const
    {
        return m_bus->interface()->isServiceRegistered(service).value();
    }

    // Starts an action and returns its answer record at once.
    std::shared_ptr<Answer> start(const Action &action)
    {
        auto answer = std::make_shared<Answer>();
        m_answers.append(answer);
        action([answer](const CWError &error) {
            ++answer->count;
            answer->error = error;
        });
        return answer;
    }

    static bool waitFor(const std::shared_ptr<Answer> &answer, int timeoutMs = 10000)
    {
        return waitUntil([&] { return answer->count > 0; }, timeoutMs);
    }

    // Runs an action and waits for its answer.
    CWError run(const Action &action, int timeoutMs = 10000)
    {
        const auto answer = start(action);
        if (!waitFor(answer, timeoutMs))
            return CWError(-1, u"(no answer)"_s);
        return answer->error;
    }

    // Joins on wlan0 and waits; the error text (empty on success).
    QString join(const CWNetworkRef &network, const QVariantMap &parameters = {})
    {
        return run([&](auto done) { connector->associate(kIf, *network, parameters, done); })
            .localizedDescription();
    }

    std::unique_ptr<LinuxBackend> makeBackend() const
    {
        LinuxBackend::Options options;
        options.bus = *m_bus;
        options.networkManagerService = kNmService;
        options.polkitService = kPolkitService;
        return std::make_unique<LinuxBackend>(options);
    }

    // A call on the NetworkManager template's own interface; invalid when it failed.
    QVariant mockCall(const QString &method, const QVariantList &args = {}) const
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

    bool polkitCall(const QString &method, const QVariantList &args) const
    {
        QDBusMessage msg = QDBusMessage::createMethodCall(
            kPolkitService, u"/org/freedesktop/PolicyKit1/Authority"_s, kMockIface, method);
        msg.setArguments(args);
        return m_bus->call(msg).type() == QDBusMessage::ReplyMessage;
    }

    // A saved Wi-Fi connection "id" for "ssid" (key management and more sections optional);
    // its object path.
    QString addSaved(const QString &id, const QByteArray &ssid, const QString &keyMgmt = {},
                     NmSettings settings = {}, const NmSettings &secrets = {}) const
    {
        settings[u"connection"_s] = {{u"id"_s, id}, {u"type"_s, u"802-11-wireless"_s}};
        settings[u"802-11-wireless"_s].insert(u"ssid"_s, ssid);
        if (!keyMgmt.isEmpty())
            settings[u"802-11-wireless-security"_s].insert(u"key-mgmt"_s, keyMgmt);
        return mockCall(u"AddSavedConnection"_s,
                        {QVariant::fromValue(settings), QVariant::fromValue(secrets)})
            .value<QDBusObjectPath>()
            .path();
    }

    QJsonObject json(const QString &method, const QVariantList &args = {}) const
    {
        return QJsonDocument::fromJson(mockCall(method, args).toString().toUtf8()).object();
    }
    QJsonObject lastSettings() const { return json(u"LastSettingsJson"_s); }

    int counter(const QString &name) const
    {
        return qdbus_cast<QMap<QString, int>>(mockCall(u"Counters"_s)).value(name, -1);
    }

    NetworkManagerClient *nm = nullptr;
    NmSavedProfiles *profiles = nullptr;
    NmConnector *connector = nullptr;

private:
    static bool waitUntil(const std::function<bool()> &done, int timeoutMs = 20000)
    {
        QDeadlineTimer deadline(timeoutMs);
        while (!done()) {
            if (deadline.hasExpired())
                return false;
            QTest::qWait(10);
        }
        return true;
    }

    bool start(QProcess &process, const QStringList &templateArgs, const QString &service)
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"DBUS_SYSTEM_BUS_ADDRESS"_s, m_address);
        process.setProcessEnvironment(env);
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(m_python, QStringList{u"-m"_s, u"dbusmock"_s, u"--system"_s} + templateArgs);
        return process.waitForStarted() && waitUntil([&] { return registered(service); });
    }

    static void stop(QProcess &process)
    {
        if (process.state() == QProcess::NotRunning)
            return;
        process.terminate();
        if (!process.waitForFinished(5000))
            process.kill();
        process.waitForFinished(5000);
    }

    QTemporaryDir m_dir;
    QString m_busDaemon;
    QString m_python;
    QString m_address;
    QProcess m_daemon;
    QProcess m_nmMock;
    QProcess m_polkitMock;
    QList<std::shared_ptr<Answer>> m_answers;
    std::unique_ptr<QDBusConnection> m_bus;
};

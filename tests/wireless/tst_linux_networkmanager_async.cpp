// SPDX-License-Identifier: GPL-3.0-or-later
// The Linux backend's long actions when the daemons take their time: NetworkManager that
// replies late or after the outcome, a network slow to answer, a daemon that leaves in the
// middle of a join, two joins at once and a polkit prompt answered late or never. Each
// action must answer once, after its call has returned, with the event loop running
// meanwhile (a timer stands for the window's clock).

#include "wireless/CWKeys.h"
#include "wireless/dbusmock/MockDaemons.h"
#include "wireless/linux/PolkitClient.h"

#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

#include <algorithm>

class TestLinuxNetworkManagerAsync : public MockDaemonsTest
{
    Q_OBJECT

public:
    TestLinuxNetworkManagerAsync()
    {
        connect(&ticker, &QTimer::timeout, this, [this] { ++ticks; });
    }

private Q_SLOTS:
    void lateAnswers_data();
    void lateAnswers();
    void oneJoinAtATime();
    void daemonVanishesMidJoin_data();
    void daemonVanishesMidJoin();
    void authorizationAnsweredLate_data();
    void authorizationAnsweredLate();

private:
    // Stands for the window's clock: it must keep ticking while an action is out.
    int ticks = 0;
    QTimer ticker;
    void startTicking()
    {
        ticks = 0;
        ticker.start(20);
    }
};

void TestLinuxNetworkManagerAsync::lateAnswers_data()
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

void TestLinuxNetworkManagerAsync::lateAnswers()
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
            m.connector->enableIBSS(m.kIf, {{kCWIBSSKeySSID, QStringLiteral("late")}}, {}, done);
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
    QVERIFY2(ticks >= 10, qPrintable(QStringLiteral("%1 ticks in %2 ms").arg(ticks).arg(waited)));
    QTest::qWait(300); // later signals of the same activation change nothing
    QCOMPARE(answer->count, 1);
    QVERIFY(!m.connector->isJoining(m.kIf));
}

void TestLinuxNetworkManagerAsync::oneJoinAtATime()
{
    m.mockCall(QStringLiteral("SetOutcome"), {2u, 1u, 0u, 600u});
    const auto a = MockDaemons::network("first");
    const auto b = MockDaemons::network("second");
    const auto first = m.start([&](auto done) { m.connector->associate(m.kIf, *a, {}, done); });
    const auto second = m.start([&](auto done) { m.connector->associate(m.kIf, *b, {}, done); });
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

void TestLinuxNetworkManagerAsync::daemonVanishesMidJoin_data()
{
    QTest::addColumn<uint>("replyDelay");
    QTest::newRow("while the network is asked") << 0u;
    QTest::newRow("before NetworkManager replied") << 20000u;
}

void TestLinuxNetworkManagerAsync::daemonVanishesMidJoin()
{
    QFETCH(uint, replyDelay);
    m.connector->setActivationTimeout(20000);
    m.mockCall(QStringLiteral("SetOutcome"), {0u, 0u, 0u, 0u}); // never answers
    m.mockCall(QStringLiteral("SetReplyDelay"), {replyDelay});
    const auto net = MockDaemons::network("gone");
    const auto answer = m.start([&](auto done) { m.connector->associate(m.kIf, *net, {}, done); });
    QTest::qWait(300);
    QCOMPARE(answer->count, 0);
    m.stopNetworkManager();
    QVERIFY(m.waitFor(answer, 5000));
    QCOMPARE(answer->error.localizedDescription(), QStringLiteral("NetworkManager is not running"));
    QCOMPARE(answer->error.code(), int(kCWErrorServiceUnavailable));
    QTest::qWait(200);
    QCOMPARE(answer->count, 1);
    QVERIFY(!m.connector->isJoining(m.kIf));
}

void TestLinuxNetworkManagerAsync::authorizationAnsweredLate_data()
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

void TestLinuxNetworkManagerAsync::authorizationAnsweredLate()
{
    QFETCH(bool, allowed);
    QFETCH(int, releaseAfterMs);
    QFETCH(QString, expectedError);

    QVERIFY(
        m.polkitCall(QStringLiteral("SetAllowed"),
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

CORVANE_MOCK_DAEMONS_MAIN(TestLinuxNetworkManagerAsync)
#include "tst_linux_networkmanager_async.moc"

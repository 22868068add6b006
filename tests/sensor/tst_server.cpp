// SPDX-License-Identifier: GPL-3.0-or-later
// The HTTP server against a real loopback socket: what it serves, what it refuses and how
// it cuts off requests that are too big or too slow.
#include "NetworkBuilder.h"
#include "sensor/SensorServer.h"
#include "support/FixedSensorSource.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>

class tst_Server : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void answers_data();
    void answers();
    void cutsOffHugeAndSlowRequests_data();
    void cutsOffHugeAndSlowRequests();
    void documentsFollowTheCycle();
    void manyStalledClientsLeaveTheCycleRunning();

private:
    // Sends `request` raw and reads until the server closes or `timeoutMs` passes.
    QByteArray exchange(const QByteArray &request, int timeoutMs = 5000, bool *closed = nullptr);

    FixedSensorSource m_source;
    std::unique_ptr<SensorServer> m_server;
};

void tst_Server::initTestCase()
{
    m_source.add(NetworkBuilder().bssid("00:00:00:00:00:01").ssid("Home"),
                 QDateTime::currentDateTimeUtc());
    SensorTcpServer::Limits limits;
    limits.maxRequestBytes = 4096;
    limits.requestTimeoutMs = 300;
    m_server = std::make_unique<SensorServer>(&m_source, nullptr, limits);
    QString error;
    QVERIFY2(m_server->start(QHostAddress::LocalHost, 0, &error), qPrintable(error));
    QVERIFY(m_server->port() != 0);
}

QByteArray tst_Server::exchange(const QByteArray &request, int timeoutMs, bool *closed)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, m_server->port());
    if (!socket.waitForConnected(2000))
        return {};
    socket.write(request);
    QByteArray reply;
    QElapsedTimer timer;
    timer.start();
    // The server runs in this thread: spin the event loop, never block in the socket.
    while (timer.elapsed() < timeoutMs && socket.state() == QAbstractSocket::ConnectedState) {
        QTest::qWait(10);
        reply += socket.readAll();
        if (!closed && reply.contains("\r\n\r\n")) {
            const int headEnd = reply.indexOf("\r\n\r\n") + 4;
            const int at = reply.toLower().indexOf("content-length:");
            if (at >= 0 && at < headEnd) {
                const int end = reply.indexOf("\r\n", at);
                const int length = reply.mid(at + 15, end - at - 15).trimmed().toInt();
                if (reply.size() >= headEnd + length)
                    break;
            }
        }
    }
    reply += socket.readAll();
    if (closed)
        *closed = socket.state() != QAbstractSocket::ConnectedState;
    return reply;
}

void tst_Server::answers_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<QByteArray>("contains");

    QTest::newRow("metrics") << QByteArray("GET /metrics HTTP/1.1\r\nHost: x\r\n\r\n")
                             << QByteArray("200")
                             << QByteArray(
                                    "corvane_network_signal_dbm{bssid=\"00:00:00:00:00:01\"}");
    QTest::newRow("networks") << QByteArray("GET /api/networks HTTP/1.1\r\nHost: x\r\n\r\n")
                              << QByteArray("200") << QByteArray("\"bssid\":\"00:00:00:00:00:01\"");
    QTest::newRow("interface") << QByteArray("GET /api/interface HTTP/1.1\r\nHost: x\r\n\r\n")
                               << QByteArray("200") << QByteArray("\"interface\":null");
    QTest::newRow("history") << QByteArray("GET /api/history?bssid=00%3A00%3A00%3A00%3A00%3A01 "
                                           "HTTP/1.1\r\nHost: x\r\n\r\n")
                             << QByteArray("200") << QByteArray("\"signalsDbm\":[-60]");
    QTest::newRow("page") << QByteArray("GET / HTTP/1.1\r\nHost: x\r\n\r\n") << QByteArray("200")
                          << QByteArray("<script src=\"sensor.js\"");
    QTest::newRow("script") << QByteArray("GET /sensor.js HTTP/1.1\r\nHost: x\r\n\r\n")
                            << QByteArray("200") << QByteArray("textContent");
    QTest::newRow("post") << QByteArray("POST /metrics HTTP/1.1\r\nHost: x\r\nContent-Length: "
                                        "2\r\n\r\n{}")
                          << QByteArray("405") << QByteArray("only GET");
    QTest::newRow("delete") << QByteArray("DELETE /api/networks HTTP/1.1\r\nHost: x\r\n\r\n")
                            << QByteArray("405") << QByteArray("Allow: GET");
    QTest::newRow("unknown path") << QByteArray("GET /admin HTTP/1.1\r\nHost: x\r\n\r\n")
                                  << QByteArray("404") << QByteArray("no such page: /admin");
    QTest::newRow("resource path") << QByteArray("GET /:/sensor/index.html HTTP/1.1\r\n\r\n")
                                   << QByteArray("404") << QByteArray("no such page");
    QTest::newRow("malformed bssid")
        << QByteArray("GET /api/history?bssid=%3Cscript%3E HTTP/1.1\r\nHost: x\r\n\r\n")
        << QByteArray("400") << QByteArray("six hexadecimal bytes");
    QTest::newRow("no bssid") << QByteArray("GET /api/history HTTP/1.1\r\nHost: x\r\n\r\n")
                              << QByteArray("400") << QByteArray("bssid=");
    QTest::newRow("unknown bssid")
        << QByteArray("GET /api/history?bssid=00:00:00:00:00:09 HTTP/1.1\r\nHost: x\r\n\r\n")
        << QByteArray("404") << QByteArray("no network with bssid 00:00:00:00:00:09");
}

void tst_Server::answers()
{
    QFETCH(QByteArray, request);
    QFETCH(QByteArray, status);
    QFETCH(QByteArray, contains);
    const QByteArray reply = exchange(request);
    QVERIFY2(reply.startsWith("HTTP/1.1 " + status), reply.left(200).constData());
    QVERIFY2(reply.contains(contains), reply.left(2000).constData());
}

void tst_Server::cutsOffHugeAndSlowRequests_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QByteArray>("status");

    QTest::newRow("huge header") << "GET /metrics HTTP/1.1\r\nX-Big: " + QByteArray(20000, 'a') +
                                        "\r\n\r\n"
                                 << QByteArray("431");
    QTest::newRow("huge body") << "POST /metrics HTTP/1.1\r\nContent-Length: 100000\r\n\r\n" +
                                      QByteArray(20000, 'a')
                               << QByteArray("431");
    QTest::newRow("never finished")
        << QByteArray("GET /metrics HTTP/1.1\r\nHost: x\r\n") << QByteArray("408");
    QTest::newRow("not http") << QByteArray("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03", 11)
                              << QByteArray("");
}

void tst_Server::cutsOffHugeAndSlowRequests()
{
    QFETCH(QByteArray, request);
    QFETCH(QByteArray, status);
    bool closed = false;
    const QByteArray reply = exchange(request, 3000, &closed);
    QVERIFY2(closed, "the server kept the connection open");
    if (!status.isEmpty())
        QVERIFY2(reply.startsWith("HTTP/1.1 " + status), reply.left(200).constData());
    // And the server still answers others.
    QVERIFY(exchange("GET /api/status HTTP/1.1\r\nHost: x\r\n\r\n").startsWith("HTTP/1.1 200"));
}

void tst_Server::documentsFollowTheCycle()
{
    auto cycleOf = [this] {
        const QByteArray reply = exchange("GET /api/networks HTTP/1.1\r\nHost: x\r\n\r\n");
        return QJsonDocument::fromJson(reply.mid(reply.indexOf("\r\n\r\n") + 4))
            .object()
            .value("cycle")
            .toInteger(-1);
    };
    const qint64 before = cycleOf();
    QVERIFY(before >= 0);
    m_source.add(NetworkBuilder().bssid("00:00:00:00:00:02").ssid("Second"),
                 QDateTime::currentDateTimeUtc());
    m_server->noteCycleFinished();
    QCOMPARE(cycleOf(), before + 1);
    const QByteArray reply = exchange("GET /api/networks HTTP/1.1\r\nHost: x\r\n\r\n");
    QVERIFY(reply.contains("00:00:00:00:00:02"));
}

void tst_Server::manyStalledClientsLeaveTheCycleRunning()
{
    // A cycle on the same thread, as in the program.
    int ticks = 0;
    QTimer cycle;
    connect(&cycle, &QTimer::timeout, this, [&] { ++ticks; });
    cycle.start(20);

    std::vector<std::unique_ptr<QTcpSocket>> clients;
    for (int i = 0; i < 300; ++i) {
        clients.push_back(std::make_unique<QTcpSocket>());
        clients.back()->connectToHost(QHostAddress::LocalHost, m_server->port());
    }
    QTest::qWait(100);
    for (auto &client : clients)
        client->write("GET /metrics HTTP/1.1\r\nHost: x\r\n");
    QElapsedTimer elapsed;
    elapsed.start();
    // Past the request timeout every stalled client has been answered and dropped.
    QTRY_VERIFY_WITH_TIMEOUT(
        std::all_of(clients.begin(), clients.end(),
                    [](const auto &c) { return c->state() == QAbstractSocket::UnconnectedState; }),
        5000);
    // Generous bound: the timer must have kept firing, not merely resumed at the end.
    QVERIFY2(ticks >= elapsed.elapsed() / 20 / 3,
             qPrintable(QStringLiteral("%1 ticks in %2 ms").arg(ticks).arg(elapsed.elapsed())));
    QVERIFY(exchange("GET /api/status HTTP/1.1\r\nHost: x\r\n\r\n").startsWith("HTTP/1.1 200"));
}

QTEST_GUILESS_MAIN(tst_Server)
#include "tst_server.moc"

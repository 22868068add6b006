// SPDX-License-Identifier: GPL-3.0-or-later
// The HTTP server against a real loopback socket: what it serves, what it refuses and how
// it cuts off requests that are too big or too slow.
#include "NetworkBuilder.h"
#include "sensor/SensorServer.h"
#include "support/FixedSensorSource.h"

#include <QTcpSocket>
#include <QTest>
#include <QTimer>

class tst_Server : public QObject
{
    Q_OBJECT

    FixedSensorSource m_source;
    std::unique_ptr<SensorServer> m_server;

    // Sends `request` raw and reads until the server closes (and says so in `closed`) or
    // `timeoutMs` passes. The server runs in this thread: spin the event loop, never block.
    QByteArray exchange(const QByteArray &request, int timeoutMs = 5000, bool *closed = nullptr)
    {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, m_server->port());
        socket.write(request);
        QByteArray reply;
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < timeoutMs && socket.state() != QAbstractSocket::UnconnectedState) {
            QTest::qWait(10);
            reply += socket.readAll();
            const qsizetype head = reply.indexOf("\r\n\r\n") + 4;
            const qsizetype at = reply.toLower().indexOf("content-length:");
            if (!closed && head >= 4 && at >= 0 && at < head &&
                reply.size() >=
                    head +
                        reply.mid(at + 15, reply.indexOf("\r\n", at) - at - 15).trimmed().toInt())
                break;
        }
        if (closed)
            *closed = socket.state() == QAbstractSocket::UnconnectedState;
        return reply + socket.readAll();
    }
    bool statusAnswers()
    {
        return exchange("GET /api/status HTTP/1.1\r\n\r\n").startsWith("HTTP/1.1 200");
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_source.add(NetworkBuilder().bssid("00:00:00:00:00:01").ssid("Home"),
                     QDateTime::currentDateTimeUtc());
        SensorTcpServer::Limits limits;
        limits.maxRequestBytes = 4096;
        limits.requestTimeoutMs = 300;
        m_server = std::make_unique<SensorServer>(&m_source, nullptr, limits);
        QString error;
        QVERIFY2(m_server->start(QHostAddress::LocalHost, 0, &error), qPrintable(error));
    }
    void answers()
    {
        // request line, status, what the answer contains
        const std::tuple<const char *, const char *, const char *> rows[] = {
            {"GET /metrics", "200", "corvane_network_signal_dbm{bssid=\"00:00:00:00:00:01\"}"},
            {"GET /api/networks", "200", "\"bssid\":\"00:00:00:00:00:01\""},
            {"GET /api/history?bssid=00%3A00%3A00%3A00%3A00%3A01", "200", "\"signalsDbm\":[-60]"},
            {"GET /", "200", "<script src=\"sensor.js\""},
            {"DELETE /api/networks", "405", "Allow: GET"},
            {"GET /:/sensor/index.html", "404", "no such page"},
            {"GET /api/history?bssid=%3Cscript%3E", "400", "six hexadecimal bytes"},
            {"GET /api/history?bssid=00:00:00:00:00:09", "404",
             "no network with bssid 00:00:00:00:00:09"}};
        for (const auto &[request, status, contains] : rows) {
            const QByteArray reply = exchange(QByteArray(request) + " HTTP/1.1\r\nHost: x\r\n\r\n");
            QVERIFY2(reply.startsWith(QByteArray("HTTP/1.1 ") + status), request);
            QVERIFY2(reply.contains(contains), reply.left(2000).constData());
        }
        // Each finished cycle is a new document.
        const QByteArray before = exchange("GET /api/networks HTTP/1.1\r\n\r\n");
        m_source.add(NetworkBuilder().bssid("00:00:00:00:00:02").ssid("Second"),
                     QDateTime::currentDateTimeUtc());
        m_server->noteCycleFinished();
        const QByteArray after = exchange("GET /api/networks HTTP/1.1\r\n\r\n");
        QVERIFY(!before.contains("00:00:00:00:00:02") && after.contains("00:00:00:00:00:02"));
    }
    void cutsOffHugeAndSlowRequests()
    {
        // request, status ("": none, only closed)
        const std::pair<QByteArray, QByteArray> rows[] = {
            {"GET /metrics HTTP/1.1\r\nX-Big: " + QByteArray(20000, 'a') + "\r\n\r\n", "431"},
            {"POST /metrics HTTP/1.1\r\nContent-Length: 100000\r\n\r\n" + QByteArray(20000, 'a'),
             "431"},
            {"GET /metrics HTTP/1.1\r\nHost: x\r\n", "408"},
            {QByteArray("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03", 11), ""}};
        for (const auto &[request, status] : rows) {
            bool closed = false;
            const QByteArray reply = exchange(request, 3000, &closed);
            QVERIFY2(closed, "the server kept the connection open");
            QVERIFY2(status.isEmpty() || reply.startsWith("HTTP/1.1 " + status), reply.left(200));
            QVERIFY(statusAnswers()); // and the server still answers others
        }
    }
    void manyStalledClientsLeaveTheCycleRunning()
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
            clients.back()->write("GET /metrics HTTP/1.1\r\nHost: x\r\n");
        }
        QElapsedTimer elapsed;
        elapsed.start();
        // Past the request timeout every stalled client has been answered and dropped.
        const auto closed = [](const auto &c) {
            return c->state() == QAbstractSocket::UnconnectedState;
        };
        QTRY_VERIFY_WITH_TIMEOUT(std::ranges::all_of(clients, closed), 5000);
        // Generous bound: the timer must have kept firing, not merely resumed at the end.
        QVERIFY2(ticks >= elapsed.elapsed() / 20 / 3, qPrintable(QString::number(ticks)));
        QVERIFY(statusAnswers());
    }
};

QTEST_GUILESS_MAIN(tst_Server)
#include "tst_server.moc"

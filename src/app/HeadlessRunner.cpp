// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/HeadlessRunner.h"

#include "app/AppDelegate.h"
#include "app/StreamAlertPresenter.h"
#include "model/ExportDocument.h"
#include "prefs/PreferenceStore.h"
#include "util/Clock.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QLineEdit>
#include <QMainWindow>
#include <QSocketNotifier>
#include <QTimer>

#include <csignal>
#include <cstdio>
#include <sys/socket.h>
#include <unistd.h>

namespace {
int signalPipe[2] = {-1, -1};
HeadlessRunner *activeRunner = nullptr;

void onSignal(int)
{
    const char byte = 1;
    // Only async-signal-safe work here: the event loop picks the byte up.
    [[maybe_unused]] ssize_t n = ::write(signalPipe[0], &byte, 1);
}

bool writeStdout(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    const size_t written = std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    return written == size_t(bytes.size()) && std::fflush(stdout) == 0;
}
} // namespace

HeadlessRunner::HeadlessRunner(const Options &options, PreferenceStore *preferences,
                               QObject *parent)
    : QObject(parent), m_options(options), m_preferences(preferences),
      m_alerts(std::make_unique<StreamAlertPresenter>(true))
{
    m_terminal = options.progress && ::isatty(STDERR_FILENO);
}

HeadlessRunner::~HeadlessRunner()
{
    if (activeRunner == this)
        activeRunner = nullptr;
}

void HeadlessRunner::installSignalHandlers()
{
    if (signalPipe[0] >= 0)
        return;
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) != 0)
        return;
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    auto *notifier = new QSocketNotifier(signalPipe[1], QSocketNotifier::Read, qApp);
    QObject::connect(notifier, &QSocketNotifier::activated, qApp, [] {
        char byte;
        [[maybe_unused]] ssize_t n = ::read(signalPipe[1], &byte, 1);
        if (activeRunner)
            activeRunner->stop();
    });
}

int HeadlessRunner::exec()
{
    activeRunner = this;

    // The log is opened first: a log that cannot be written ends the run before it starts.
    if (!m_options.logTsv.isEmpty()) {
        m_log.setFileName(m_options.logTsv);
        if (!m_log.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text)) {
            std::fprintf(stderr, "Cannot write the log %s: %s\n", qUtf8Printable(m_options.logTsv),
                         qUtf8Printable(m_log.errorString()));
            return OutputFailed;
        }
        if (m_log.size() == 0) {
            m_log.write(QStringLiteral("Time\t").toUtf8() +
                        NetworkObject::csvHeadString().toUtf8());
            m_log.flush();
        }
    }

    AppDelegate::Options options;
    options.alerts = m_alerts.get();
    options.preferences = m_preferences;
    options.headless = true;
    options.runStartupProbe = false; // its lines would mix with an export on standard output
    options.startTimer = false;
    m_controller = std::make_unique<AppDelegate>(options);

    if (CWInterface::supportedInterfaces().isEmpty()) {
        std::fprintf(stderr, "No usable wireless interface.\n");
        return NoInterface;
    }
    if (auto *search =
            m_controller->window()->findChild<QLineEdit *>(QStringLiteral("searchField")))
        search->setText(m_options.filter);

    m_controller->cycleObserver = [this] { afterWorkingCycle(); };
    // Launching runs the first scan and the first full cycle.
    m_controller->applicationDidFinishLaunching();
    if (!m_controller->currentInterface()) {
        std::fprintf(stderr, "No usable wireless interface.\n");
        return NoInterface;
    }
    ++m_cyclesRun;
    printProgress(false);

    const double seconds =
        m_options.interval ? *m_options.interval : double(m_controller->updateInterval());
    if (!m_stopping && (m_options.cycles < 0 || m_cyclesRun < m_options.cycles)) {
        QEventLoop loop;
        m_timer = new QTimer(this);
        m_timer->setInterval(int(qBound(0.0, seconds * 1000.0, 86400000.0)));
        connect(m_timer, &QTimer::timeout, this, &HeadlessRunner::runCycle);
        m_timer->start();
        while (!m_stopping && (m_options.cycles < 0 || m_cyclesRun < m_options.cycles))
            loop.processEvents(QEventLoop::WaitForMoreEvents);
        m_timer->stop();
    }
    printProgress(true);

    if (m_logFailed) {
        std::fprintf(stderr, "Cannot write the log %s: %s\n", qUtf8Printable(m_options.logTsv),
                     qUtf8Printable(m_logError));
        m_exitCode = OutputFailed;
    }
    if (!writeOutputs())
        m_exitCode = OutputFailed;
    activeRunner = nullptr;
    return m_exitCode;
}

void HeadlessRunner::stop()
{
    m_stopping = true;
    if (m_timer)
        m_timer->stop();
    // Wake the loop if it is waiting for the next tick.
    QMetaObject::invokeMethod(
        this, [] {}, Qt::QueuedConnection);
}

void HeadlessRunner::runCycle()
{
    if (m_stopping)
        return;
    m_controller->performUpdateCycle();
    ++m_cyclesRun;
    printProgress(false);
}

void HeadlessRunner::afterWorkingCycle()
{
    if (!m_options.logTsv.isEmpty() && !m_logFailed && !writeLogBlock()) {
        m_logFailed = true;
        m_logError = m_log.errorString();
        stop();
    }
}

bool HeadlessRunner::writeLogBlock()
{
    const QString stamp = Clock::now().toString(Qt::ISODateWithMs);
    const NetworkList &networks = m_controller->networks();
    QByteArray block;
    for (quint64 index : m_controller->filteredNetworks()) {
        if (index >= quint64(networks.size()))
            continue;
        block += stamp.toUtf8();
        block += '\t';
        block += networks.at(qsizetype(index))->csvString().toUtf8();
    }
    if (m_log.write(block) != block.size())
        return false;
    // Flushed every cycle so that an interruption loses at most the cycle under way.
    return m_log.flush();
}

bool HeadlessRunner::writeOutputs()
{
    bool ok = true;
    const NetworkList &networks = m_controller->networks();
    const QList<quint64> &rows = m_controller->filteredNetworks();
    auto write = [&ok](const QString &path, const QString &text) {
        if (path.isEmpty())
            return;
        if (path == QLatin1String("-")) {
            if (!writeStdout(text)) {
                std::fprintf(stderr, "Cannot write to standard output\n");
                ok = false;
            }
            return;
        }
        QString error;
        if (!ExportDocument::writeDocument(path, text, &error)) {
            std::fprintf(stderr, "Cannot write %s: %s\n", qUtf8Printable(path),
                         qUtf8Printable(error));
            ok = false;
        }
    };
    if (!m_options.exportTsv.isEmpty())
        write(m_options.exportTsv, ExportDocument::tabSeparated(networks, rows));
    if (!m_options.exportHtml.isEmpty())
        write(m_options.exportHtml, ExportDocument::html(networks, rows));
    return ok;
}

void HeadlessRunner::printProgress(bool final)
{
    if (!m_terminal)
        return;
    const QString total =
        m_options.cycles > 0 ? QString::number(m_options.cycles) : QStringLiteral("∞");
    std::fprintf(stderr, "\rcycle %lld of %s, %lld networks seen%s",
                 static_cast<long long>(m_cyclesRun), qUtf8Printable(total),
                 static_cast<long long>(m_controller ? m_controller->networks().size() : 0),
                 final ? "\n" : "   ");
    std::fflush(stderr);
}

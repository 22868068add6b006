// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/HeadlessRunner.h"

#include "model/ExportDocument.h"
#include "model/SurveyEngine.h"
#include "prefs/PreferenceStore.h"
#include "util/Clock.h"
#include "util/StreamAlertPresenter.h"
#include "wireless/CWInterface.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QTimer>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
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

// Standard output may be a pipe, a file or a full device: every step is checked, and the
// system's reason is what the user reads.
bool writeStdout(const QString &text, QString *error)
{
    const QByteArray bytes = text.toUtf8();
    errno = 0;
    const size_t written = std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    if (written == size_t(bytes.size()) && std::fflush(stdout) == 0)
        return true;
    *error = QString::fromLocal8Bit(std::strerror(errno ? errno : EIO));
    return false;
}
} // namespace

HeadlessRunner::HeadlessRunner(const Options &options, PreferenceStore *preferences,
                               QObject *parent)
    : QObject(parent), m_options(options), m_preferences(preferences),
      m_alerts(std::make_unique<StreamAlertPresenter>(true))
{
    if (!m_preferences) {
        m_ownedPreferences = std::make_unique<PreferenceStore>();
        m_preferences = m_ownedPreferences.get();
    }
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

bool HeadlessRunner::start()
{
    activeRunner = this;

    // The log is opened first: a log that cannot be written ends the run before it starts.
    if (!m_options.logTsv.isEmpty()) {
        m_log.setFileName(m_options.logTsv);
        // A device or a pipe cannot be appended to (no seeking); it is simply written.
        const QFileInfo target(m_options.logTsv);
        const bool plainFile = !target.exists() || target.isFile();
        errno = 0;
        bool ok = m_log.open(QIODevice::WriteOnly | QIODevice::Text |
                             (plainFile ? QIODevice::Append : QIODevice::NotOpen));
        if (ok && (!plainFile || m_log.size() == 0)) {
            const QByteArray head =
                QStringLiteral("Time\t").toUtf8() + NetworkObject::csvHeadString().toUtf8();
            ok = m_log.write(head) == head.size() && m_log.flush();
        }
        if (!ok) {
            std::fprintf(stderr, "Cannot write the log %s: %s\n", qUtf8Printable(m_options.logTsv),
                         qUtf8Printable(ExportDocument::failureReason(m_log, errno)));
            m_exitCode = OutputFailed;
            return false;
        }
    }

    m_engine = std::make_unique<SurveyEngine>(m_preferences, m_alerts.get());
    const QStringList interfaces = CWInterface::supportedInterfaces();
    if (interfaces.isEmpty()) {
        std::fprintf(stderr, "No usable wireless interface.\n");
        m_exitCode = NoInterface;
        return false;
    }
    m_engine->setSearchText(m_options.filter);
    // The first interface the platform returns, as the window picks it at launch.
    m_engine->setCurrentInterface(CWInterface::interfaceWithName(interfaces.constFirst()));
    if (!m_engine->currentInterface()) {
        std::fprintf(stderr, "No usable wireless interface.\n");
        m_exitCode = NoInterface;
        return false;
    }
    connect(m_engine.get(), &SurveyEngine::cycleFinished, this, &HeadlessRunner::afterWorkingCycle);

    // Launching: the first scan, then one full cycle from tick 0, as the window does.
    m_engine->updateNetworks();
    m_engine->updateData();
    m_engine->setTickCount(0);
    ++m_cyclesRun;
    printProgress(false);

    const double seconds =
        m_options.interval ? *m_options.interval : double(m_preferences->updateIntervalValue());
    m_timer = new QTimer(this);
    m_timer->setInterval(int(qBound(0.0, seconds * 1000.0, 86400000.0)));
    connect(m_timer, &QTimer::timeout, this, &HeadlessRunner::runCycle);
    if (!m_stopping && (m_options.cycles < 0 || m_cyclesRun < m_options.cycles))
        m_timer->start();
    else
        QTimer::singleShot(0, this, &HeadlessRunner::finishWhenIdle);
    return true;
}

void HeadlessRunner::stop()
{
    m_stopping = true;
    if (m_timer)
        m_timer->stop();
    QTimer::singleShot(0, this, &HeadlessRunner::finishWhenIdle);
}

void HeadlessRunner::runCycle()
{
    // A cycle still waiting for its authorization is not run over.
    if (m_stopping || m_engine->isHeld())
        return;
    m_engine->performUpdateCycle();
    ++m_cyclesRun;
    printProgress(false);
    if (m_options.cycles >= 0 && m_cyclesRun >= m_options.cycles) {
        m_timer->stop();
        finishWhenIdle();
    }
}

void HeadlessRunner::finishWhenIdle()
{
    if (m_finished)
        return;
    // The last cycle may still wait for its authorization: its rows belong in the outputs.
    if (m_engine && m_engine->isHeld()) {
        QTimer::singleShot(50, this, &HeadlessRunner::finishWhenIdle);
        return;
    }
    m_finished = true;
    printProgress(true);
    if (m_logFailed) {
        std::fprintf(stderr, "Cannot write the log %s: %s\n", qUtf8Printable(m_options.logTsv),
                     qUtf8Printable(m_logError));
        m_exitCode = OutputFailed;
    }
    if (m_log.isOpen()) {
        m_log.close();
        if (!m_logFailed && m_log.error() != QFileDevice::NoError) {
            std::fprintf(stderr, "Cannot write the log %s: %s\n", qUtf8Printable(m_options.logTsv),
                         qUtf8Printable(m_log.errorString()));
            m_exitCode = OutputFailed;
        }
    }
    if (!writeOutputs())
        m_exitCode = OutputFailed;
    if (activeRunner == this)
        activeRunner = nullptr;
    Q_EMIT finished(m_exitCode);
}

void HeadlessRunner::afterWorkingCycle()
{
    errno = 0;
    if (!m_options.logTsv.isEmpty() && !m_logFailed && !writeLogBlock()) {
        m_logFailed = true;
        m_logError = ExportDocument::failureReason(m_log, errno);
        stop();
    }
}

bool HeadlessRunner::writeLogBlock()
{
    const QString stamp = Clock::now().toString(Qt::ISODateWithMs);
    const NetworkList &networks = m_engine->networks();
    QByteArray block;
    for (quint64 index : m_engine->filteredNetworks()) {
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
    if (!m_engine)
        return ok;
    const NetworkList &networks = m_engine->networks();
    const QList<quint64> &rows = m_engine->filteredNetworks();
    auto write = [&ok](const QString &path, const QString &text) {
        QString error;
        const bool written = path == QLatin1String("-")
                                 ? writeStdout(text, &error)
                                 : ExportDocument::writeDocument(path, text, &error);
        if (!written) {
            std::fprintf(stderr, "Cannot write %s: %s\n",
                         path == QLatin1String("-") ? "to standard output" : qUtf8Printable(path),
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
                 static_cast<long long>(m_engine ? m_engine->networks().size() : 0),
                 final ? "\n" : "   ");
    std::fflush(stderr);
}

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>

class PreferenceStore;
class StreamAlertPresenter;
class SurveyEngine;
class QTimer;

// Runs the survey's update cycle without a window, on a QCoreApplication: for scripts,
// logging and checks. Alerts become lines on standard error; outputs are written atomically
// at the end, the log is appended and flushed every cycle.
class HeadlessRunner final : public QObject
{
    Q_OBJECT
public:
    enum ExitCode { Done = 0, BadArguments = 2, NoInterface = 3, OutputFailed = 4 };

    struct Options
    {
        qint64 cycles = -1;             // -1: until interrupted
        std::optional<double> interval; // seconds; default: the stored update interval
        QString exportTsv;              // "-" = standard output
        QString exportHtml;
        QString logTsv;
        QString filter;
        bool progress = true; // a progress line when standard error is a terminal
    };

    explicit HeadlessRunner(const Options &options, PreferenceStore *preferences = nullptr,
                            QObject *parent = nullptr);
    ~HeadlessRunner() override;

    // Starts the run: launch scan and first cycle now, then a cycle per interval. Returns
    // false (and sets exitCode()) when it ends before it starts. finished() follows the
    // last cycle, once the outputs are written.
    bool start();
    // Ends the run after the current cycle (what SIGINT and SIGTERM do).
    void stop();
    int exitCode() const { return m_exitCode; }

    SurveyEngine *engine() const { return m_engine.get(); }
    qint64 cyclesRun() const { return m_cyclesRun; }

    // Routes SIGINT and SIGTERM of the process to stop() of the running runner.
    static void installSignalHandlers();

Q_SIGNALS:
    void finished(int exitCode);

private:
    void runCycle();
    void afterWorkingCycle();
    bool writeLogBlock();
    bool writeOutputs();
    void printProgress(bool final);
    void finishWhenIdle();

    Options m_options;
    PreferenceStore *m_preferences;
    std::unique_ptr<PreferenceStore> m_ownedPreferences;
    std::unique_ptr<StreamAlertPresenter> m_alerts;
    std::unique_ptr<SurveyEngine> m_engine;
    QTimer *m_timer = nullptr;
    QFile m_log;
    bool m_logFailed = false;
    QString m_logError;
    qint64 m_cyclesRun = 0;
    int m_exitCode = Done;
    bool m_stopping = false;
    bool m_finished = false;
    bool m_terminal = false;
};

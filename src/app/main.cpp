// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/CommandLineOptions.h"
#include "app/HeadlessRunner.h"
#include "prefs/PreferenceStore.h"
#include "sensor/SensorEndpoint.h"
#include "wireless/BackendFactory.h"
#include "wireless/WirelessBackend.h"
#include "wireless/replay/ReplayBackend.h"

#include <QApplication>
#include <QCoreApplication>
#include <QFileInfo>
#include <QGuiApplication>
#include <QIcon>
#include <QMainWindow>
#include <QStatusBar>
#include <QTimer>

#include <cstdio>

namespace {
BackendFactory::Kind kindOf(CommandLineOptions::Backend backend)
{
    switch (backend) {
    case CommandLineOptions::Backend::Linux:
        return BackendFactory::Kind::Linux;
    case CommandLineOptions::Backend::Simulated:
        return BackendFactory::Kind::Simulated;
    case CommandLineOptions::Backend::Replay:
        return BackendFactory::Kind::Replay;
    case CommandLineOptions::Backend::Auto:
        break;
    }
    return BackendFactory::Kind::Auto;
}

// --serve: the sensor over the running survey. False, having said why, when it cannot listen.
bool startSensor(const CommandLineOptions &options, SurveyEngine *engine,
                 std::unique_ptr<SensorEndpoint> *sensor)
{
    if (options.servePort < 0)
        return true;
    QString error;
    *sensor = SensorEndpoint::start(engine, options.serveAddress, options.servePort, &error);
    if (!*sensor)
        std::fprintf(stderr, "%s\n", qUtf8Printable(error));
    return *sensor != nullptr;
}

// Everything after Qt has started. `gui` is false for headless runs, help and version,
// which run on a QCoreApplication: no platform plugin, no window, no display needed.
int run(bool gui)
{
    QCoreApplication::setOrganizationName(QStringLiteral("Corvane"));
    QCoreApplication::setApplicationName(QStringLiteral("Wi-Fi Monitor"));
    QCoreApplication::setApplicationVersion(QStringLiteral(CORVANE_VERSION));
    if (gui) {
        QGuiApplication::setDesktopFileName(QStringLiteral(CORVANE_APP_ID));
        QGuiApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/corvane.svg")));
    }

    CommandLineOptions options;
    QString error;
    if (!options.parse(QCoreApplication::arguments(), &error)) {
        std::fprintf(stderr, "%s\n\n%s", qUtf8Printable(error),
                     qUtf8Printable(CommandLineOptions::usage()));
        return HeadlessRunner::BadArguments;
    }
    if (options.help) {
        std::printf("%s", qUtf8Printable(CommandLineOptions::usage()));
        return 0;
    }
    if (options.version) {
        std::printf("Corvane Wi-Fi Monitor %s\n", CORVANE_VERSION);
        return 0;
    }

    BackendFactory::Request request;
    request.kind = kindOf(options.backend);
    request.scenario = options.scenario;
    request.seed = options.seed;
    request.capture = options.capture;
    request.speed = options.speed;
    QString notice;
    auto backend = BackendFactory::create(request, &error, &notice);
    if (!backend) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(error));
        return options.headless ? HeadlessRunner::NoInterface : 1;
    }
    if (!notice.isEmpty())
        std::fprintf(stderr, "%s\n", qUtf8Printable(notice));
    WirelessBackend::setCurrent(backend);
    auto *replay = qobject_cast<ReplayBackend *>(backend.get());
    if (replay) {
        // One scan window of the capture per update interval.
        const double window = options.interval && *options.interval > 0
                                  ? *options.interval
                                  : double(PreferenceStore().updateIntervalValue());
        replay->setScanWindow(window);
    }

    if (options.headless) {
        HeadlessRunner::Options run;
        run.cycles = options.cycles;
        run.interval = options.interval;
        run.exportTsv = options.exportTsv;
        run.exportHtml = options.exportHtml;
        run.logTsv = options.logTsv;
        run.filter = options.filter;
        HeadlessRunner::installSignalHandlers();
        HeadlessRunner runner(run);
        if (replay && options.cycles < 0) {
            // Without a cycle count a replay ends with its capture.
            QObject::connect(replay, &ReplayBackend::replayFinished, &runner,
                             &HeadlessRunner::stop);
        }
        QObject::connect(&runner, &HeadlessRunner::finished, QCoreApplication::instance(),
                         &QCoreApplication::exit);
        std::unique_ptr<SensorEndpoint> sensor;
        int code = runner.start() ? 0 : runner.exitCode();
        if (code == 0 && !startSensor(options, runner.engine(), &sensor))
            code = SensorEndpoint::kListenFailed;
        if (code == 0)
            code = QCoreApplication::exec();
        WirelessBackend::setCurrent(nullptr);
        return code;
    }
    if (!gui) {
        // Only the window needs a display; a headless request never gets here.
        std::fprintf(stderr, "Internal error: no window without a display\n");
        return 1;
    }

    AppDelegate::Options appOptions;
    AppDelegate controller(appOptions);
    QMainWindow *window = controller.window();
    if (!notice.isEmpty())
        window->statusBar()->showMessage(notice);
    if (replay) {
        const QString title = window->windowTitle();
        window->statusBar()->showMessage(QStringLiteral("Replaying %1").arg(replay->capturePath()));
        QObject::connect(replay, &ReplayBackend::replayFinished, window, [window, title, replay] {
            window->setWindowTitle(title + QStringLiteral(" — replay of %1 finished")
                                               .arg(QFileInfo(replay->capturePath()).fileName()));
            window->statusBar()->showMessage(QStringLiteral("The replay has finished."));
        });
    }
    std::unique_ptr<SensorEndpoint> sensor;
    if (!startSensor(options, controller.engine(), &sensor))
        return SensorEndpoint::kListenFailed;
    window->show();
    QApplication::setQuitOnLastWindowClosed(
        AppDelegate::applicationShouldTerminateAfterLastWindowClosed());
    QTimer::singleShot(0, &controller, &AppDelegate::applicationDidFinishLaunching);
    const int code = QApplication::exec();
    WirelessBackend::setCurrent(nullptr);
    return code;
}
} // namespace

int main(int argc, char *argv[])
{
    // Headless runs, help and version need no display and no platform plugin at all. The
    // window does need one; say so instead of letting Qt abort.
    if (CommandLineOptions::wantsHeadless(argc, argv) ||
        CommandLineOptions::wantsInfo(argc, argv)) {
        QCoreApplication app(argc, argv);
        return run(false);
    }
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
        qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        std::fprintf(stderr, "There is no display to show the window on (DISPLAY and "
                             "WAYLAND_DISPLAY are unset). Start it in a desktop session, or "
                             "use --headless (see --help).\n");
        return 1;
    }
    QApplication app(argc, argv);
    return run(true);
}

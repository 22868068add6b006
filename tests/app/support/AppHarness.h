// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/AppDelegate.h"
#include "app/FileChooser.h"
#include "app/SegmentedControl.h"
#include "prefs/PreferenceStore.h"
#include "support/FakeBackend.h"
#include "util/Clock.h"
#include "util/RandomSource.h"
#include "util/StreamAlertPresenter.h"

#include <QLabel>
#include <QMainWindow>
#include <QSettings>
#include <QTemporaryDir>

#include <memory>

// A save dialog that answers what the test decided, and remembers what it was shown.
class FakeFileChooser final : public FileChooser
{
public:
    void chooseSaveFile(QWidget *, const QString &startDirectory, const QString &representedName,
                        Chosen chosen) override
    {
        lastStartDirectory = startDirectory;
        lastRepresentedName = representedName;
        chosen(answer);
    }
    QString answer;
    QString lastStartDirectory;
    QString lastRepresentedName;
};

// Everything a controller test needs: settings in a temporary folder, a fake backend, a
// clock that stands still, a seeded random source, recorded alerts and save dialogs.
class AppHarness
{
public:
    AppHarness()
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settingsDir.path());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settingsDir.path());
        Clock::setInstance(&clock);
        RandomSource::setInstance(&random);
        WirelessBackend::setCurrent(backend);
        restart();
    }
    ~AppHarness()
    {
        m_app.reset();
        preferences.reset();
        WirelessBackend::setCurrent(nullptr);
        RandomSource::setInstance(nullptr);
        Clock::setInstance(nullptr);
    }

    // A new controller over the same settings and backend (a restart of the program).
    AppDelegate &restart()
    {
        m_app.reset();
        preferences = std::make_unique<PreferenceStore>();
        AppDelegate::Options options;
        options.alerts = &alerts;
        options.fileChooser = &files;
        options.preferences = preferences.get();
        options.runStartupProbe = false;
        options.startTimer = false;
        m_app = std::make_unique<AppDelegate>(options);
        m_app->interfaceSelected(); // tests that skip the launch still use the first interface
        return *m_app;
    }
    AppDelegate &app() const { return *m_app; }
    // Launches the program with one scan that hears `scan`.
    void launchWith(const QList<CWNetworkRef> &scan)
    {
        backend->scans = {scan};
        m_app->applicationDidFinishLaunching();
    }
    // `seconds` ticks of the one-second timer on the manual clock.
    void runSeconds(int seconds)
    {
        for (int i = 0; i < seconds; ++i) {
            clock.advance(1000);
            m_app->updateData();
        }
    }
    // Shows a tab as a click on its segment does.
    void showTab(int segment)
    {
        auto *segments = find<SegmentedControl>("segmentedControl");
        segments->setSelectedSegment(segment);
        m_app->changeTabView(segments);
    }
    // The names the table shows, top to bottom.
    QStringList rowNames() const
    {
        QStringList names;
        for (qsizetype row = 0; row < m_app->numberOfRowsInTableView(); ++row)
            names << m_app->objectValueForTableColumn("NETWORK_NAME", row).toString();
        return names;
    }
    // The texts of the labels "<name>Field" in `parent` (the window if none), for these
    // space-separated names.
    QStringList fieldTexts(const QString &names, const QWidget *parent = nullptr) const
    {
        const QWidget *in = parent ? parent : m_app->window();
        QStringList texts;
        for (const QString &name : names.split(u' '))
            texts << in->findChild<QLabel *>(name + "Field")->text();
        return texts;
    }
    template <typename T> T *find(const char *objectName) const
    {
        return m_app->window()->findChild<T *>(QString::fromLatin1(objectName));
    }

    std::shared_ptr<FakeBackend> backend = std::make_shared<FakeBackend>();
    StreamAlertPresenter alerts{false};
    FakeFileChooser files;
    ManualClock clock{QDateTime(QDate(2026, 11, 22), QTime(12, 0), Qt::UTC)};
    SeededRandomSource random{7};
    QTemporaryDir settingsDir;
    std::unique_ptr<PreferenceStore> preferences;

private:
    std::unique_ptr<AppDelegate> m_app;
};

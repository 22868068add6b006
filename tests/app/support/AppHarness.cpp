// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppHarness.h"

#include "prefs/PreferenceStore.h"

#include <QMainWindow>
#include <QSettings>

AppHarness::AppHarness()
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settingsDir.path());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settingsDir.path());
    Clock::setInstance(&clock);
    RandomSource::setInstance(&random);
    WirelessBackend::setCurrent(backend);
    restart();
}

AppHarness::~AppHarness()
{
    m_app.reset();
    preferences.reset();
    WirelessBackend::setCurrent(nullptr);
    RandomSource::setInstance(nullptr);
    Clock::setInstance(nullptr);
}

AppDelegate &AppHarness::restart()
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
    // Tests that skip the launch still talk to the first interface.
    m_app->interfaceSelected();
    return *m_app;
}

QWidget *AppHarness::widget(const char *objectName) const
{
    return m_app->window()->findChild<QWidget *>(QString::fromLatin1(objectName));
}

void AppHarness::launchWith(const QList<CWNetworkRef> &scan)
{
    backend->scans = {scan};
    m_app->applicationDidFinishLaunching();
}

QStringList AppHarness::rowNames() const
{
    QStringList names;
    for (qsizetype row = 0; row < m_app->numberOfRowsInTableView(); ++row)
        names << m_app->objectValueForTableColumn(QStringLiteral("NETWORK_NAME"), row).toString();
    return names;
}

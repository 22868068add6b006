// SPDX-License-Identifier: GPL-3.0-or-later
// Launch and the update cycle.
#include "app/AppDelegate.h"

#include "app/DetailPanelController.h"
#include "app/DialogFileChooser.h"
#include "app/LevelBarDelegate.h"
#include "app/MessageBoxAlertPresenter.h"
#include "app/NetworkTableModel.h"
#include "app/StartupProbe.h"
#include "model/SurveyEngine.h"
#include "plot/PlotTheme.h"
#include "plot/RealTimePlot.h"
#include "prefs/PreferenceStore.h"
#include "ui_DetailPanel.h"
#include "ui_IBSSDialog.h"
#include "ui_JoinDialog.h"
#include "ui_MainWindow.h"

#include "wireless/WirelessBackend.h"

#include <QApplication>
#include <QHeaderView>
#include <QMainWindow>
#include <QTimer>

namespace {
// Stands in for the interface while none is selected: answers zero, false or none.
CWInterface &nullInterface()
{
    static CWInterface none(nullptr, QString());
    return none;
}
} // namespace

AppDelegate::AppDelegate(const Options &options, QObject *parent)
    : QObject(parent), m_options(options), ui(std::make_unique<Ui::MainWindow>())
{
    m_window = new QMainWindow;
    m_window->setAttribute(Qt::WA_DeleteOnClose, false);
    ui->setupUi(m_window);

    if (options.alerts) {
        m_alerts = options.alerts;
    } else {
        m_ownedAlerts = std::make_unique<MessageBoxAlertPresenter>(m_window);
        m_alerts = m_ownedAlerts.get();
    }
    if (options.fileChooser) {
        m_fileChooser = options.fileChooser;
    } else {
        m_ownedFileChooser = std::make_unique<DialogFileChooser>();
        m_fileChooser = m_ownedFileChooser.get();
    }
    if (options.preferences) {
        m_preferences = options.preferences;
    } else {
        m_ownedPreferences = std::make_unique<PreferenceStore>();
        m_preferences = m_ownedPreferences.get();
    }
    m_engine = new SurveyEngine(m_preferences, m_alerts, this);
    m_engine->setTracksChangedRecords(true);
    connect(m_engine, &SurveyEngine::listChanged, this, &AppDelegate::reloadTableData);
    connect(m_engine, &SurveyEngine::cycleFinished, this, &AppDelegate::cycleDidFinish);
    connect(m_engine, &SurveyEngine::radioOff, this, &AppDelegate::validateToolbar);

    setupViews();
    setupToolbarAndMenus();
    setupDialogs();
    setupDetailPanel();
    awakeFromNib();
}

AppDelegate::~AppDelegate()
{
    qApp->removeEventFilter(this);
    // The plots hold chart views inside the window's host views: drop them first.
    m_signalPlot.reset();
    m_interfaceSignalPlot.reset();
    m_detailPlot.reset();
    delete m_window;
}

CWInterface &AppDelegate::iface() const
{
    const CWInterfaceRef &current = m_engine->currentInterface();
    return current ? *current : nullInterface();
}

const NetworkList &AppDelegate::networks() const
{
    return m_engine->networks();
}

CWInterfaceRef AppDelegate::currentInterface() const
{
    return m_engine->currentInterface();
}

const QList<CWNetworkRef> &AppDelegate::scanResults() const
{
    return m_engine->scanResults();
}

const QList<quint64> &AppDelegate::filteredNetworks() const
{
    return m_engine->filteredNetworks();
}

QSet<const NetworkObject *> AppDelegate::takeChangedRecords()
{
    return m_engine->takeChangedRecords();
}

quint64 AppDelegate::tickCount() const
{
    return m_engine->tickCount();
}

void AppDelegate::awakeFromNib()
{
    // 1. The interface pop-up lists the system's interfaces in the system's order.
    ui->supportedInterfacesPopup->clear();
    ui->supportedInterfacesPopup->addItems(CWInterface::supportedInterfaces());

    // 2-3. The controller is the table's data source and delegate.
    setupTable();

    // Link changes of the backend (association, power, channel) refresh the interface tab.
    if (auto backend = WirelessBackend::current()) {
        connect(backend.get(), &WirelessBackend::linkChanged, this,
                [this](const QString &name, const QStringList &keys) {
                    wifi_network_changed(this, keys);
                    handleNotification(QStringLiteral("link changed on %1").arg(name));
                });
    }

    // 4. Spinners are hidden until something runs.
    ui->refreshSpinner->setVisible(false);
    joinUi->joinSpinner->setVisible(false);
    ibssUi->ibssSpinner->setVisible(false);

    // 5. No detail-panel timer is pending.
    m_detailPanelMoveTimer.clear();
    m_showDetailTimer.clear();
    m_hideDetailTimer.clear();

    // 6. Mouse moves of the whole application pass through the controller (and on,
    // unchanged), as do leaving the window and the application losing activation.
    qApp->installEventFilter(this);
}

void AppDelegate::applicationDidFinishLaunching()
{
    // 1. The first interface the platform returned becomes the current one.
    ui->supportedInterfacesPopup->setCurrentIndex(0);
    interfaceSelected();

    // 2. The first scan happens before any plot exists.
    updateNetworks();

    // 3-6. The three plots, built for the size their host views have.
    layoutHostViews();
    m_interfaceSignalPlot.reset();
    m_signalPlot.reset();
    m_interfaceSignalPlot = std::make_unique<RealTimePlot>();
    m_interfaceSignalPlot->setDelegate(this);
    m_interfaceSignalPlot->renderInView(ui->interfaceSignalPlotView, currentTheme(), true);
    m_signalPlot = std::make_unique<RealTimePlot>();
    m_signalPlot->setDelegate(this);
    m_signalPlot->render(networkMacs(), ui->signalPlotView, currentTheme(), true);
    m_detailPlot = std::make_unique<RealTimePlot>();
    m_detailPlot->setDelegate(this);
    m_detailPlot->renderInView(detailUi->detailPlotView, currentTheme(), true);

    // 7. One full cycle at once, so the window opens populated; the timer's first tick
    // then works again from tick 0.
    updateData();
    m_engine->setTickCount(0);

    // 8. The repeating one-second tick; not kept anywhere, it runs until the program ends.
    if (m_options.startTimer) {
        auto *timer = new QTimer(this);
        connect(timer, &QTimer::timeout, this, &AppDelegate::updateData);
        timer->start(1000);
    }

    // 9. The capture-device probe.
    if (m_options.runStartupProbe)
        StartupProbe::run(!m_options.headless);
}

void AppDelegate::updateData()
{
    // The tick rule, and the hold while an alert, a sheet's action or an authorization is
    // pending, belong to the engine.
    m_engine->updateData();
}

bool AppDelegate::performUpdateCycle()
{
    return m_engine->performUpdateCycle();
}

void AppDelegate::cycleDidFinish()
{
    if (m_signalPlot) {
        m_signalPlot->updateSignalPlot();
        handSignalsToPlot();
    }
    updateDetailPlot();
    ui->wiFiMapView->update();
    ui->wiFiChannelView->update();
    ui->wiFiChannelView5->update();
    ui->channelOccupancyView->update();
    updateInterfaceInfoTab();
    validateToolbar();
}

void AppDelegate::handSignalsToPlot()
{
    // Every record's signals go to the plot under its BSSID. Only a BSSID that has a plot
    // keeps them; for any other the plot merely resets its axes, which one call does as
    // well as a hundred thousand. So the plotted networks get theirs, and the first record
    // stands in for the rest. Repeated BSSIDs take the long way: there the last one wins.
    const NetworkList &list = networks();
    if (list.isEmpty())
        return;
    if (list.hasDuplicateBssids()) {
        for (const NetworkObjectRef &record : list)
            m_signalPlot->setData(record->signals(), record->bssid());
        return;
    }
    bool handed = false;
    const QStringList plotted = m_signalPlot->plotIdentifiers();
    QSet<QString> done;
    for (const QString &bssid : plotted) {
        if (done.contains(bssid))
            continue;
        done.insert(bssid);
        if (const NetworkObjectRef record = list.networkWithBssid(bssid)) {
            m_signalPlot->setData(record->signals(), bssid);
            handed = true;
        }
    }
    if (!handed)
        m_signalPlot->setData(list.at(0)->signals(), list.at(0)->bssid());
}

void AppDelegate::interfaceSelected()
{
    m_engine->setCurrentInterface(
        CWInterface::interfaceWithName(ui->supportedInterfacesPopup->currentText()));
    updateInterfaceInfoTab();
}

const PlotTheme *AppDelegate::currentTheme() const
{
    if (m_currentThemeName == QLatin1String("None"))
        return PlotTheme::nullTheme();
    if (m_currentThemeName == QLatin1String("Default"))
        return nullptr;
    return PlotTheme::themeNamed(m_currentThemeName);
}

void AppDelegate::handleNotification(const QString &notification)
{
    qInfo("note: %s", qUtf8Printable(notification));
    updateInterfaceInfoTab();
}

qint64 AppDelegate::numberOfDatas() const
{
    return m_preferences->numberOfDatas();
}

qint64 AppDelegate::numberOfTopNetworks() const
{
    return qint64(m_preferences->numberOfTopNetworksValue());
}

qint64 AppDelegate::updateInterval()
{
    return m_preferences->updateIntervalValue();
}

void wifi_network_changed(void *context, const QStringList &changedKeys)
{
    Q_UNUSED(context);
    for (const QString &key : changedKeys) {
        // Keys look like "State:/Network/Interface/<name>/AirPort": the name is part 3.
        const QStringList parts = key.split(QLatin1Char('/'));
        const QString name = parts.value(3);
        CWInterfaceRef ifc = CWInterface::interfaceWithName(name);
        const CWInterface &i = ifc ? *ifc : CWInterface::null();
        qInfo("%s status changed: current ssid is %s, security is %lld", qUtf8Printable(name),
              i.ssid() ? qUtf8Printable(*i.ssid()) : "(null)",
              static_cast<long long>(i.security()));
    }
}

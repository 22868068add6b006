// SPDX-License-Identifier: GPL-3.0-or-later
// Tabs, the segmented control, the View menu, toolbar and menu wiring, help, preferences.
#include "app/AppDelegate.h"
#include "app/SegmentedControl.h"
#include "plot/ChannelOccupancyView.h"
#include "plot/PlotView.h"
#include "plot/WiFiChannelView.h"
#include "plot/WiFiMapView.h"
#include "prefs/PreferencesWindowController.h"
#include "ui_MainWindow.h"

#include <QAction>
#include <QApplication>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QLayout>
#include <QMainWindow>
#include <QMessageBox>
#include <QStyle>
#include <QTabBar>
#include <QToolBar>
#include <QUrl>

void AppDelegate::setupViews()
{
    // The segmented control carries tag i on segment i, as do the tabs and the View menu.
    QStringList labels;
    for (int i = 0; i < ui->tabView->count(); ++i)
        labels << ui->tabView->tabText(i).remove(QStringLiteral(" Channels"));
    ui->segmentedControl->setSegments(labels);
    ui->segmentedControl->setSelectedSegment(ui->tabView->currentIndex());
    ui->tabView->tabBar()->hide();
    ui->powerStateControl->setSegments({tr("On"), tr("Off")});

    ui->interfaceSignalPlotView->setIdentifier(QStringLiteral("info"));
    ui->signalPlotView->setIdentifier(QStringLiteral("signal"));
    ui->wiFiChannelView->setIdentifier(QStringLiteral("2.4"));
    ui->wiFiChannelView5->setIdentifier(QStringLiteral("5"));
    ui->wiFiMapView->setDelegate(this);
    ui->wiFiChannelView->setDelegate(this);
    ui->wiFiChannelView5->setDelegate(this);
    ui->channelOccupancyView->setDelegate(this);

    for (QAction *action : ui->viewMenu->actions()) {
        const int tag = action->objectName().mid(int(qstrlen("viewAction"))).toInt();
        action->setData(tag);
        action->setChecked(tag == ui->tabView->currentIndex());
    }
}

void AppDelegate::layoutHostViews()
{
    // A tab widget lays out only its current page, but the plots take their title size and
    // paddings from their host view when they are built: give every page the size it will
    // have, and the hover panel its own.
    if (QWidget *current = ui->tabView->currentWidget()) {
        const QRect frame = current->geometry();
        for (int i = 0; i < ui->tabView->count(); ++i) {
            QWidget *page = ui->tabView->widget(i);
            if (page != current)
                page->setGeometry(frame);
            if (page->layout())
                page->layout()->activate();
        }
    }
    if (m_detailPanel) {
        m_detailPanel->adjustSize();
        if (m_detailPanel->layout())
            m_detailPanel->layout()->activate();
    }
}

void AppDelegate::setupToolbarAndMenus()
{
    QStyle *style = m_window->style();
    auto icon = [](const char *themeName, const QIcon &fallback) {
        return QIcon::fromTheme(QString::fromLatin1(themeName), fallback);
    };
    ui->powerOn->setIcon(icon("network-wireless", style->standardIcon(QStyle::SP_MediaPlay)));
    ui->powerOff->setIcon(
        icon("network-wireless-disconnected", style->standardIcon(QStyle::SP_MediaStop)));
    ui->actionRefresh->setIcon(icon("view-refresh", style->standardIcon(QStyle::SP_BrowserReload)));
    ui->actionJoin->setIcon(
        icon("network-connect", style->standardIcon(QStyle::SP_DialogApplyButton)));
    ui->actionCreateIBSS->setIcon(
        icon("network-workgroup", style->standardIcon(QStyle::SP_FileDialogNewFolder)));
    ui->actionHelp->setIcon(
        icon("help-contents", style->standardIcon(QStyle::SP_DialogHelpButton)));

    connect(ui->supportedInterfacesPopup, &QComboBox::activated, this,
            &AppDelegate::interfaceSelected);
    connect(ui->segmentedControl, &SegmentedControl::segmentClicked, this,
            [this] { changeTabView(ui->segmentedControl); });
    for (QAction *action : ui->viewMenu->actions()) {
        // The menu action toggles itself before we see it; put the state back so that
        // viewAction() sees the item as it was when it was chosen.
        connect(action, &QAction::triggered, this, [this, action](bool checked) {
            action->setChecked(!checked);
            viewAction(action);
        });
    }
    connect(ui->powerStateControl, &SegmentedControl::segmentClicked, this,
            [this] { changePower(ui->powerStateControl); });
    connect(ui->powerOn, &QAction::triggered, this, [this] { changePower(ui->powerOn); });
    connect(ui->powerOff, &QAction::triggered, this, [this] { changePower(ui->powerOff); });
    connect(ui->channelPopup, &QComboBox::activated, this, &AppDelegate::changeChannel);
    connect(ui->disconnectButton, &QPushButton::clicked, this, &AppDelegate::disconnect);
    connect(ui->actionDisconnect, &QAction::triggered, this, &AppDelegate::disconnect);
    connect(ui->refreshButton, &QPushButton::clicked, this, &AppDelegate::refreshPressed);
    connect(ui->actionRefresh, &QAction::triggered, this, &AppDelegate::refreshPressed);
    connect(ui->actionExportCSV, &QAction::triggered, this, &AppDelegate::exportToCSV);
    connect(ui->actionExportHTML, &QAction::triggered, this, &AppDelegate::exportToHTML);
    connect(ui->actionPreferences, &QAction::triggered, this, &AppDelegate::showPreferencesWindow);
    connect(ui->actionHelp, &QAction::triggered, this, &AppDelegate::showHelp);
    connect(ui->actionQuit, &QAction::triggered, m_window, &QMainWindow::close);
    connect(ui->actionAbout, &QAction::triggered, this, [this] {
        QMessageBox::about(m_window, tr("About Corvane Wi-Fi Monitor"),
                           tr("<b>Corvane Wi-Fi Monitor</b> %1<br>A Wi-Fi scanner and signal "
                              "monitor for Linux.<br>Licensed under the GNU GPL, version 3 or "
                              "later.")
                               .arg(QStringLiteral(CORVANE_VERSION)));
    });
}

void AppDelegate::changeTabView(QObject *sender)
{
    const int segment = ui->segmentedControl->selectedSegment();
    ui->tabView->setCurrentIndex(segment);
    if (!sender)
        return; // the View menu already marks the right item
    const QList<QAction *> items = ui->viewMenu->actions();
    for (QAction *item : items) {
        if (item->isChecked()) {
            item->setChecked(false);
            break;
        }
    }
    for (QAction *item : items) {
        if (item->data().toInt() == ui->segmentedControl->tagForSegment(segment)) {
            item->setChecked(true);
            break;
        }
    }
}

void AppDelegate::viewAction(QAction *item)
{
    if (!item || item->isChecked())
        return;
    for (QAction *other : ui->viewMenu->actions()) {
        if (other->isChecked()) {
            other->setChecked(false);
            break;
        }
    }
    item->setChecked(true);
    ui->segmentedControl->selectSegmentWithTag(item->data().toInt());
    changeTabView(nullptr);
}

QString AppDelegate::helpPageAddress()
{
    // Installed next to the program (share/corvane/help), else the build tree's copy (the
    // build fills in the version).
    const QString installed =
        QDir(QCoreApplication::applicationDirPath())
            .absoluteFilePath(QStringLiteral("../share/corvane/help/index.html"));
    if (QFileInfo::exists(installed))
        return QUrl::fromLocalFile(QFileInfo(installed).canonicalFilePath()).toString();
    return QUrl::fromLocalFile(QStringLiteral(CORVANE_BUILT_HELP_PAGE)).toString();
}

void AppDelegate::showHelp()
{
    QDesktopServices::openUrl(QUrl(helpPageAddress()));
}

PreferencesWindowController *AppDelegate::preferencesController()
{
    if (!m_preferencesController)
        m_preferencesController = new PreferencesWindowController(m_preferences, m_window);
    return m_preferencesController;
}

void AppDelegate::showPreferencesWindow()
{
    PreferencesWindowController *controller = preferencesController();
    controller->show();
    controller->raise();
    controller->activateWindow();
}

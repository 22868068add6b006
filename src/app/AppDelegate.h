// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/NetworkList.h"
#include "plot/PlotDelegate.h"
#include "wireless/CWInterface.h"
#include "wireless/CWNetwork.h"

#include <QDialog>
#include <QList>
#include <QMainWindow>
#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QVariant>

#include <functional>
#include <memory>
#include <optional>

class AlertPresenter;
class FileChooser;
class NetworkTableModel;
class PlotTheme;
class PlotView;
class PreferenceStore;
class PreferencesWindowController;
class QAction;
class QEvent;
class QMouseEvent;
class RealTimePlot;
class WiFiChannelView;
class WiFiMapView;
class DetailPanelController;
class SurveyEngine;
namespace Ui {
class MainWindow;
class JoinDialog;
class IBSSDialog;
class DetailPanel;
} // namespace Ui

// The application controller: owns the interface, the list of network records, the table,
// the plots and views, and runs the once-a-second update cycle. Its operations are split
// by concern over the AppDelegate*.cpp files.
class AppDelegate final : public QObject, public PlotDelegate
{
    Q_OBJECT
public:
    struct Options
    {
        AlertPresenter *alerts = nullptr;       // default: message boxes on the window
        FileChooser *fileChooser = nullptr;     // default: QFileDialog
        PreferenceStore *preferences = nullptr; // default: the user's settings
        bool headless = false;                  // no window shown, no start-up probe browse
        bool runStartupProbe = true;
        bool startTimer = true; // the repeating 1 s tick
    };

    // Loads the main window form and sets it up (what awakeFromNib does).
    explicit AppDelegate(const Options &options, QObject *parent = nullptr);
    ~AppDelegate() override;

    QMainWindow *window() const { return m_window; }

    // --- launch and cycle ---
    void awakeFromNib();
    void applicationDidFinishLaunching();
    static bool applicationShouldTerminateAfterLastWindowClosed() { return true; }
    void updateData();
    void interfaceSelected();
    // The theme handed to the plots: "None" gives the null marker (no theme at all),
    // "Default" and any unknown name give null (the plots' own default look).
    const PlotTheme *currentTheme() const;
    void handleNotification(const QString &notification);
    QString currentThemeName() const { return m_currentThemeName; }
    void setCurrentThemeName(const QString &name) { m_currentThemeName = name; }
    quint64 tickCount() const;
    SurveyEngine *engine() const { return m_engine; }

    // --- scanning ---
    void updateNetworks();
    void scan();
    void refreshPressed();
    NetworkObjectRef networkWithBssid(const QString &bssid) const;
    QList<QVariantMap> networkMacs() const;
    static QString fixSSID(const QVariantMap &scanRecord);
    const QList<CWNetworkRef> &scanResults() const;

    // --- table ---
    void filterNetworks();
    void reloadTableData();
    qsizetype numberOfRowsInTableView() const;
    QVariant objectValueForTableColumn(const QString &identifier, qsizetype row) const;
    void setObjectValue(const QVariant &value, const QString &identifier, qsizetype row);
    void tableViewSelectionDidChange();
    void controlTextDidChange(QObject *sender);
    const QList<quint64> &filteredNetworks() const;
    // The records changed since the table last asked (see SurveyEngine).
    QSet<const NetworkObject *> takeChangedRecords();
    CWNetworkRef selectedNetwork() const { return m_selectedNetwork; }
    void setSelectedNetwork(const CWNetworkRef &network) { m_selectedNetwork = network; }

    // --- interface tab ---
    void updateInterfaceInfoTab();
    NetworkObjectRef networkOfCurrentInterface() const;
    static QString stringForOpMode(const std::optional<int> &opMode);
    static double signalStrength(double dbm);
    static float signalDBIAsPercentage(qint32 dbm);
    static double levelWithRSSI(double rssi, double noise);

    // --- control ---
    void changePower(QObject *sender);
    void changeChannel();
    void disconnect();
    bool validateToolbarItem(const QAction *item) const;
    void validateToolbar();

    // --- tabs, menus, help ---
    void changeTabView(QObject *sender);
    void viewAction(QAction *item);
    void showHelp();
    static QString helpPageAddress();

    // --- preferences ---
    void showPreferencesWindow();
    qint64 updateInterval();
    PreferenceStore *preferenceStore() const { return m_preferences; }

    // --- export ---
    void exportToCSV();
    void exportToHTML();

    // --- join and ad-hoc dialogs ---
    void joinButtonPressed();
    void resetDialog();
    void changeSecurityMode(QObject *sender);
    void change8021XProfile();
    void joinOKButtonPressed();
    void joinCancelButtonPressed();
    void sheetDidEnd(int returnCode);
    void createIBSSButtonPressed();
    void ibssOKButtonPressed();
    void ibssCancelButtonPressed();
    qint8 joinDialogContext() const { return m_joinDialogContext; }
    void setJoinDialogContext(qint8 context) { m_joinDialogContext = context; }
    QDialog *joinDialogWindow() const { return m_joinDialogWindow; }
    QDialog *ibssDialogWindow() const { return m_ibssDialogWindow; }

    // --- hover detail panel ---
    // One mouse move. `eventWindow` is the window the move belongs to (null: none of ours).
    void mouseMoved(QWidget *eventWindow, const QPointF &globalPos);
    void showDetailPanel();
    void hideDetailPanel();
    void calcDetailPanelLocation();
    void updateDetailPlot();
    QWidget *detailPanel() const { return m_detailPanel; }
    QString detailNetworkBssid() const { return m_detailNetworkBssid; }
    QPointF detailPanelLocation() const { return m_detailPanelLocation; }
    quint64 lastMoveOnRow() const { return m_lastMoveOnRow; }
    QTimer *showDetailTimer() const { return m_showDetailTimer; }
    QTimer *hideDetailTimer() const { return m_hideDetailTimer; }
    static constexpr quint64 kNoRow = 0x7fffffffffffffffULL;
    // Delays of the show and hide timers in milliseconds (tests shorten them).
    void setDetailPanelDelays(int showMs, int hideMs);

    // --- PlotDelegate ---
    const NetworkList &networks() const override;
    CWInterfaceRef currentInterface() const override;
    qint64 numberOfDatas() const override;
    qint64 numberOfTopNetworks() const override;

    RealTimePlot *signalPlot() const { return m_signalPlot.get(); }
    RealTimePlot *interfaceSignalPlot() const { return m_interfaceSignalPlot.get(); }
    RealTimePlot *detailPlot() const { return m_detailPlot.get(); }

    // Steps 2 to 10 of a tick: the working part of the cycle. False when the radio is off.
    bool performUpdateCycle();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    CWInterface &iface() const;
    // The leading integer of a pop-up title (channel items).
    static qint32 leadingInteger(const QString &text);
    void setupDialogs();
    void setupDetailPanel();
    void armDetailTimers();
    void detailPanelOrderOut();
    void setupTable();
    void setupToolbarAndMenus();
    void setupViews();
    void layoutHostViews();
    void writeExport(bool html);
    // After the engine's working cycle: plots, detail plot, views, interface tab.
    void cycleDidFinish();
    void handSignalsToPlot();
    // A long action of the sheets and the toolbar: holds the ticks until it answers.
    void beginAction();
    void endAction();
    PreferencesWindowController *preferencesController();

    Options m_options;
    QPointer<QMainWindow> m_window;
    std::unique_ptr<Ui::MainWindow> ui;
    AlertPresenter *m_alerts = nullptr;
    FileChooser *m_fileChooser = nullptr;
    PreferenceStore *m_preferences = nullptr;
    std::unique_ptr<AlertPresenter> m_ownedAlerts;
    std::unique_ptr<FileChooser> m_ownedFileChooser;
    std::unique_ptr<PreferenceStore> m_ownedPreferences;
    PreferencesWindowController *m_preferencesController = nullptr;

    SurveyEngine *m_engine = nullptr; // the cycle and the records; owned as a child
    CWNetworkRef m_selectedNetwork;
    qint8 m_joinDialogContext = 0;
    bool m_actionPending = false; // a join, ad-hoc network or power change under way
    QString m_currentThemeName;

    NetworkTableModel *m_tableModel = nullptr;
    std::unique_ptr<RealTimePlot> m_signalPlot;
    std::unique_ptr<RealTimePlot> m_interfaceSignalPlot;
    std::unique_ptr<RealTimePlot> m_detailPlot;

    // Join and ad-hoc sheets.
    QPointer<QDialog> m_joinDialogWindow;
    QPointer<QDialog> m_ibssDialogWindow;
    std::unique_ptr<Ui::JoinDialog> joinUi;
    std::unique_ptr<Ui::IBSSDialog> ibssUi;

    // Hover detail panel.
    QPointer<QWidget> m_detailPanel;
    std::unique_ptr<Ui::DetailPanel> detailUi;
    std::unique_ptr<DetailPanelController> m_detailPanelController;
    QString m_detailNetworkBssid;
    QPointF m_detailPanelLocation;
    QPointer<QTimer> m_showDetailTimer;
    QPointer<QTimer> m_hideDetailTimer;
    QPointer<QTimer> m_detailPanelMoveTimer; // never scheduled; only ever cleared
    quint64 m_lastMoveOnRow = 0;
    int m_showDelayMs = 1000;
    int m_hideDelayMs = 10000;
    // The last mouse move handled, so that one move propagating up the widget tree counts once.
    quint64 m_lastMoveTimestamp = 0;
    QPointF m_lastMovePos;
    // Where the pointer last moved over the main window, in its coordinates: the one place
    // every window system tells (a Wayland client knows no global pointer position).
    QPointF m_pointerInWindow;
};

// The hook for link-change events: logs each changed interface's SSID and security.
void wifi_network_changed(void *context, const QStringList &changedKeys);

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/NetworkList.h"
#include "wireless/CWInterface.h"
#include "wireless/CWNetwork.h"

#include <QList>
#include <QObject>
#include <QSet>
#include <QString>

#include <functional>
#include <utility>
#include <vector>

class AlertPresenter;
class PreferenceStore;

// The survey itself, without any window: the interface in use, every network record, the
// latest raw scan, the rows that match the search text, and the once-a-second tick that
// authorizes, scans, merges and filters. The window, the headless run and the sensor all
// drive this object and draw or write what it holds.
//
// Nothing here waits: an authorization or an alert that has not been answered yet holds
// the ticks (they neither work nor count) until it is, so a cycle never overlaps another
// one or a pending join.
class SurveyEngine final : public QObject
{
    Q_OBJECT
public:
    struct Statistics
    {
        quint64 scansTotal = 0;
        quint64 scanErrorsTotal = 0;
        double lastScanSeconds = 0;
        double lastCycleSeconds = 0;
    };

    SurveyEngine(PreferenceStore *preferences, AlertPresenter *alerts, QObject *parent = nullptr);
    ~SurveyEngine() override;

    CWInterfaceRef currentInterface() const { return m_currentInterface; }
    void setCurrentInterface(const CWInterfaceRef &interface) { m_currentInterface = interface; }
    const NetworkList &networks() const { return m_networks; }
    const QList<CWNetworkRef> &scanResults() const { return m_scanResults; }
    const QList<quint64> &filteredNetworks() const { return m_filteredNetworks; }
    // The search text takes effect at the next filterNetworks(), not when it is set.
    QString searchText() const { return m_searchText; }
    void setSearchText(const QString &text) { m_searchText = text; }
    quint64 tickCount() const { return m_tickCount; }
    void setTickCount(quint64 count) { m_tickCount = count; }
    const Statistics &statistics() const { return m_statistics; }
    PreferenceStore *preferences() const { return m_preferences; }
    AlertPresenter *alerts() const { return m_alerts; }

    // One tick: works on every n-th one (n the update interval in seconds), counting from 0.
    void updateData();
    // The working part of a tick. False when the radio is off (radioOff() is emitted).
    bool performUpdateCycle();
    // Authorize, scan, merge and sort; `then` runs once that is over (also after a refusal
    // or a failed scan). A call while one is under way only runs `then`.
    void updateNetworks(std::function<void()> then = {});
    // A merged scan into scanResults() only, sorted by SSID.
    void scan();
    void filterNetworks();
    NetworkObjectRef networkWithBssid(const QString &bssid) const;
    // A record changed outside a merge (its comment was edited): the next filter run and
    // the next takeChangedRecords() see it.
    void noteRecordChanged(const NetworkObject *record);
    // With tracking on, every record a merge updated or created, and every one noted as
    // changed, is kept until taken; the table asks for them instead of reading every row.
    void setTracksChangedRecords(bool on) { m_tracksChanges = on; }
    QSet<const NetworkObject *> takeChangedRecords() { return std::exchange(m_changed, {}); }

    // Something modal or long is pending (an alert, a join, a save dialog): ticks wait.
    void hold();
    void release();
    bool isHeld() const { return m_holds > 0; }

    // An alert through the presenter, holding the ticks until it is dismissed.
    void showCriticalAlert(const QString &title, const QString &message, const QString &button);
    void showAlert(const QString &message, const QString &informativeText, const QString &button);
    void showError(const CWError &error);
    void showTitledAlert(const QString &title, const QString &message, const QString &button);

Q_SIGNALS:
    // The list or the rows changed where the table reloads: after a merge, a failed scan
    // and every filter run.
    void listChanged();
    // A working cycle is complete (scan merged, rows filtered).
    void cycleFinished();
    // A working tick found the radio switched off and did nothing.
    void radioOff();

private:
    CWInterface &iface() const;
    // Holds the ticks; the returned callback releases them once the alert is dismissed.
    std::function<void()> holdUntilDismissed();
    void mergeScan();
    void reloadAfterMerge();
    void noteChanged(const NetworkObject *record);
    bool matchesSearch(const NetworkObject &record) const;

    PreferenceStore *m_preferences;
    AlertPresenter *m_alerts;
    CWInterfaceRef m_currentInterface;
    NetworkList m_networks;
    bool m_networksCreated = false;
    QList<CWNetworkRef> m_scanResults;
    QList<quint64> m_filteredNetworks;
    QString m_searchText;
    // Whether each record (by its slot in the list) matches m_matchedText; records changed
    // since the last filter run are read again, all of them when the text changes.
    std::vector<char> m_matchBySlot;
    QString m_matchedText;
    std::vector<const NetworkObject *> m_changedSinceFilter;
    QSet<const NetworkObject *> m_changed;
    bool m_tracksChanges = false;
    quint64 m_tickCount = 0;
    int m_holds = 0;
    bool m_updating = false;
    bool m_cycleUnderWay = false;
    Statistics m_statistics;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/SurveyEngine.h"

#include "prefs/PreferenceStore.h"
#include "util/AlertPresenter.h"
#include "util/Clock.h"
#include "util/RandomSource.h"
#include "util/StringUtil.h"
#include "wireless/CWKeys.h"
#include "wireless/SFAuthorization.h"

#include <QElapsedTimer>
#include <QPointer>

#include <algorithm>

namespace {
const QString kRight = QStringLiteral("system.preferences");
constexpr quint32 kAuthorizationFlags = SFAuthorization::kAuthorizationFlagInteractionAllowed |
                                        SFAuthorization::kAuthorizationFlagExtendRights |
                                        SFAuthorization::kAuthorizationFlagPreAuthorize;
} // namespace

SurveyEngine::SurveyEngine(PreferenceStore *preferences, AlertPresenter *alerts, QObject *parent)
    : QObject(parent), m_preferences(preferences), m_alerts(alerts)
{
}

SurveyEngine::~SurveyEngine() = default;

namespace {
// Stands in for the interface while none is selected: answers zero, false or none, and its
// actions fail with the usual error.
CWInterface &nullInterface()
{
    static CWInterface none(nullptr, QString());
    return none;
}
} // namespace

CWInterface &SurveyEngine::iface() const
{
    return m_currentInterface ? *m_currentInterface : nullInterface();
}

void SurveyEngine::updateData()
{
    // A tick while something modal is open neither works nor counts.
    if (isHeld())
        return;
    // The update interval is a count of ticks; the store never hands out 0.
    const quint64 interval = quint64(qMax<qint64>(1, m_preferences->updateIntervalValue()));
    const quint64 t = m_tickCount;
    m_tickCount = t + 1;
    if (t % interval != 0)
        return;
    performUpdateCycle();
}

bool SurveyEngine::performUpdateCycle()
{
    if (!iface().powerOn()) {
        Q_EMIT radioOff();
        return false;
    }
    qInfo("updateData");
    QElapsedTimer clock;
    clock.start();
    QPointer<SurveyEngine> self(this);
    m_cycleUnderWay = true;
    updateNetworks([self, clock] {
        if (!self)
            return;
        self->m_cycleUnderWay = false;
        self->filterNetworks();
        self->m_statistics.lastCycleSeconds = double(clock.nsecsElapsed()) / 1e9;
        Q_EMIT self->cycleFinished();
    });
    return true;
}

void SurveyEngine::updateNetworks(std::function<void()> then)
{
    if (m_updating) {
        if (then)
            then();
        return;
    }
    m_updating = true;
    hold();
    // Every scan starts with a fresh authorization attached to the interface. It may be
    // answered much later (a polkit prompt): the ticks are held until then.
    auto authorization = SFAuthorization::authorization();
    QPointer<SurveyEngine> self(this);
    authorization->obtainWithRight(
        kRight, kAuthorizationFlags,
        [self, authorization, then = std::move(then)](bool obtained, const CWError &) {
            if (!self)
                return;
            self->m_updating = false;
            self->release();
            if (!obtained) {
                self->showCriticalAlert(QStringLiteral("Error"), QStringLiteral("Auth failed"),
                                        QStringLiteral("OK"));
            } else {
                self->iface().setAuthorization(authorization);
                self->mergeScan();
            }
            if (then)
                then();
        });
}

void SurveyEngine::mergeScan()
{
    // The cycle's scan passes no parameters.
    CWError error;
    QElapsedTimer clock;
    clock.start();
    const QList<CWNetworkRef> results = iface().scanForNetworksWithParameters({}, &error);
    m_statistics.lastScanSeconds = double(clock.nsecsElapsed()) / 1e9;
    ++m_statistics.scansTotal;
    if (!error.isNull()) {
        ++m_statistics.scanErrorsTotal;
        m_scanResults.clear();
        showAlert(QStringLiteral("Scan Error"), error.localizedDescription(), QStringLiteral("Ok"));
        Q_EMIT listChanged();
        return;
    }
    m_scanResults = results;

    // One time stamp for the whole scan.
    if (!m_networksCreated) {
        m_networks.reserve(results.size());
        m_networksCreated = true;
    }
    // Kept as an instant (UTC): the views and the sensor compare every record's stamp on
    // every drawing and scrape, and each sum with a local time asks the C library for the
    // time zone (a look at the zone file every time).
    const QDateTime now = Clock::now().toUTC();

    // Update known records, create the rest; nothing is ever removed.
    RandomSource &random = RandomSource::instance();
    for (const CWNetworkRef &network : std::as_const(m_scanResults)) {
        if (!network)
            continue;
        if (NetworkObjectRef record = m_networks.networkForUpdate(network->bssid())) {
            record->updateWithCWNetwork(network, now);
            noteChanged(record.get());
            continue;
        }
        NetworkObjectRef record = NetworkObject::objectWithCWNetwork(network, now);
        // The draw order (hue, then saturation, then brightness) is fixed so that a seeded
        // source gives the same colours every run.
        const int i = random.uniform(0, 49);
        const int j = random.uniform(0, 9);
        const int k = random.uniform(0, 9);
        record->setColor(QColor::fromHsvF(float(i / 49.0), float(j / 9.0 * 0.4 + 0.6),
                                          float(k / 9.0 * 0.4 + 0.6), 1.0f));
        record->setComment(m_preferences->commentForBssid(record->bssid()));
        noteChanged(record.get());
        m_networks.append(record);
    }

    // The associated network first, then by name. Only the records this scan touched are
    // read again; the rest keep their names until they are heard.
    m_networks.sortChangedForDisplay(iface().bssid());
    reloadAfterMerge();
}

void SurveyEngine::reloadAfterMerge()
{
    // In a cycle the filter follows at once, with no event handled in between, and reloads
    // the table itself. A reload here would read the previous rows' indices against the
    // merged list: rows nobody gets to see, and a reset that costs the view its place.
    if (!m_cycleUnderWay)
        Q_EMIT listChanged();
}

void SurveyEngine::scan()
{
    CWError error;
    QVariantMap parameters;
    parameters.insert(kCWScanKeyMerge, true);
    m_scanResults = iface().scanForNetworksWithParameters(parameters, &error);
    if (!error.isNull()) {
        m_scanResults.clear();
        showAlert(QStringLiteral("Scan Error"), error.localizedDescription(), QStringLiteral("Ok"));
        return;
    }
    std::stable_sort(m_scanResults.begin(), m_scanResults.end(),
                     [](const CWNetworkRef &a, const CWNetworkRef &b) {
                         const QString sa = a ? a->ssid().value_or(QString()) : QString();
                         const QString sb = b ? b->ssid().value_or(QString()) : QString();
                         return sa.compare(sb, Qt::CaseInsensitive) < 0;
                     });
}

bool SurveyEngine::matchesSearch(const NetworkObject &record) const
{
    const QString &text = m_searchText;
    return text.isEmpty() ||
           (record.name() && StringUtil::containsStringIgnoreCase(*record.name(), text)) ||
           StringUtil::containsStringIgnoreCase(record.bssid(), text) ||
           (record.comment() && StringUtil::containsStringIgnoreCase(*record.comment(), text));
}

void SurveyEngine::filterNetworks()
{
    const qsizetype n = m_networks.size();
    m_filteredNetworks.clear();
    m_filteredNetworks.reserve(n);
    if (m_searchText.isEmpty()) {
        // Every record, without reading one.
        for (qsizetype i = 0; i < n; ++i)
            m_filteredNetworks.append(quint64(i));
        m_matchedText.clear();
        m_changedSinceFilter.clear();
        Q_EMIT listChanged();
        return;
    }

    // A record's answer changes only with its name or comment (the BSSID is fixed), so only
    // the records changed since the last run are asked again, unless the text is new. With
    // repeated BSSIDs a slot cannot be found from a record: everything is asked.
    const quint32 slots = m_networks.slotCount();
    bool everything = m_searchText != m_matchedText || m_networks.hasDuplicateBssids();
    std::vector<quint32> changed;
    for (const NetworkObject *record : m_changedSinceFilter) {
        if (everything)
            break;
        const quint32 slot = m_networks.slotOf(record);
        everything = slot == NetworkList::kNoSlot;
        changed.push_back(slot);
    }
    const std::size_t known = everything ? 0 : m_matchBySlot.size();
    m_matchBySlot.resize(slots);
    for (qsizetype i = 0; i < n; ++i) {
        const quint32 slot = m_networks.slotAt(i);
        if (slot >= known)
            m_matchBySlot[slot] = matchesSearch(*m_networks.at(i));
    }
    if (!everything) {
        for (const quint32 slot : changed)
            m_matchBySlot[slot] = matchesSearch(*m_networks.recordAtSlot(slot));
    }
    m_matchedText = m_searchText;
    m_changedSinceFilter.clear();
    for (qsizetype i = 0; i < n; ++i) {
        if (m_matchBySlot[m_networks.slotAt(i)])
            m_filteredNetworks.append(quint64(i));
    }
    Q_EMIT listChanged();
}

void SurveyEngine::noteChanged(const NetworkObject *record)
{
    m_changedSinceFilter.push_back(record);
    if (m_tracksChanges)
        m_changed.insert(record);
}

void SurveyEngine::noteRecordChanged(const NetworkObject *record)
{
    if (record)
        noteChanged(record);
}

NetworkObjectRef SurveyEngine::networkWithBssid(const QString &bssid) const
{
    return m_networks.networkWithBssid(bssid);
}

void SurveyEngine::hold()
{
    ++m_holds;
}

void SurveyEngine::release()
{
    if (m_holds > 0)
        --m_holds;
}

AlertPresenter::Dismissed SurveyEngine::holdUntilDismissed()
{
    hold();
    return [self = QPointer<SurveyEngine>(this)] {
        if (self)
            self->release();
    };
}

void SurveyEngine::showCriticalAlert(const QString &title, const QString &message,
                                     const QString &button)
{
    m_alerts->runCriticalAlert(title, message, button, holdUntilDismissed());
}

void SurveyEngine::showAlert(const QString &message, const QString &informativeText,
                             const QString &button)
{
    m_alerts->runAlert(message, informativeText, button, holdUntilDismissed());
}

void SurveyEngine::showError(const CWError &error)
{
    m_alerts->presentError(error, holdUntilDismissed());
}

void SurveyEngine::showTitledAlert(const QString &title, const QString &message,
                                   const QString &button)
{
    m_alerts->runTitledAlert(title, message, button, holdUntilDismissed());
}

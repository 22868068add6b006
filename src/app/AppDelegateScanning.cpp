// SPDX-License-Identifier: GPL-3.0-or-later
// Scanning and merging scan results into the list of records.
#include "app/AlertPresenter.h"
#include "app/AppDelegate.h"
#include "app/BusySpinner.h"
#include "prefs/PreferenceStore.h"
#include "ui_MainWindow.h"
#include "util/Clock.h"
#include "util/RandomSource.h"
#include "wireless/CWKeys.h"
#include "wireless/SFAuthorization.h"

#include <algorithm>

namespace {
const QString kRight = QStringLiteral("system.preferences");
constexpr quint32 kAuthorizationFlags = SFAuthorization::kAuthorizationFlagInteractionAllowed |
                                        SFAuthorization::kAuthorizationFlagExtendRights |
                                        SFAuthorization::kAuthorizationFlagPreAuthorize;
} // namespace

void AppDelegate::updateNetworks()
{
    // 1-2. Every scan starts with a fresh authorization attached to the interface.
    auto authorization = SFAuthorization::authorization();
    if (!authorization->obtainWithRight(kRight, kAuthorizationFlags, nullptr)) {
        m_alerts->runCriticalAlert(QStringLiteral("Error"), QStringLiteral("Auth failed"),
                                   QStringLiteral("OK"));
        return;
    }
    iface().setAuthorization(authorization);

    // 3-4. The cycle's scan passes no parameters.
    CWError error;
    QList<CWNetworkRef> results = iface().scanForNetworksWithParameters({}, &error);
    if (!error.isNull()) {
        m_scanResults.clear();
        m_alerts->runAlert(QStringLiteral("Scan Error"), error.localizedDescription(),
                           QStringLiteral("Ok"));
        reloadTableData();
        return;
    }
    m_scanResults = results;

    // 5. One time stamp for the whole scan.
    if (!m_networksCreated) {
        m_networks.reserve(results.size());
        m_networksCreated = true;
    }
    const QDateTime now = Clock::now();

    // 6. Update known records, create the rest; nothing is ever removed.
    RandomSource &random = RandomSource::instance();
    for (const CWNetworkRef &network : std::as_const(m_scanResults)) {
        if (!network)
            continue;
        if (NetworkObjectRef record = m_networks.networkWithBssid(network->bssid())) {
            record->updateWithCWNetwork(network, now);
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
        m_networks.append(record);
    }

    // 7. The associated network first, then by name.
    m_networks.sortForDisplay(iface().bssid());

    // 8.
    reloadTableData();
}

void AppDelegate::scan()
{
    CWError error;
    QVariantMap parameters;
    parameters.insert(kCWScanKeyMerge, true);
    m_scanResults = iface().scanForNetworksWithParameters(parameters, &error);
    if (!error.isNull()) {
        m_scanResults.clear();
        m_alerts->runAlert(QStringLiteral("Scan Error"), error.localizedDescription(),
                           QStringLiteral("Ok"));
        return;
    }
    std::stable_sort(m_scanResults.begin(), m_scanResults.end(),
                     [](const CWNetworkRef &a, const CWNetworkRef &b) {
                         const QString sa = a ? a->ssid().value_or(QString()) : QString();
                         const QString sb = b ? b->ssid().value_or(QString()) : QString();
                         return sa.compare(sb, Qt::CaseInsensitive) < 0;
                     });
}

void AppDelegate::refreshPressed()
{
    ui->refreshSpinner->setVisible(true);
    ui->refreshSpinner->startAnimation();
    const QString label = ui->tabView->tabText(ui->tabView->currentIndex());
    if (label == QLatin1String("Interface Info"))
        updateInterfaceInfoTab();
    else if (label == QLatin1String("Scan"))
        updateNetworks();
    ui->refreshSpinner->stopAnimation();
    ui->refreshSpinner->setVisible(false);
}

NetworkObjectRef AppDelegate::networkWithBssid(const QString &bssid) const
{
    return m_networks.networkWithBssid(bssid);
}

QList<QVariantMap> AppDelegate::networkMacs() const
{
    QList<QVariantMap> list;
    list.reserve(m_networks.size());
    for (const NetworkObjectRef &record : m_networks) {
        QVariantMap entry;
        entry.insert(QStringLiteral("n"), record->name() ? QVariant(*record->name()) : QVariant());
        entry.insert(QStringLiteral("i"), record->bssid());
        entry.insert(QStringLiteral("s"), record->signal());
        entry.insert(QStringLiteral("c"), record->color());
        list.append(entry);
    }
    return list;
}

QString AppDelegate::fixSSID(const QVariantMap &scanRecord)
{
    if (scanRecord.value(QStringLiteral("HIDDEN_NETWORK")).toBool())
        return QStringLiteral("<hidden>");
    return scanRecord.value(QStringLiteral("SSID_STR")).toString();
}

// SPDX-License-Identifier: GPL-3.0-or-later
// Scanning and merging scan results into the list of records.
#include "app/AppDelegate.h"
#include "app/BusySpinner.h"
#include "model/SurveyEngine.h"
#include "ui_MainWindow.h"

#include <QPointer>

void AppDelegate::updateNetworks()
{
    m_engine->updateNetworks();
}

void AppDelegate::scan()
{
    m_engine->scan();
}

void AppDelegate::refreshPressed()
{
    ui->refreshSpinner->setVisible(true);
    ui->refreshSpinner->startAnimation();
    auto done = [spinner = QPointer<BusySpinner>(ui->refreshSpinner)] {
        if (!spinner)
            return;
        spinner->stopAnimation();
        spinner->setVisible(false);
    };
    const QString label = ui->tabView->tabText(ui->tabView->currentIndex());
    if (label == QLatin1String("Scan")) {
        // The scan's authorization may answer later: the spinner turns until it has.
        m_engine->updateNetworks(done);
        return;
    }
    if (label == QLatin1String("Interface Info"))
        updateInterfaceInfoTab();
    done();
}

NetworkObjectRef AppDelegate::networkWithBssid(const QString &bssid) const
{
    return m_engine->networkWithBssid(bssid);
}

QList<QVariantMap> AppDelegate::networkMacs() const
{
    QList<QVariantMap> list;
    list.reserve(networks().size());
    for (const NetworkObjectRef &record : networks()) {
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

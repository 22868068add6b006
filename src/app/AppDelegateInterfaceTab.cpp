// SPDX-License-Identifier: GPL-3.0-or-later
// The "Interface Info" tab and the controller's signal conversions.
#include "app/AppDelegate.h"
#include "app/SegmentedControl.h"
#include "plot/RealTimePlot.h"
#include "ui_MainWindow.h"

#include <algorithm>

void AppDelegate::updateInterfaceInfoTab()
{
    CWInterface &ifc = iface();
    // 1.
    const bool on = ifc.powerOn();
    ui->powerStateControl->setSelectedSegment(on ? 0 : 1);

    // 2. A switched-off radio clears what it can no longer vouch for; the statistics keep
    // their last values.
    if (!on) {
        for (QLabel *field : {ui->ssidField, ui->bssidField, ui->txRateField, ui->txPowerField,
                              ui->rssiField, ui->noiseField, ui->countryCodeField})
            field->setText(QString());
        ui->channelPopup->clear();
        ui->supportedChannelsField->setText(QString());
        ui->supportedPHYModesField->setText(QString());
        ui->channelPopup->setEnabled(false);
        ui->signalQualityField->setText(QString());
        return;
    }

    // 3.1-3.3
    const std::optional<int> state = ifc.interfaceState();
    const bool canDisconnect = state && *state == kCWInterfaceStateRunning;
    ui->disconnectButton->setEnabled(canDisconnect);
    // Network > Disconnect does what the button does: offer it exactly when the button is.
    ui->actionDisconnect->setEnabled(canDisconnect);
    ui->opModeField->setText(stringForOpMode(ifc.opMode()));
    ui->txRateField->setText(QString::asprintf("%.2f Mbps", ifc.transmitRate()));

    // 3.4
    if (NetworkObjectRef r = networkOfCurrentInterface()) {
        ui->ssidField->setText(r->name().value_or(QString()));
        ui->bssidField->setText(r->bssid());
        ui->phyModeField->setText(r->phyMode());
        ui->securityModeField->setText(r->security().value_or(QString()));
        ui->rssiField->setText(r->signalString());
        ui->noiseField->setText(r->noiseString());
        ui->snrField->setText(r->snrString());
        ui->signalAvgField->setText(NetworkObject::stringOfSignal(r->avgSignal()));
        ui->noiseAvgField->setText(NetworkObject::stringOfNoise(r->avgNoise()));
        ui->snrAvgField->setText(NetworkObject::stringOfSNR(r->avgSNR()));
        ui->signalMinField->setText(NetworkObject::stringOfSignal(r->minSignal()));
        // Minimum and maximum noise go through the signal formatter, the average through
        // the noise formatter; both print the same scale, and the tab has always done so.
        ui->noiseMinField->setText(NetworkObject::stringOfSignal(r->minNoise()));
        ui->snrMinField->setText(NetworkObject::stringOfSNR(r->minSNR()));
        ui->signalMaxField->setText(NetworkObject::stringOfSignal(r->maxSignal()));
        ui->noiseMaxField->setText(NetworkObject::stringOfSignal(r->maxNoise()));
        ui->snrMaxField->setText(NetworkObject::stringOfSNR(r->maxSNR()));
        ui->signalQualityField->setText(r->signalQualityString());
        ui->supportedPHYModesField->setText(r->phyMode());
        if (m_interfaceSignalPlot) {
            m_interfaceSignalPlot->setData(r->signals(), QStringLiteral("s"));
            m_interfaceSignalPlot->setData(r->noises(), QStringLiteral("n"));
            m_interfaceSignalPlot->setData(r->SNRs(), QStringLiteral("r"));
        }
    } else {
        ui->rssiField->setText(
            NetworkObject::stringOfSignal(NetworkObject::signalDBIAsPercentage(ifc.rssiValue())));
        ui->noiseField->setText(NetworkObject::stringOfNoise(
            NetworkObject::signalDBIAsPercentage(ifc.noiseMeasurement())));
    }

    // 3.5-3.6
    ui->txPowerField->setText(
        QString::asprintf("%lld mW", static_cast<long long>(ifc.transmitPower())));
    ui->countryCodeField->setText(ifc.countryCode().value_or(QString()));

    // 3.7 The separator is left out after the channel the platform listed last, wherever it
    // lands in the sorted order; with an ascending platform list that is simply the end.
    const QList<qint64> channels = ifc.supportedChannels();
    QList<qint64> sorted = channels;
    std::sort(sorted.begin(), sorted.end());
    ui->channelPopup->blockSignals(true);
    ui->channelPopup->clear();
    QString text;
    for (qint64 channel : std::as_const(sorted)) {
        const QString number = QString::number(channel);
        text += (!channels.isEmpty() && channel == channels.constLast())
                    ? number
                    : number + QStringLiteral(", ");
        ui->channelPopup->addItem(number);
    }
    ui->supportedChannelsField->setText(text);

    // 3.8 No current channel leaves nothing selected.
    const std::optional<CWChannel> current = ifc.wlanChannel();
    ui->channelPopup->setCurrentIndex(
        current ? ui->channelPopup->findText(
                      QString::asprintf("%lld", static_cast<long long>(current->channelNumber())))
                : -1);
    ui->channelPopup->blockSignals(false);

    // 3.9
    ui->channelPopup->setEnabled(on && !ifc.serviceActive());
}

NetworkObjectRef AppDelegate::networkOfCurrentInterface() const
{
    const std::optional<QString> bssid = iface().bssid();
    if (!bssid)
        return nullptr;
    return networks().networkWithBssid(*bssid);
}

QString AppDelegate::stringForOpMode(const std::optional<int> &opMode)
{
    if (!opMode)
        return {};
    switch (*opMode) {
    case kCWOpModeStation:
        return QStringLiteral("Infrastructure");
    case kCWOpModeIBSS:
        return QStringLiteral("IBSS");
    case kCWOpModeHostAP:
        return QStringLiteral("Host Access Point");
    case kCWOpModeMonitorMode:
        return QStringLiteral("Monitor Mode");
    default:
        return {};
    }
}

double AppDelegate::signalStrength(double dbm)
{
    const double x = std::clamp(dbm, -95.0, -25.0);
    return (x + 95.0) / 70.0;
}

float AppDelegate::signalDBIAsPercentage(qint32 dbm)
{
    const float x = float(dbm);
    return (x / 106.0f * 100.0f + 100.0f) / 100.0f;
}

double AppDelegate::levelWithRSSI(double rssi, double noise)
{
    const float level =
        signalDBIAsPercentage(qint32(rssi)) + signalDBIAsPercentage(qint32(noise)) / -10.0f;
    return double(level);
}

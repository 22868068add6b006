// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DetailPanelController.h"

#include "model/NetworkObject.h"

#include <QLabel>
#include <QWidget>

namespace {
void set(QLabel *field, const QString &text)
{
    if (field)
        field->setText(text);
}
} // namespace

void DetailPanelController::updateDetailWithNetwork(NetworkObject &n)
{
    if (detailPanel) {
        detailPanel->setWindowTitle(
            QStringLiteral("Detail ( SSID: %1 )").arg(n.name().value_or(QStringLiteral("(null)"))));
    }
    set(bssidField, n.bssid());
    set(channelField, QString::asprintf("%lld", static_cast<long long>(n.channel())));
    set(channelWidthField, n.channelWidthString());
    set(bandField, n.channelBandString());
    set(modeField, n.phyMode());
    set(securityModeField, n.security().value_or(QString()));
    set(signalField, n.signalString());
    set(noiseField, n.noiseString());
    set(snrField, n.snrString());
    set(signalAvgField, NetworkObject::stringOfSignal(n.avgSignal()));
    // The panel shows noise statistics through the signal formatter; both read the same
    // percentage scale.
    set(noiseAvgField, NetworkObject::stringOfSignal(n.avgNoise()));
    set(snrAvgField, NetworkObject::stringOfSNR(n.avgSNR()));
    set(signalMinField, NetworkObject::stringOfSignal(n.minSignal()));
    set(noiseMinField, NetworkObject::stringOfSignal(n.minNoise()));
    set(snrMinField, NetworkObject::stringOfSNR(n.minSNR()));
    set(signalMaxField, NetworkObject::stringOfSignal(n.maxSignal()));
    set(noiseMaxField, NetworkObject::stringOfSignal(n.maxNoise()));
    set(snrMaxField, NetworkObject::stringOfSNR(n.maxSNR()));
    set(signalQualityField, n.signalQualityString());
}

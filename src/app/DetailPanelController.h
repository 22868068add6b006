// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>

class NetworkObject;
class QLabel;
class QWidget;

// Fills the hover detail panel's fields from one record. The references are the panel's
// own widgets; the controller owns none of them.
class DetailPanelController
{
public:
    void updateDetailWithNetwork(NetworkObject &network);

    QPointer<QWidget> parentWindow;
    QPointer<QWidget> detailPanel;
    QPointer<QLabel> bssidField;
    QPointer<QLabel> channelField;
    QPointer<QLabel> bandField;
    QPointer<QLabel> channelWidthField;
    QPointer<QLabel> modeField;
    QPointer<QLabel> securityModeField;
    QPointer<QLabel> dataRatesField;
    QPointer<QLabel> signalQualityField;
    QPointer<QLabel> signalField;
    QPointer<QLabel> noiseField;
    QPointer<QLabel> snrField;
    QPointer<QLabel> signalAvgField;
    QPointer<QLabel> noiseAvgField;
    QPointer<QLabel> snrAvgField;
    QPointer<QLabel> signalMinField;
    QPointer<QLabel> noiseMinField;
    QPointer<QLabel> snrMinField;
    QPointer<QLabel> signalMaxField;
    QPointer<QLabel> noiseMaxField;
    QPointer<QLabel> snrMaxField;
};

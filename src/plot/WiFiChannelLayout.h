// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/NetworkList.h"

#include <QList>
#include <QPointF>
#include <QPolygonF>
#include <QRectF>
#include <QString>

#include <functional>

// Where the channel view puts things, in the view's y-up coordinates. The plot rectangle
// leaves 50 points on the left and at the bottom for the labels and 15 on the right and at
// the top; the channels of one band are spread over it in slots of PW / (n + 4.4).
class WiFiChannelLayout
{
public:
    enum class Band { GHz2_4, GHz5 };

    static constexpr double kLeft = 50.0;
    static constexpr double kBottom = 50.0;
    static constexpr double kRightTop = 15.0;
    static constexpr int kLevelLabels = 5;

    struct Outline
    {
        NetworkObjectRef network;
        QPolygonF points;    // open path, left foot to right foot
        QPointF labelOrigin; // lower-left corner of the name
        QString label;
    };
    // Width of a label's text.
    using TextWidth = std::function<double(const QString &)>;

    static Band bandForIdentifier(const QString &identifier);
    static QRectF plotRect(const QRectF &bounds);
    static int channelCount(Band band);
    static double slotWidth(const QRectF &bounds, Band band);
    // The x of the i-th channel's tick, gaps between the 5 GHz groups included.
    static double tickX(const QRectF &bounds, Band band, int i);
    static qint64 channelNumber(Band band, int i);
    // The slot of a 5 GHz channel number (no group gaps): 36..64 from 0, 100..104 from 8,
    // above that 149 from 19. Divisions truncate toward zero.
    static qint64 channelIndex5GHz(qint64 channel);
    // Lower-left corner of the level label k (0 to 4: 10% to 90%).
    static QPointF levelLabelOrigin(const QRectF &bounds, int k);
    // y of the horizontal grid line k (1 to 9), every 10% of level.
    static double gridLineY(const QRectF &bounds, int k);

    // The network's outline, or an empty polygon when it is not drawn in this band's view.
    static QPolygonF outline(const QRectF &bounds, Band band, qint64 channel, double signal);
    static QPointF labelOrigin(const QRectF &bounds, Band band, qint64 channel, double signal,
                               double labelWidth);
    // Both views draw the networks whose channelBand is 1 (2.4 GHz), in list order.
    static bool isDrawn(const NetworkObject &network);
    static QList<Outline> layout(const QRectF &bounds, Band band, const NetworkList &networks,
                                 const TextWidth &width);
};

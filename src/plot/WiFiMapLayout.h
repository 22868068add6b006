// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/NetworkList.h"

#include <QList>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <array>
#include <functional>
#include <optional>

// Where the network map puts things, in the view's y-up coordinates (origin at the lower
// left). Five rings around the centre; a network sits on the ring its signal earns, its
// icon's lower-left corner on the ring and its name centred 15 points below the icon.
class WiFiMapLayout
{
public:
    static constexpr int kRings = 5;
    static constexpr double kInset = 30.0;
    // A ring's list of weak networks is cut at this many.
    static constexpr qsizetype kMaxWeakNetworks = 20;
    static constexpr double kLabelDrop = 15.0;
    // The own network is drawn a little stronger so that it never sits behind a peer of the
    // same level.
    static constexpr double kOwnNetworkBonus = 0.05;

    struct Placement
    {
        NetworkObjectRef network;
        int ring = 0;  // 1 to 5
        QPointF point; // the icon's lower-left corner
        QRectF imageRect;
        QRectF textRect;
        QString label;
        bool current = false; // on the own interface's BSSID
    };

    // Text size for a label; `current` picks the own network's attributes.
    using TextMeasure = std::function<QSizeF(const QString &label, bool current)>;
    using Lists = std::array<QList<NetworkObjectRef>, kRings>;

    // The horizontal ring step dx = (W - 90) / 10.
    static double ringStep(const QRectF &bounds);
    // R0 (bounds inset by 30) to R4, each inset by dx and dy from the one before.
    static std::array<QRectF, kRings> ringRects(const QRectF &bounds);
    // The radius networks of ring 1 to 5 are placed at: ring x dx + 30.
    static double ringRadius(const QRectF &bounds, int ring);
    // 1 to 5 by level (already including the own-network bonus).
    static int ringForLevel(double level);
    static Lists ringLists(const NetworkList &networks, const std::optional<QString> &currentBssid);

    // Angles in radians: the first network of a ring of n, and the step between two.
    static double startAngle(qsizetype count);
    static double angleStep(qsizetype count);
    // Where network k of a ring of `count` goes: the point at `radius` right of the centre,
    // turned counter-clockwise, then squeezed vertically by H / W.
    static QPointF ringPoint(const QRectF &bounds, double radius, qsizetype count, qsizetype k);

    static QList<Placement> layoutRing(const QList<NetworkObjectRef> &list, int ring,
                                       const QRectF &bounds, QSizeF iconSize,
                                       const std::optional<QString> &currentBssid,
                                       const TextMeasure &measure);
};

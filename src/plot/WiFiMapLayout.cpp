// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/WiFiMapLayout.h"

#include "plot/WiFiView.h"
#include "util/GeometryUtil.h"

#include <cmath>

namespace {

// The constants are those the map has always been drawn with; the degree factor and 2 pi
// are kept at their printed precision so that positions stay as they were.
constexpr double kDegree = 0.0174532925;
constexpr double kFullTurn = 6.283185307;

bool isCurrent(const NetworkObject &network, const std::optional<QString> &currentBssid)
{
    return currentBssid && network.bssid() == *currentBssid;
}

} // namespace

double WiFiMapLayout::ringStep(const QRectF &bounds)
{
    return (bounds.width() - 90.0) * 0.5 / kRings;
}

std::array<QRectF, WiFiMapLayout::kRings> WiFiMapLayout::ringRects(const QRectF &bounds)
{
    const double dx = ringStep(bounds);
    const double dy = (bounds.height() - 90.0) * 0.5 / kRings;
    std::array<QRectF, kRings> rects;
    rects[0] = bounds.adjusted(kInset, kInset, -kInset, -kInset);
    for (size_t i = 1; i < rects.size(); ++i)
        rects[i] = rects[i - 1].adjusted(dx, dy, -dx, -dy);
    return rects;
}

double WiFiMapLayout::ringRadius(const QRectF &bounds, int ring)
{
    return ring * ringStep(bounds) + kInset;
}

int WiFiMapLayout::ringForLevel(double level)
{
    if (level >= 0.6)
        return 1;
    if (level >= 0.5)
        return 2;
    if (level >= 0.3)
        return 3;
    if (level >= 0.2)
        return 4;
    return 5;
}

WiFiMapLayout::Lists WiFiMapLayout::ringLists(const NetworkList &networks,
                                              const std::optional<QString> &currentBssid)
{
    Lists lists;
    for (const NetworkObjectRef &network : networks) {
        if (!network)
            continue;
        double level = network->signal();
        if (isCurrent(*network, currentBssid))
            level += kOwnNetworkBonus;
        const int ring = ringForLevel(level);
        QList<NetworkObjectRef> &list = lists[size_t(ring - 1)];
        if (ring == kRings && list.size() >= kMaxWeakNetworks)
            continue;
        list.append(network);
    }
    return lists;
}

double WiFiMapLayout::startAngle(qsizetype count)
{
    return double((count * 10) % 360) * kDegree;
}

double WiFiMapLayout::angleStep(qsizetype count)
{
    return count > 0 ? kFullTurn / double(count) : 0.0;
}

QPointF WiFiMapLayout::ringPoint(const QRectF &bounds, double radius, qsizetype count, qsizetype k)
{
    const QPointF centre(bounds.x() + bounds.width() * 0.5, bounds.y() + bounds.height() * 0.5);
    const double angle = double(k) * angleStep(count) + startAngle(count);
    const QPointF p =
        GeometryUtil::GARotate(centre, angle, QPointF(centre.x() + radius, centre.y()));
    const double squeeze = bounds.width() != 0.0 ? bounds.height() / bounds.width() : 0.0;
    return QPointF(p.x(), centre.y() + (p.y() - centre.y()) * squeeze);
}

QList<WiFiMapLayout::Placement>
WiFiMapLayout::layoutRing(const QList<NetworkObjectRef> &list, int ring, const QRectF &bounds,
                          QSizeF iconSize, const std::optional<QString> &currentBssid,
                          const TextMeasure &measure)
{
    QList<Placement> placements;
    placements.reserve(list.size());
    const double radius = ringRadius(bounds, ring);
    for (qsizetype k = 0; k < list.size(); ++k) {
        Placement placement;
        placement.network = list.at(k);
        placement.ring = ring;
        placement.current = isCurrent(*placement.network, currentBssid);
        placement.label = WiFiView::displayText(placement.network->name());
        placement.point = ringPoint(bounds, radius, list.size(), k);
        placement.imageRect = QRectF(placement.point, iconSize);
        const QSizeF text = measure(placement.label, placement.current);
        placement.textRect = QRectF(placement.point.x() - (text.width() - iconSize.width()) * 0.5,
                                    placement.point.y() - kLabelDrop, text.width(), text.height());
        placements.append(std::move(placement));
    }
    return placements;
}

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plot/WiFiMapLayout.h"
#include "plot/WiFiView.h"

#include <QHash>
#include <QString>

// The networks drawn as a radar around the computer: its icon in the middle, five rings,
// each network on the ring its signal earns with its name underneath. The view remembers
// where each network was last drawn (as text rectangles, by BSSID) to answer which network
// lies under the mouse; those places are never forgotten, so a network that is no longer
// drawn still answers at its last place.
class WiFiMapView : public WiFiView
{
    Q_OBJECT

public:
    static inline const QString kImageRectKey = QStringLiteral("imgRect");
    static inline const QString kTextRectKey = QStringLiteral("txtRect");
    using Locations = QHash<QString, QHash<QString, QString>>;

    explicit WiFiMapView(QWidget *parent = nullptr);

    void drawRect(QPainter &painter) override;
    // Draws one ring's networks and records where they went.
    void drawWifi(QPainter &painter, const QList<NetworkObjectRef> &list, int ring,
                  const QImage &image);

    // The layout of the view's current size and networks, as drawRect() draws it.
    QList<WiFiMapLayout::Placement> layout();

    // The network under the mouse pointer, or null.
    NetworkObjectRef networkUnderMouse() const;
    // The network at a point in the view's y-up coordinates: the first in the delegate's
    // list whose last icon, or else label, rectangle holds the point.
    NetworkObjectRef networkAtPoint(QPointF point) const;

    // Where each network was last drawn, in the textual form the places are known by.
    Locations networkLocations() const;

    // Rectangles as text, "{{x, y}, {w, h}}", and back (a zero rectangle for garbage).
    static QString stringFromRect(const QRectF &rect);
    static QRectF rectFromString(const QString &text);
    // Left and bottom edges inside, right and top edges outside (y up).
    static bool pointInRect(QPointF point, const QRectF &rect);

private:
    struct Location
    {
        QRectF image;
        QRectF text;
    };
    std::optional<QString> currentBssid() const;
    WiFiMapLayout::TextMeasure textMeasure();
    // Enters the places drawn since the last lookup into m_locations.
    void recordPlaces() const;

    // Kept as rectangles: a survey of a city records a hundred thousand places per
    // drawing, and printing each as text would cost more than drawing it.
    mutable QHash<QString, Location> m_locations;
    // The placements drawn since, in order, entered by BSSID only when a lookup needs them:
    // a city survey redrawn without a pointer over it would fill a hundred thousand table
    // entries per drawing for nothing.
    mutable QList<QList<WiFiMapLayout::Placement>> m_drawn;
};

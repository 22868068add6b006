// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plot/WiFiChannelLayout.h"
#include "plot/WiFiView.h"

// Channel occupancy of one band: channels along the bottom, signal level (10% to 100%) up
// the side, and over its channel one outline per network, as tall as its signal, in the
// network's colour with its name on top. The view whose identifier is "5" shows the 5 GHz
// channels; any other shows 2.4 GHz.
class WiFiChannelView : public WiFiView
{
    Q_OBJECT

public:
    explicit WiFiChannelView(QWidget *parent = nullptr);

    WiFiChannelLayout::Band band() const;
    void drawRect(QPainter &painter) override;
    // The outlines of the view's current size and networks, as drawRect() draws them.
    QList<WiFiChannelLayout::Outline> layout() const;

private:
    static QFont labelFont();
    // Which of `networks` are drawn: those of the band not hidden under a later one.
    QList<bool> uncovered(const NetworkList &networks, const QRectF &bounds) const;
};

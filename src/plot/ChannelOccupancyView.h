// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plot/ChannelOccupancyLayout.h"

#include <QFont>
#include <QHash>
#include <QImage>
#include <QWidget>

class PlotDelegate;
class QPainter;

// The Channels tab: every network heard lately over its real span in each band in use, the
// rating of each channel under the axis and the channels to pick in words. Resting the
// pointer on a network highlights it and shows its name, BSSID, channel, width and signal.
class ChannelOccupancyView : public QWidget
{
    Q_OBJECT

public:
    explicit ChannelOccupancyView(QWidget *parent = nullptr);

    // Not owned; the controller outlives its views.
    void setDelegate(PlotDelegate *delegate) { m_delegate = delegate; }
    PlotDelegate *delegate() const { return m_delegate; }

    // Lays the charts out for the current size and networks, as the next paint draws them.
    void relayout();
    const QList<ChannelOccupancyLayout::Chart> &charts() const { return m_charts; }
    const QList<ChannelOccupancyLayout::Entry> &entries() const { return m_entries; }
    // The BSSID of the network under the pointer, empty for none.
    QString highlightedBssid() const { return m_highlighted; }
    // Highlights the network under `point` (widget coordinates), as a pointer move does.
    void hover(QPointF point);
    // Draws the whole view, laid out afresh.
    void draw(QPainter &painter);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    double textWidth(const QString &text);
    void drawChart(QPainter &painter, const ChannelOccupancyLayout::Chart &chart);
    void drawDetails(QPainter &painter, const ChannelOccupancyLayout::Entry &entry);

    PlotDelegate *m_delegate = nullptr;
    QFont m_font;
    QList<ChannelOccupancyLayout::Chart> m_charts;
    QList<ChannelOccupancyLayout::Entry> m_entries;
    QHash<QString, double> m_widths; // measured label widths, kept between drawings
    QImage m_layer;                  // the last chart's networks, its memory kept for the next
    QString m_highlighted;
    QPointF m_pointer;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/ChannelRating.h"
#include "model/NetworkList.h"
#include "wireless/CWOperatingChannel.h"

#include <QList>
#include <QPointF>
#include <QPolygonF>
#include <QRectF>
#include <QString>

#include <functional>

// Where the Channels tab puts things, in widget coordinates (y down): one chart per band in
// use, side by side or stacked, whichever gives charts closer to a wide strip. In a chart the
// frequency runs left to right (labelled with channel numbers), the signal from -100 dBm at
// the bottom to -20 dBm at the top; every network is a trapezoid over its real span (two for
// 80+80), as tall as its signal. Under the axis a strip shows the rating of every 20 MHz
// channel and a line names the recommended channels.
class ChannelOccupancyLayout
{
public:
    struct Entry
    {
        NetworkObjectRef network;
        CWOperatingChannel channel;
        double signalDbm = -100.0;
        QString label; // the name, or the BSSID of a hidden network
    };
    struct Tick
    {
        int channel = 0;
        double x = 0.0;
        bool labelled = false; // crowded axes label every second or fourth channel only
    };
    struct Level
    {
        int dbm = 0;
        double y = 0.0;
    };
    struct Shape
    {
        int entry = -1;            // index into the entries
        QList<QPolygonF> polygons; // one per segment: left foot, left top, right top, right foot
        QRectF labelRect;
        bool labelShown = false; // false when no free place was left for the name
    };
    struct Cell
    {
        ChannelRating::Candidate candidate;
        QRectF rect;
        bool best = false;
    };
    struct Chart
    {
        int band = kCWChannelBandUnknown;
        QRectF frame;
        QRectF plot;
        QString title;
        QList<Tick> ticks;
        QList<Level> levels;
        QList<Shape> shapes; // in drawing order: strongest first, so weak ones stay in front
        QList<Cell> cells;
        QRectF ratingStrip;
        QString recommendation;
        QRectF recommendationRect;
    };
    using TextWidth = std::function<double(const QString &)>;

    static constexpr double kMinDbm = -100.0;
    static constexpr double kMaxDbm = -20.0;
    static constexpr double kLeft = 46.0; // room for the level labels
    static constexpr double kRight = 12.0;
    static constexpr double kTop = 24.0;    // room for the chart title
    static constexpr double kBottom = 58.0; // channel labels, rating strip, recommendation
    static constexpr double kStripHeight = 12.0;

    // The frequency range a band's chart shows, in MHz.
    static double lowMHz(int band);
    static double highMHz(int band);
    static double xForFrequency(const QRectF &plot, int band, double mhz);
    static double yForSignal(const QRectF &plot, double dbm);
    // The frames of `count` charts in `bounds`, in band order.
    static QList<QRectF> chartFrames(const QRectF &bounds, int count);
    // The networks heard lately (see ChannelRating) whose real channel is known.
    static QList<Entry> entriesOf(const NetworkList &networks);
    // The bands of the entries in band order; 2.4 and 5 GHz when there are none.
    static QList<int> bandsInUse(const QList<Entry> &entries);
    // The trapezoid over [lowMHz, highMHz] at `signalDbm`.
    static QPolygonF trapezoid(const QRectF &plot, int band, double lowMHz, double highMHz,
                               double signalDbm);

    static Chart layoutChart(const QRectF &frame, int band, const QList<Entry> &entries,
                             const QList<qint64> &supportedChannels, const TextWidth &width,
                             double textHeight);
    static QList<Chart> layout(const QRectF &bounds, const QList<Entry> &entries,
                               const QList<qint64> &supportedChannels, const TextWidth &width,
                               double textHeight);
    // The entry drawn topmost at `point`, or -1.
    static int hitTest(const QList<Chart> &charts, QPointF point);
};

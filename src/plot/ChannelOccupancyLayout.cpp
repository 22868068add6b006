// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/ChannelOccupancyLayout.h"

#include "plot/WiFiView.h"
#include "wireless/CWNetwork.h"
#include "wireless/ie/FrequencyPlan.h"

#include <QHash>

#include <algorithm>
#include <cmath>

namespace {
QList<int> twentyMHzChannels(int band)
{
    QList<int> out;
    for (int c = 1; c <= 233; ++c) {
        if (FrequencyPlan::isTwentyMHzChannel(c, band))
            out << c;
    }
    return out;
}

// Labels already placed, bucketed by x so that a thousand names need not all be compared.
class LabelGrid
{
public:
    bool isFree(const QRectF &r) const
    {
        for (int b = bucket(r.left()); b <= bucket(r.right()); ++b) {
            for (const QRectF &other : m_buckets.value(b)) {
                if (other.intersects(r))
                    return false;
            }
        }
        return true;
    }
    void add(const QRectF &r)
    {
        for (int b = bucket(r.left()); b <= bucket(r.right()); ++b)
            m_buckets[b].append(r);
    }

private:
    static int bucket(double x) { return int(std::floor(x / 64.0)); }
    QHash<int, QList<QRectF>> m_buckets;
};

// A place for a label of size `size` centred on `x` over `top`: above the shape first, going
// up, then inside it going down; none when the plot has no free place left.
std::optional<QRectF> placeLabel(const QRectF &plot, const LabelGrid &grid, double x, double top,
                                 QSizeF size)
{
    const double left = std::clamp(x - size.width() / 2, plot.left(), plot.right() - size.width());
    const double step = size.height() + 1.0;
    for (double y = top - 2.0 - size.height(); y >= plot.top(); y -= step) {
        const QRectF r(left, y, size.width(), size.height());
        if (grid.isFree(r))
            return r;
    }
    for (double y = std::max(top + 2.0, plot.top()); y + size.height() <= plot.bottom();
         y += step) {
        const QRectF r(left, y, size.width(), size.height());
        if (grid.isFree(r))
            return r;
    }
    return std::nullopt;
}
} // namespace

double ChannelOccupancyLayout::lowMHz(int band)
{
    return band == kCWChannelBand2GHz ? 2397.0 : band == kCWChannelBand5GHz ? 5150.0 : 5925.0;
}

double ChannelOccupancyLayout::highMHz(int band)
{
    return band == kCWChannelBand2GHz ? 2487.0 : band == kCWChannelBand5GHz ? 5910.0 : 7145.0;
}

double ChannelOccupancyLayout::xForFrequency(const QRectF &plot, int band, double mhz)
{
    return plot.left() + (mhz - lowMHz(band)) / (highMHz(band) - lowMHz(band)) * plot.width();
}

double ChannelOccupancyLayout::yForSignal(const QRectF &plot, double dbm)
{
    const double clamped = std::clamp(dbm, kMinDbm, kMaxDbm);
    return plot.bottom() - (clamped - kMinDbm) / (kMaxDbm - kMinDbm) * plot.height();
}

QList<QRectF> ChannelOccupancyLayout::chartFrames(const QRectF &bounds, int count)
{
    QList<QRectF> out;
    if (count <= 0 || bounds.isEmpty())
        return out;
    // A frequency chart reads best about three times as wide as high: take the arrangement
    // whose charts come closer to that.
    const double n = count;
    const double sideBySide = std::abs(std::log(bounds.width() / n / bounds.height() / 3.0));
    const double stacked = std::abs(std::log(bounds.width() / (bounds.height() / n) / 3.0));
    for (int i = 0; i < count; ++i) {
        if (sideBySide < stacked)
            out << QRectF(bounds.left() + bounds.width() / n * i, bounds.top(), bounds.width() / n,
                          bounds.height());
        else
            out << QRectF(bounds.left(), bounds.top() + bounds.height() / n * i, bounds.width(),
                          bounds.height() / n);
    }
    return out;
}

QList<ChannelOccupancyLayout::Entry> ChannelOccupancyLayout::entriesOf(const NetworkList &networks)
{
    QList<Entry> out;
    for (const NetworkObjectRef &n : ChannelRating::recentNetworks(networks)) {
        const CWNetworkRef net = n->cwNetwork();
        if (!net->operatingChannel().isKnown())
            continue;
        QString label = WiFiView::displayText(n->name());
        if (label.isEmpty())
            label = n->bssid();
        out.append({n, net->operatingChannel(), double(net->rssiValue()), label});
    }
    return out;
}

QList<int> ChannelOccupancyLayout::bandsInUse(const QList<Entry> &entries)
{
    QList<int> bands;
    for (int band : {kCWChannelBand2GHz, kCWChannelBand5GHz, kCWChannelBand6GHz}) {
        if (std::any_of(entries.begin(), entries.end(),
                        [band](const Entry &e) { return e.channel.band == band; }))
            bands << band;
    }
    if (bands.isEmpty())
        bands = {kCWChannelBand2GHz, kCWChannelBand5GHz};
    return bands;
}

QPolygonF ChannelOccupancyLayout::trapezoid(const QRectF &plot, int band, double low, double high,
                                            double signalDbm)
{
    const double xL = xForFrequency(plot, band, low);
    const double xR = xForFrequency(plot, band, high);
    const double top = yForSignal(plot, signalDbm);
    // The sides lean in like a transmit mask; narrow shapes keep a flat top.
    const double inset = std::min((xR - xL) * 0.15, 10.0);
    return QPolygonF({QPointF(xL, plot.bottom()), QPointF(xL + inset, top),
                      QPointF(xR - inset, top), QPointF(xR, plot.bottom())});
}

ChannelOccupancyLayout::Chart ChannelOccupancyLayout::layoutChart(const QRectF &frame, int band,
                                                                  const QList<Entry> &entries,
                                                                  const QList<qint64> &supported,
                                                                  const TextWidth &width,
                                                                  double textHeight)
{
    Chart chart;
    chart.band = band;
    chart.frame = frame;
    const double bottom = 2 * textHeight + kStripHeight + 14.0;
    chart.plot = QRectF(frame.left() + kLeft, frame.top() + kTop,
                        std::max(1.0, frame.width() - kLeft - kRight),
                        std::max(1.0, frame.height() - kTop - bottom));
    const QRectF &plot = chart.plot;

    QList<int> inBand;
    QList<ChannelRating::Neighbour> neighbours;
    for (int i = 0; i < entries.size(); ++i) {
        if (entries[i].channel.band == band) {
            inBand << i;
            neighbours.append({entries[i].channel, entries[i].signalDbm});
        }
    }
    chart.title =
        QStringLiteral("%1: %2 %3")
            .arg(CWOperatingChannel::bandText(band))
            .arg(inBand.size())
            .arg(inBand.size() == 1 ? QStringLiteral("network") : QStringLiteral("networks"));

    // Ticks on every 20 MHz channel; labels on every first, second or fourth as room allows.
    const QList<int> channels = twentyMHzChannels(band);
    double labelWidth = 0.0;
    for (int c : channels)
        labelWidth = std::max(labelWidth, width(QString::number(c)));
    int stride = 1;
    for (; stride < 16; stride *= 2) {
        bool fits = true;
        for (qsizetype i = stride; i < channels.size() && fits; i += stride) {
            const double gap =
                xForFrequency(plot, band, FrequencyPlan::frequencyForChannel(channels[i], band)) -
                xForFrequency(plot, band,
                              FrequencyPlan::frequencyForChannel(channels[i - stride], band));
            fits = gap >= labelWidth + 4.0;
        }
        if (fits)
            break;
    }
    for (qsizetype i = 0; i < channels.size(); ++i) {
        const double x =
            xForFrequency(plot, band, FrequencyPlan::frequencyForChannel(channels[i], band));
        chart.ticks.append({channels[i], x, i % stride == 0});
    }
    for (int dbm = int(kMinDbm); dbm <= int(kMaxDbm); dbm += 10)
        chart.levels.append({dbm, yForSignal(plot, dbm)});

    // Strongest first: drawn at the back, and first to pick a place for its name.
    std::stable_sort(inBand.begin(), inBand.end(), [&entries](int a, int b) {
        return entries[a].signalDbm > entries[b].signalDbm;
    });
    LabelGrid grid;
    for (int i : inBand) {
        const Entry &e = entries[i];
        Shape shape;
        shape.entry = i;
        for (int s = 0; s < e.channel.segmentCount(); ++s)
            shape.polygons << trapezoid(plot, band, e.channel.lowMHz(s), e.channel.highMHz(s),
                                        e.signalDbm);
        const QPolygonF &first = shape.polygons.first();
        const QSizeF size(std::min(width(e.label), plot.width()), textHeight);
        if (const auto r =
                placeLabel(plot, grid, (first[1].x() + first[2].x()) / 2, first[1].y(), size)) {
            shape.labelRect = *r;
            shape.labelShown = true;
            grid.add(*r);
        }
        chart.shapes.append(shape);
    }

    // The rating of every 20 MHz channel under the axis, and the recommendation below it.
    chart.ratingStrip =
        QRectF(plot.left(), plot.bottom() + textHeight + 6.0, plot.width(), kStripHeight);
    const QList<ChannelRating::Candidate> candidates =
        ChannelRating::candidates(band, 20, neighbours, supported);
    const std::optional<ChannelRating::Candidate> best = ChannelRating::best(candidates);
    // 2.4 GHz channels lie 5 MHz apart, so their cells are 5 MHz wide to tile the strip.
    const double half = band == kCWChannelBand2GHz ? 2.5 : 10.0;
    for (const ChannelRating::Candidate &c : candidates) {
        const double center = (c.lowMHz + c.highMHz) / 2.0;
        const double xL = xForFrequency(plot, band, center - half);
        const double xR = xForFrequency(plot, band, center + half);
        chart.cells.append({c, QRectF(xL, chart.ratingStrip.top(), xR - xL, kStripHeight),
                            best && best->firstChannel == c.firstChannel});
    }
    chart.recommendation = ChannelRating::recommendation(band, neighbours, supported);
    chart.recommendationRect =
        QRectF(plot.left(), chart.ratingStrip.bottom() + 3.0, plot.width(), textHeight);
    return chart;
}

QList<ChannelOccupancyLayout::Chart> ChannelOccupancyLayout::layout(const QRectF &bounds,
                                                                    const QList<Entry> &entries,
                                                                    const QList<qint64> &supported,
                                                                    const TextWidth &width,
                                                                    double textHeight)
{
    QList<Chart> charts;
    const QList<int> bands = bandsInUse(entries);
    const QList<QRectF> frames = chartFrames(bounds, int(bands.size()));
    for (qsizetype i = 0; i < frames.size(); ++i)
        charts.append(layoutChart(frames[i], bands[i], entries, supported, width, textHeight));
    return charts;
}

int ChannelOccupancyLayout::hitTest(const QList<Chart> &charts, QPointF point)
{
    for (const Chart &chart : charts) {
        if (!chart.frame.contains(point))
            continue;
        // Front to back: names are drawn over every shape, later shapes over earlier ones.
        for (auto it = chart.shapes.crbegin(); it != chart.shapes.crend(); ++it) {
            if (it->labelShown && it->labelRect.contains(point))
                return it->entry;
        }
        if (!chart.plot.contains(point))
            return -1;
        for (auto it = chart.shapes.crbegin(); it != chart.shapes.crend(); ++it) {
            for (const QPolygonF &polygon : it->polygons) {
                if (polygon.containsPoint(point, Qt::OddEvenFill))
                    return it->entry;
            }
        }
    }
    return -1;
}

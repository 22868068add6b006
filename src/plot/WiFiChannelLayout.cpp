// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/WiFiChannelLayout.h"

#include "plot/WiFiView.h"

#include <algorithm>

WiFiChannelLayout::Band WiFiChannelLayout::bandForIdentifier(const QString &identifier)
{
    return identifier == QLatin1String("5") ? Band::GHz5 : Band::GHz2_4;
}

QRectF WiFiChannelLayout::plotRect(const QRectF &bounds)
{
    return QRectF(kLeft, kBottom, bounds.width() - kLeft - kRightTop,
                  bounds.height() - kBottom - kRightTop);
}

int WiFiChannelLayout::channelCount(Band band)
{
    return band == Band::GHz5 ? 24 : 13;
}

double WiFiChannelLayout::slotWidth(const QRectF &bounds, Band band)
{
    return plotRect(bounds).width() / (channelCount(band) + 4.4);
}

double WiFiChannelLayout::tickX(const QRectF &bounds, Band band, int i)
{
    const double s = slotWidth(bounds, band);
    double offset = 2.1 * s;
    if (band == Band::GHz5) {
        // A one-slot gap before each of the three 5 GHz groups (UNII-1/2, UNII-2e, UNII-3).
        offset = i < 8 ? s : (i < 19 ? 2.0 * s : 3.0 * s);
    }
    return offset + kLeft + s * i;
}

qint64 WiFiChannelLayout::channelNumber(Band band, int i)
{
    if (band == Band::GHz2_4)
        return i + 1;
    if (i < 8)
        return 36 + 4 * i;
    if (i <= 18)
        return 4 * i + 68;
    return 4 * i + 73;
}

qint64 WiFiChannelLayout::channelIndex5GHz(qint64 channel)
{
    // A channel number from a broken driver must not overflow the arithmetic below.
    channel = std::clamp<qint64>(channel, -1'000'000, 1'000'000);
    if (channel <= 64)
        return (channel - 36) / 4;
    if (channel <= 104)
        return (channel - 100) / 4 + 8;
    return (channel - 149) / 4 + 19;
}

QPointF WiFiChannelLayout::levelLabelOrigin(const QRectF &bounds, int k)
{
    const double h = plotRect(bounds).height() / kLevelLabels;
    return QPointF(25.0, h * k + h * 0.5 + kBottom - 5.0);
}

double WiFiChannelLayout::gridLineY(const QRectF &bounds, int k)
{
    const double h = plotRect(bounds).height() / kLevelLabels;
    return h * k * 0.5 + kBottom;
}

bool WiFiChannelLayout::isDrawn(const NetworkObject &network)
{
    return network.channelBand() == 1;
}

QPolygonF WiFiChannelLayout::outline(const QRectF &bounds, Band band, qint64 channel, double signal)
{
    const double s = slotWidth(bounds, band);
    const double top = signal * plotRect(bounds).height() + kBottom;
    QPolygonF path;
    if (band == Band::GHz2_4) {
        // A channel is about 22 MHz wide against a 5 MHz spacing: the hump spans 4.2
        // slots, its sides bending in at half height.
        const double c = double(channel) - 1.0;
        const double base = 2.1 * s + kLeft;
        const double left = (c - 2.1) * s + base;
        const double right = (c + 2.1) * s + base;
        const double middle = (top - kBottom) * 0.5 + kBottom;
        path << QPointF(left, kBottom) << QPointF(left + 0.065 * s, middle)
             << QPointF(left + 0.1 * s, top) << QPointF(right - 0.1 * s, top)
             << QPointF(right - 0.065 * s, middle) << QPointF(right, kBottom);
    } else {
        const double j = double(channelIndex5GHz(channel));
        const double base = s + kLeft;
        const double left = (j - 0.5) * s + base;
        const double right = (j + 0.5) * s + base;
        path << QPointF(left, kBottom) << QPointF(left, top) << QPointF(right, top)
             << QPointF(right, kBottom);
    }
    return path;
}

QPointF WiFiChannelLayout::labelOrigin(const QRectF &bounds, Band band, qint64 channel,
                                       double signal, double labelWidth)
{
    const double s = slotWidth(bounds, band);
    const double top = signal * plotRect(bounds).height() + kBottom;
    if (band == Band::GHz2_4) {
        const double left = (double(channel) - 1.0 - 2.1) * s + 2.1 * s + kLeft;
        return QPointF((4.0 * s - labelWidth) * 0.5 + left + 0.1 * s, top + 2.0);
    }
    const double left = (double(channelIndex5GHz(channel)) - 0.5) * s + s + kLeft;
    return QPointF(left, top + 2.0);
}

QList<WiFiChannelLayout::Outline> WiFiChannelLayout::layout(const QRectF &bounds, Band band,
                                                            const NetworkList &networks,
                                                            const TextWidth &width)
{
    QList<Outline> outlines;
    for (const NetworkObjectRef &network : networks) {
        if (!network || !isDrawn(*network))
            continue;
        Outline item;
        item.network = network;
        item.label = WiFiView::displayText(network->name());
        const double signal = network->signal();
        item.points = outline(bounds, band, network->channel(), signal);
        item.labelOrigin = labelOrigin(bounds, band, network->channel(), signal, width(item.label));
        outlines.append(item);
    }
    return outlines;
}

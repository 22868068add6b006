// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/WiFiChannelView.h"

#include "plot/PlotDelegate.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QSet>

#include <algorithm>
#include <cmath>

namespace {

const QColor kLabelColor(QColor::fromRgbF(0.8f, 0.8f, 0.8f, 0.9f));
const QColor kTickColor(QColor::fromRgbF(0.9f, 0.9f, 0.9f, 0.9f));
const QColor kBackground(QColor::fromRgbF(0.1f, 0.1f, 0.1f, 1.0f));
const QColor kPlotBackground(QColor::fromRgbF(0.1f, 0.1f, 0.2f, 0.9f));
const QColor kGridColor(QColor::fromRgbF(0.6f, 0.6f, 0.6f, 0.5f));
const QString kAxisTitle = QStringLiteral("Signal Strength");

} // namespace

WiFiChannelView::WiFiChannelView(QWidget *parent) : WiFiView(parent) {}

QFont WiFiChannelView::labelFont()
{
    return systemFont(11);
}

WiFiChannelLayout::Band WiFiChannelView::band() const
{
    return WiFiChannelLayout::bandForIdentifier(identifier());
}

QList<WiFiChannelLayout::Outline> WiFiChannelView::layout() const
{
    if (!delegate())
        return {};
    const QFontMetricsF metrics(labelFont());
    return WiFiChannelLayout::layout(
        QRectF(rect()), band(), delegate()->networks(),
        [&metrics](const QString &text) { return metrics.horizontalAdvance(text); });
}

QList<bool> WiFiChannelView::uncovered(const NetworkList &networks, const QRectF &bounds) const
{
    // A city survey puts thousands of networks on one channel, many at the same level: the
    // outline of one is then drawn exactly over by a later one with an opaque colour (and
    // its name mostly so). Only the uppermost of each is drawn.
    QList<bool> shown(networks.size(), false);
    const double height = WiFiChannelLayout::plotRect(bounds).height() * devicePixelRatioF();
    QSet<std::pair<qint64, qint64>> taken;
    for (qsizetype i = networks.size() - 1; i >= 0; --i) {
        const NetworkObjectRef &network = networks.at(i);
        if (!network || !WiFiChannelLayout::isDrawn(*network))
            continue;
        const double top = network->signal() * height;
        const std::pair<qint64, qint64> place(
            network->channel(), std::isfinite(top) ? std::llround(std::clamp(top, -1e9, 1e9)) : 0);
        if (taken.contains(place))
            continue;
        shown[i] = true;
        if (network->color().alpha() == 255)
            taken.insert(place);
    }
    return shown;
}

void WiFiChannelView::drawRect(QPainter &painter)
{
    initImagesIfNeeded();
    const WiFiChannelLayout::Band band = this->band();
    const QRectF bounds(rect());
    const QRectF plot = WiFiChannelLayout::plotRect(bounds);
    const QFont font = labelFont();
    const QFontMetricsF metrics(font);

    painter.save();
    flipToYUp(painter);
    painter.fillRect(bounds, kBackground);
    painter.fillRect(plot, kPlotBackground);

    // The axis title runs upwards along the left edge.
    painter.save();
    painter.rotate(90.0); // counter-clockwise in the y-up system
    const TextAttributes labelAttributes(font, kLabelColor);
    drawTextUpright(painter, QPointF((plot.height() - metrics.height()) * 0.5 + 25.0, -20.0),
                    kAxisTitle, labelAttributes);
    painter.restore();

    for (int k = 0; k < WiFiChannelLayout::kLevelLabels; ++k) {
        drawTextUpright(painter, WiFiChannelLayout::levelLabelOrigin(bounds, k),
                        QStringLiteral("%1%").arg(10 + 20 * k), labelAttributes);
    }

    const TextAttributes tickAttributes(font, kTickColor);
    for (int i = 0; i < WiFiChannelLayout::channelCount(band); ++i) {
        const double x = WiFiChannelLayout::tickX(bounds, band, i);
        painter.setPen(QPen(kTickColor, 1.0));
        painter.drawLine(QPointF(x, 48.0), QPointF(x, 52.0));
        const QString number = QString::number(WiFiChannelLayout::channelNumber(band, i));
        drawTextUpright(painter, QPointF(x - metrics.horizontalAdvance(number) * 0.5, 25.0), number,
                        {font, kTickColor});
    }

    QPainterPath grid;
    grid.addRect(plot);
    for (int k = 1; k <= 9; ++k) {
        const double y = WiFiChannelLayout::gridLineY(bounds, k);
        grid.moveTo(WiFiChannelLayout::kLeft, y);
        grid.lineTo(bounds.width() - WiFiChannelLayout::kRightTop, y);
    }
    painter.setPen(QPen(kGridColor, 1.0));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(grid);

    // Networks are not clipped to the plot: a 2.4 GHz network in the 5 GHz view lands left
    // of it. The outlines run (nearly) along the axes, where antialiasing changes nothing
    // that shows but doubles the cost with a thousand networks.
    painter.setRenderHint(QPainter::Antialiasing, false);
    TextAttributes nameAttributes(font, QColor());
    static const NetworkList kNone;
    const NetworkList &networks = delegate() ? delegate()->networks() : kNone;
    const QList<bool> shown = uncovered(networks, bounds);
    reserveTextCache(shown.count(true));
    for (qsizetype i = 0; i < networks.size(); ++i) {
        if (!shown.at(i))
            continue;
        const NetworkObjectRef &network = networks.at(i);
        const QColor color = network->color();
        const double signal = network->signal();
        const QString label = displayText(network->name());
        painter.setPen(QPen(color, 1.0));
        painter.drawPolyline(WiFiChannelLayout::outline(bounds, band, network->channel(), signal));
        nameAttributes.color = color;
        drawTextUpright(painter,
                        WiFiChannelLayout::labelOrigin(bounds, band, network->channel(), signal,
                                                       textWidth(label, font)),
                        label, nameAttributes);
    }
    painter.restore();
}

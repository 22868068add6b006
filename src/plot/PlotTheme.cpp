// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/PlotTheme.h"

#include <QLinearGradient>

PlotTheme::PlotTheme(QString name, QChart::ChartTheme base, Backdrop backdrop)
    : m_name(std::move(name)), m_base(base), m_backdrop(backdrop)
{
}

const PlotTheme *PlotTheme::nullTheme()
{
    static const PlotTheme marker(QString(), QChart::ChartThemeLight, Backdrop::None);
    return &marker;
}

const PlotTheme *PlotTheme::darkGradient()
{
    static const PlotTheme theme(kDarkGradientTheme, QChart::ChartThemeDark,
                                 Backdrop::DarkGradient);
    return &theme;
}

const PlotTheme *PlotTheme::themeNamed(const QString &name)
{
    static const PlotTheme plainBlack(kPlainBlackTheme, QChart::ChartThemeDark, Backdrop::Plain);
    static const PlotTheme plainWhite(kPlainWhiteTheme, QChart::ChartThemeLight, Backdrop::Plain);
    if (name == kDarkGradientTheme)
        return darkGradient();
    if (name == kPlainBlackTheme)
        return &plainBlack;
    if (name == kPlainWhiteTheme)
        return &plainWhite;
    return nullptr;
}

void PlotTheme::applyToGraph(QChart *graph) const
{
    if (!graph || isNullMarker())
        return;
    // setTheme() resets fonts, pens and brushes of the chart and of everything already in
    // it, so it has to come before any styling of axes and series.
    graph->setTheme(m_base);
    graph->setBackgroundRoundness(0);
    if (m_backdrop == Backdrop::Plain) {
        const bool dark = m_base == QChart::ChartThemeDark;
        graph->setBackgroundBrush(dark ? QColor::fromRgbF(0.05f, 0.05f, 0.05f) : QColor(Qt::white));
        return;
    }
    if (m_backdrop != Backdrop::DarkGradient)
        return;

    // Lighter at the top, nearly black at the bottom; the plot area a shade darker still so
    // the lines stand out against it.
    QLinearGradient background(0.0, 0.0, 0.0, 1.0);
    background.setCoordinateMode(QGradient::ObjectBoundingMode);
    background.setColorAt(0.0, QColor::fromRgbF(0.25f, 0.25f, 0.27f));
    background.setColorAt(1.0, QColor::fromRgbF(0.08f, 0.08f, 0.09f));
    graph->setBackgroundBrush(background);
    graph->setBackgroundPen(Qt::NoPen);

    QLinearGradient plotArea(0.0, 0.0, 0.0, 1.0);
    plotArea.setCoordinateMode(QGradient::ObjectBoundingMode);
    plotArea.setColorAt(0.0, QColor::fromRgbF(0.12f, 0.12f, 0.13f));
    plotArea.setColorAt(1.0, QColor::fromRgbF(0.04f, 0.04f, 0.05f));
    graph->setPlotAreaBackgroundBrush(plotArea);
    graph->setPlotAreaBackgroundPen(QPen(QColor::fromRgbF(0.4f, 0.4f, 0.4f), 1.0));
    graph->setPlotAreaBackgroundVisible(true);
}

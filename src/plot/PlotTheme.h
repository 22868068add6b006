// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QChart>
#include <QString>

// A look for a graph: one of Qt Charts' built-in themes, optionally with the dark gradient
// backdrop the signal plots use by default. Themes are shared singletons handed around by
// pointer; a null pointer means "use the default", and nullTheme() is the marker for "apply
// no theme at all" (the graph keeps Qt Charts' own look).
class PlotTheme
{
public:
    static inline const QString kDarkGradientTheme = QStringLiteral("Dark Gradient");
    static inline const QString kPlainBlackTheme = QStringLiteral("Plain Black");
    static inline const QString kPlainWhiteTheme = QStringLiteral("Plain White");

    // The marker object: applying it changes nothing.
    static const PlotTheme *nullTheme();
    static const PlotTheme *darkGradient();
    // The theme of that name, or null when there is none (an empty name included).
    static const PlotTheme *themeNamed(const QString &name);

    QString name() const { return m_name; }
    bool isNullMarker() const { return this == nullTheme(); }
    void applyToGraph(QChart *graph) const;

    Q_DISABLE_COPY_MOVE(PlotTheme)

private:
    enum class Backdrop { None, Plain, DarkGradient };
    PlotTheme(QString name, QChart::ChartTheme base, Backdrop backdrop);

    QString m_name;
    QChart::ChartTheme m_base;
    Backdrop m_backdrop;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QBrush>
#include <QFont>
#include <QGraphicsObject>
#include <QList>
#include <QPen>
#include <QPointer>
#include <QString>

class QChart;

// A legend drawn over a chart as a grid: entries fill rows of up to `columns` cells, left
// to right. Qt Charts' own legend knows no columns, so the signal plots draw this one.
// The legend stays inside the chart: it gives up columns while it is too wide and, when
// there are more rows than fit below its top edge, ends with a "+N more" cell.
class PlotLegend : public QGraphicsObject
{
    Q_OBJECT

public:
    struct Entry
    {
        QString title;
        QPen pen;
        bool operator==(const Entry &other) const = default;
    };
    // Which edge of the chart the legend hangs from: the middle of the top edge, or the
    // middle of the right edge.
    enum class Anchor { Top, Right };

    static constexpr double kPadding = 5.0;
    static constexpr double kSwatchLength = 16.0;
    static constexpr double kSwatchGap = 4.0;
    static constexpr double kColumnGap = 10.0;
    static constexpr double kEdgeMargin = 4.0;

    explicit PlotLegend(QChart *graph);

    void setColumns(int columns);
    int columns() const { return m_columns; }
    void setRowMargin(double margin);
    // The displacement is y-up: (20, -90) moves the legend 20 right and 90 down.
    void setAnchor(Anchor anchor, QPointF displacement);
    // The legend's top never goes above this y (graph coordinates), e.g. to stay clear of a
    // title that grows with the chart.
    void setMinimumTop(double top);
    void setTextColor(const QColor &color);
    void setBorderPen(const QPen &pen);
    void setFill(const QBrush &fill);
    void setCornerRadius(double radius);
    void setFont(const QFont &font);

    // Replaces the entries; nothing is laid out or repainted when they are the same.
    void setEntries(const QList<Entry> &entries);
    const QList<Entry> &entries() const { return m_entries; }

    // Layout facts, in chart coordinates.
    int columnsUsed() const { return m_columnsUsed; }
    int rowsShown() const { return m_rowsShown; }
    int entriesShown() const { return m_entriesShown; }
    QRectF frameInGraph() const { return m_frame.translated(pos()); }

    QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

public Q_SLOTS:
    void relayout();

private:
    QString cellText(int index) const;
    double cellWidth(int index) const;

    QPointer<QChart> m_graph;
    QList<Entry> m_entries;
    int m_columns = 1;
    double m_rowMargin = 0.0;
    Anchor m_anchor = Anchor::Right;
    QPointF m_displacement;
    double m_minimumTop = 0.0;
    QColor m_textColor = Qt::white;
    QPen m_borderPen;
    QBrush m_fill;
    double m_cornerRadius = 0.0;
    QFont m_font;

    QRectF m_frame;
    QList<double> m_columnWidths;
    int m_columnsUsed = 0;
    int m_rowsShown = 0;
    int m_entriesShown = 0;
    int m_cellsShown = 0;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QPointF>
#include <QRgb>
#include <QSize>

#include <vector>

// Strokes wide, antialiased lines that run left to right (a signal over time) straight into
// an image, column by column. In each pixel column a straight stretch of line covers a
// vertical band w x sqrt(1 + slope^2) tall, exactly as a pen of width w would; the share of
// each pixel the band covers over the column is worked out in closed form, so edges are
// smoothed like QPainter's. Joins between two stretches meet on the column where the
// corner lies. QPainter strokes a wide line through a general path stroker and polygon
// rasteriser; for a few hundred series of a few hundred points that costs tens of
// milliseconds, this a few.
class LineRaster
{
public:
    // A transparent layer of `size` pixels.
    explicit LineRaster(QSize size);

    // Strokes the polyline through `points` (pixel coordinates of the image, y down), in
    // `color` (premultiplied), `width` pixels wide. x must not decrease; a point whose y is
    // NaN is a gap and breaks the line.
    void strokePolyline(const QPointF *points, qsizetype count, double width, QRgb color);
    // The layer as an image (Format_ARGB32_Premultiplied).
    QImage toImage() const;

private:
    template <bool kDirect>
    void addPiece(double x0, double x1, double y0, double slope, double halfHeight);
    void flushColumn();

    int m_width;
    int m_height;
    QRgb m_color = 0;
    // Coverage of the column being gathered, by row: the pieces of one line in one column
    // lie side by side, so their coverages add up.
    int m_column = -1;
    int m_top = -1;
    int m_bottom = -1;
    std::vector<float> m_coverage;
    // The pixels column by column: a line is drawn down a column at a time, and a column
    // of an image row by row would touch a cache line per pixel.
    std::vector<QRgb> m_columns;
};

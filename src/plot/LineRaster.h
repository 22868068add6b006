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
    // The part of one straight stretch in the current column. Its upper edge is highest
    // `start` rows below row `top` and falls (or rises) by `drop` rows across the piece,
    // `halfInverse` being 0.5 / (drop per pixel); the band is `thick` rows tall. Rows
    // [top, bottom) are the ones it touches.
    struct Piece
    {
        double start;
        float drop;
        float thick;
        float halfInverse;
        int top;
        int bottom;
    };

    void addPiece(double x0, double x1, double y0, double slope, double halfHeight);
    void flushColumn();

    int m_width;
    int m_height;
    QRgb m_color = 0;
    // The pieces of one line in the column being gathered. They lie side by side, so
    // their coverages add up; the column is blended once, when the line leaves it.
    int m_column = -1;
    std::vector<Piece> m_pieces;
    // What the pieces cover above each row boundary of the column.
    std::vector<float> m_above;
    // The pixels column by column: a line is drawn down a column at a time, and a column
    // of an image row by row would touch a cache line per pixel.
    std::vector<QRgb> m_columns;
};

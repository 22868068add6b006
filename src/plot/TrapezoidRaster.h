// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QPolygonF>
#include <QRgb>
#include <QSize>

#include <vector>

// Draws a stack of trapezoids that stand on the bottom edge of an image with translucent
// colours, one over the other in the order they were added. With a thousand networks over
// thirteen channels every pixel of a chart lies under a hundred fills; blending each fill
// over each of its pixels, as QPainter does, costs tens of milliseconds. Here each column is
// worked out once from the top down: below a fill's top that fill covers every pixel to the
// bottom, so between two tops the colour stays the same and is written as one run. The
// result is what QPainter makes of the same fills without smoothing (a pixel is covered
// when its centre is). The outlines go over all fills, smoothed by the share of each pixel
// they cover; QPainter hands the thousands of short spans of smoothed outlines to its thread
// pool, whose waking and waiting costs more than the drawing.
class TrapezoidRaster
{
public:
    // A transparent layer of `size` pixels.
    explicit TrapezoidRaster(QSize size);

    // Adds a trapezoid over those added before. `shape` holds its left foot, left top,
    // right top and right foot in image coordinates; the feet are taken as lying on the
    // bottom edge. `fill` is premultiplied.
    void add(const QPolygonF &shape, QRgb fill);
    // Adds the outline of `shape` (as for add()), `width` pixels wide and smoothed, drawn
    // over every fill and over the outlines added before; the foot edge lies half outside.
    void addOutline(const QPolygonF &shape, QRgb color, double width);
    // Makes `image` the layer with everything added (Format_ARGB32_Premultiplied); its
    // memory is used again when it has the right size and format already.
    void render(QImage &image) const;

private:
    struct Shape
    {
        double left, leftTop, rightTop, right, top;
        int topRow;     // the first row under the flat top
        float color[4]; // premultiplied red, green, blue, alpha from 0 to 1
    };
    struct Outline
    {
        Shape shape;
        QRgb color;
        double halfWidth;
    };
    bool shapeOf(const QPolygonF &polygon, Shape &shape) const;
    void fill(QImage &image) const;
    void stroke(QImage &image, const Outline &outline) const;
    // The first row the shape covers in the column whose centre is at `x`, or the height.
    inline int firstRow(const Shape &shape, double x) const;

    int m_width;
    int m_height;
    std::vector<Shape> m_shapes;
    std::vector<Outline> m_outlines;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QList>
#include <QRectF>

#include <optional>

class QDataStream;
class QPainter;

// A colour gradient: colour stops ordered by position (0..1) and a blending mode that says
// how the colour between two stops is mixed. Values are immutable in style: every change
// returns a changed copy. Colours are device RGBA with float components in 0..1.
class CTGradient
{
public:
    enum BlendingMode : qint32 {
        Linear = 0,           // each RGBA component on its own
        Chromatic = 1,        // through HSV, the hue always increasing from stop to stop
        InverseChromatic = 2, // through HSV, the hue always decreasing
    };

    struct Element
    {
        float red = 0, green = 0, blue = 0, alpha = 1;
        float position = 0;
        bool operator==(const Element &) const = default;
    };

    struct Rgba
    {
        float red = 1, green = 1, blue = 1, alpha = 1;
    };

    // No stops (opaque white everywhere), linear blending.
    CTGradient() = default;
    static CTGradient gradientWithBeginningColor(const QColor &begin, const QColor &end);

    // Ready-made gradients for buttons, bars, lists and spectra.
    static CTGradient aquaSelectedGradient();
    static CTGradient aquaNormalGradient();
    static CTGradient aquaPressedGradient();
    static CTGradient unifiedSelectedGradient();
    static CTGradient unifiedNormalGradient();
    static CTGradient unifiedPressedGradient();
    static CTGradient unifiedDarkGradient();
    static CTGradient sourceListSelectedGradient();
    static CTGradient sourceListUnselectedGradient();
    static CTGradient rainbowGradient();
    static CTGradient hydrogenSpectrumGradient();

    // Derived copies. Removing a stop that is not there returns an unchanged copy.
    CTGradient gradientWithAlphaComponent(float alpha) const;
    CTGradient gradientWithBlendingMode(BlendingMode mode) const;
    CTGradient addColorStop(const QColor &color, float position) const;
    CTGradient removeColorStopAtPosition(float position) const;
    CTGradient removeColorStopAtIndex(qsizetype index) const;

    BlendingMode blendingMode() const { return m_blendingMode; }
    qsizetype elementCount() const { return m_elements.size(); }
    std::optional<Element> elementAtIndex(qsizetype index) const;
    // An invalid QColor when there is no such stop.
    QColor colorStopAtIndex(qsizetype index) const;
    QColor colorAtPosition(float position) const;
    // The unclamped components, for callers that need more than QColor's 16 bits.
    Rgba componentsAtPosition(float position) const;

    // Axial fill across `rect` along `angle` degrees (counter-clockwise from the +x axis as
    // seen on screen): the first stop touches the corner farthest back along that direction
    // and the last stop the corner farthest forward, so the whole range shows.
    void fillRect(QPainter *painter, const QRectF &rect, float angle) const;
    // Radial fill from the centre of `rect`, stretched to an ellipse that touches the middle
    // of each side; the corners take the last stop's colour.
    void radialFillRect(QPainter *painter, const QRectF &rect) const;
    // A sample of the gradient, as shown in a picker.
    void drawSwatchInRect(QPainter *painter, const QRectF &rect) const;

    // Archive: the key "CTGradientBlendingMode" and the mode, the key
    // "CTGradientElementCount" and the count, then red, green, blue, alpha and position of
    // every stop in order, as 32-bit floats. Decoding gives nothing for a damaged archive.
    void encodeWithCoder(QDataStream &stream) const;
    static std::optional<CTGradient> initWithCoder(QDataStream &stream);

    bool operator==(const CTGradient &) const = default;

private:
    // After every stop of the same position, so stops added later lie after earlier ones.
    void addElement(const Element &element);
    std::optional<Element> removeElementAtIndex(qsizetype index);
    std::optional<Element> removeElementAtPosition(float position);
    void setBlendingMode(BlendingMode mode) { m_blendingMode = mode; }

    Rgba linearEvaluation(float position) const;
    Rgba chromaticEvaluation(float position, bool inverse) const;
    // The two stops around `position` (the same stop twice at the ends).
    std::pair<const Element *, const Element *> surrounding(float position) const;
    // Colour stops for Qt's gradient brushes, sampled from componentsAtPosition().
    QList<std::pair<qreal, QColor>> sampledStops() const;

    QList<Element> m_elements;
    BlendingMode m_blendingMode = Linear;
};

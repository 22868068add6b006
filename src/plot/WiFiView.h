// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/NetworkObject.h"

#include <QColor>
#include <QFont>
#include <QHash>
#include <QImage>
#include <QStaticText>
#include <QString>
#include <QWidget>

#include <array>
#include <optional>

class PlotDelegate;
class QPainter;

// What the network map and the channel views share: the delegate that lists the networks,
// an identifier that picks a variant, the icons and colours (made once, on first drawing),
// and drawing in a y-up system with the origin at the lower left, as the views' geometry is
// expressed. Shapes are drawn through a flipped painter; images and text are put back
// upright at their lower-left anchor points.
class WiFiView : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QString identifier READ identifier WRITE setIdentifier)

public:
    // A font and colour, with the font's measures taken once: labels are drawn by the
    // thousand.
    struct TextAttributes
    {
        QFont font;
        QColor color;
        double ascent = 0.0;
        double height = 0.0;

        TextAttributes() = default;
        TextAttributes(const QFont &font, const QColor &color);
    };

    explicit WiFiView(QWidget *parent = nullptr);

    PlotDelegate *delegate() const { return m_delegate; }
    // Not owned; the controller outlives its views.
    void setDelegate(PlotDelegate *delegate) { m_delegate = delegate; }
    QString identifier() const { return m_identifier; }
    void setIdentifier(const QString &identifier);

    void initImagesIfNeeded();
    const QImage &selfImage() const { return m_selfImage; }
    // Ring 1 (strongest) to ring 5.
    const QImage &wifiImage(int ring) const;

    // Draws the whole view into `painter`, which is set up for the widget (y down).
    virtual void drawRect(QPainter &painter) = 0;

    // An icon of the application resources at its natural size in points, drawn for
    // `pixelRatio` device pixels per point; a null image if missing.
    static QImage loadIcon(const QString &name, qreal pixelRatio = 1.0);
    // The platform's user-interface font at `pixelSize`.
    static QFont systemFont(double pixelSize);
    // Names come from the air: control characters (newlines, tabs, NULs) would break a
    // one-line label, so they show as U+FFFD.
    static QString displayText(const std::optional<QString> &text);

protected:
    void paintEvent(QPaintEvent *event) override;

    // The width of `text` in `font`, remembered: the same names are measured on every
    // drawing, by the thousand.
    double textWidth(const QString &text, const QFont &font);
    // Keeps room in the label caches for `labels` labels per drawing.
    void reserveTextCache(qsizetype labels);

    // Flips `painter` so that y grows upwards from the widget's lower edge.
    void flipToYUp(QPainter &painter) const;
    // In a y-up painter: draws upright with the lower-left corner at `lowerLeft`.
    static void drawImageUpright(QPainter &painter, QPointF lowerLeft, const QImage &image);
    void drawTextUpright(QPainter &painter, QPointF lowerLeft, const QString &text,
                         const TextAttributes &attributes);

    QImage m_selfImage;
    std::array<QImage, 5> m_wifiImages;
    // Declared for artwork that is not drawn yet.
    QImage m_laptopImage;
    QImage m_phoneImage;
    QColor m_bgGradientStart;
    QColor m_bgGradientEnd;
    QColor m_circleColor;
    TextAttributes m_textAttr;
    TextAttributes m_curTextAttr;
    bool m_imagesLoaded = false;
    qreal m_imagesPixelRatio = 1.0;

private:
    // Laid-out labels, kept from one drawing to the next: shaping the same names again on
    // every redraw is most of the cost of text. One font is used for all labels.
    QHash<QString, QStaticText> m_textCache;
    QFont m_textCacheFont;
    QHash<QString, double> m_widthCache;
    QFont m_widthCacheFont;
    qsizetype m_textCacheLimit;
    PlotDelegate *m_delegate = nullptr;
    QString m_identifier;
};

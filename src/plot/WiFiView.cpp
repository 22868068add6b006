// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/WiFiView.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QPainter>
#include <QSvgRenderer>

#include <algorithm>

namespace {

// More names than the air holds in most places; past the limit the caches start over. A
// city survey raises it to what one drawing shows.
constexpr qsizetype kTextCacheLimit = 8192;

} // namespace

WiFiView::TextAttributes::TextAttributes(const QFont &font, const QColor &color)
    : font(font), color(color)
{
    const QFontMetricsF metrics(font);
    ascent = metrics.ascent();
    height = metrics.height();
}

WiFiView::WiFiView(QWidget *parent) : QWidget(parent), m_textCacheLimit(kTextCacheLimit)
{
    // The view paints every pixel itself.
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void WiFiView::setIdentifier(const QString &identifier)
{
    if (identifier == m_identifier)
        return;
    m_identifier = identifier;
    update();
}

const QImage &WiFiView::wifiImage(int ring) const
{
    static const QImage kNone;
    return ring >= 1 && ring <= 5 ? m_wifiImages.at(size_t(ring - 1)) : kNone;
}

QImage WiFiView::loadIcon(const QString &name, qreal pixelRatio)
{
    QSvgRenderer renderer(QStringLiteral(":/icons/%1.svg").arg(name));
    if (!renderer.isValid())
        return QImage();
    const QSize size = renderer.defaultSize();
    if (size.isEmpty())
        return QImage();
    QImage image(size * pixelRatio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(pixelRatio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(size)));
    return image;
}

QFont WiFiView::systemFont(double pixelSize)
{
    QFont font = QApplication::font();
    font.setPixelSize(int(pixelSize));
    return font;
}

QString WiFiView::displayText(const std::optional<QString> &text)
{
    if (!text)
        return QString();
    const auto unprintable = [](QChar ch) {
        const QChar::Category category = ch.category();
        return category == QChar::Other_Control || category == QChar::Separator_Line ||
               category == QChar::Separator_Paragraph;
    };
    // Most names are printable as they are: they are shared, not copied (a city's map
    // shows a hundred thousand of them in every drawing).
    if (std::none_of(text->cbegin(), text->cend(), unprintable))
        return *text;
    QString shown = *text;
    for (QChar &ch : shown) {
        if (unprintable(ch))
            ch = QChar::ReplacementCharacter;
    }
    return shown;
}

void WiFiView::initImagesIfNeeded()
{
    // Drawn again from the SVGs when the view moves to a screen of another pixel density.
    const qreal ratio = devicePixelRatioF();
    if (m_imagesLoaded && ratio == m_imagesPixelRatio)
        return;
    m_imagesLoaded = true;
    m_imagesPixelRatio = ratio;
    m_selfImage = loadIcon(QStringLiteral("laptop"), ratio);
    const QStringList names = {QStringLiteral("wi-fi"), QStringLiteral("wi-fi-2"),
                               QStringLiteral("wi-fi-3"), QStringLiteral("wi-fi-4"),
                               QStringLiteral("wi-fi-5")};
    for (size_t i = 0; i < m_wifiImages.size(); ++i)
        m_wifiImages[i] = loadIcon(names.at(qsizetype(i)), ratio);
    m_bgGradientStart = QColor::fromRgbF(0.1f, 0.2f, 0.1f, 1.0f);
    m_bgGradientEnd = QColor::fromRgbF(0.1f, 0.1f, 0.1f, 1.0f);
    m_circleColor = QColor::fromRgbF(0.5f, 0.7f, 0.5f, 0.9f);
    m_textAttr = TextAttributes(systemFont(11), QColor::fromRgbF(0.8f, 0.8f, 0.8f, 0.9f));
    m_curTextAttr = TextAttributes(systemFont(11), QColor::fromRgbF(0.3f, 0.6f, 0.9f, 1.0f));
}

double WiFiView::textWidth(const QString &text, const QFont &font)
{
    // Comparing two fonts compares their families as text; a copy of the cached font (the
    // usual case, a hundred thousand times per drawing of a city) is known at once.
    if ((!font.isCopyOf(m_widthCacheFont) && font != m_widthCacheFont) ||
        m_widthCache.size() > m_textCacheLimit) {
        m_widthCache.clear();
        m_widthCacheFont = font;
    }
    auto cached = m_widthCache.constFind(text);
    if (cached == m_widthCache.cend())
        cached = m_widthCache.insert(text, QFontMetricsF(font).horizontalAdvance(text));
    return *cached;
}

void WiFiView::reserveTextCache(qsizetype labels)
{
    m_textCacheLimit = std::max(kTextCacheLimit, labels + labels / 2);
}

void WiFiView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawRect(painter);
}

void WiFiView::flipToYUp(QPainter &painter) const
{
    painter.translate(0.0, height());
    painter.scale(1.0, -1.0);
}

void WiFiView::drawImageUpright(QPainter &painter, QPointF lowerLeft, const QImage &image)
{
    if (image.isNull())
        return;
    // Swapping the transform is much cheaper than saving the whole painter state.
    const QTransform yUp = painter.transform();
    const qreal height = image.deviceIndependentSize().height();
    painter.setTransform(QTransform(1, 0, 0, -1, lowerLeft.x(), lowerLeft.y() + height) * yUp);
    painter.drawImage(QPointF(0.0, 0.0), image);
    painter.setTransform(yUp);
}

void WiFiView::drawTextUpright(QPainter &painter, QPointF lowerLeft, const QString &text,
                               const TextAttributes &attributes)
{
    if (text.isEmpty())
        return;
    const QTransform yUp = painter.transform();
    painter.setTransform(QTransform(1, 0, 0, -1, lowerLeft.x(), lowerLeft.y() + attributes.height) *
                         yUp);
    if (painter.font() != attributes.font)
        painter.setFont(attributes.font);
    if (painter.pen().color() != attributes.color || painter.pen().widthF() != 1.0)
        painter.setPen(QPen(attributes.color, 1.0));
    if ((!attributes.font.isCopyOf(m_textCacheFont) && attributes.font != m_textCacheFont) ||
        m_textCache.size() > m_textCacheLimit) {
        m_textCache.clear();
        m_textCacheFont = attributes.font;
    }
    auto cached = m_textCache.find(text);
    if (cached == m_textCache.end()) {
        QStaticText laidOut(text);
        laidOut.setTextFormat(Qt::PlainText);
        laidOut.setPerformanceHint(QStaticText::AggressiveCaching);
        laidOut.prepare(QTransform(), attributes.font);
        cached = m_textCache.insert(text, laidOut);
    }
    // The box's top-left is the local origin.
    painter.drawStaticText(QPointF(0.0, 0.0), *cached);
    painter.setTransform(yUp);
}

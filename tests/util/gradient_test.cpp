// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/CTGradient.h"

#include <QBuffer>
#include <QDataStream>
#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using G = CTGradient;

// The colour at a position as "r g b a", three decimals each.
std::string at(const CTGradient &g, float t)
{
    const CTGradient::Rgba c = g.componentsAtPosition(t);
    return QString::asprintf("%.3f %.3f %.3f %.3f", c.red, c.green, c.blue, c.alpha).toStdString();
}

std::optional<CTGradient> unarchive(const QByteArray &bytes)
{
    QDataStream in(bytes);
    return CTGradient::initWithCoder(in);
}

TEST(CTGradient, BlendingModes)
{
    const G redToBlue = G::gradientWithBeginningColor(Qt::red, Qt::blue);
    const G blueToRed = G::gradientWithBeginningColor(Qt::blue, Qt::red);
    const G fade = G::gradientWithBeginningColor(QColor::fromRgbF(0, 0, 0, 0), Qt::white)
                       .addColorStop(Qt::red, 2.0f); // beyond the usual range
    const std::tuple<CTGradient, float, const char *> rows[] = {
        {G().gradientWithBlendingMode(G::Chromatic), 0.3f, "1.000 1.000 1.000 1.000"}, // empty
        {fade, 0.25f, "0.250 0.250 0.250 0.250"},
        {fade, 1.5f, "1.000 0.500 0.500 1.000"},
        {G().addColorStop(Qt::blue, 0.4f), 0.9f, "0.000 0.000 1.000 1.000"},
        // Linear mixes to purple; chromatic passes green (hue 120), inverse magenta (300).
        {redToBlue, 0.5f, "0.500 0.000 0.500 1.000"},
        {redToBlue.gradientWithBlendingMode(G::Chromatic), 0.5f, "0.000 1.000 0.000 1.000"},
        {redToBlue.gradientWithBlendingMode(G::InverseChromatic), 0.5f, "1.000 0.000 1.000 1.000"},
        // The other way round chromatic goes up from 240 past 360, inverse down through green.
        {blueToRed.gradientWithBlendingMode(G::Chromatic), 0.5f, "1.000 0.000 1.000 1.000"},
        {blueToRed.gradientWithBlendingMode(G::InverseChromatic), 0.5f, "0.000 1.000 0.000 1.000"},
        // A green-dominated hue (chartreuse, 90) stays; a grey takes the other colour's hue.
        {G::gradientWithBeginningColor(QColor::fromRgbF(0.5f, 1, 0),
                                       QColor::fromRgbF(0.25f, 0.5f, 0))
             .gradientWithBlendingMode(G::Chromatic),
         0.5f, "0.375 0.750 0.000 1.000"},
        {G::gradientWithBeginningColor(Qt::white, Qt::red).gradientWithBlendingMode(G::Chromatic),
         0.5f, "1.000 0.500 0.500 1.000"},
    };
    for (const auto &[g, t, rgba] : rows)
        EXPECT_EQ(at(g, t), rgba) << t;
}

TEST(CTGradient, StopsStaySortedAndDerivedCopiesLeaveTheOriginal)
{
    const G g = G().addColorStop(Qt::red, 0.5f)
                    .addColorStop(Qt::blue, 0.0f)
                    .addColorStop(Qt::green, 0.5f)
                    .addColorStop(Qt::black, 0.5f);
    // Later stops at an equal position go after the earlier ones; the first of them wins at
    // the shared position, the last one just after it.
    EXPECT_EQ(QList<QColor>({g.colorStopAtIndex(-1), g.colorStopAtIndex(0), g.colorStopAtIndex(1),
                             g.colorStopAtIndex(2), g.colorStopAtIndex(3), g.colorStopAtIndex(4)}),
              QList<QColor>({QColor(), Qt::blue, Qt::red, Qt::green, Qt::black, QColor()}));
    EXPECT_EQ(g.colorAtPosition(0.5f), QColor(Qt::red));
    EXPECT_EQ(at(g, 0.75f), "0.000 0.000 0.000 1.000");

    const G three = G::gradientWithBeginningColor(Qt::red, Qt::blue).addColorStop(Qt::green, 0.5f);
    EXPECT_NEAR(three.gradientWithAlphaComponent(0.25f).elementAtIndex(1)->alpha, 0.25f, 1e-6);
    EXPECT_EQ(three.elementAtIndex(1)->alpha, 1.0f);
    EXPECT_EQ(three.removeColorStopAtPosition(0.5f).colorStopAtIndex(1), QColor(Qt::blue));
    EXPECT_EQ(three.removeColorStopAtIndex(0).colorStopAtIndex(0), QColor(Qt::green));
    EXPECT_EQ(three.removeColorStopAtPosition(0.7f), three);
    EXPECT_EQ(three.removeColorStopAtIndex(3), three);
}

TEST(CTGradient, ArchivesRoundTripAndDamagedOnesDecodeToNothing)
{
    const G g = G::rainbowGradient().addColorStop(QColor(10, 20, 30, 40), 0.3f);
    QByteArray bytes;
    QDataStream coder(&bytes, QIODevice::WriteOnly);
    g.encodeWithCoder(coder);
    // Two keys of 22 UTF-16 units (4-byte length each), two 32-bit integers, five 32-bit
    // floats per stop.
    EXPECT_EQ(bytes.size(), 2 * (4 + 44) + 2 * 4 + g.elementCount() * 5 * 4);
    EXPECT_EQ(unarchive(bytes), g); // the blending mode included
    for (qsizetype cut = 0; cut < bytes.size(); ++cut)
        EXPECT_FALSE(unarchive(bytes.left(cut)).has_value()) << cut;

    auto forged = [](const QString &modeKey, qint32 mode, qint32 count) {
        QByteArray b;
        QDataStream out(&b, QIODevice::WriteOnly);
        out << modeKey << mode << QStringLiteral("CTGradientElementCount") << count;
        return b;
    };
    const QString key = QStringLiteral("CTGradientBlendingMode");
    EXPECT_FALSE(unarchive(forged(QStringLiteral("Mode"), 0, 0)).has_value());
    for (const auto &[mode, count] : {std::pair(3, 0), std::pair(-1, 0), std::pair(0, -4),
                                      std::pair(0, std::numeric_limits<qint32>::max())})
        EXPECT_FALSE(unarchive(forged(key, mode, count)).has_value()) << mode << " " << count;
    EXPECT_TRUE(unarchive(forged(key, 2, 0)).has_value());

    // Stops full of NaN decode and evaluate without harm.
    QByteArray nanStops = forged(key, 1, 2);
    QDataStream out(&nanStops, QIODevice::Append);
    out.setFloatingPointPrecision(QDataStream::SinglePrecision);
    for (int i = 0; i < 10; ++i)
        out << (i == 3 ? 0.5f : std::numeric_limits<float>::quiet_NaN());
    const auto odd = unarchive(nanStops);
    ASSERT_TRUE(odd.has_value());
    EXPECT_TRUE(odd->gradientWithBlendingMode(G::Linear).colorAtPosition(0.2f).isValid());
}

TEST(CTGradient, Drawing)
{
    QImage image(101, 101, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    const G g = G::gradientWithBeginningColor(Qt::black, Qt::white);
    QPainter painter(&image);
    g.fillRect(&painter, QRectF(0, 0, 101, 50), 90); // bottom to top on screen
    g.radialFillRect(&painter, QRectF(0, 50, 101, 51));
    g.fillRect(&painter, QRectF(0, 0, 10, 10), std::nanf("")); // nothing drawn
    painter.end();
    EXPECT_EQ(std::tuple(qGray(image.pixel(50, 0)) > 245, qGray(image.pixel(50, 49)) < 10,
                         qGray(image.pixel(50, 75)) < 10, qGray(image.pixel(0, 75)) > 235),
              std::tuple(true, true, true, true));
    EXPECT_NEAR(qGray(image.pixel(25, 75)), 128, 8); // half way out: the circle fits the rect
    g.radialFillRect(nullptr, QRectF(0, 0, 10, 10)); // no painter: nothing happens
}

} // namespace

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

void expectRgba(const CTGradient::Rgba &c, float r, float g, float b, float a = 1.0f)
{
    constexpr float tol = 1e-4f;
    EXPECT_NEAR(c.red, r, tol);
    EXPECT_NEAR(c.green, g, tol);
    EXPECT_NEAR(c.blue, b, tol);
    EXPECT_NEAR(c.alpha, a, tol);
}

QByteArray archive(const CTGradient &g)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    g.encodeWithCoder(out);
    return bytes;
}

std::optional<CTGradient> unarchive(const QByteArray &bytes)
{
    QDataStream in(bytes);
    return CTGradient::initWithCoder(in);
}

TEST(CTGradient, EmptyGradientIsWhite)
{
    for (auto mode : {CTGradient::Linear, CTGradient::Chromatic, CTGradient::InverseChromatic}) {
        const CTGradient g = CTGradient().gradientWithBlendingMode(mode);
        for (float t : {-1.0f, 0.0f, 0.5f, 1.0f, 7.0f})
            expectRgba(g.componentsAtPosition(t), 1, 1, 1);
        EXPECT_EQ(g.colorAtPosition(0.3f), QColor(Qt::white));
    }
}

TEST(CTGradient, StopsStaySortedAndLaterEqualPositionsGoAfter)
{
    const CTGradient g = CTGradient()
                             .addColorStop(Qt::red, 0.5f)
                             .addColorStop(Qt::blue, 0.0f)
                             .addColorStop(Qt::green, 0.5f)
                             .addColorStop(Qt::white, 1.0f)
                             .addColorStop(Qt::black, 0.5f);
    const QColor order[] = {Qt::blue, Qt::red, Qt::green, Qt::black, Qt::white};
    ASSERT_EQ(g.elementCount(), 5);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(g.colorStopAtIndex(i), order[i]) << i;
    EXPECT_FALSE(g.colorStopAtIndex(5).isValid() || g.colorStopAtIndex(-1).isValid());

    // At the shared position the first of the three wins; just after it, the last one.
    EXPECT_EQ(g.colorAtPosition(0.5f), QColor(Qt::red));
    expectRgba(g.componentsAtPosition(0.75f), 0.5f, 0.5f, 0.5f);
}

TEST(CTGradient, LinearBlending)
{
    const CTGradient g =
        CTGradient::gradientWithBeginningColor(QColor::fromRgbF(0, 0, 0, 0), Qt::white)
            .addColorStop(Qt::red, 2.0f); // beyond the usual range
    expectRgba(g.componentsAtPosition(-0.5f), 0, 0, 0, 0);
    expectRgba(g.componentsAtPosition(0.25f), 0.25f, 0.25f, 0.25f, 0.25f);
    expectRgba(g.componentsAtPosition(1.0f), 1, 1, 1);
    expectRgba(g.componentsAtPosition(1.5f), 1, 0.5f, 0.5f);
    expectRgba(g.componentsAtPosition(3.0f), 1, 0, 0);

    expectRgba(CTGradient().addColorStop(Qt::blue, 0.4f).componentsAtPosition(0.9f), 0, 0, 1);
}

TEST(CTGradient, ChromaticBlendingGoesRoundTheHueCircle)
{
    const CTGradient redToBlue = CTGradient::gradientWithBeginningColor(Qt::red, Qt::blue);
    // Linear mixes to purple; chromatic passes green (hue 120), inverse passes magenta (300).
    expectRgba(redToBlue.componentsAtPosition(0.5f), 0.5f, 0, 0.5f);
    const CTGradient chromatic = redToBlue.gradientWithBlendingMode(CTGradient::Chromatic);
    EXPECT_EQ(chromatic.blendingMode(), CTGradient::Chromatic);
    expectRgba(chromatic.componentsAtPosition(0.5f), 0, 1, 0);
    expectRgba(chromatic.componentsAtPosition(0.25f), 1, 1, 0); // yellow on the way
    const CTGradient inverse = redToBlue.gradientWithBlendingMode(CTGradient::InverseChromatic);
    expectRgba(inverse.componentsAtPosition(0.5f), 1, 0, 1);
    expectRgba(inverse.componentsAtPosition(0.0f), 1, 0, 0);
    expectRgba(inverse.componentsAtPosition(1.0f), 0, 0, 1);

    // Blue to red the other way round: chromatic adds 360 to red's hue (240 -> 360 passes
    // magenta), inverse falls from 240 to 0 through green.
    const CTGradient blueToRed = CTGradient::gradientWithBeginningColor(Qt::blue, Qt::red);
    expectRgba(blueToRed.gradientWithBlendingMode(CTGradient::Chromatic).componentsAtPosition(0.5f),
               1, 0, 1);
    expectRgba(
        blueToRed.gradientWithBlendingMode(CTGradient::InverseChromatic).componentsAtPosition(0.5f),
        0, 1, 0);

    // A green-dominated colour's hue: chartreuse to its darker self stays at hue 90.
    expectRgba(CTGradient::gradientWithBeginningColor(QColor::fromRgbF(0.5f, 1, 0),
                                                      QColor::fromRgbF(0.25f, 0.5f, 0))
                   .gradientWithBlendingMode(CTGradient::Chromatic)
                   .componentsAtPosition(0.5f),
               0.375f, 0.75f, 0);
    // A grey takes the other colour's hue: white to red only gains saturation.
    expectRgba(CTGradient::gradientWithBeginningColor(Qt::white, Qt::red)
                   .gradientWithBlendingMode(CTGradient::Chromatic)
                   .componentsAtPosition(0.5f),
               1, 0.5f, 0.5f);
    // Two greys: hue 0 on both sides, a plain fade.
    expectRgba(CTGradient::gradientWithBeginningColor(Qt::black, Qt::white)
                   .gradientWithBlendingMode(CTGradient::InverseChromatic)
                   .componentsAtPosition(0.5f),
               0.5f, 0.5f, 0.5f);
}

TEST(CTGradient, DerivedCopiesLeaveTheOriginal)
{
    const CTGradient g =
        CTGradient::gradientWithBeginningColor(Qt::red, Qt::blue).addColorStop(Qt::green, 0.5f);
    const CTGradient faded = g.gradientWithAlphaComponent(0.25f);
    EXPECT_NEAR(faded.elementAtIndex(1)->alpha, 0.25f, 1e-6);
    EXPECT_EQ(g.elementAtIndex(1)->alpha, 1.0f);

    EXPECT_EQ(g.removeColorStopAtPosition(0.5f).colorStopAtIndex(1), QColor(Qt::blue));
    EXPECT_EQ(g.removeColorStopAtPosition(0.7f), g);
    EXPECT_EQ(g.removeColorStopAtIndex(0).colorStopAtIndex(0), QColor(Qt::green));
    EXPECT_EQ(g.removeColorStopAtIndex(3), g);
    EXPECT_EQ(g.elementCount(), 3);
}

TEST(CTGradient, ArchiveRoundTrip)
{
    const CTGradient g = CTGradient::rainbowGradient().addColorStop(QColor(10, 20, 30, 40), 0.3f);
    const QByteArray bytes = archive(g);
    // Two keys of 22 UTF-16 units (4-byte length each), two 32-bit integers, five 32-bit
    // floats per stop.
    EXPECT_EQ(bytes.size(), 2 * (4 + 44) + 2 * 4 + g.elementCount() * 5 * 4);
    const auto back = unarchive(bytes);
    ASSERT_TRUE(back.has_value());
    EXPECT_EQ(*back, g);
    EXPECT_EQ(back->blendingMode(), CTGradient::Chromatic);

    // The caller's stream setting survives.
    QByteArray more;
    QDataStream out(&more, QIODevice::WriteOnly);
    out.setFloatingPointPrecision(QDataStream::DoublePrecision);
    g.encodeWithCoder(out);
    EXPECT_EQ(out.floatingPointPrecision(), QDataStream::DoublePrecision);
}

TEST(CTGradient, DamagedArchivesDecodeToNothing)
{
    const QByteArray bytes = archive(CTGradient::hydrogenSpectrumGradient());
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
    const std::pair<qint32, qint32> bad[] = {
        {3, 0}, {-1, 0}, {0, -4}, {0, std::numeric_limits<qint32>::max()}};
    for (const auto &[mode, count] : bad)
        EXPECT_FALSE(unarchive(forged(key, mode, count)).has_value()) << mode << " " << count;
    EXPECT_TRUE(unarchive(forged(key, 2, 0)).has_value());

    // Stops full of NaN decode and evaluate without harm.
    QByteArray nanStops = forged(key, 1, 2);
    QDataStream out(&nanStops, QIODevice::Append);
    out.setFloatingPointPrecision(QDataStream::SinglePrecision);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (int i = 0; i < 10; ++i)
        out << (i == 3 ? 0.5f : nan);
    const auto odd = unarchive(nanStops);
    ASSERT_TRUE(odd.has_value());
    EXPECT_TRUE(odd->colorAtPosition(0.5f).isValid());
    EXPECT_TRUE(odd->gradientWithBlendingMode(CTGradient::Linear).colorAtPosition(0.2f).isValid());
}

TEST(CTGradient, Drawing)
{
    QImage image(101, 101, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    const CTGradient g = CTGradient::gradientWithBeginningColor(Qt::black, Qt::white);
    {
        QPainter painter(&image);
        // Angle 0 runs left to right; 90 runs bottom to top on screen.
        g.fillRect(&painter, QRectF(0, 0, 101, 50), 0);
        g.fillRect(&painter, QRectF(0, 50, 101, 51), 90);
    }
    EXPECT_LT(qGray(image.pixel(0, 10)), 10);
    EXPECT_GT(qGray(image.pixel(100, 10)), 245);
    EXPECT_NEAR(qGray(image.pixel(50, 10)), 128, 6);
    EXPECT_GT(qGray(image.pixel(50, 50)), 245);
    EXPECT_LT(qGray(image.pixel(50, 100)), 10);

    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        g.radialFillRect(&painter, QRectF(0, 0, 101, 101));
    }
    EXPECT_LT(qGray(image.pixel(50, 50)), 10);
    // Half way out to each edge.
    EXPECT_NEAR(qGray(image.pixel(25, 50)), 128, 8);
    EXPECT_NEAR(qGray(image.pixel(50, 25)), 128, 8);
    EXPECT_GT(qGray(image.pixel(0, 0)), 245);
    EXPECT_GT(qGray(image.pixel(0, 50)), 235);

    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        CTGradient::rainbowGradient().drawSwatchInRect(&painter, QRectF(0, 0, 101, 101));
        g.fillRect(&painter, QRectF(), 0); // nothing to fill
        g.fillRect(&painter, QRectF(0, 0, 10, 10), std::nanf(""));
    }
    EXPECT_EQ(qAlpha(image.pixel(50, 50)), 255);
    g.fillRect(nullptr, QRectF(0, 0, 10, 10), 0);
    g.radialFillRect(nullptr, QRectF(0, 0, 10, 10));
}

} // namespace

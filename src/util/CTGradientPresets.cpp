// SPDX-License-Identifier: GPL-3.0-or-later
// The ready-made gradients of CTGradient: control faces, bars, source lists and spectra.
#include "util/CTGradient.h"

#include <initializer_list>

namespace {

struct Stop
{
    float red, green, blue, position;
};

CTGradient fromStops(std::initializer_list<Stop> stops)
{
    CTGradient gradient;
    for (const Stop &s : stops)
        gradient = gradient.addColorStop(QColor::fromRgbF(s.red, s.green, s.blue), s.position);
    return gradient;
}

CTGradient grey(float from, float to)
{
    return fromStops({{from, from, from, 0}, {to, to, to, 1}});
}

} // namespace

// Glossy faces: two halves with a sharp step in the middle (two stops at 0.5).
CTGradient CTGradient::aquaSelectedGradient()
{
    return fromStops({{0.62f, 0.81f, 0.98f, 0.0f},
                      {0.41f, 0.64f, 0.93f, 0.5f},
                      {0.30f, 0.55f, 0.91f, 0.5f},
                      {0.52f, 0.76f, 0.98f, 1.0f}});
}

CTGradient CTGradient::aquaNormalGradient()
{
    return fromStops({{0.96f, 0.96f, 0.96f, 0.0f},
                      {0.87f, 0.87f, 0.87f, 0.5f},
                      {0.81f, 0.81f, 0.81f, 0.5f},
                      {0.93f, 0.93f, 0.93f, 1.0f}});
}

CTGradient CTGradient::aquaPressedGradient()
{
    return fromStops({{0.81f, 0.81f, 0.81f, 0.0f},
                      {0.69f, 0.69f, 0.69f, 0.5f},
                      {0.62f, 0.62f, 0.62f, 0.5f},
                      {0.77f, 0.77f, 0.77f, 1.0f}});
}

// Toolbar and window-bar greys, lighter at the top (position 1).
CTGradient CTGradient::unifiedSelectedGradient()
{
    return grey(0.85f, 0.95f);
}

CTGradient CTGradient::unifiedNormalGradient()
{
    return grey(0.75f, 0.90f);
}

CTGradient CTGradient::unifiedPressedGradient()
{
    return grey(0.60f, 0.76f);
}

CTGradient CTGradient::unifiedDarkGradient()
{
    return grey(0.68f, 0.83f);
}

CTGradient CTGradient::sourceListSelectedGradient()
{
    return fromStops({{0.06f, 0.37f, 0.85f, 0.0f}, {0.30f, 0.60f, 0.92f, 1.0f}});
}

CTGradient CTGradient::sourceListUnselectedGradient()
{
    return fromStops({{0.43f, 0.50f, 0.60f, 0.0f}, {0.60f, 0.65f, 0.75f, 1.0f}});
}

// Red round the colour circle to violet.
CTGradient CTGradient::rainbowGradient()
{
    return fromStops({{1.0f, 0.0f, 0.0f, 0.0f}, {0.55f, 0.0f, 1.0f, 1.0f}})
        .gradientWithBlendingMode(Chromatic);
}

// The visible Balmer lines of hydrogen on black, positions linear in wavelength over
// 400-700 nm: H-delta 410.2 nm, H-gamma 434.0 nm, H-beta 486.1 nm, H-alpha 656.3 nm.
CTGradient CTGradient::hydrogenSpectrumGradient()
{
    struct Line
    {
        float nanometres, red, green, blue;
    };
    const Line lines[] = {{410.2f, 0.47f, 0.0f, 0.60f},
                          {434.0f, 0.30f, 0.0f, 1.0f},
                          {486.1f, 0.0f, 0.80f, 1.0f},
                          {656.3f, 1.0f, 0.0f, 0.0f}};
    constexpr float kHalfWidth = 0.008f;
    CTGradient gradient = CTGradient().addColorStop(Qt::black, 0);
    for (const Line &line : lines) {
        const float at = (line.nanometres - 400.0f) / 300.0f;
        gradient = gradient.addColorStop(Qt::black, at - kHalfWidth)
                       .addColorStop(QColor::fromRgbF(line.red, line.green, line.blue), at)
                       .addColorStop(Qt::black, at + kHalfWidth);
    }
    return gradient.addColorStop(Qt::black, 1);
}

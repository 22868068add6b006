// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/simulated/SimNoise.h"

#include <cmath>

quint64 SimNoise::mix(quint64 x)
{
    x += 0x9e3779b97f4a7c15ull;
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ull;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebull;
    return x ^ (x >> 31);
}

double SimNoise::knot(quint64 seed, qint64 index)
{
    const quint64 h = mix(seed ^ mix(quint64(index)));
    // 53 random bits to a double in [0, 1], then to [-1, 1].
    return double(h >> 11) * (1.0 / 9007199254740992.0) * 2.0 - 1.0;
}

double SimNoise::smooth(quint64 seed, double x)
{
    const double base = std::floor(x);
    const double t = x - base;
    const qint64 i = qint64(base);
    const double p0 = knot(seed, i - 1);
    const double p1 = knot(seed, i);
    const double p2 = knot(seed, i + 1);
    const double p3 = knot(seed, i + 2);
    return 0.5 * (2.0 * p1 + (p2 - p0) * t + (2.0 * p0 - 5.0 * p1 + 4.0 * p2 - p3) * t * t +
                  (3.0 * p1 - p0 - 3.0 * p2 + p3) * t * t * t);
}

int SimNoise::jitter(quint64 seed, qint64 index, int amplitude)
{
    if (amplitude <= 0)
        return 0;
    const quint64 span = quint64(2 * amplitude + 1);
    return int(mix(seed ^ mix(quint64(index))) % span) - amplitude;
}

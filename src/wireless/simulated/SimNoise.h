// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

// Randomness that is a pure function of a seed and a place on the time axis. The world asks
// it for "the fading of this link at second 123.4" rather than drawing numbers in call order,
// so the simulated radio answers the same whenever and however often it is asked, and a test
// that sets the clock gets the same readings as a live run did at that moment.
class SimNoise
{
public:
    // A well-mixed 64-bit hash (the splitmix64 finaliser).
    static quint64 mix(quint64 x);
    // A uniform value in [-1, 1] for knot `index` of the sequence `seed`.
    static double knot(quint64 seed, qint64 index);
    // A smooth curve through the knots at the whole numbers (Catmull-Rom), so its slope is
    // bounded; values stay within about [-1.25, 1.25].
    static double smooth(quint64 seed, double x);
    // A whole number in [-amplitude, amplitude], fixed for each index.
    static int jitter(quint64 seed, qint64 index, int amplitude);
};

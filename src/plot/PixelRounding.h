// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>

// floor() and ceil() of pixel coordinates to int without a call into libm: the rasters
// round for every piece of every line and every row of every outline. Values are clamped
// first, so that garbage coordinates cannot overflow the integer arithmetic; a million
// pixels off a layer is as good as any farther.
namespace PixelRounding {

inline constexpr double kFar = 1e6;

inline int floorInt(double v)
{
    const int i = int(std::clamp(v, -kFar, kFar));
    return i - (v < double(i) ? 1 : 0);
}

inline int ceilInt(double v)
{
    const int i = int(std::clamp(v, -kFar, kFar));
    return i + (v > double(i) ? 1 : 0);
}

} // namespace PixelRounding

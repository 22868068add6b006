// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Clock.h"

namespace {
const Clock systemClock;
const Clock *installed = nullptr;
} // namespace

const Clock &Clock::instance()
{
    return installed ? *installed : systemClock;
}

void Clock::setInstance(const Clock *clock)
{
    installed = clock;
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/RandomSource.h"

namespace {
RandomSource systemSource;
RandomSource *installed = nullptr;
} // namespace

RandomSource &RandomSource::instance()
{
    return installed ? *installed : systemSource;
}

void RandomSource::setInstance(RandomSource *source)
{
    installed = source;
}

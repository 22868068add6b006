// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/CW8021XProfile.h"

#include "wireless/WirelessBackend.h"

QList<CW8021XProfileRef> CW8021XProfile::allUser8021XProfiles()
{
    auto backend = WirelessBackend::current();
    return backend ? backend->allUser8021XProfiles() : QList<CW8021XProfileRef>{};
}

CW8021XProfileRef CW8021XProfile::profile()
{
    return std::make_shared<CW8021XProfile>();
}

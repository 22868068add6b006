// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWChannel.h"

#include <QtGlobal>

#include <optional>

// The interface's own channel as nl80211 describes it (frequency and enum
// nl80211_chan_width), in the boundary's terms.
class LinuxChannelMap
{
public:
    // A CWChannelWidth value for an enum nl80211_chan_width.
    static int widthForNl80211(quint32 chanWidth);
    // None when the interface is on no channel.
    static std::optional<CWChannel> channel(quint32 frequency, std::optional<quint32> chanWidth);
};

// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/linux/LinuxChannelMap.h"

#include "wireless/CWTypes.h"
#include "wireless/ie/FrequencyPlan.h"

#include <linux/nl80211.h>

int LinuxChannelMap::widthForNl80211(quint32 chanWidth)
{
    switch (chanWidth) {
    case NL80211_CHAN_WIDTH_20_NOHT:
    case NL80211_CHAN_WIDTH_20:
        return kCWChannelWidth20MHz;
    case NL80211_CHAN_WIDTH_40:
        return kCWChannelWidth40MHz;
    case NL80211_CHAN_WIDTH_80:
        return kCWChannelWidth80MHz;
    case NL80211_CHAN_WIDTH_80P80: // two 80 MHz segments: as much spectrum as 160 MHz
    case NL80211_CHAN_WIDTH_160:
        return kCWChannelWidth160MHz;
    default:
        return kCWChannelWidthUnknown;
    }
}

std::optional<CWChannel> LinuxChannelMap::channel(quint32 frequency,
                                                  std::optional<quint32> chanWidth)
{
    const int number = FrequencyPlan::channelForFrequency(int(frequency));
    if (frequency == 0 || number == 0)
        return std::nullopt;
    return CWChannel(number, FrequencyPlan::bandForFrequency(int(frequency)),
                     chanWidth ? widthForNl80211(*chanWidth) : kCWChannelWidth20MHz);
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/CWOperatingChannel.h"

#include "wireless/ie/FrequencyPlan.h"

int CWOperatingChannel::primaryMHz() const
{
    return FrequencyPlan::frequencyForChannel(primaryChannel, band);
}

bool CWOperatingChannel::coversPrimary() const
{
    const int primary = primaryMHz();
    if (!isKnown() || primary == 0)
        return false;
    for (int i = 0; i < segmentCount(); ++i) {
        if (primary - 10 >= lowMHz(i) && primary + 10 <= highMHz(i))
            return true;
    }
    return false;
}

bool CWOperatingChannel::overlaps(int low, int high) const
{
    if (!isKnown())
        return false;
    for (int i = 0; i < segmentCount(); ++i) {
        if (low < highMHz(i) && lowMHz(i) < high)
            return true;
    }
    return false;
}

int CWOperatingChannel::centerChannel(int segment) const
{
    const int mhz = centerMHz[std::size_t(segment)];
    // The 2.4 GHz centre of a 40 MHz channel is itself a channel (3 for 1+5), so Annex E
    // numbering works for every centre.
    return FrequencyPlan::bandForFrequency(mhz) == band ? FrequencyPlan::channelForFrequency(mhz)
                                                        : 0;
}

QString CWOperatingChannel::bandText(int band)
{
    switch (band) {
    case kCWChannelBand2GHz:
        return QStringLiteral("2.4 GHz");
    case kCWChannelBand5GHz:
        return QStringLiteral("5 GHz");
    case kCWChannelBand6GHz:
        return QStringLiteral("6 GHz");
    default:
        return {};
    }
}

QString CWOperatingChannel::widthText() const
{
    if (!isKnown())
        return {};
    if (isEightyPlusEighty())
        return QStringLiteral("%1+%1 MHz").arg(widthMHz);
    return QStringLiteral("%1 MHz").arg(widthMHz);
}

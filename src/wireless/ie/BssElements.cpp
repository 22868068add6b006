// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/ie/BssElements.h"

namespace {
// VHT Operation channel width field (802.11-2020 9.4.2.158, Table 9-274). Width 1 with a
// second segment is how 160 and 80+80 MHz are announced since 802.11-2016; the old values
// 2 and 3 are deprecated but still sent.
OperatingWidth widthOf(std::uint8_t field, std::uint8_t seg0, std::uint8_t seg1)
{
    switch (field) {
    case 1: {
        if (seg1 == 0)
            return OperatingWidth::W80;
        const int diff = seg1 > seg0 ? seg1 - seg0 : seg0 - seg1;
        if (diff == 8)
            return OperatingWidth::W160;
        if (diff > 16)
            return OperatingWidth::W80p80;
        return OperatingWidth::W80;
    }
    case 2:
        return OperatingWidth::W160;
    case 3:
        return OperatingWidth::W80p80;
    default:
        return OperatingWidth::W20or40;
    }
}
} // namespace

OperatingWidth VhtOperation::width() const
{
    return widthOf(channelWidth, centerSegment0, centerSegment1);
}

OperatingWidth HeOperation::SixGHzInfo::width() const
{
    // 6 GHz Operation Information, Control field bits 0-1 (802.11ax-2021 9.4.2.249).
    switch (control & 0x03) {
    case 2:
        return OperatingWidth::W80;
    case 3:
        return centerSegment1 != 0 &&
                       (centerSegment1 > centerSegment0 ? centerSegment1 - centerSegment0
                                                        : centerSegment0 - centerSegment1) > 16
                   ? OperatingWidth::W80p80
                   : OperatingWidth::W160;
    default:
        return OperatingWidth::W20or40;
    }
}

int EhtOperation::Info::widthMHz() const
{
    switch (control & 0x07) {
    case 0:
        return 20;
    case 1:
        return 40;
    case 2:
        return 80;
    case 3:
        return 160;
    case 4:
        return 320;
    default:
        return 0;
    }
}

bool BssElements::ssidHidden() const
{
    if (!ssid || ssid->isEmpty())
        return true;
    for (char c : *ssid) {
        if (c != '\0')
            return false;
    }
    return true;
}

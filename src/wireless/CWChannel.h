// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWTypes.h"

#include <QtGlobal>

// The channel an interface uses or a network was heard on. A small value type.
class CWChannel
{
public:
    CWChannel() = default;
    CWChannel(qint64 number, int band, int width)
        : m_number(number), m_band(band), m_width(width)
    {
    }

    qint64 channelNumber() const { return m_number; }
    int channelBand() const { return m_band; }
    int channelWidth() const { return m_width; }

    bool operator==(const CWChannel &) const = default;

private:
    qint64 m_number = 0;
    int m_band = kCWChannelBandUnknown;
    int m_width = kCWChannelWidthUnknown;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/capture/ManagementFrame.h"

std::optional<ManagementFrame> ManagementFrame::parse(const std::uint8_t *data, std::size_t length)
{
    constexpr std::size_t kHeader = 24; // frame control .. sequence control
    constexpr std::size_t kFixed = 12;  // timestamp, beacon interval, capability
    if (!data || length < kHeader + kFixed)
        return std::nullopt;
    const std::uint8_t fc0 = data[0];
    const std::uint8_t fc1 = data[1];
    const int version = fc0 & 0x03;
    const int type = (fc0 >> 2) & 0x03;
    const int subtype = fc0 >> 4;
    if (version != 0 || type != 0 || (subtype != kBeacon && subtype != kProbeResponse))
        return std::nullopt;
    if (fc1 & 0x40)
        return std::nullopt; // a protected body cannot be read
    // In a management frame the Order bit announces a 4-byte HT Control field (9.2.4.1.10).
    const std::size_t header = kHeader + ((fc1 & 0x80) ? 4 : 0);
    if (length < header + kFixed)
        return std::nullopt;

    ManagementFrame f;
    f.subtype = subtype;
    f.bssid = QByteArray(reinterpret_cast<const char *>(data + 16), 6);
    const std::uint8_t *fixed = data + header;
    for (int i = 7; i >= 0; --i)
        f.timestamp = (f.timestamp << 8) | fixed[i];
    f.beaconInterval = static_cast<std::uint16_t>(fixed[8] | (fixed[9] << 8));
    f.capability = static_cast<std::uint16_t>(fixed[10] | (fixed[11] << 8));
    f.elements = fixed + kFixed;
    f.elementsLength = length - header - kFixed;
    return f;
}

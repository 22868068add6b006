// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <optional>

// The parts of a beacon or probe response before its elements (802.11-2020 9.3.3.3, 9.3.3.11).
struct ManagementFrame
{
    enum Subtype { kProbeResponse = 5, kBeacon = 8 };

    int subtype = kBeacon;
    QByteArray bssid; // 6 bytes (Address 3)
    std::uint64_t timestamp = 0;
    std::uint16_t beaconInterval = 0;
    std::uint16_t capability = 0;
    const std::uint8_t *elements = nullptr; // inside the buffer given to parse()
    std::size_t elementsLength = 0;

    // None for anything but a complete beacon or probe response header.
    static std::optional<ManagementFrame> parse(const std::uint8_t *data, std::size_t length);
};

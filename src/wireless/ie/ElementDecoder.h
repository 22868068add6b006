// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/ie/BssElements.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>

// Decodes the information elements of a beacon or probe response (the bytes after the fixed
// fields, or what nl80211 reports as a BSS's elements). Pure: no I/O, no allocation beyond
// the result. Any byte sequence is safe to pass.
class ElementDecoder
{
public:
    static BssElements decode(const std::uint8_t *data, std::size_t length);
    static BssElements decode(const QByteArray &elements)
    {
        return decode(reinterpret_cast<const std::uint8_t *>(elements.constData()),
                      static_cast<std::size_t>(elements.size()));
    }

    // The name of an element for logs ("RSN", "HT Operation"), or null for one that is not
    // decoded here. `extension` is the Element ID Extension for ID 255, else ignored.
    static const char *elementName(int id, int extension = -1);
};

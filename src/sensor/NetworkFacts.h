// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class NetworkObject;
struct CWOperatingChannel;

// A network's texts as the sensor's outputs name them. Unlike the table's texts, none is
// left empty: an open network says "open", a code the texts do not know says "unknown",
// and 6 GHz, 80 and 160 MHz are named.
struct NetworkFacts
{
    QString ssid;     // "" for a hidden network
    QString security; // "open", the security text, or "unknown"
    QString band;     // "2.4GHz", "5GHz", "6GHz" or "unknown"
    QString width;    // "20MHz", "40MHz", "80MHz", "160MHz" or "unknown"
    QString ibss;     // "yes" or "no"
    // Where the network really sits, from its operation elements (or the scenario): the width
    // of each segment ("20MHz" to "320MHz", "80+80MHz") and the centre frequency of each
    // segment in MHz ("5210", "5210+5775"); "unknown" when the scan result does not tell.
    QString realWidth;
    QString centerMHz;

    static NetworkFacts of(const NetworkObject &record);
    static QString bandName(qint64 bandCode);
    static QString widthName(qint64 widthCode);
    static QString realWidthName(const CWOperatingChannel &channel);
    static QString centerName(const CWOperatingChannel &channel);

    // "aa:bb:cc:dd:ee:ff" in either case.
    static bool isBssid(const QString &text);
};

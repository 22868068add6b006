// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWChannel.h"
#include "wireless/CWNetwork.h"
#include "wireless/ie/BssElements.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

// What was heard of one BSS besides its elements: the frame's fixed fields and the radio's
// measurements (from nl80211's BSS attributes or a capture's link-layer header).
struct BssObservation
{
    QByteArray bssid;                 // 6 bytes
    std::uint16_t capability = 0;     // Capability Information field
    std::uint16_t beaconInterval = 0; // time units
    int frequencyMHz = 0;             // where it was heard; 0 when unknown
    qint64 signalDbm = 0;
    qint64 noiseDbm = 0;
};

// Turns a decoded BSS into the answers the wireless boundary gives about a network.
class BssNetworkMapper
{
public:
    // Capability Information bits (802.11-2020 9.4.1.4).
    static constexpr std::uint16_t kCapabilityESS = 0x0001;
    static constexpr std::uint16_t kCapabilityIBSS = 0x0002;
    static constexpr std::uint16_t kCapabilityPrivacy = 0x0010;

    static CWNetwork::Data networkData(const BssElements &elements,
                                       const BssObservation &observation);

    // The channel a network announces (DS Parameter Set, else HT Operation, else the 6 GHz
    // part of HE Operation); the heard frequency only fills in what the frame leaves open.
    static CWChannel channel(const BssElements &elements, int frequencyMHz);
    static int channelWidth(const BssElements &elements);
    // The real width and segment centres, from the widest operation element that agrees
    // with the primary channel (EHT, the 6 GHz part of HE, VHT or HE's VHT part, HT), else
    // 20 MHz around the primary channel. Unknown when the primary channel is.
    static CWOperatingChannel operatingChannel(const BssElements &elements, int frequencyMHz);
    // Bit n set: supportsSecurity(n) (CWSecurity values).
    static unsigned securities(const BssElements &elements, std::uint16_t capability);
    // The CWSecurityMode matching the text the securities give (mixed modes as WPA2).
    static int securityMode(unsigned securities);
    // Bit n set: supportsPHYMode(n) (CWPHYMode values), given the network's band.
    static unsigned phyModes(const BssElements &elements, int band);
    // "aa:bb:cc:dd:ee:ff", lower case; empty unless exactly 6 bytes.
    static QString bssidText(const QByteArray &bssid);
    // A country element's code as two ASCII letters or digits, else empty.
    static QString countryCode(const BssElements &elements);
};

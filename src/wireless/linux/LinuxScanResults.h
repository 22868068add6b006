// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWNetwork.h"
#include "wireless/linux/Nl80211Records.h"

#include <QHash>
#include <QList>

#include <functional>
#include <optional>

// Turns the kernel's cached BSS list into scan results: drops stale entries, takes the
// signal in dBm, matches the noise of the BSS's channel and decodes its elements.
class LinuxScanResults
{
public:
    // The kernel keeps a BSS for a while after it was last heard; older ones are gone.
    static constexpr quint32 kMaxAgeMs = 30000;

    using ProfileLookup = std::function<CWWirelessProfileRef(const QByteArray &ssid)>;

    static QList<CWNetworkRef> networks(const QList<Nl80211Bss> &bsses,
                                        const QHash<quint32, int> &noiseByFrequency,
                                        const ProfileLookup &profileFor = {});
    static CWNetwork::Data networkData(const Nl80211Bss &bss, int noiseDbm);

    // dBm from SIGNAL_MBM, else SIGNAL_UNSPEC's 0..100 mapped onto -100..-50 dBm (the
    // span in which such drivers' percentages move), else none.
    static std::optional<int> signalDbm(const Nl80211Bss &bss);
    // Survey noise per frequency, for the channels where the driver measured it.
    static QHash<quint32, int> noiseByFrequency(const QList<Nl80211Survey> &survey);
    // When a driver reports no noise: the thermal noise of a 20 MHz channel (-174 dBm/Hz
    // + 73 dB = -101 dBm) plus a typical receiver noise figure, 6 dB at 2.4 GHz and 9 dB
    // at 5 and 6 GHz: -95 and -92 dBm.
    static int noiseFloor(quint32 frequency);
    static int noiseFor(quint32 frequency, const QHash<quint32, int> &noiseByFrequency);
};

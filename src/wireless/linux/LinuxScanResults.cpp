// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/linux/LinuxScanResults.h"

#include "wireless/CWTypes.h"
#include "wireless/ie/BssNetworkMapper.h"
#include "wireless/ie/ElementDecoder.h"
#include "wireless/ie/FrequencyPlan.h"

std::optional<int> LinuxScanResults::signalDbm(const Nl80211Bss &bss)
{
    if (bss.signalMbm)
        return *bss.signalMbm / 100;
    if (bss.signalUnspec)
        return -100 + qBound(0, *bss.signalUnspec, 100) / 2;
    return std::nullopt;
}

QHash<quint32, int> LinuxScanResults::noiseByFrequency(const QList<Nl80211Survey> &survey)
{
    QHash<quint32, int> out;
    for (const Nl80211Survey &entry : survey)
        if (entry.noiseDbm)
            out.insert(entry.frequency, *entry.noiseDbm);
    return out;
}

int LinuxScanResults::noiseFloor(quint32 frequency)
{
    return FrequencyPlan::bandForFrequency(int(frequency)) == kCWChannelBand2GHz ? -95 : -92;
}

int LinuxScanResults::noiseFor(quint32 frequency, const QHash<quint32, int> &noiseByFrequency)
{
    const auto it = noiseByFrequency.constFind(frequency);
    return it != noiseByFrequency.constEnd() ? *it : noiseFloor(frequency);
}

CWNetwork::Data LinuxScanResults::networkData(const Nl80211Bss &bss, int noiseDbm)
{
    BssObservation observation;
    observation.bssid = bss.bssid;
    observation.capability = bss.capability;
    observation.beaconInterval = bss.beaconInterval;
    observation.frequencyMHz = int(bss.frequency);
    observation.signalDbm = signalDbm(bss).value_or(0);
    observation.noiseDbm = noiseDbm;
    return BssNetworkMapper::networkData(ElementDecoder::decode(bss.ies), observation);
}

QList<CWNetworkRef> LinuxScanResults::networks(const QList<Nl80211Bss> &bsses,
                                               const QHash<quint32, int> &noiseByFrequency,
                                               const ProfileLookup &profileFor)
{
    QList<CWNetworkRef> out;
    out.reserve(bsses.size());
    for (const Nl80211Bss &bss : bsses) {
        if (bss.seenMsAgo > kMaxAgeMs || bss.bssid.size() != 6)
            continue;
        CWNetwork::Data data = networkData(bss, noiseFor(bss.frequency, noiseByFrequency));
        if (profileFor && data.ssidPresent)
            data.wirelessProfile = profileFor(data.ssidData);
        out.append(CWNetwork::create(std::move(data)));
    }
    return out;
}

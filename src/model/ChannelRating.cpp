// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/ChannelRating.h"

#include "wireless/CWNetwork.h"
#include "wireless/ie/FrequencyPlan.h"

#include <QDateTime>
#include <QSet>

#include <algorithm>
#include <cmath>

namespace {
// The 20 MHz channels of a band, in frequency order. 2.4 GHz channel 14 is left out: it is
// Japan's old 802.11b channel, nobody's choice for a new network.
QList<int> twentyMHzChannels(int band)
{
    QList<int> out;
    const int last = band == kCWChannelBand2GHz ? 13 : band == kCWChannelBand5GHz ? 177 : 233;
    for (int c = 1; c <= last; ++c) {
        if (FrequencyPlan::isTwentyMHzChannel(c, band))
            out << c;
    }
    return out;
}

bool speaksSixGHz(const QList<qint64> &supported)
{
    return std::any_of(supported.begin(), supported.end(), [](qint64 c) {
        return c > 14 && c <= 233 &&
               FrequencyPlan::isTwentyMHzChannel(int(c), kCWChannelBand6GHz) &&
               !FrequencyPlan::isTwentyMHzChannel(int(c), kCWChannelBand5GHz);
    });
}

// A 2.4 GHz 20 MHz signal spreads over 22 MHz (the 802.11b spectral mask, 802.11-2020
// 16.3.7.3, and the shoulders of an OFDM one): that is why channels 5 apart (1, 6, 11) stay
// clear of each other while channels 4 apart still touch.
int padMHz(int band, int widthMHz)
{
    return band == kCWChannelBand2GHz && widthMHz == 20 ? 1 : 0;
}

double overlapShare(const CWOperatingChannel &n, int low, int high)
{
    const int pad = padMHz(n.band, n.widthMHz);
    int overlap = 0;
    for (int i = 0; i < n.segmentCount(); ++i)
        overlap +=
            std::max(0, std::min(high, n.highMHz(i) + pad) - std::max(low, n.lowMHz(i) - pad));
    return double(overlap) / double(n.totalWidthMHz() + 2 * pad);
}
} // namespace

std::optional<double> ChannelRating::Candidate::interferenceDbm() const
{
    if (interferenceMw <= 0.0)
        return std::nullopt;
    return 10.0 * std::log10(interferenceMw);
}

QString ChannelRating::Candidate::rangeText() const
{
    if (firstChannel == lastChannel)
        return QString::number(firstChannel);
    return QStringLiteral("%1-%2").arg(firstChannel).arg(lastChannel);
}

QList<int> ChannelRating::widthsFor(int band)
{
    switch (band) {
    case kCWChannelBand2GHz:
        return {20, 40};
    case kCWChannelBand5GHz:
        return {20, 40, 80, 160};
    case kCWChannelBand6GHz:
        return {20, 40, 80, 160, 320};
    default:
        return {};
    }
}

QList<NetworkObjectRef> ChannelRating::recentNetworks(const NetworkList &networks)
{
    // "Lately" is measured against the newest scan rather than the clock, so a paused or
    // replayed run rates what it last heard.
    QDateTime newest;
    for (const NetworkObjectRef &n : networks) {
        if (n->cwNetwork() && (!newest.isValid() || n->lastUpdated() > newest))
            newest = n->lastUpdated();
    }
    QList<NetworkObjectRef> out;
    for (const NetworkObjectRef &n : networks) {
        if (n->cwNetwork() && n->lastUpdated().secsTo(newest) <= kRecentSeconds)
            out.append(n);
    }
    return out;
}

QList<ChannelRating::Neighbour> ChannelRating::neighboursOf(const NetworkList &networks)
{
    QList<Neighbour> out;
    for (const NetworkObjectRef &n : recentNetworks(networks)) {
        const CWNetworkRef net = n->cwNetwork();
        if (net->operatingChannel().isKnown())
            out.append({net->operatingChannel(), double(net->rssiValue())});
    }
    return out;
}

bool ChannelRating::isSupported(int channel, int band, const QList<qint64> &supported)
{
    if (supported.isEmpty())
        return true;
    if (band == kCWChannelBand6GHz && !speaksSixGHz(supported))
        return false;
    return supported.contains(channel);
}

QList<ChannelRating::Candidate> ChannelRating::candidates(int band, int widthMHz,
                                                          const QList<Neighbour> &neighbours,
                                                          const QList<qint64> &supported)
{
    QList<Candidate> out;
    QSet<int> seen;
    for (int channel : twentyMHzChannels(band)) {
        const int center = FrequencyPlan::blockCenter(channel, band, widthMHz);
        // Each block once; on 2.4 GHz every pair of channels 4 apart is a 40 MHz block.
        if (center == 0 || seen.contains(center))
            continue;
        seen.insert(center);
        Candidate c;
        c.band = band;
        c.widthMHz = widthMHz;
        const int centerMHz = FrequencyPlan::frequencyForChannel(center, band);
        c.lowMHz = centerMHz - widthMHz / 2 - padMHz(band, widthMHz);
        c.highMHz = centerMHz + widthMHz / 2 + padMHz(band, widthMHz);
        const int span = (widthMHz / 20 - 1) * 2; // channel numbers from centre to edge channel
        c.firstChannel = center - span;
        c.lastChannel = center + span;
        for (int k = c.firstChannel; k <= c.lastChannel; k += 4)
            c.supported = c.supported && isSupported(k, band, supported);
        c.preferred = band == kCWChannelBand2GHz && widthMHz == 20 &&
                      (channel == 1 || channel == 6 || channel == 11);
        for (const Neighbour &n : neighbours) {
            if (n.channel.band != band || !n.channel.isKnown())
                continue;
            const double share = overlapShare(n.channel, c.lowMHz, c.highMHz);
            if (share > 0.0)
                c.interferenceMw += std::pow(10.0, n.signalDbm / 10.0) * share;
        }
        out.append(c);
    }
    std::sort(out.begin(), out.end(),
              [](const Candidate &a, const Candidate &b) { return a.lowMHz < b.lowMHz; });
    return out;
}

std::optional<ChannelRating::Candidate> ChannelRating::best(const QList<Candidate> &candidates)
{
    const bool anyPreferred =
        std::any_of(candidates.begin(), candidates.end(),
                    [](const Candidate &c) { return c.supported && c.preferred; });
    std::optional<Candidate> pick;
    for (const Candidate &c : candidates) {
        if (!c.supported || (anyPreferred && !c.preferred))
            continue;
        if (!pick || c.interferenceMw < pick->interferenceMw)
            pick = c;
    }
    return pick;
}

QString ChannelRating::recommendation(int band, const QList<Neighbour> &neighbours,
                                      const QList<qint64> &supported)
{
    const QString bandText = CWOperatingChannel::bandText(band);
    const std::optional<Candidate> channel = best(candidates(band, 20, neighbours, supported));
    if (!channel)
        return QStringLiteral("No %1 channel is supported by the interface").arg(bandText);
    QString text = QStringLiteral("Best %1 channel: %2").arg(bandText, channel->rangeText());
    // The width most new access points use in the band.
    const int wide = band == kCWChannelBand5GHz ? 80 : band == kCWChannelBand6GHz ? 160 : 0;
    if (wide) {
        if (const auto block = best(candidates(band, wide, neighbours, supported)))
            text += QStringLiteral("; best %1 MHz block on %2: %3")
                        .arg(wide)
                        .arg(bandText, block->rangeText());
    }
    return text;
}

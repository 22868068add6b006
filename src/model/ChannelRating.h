// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/NetworkList.h"
#include "wireless/CWOperatingChannel.h"

#include <QList>
#include <QString>

#include <optional>

// How crowded each channel of a band is for a network of a given width, and which one to
// pick. A candidate's score is the received power of the neighbours that falls into its span,
// in mW: each neighbour's power spread evenly over its own width, times the share of it that
// overlaps the candidate. Adding milliwatts makes one strong neighbour outweigh many faint ones,
// which is how interference adds up on the air.
class ChannelRating
{
public:
    struct Neighbour
    {
        CWOperatingChannel channel;
        double signalDbm = 0.0;
    };

    struct Candidate
    {
        int band = kCWChannelBandUnknown;
        int widthMHz = 20;
        int firstChannel = 0; // lowest and highest 20 MHz channel of the block
        int lastChannel = 0;
        int lowMHz = 0; // the spectrum a network there takes (22 MHz for 2.4 GHz 20 MHz)
        int highMHz = 0;
        double interferenceMw = 0.0;
        bool supported = true;  // every 20 MHz channel of it is on the interface's list
        bool preferred = false; // 2.4 GHz channels 1, 6 and 11, which do not overlap each other

        // The score in dBm, or none when nothing is heard there.
        std::optional<double> interferenceDbm() const;
        // "11" for a 20 MHz channel, "36-48" for a block.
        QString rangeText() const;
    };

    // A network counts while it was heard within this many seconds of the newest scan.
    static constexpr qint64 kRecentSeconds = 60;

    // The widths a band's channels come in: 2.4 GHz 20 and 40, 5 GHz up to 160, 6 GHz up to 320.
    static QList<int> widthsFor(int band);
    // The records heard within kRecentSeconds of the newest scan among them, in list order.
    static QList<NetworkObjectRef> recentNetworks(const NetworkList &networks);
    // The networks of `networks` heard lately, with their real channels and current signal.
    static QList<Neighbour> neighboursOf(const NetworkList &networks);
    // Every channel or block of `widthMHz` in `band`, in frequency order, with its score.
    // `supportedChannels` is the interface's list of bare channel numbers; empty means unknown
    // and allows everything. The list speaks for 6 GHz only when it holds a number that exists
    // there alone (the numbers of the bands overlap).
    static QList<Candidate> candidates(int band, int widthMHz, const QList<Neighbour> &neighbours,
                                       const QList<qint64> &supportedChannels);
    // The supported candidate with the lowest score; on 2.4 GHz one of 1, 6 and 11 when any is
    // supported. Ties go to the lower channel.
    static std::optional<Candidate> best(const QList<Candidate> &candidates);
    // The recommendation for a band in words: "Best 2.4 GHz channel: 11", and on 5 and 6 GHz
    // the best wide block too ("best 80 MHz block on 5 GHz: 36-48").
    static QString recommendation(int band, const QList<Neighbour> &neighbours,
                                  const QList<qint64> &supportedChannels);
    static bool isSupported(int channel, int band, const QList<qint64> &supportedChannels);
};

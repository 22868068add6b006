// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/ie/BssElements.h"
#include "wireless/ie/BssNetworkMapper.h"

#include <QString>

#include <memory>
#include <optional>

struct pcap;

// Reads the beacons and probe responses of a pcap or pcapng capture of 802.11 traffic
// (plain, radiotap, Prism, AVS or PPI), one decoded frame at a time.
class CaptureReader
{
public:
    struct Frame
    {
        qint64 timeUs = 0; // capture time stamp, microseconds since the epoch
        bool probeResponse = false;
        BssObservation observation; // signal and noise 0 when the header had none
        std::optional<int> signalDbm;
        std::optional<int> noiseDbm;
        BssElements elements;
    };

    ~CaptureReader();
    CaptureReader(const CaptureReader &) = delete;
    CaptureReader &operator=(const CaptureReader &) = delete;

    // None, with a reason in *errorText, when the file cannot be read as a capture or its link
    // type carries no 802.11 frames.
    static std::unique_ptr<CaptureReader> open(const QString &path, QString *errorText);

    // The next beacon or probe response; false at the end of the capture or when the rest of
    // the file is unreadable (errorText() then says why).
    bool next(Frame *frame);

    int linkType() const { return m_linkType; }
    QString errorText() const { return m_error; }
    qint64 packetsRead() const { return m_packets; }
    qint64 framesDecoded() const { return m_frames; }
    // Packets whose link-layer header was broken.
    qint64 badPackets() const { return m_bad; }
    // Frames whose elements were truncated or malformed (still served).
    qint64 damagedFrames() const { return m_damaged; }

private:
    CaptureReader(pcap *handle, int linkType) : m_handle(handle), m_linkType(linkType) {}

    pcap *m_handle = nullptr;
    int m_linkType = 0;
    QString m_error;
    qint64 m_packets = 0;
    qint64 m_frames = 0;
    qint64 m_bad = 0;
    qint64 m_damaged = 0;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/capture/CaptureReader.h"

#include "wireless/capture/LinkLayer.h"
#include "wireless/capture/ManagementFrame.h"
#include "wireless/ie/ElementDecoder.h"

#include <QFile>

#include <pcap/pcap.h>

#include <algorithm>

CaptureReader::~CaptureReader()
{
    if (m_handle)
        pcap_close(m_handle);
}

std::unique_ptr<CaptureReader> CaptureReader::open(const QString &path, QString *errorText)
{
    char errbuf[PCAP_ERRBUF_SIZE] = {};
    const QByteArray name = QFile::encodeName(path);
    pcap_t *handle = pcap_open_offline_with_tstamp_precision(name.constData(),
                                                             PCAP_TSTAMP_PRECISION_MICRO, errbuf);
    if (!handle) {
        if (errorText)
            *errorText = QStringLiteral("%1: not a readable capture (%2)")
                             .arg(path, QString::fromLocal8Bit(errbuf));
        return nullptr;
    }
    const int linkType = pcap_datalink(handle);
    if (!LinkLayer::isSupported(linkType)) {
        const char *linkName = pcap_datalink_val_to_name(linkType);
        if (errorText)
            *errorText = QStringLiteral("%1: the capture holds no 802.11 frames (link type %2)")
                             .arg(path, linkName ? QString::fromLatin1(linkName)
                                                 : QString::number(linkType));
        pcap_close(handle);
        return nullptr;
    }
    return std::unique_ptr<CaptureReader>(new CaptureReader(handle, linkType));
}

namespace {

// A time stamp is whatever the file says. Absurd ones (a damaged or hostile file) are held
// to about 73,000 years either side of 1970, where the replay's window arithmetic on
// microseconds cannot overflow, and microseconds past a whole second are cut to it.
qint64 timeStampUs(qint64 seconds, qint64 micros)
{
    constexpr qint64 kLimitSeconds = (qint64(1) << 61) / 1000000;
    return std::clamp(seconds, -kLimitSeconds, kLimitSeconds) * 1000000 +
           std::clamp<qint64>(micros, 0, 999999);
}

} // namespace

bool CaptureReader::next(Frame *frame)
{
    if (!m_handle)
        return false;
    for (;;) {
        pcap_pkthdr *header = nullptr;
        const u_char *data = nullptr;
        const int rc = pcap_next_ex(m_handle, &header, &data);
        if (rc == PCAP_ERROR_BREAK)
            return false;
        if (rc != 1) {
            // A truncated or corrupt file: keep what was served, say why it stopped.
            m_error = QString::fromLocal8Bit(pcap_geterr(m_handle));
            return false;
        }
        ++m_packets;
        const std::optional<LinkLayer::Frame> link =
            LinkLayer::strip(m_linkType, data, header->caplen);
        if (!link) {
            ++m_bad;
            continue;
        }
        const std::optional<ManagementFrame> mgmt =
            ManagementFrame::parse(link->data, link->length);
        if (!mgmt)
            continue;
        ++m_frames;
        frame->timeUs = timeStampUs(header->ts.tv_sec, header->ts.tv_usec);
        frame->probeResponse = mgmt->subtype == ManagementFrame::kProbeResponse;
        frame->observation = BssObservation{mgmt->bssid,
                                            mgmt->capability,
                                            mgmt->beaconInterval,
                                            link->frequencyMHz,
                                            link->signalDbm.value_or(0),
                                            link->noiseDbm.value_or(0)};
        frame->signalDbm = link->signalDbm;
        frame->noiseDbm = link->noiseDbm;
        frame->elements = ElementDecoder::decode(mgmt->elements, mgmt->elementsLength);
        if (!frame->elements.ok())
            ++m_damaged;
        return true;
    }
}

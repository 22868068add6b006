// SPDX-License-Identifier: GPL-3.0-or-later
#include "CaptureWriter.h"

#include <QFile>

#include <pcap/pcap.h>

CaptureWriter::CaptureWriter(const QString &path, int linkType)
{
    m_pcap = pcap_open_dead_with_tstamp_precision(linkType, 65535, PCAP_TSTAMP_PRECISION_MICRO);
    if (m_pcap)
        m_dumper = pcap_dump_open(m_pcap, QFile::encodeName(path).constData());
}

CaptureWriter::~CaptureWriter()
{
    close();
}

void CaptureWriter::write(qint64 timeUs, const QByteArray &packet)
{
    if (!m_dumper)
        return;
    pcap_pkthdr header{};
    header.ts.tv_sec = static_cast<time_t>(timeUs / 1000000);
    header.ts.tv_usec = static_cast<suseconds_t>(timeUs % 1000000);
    header.caplen = header.len = static_cast<bpf_u_int32>(packet.size());
    pcap_dump(reinterpret_cast<u_char *>(m_dumper), &header,
              reinterpret_cast<const u_char *>(packet.constData()));
}

void CaptureWriter::close()
{
    if (m_dumper)
        pcap_dump_close(m_dumper);
    if (m_pcap)
        pcap_close(m_pcap);
    m_dumper = nullptr;
    m_pcap = nullptr;
}

QByteArray CaptureWriter::beacon(const Beacon &b)
{
    QByteArray f;
    f.append(char(b.probeResponse ? 0x50 : 0x80)).append('\0').append(2, '\0');
    f.append(QByteArray::fromHex("ffffffffffff"));
    const QByteArray bssid = QByteArray::fromHex("020000000000") + char(b.bssid & 0xFF);
    const QByteArray address = bssid.left(5) + bssid.right(1);
    f.append(address).append(address).append(2, '\0');
    f.append(8, '\0');                                    // timestamp
    f.append(char(100)).append('\0');                     // beacon interval
    f.append(char(b.privacy ? 0x11 : 0x01)).append('\0'); // ESS, privacy
    f.append('\0').append(char(b.ssid.size())).append(b.ssid);
    f.append(QByteArray::fromHex("0108 82848b960c121824"));
    f.append(char(3)).append(char(1)).append(char(b.channel));
    if (b.rsnPsk)
        f.append(QByteArray::fromHex("30140100000fac040100000fac040100000fac020000"));
    f.append(b.extraElements);
    return f;
}

QByteArray CaptureWriter::radiotap(int frequencyMHz, std::optional<int> signalDbm)
{
    // Present: channel (bit 3) and, optionally, antenna signal (bit 5).
    QByteArray h = QByteArray::fromHex("0000");
    const int length = 8 + 4 + (signalDbm ? 1 : 0);
    h.append(char(length)).append('\0');
    h.append(char(signalDbm ? 0x28 : 0x08)).append(3, '\0');
    h.append(char(frequencyMHz & 0xFF)).append(char(frequencyMHz >> 8)).append(2, '\0');
    if (signalDbm)
        h.append(char(*signalDbm));
    return h;
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "CityCapture.h"

#include <QByteArray>
#include <QFile>
#include <QtEndian>

#include <pcap/pcap.h>

#include <array>

namespace {

constexpr std::array<int, 13> k24GHz{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13};
constexpr std::array<int, 12> k5GHz{36, 40, 44, 48, 52, 56, 60, 64, 100, 116, 149, 157};

void appendLe16(QByteArray &bytes, int value)
{
    bytes.append(char(value & 0xff)).append(char((value >> 8) & 0xff));
}

// The beacon of network `ap` heard for the `lap`-th time.
QByteArray beaconOf(int ap, int lap)
{
    const bool fiveGHz = ap % 3 == 2;
    const int channel =
        fiveGHz ? k5GHz[size_t(ap / 3) % k5GHz.size()] : k24GHz[size_t(ap / 3) % k24GHz.size()];
    const int frequency = fiveGHz ? 5000 + 5 * channel : 2407 + 5 * channel;
    const int signal = -35 - (ap * 7 + lap * 13) % 60;
    const int noise = fiveGHz ? -95 : -92 + (ap + lap) % 3;

    // Radiotap: channel (frequency and flags), antenna signal and noise in dBm.
    QByteArray p = QByteArray::fromHex("00000e0068000000");
    appendLe16(p, frequency);
    appendLe16(p, fiveGHz ? 0x0140 : 0x00a0);
    p.append(char(signal)).append(char(noise));

    // Beacon header: to everyone, from and about the network's own address.
    p.append(QByteArray::fromHex("80000000ffffffffffff"));
    QByteArray address = QByteArray::fromHex("020000000000");
    qToBigEndian(quint32(ap), address.data() + 2);
    p.append(address).append(address);
    appendLe16(p, (lap & 0xfff) << 4);

    // Fixed fields: time stamp, interval 100 TU, capabilities (ESS, privacy when locked).
    const int security = ap % 5; // 0 open, 1 WEP, 2..4 WPA2 personal
    p.append(8, '\0');
    appendLe16(p, 100);
    appendLe16(p, security == 0 ? 0x0001 : 0x0011);

    // SSID: one network in ten hides its name; many names come back on several streets.
    const QByteArray ssid = ap % 10 == 9  ? QByteArray()
                            : ap % 4 == 0 ? "Street-" + QByteArray::number(ap % 997)
                                          : "city-net-" + QByteArray::number(ap);
    p.append('\0').append(char(ssid.size())).append(ssid);
    p.append(QByteArray::fromHex("0108828b0c1296182430"));
    p.append(char(3)).append(char(1)).append(char(channel));
    if (security >= 2)
        p.append(QByteArray::fromHex("30140100000fac040100000fac040100000fac020c00"));
    if (!fiveGHz && ap % 2 == 0)
        p.append(QByteArray::fromHex("2d1a6e101bffff000000000000000000000000000000000000000000"));
    return p;
}

} // namespace

bool CityCapture::write(const QString &path, QString *error) const
{
    if (accessPoints <= 0 || beaconsEach <= 0 || !(seconds > 0.0)) {
        if (error)
            *error = QStringLiteral("access points, beacons and seconds must be positive");
        return false;
    }
    pcap_t *dead = pcap_open_dead_with_tstamp_precision(DLT_IEEE802_11_RADIO, 65535,
                                                        PCAP_TSTAMP_PRECISION_MICRO);
    pcap_dumper_t *dumper =
        dead ? pcap_dump_open(dead, QFile::encodeName(path).constData()) : nullptr;
    if (!dumper) {
        if (error)
            *error = dead ? QString::fromLocal8Bit(pcap_geterr(dead))
                          : QStringLiteral("libpcap could not start");
        if (dead)
            pcap_close(dead);
        return false;
    }
    const qint64 frames = qint64(accessPoints) * beaconsEach;
    const double stepUs = seconds * 1e6 / double(frames);
    constexpr qint64 kStartUs = 1700000000LL * 1000000LL;
    for (qint64 j = 0; j < frames; ++j) {
        const QByteArray packet = beaconOf(int(j % accessPoints), int(j / accessPoints));
        const qint64 t = kStartUs + qint64(double(j) * stepUs);
        pcap_pkthdr header{};
        header.ts.tv_sec = time_t(t / 1000000);
        header.ts.tv_usec = suseconds_t(t % 1000000);
        header.caplen = header.len = bpf_u_int32(packet.size());
        pcap_dump(reinterpret_cast<u_char *>(dumper), &header,
                  reinterpret_cast<const u_char *>(packet.constData()));
    }
    const bool flushed = pcap_dump_flush(dumper) == 0;
    pcap_dump_close(dumper);
    pcap_close(dead);
    if (!flushed && error)
        *error = QStringLiteral("could not finish writing %1").arg(path);
    return flushed;
}

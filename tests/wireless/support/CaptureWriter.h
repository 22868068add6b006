// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

struct pcap;
struct pcap_dumper;

// Writes synthetic captures with libpcap's own dump functions, so tests replay exactly what
// a real capture file would hold.
class CaptureWriter
{
public:
    CaptureWriter(const QString &path, int linkType);
    ~CaptureWriter();
    CaptureWriter(const CaptureWriter &) = delete;
    CaptureWriter &operator=(const CaptureWriter &) = delete;

    bool ok() const { return m_dumper != nullptr; }
    void write(qint64 timeUs, const QByteArray &packet);
    void close();

    struct Beacon
    {
        int bssid = 1; // last byte of 02:00:00:00:00:xx
        QByteArray ssid = "net";
        int channel = 6;
        bool privacy = false;
        bool rsnPsk = false;
        bool probeResponse = false;
        QByteArray extraElements;
    };
    static QByteArray beacon(const Beacon &b);
    // A radiotap header with the channel frequency and, when given, the antenna signal.
    static QByteArray radiotap(int frequencyMHz, std::optional<int> signalDbm);

private:
    pcap *m_pcap = nullptr;
    pcap_dumper *m_dumper = nullptr;
};

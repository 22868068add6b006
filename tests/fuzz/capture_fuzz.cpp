// SPDX-License-Identifier: GPL-3.0-or-later
// Fuzz target for capture files: the input is a whole pcap or pcapng file, opened for replay
// and served scan window by scan window, so libpcap's reading, the link-layer headers
// (radiotap, PPI, Prism, AVS), the management frames and their elements all see it.
#include "wireless/replay/ReplayBackend.h"

#include <QDir>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <unistd.h>

namespace {

void serve(ReplayBackend &replay)
{
    replay.setScanWindow(2.0);
    const QString interfaceName = replay.interfaceNames().value(0);
    (void)replay.supportedChannels(interfaceName);
    (void)replay.wlanChannel(interfaceName);
    // Every scan returns the next window; a bounded number keeps one input quick.
    for (int scans = 0; scans < 64 && !replay.finished(); ++scans) {
        for (const CWNetworkRef &network : replay.scanForNetworks(interfaceName, {}, nullptr))
            (void)network->ssid();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // libpcap reads files only; one scratch file per process, rewritten for every input and
    // removed after it, so that neither a fuzzing run nor a corpus replay leaves files behind.
    static const QString path =
        QDir::temp().filePath(QStringLiteral("corvane-fuzz-capture-%1.pcap").arg(getpid()));
    static const QByteArray name = QFile::encodeName(path);
    FILE *file = std::fopen(name.constData(), "wb");
    if (!file)
        return 0;
    const bool written = std::fwrite(data, 1, size, file) == size;
    std::fclose(file);

    QString error;
    if (written) {
        if (const auto replay = ReplayBackend::open(path, 0, &error))
            serve(*replay);
    }
    std::remove(name.constData());
    return 0;
}

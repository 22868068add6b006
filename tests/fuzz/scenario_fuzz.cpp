// SPDX-License-Identifier: GPL-3.0-or-later
// Fuzz target for scenario files: the input is the JSON text of a scenario, read by the
// simulated radio's parser; a scenario it accepts is also scanned twice.
#include "wireless/simulated/SimulatedBackend.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray json(reinterpret_cast<const char *>(data), qsizetype(size));
    QString error;
    const auto backend = SimulatedBackend::fromJson(json, 1, &error);
    if (!backend)
        return 0;
    for (const QString &name : backend->interfaceNames()) {
        for (int scan = 0; scan < 2; ++scan) {
            CWError scanError;
            for (const CWNetworkRef &network : backend->scanForNetworks(name, {}, &scanError))
                (void)network->ssid();
        }
        (void)backend->supportedChannels(name);
    }
    return 0;
}

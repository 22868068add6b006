// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/BackendFactory.h"

#include "wireless/linux/LinuxBackend.h"
#include "wireless/replay/ReplayBackend.h"
#include "wireless/simulated/SimulatedBackend.h"

#include <QDateTime>

namespace {
std::shared_ptr<WirelessBackend> simulated(const BackendFactory::Request &request,
                                           QString *errorText)
{
    const quint32 seed =
        request.seed ? *request.seed : quint32(QDateTime::currentMSecsSinceEpoch() & 0xffffffffu);
    if (request.scenario.isEmpty())
        return SimulatedBackend::createDefault(seed);
    return SimulatedBackend::fromFile(request.scenario, seed, errorText);
}
} // namespace

std::shared_ptr<WirelessBackend> BackendFactory::create(const Request &request, QString *errorText,
                                                        QString *notice)
{
    switch (request.kind) {
    case Kind::Simulated:
        return simulated(request, errorText);
    case Kind::Auto: {
        if (LinuxBackend::machineHasWirelessInterface()) {
            QString linuxError;
            if (auto backend = LinuxBackend::create(&linuxError))
                return backend;
            if (notice)
                *notice = QStringLiteral("The Wi-Fi adapter cannot be read (%1): using the "
                                         "simulated radio.")
                              .arg(linuxError);
        } else if (notice) {
            *notice = QStringLiteral("No wireless interface found: using the simulated radio.");
        }
        return simulated(request, errorText);
    }
    case Kind::Linux:
        return LinuxBackend::create(errorText);
    case Kind::Replay:
        return ReplayBackend::open(request.capture, request.speed, errorText);
    }
    return nullptr;
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/BackendFactory.h"

#include "wireless/replay/ReplayBackend.h"
#include "wireless/simulated/SimulatedBackend.h"

#include <QDateTime>

namespace {
std::shared_ptr<WirelessBackend> simulated(const BackendFactory::Request &request,
                                           QString *errorText)
{
    const quint32 seed = request.seed ? *request.seed
                                      : quint32(QDateTime::currentMSecsSinceEpoch() & 0xffffffffu);
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
    case Kind::Auto:
        if (notice && request.kind == Kind::Auto)
            *notice = QStringLiteral("No wireless interface found: using the simulated radio.");
        return simulated(request, errorText);
    case Kind::Linux:
        if (errorText)
            *errorText = QStringLiteral("The Linux radio is not available in this build.");
        return nullptr;
    case Kind::Replay:
        return ReplayBackend::open(request.capture, request.speed, errorText);
    }
    return nullptr;
}

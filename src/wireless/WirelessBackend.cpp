// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/WirelessBackend.h"

#include "wireless/SFAuthorization.h"

namespace {
std::shared_ptr<WirelessBackend> &currentBackend()
{
    static std::shared_ptr<WirelessBackend> backend;
    return backend;
}
} // namespace

std::shared_ptr<WirelessBackend> WirelessBackend::current()
{
    return currentBackend();
}

void WirelessBackend::setCurrent(std::shared_ptr<WirelessBackend> backend)
{
    currentBackend() = std::move(backend);
}

bool WirelessBackend::obtainAuthorization(const QString &, quint32, CWError *error)
{
    CWError::reset(error);
    return true;
}

void WirelessBackend::setAuthorization(const QString &, std::shared_ptr<SFAuthorization>) {}

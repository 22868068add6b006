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

bool WirelessBackend::associateToNetwork(const QString &, const CWNetworkRef &, const QVariantMap &,
                                         CWError *error)
{
    CWError::set(error, kCWErrorNotSupported,
                 QStringLiteral("This radio joins networks only asynchronously"));
    return false;
}

bool WirelessBackend::enableIBSS(const QString &, const QVariantMap &, CWError *error)
{
    CWError::set(error, kCWErrorNotSupported,
                 QStringLiteral("This radio creates networks only asynchronously"));
    return false;
}

namespace {
// A refusal without a reason still has to read as one to the caller.
CWError failureOf(bool ok, CWError error)
{
    if (!ok && error.isNull())
        CWError::set(&error, kCWErrorUnknown, QStringLiteral("The operation failed"));
    return ok ? CWError() : error;
}
} // namespace

void WirelessBackend::obtainAuthorizationAsync(const QString &right, quint32 flags, Completion done)
{
    CWError error;
    const bool ok = obtainAuthorization(right, flags, &error);
    if (!ok && error.isNull())
        CWError::set(&error, kCWErrorNotPermitted, QStringLiteral("Not permitted"));
    done(ok ? CWError() : error);
}

void WirelessBackend::setPowerAsync(const QString &name, bool on, Completion done)
{
    CWError error;
    const bool ok = setPower(name, on, &error);
    done(failureOf(ok, error));
}

void WirelessBackend::associateToNetworkAsync(const QString &name, const CWNetworkRef &network,
                                              const QVariantMap &parameters, Completion done)
{
    CWError error;
    const bool ok = associateToNetwork(name, network, parameters, &error);
    done(failureOf(ok, error));
}

void WirelessBackend::enableIBSSAsync(const QString &name, const QVariantMap &parameters,
                                      Completion done)
{
    CWError error;
    const bool ok = enableIBSS(name, parameters, &error);
    done(failureOf(ok, error));
}

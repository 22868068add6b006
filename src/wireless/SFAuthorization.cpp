// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/SFAuthorization.h"

#include "wireless/WirelessBackend.h"

std::shared_ptr<SFAuthorization> SFAuthorization::authorization()
{
    return std::make_shared<SFAuthorization>();
}

bool SFAuthorization::obtainWithRight(const QString &right, quint32 flags, CWError *error)
{
    m_right = right;
    auto backend = WirelessBackend::current();
    if (!backend) {
        CWError::set(error, kCWErrorServiceUnavailable, QStringLiteral("No wireless backend"));
        m_obtained = false;
        return false;
    }
    m_obtained = backend->obtainAuthorization(right, flags, error);
    return m_obtained;
}

void SFAuthorization::obtainWithRight(const QString &right, quint32 flags,
                                      std::function<void(bool, const CWError &)> done)
{
    m_right = right;
    m_obtained = false;
    auto backend = WirelessBackend::current();
    if (!backend) {
        CWError error;
        CWError::set(&error, kCWErrorServiceUnavailable, QStringLiteral("No wireless backend"));
        done(false, error);
        return;
    }
    backend->obtainAuthorizationAsync(right, flags, [this, done](const CWError &error) {
        m_obtained = error.isNull();
        done(m_obtained, error);
    });
}

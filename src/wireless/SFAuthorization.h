// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWError.h"

#include <QString>

#include <functional>
#include <memory>

// Permission to change the system's network settings. Obtained before every scan and
// attached to the interface for the privileged actions that follow.
class SFAuthorization
{
public:
    enum Flags : quint32 {
        kAuthorizationFlagInteractionAllowed = 1,
        kAuthorizationFlagExtendRights = 2,
        kAuthorizationFlagPreAuthorize = 16,
    };

    static std::shared_ptr<SFAuthorization> authorization();

    // Asks the current backend (polkit on Linux). False: the user refused or the system
    // denied it.
    bool obtainWithRight(const QString &right, quint32 flags, CWError *error);
    // The same, answered through `done` once the backend knows (an interactive polkit
    // prompt may take minutes); the event loop runs on meanwhile.
    void obtainWithRight(const QString &right, quint32 flags,
                         std::function<void(bool obtained, const CWError &error)> done);

    bool isObtained() const { return m_obtained; }
    QString right() const { return m_right; }

private:
    bool m_obtained = false;
    QString m_right;
};

using SFAuthorizationRef = std::shared_ptr<SFAuthorization>;

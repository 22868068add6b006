// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWError.h"
#include "wireless/simulated/SimScenario.h"

#include <QVariantMap>

#include <optional>

// Turns the parameters of an ad-hoc request into the network the interface will start:
// name (default: the interface's name), channel (default 11, must be supported) and an
// optional passphrase (a WEP key of 5 or 13 characters or 10 or 26 hex digits, or a WPA2
// passphrase of 8 to 63 characters).
class SimAdHoc
{
public:
    static std::optional<SimScenario::AccessPoint>
    fromParameters(const QVariantMap &parameters, const SimScenario::Interface &owner,
                   CWError *error);
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWError.h"
#include "wireless/CWWirelessProfile.h"
#include "wireless/simulated/SimScenario.h"

#include <QVariantMap>

// The access point's side of joining: does what the association parameters (or, without
// them, what the system has stored for the network) satisfy its security?
class SimCredentials
{
public:
    static bool check(const SimScenario::AccessPoint &ap, const QVariantMap &parameters,
                      const CWWirelessProfileRef &stored, CWError *error);

    // How a message names the network: its SSID in quotes, or words for a hidden one.
    static QString label(const SimScenario::AccessPoint &ap);
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// Plain words for NetworkManager's reasons of a failed activation.
class NmFailureText
{
public:
    // NMActiveConnectionStateReason and NMDeviceStateReason codes. Empty when the reason
    // says nothing a user could act on (so another source may be asked).
    static QString forActiveReason(uint reason);
    static QString forDeviceReason(uint reason);
    // The best text for a failed activation: the active connection's reason, else the
    // device's, else a generic one naming the code.
    static QString describe(uint activeReason, uint deviceReason);
};

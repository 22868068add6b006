// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/linux/NmFailureText.h"

QString NmFailureText::forActiveReason(uint reason)
{
    switch (reason) {
    case 2: // USER_DISCONNECTED
        return QStringLiteral("The connection was cancelled");
    case 5: // IP_CONFIG_INVALID
        return QStringLiteral("No network address was obtained");
    case 6: // CONNECT_TIMEOUT
        return QStringLiteral("The network did not answer");
    case 9:  // NO_SECRETS
    case 10: // LOGIN_FAILED
        return QStringLiteral("The passphrase was rejected");
    case 11: // CONNECTION_REMOVED
        return QStringLiteral("The saved network was removed while joining");
    case 14: // DEVICE_REMOVED
        return QStringLiteral("The Wi-Fi adapter was removed");
    default: // UNKNOWN, NONE, DEVICE_DISCONNECTED and the like: the device knows more
        return {};
    }
}

QString NmFailureText::forDeviceReason(uint reason)
{
    switch (reason) {
    case 5: // IP_CONFIG_UNAVAILABLE
    case 6: // IP_CONFIG_EXPIRED
        return QStringLiteral("No network address was obtained");
    case 7: // NO_SECRETS: a wrong key makes NetworkManager ask again, and nobody answers
    case 8: // SUPPLICANT_DISCONNECT: the handshake failed
        return QStringLiteral("The passphrase was rejected");
    case 9: // SUPPLICANT_CONFIG_FAILED
        return QStringLiteral("The network's security settings were not accepted");
    case 10: // SUPPLICANT_FAILED
        return QStringLiteral("The Wi-Fi supplicant failed");
    case 11: // SUPPLICANT_TIMEOUT
        return QStringLiteral("The network did not answer");
    case 53: // SSID_NOT_FOUND
        return QStringLiteral("The network is out of range");
    default:
        return {};
    }
}

QString NmFailureText::describe(uint activeReason, uint deviceReason)
{
    QString text = forActiveReason(activeReason);
    if (text.isEmpty())
        text = forDeviceReason(deviceReason);
    if (text.isEmpty())
        text = QStringLiteral("The network could not be joined (NetworkManager reason %1)")
                   .arg(deviceReason ? deviceReason : activeReason);
    return text;
}

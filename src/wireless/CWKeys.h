// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// Keys of the parameter maps handed to scans, associations and ad-hoc creation.
inline const QString kCWScanKeyMerge = QStringLiteral("SCAN_MERGE");
inline const QString kCWAssocKeyPassphrase = QStringLiteral("ASSOC_KEY_PASSPHRASE");
inline const QString kCWAssocKey8021XProfile = QStringLiteral("ASSOC_KEY_8021X_PROFILE");
inline const QString kCWIBSSKeySSID = QStringLiteral("IBSS_KEY_SSID");
inline const QString kCWIBSSKeyChannel = QStringLiteral("IBSS_KEY_CHANNEL");
inline const QString kCWIBSSKeyPassphrase = QStringLiteral("IBSS_KEY_PASSPHRASE");

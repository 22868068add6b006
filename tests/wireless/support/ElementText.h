// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/ie/BssElements.h"

#include <QByteArray>
#include <QString>

// Text forms of decoded elements for table tests, in the notation of the reference decodings
// of the captured beacons (rates "1*,5.5", suites "2,8" or "oui:type").
namespace ElementText {
QByteArray fromHex(const char *hex); // spaces allowed
QString rates(const BssElements &elements);
QString suites(const QVarLengthArray<std::uint32_t, 4> &suites);
QString vhtWidth(OperatingWidth width);
// A one-line summary of everything decoded, e.g. "ssid=616263 ds=6 rates=1*,2 flags=T".
QString summary(const BssElements &elements);
} // namespace ElementText

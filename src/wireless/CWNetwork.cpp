// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/CWNetwork.h"

#include <QStringDecoder>

std::optional<QString> CWNetwork::ssid() const
{
    if (!d.ssidPresent)
        return std::nullopt;
    // An SSID is 0..32 arbitrary bytes. Decode as UTF-8 with replacement characters so a
    // hostile or legacy-encoded name can never break a text operation later on.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(d.ssidData);
    return text;
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/simulated/SimAdHoc.h"

#include "wireless/CWKeys.h"
#include "wireless/CWTypes.h"

#include <QRegularExpression>

namespace {
constexpr qint64 kDefaultChannel = 11;

bool invalid(CWError *error, const QString &message)
{
    CWError::set(error, kCWErrorInvalidParameter, message);
    return false;
}

bool isText(const QVariant &v)
{
    return v.metaType() == QMetaType::fromType<QString>();
}

bool readChannel(const QVariant &v, qint64 *channel, CWError *error)
{
    if (!v.isValid() || v.isNull())
        return true;
    bool ok = false;
    const qlonglong n = v.toLongLong(&ok);
    // A number type only: a text "11" would hint at a caller that forgot to parse.
    const int type = v.metaType().id();
    const bool numeric = type == QMetaType::Int || type == QMetaType::UInt ||
                         type == QMetaType::LongLong || type == QMetaType::ULongLong ||
                         type == QMetaType::Long || type == QMetaType::ULong;
    if (!numeric || !ok)
        return invalid(error, QStringLiteral("The ad-hoc channel parameter is not a number"));
    *channel = n;
    return true;
}
} // namespace

std::optional<SimScenario::AccessPoint>
SimAdHoc::fromParameters(const QVariantMap &parameters, const SimScenario::Interface &owner,
                         CWError *error)
{
    SimScenario::AccessPoint ap;
    ap.ibss = true;
    ap.ssid = owner.name.toUtf8();
    const QVariant ssid = parameters.value(kCWIBSSKeySSID);
    if (ssid.isValid() && !ssid.isNull()) {
        if (!isText(ssid)) {
            invalid(error, QStringLiteral("The ad-hoc network name is not a text"));
            return std::nullopt;
        }
        if (!ssid.toString().isEmpty())
            ap.ssid = ssid.toString().toUtf8();
    }
    if (ap.ssid.size() > 32) {
        invalid(error, QStringLiteral("The network name is longer than 32 bytes"));
        return std::nullopt;
    }

    qint64 channel = kDefaultChannel;
    if (!readChannel(parameters.value(kCWIBSSKeyChannel), &channel, error))
        return std::nullopt;
    if (!owner.supportedChannels.contains(channel)) {
        invalid(error,
                QStringLiteral("Channel %1 is not supported by %2").arg(channel).arg(owner.name));
        return std::nullopt;
    }
    ap.channel = int(channel);
    ap.band = SimScenario::bandOf(channel);
    const bool five = SimScenario::bandOf(channel) == kCWChannelBand5GHz;
    // Ad-hoc mode runs the legacy rates only.
    ap.phyModes = five ? 1u << kCWPHYMode11a : (1u << kCWPHYMode11b) | (1u << kCWPHYMode11g);
    ap.width = kCWChannelWidth20MHz;

    const QVariant key = parameters.value(kCWIBSSKeyPassphrase);
    if (key.isValid() && !key.isNull()) {
        if (!isText(key)) {
            invalid(error, QStringLiteral("The ad-hoc passphrase is not a text"));
            return std::nullopt;
        }
        const QString k = key.toString();
        static const QRegularExpression hex(QStringLiteral("^[0-9a-fA-F]*$"));
        const qsizetype n = k.size();
        if (n == 5 || n == 13 || ((n == 10 || n == 26) && hex.match(k).hasMatch())) {
            ap.security = SimSecurity::WEP;
        } else if (n >= 8 && n <= 63) {
            ap.security = SimSecurity::WPA2Personal;
        } else if (n > 0) {
            invalid(error, QStringLiteral("The passphrase must have 5 or 13 characters (WEP) or 8 "
                                          "to 63 characters (WPA2)"));
            return std::nullopt;
        }
        ap.passphrase = k;
    }
    CWError::reset(error);
    return ap;
}

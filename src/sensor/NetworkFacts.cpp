// SPDX-License-Identifier: GPL-3.0-or-later
#include "sensor/NetworkFacts.h"

#include "model/NetworkObject.h"
#include "wireless/CWTypes.h"

NetworkFacts NetworkFacts::of(const NetworkObject &record)
{
    NetworkFacts f;
    f.ssid = record.name().value_or(QString());
    const std::optional<QString> security = record.security();
    if (!security)
        f.security = QStringLiteral("unknown");
    else if (security->isEmpty())
        f.security = QStringLiteral("open");
    else
        f.security = *security;
    f.band = bandName(record.channelBand());
    f.width = widthName(record.channelWidth());
    const CWNetworkRef network = record.cwNetwork();
    f.ibss = network && network->ibss() ? QStringLiteral("yes") : QStringLiteral("no");
    const CWOperatingChannel channel = network ? network->operatingChannel() : CWOperatingChannel{};
    f.realWidth = realWidthName(channel);
    f.centerMHz = centerName(channel);
    return f;
}

QString NetworkFacts::realWidthName(const CWOperatingChannel &channel)
{
    if (!channel.isKnown())
        return QStringLiteral("unknown");
    return channel.isEightyPlusEighty() ? QStringLiteral("%1+%1MHz").arg(channel.widthMHz)
                                        : QStringLiteral("%1MHz").arg(channel.widthMHz);
}

QString NetworkFacts::centerName(const CWOperatingChannel &channel)
{
    if (!channel.isKnown())
        return QStringLiteral("unknown");
    QString text = QString::number(channel.centerMHz[0]);
    if (channel.isEightyPlusEighty())
        text += u'+' + QString::number(channel.centerMHz[1]);
    return text;
}

QString NetworkFacts::bandName(qint64 bandCode)
{
    switch (bandCode) {
    case kCWChannelBand2GHz:
        return QStringLiteral("2.4GHz");
    case kCWChannelBand5GHz:
        return QStringLiteral("5GHz");
    case kCWChannelBand6GHz:
        return QStringLiteral("6GHz");
    default:
        return QStringLiteral("unknown");
    }
}

QString NetworkFacts::widthName(qint64 widthCode)
{
    switch (widthCode) {
    case kCWChannelWidth20MHz:
        return QStringLiteral("20MHz");
    case kCWChannelWidth40MHz:
        return QStringLiteral("40MHz");
    case kCWChannelWidth80MHz:
        return QStringLiteral("80MHz");
    case kCWChannelWidth160MHz:
        return QStringLiteral("160MHz");
    default:
        return QStringLiteral("unknown");
    }
}

bool NetworkFacts::isBssid(const QString &text)
{
    if (text.size() != 17)
        return false;
    for (int i = 0; i < 17; ++i) {
        const QChar c = text.at(i);
        if (i % 3 == 2) {
            if (c != u':')
                return false;
        } else if (!((c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') ||
                     (c >= u'A' && c <= u'F'))) {
            return false;
        }
    }
    return true;
}

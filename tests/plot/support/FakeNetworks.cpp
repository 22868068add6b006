// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/support/FakeNetworks.h"

#include "util/RandomSource.h"
#include "wireless/CWNetwork.h"
#include "wireless/ie/FrequencyPlan.h"

#include <QStringList>

NetworkList FakeNetworks::makeOnAir(int count, quint32 seed, const QDateTime &updated)
{
    static const QStringList kNames = {
        QStringLiteral("HomeNet"),      QStringLiteral("Vodafone-8A2C"),
        QStringLiteral("eduroam"),      QStringLiteral("Cafe Guest"),
        QStringLiteral("Büro 2.OG"),    QStringLiteral("o2-WLAN42"),
        QStringLiteral("TP-Link_5E12"), QStringLiteral("Telekom_FON"),
    };
    SeededRandomSource random(seed);
    NetworkList list;
    list.reserve(count);
    for (int i = 0; i < count; ++i) {
        CWNetwork::Data d;
        d.ssidData = QStringLiteral("%1-%2").arg(kNames.at(i % kNames.size())).arg(i).toUtf8();
        d.bssid = QStringLiteral("02:00:00:00:%1:%2")
                      .arg(i >> 8 & 0xff, 2, 16, QLatin1Char('0'))
                      .arg(i & 0xff, 2, 16, QLatin1Char('0'));
        d.rssiValue = random.uniform(-90, -30);
        d.noiseMeasurement = -95;
        CWOperatingChannel &c = d.operatingChannel;
        const int kind = random.uniform(0, 9);
        if (kind < 5) {
            c.band = kCWChannelBand2GHz;
            c.primaryChannel = random.uniform(1, 13);
            c.widthMHz = kind == 4 ? 40 : 20;
        } else if (kind < 9) {
            static const int k5GHz[] = {36, 44, 52, 60, 100, 108, 116, 124, 132, 149, 157, 165};
            c.band = kCWChannelBand5GHz;
            c.primaryChannel = k5GHz[random.uniform(0, 11)];
            static const int kWidths[] = {20, 40, 80, 80, 160};
            c.widthMHz = kWidths[random.uniform(0, 4)];
        } else {
            c.band = kCWChannelBand6GHz;
            c.primaryChannel = 1 + 4 * random.uniform(0, 58);
            static const int kWidths[] = {20, 80, 160, 320};
            c.widthMHz = kWidths[random.uniform(0, 3)];
        }
        int center = FrequencyPlan::blockCenter(c.primaryChannel, c.band, c.widthMHz);
        if (center == 0) { // no such block there (160 on 132, 320 high up): take 20 MHz
            c.widthMHz = 20;
            center = c.primaryChannel;
        }
        c.centerMHz = {FrequencyPlan::frequencyForChannel(center, c.band), 0};
        if (c.band == kCWChannelBand5GHz && c.widthMHz == 80 && i % 7 == 0 && center < 100)
            c.centerMHz[1] = FrequencyPlan::frequencyForChannel(155, c.band); // an 80+80 one
        d.wlanChannel = CWChannel(c.primaryChannel, c.band, kCWChannelWidth20MHz);
        NetworkObjectRef network =
            NetworkObject::objectWithCWNetwork(CWNetwork::create(d), updated);
        const int h = random.uniform(0, 49);
        const int s = random.uniform(0, 9);
        const int b = random.uniform(0, 9);
        network->setColor(QColor::fromHsvF(float(h / 49.0), float(0.6 + 0.4 * s / 9.0),
                                           float(0.6 + 0.4 * b / 9.0), 1.0f));
        list.append(network);
    }
    return list;
}

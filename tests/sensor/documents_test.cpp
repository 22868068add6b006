// SPDX-License-Identifier: GPL-3.0-or-later
#include "NetworkBuilder.h"
#include "sensor/SensorDocuments.h"
#include "support/FixedSensorSource.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace {

const QDateTime kNow = QDateTime::fromSecsSinceEpoch(1'700'000'000, Qt::UTC);

QJsonObject parse(const QByteArray &body)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << body.toStdString();
    return document.object();
}

TEST(SensorDocuments, NetworksCarryTheExportColumnsAndTheRawNumbers)
{
    FixedSensorSource source;
    NetworkObjectRef first =
        source.add(NetworkBuilder()
                       .bssid("00:00:00:00:00:01")
                       .ssid("<img src=x onerror=alert(1)>")
                       .rssi(-60)
                       .noise(-90)
                       .channel(149, kCWChannelBand5GHz, kCWChannelWidth40MHz)
                       .operatingChannel(36, kCWChannelBand5GHz, 80, 5210, 5775),
                   kNow);
    // Quotes, control characters and half a surrogate pair (no character: it becomes the
    // replacement character) must survive a JSON parser.
    first->setComment(QStringLiteral("by the \"door\"\n\\") + QChar(0xD800));
    source.add(NetworkBuilder().bssid("00:00:00:00:00:02").hidden(), kNow);
    // The search let through only the second; an index past the end is ignored.
    source.filtered = {1, 7};
    source.search = QStringLiteral("00:02");

    const QJsonObject document = parse(SensorDocuments::networks(source, 4, kNow));
    EXPECT_EQ(document.value("cycle").toInteger(), 4);
    EXPECT_EQ(document.value("time").toString(), "2023-11-14T22:13:20.000Z");
    const QJsonArray networks = document.value("networks").toArray();
    ASSERT_EQ(networks.size(), 2);
    const QJsonObject a = networks.at(0).toObject();
    EXPECT_FALSE(a.value("listed").toBool());
    EXPECT_EQ(a.value("name").toString(), "<img src=x onerror=alert(1)>");
    EXPECT_EQ(a.value("snrDb").toInteger(), 30);
    EXPECT_EQ(QJsonDocument(a.value("operatingChannel").toObject()).toJson(QJsonDocument::Compact),
              R"({"band":"5GHz","primaryChannel":36,"segments":[{"centerMHz":5210,"highMHz":5250,)"
              R"("lowMHz":5170},{"centerMHz":5775,"highMHz":5815,"lowMHz":5735}],)"
              R"("width":"80+80MHz","widthMHz":80})");
    // The export row's texts, but the channel as a number.
    QStringList columns;
    for (const QJsonValue &column : a.value("columns").toArray())
        columns << column.toVariant().toString() + (column.isDouble() ? "#" : "");
    EXPECT_EQ(columns.join(u'|'),
              "<img src=x onerror=alert(1)>|00:00:00:00:00:01|by the "
              "\"door\"\n\\\uFFFD|Good|43%|43%|43%|43%|15%|15%|15%|15%|40dB|40dB|"
              "40dB|40dB||802.11g/n|149#|5GHz|40MHz|No");

    // Listed, no name, and no operating channel: the scan result did not tell.
    const QJsonObject b = networks.at(1).toObject();
    EXPECT_TRUE(b.value("listed").toBool() && b.value("name").isNull() &&
                b.value("columns").toArray().at(0).isNull() &&
                b.value("operatingChannel").isNull());
}

TEST(SensorDocuments, HistoryKeepsGapsAndRefusesMalformedBssids)
{
    FixedSensorSource source;
    NetworkObjectRef record =
        source.add(NetworkBuilder().bssid("0a:0b:0c:0d:0e:0f").rssi(-53).noise(-106), kNow);
    record->updateWithCWNetwork(nullptr, kNow.addSecs(1));
    record->updateWithCWNetwork(NetworkBuilder().bssid("0a:0b:0c:0d:0e:0f").rssi(-70),
                                kNow.addSecs(2));

    QByteArray body;
    ASSERT_EQ(SensorDocuments::history(source, "0A:0B:0C:0D:0E:0F", &body),
              SensorDocuments::HistoryResult::Ok);
    const QJsonObject history = parse(body);
    EXPECT_EQ(history.value("bssid").toString(), "0a:0b:0c:0d:0e:0f");
    EXPECT_EQ(history.value("signalsDbm").toArray(), (QJsonArray{-53, QJsonValue(), -70}));
    EXPECT_DOUBLE_EQ(history.value("signals").toArray().at(0).toDouble(), 0.5);
    EXPECT_TRUE(history.value("SNRs").toArray().at(1).isNull());

    const char *malformed[] = {"", "0a-0b-0c-0d-0e-0f", "0a:0b:0c:0d:0e:0g", "0a:0b:0c:0d:0e:0f\n"};
    for (const char *bssid : malformed)
        EXPECT_EQ(SensorDocuments::history(source, QString::fromUtf8(bssid), &body),
                  SensorDocuments::HistoryResult::MalformedBssid)
            << bssid;
}

} // namespace

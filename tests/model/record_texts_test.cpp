// SPDX-License-Identifier: GPL-3.0-or-later
// Conversions and the texts a record derives for the table, the panels and the exports
// (data/texts.tsv), and its icon.
#include "model/NetworkObject.h"
#include "support/DataTable.h"
#include "support/NetworkBuilder.h"
#include "util/Clock.h"

#include <gtest/gtest.h>

namespace {

unsigned bits(const QString &list)
{
    unsigned out = 0;
    for (const QString &n : list.split(u',', Qt::SkipEmptyParts))
        out |= 1u << n.toInt();
    return out;
}
} // namespace

TEST(NetworkObjectTexts, EveryDerivedText)
{
    ManualClock clock(kT0);
    Clock::setInstance(&clock);
    const auto seen = NetworkBuilder().record();
    NetworkObject bare;
    const std::vector<DataRow> rows = readTable("texts");
    ASSERT_GT(rows.size(), 50u);
    for (const DataRow &row : rows) {
        const QString kind = row["kind"], in = row["input"];
        SCOPED_TRACE((kind + u' ' + in).toStdString());
        NetworkBuilder network;
        std::optional<QString> text;
        if (kind == u"phy" || kind == u"security") {
            (kind == u"phy" ? network.data().phyModes : network.data().securities) = bits(in);
            const auto rec = NetworkObject::objectWithCWNetwork(network, kT0);
            text = kind == u"phy" ? rec->phyMode() : rec->security();
        } else if (kind == u"securityMode") {
            text = QString();
            EXPECT_EQ(NetworkObject::securityModeForString(in), row["mode"].toInt());
        } else if (kind == u"band" || kind == u"width") {
            bare.setChannelBand(in.toLongLong());
            bare.setChannelWidth(in.toLongLong());
            text = kind == u"band" ? bare.channelBandString() : bare.channelWidthString();
        } else if (kind == u"quality") {
            bare.setSignals({in.toFloat()});
            text = bare.signalQualityString();
        } else if (kind == u"percent") {
            text = NetworkObject::stringOfSignal(in.toDouble());
            EXPECT_EQ(NetworkObject::stringOfNoise(in.toDouble()), text);
        } else if (kind == u"snr") {
            text = NetworkObject::stringOfSNR(in.toLongLong());
        } else if (kind == u"fraction") {
            text = QString::number(NetworkObject::signalDBIAsPercentage(in.toLongLong()), 'f', 6);
        } else if (kind == u"snrOf" || kind == u"levelOf") {
            const qint64 rssi = in.section(u'/', 0, 0).toLongLong(),
                         noise = in.section(u'/', 1).toLongLong();
            const double v = kind == u"snrOf" ? NetworkObject::snrWithRSSI(rssi, noise)
                                              : NetworkObject::levelWithRSSI(rssi, noise);
            EXPECT_EQ(v, double(float(v)));
            text = QString::number(v, 'f', 6);
        } else if (kind == u"storedSNR") {
            bare.setSNRs({in.toDouble()});
            text = QString::number(bare.snr());
        } else if (kind == u"lastSeen") {
            clock.set(kT0.addMSecs(in.toLongLong()));
            text = seen->lastSeen();
        } else {
            ADD_FAILURE() << "unknown kind";
        }
        EXPECT_EQ(text.value_or(QStringLiteral("<none>")), row["expected"]);
        if (kind == u"security") {
            EXPECT_EQ(NetworkObject::securityModeForString(text), row["mode"].toInt());
        }
    }
    Clock::setInstance(nullptr);
    const auto rec = NetworkBuilder().record();
    EXPECT_EQ(QStringList({rec->signalString(), rec->noiseString(), rec->snrString()}),
              QStringList({"43%", "15%", "40dB"}));
}

TEST(NetworkObjectIcon, ColourBehindLockOrOpenPadlockDrawnOnce)
{
    const auto open = NetworkBuilder().securities({0}).record();
    const auto locked = NetworkBuilder().securities({4}).record();
    open->setColor(Qt::blue);
    locked->setColor(Qt::blue);
    const QImage openIcon = open->icon();
    EXPECT_EQ(openIcon.size(), QSize(19, 17));
    // The top row lies outside the drawing: pure fill colour.
    EXPECT_EQ(openIcon.pixelColor(18, 0), QColor(Qt::blue));
    EXPECT_NE(openIcon, locked->icon());
    // Kept for the life of the record: a new colour does not redraw it.
    open->setColor(Qt::red);
    EXPECT_EQ(open->icon(), openIcon);
}

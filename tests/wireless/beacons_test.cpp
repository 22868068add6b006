// SPDX-License-Identifier: GPL-3.0-or-later
// The decoder against real captured beacons and probe responses, checked field by field
// against an independent reference decoding (expected.tsv beside the captures).
#include "support/ElementText.h"
#include "support/ReferenceRows.h"
#include "wireless/CWTypes.h"
#include "wireless/capture/CaptureReader.h"
#include "wireless/ie/BssNetworkMapper.h"
#include "wireless/ie/FrequencyPlan.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QStringList>

#include <gtest/gtest.h>

#include <vector>

using namespace Qt::StringLiterals;

TEST(Beacons, RealCapturesMatchTheReferenceDecoding)
{
    const std::vector<ReferenceRows::Row> expected = ReferenceRows::read();
    ASSERT_GT(expected.size(), 50u)
        << "no reference rows in " << ReferenceRows::dataDir().toStdString();

    // Decode every capture in the folder once.
    QHash<QString, std::vector<CaptureReader::Frame>> frames;
    const QStringList files =
        QDir(ReferenceRows::dataDir())
            .entryList({QStringLiteral("*.pcap"), QStringLiteral("*.pcapng")}, QDir::Files);
    ASSERT_FALSE(files.isEmpty());
    for (const QString &file : files) {
        QString error;
        auto reader = CaptureReader::open(ReferenceRows::dataDir() + u'/' + file, &error);
        ASSERT_TRUE(reader) << error.toStdString();
        CaptureReader::Frame f;
        while (reader->next(&f))
            frames[file].push_back(f);
        EXPECT_EQ(reader->badPackets(), 0) << file.toStdString();
    }

    auto bit = [](bool b) { return b ? u"1"_s : u"0"_s; };
    int checked = 0, wide = 0;
    QHash<QString, int> rowsPerFile;
    for (const ReferenceRows::Row &row : expected) {
        const QString file = row["file"];
        SCOPED_TRACE((file + u'#' + row["frame"]).toStdString());
        ++rowsPerFile[file];
        const auto &list = frames[file];
        const int index = row["frame"].toInt() - 1;
        ASSERT_TRUE(index >= 0 && index < int(list.size()));
        const CaptureReader::Frame &f = list[std::size_t(index)];
        const BssElements &e = f.elements;

        // Every decoded field beside the reference's reading of it, in one line each.
        const QString hidden = !e.ssid             ? u"absent"_s
                               : !e.ssidHidden()   ? u"no"_s
                               : e.ssid->isEmpty() ? u"empty"_s
                                                   : u"zeroed"_s;
        const QStringList decoded = {
            BssNetworkMapper::bssidText(f.observation.bssid),
            f.probeResponse ? u"probe_resp"_s : u"beacon"_s,
            e.ssid ? QString::fromLatin1(e.ssid->toHex()) : QString(),
            hidden,
            e.dsChannel ? QString::number(*e.dsChannel) : QString(),
            bit(f.observation.capability & BssNetworkMapper::kCapabilityPrivacy),
            bit(f.observation.capability & BssNetworkMapper::kCapabilityIBSS),
            e.rsn ? ElementText::suites(e.rsn->akmSuites) : QString(),
            e.rsn ? ElementText::suites(e.rsn->pairwiseSuites) : QString(),
            e.wpa ? ElementText::suites(e.wpa->akmSuites).remove(u"0050f2:"_s) : QString(),
            bit(e.htCapabilities.has_value()),
            e.htOperation ? bit(e.htOperation->is40MHz()) : QString(),
            e.htOperation ? QString::number(e.htOperation->primaryChannel) : QString(),
            bit(e.vhtCapabilities.has_value()),
            e.vhtOperation ? ElementText::vhtWidth(e.vhtOperation->width()) : QString(),
            bit(e.heCapabilities.has_value()),
            ElementText::rates(e),
            e.country ? QString::fromLatin1(e.country->left(2)) : QString(),
            bit(e.meshId.has_value())};
        QStringList reference;
        for (const char *column :
             {"bssid", "subtype", "ssid_hex", "ssid_hidden", "channel", "privacy", "ibss",
              "rsn_akms", "rsn_pairwise", "wpa_akms", "has_ht", "ht_40mhz", "ht_primary_channel",
              "has_vht", "vht_width", "has_he", "rates", "country", "mesh_id"})
            reference << row[column];
        EXPECT_EQ(decoded, reference);
        // The Prism and AVS frames end in bytes their headers do not announce (an FCS, most
        // likely): they must show up as a truncated last element, everything before intact.
        if (file.startsWith(QLatin1String("pypacker__packets_prism")) ||
            file.startsWith(QLatin1String("wireshark-wiki__testing"))) {
            EXPECT_TRUE(e.flags & BssElements::kTruncated);
        }
        // The frequency and signal where the reference reads them (from a radio header).
        EXPECT_EQ(std::pair(row["freq_mhz"].isEmpty() ? 0 : f.observation.frequencyMHz,
                            row["signal_dbm"].isEmpty() ? std::nullopt : f.signalDbm),
                  std::pair(row.number("freq_mhz"), row.optional("signal_dbm")));

        const CWNetwork::Data d = BssNetworkMapper::networkData(e, f.observation);
        // The announced channel wins over the frequency it was heard on.
        EXPECT_EQ(d.wlanChannel.channelNumber(), ReferenceRows::expectedChannel(row));
        ReferenceRows::checkBoundary(row, d);
        ++checked;

        // The real width against the reference's reading of the HT and VHT Operation
        // elements; a 40 MHz pair sits 10 MHz above or below the HT primary.
        const CWOperatingChannel c =
            BssNetworkMapper::operatingChannel(e, f.observation.frequencyMHz);
        const QString vht = row["vht_width"];
        const int width = vht == u"80" || vht == u"80+80" ? 80
                          : vht == u"160"                 ? 160
                          : row["ht_40mhz"] == u"1"       ? 40
                                                          : 20;
        EXPECT_EQ(c.widthMHz, width);
        EXPECT_EQ(c.isEightyPlusEighty(), vht == u"80+80");
        EXPECT_EQ(c.primaryChannel, ReferenceRows::expectedChannel(row));
        EXPECT_TRUE(c.coversPrimary());
        const int htPrimary =
            FrequencyPlan::frequencyForChannel(row["ht_primary_channel"].toInt(), c.band);
        if (width == 40) {
            EXPECT_EQ(c.centerMHz[0], htPrimary + (row["ht_sec_offset"] == u"1" ? 10 : -10));
        } else if (width == 20) {
            EXPECT_EQ(c.centerMHz[0], c.primaryMHz());
        }
        wide += width > 20 ? 1 : 0;
    }
    // Every network of every capture has its reference row.
    for (const QString &file : files)
        EXPECT_EQ(rowsPerFile.value(file), int(frames[file].size())) << file.toStdString();
    EXPECT_EQ(checked, int(expected.size()));
    EXPECT_GE(wide, 9); // the captures hold nine networks wider than 20 MHz
}

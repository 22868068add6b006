// SPDX-License-Identifier: GPL-3.0-or-later
// The decoder against real captured beacons and probe responses, checked field by field
// against an independent reference decoding (expected.tsv beside the captures).
#include "support/ElementText.h"
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

namespace {
struct Expected
{
    QHash<QString, QString> cell;
    QString operator[](const char *column) const { return cell.value(QLatin1String(column)); }
};

QString dataDir()
{
    return qEnvironmentVariable("CORVANE_TESTDATA_DIR") + QStringLiteral("/beacons");
}

std::vector<Expected> readExpected()
{
    std::vector<Expected> rows;
    QFile file(dataDir() + QStringLiteral("/expected.tsv"));
    if (!file.open(QIODevice::ReadOnly))
        return rows;
    const QStringList header = QString::fromUtf8(file.readLine()).trimmed().split(u'\t');
    while (!file.atEnd()) {
        QString line = QString::fromUtf8(file.readLine());
        line.chop(line.endsWith(u'\n') ? 1 : 0);
        if (line.isEmpty())
            continue;
        const QStringList cells = line.split(u'\t');
        Expected row;
        for (qsizetype i = 0; i < header.size() && i < cells.size(); ++i)
            row.cell.insert(header[i], cells[i]);
        rows.push_back(row);
    }
    return rows;
}

QString bit(bool b)
{
    return b ? QStringLiteral("1") : QStringLiteral("0");
}

// The boundary answers the reference row's label implies.
void checkBoundary(const Expected &row, const CWNetwork::Data &d)
{
    const QStringList label = row["label"].split(u' ');
    const QString security = label.value(0);
    auto has = [&](int s) { return (d.securities >> s) & 1u; };
    unsigned expectedSecurity = 0;
    const bool wpaToo = security.startsWith(QLatin1String("WPA/"));
    if (security == QLatin1String("open") || security == QLatin1String("OWE"))
        expectedSecurity = 1u << kCWSecurityNone;
    else if (security == QLatin1String("WEP"))
        expectedSecurity = 1u << kCWSecurityWEP;
    else if (security == QLatin1String("WPA-PSK"))
        expectedSecurity = 1u << kCWSecurityWPAPersonal;
    else if (security == QLatin1String("WPA-EAP"))
        expectedSecurity = 1u << kCWSecurityWPAEnterprise;
    else if (security.endsWith(QLatin1String("PSK")) || security.contains(QLatin1String("SAE")))
        expectedSecurity = wpaToo ? (1u << kCWSecurityWPAPersonal) |
                                        (1u << kCWSecurityWPAPersonalMixed) |
                                        (1u << kCWSecurityWPA2Personal)
                                  : 1u << kCWSecurityWPA2Personal;
    else if (security.endsWith(QLatin1String("EAP")))
        expectedSecurity = wpaToo ? (1u << kCWSecurityWPAEnterprise) |
                                        (1u << kCWSecurityWPAEnterpriseMixed) |
                                        (1u << kCWSecurityWPA2Enterprise)
                                  : 1u << kCWSecurityWPA2Enterprise;
    else
        ADD_FAILURE() << "unknown label " << security.toStdString();
    EXPECT_EQ(d.securities, expectedSecurity) << security.toStdString();
    EXPECT_FALSE(has(kCWSecurityDynamicWEP));

    const bool fiveGHz = label.contains(QLatin1String("5GHz"));
    EXPECT_EQ(d.wlanChannel.channelBand(), fiveGHz ? kCWChannelBand5GHz : kCWChannelBand2GHz);
    const bool ht = label.contains(QLatin1String("HT")) || label.contains(QLatin1String("HT40"));
    EXPECT_EQ(d.phyModes >> kCWPHYMode11n & 1u, ht ? 1u : 0u);
    if (fiveGHz) {
        EXPECT_EQ(d.phyModes >> kCWPHYMode11a & 1u, 1u);
        EXPECT_EQ(d.phyModes & ((1u << kCWPHYMode11b) | (1u << kCWPHYMode11g)), 0u);
    } else {
        EXPECT_EQ(d.phyModes >> kCWPHYMode11a & 1u, 0u);
        const bool bOnly = label.contains(QLatin1String("11b-only"));
        EXPECT_EQ(d.phyModes >> kCWPHYMode11g & 1u, bOnly ? 0u : 1u);
    }
    int width = kCWChannelWidth20MHz;
    if (label.contains(QLatin1String("HT40")))
        width = kCWChannelWidth40MHz;
    if (label.contains(QLatin1String("VHT:80")))
        width = kCWChannelWidth80MHz;
    if (label.contains(QLatin1String("VHT:160")) || label.contains(QLatin1String("VHT:80+80")))
        width = kCWChannelWidth160MHz;
    EXPECT_EQ(d.wlanChannel.channelWidth(), width);
    EXPECT_EQ(d.ibss, label.contains(QLatin1String("IBSS")));
    EXPECT_EQ(d.ssidPresent, !label.contains(QLatin1String("hidden-empty")) &&
                                 !label.contains(QLatin1String("hidden-zeroed")));
}
} // namespace

TEST(Beacons, RealCapturesMatchTheReferenceDecoding)
{
    const std::vector<Expected> expected = readExpected();
    ASSERT_GT(expected.size(), 50u) << "no reference rows in " << dataDir().toStdString();

    // Decode every capture in the folder once.
    QHash<QString, std::vector<CaptureReader::Frame>> frames;
    const QStringList files = QDir(dataDir()).entryList(
        {QStringLiteral("*.pcap"), QStringLiteral("*.pcapng")}, QDir::Files);
    ASSERT_FALSE(files.isEmpty());
    for (const QString &file : files) {
        QString error;
        auto reader = CaptureReader::open(dataDir() + u'/' + file, &error);
        ASSERT_TRUE(reader) << error.toStdString();
        CaptureReader::Frame f;
        while (reader->next(&f))
            frames[file].push_back(f);
        EXPECT_EQ(reader->badPackets(), 0) << file.toStdString();
    }

    int checked = 0;
    QHash<QString, int> rowsPerFile;
    for (const Expected &row : expected) {
        const QString file = row["file"];
        SCOPED_TRACE((file + u'#' + row["frame"]).toStdString());
        ++rowsPerFile[file];
        const auto &list = frames[file];
        const int index = row["frame"].toInt() - 1;
        ASSERT_TRUE(index >= 0 && index < int(list.size()));
        const CaptureReader::Frame &f = list[std::size_t(index)];
        const BssElements &e = f.elements;

        EXPECT_EQ(BssNetworkMapper::bssidText(f.observation.bssid), row["bssid"]);
        EXPECT_EQ(f.probeResponse, row["subtype"] == QLatin1String("probe_resp"));
        EXPECT_EQ(e.ssid ? QString::fromLatin1(e.ssid->toHex()) : QString(), row["ssid_hex"]);
        const QString hidden = row["ssid_hidden"];
        EXPECT_EQ(e.ssid.has_value(), hidden != QLatin1String("absent"));
        EXPECT_EQ(e.ssidHidden(), hidden != QLatin1String("no"));
        EXPECT_EQ(e.dsChannel ? QString::number(*e.dsChannel) : QString(), row["channel"]);
        EXPECT_EQ(bit(f.observation.capability & BssNetworkMapper::kCapabilityPrivacy),
                  row["privacy"]);
        EXPECT_EQ(bit(f.observation.capability & BssNetworkMapper::kCapabilityIBSS), row["ibss"]);
        EXPECT_EQ(e.rsn ? ElementText::suites(e.rsn->akmSuites) : QString(), row["rsn_akms"]);
        EXPECT_EQ(e.rsn ? ElementText::suites(e.rsn->pairwiseSuites) : QString(),
                  row["rsn_pairwise"]);
        EXPECT_EQ(e.wpa ? ElementText::suites(e.wpa->akmSuites).remove(QStringLiteral("0050f2:"))
                        : QString(),
                  row["wpa_akms"]);
        EXPECT_EQ(bit(e.htCapabilities.has_value()), row["has_ht"]);
        EXPECT_EQ(e.htOperation ? bit(e.htOperation->is40MHz()) : QString(), row["ht_40mhz"]);
        EXPECT_EQ(e.htOperation ? QString::number(e.htOperation->primaryChannel) : QString(),
                  row["ht_primary_channel"]);
        EXPECT_EQ(bit(e.vhtCapabilities.has_value()), row["has_vht"]);
        EXPECT_EQ(e.vhtOperation ? ElementText::vhtWidth(e.vhtOperation->width()) : QString(),
                  row["vht_width"]);
        EXPECT_EQ(bit(e.heCapabilities.has_value()), row["has_he"]);
        EXPECT_EQ(ElementText::rates(e), row["rates"]);
        EXPECT_EQ(e.country ? QString::fromLatin1(e.country->left(2)) : QString(), row["country"]);
        EXPECT_EQ(bit(e.meshId.has_value()), row["mesh_id"]);
        if (!row["freq_mhz"].isEmpty()) {
            EXPECT_EQ(f.observation.frequencyMHz, row["freq_mhz"].toInt());
        }
        if (!row["signal_dbm"].isEmpty()) {
            ASSERT_TRUE(f.signalDbm.has_value());
            EXPECT_EQ(*f.signalDbm, row["signal_dbm"].toInt());
        }

        const CWNetwork::Data d = BssNetworkMapper::networkData(e, f.observation);
        // The announced channel wins over the frequency it was heard on.
        QString channel = row["channel"];
        if (channel.isEmpty())
            channel = row["ht_primary_channel"];
        if (channel.isEmpty())
            channel = QString::number(FrequencyPlan::channelForFrequency(row["freq_mhz"].toInt()));
        EXPECT_EQ(QString::number(d.wlanChannel.channelNumber()), channel);
        checkBoundary(row, d);
        ++checked;
    }
    // Every network of every capture has its reference row.
    for (const QString &file : files)
        EXPECT_EQ(rowsPerFile.value(file), int(frames[file].size())) << file.toStdString();
    EXPECT_EQ(checked, int(expected.size()));
}

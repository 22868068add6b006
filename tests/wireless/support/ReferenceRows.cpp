// SPDX-License-Identifier: GPL-3.0-or-later
#include "ReferenceRows.h"

#include "wireless/CWTypes.h"
#include "wireless/ie/FrequencyPlan.h"

#include <QFile>
#include <QStringList>

#include <gtest/gtest.h>

namespace ReferenceRows {

QString dataDir()
{
    return qEnvironmentVariable("CORVANE_TESTDATA_DIR") + QStringLiteral("/beacons");
}

std::vector<Row> read(const QString &path)
{
    std::vector<Row> rows;
    QFile file(path.isEmpty() ? dataDir() + QStringLiteral("/expected.tsv") : path);
    if (!file.open(QIODevice::ReadOnly))
        return rows;
    const QStringList header = QString::fromUtf8(file.readLine()).trimmed().split(u'\t');
    while (!file.atEnd()) {
        QString line = QString::fromUtf8(file.readLine());
        line.chop(line.endsWith(u'\n') ? 1 : 0);
        if (line.isEmpty() || line.startsWith(u'#'))
            continue;
        const QStringList cells = line.split(u'\t');
        Row row;
        for (qsizetype i = 0; i < header.size() && i < cells.size(); ++i)
            row.cell.insert(header[i], cells[i]);
        rows.push_back(row);
    }
    return rows;
}

std::vector<Row> table(const char *name)
{
    const QString path = qEnvironmentVariable("CORVANE_SOURCE_DIR") +
                         QStringLiteral("/tests/wireless/data/") + QLatin1String(name) +
                         QStringLiteral(".tsv");
    std::vector<Row> rows = read(path);
    EXPECT_FALSE(rows.empty()) << "no rows in " << path.toStdString();
    return rows;
}

unsigned bits(const QString &list)
{
    unsigned out = 0;
    for (const QString &n : list.split(u',', Qt::SkipEmptyParts))
        out |= 1u << n.toInt();
    return out;
}

int expectedChannel(const Row &row)
{
    if (!row["channel"].isEmpty())
        return row["channel"].toInt();
    if (!row["ht_primary_channel"].isEmpty())
        return row["ht_primary_channel"].toInt();
    return FrequencyPlan::channelForFrequency(row["freq_mhz"].toInt());
}

// The boundary answers the reference row's label implies.
void checkBoundary(const Row &row, const CWNetwork::Data &d)
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
} // namespace ReferenceRows

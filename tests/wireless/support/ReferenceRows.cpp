// SPDX-License-Identifier: GPL-3.0-or-later
#include "ReferenceRows.h"

#include "wireless/CWTypes.h"
#include "wireless/ie/FrequencyPlan.h"

#include <QFile>
#include <QStringList>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

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
    for (const QString &line : QString::fromUtf8(file.readAll()).split(u'\n')) {
        if (line.isEmpty() || line.startsWith(u'#'))
            continue;
        const QStringList cells = line.split(u'\t');
        Row &row = rows.emplace_back();
        for (qsizetype i = 0; i < header.size() && i < cells.size(); ++i)
            row.cell.insert(header[i], cells[i]);
    }
    return rows;
}

std::vector<Row> table(const char *name)
{
    const QString path = u"%1/tests/wireless/data/%2.tsv"_s.arg(
        qEnvironmentVariable("CORVANE_SOURCE_DIR"), QLatin1String(name));
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

// The boundary answers the reference row's label implies, e.g. "WPA/WPA2-PSK 5GHz HT40 VHT:80".
void checkBoundary(const Row &row, const CWNetwork::Data &d)
{
    const QStringList label = row["label"].split(u' ');
    const QString security = label.value(0);
    const bool wpaToo = security.startsWith(QLatin1String("WPA/"));
    const std::pair<bool, QString> kinds[] = {
        {security == u"open" || security == u"OWE", u"0"_s},
        {security == u"WEP", u"1"_s},
        {security == u"WPA-PSK", u"2"_s},
        {security == u"WPA-EAP", u"7"_s},
        {security.endsWith(u"PSK") || security.contains(u"SAE"), wpaToo ? u"2,3,4"_s : u"4"_s},
        {security.endsWith(u"EAP"), wpaToo ? u"7,8,9"_s : u"9"_s}};
    const auto kind =
        std::find_if(std::begin(kinds), std::end(kinds), [](const auto &k) { return k.first; });
    ASSERT_NE(kind, std::end(kinds)) << "unknown label " << security.toStdString();
    EXPECT_EQ(d.securities, bits(kind->second)) << security.toStdString();

    const bool fiveGHz = label.contains(u"5GHz"_s);
    const bool ht = label.contains(u"HT"_s) || label.contains(u"HT40"_s);
    const bool bOnly = label.contains(u"11b-only"_s);
    // a, g and n (and no b on 5 GHz) as the band and the label imply them.
    EXPECT_EQ(d.phyModes & bits(fiveGHz ? u"1,2,3,4"_s : u"1,3,4"_s),
              bits(fiveGHz ? u"1"_s
                   : bOnly ? u""_s
                           : u"3"_s) |
                  (ht ? 1u << kCWPHYMode11n : 0u));
    const int width = label.contains(u"VHT:160"_s) || label.contains(u"VHT:80+80"_s)
                          ? kCWChannelWidth160MHz
                      : label.contains(u"VHT:80"_s) ? kCWChannelWidth80MHz
                      : label.contains(u"HT40"_s)   ? kCWChannelWidth40MHz
                                                    : kCWChannelWidth20MHz;
    EXPECT_EQ(d.wlanChannel, CWChannel(d.wlanChannel.channelNumber(),
                                       fiveGHz ? kCWChannelBand5GHz : kCWChannelBand2GHz, width));
    EXPECT_EQ(d.ibss, label.contains(u"IBSS"_s));
    EXPECT_EQ(d.ssidPresent,
              !label.contains(u"hidden-empty"_s) && !label.contains(u"hidden-zeroed"_s));
}
} // namespace ReferenceRows

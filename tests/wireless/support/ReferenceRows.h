// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWNetwork.h"

#include <QHash>
#include <QString>

#include <optional>
#include <vector>

// The reference decodings of the captured beacons (expected.tsv beside the captures), the
// boundary answers each row's label implies, and the tables of tests/wireless/data (tab-separated
// with a header line; lines starting with # are comments).
namespace ReferenceRows {
struct Row
{
    QHash<QString, QString> cell;
    QString operator[](const char *column) const { return cell.value(QLatin1String(column)); }
    int number(const char *column) const { return (*this)[column].toInt(nullptr, 0); }
    std::optional<int> optional(const char *column) const
    {
        return (*this)[column].isEmpty() ? std::nullopt : std::optional(number(column));
    }
};

QString dataDir();
std::vector<Row> read(const QString &path = {}); // empty: the reference decodings
std::vector<Row> table(const char *name);        // tests/wireless/data/<name>.tsv
unsigned bits(const QString &list);              // "2,3,4": bits 2, 3 and 4 set
// The channel the network announces (DS, else HT primary), else that of the heard frequency.
int expectedChannel(const Row &row);
// Checks security bits, band, PHY modes, width, IBSS and hidden name against the label.
void checkBoundary(const Row &row, const CWNetwork::Data &data);
} // namespace ReferenceRows

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWNetwork.h"

#include <QHash>
#include <QString>

#include <vector>

// The reference decodings of the captured beacons (expected.tsv beside the captures) and the
// boundary answers each row's label implies.
namespace ReferenceRows {
struct Row
{
    QHash<QString, QString> cell;
    QString operator[](const char *column) const { return cell.value(QLatin1String(column)); }
};

QString dataDir();
std::vector<Row> read();
// The channel the network announces (DS, else HT primary), else that of the heard frequency.
int expectedChannel(const Row &row);
// Checks security bits, band, PHY modes, width, IBSS and hidden name against the label.
void checkBoundary(const Row &row, const CWNetwork::Data &data);
} // namespace ReferenceRows

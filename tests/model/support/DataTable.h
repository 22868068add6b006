// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QHash>
#include <QStringList>

#include <vector>

// The tables of tests/model/data: tab-separated, a header line naming the columns, lines
// starting with # are comments.
struct DataRow
{
    QHash<QString, QString> cell;
    QString operator[](const char *column) const { return cell.value(QLatin1String(column)); }
};

inline std::vector<DataRow> readTable(const char *name)
{
    QFile file(qEnvironmentVariable("CORVANE_SOURCE_DIR") + QStringLiteral("/tests/model/data/") +
               QLatin1String(name) + QStringLiteral(".tsv"));
    std::vector<DataRow> rows;
    if (!file.open(QIODevice::ReadOnly))
        return rows;
    const QStringList header = QString::fromUtf8(file.readLine()).trimmed().split(u'\t');
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).chopped(1);
        if (line.isEmpty() || line.startsWith(u'#'))
            continue;
        DataRow row;
        const QStringList cells = line.split(u'\t');
        for (qsizetype i = 0; i < header.size() && i < cells.size(); ++i)
            row.cell.insert(header[i], cells[i]);
        rows.push_back(row);
    }
    return rows;
}

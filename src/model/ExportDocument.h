// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QFileDevice;

#include "model/NetworkList.h"

#include <QDateTime>
#include <QList>
#include <QString>

// The two export documents, built whole in memory from the records and the table's rows
// (indices into the list, in table order). Values go in as they are: no quoting and no
// escaping, so a name holding a tab or "<" lands in the file verbatim.
class ExportDocument
{
public:
    // Head line plus one tab-separated line per row.
    static QString tabSeparated(const NetworkList &networks, const QList<quint64> &rows);

    // Document header (dated `date`), table head, one table row per row, closing tags.
    static QString html(const NetworkList &networks, const QList<quint64> &rows,
                        const QDateTime &date);
    static QString html(const NetworkList &networks, const QList<quint64> &rows);

    static QString htmlHeader(const QDateTime &date);
    // "2024-05-01 14:03:09 +0200": date, 24-hour time and the offset from UTC.
    static QString dateDescription(const QDateTime &date);

    // Writes UTF-8 atomically (a temporary file moved into place), replacing any file at
    // `path`. On failure returns false and, if asked, the reason in `errorText`.
    static bool writeDocument(const QString &path, const QString &text, QString *errorText);
    // The system's reason for a failed write of `file`, given errno as it was right after.
    static QString failureReason(const QFileDevice &file, int savedErrno);
};

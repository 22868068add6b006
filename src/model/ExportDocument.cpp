// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/ExportDocument.h"

#include "util/Clock.h"

#include <QSaveFile>

namespace {

// Rows past the end of the list are skipped silently: the table may hold indices of a
// list that was replaced since.
template <typename RowText>
void appendRows(QString &document, const NetworkList &networks, const QList<quint64> &rows,
                RowText rowText)
{
    const auto count = static_cast<quint64>(networks.count());
    for (const quint64 index : rows) {
        if (index < count)
            document += rowText(*networks.at(static_cast<qsizetype>(index)));
    }
}

} // namespace

QString ExportDocument::tabSeparated(const NetworkList &networks, const QList<quint64> &rows)
{
    QString document = NetworkObject::csvHeadString();
    appendRows(document, networks, rows,
               [](const NetworkObject &record) { return record.csvString(); });
    return document;
}

QString ExportDocument::html(const NetworkList &networks, const QList<quint64> &rows,
                             const QDateTime &date)
{
    QString document = htmlHeader(date) + NetworkObject::htmlTableHeadString();
    appendRows(document, networks, rows,
               [](const NetworkObject &record) { return record.htmlRowString(); });
    document += QLatin1StringView("</table></body></html>");
    return document;
}

QString ExportDocument::html(const NetworkList &networks, const QList<quint64> &rows)
{
    return html(networks, rows, Clock::now());
}

QString ExportDocument::htmlHeader(const QDateTime &date)
{
    const QString site = QStringLiteral(CORVANE_WEB_ADDRESS);
    return QLatin1StringView("<html><head><meta http-equiv=\"Content-type\" "
                             "content=\"text/html; charset=utf-8\">") +
           QLatin1StringView("<meta name=\"description\" content=\"Created by Corvane (") + site +
           QLatin1StringView(")\">") +
           QLatin1StringView("<title> WiFi Details - Created by Corvane (") + site +
           QLatin1StringView(")</title>") +
           QLatin1StringView("<style>th{background-color:#666;\ncolor:#eee;}</style></head>"
                             "<body><h2>WiFi Details</h2><div>") +
           dateDescription(date) + QLatin1StringView("</div><br><br><table>");
}

QString ExportDocument::dateDescription(const QDateTime &date)
{
    if (!date.isValid())
        return QString();
    const QDate d = date.date();
    const QTime t = date.time();
    const int offsetMinutes = date.offsetFromUtc() / 60;
    const int magnitude = offsetMinutes < 0 ? -offsetMinutes : offsetMinutes;
    return QString::asprintf("%04d-%02d-%02d %02d:%02d:%02d %c%02d%02d", d.year(), d.month(),
                             d.day(), t.hour(), t.minute(), t.second(),
                             offsetMinutes < 0 ? '-' : '+', magnitude / 60, magnitude % 60);
}

bool ExportDocument::writeDocument(const QString &path, const QString &text, QString *errorText)
{
    QSaveFile file(path);
    const QByteArray bytes = text.toUtf8();
    // An uncommitted QSaveFile removes its temporary file, leaving any old file intact.
    const bool ok =
        file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
    if (!ok && errorText)
        *errorText = file.errorString();
    return ok;
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/ExportDocument.h"

#include "util/Clock.h"

#include <QFileInfo>

#include <QSaveFile>
#include <cerrno>
#include <cstring>

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

QString ExportDocument::failureReason(const QFileDevice &file, int savedErrno)
{
    // Qt loses the system's reason on some paths (a failed flush reads "Unknown error"); the
    // errno saved right after the failure still has it.
    const QString text = file.errorString();
    if (savedErrno != 0 && (text.isEmpty() || text == QLatin1String("Unknown error")))
        return QString::fromLocal8Bit(std::strerror(savedErrno));
    return text;
}

bool ExportDocument::writeDocument(const QString &path, const QString &text, QString *errorText)
{
    const QByteArray bytes = text.toUtf8();
    const QFileInfo target(path);
    int savedErrno = 0;
    auto step = [&savedErrno](bool ok) {
        if (!ok && savedErrno == 0)
            savedErrno = errno;
        return ok;
    };
    errno = 0;
    if (target.exists() && !target.isFile()) {
        // A device or a pipe cannot be replaced by renaming a finished copy over it (and as
        // root that would swap the device for a plain file): write to it directly, checking
        // every step up to the close, where a full device reports itself.
        QFile device(path);
        bool ok = step(device.open(QIODevice::WriteOnly)) &&
                  step(device.write(bytes) == bytes.size()) && step(device.flush());
        QString reason = failureReason(device, savedErrno);
        device.close();
        if (ok && device.error() != QFileDevice::NoError) {
            ok = false;
            reason = failureReason(device, errno);
        }
        if (!ok && errorText)
            *errorText = reason;
        return ok;
    }
    QSaveFile file(path);
    // The explicit flush matters: a commit whose buffered bytes no longer fit would otherwise
    // rename an empty file over the old one. An uncommitted QSaveFile removes its temporary
    // file, leaving any old file intact.
    const bool ok = step(file.open(QIODevice::WriteOnly)) &&
                    step(file.write(bytes) == bytes.size()) && step(file.flush()) &&
                    step(file.commit());
    if (!ok && errorText)
        *errorText = failureReason(file, savedErrno);
    return ok;
}

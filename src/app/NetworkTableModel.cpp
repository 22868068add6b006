// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/NetworkTableModel.h"

#include "app/AppDelegate.h"
#include "model/NetworkObject.h"

#include <QImage>
#include <QPixmap>
#include <QScopeGuard>
#include <algorithm>

namespace {
struct ColumnInfo
{
    const char *identifier;
    const char *title;
};

constexpr ColumnInfo kColumns[NetworkTableModel::ColumnCount] = {
    {"icon", ""},
    {"NETWORK_NAME", "Network Name"},
    {"BSSID", "BSSID"},
    {"comment", "Comment"},
    {"CHANNEL", "Channel"},
    {"BAND", "Band"},
    {"PHY", "PHY Mode"},
    {"SECURITY_MODE", "Security"},
    {"SIGNAL", "Signal"},
    {"AVG", "Avg"},
    {"MAX", "Max"},
    {"SNR", "SNR"},
    {"LEVEL", "Level"},
    {"NETWORK_MODE", "IBSS"},
    {"lastSeen", "Last Seen"},
};
} // namespace

NetworkTableModel::NetworkTableModel(AppDelegate *controller, QObject *parent)
    : QAbstractTableModel(parent), m_controller(controller)
{
}

QString NetworkTableModel::identifierForColumn(int column)
{
    if (column < 0 || column >= ColumnCount)
        return {};
    return QString::fromLatin1(kColumns[column].identifier);
}

int NetworkTableModel::columnForIdentifier(const QString &identifier)
{
    for (int c = 0; c < ColumnCount; ++c) {
        if (identifier == QLatin1String(kColumns[c].identifier))
            return c;
    }
    return -1;
}

int NetworkTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int NetworkTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant NetworkTableModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const int column = index.column();
    if (column == IconColumn) {
        if (role != Qt::DecorationRole)
            return {};
        const QVariant v =
            m_controller->objectValueForTableColumn(identifierForColumn(column), index.row());
        return v.isValid() ? QVariant(QPixmap::fromImage(v.value<QImage>())) : QVariant();
    }
    if (role == Qt::TextAlignmentRole) {
        switch (column) {
        case ChannelColumn:
        case SignalColumn:
        case AvgColumn:
        case MaxColumn:
        case SnrColumn:
            return int(Qt::AlignRight | Qt::AlignVCenter);
        default:
            return {};
        }
    }
    if (role != Qt::DisplayRole && role != Qt::EditRole && role != Qt::ToolTipRole)
        return {};
    if (role == Qt::ToolTipRole && column != NameColumn && column != CommentColumn)
        return {};
    return m_controller->objectValueForTableColumn(identifierForColumn(column), index.row());
}

bool NetworkTableModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid() || role != Qt::EditRole)
        return false;
    m_controller->setObjectValue(value, identifierForColumn(index.column()), index.row());
    return true;
}

Qt::ItemFlags NetworkTableModel::flags(const QModelIndex &index) const
{
    Qt::ItemFlags f = QAbstractTableModel::flags(index);
    if (index.column() == CommentColumn)
        f |= Qt::ItemIsEditable;
    return f;
}

QVariant NetworkTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount)
        return {};
    if (role == Qt::DisplayRole)
        return tr(kColumns[section].title);
    return {};
}

NetworkTableModel::Row NetworkTableModel::rowOf(const NetworkObject &record)
{
    return Row{&record, record.cwNetwork().get(), record.comment()};
}

QList<NetworkTableModel::Row> NetworkTableModel::currentRows() const
{
    const NetworkList &list = m_controller->networks();
    QList<Row> rows;
    const QList<quint64> &filtered = m_controller->filteredNetworks();
    rows.reserve(filtered.size());
    for (quint64 i : filtered) {
        // A row past the list reads as empty cells, as the data source answers for it.
        rows.append(i < quint64(list.size()) ? rowOf(*list.at(qsizetype(i))) : Row{});
    }
    return rows;
}

namespace {
// Whether `part` is `whole` with some rows left out, order kept (records compared).
template <typename Row> bool isSubsequence(const QList<Row> &part, const QList<Row> &whole)
{
    qsizetype matched = 0;
    for (const Row &row : whole) {
        if (matched < part.size() && row.record == part.at(matched).record)
            ++matched;
    }
    return matched == part.size();
}
} // namespace

// The rows as they were, in the same order, with new ones between them: insert those.
bool NetworkTableModel::applyInsertions(const QList<Row> &now)
{
    if (!isSubsequence(m_rows, now))
        return false;
    const QList<Row> old = m_rows;
    qsizetype j = 0;
    for (qsizetype i = 0; i < now.size();) {
        if (j < old.size() && now.at(i).record == old.at(j).record) {
            ++i;
            ++j;
            continue;
        }
        qsizetype end = i;
        while (end < now.size() && (j >= old.size() || now.at(end).record != old.at(j).record))
            ++end;
        beginInsertRows({}, int(i), int(end - 1));
        m_rows.insert(i, end - i, Row{});
        for (qsizetype k = i; k < end; ++k)
            m_rows[k] = now.at(k);
        endInsertRows();
        i = end;
    }
    return true;
}

// Some of the rows as they were, in the same order, and nothing new: remove the rest.
bool NetworkTableModel::applyRemovals(const QList<Row> &now)
{
    if (!isSubsequence(now, m_rows))
        return false;
    const QList<Row> old = m_rows;
    qsizetype i = 0; // row in `now`, and in the model as far as it is done
    for (qsizetype j = 0; j < old.size();) {
        if (i < now.size() && old.at(j).record == now.at(i).record) {
            ++i;
            ++j;
            continue;
        }
        qsizetype count = 0;
        while (j < old.size() && (i >= now.size() || old.at(j).record != now.at(i).record)) {
            ++j;
            ++count;
        }
        beginRemoveRows({}, int(i), int(i + count - 1));
        m_rows.remove(i, count);
        endRemoveRows();
    }
    return true;
}

void NetworkTableModel::emitChangedRows(const QList<Row> &now)
{
    qsizetype first = -1;
    auto flush = [&](qsizetype endRow) {
        if (first >= 0)
            Q_EMIT dataChanged(index(int(first), 0), index(int(endRow - 1), ColumnCount - 1));
        first = -1;
    };
    for (qsizetype i = 0; i < now.size(); ++i) {
        const Row &was = m_rows.at(i);
        const Row &is = now.at(i);
        const bool changed = was.scanned != is.scanned || was.comment != is.comment;
        m_rows[i] = is;
        if (changed && first < 0)
            first = i;
        else if (!changed)
            flush(i);
    }
    flush(now.size());
    // "Last Seen" counts from now, so it moves on in every row.
    if (!now.isEmpty())
        Q_EMIT dataChanged(index(0, LastSeenColumn), index(int(now.size() - 1), LastSeenColumn));
}

void NetworkTableModel::reload()
{
    m_reloading = true;
    auto done = qScopeGuard([this] { m_reloading = false; });
    const QList<Row> now = currentRows();
    const bool sameOrder =
        now.size() == m_rows.size() &&
        std::equal(now.begin(), now.end(), m_rows.begin(),
                   [](const Row &a, const Row &b) { return a.record == b.record; });
    if (!sameOrder && !(now.size() > m_rows.size() && applyInsertions(now)) &&
        !(now.size() < m_rows.size() && applyRemovals(now))) {
        beginResetModel();
        m_rows = now;
        endResetModel();
        return;
    }
    emitChangedRows(now);
}

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

NetworkTableModel::Rows NetworkTableModel::currentRows() const
{
    const NetworkList &list = m_controller->networks();
    const QList<quint64> &filtered = m_controller->filteredNetworks();
    Rows rows;
    rows.reserve(std::size_t(filtered.size()));
    for (quint64 i : filtered) {
        // A row past the list reads as empty cells, as the data source answers for it.
        rows.push_back(i < quint64(list.size()) ? list.at(qsizetype(i)).get() : nullptr);
    }
    return rows;
}

int NetworkTableModel::rowOfRecord(const NetworkObject *record) const
{
    const auto it = std::find(m_rows.begin(), m_rows.end(), record);
    return record && it != m_rows.end() ? int(it - m_rows.begin()) : -1;
}

namespace {
// Whether `part` is `whole` with some rows left out, order kept.
template <typename Rows> bool isSubsequence(const Rows &part, const Rows &whole)
{
    std::size_t matched = 0;
    for (const auto *row : whole) {
        if (matched < part.size() && row == part[matched])
            ++matched;
    }
    return matched == part.size();
}
} // namespace

// The rows as they were, in the same order, with new ones between them: insert those.
bool NetworkTableModel::applyInsertions(const Rows &now,
                                        std::vector<const NetworkObject *> *inserted)
{
    if (!isSubsequence(m_rows, now))
        return false;
    const Rows old = m_rows;
    std::size_t j = 0;
    for (std::size_t i = 0; i < now.size();) {
        if (j < old.size() && now[i] == old[j]) {
            ++i;
            ++j;
            continue;
        }
        std::size_t end = i;
        while (end < now.size() && (j >= old.size() || now[end] != old[j]))
            ++end;
        beginInsertRows({}, int(i), int(end - 1));
        m_rows.insert(m_rows.begin() + qsizetype(i), now.begin() + qsizetype(i),
                      now.begin() + qsizetype(end));
        endInsertRows();
        inserted->insert(inserted->end(), now.begin() + qsizetype(i), now.begin() + qsizetype(end));
        i = end;
    }
    return true;
}

// Some of the rows as they were, in the same order, and nothing new: remove the rest.
bool NetworkTableModel::applyRemovals(const Rows &now)
{
    if (!isSubsequence(now, m_rows))
        return false;
    const Rows old = m_rows;
    std::size_t i = 0; // row in `now`, and in the model as far as it is done
    for (std::size_t j = 0; j < old.size();) {
        if (i < now.size() && old[j] == now[i]) {
            ++i;
            ++j;
            continue;
        }
        std::size_t count = 0;
        while (j < old.size() && (i >= now.size() || old[j] != now[i])) {
            ++j;
            ++count;
        }
        beginRemoveRows({}, int(i), int(i + count - 1));
        m_rows.erase(m_rows.begin() + qsizetype(i), m_rows.begin() + qsizetype(i + count));
        endRemoveRows();
    }
    return true;
}

void NetworkTableModel::emitChangedRows(std::vector<const NetworkObject *> changed)
{
    std::sort(changed.begin(), changed.end());
    qsizetype first = -1;
    auto flush = [&](qsizetype endRow) {
        if (first >= 0)
            Q_EMIT dataChanged(index(int(first), 0), index(int(endRow - 1), ColumnCount - 1));
        first = -1;
    };
    const qsizetype n = qsizetype(m_rows.size());
    if (!changed.empty()) {
        for (qsizetype i = 0; i < n; ++i) {
            const NetworkObject *record = m_rows[std::size_t(i)];
            const bool isChanged =
                record && std::binary_search(changed.begin(), changed.end(), record);
            if (isChanged && first < 0)
                first = i;
            else if (!isChanged)
                flush(i);
        }
        flush(n);
    }
    // "Last Seen" counts from now, so it moves on in every row.
    if (n > 0)
        Q_EMIT dataChanged(index(0, LastSeenColumn), index(int(n - 1), LastSeenColumn));
}

void NetworkTableModel::reload()
{
    m_reloading = true;
    auto done = qScopeGuard([this] { m_reloading = false; });
    const Rows now = currentRows();
    const QSet<const NetworkObject *> taken = m_controller->takeChangedRecords();
    std::vector<const NetworkObject *> changed(taken.begin(), taken.end());
    std::vector<const NetworkObject *> inserted;
    const bool sameOrder = now == m_rows;
    if (!sameOrder && !(now.size() > m_rows.size() && applyInsertions(now, &inserted)) &&
        !(now.size() < m_rows.size() && applyRemovals(now))) {
        beginResetModel();
        m_rows = now;
        endResetModel();
        return;
    }
    // Rows inserted just now are new to the view already.
    if (!inserted.empty()) {
        std::sort(inserted.begin(), inserted.end());
        std::erase_if(changed, [&inserted](const NetworkObject *record) {
            return std::binary_search(inserted.begin(), inserted.end(), record);
        });
    }
    emitChangedRows(std::move(changed));
}

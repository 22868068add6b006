// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/NetworkTableModel.h"

#include "app/AppDelegate.h"

#include <QImage>
#include <QPixmap>

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
    return parent.isValid() ? 0 : m_rows;
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

void NetworkTableModel::reload()
{
    const int rows = int(m_controller->numberOfRowsInTableView());
    if (rows != m_rows) {
        beginResetModel();
        m_rows = rows;
        endResetModel();
    } else if (rows > 0) {
        Q_EMIT dataChanged(index(0, 0), index(rows - 1, ColumnCount - 1));
    }
}

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractTableModel>
#include <QList>
#include <QStringList>

#include <optional>
#include <vector>

class AppDelegate;
class NetworkObject;

// A thin model over the controller: rows and cells come from AppDelegate by column
// identifier, edits of the comment column go back to it. It holds no data of its own.
class NetworkTableModel final : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column {
        IconColumn,
        NameColumn,
        BssidColumn,
        CommentColumn,
        ChannelColumn,
        BandColumn,
        PhyColumn,
        SecurityColumn,
        SignalColumn,
        AvgColumn,
        MaxColumn,
        SnrColumn,
        LevelColumn,
        ModeColumn,
        LastSeenColumn,
        ColumnCount
    };

    explicit NetworkTableModel(AppDelegate *controller, QObject *parent = nullptr);

    static QString identifierForColumn(int column);
    static int columnForIdentifier(const QString &identifier);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    // Brings the rows in step with the controller's filtered list: rows that appeared are
    // inserted and rows that went are removed (so the view keeps its scroll position and
    // selection), rows whose record changed since the last reload get a dataChanged of their
    // own; only a list that was rebuilt in another order is reset. Records are compared by
    // identity only: what changed in them the controller says (takeChangedRecords()).
    void reload();
    bool isReloading() const { return m_reloading; }
    // The first row showing `record`, or -1.
    int rowOfRecord(const NetworkObject *record) const;

private:
    using Rows = std::vector<const NetworkObject *>;
    Rows currentRows() const;
    bool applyInsertions(const Rows &now, std::vector<const NetworkObject *> *inserted);
    bool applyRemovals(const Rows &now);
    void emitChangedRows(std::vector<const NetworkObject *> changed);

    AppDelegate *m_controller;
    Rows m_rows; // the record each row showed at the last reload (null: past the list)
    bool m_reloading = false;
};

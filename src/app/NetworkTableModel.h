// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractTableModel>
#include <QList>
#include <QStringList>

#include <optional>

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
    // selection), changed rows get a dataChanged of their own; only a list that was
    // rebuilt in another order is reset.
    void reload();
    bool isReloading() const { return m_reloading; }

private:
    // What a row showed when it was last read, to tell which rows changed.
    struct Row
    {
        const NetworkObject *record = nullptr;
        const void *scanned = nullptr; // the latest scan result: a new one per update
        std::optional<QString> comment;
    };
    static Row rowOf(const NetworkObject &record);
    QList<Row> currentRows() const;
    bool applyInsertions(const QList<Row> &now);
    bool applyRemovals(const QList<Row> &now);
    void emitChangedRows(const QList<Row> &now);

    AppDelegate *m_controller;
    QList<Row> m_rows;
    bool m_reloading = false;
};

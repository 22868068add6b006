// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractTableModel>
#include <QStringList>

class AppDelegate;

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

    // Re-read everything: a reset when the number of rows changed, else one dataChanged.
    void reload();

private:
    AppDelegate *m_controller;
    int m_rows = 0;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTableView>

// The network table. It reports the cell being edited, so the once-a-second reload can
// leave a comment that is being typed alone.
class NetworkTableView : public QTableView
{
    Q_OBJECT
public:
    explicit NetworkTableView(QWidget *parent = nullptr) : QTableView(parent) {}

    // -1 unless an editor is open.
    int editedRow() const { return state() == EditingState ? currentIndex().row() : -1; }
    int editedColumn() const { return state() == EditingState ? currentIndex().column() : -1; }
};

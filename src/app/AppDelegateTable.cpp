// SPDX-License-Identifier: GPL-3.0-or-later
// The network table: filtering, cells, comment edits and the selection.
#include "app/AppDelegate.h"
#include "app/LevelBarDelegate.h"
#include "app/NetworkTableModel.h"
#include "app/NetworkTableView.h"
#include "model/SurveyEngine.h"
#include "prefs/PreferenceStore.h"
#include "ui_MainWindow.h"
#include "util/StringUtil.h"

#include <QHeaderView>
#include <QItemSelectionModel>

void AppDelegate::setupTable()
{
    NetworkTableView *table = ui->scanResultsTable;
    if (!m_tableModel) {
        m_tableModel = new NetworkTableModel(this, this);
        table->setModel(m_tableModel);
        table->setItemDelegateForColumn(NetworkTableModel::LevelColumn,
                                        new LevelBarDelegate(table));
        connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
                &AppDelegate::tableViewSelectionDidChange);
        connect(ui->searchField, &QLineEdit::textChanged, this,
                [this] { controlTextDidChange(ui->searchField); });
    }
    QHeaderView *header = table->horizontalHeader();
    header->setStretchLastSection(false);
    header->setSectionResizeMode(QHeaderView::Interactive);
    header->setHighlightSections(false);
    table->verticalHeader()->setVisible(false);
    table->verticalHeader()->setDefaultSectionSize(22);
    table->setIconSize(QSize(19, 17));
    const int widths[NetworkTableModel::ColumnCount] = {28, 160, 130, 120, 62, 62, 100, 140,
                                                        58, 50,  50,  52,  80, 48, 90};
    for (int c = 0; c < NetworkTableModel::ColumnCount; ++c)
        table->setColumnWidth(c, widths[c]);
}

void AppDelegate::filterNetworks()
{
    // The engine filters and then asks for reloadTableData() through listChanged.
    m_engine->filterNetworks();
}

void AppDelegate::reloadTableData()
{
    NetworkTableView *table = ui->scanResultsTable;
    // Leave a comment that is being typed alone; the next cycle tries again.
    if (table->editedRow() >= 0 && table->editedColumn() >= 0)
        return;
    m_tableModel->reload();
    if (!m_selectedNetwork)
        return;
    const QString selected = m_selectedNetwork->bssid();
    const NetworkList &list = networks();
    const QList<quint64> &rows = filteredNetworks();
    // Without repeated BSSIDs the first row with the selected BSSID is the row of the one
    // record with it: found among the rows' records, not by reading each record.
    int from = 0;
    if (!list.hasDuplicateBssids()) {
        const NetworkObjectRef record = list.networkWithBssid(selected);
        from = record ? m_tableModel->rowOfRecord(record.get()) : -1;
        if (from < 0)
            return;
    }
    for (int row = from; row < m_tableModel->rowCount(); ++row) {
        const quint64 i = rows.at(row);
        if (i < quint64(list.size()) && list.at(qsizetype(i))->bssid() == selected) {
            QItemSelectionModel *selection = table->selectionModel();
            if (selection->isRowSelected(row) && selection->selectedRows().size() == 1)
                return;
            // Select without scrolling: a user who scrolled away stays where they are.
            const QModelIndex index = m_tableModel->index(row, 0);
            selection->select(index,
                              QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
            selection->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
            return;
        }
    }
}

qsizetype AppDelegate::numberOfRowsInTableView() const
{
    return filteredNetworks().size();
}

QVariant AppDelegate::objectValueForTableColumn(const QString &identifier, qsizetype row) const
{
    // The row is checked against the full list, as the table has always done; the filtered
    // list is checked too so that a stale row can never read past it.
    const NetworkList &list = networks();
    const QList<quint64> &rows = filteredNetworks();
    if (row < 0 || row >= list.size() || row >= rows.size())
        return {};
    const quint64 index = rows.at(row);
    if (index >= quint64(list.size()))
        return {};
    NetworkObject &r = *list.at(qsizetype(index));
    auto text = [](const std::optional<QString> &t) { return t ? QVariant(*t) : QVariant(); };

    if (identifier == QLatin1String("NETWORK_NAME"))
        return text(r.name());
    if (identifier == QLatin1String("BSSID"))
        return r.bssid();
    if (identifier == QLatin1String("CHANNEL"))
        return r.channel();
    if (identifier == QLatin1String("BAND"))
        return r.channelBandString();
    if (identifier == QLatin1String("PHY"))
        return r.phyMode();
    if (identifier == QLatin1String("SECURITY_MODE"))
        return text(r.security());
    if (identifier == QLatin1String("SIGNAL"))
        return r.signalString();
    if (identifier == QLatin1String("AVG"))
        return NetworkObject::stringOfSignal(r.avgSignal());
    if (identifier == QLatin1String("MAX"))
        return NetworkObject::stringOfSignal(r.maxSignal());
    if (identifier == QLatin1String("SNR"))
        return r.snrString();
    if (identifier == QLatin1String("LEVEL"))
        return r.signal() * 10.0;
    if (identifier == QLatin1String("NETWORK_MODE"))
        return r.ibss();
    if (identifier == QLatin1String("lastSeen"))
        return r.lastSeen();
    if (identifier == QLatin1String("icon"))
        return r.icon();
    if (identifier == QLatin1String("comment"))
        return text(r.comment());
    return {};
}

void AppDelegate::setObjectValue(const QVariant &value, const QString &identifier, qsizetype row)
{
    Q_UNUSED(row); // the comment always goes to the selected network's record
    if (identifier != QLatin1String("comment"))
        return;
    if (m_selectedNetwork) {
        const QString bssid = m_selectedNetwork->bssid();
        const NetworkList &list = networks();
        const QList<quint64> &rows = filteredNetworks();
        for (qsizetype r = 0; r < rows.size(); ++r) {
            const quint64 i = rows.at(r);
            if (i >= quint64(list.size()))
                continue;
            const NetworkObjectRef &record = list.at(qsizetype(i));
            if (record->bssid() == bssid) {
                const QString comment = value.toString();
                record->setComment(comment);
                m_engine->noteRecordChanged(record.get());
                m_preferences->setComment(record->bssid(), comment);
                break;
            }
        }
    }
    reloadTableData();
    // Once more after the editor that sent this edit has closed (while it is open the
    // reload above leaves the table alone).
    QMetaObject::invokeMethod(this, &AppDelegate::reloadTableData, Qt::QueuedConnection);
}

void AppDelegate::tableViewSelectionDidChange()
{
    // While rows are being inserted or removed the selection moves with them, and reports
    // it before its row numbers are right: the network it follows is the one it had.
    if (m_tableModel->isReloading())
        return;
    const QModelIndexList rows = ui->scanResultsTable->selectionModel()->selectedRows();
    if (rows.isEmpty())
        return; // a cleared selection keeps the previous network
    const int r = rows.constFirst().row();
    const QList<quint64> &filtered = filteredNetworks();
    if (r < 0 || r >= filtered.size())
        return;
    const quint64 i = filtered.at(r);
    if (i < quint64(networks().size()))
        m_selectedNetwork = networks().at(qsizetype(i))->cwNetwork();
}

void AppDelegate::controlTextDidChange(QObject *sender)
{
    // The search text takes effect at the next cycle's filter, not on every keystroke.
    if (sender == ui->searchField)
        m_engine->setSearchText(ui->searchField->text());
}

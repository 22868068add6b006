// SPDX-License-Identifier: GPL-3.0-or-later
// The network table: filter, cells, comment edits, the selection, row diffing and export.
#include "support/AppHarness.h"

#include "app/NetworkTableView.h"

#include <QFile>
#include <QFileInfo>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QtTest>

namespace {
const QString kA = "0a:1b:2c:3d:4e:5f";
const QString kB = "00:00:00:00:00:0b";
const QString kC = "00:00:00:00:00:0c";

int selectedRow(QTableView *table)
{
    const QModelIndexList rows = table->selectionModel()->selectedRows();
    return rows.size() == 1 ? rows.constFirst().row() : -1;
}
} // namespace

class TestTable : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    // The search field is read by the next cycle (or an explicit filter), not on every key.
    // It matches part of a name, the BSSID in either case, or the comment.
    void filterMatchesNameBssidAndComment()
    {
        const std::pair<QString, QStringList> rows[] = {{QString(), {"Alpha", "Bravo", "Charlie"}},
                                                        {"rav", {"Bravo"}},
                                                        {"4E:5F", {"Alpha"}},
                                                        {"KITCHEN", {"Charlie"}}};
        for (const auto &[text, names] : rows) {
            AppHarness h;
            h.preferences->setComment(kC, "in the kitchen");
            h.launchWith({FakeBackend::network(kA, "Alpha"), FakeBackend::network(kB, "Bravo"),
                          FakeBackend::network(kC, "Charlie")});
            h.find<QLineEdit>("searchField")->setText(text);
            QCOMPARE(h.app().numberOfRowsInTableView(), 3);
            h.app().performUpdateCycle();
            QCOMPARE(h.rowNames(), names);
        }
    }
    void cellsByIdentifier()
    {
        AppHarness h;
        h.launchWith({FakeBackend::network(kA, std::nullopt, -53, -90, 149)});
        QVariantList cells;
        for (const char *id : {"NETWORK_NAME", "BSSID", "CHANNEL", "BAND", "SECURITY_MODE",
                               "SIGNAL", "MAX", "LEVEL", "NETWORK_MODE", "lastSeen", "PHY_MODE"})
            cells << h.app().objectValueForTableColumn(QString::fromLatin1(id), 0);
        QCOMPARE(cells, (QVariantList{QVariant(), kA, qint64(149), "5GHz", "WPA2 Personal", "50%",
                                      "50%", 5.0, "No", "Just now", QVariant()}));
        QVERIFY(!h.app().objectValueForTableColumn("icon", 0).value<QImage>().isNull());
        // Rows past the end of the list give empty cells, never a crash.
        QVERIFY(!h.app().objectValueForTableColumn("BSSID", 5).isValid());
        QVERIFY(!h.app().objectValueForTableColumn("BSSID", -1).isValid());
    }
    void commentEditPersistsAcrossRestart()
    {
        AppHarness h;
        h.launchWith({FakeBackend::network(kA, "Alpha"), FakeBackend::network(kB, "Bravo")});
        h.find<QTableView>("scanResultsTable")->selectRow(1);
        // The edit goes to the selected network, whatever row sent it; other columns are fixed.
        h.app().setObjectValue("by the door", "comment", 0);
        h.app().setObjectValue("x", "NETWORK_NAME", 1);
        QCOMPARE(h.app().networkWithBssid(kB)->comment(), std::optional<QString>("by the door"));
        QVERIFY(!h.app().networkWithBssid(kA)->comment());
        QCOMPARE(h.app().networkWithBssid(kB)->name(), std::optional<QString>("Bravo"));

        // Hidden by the search, the selected network takes no comment.
        h.find<QLineEdit>("searchField")->setText("Alpha");
        h.app().filterNetworks();
        h.app().setObjectValue("lost", "comment", 0);
        QVERIFY(!h.app().networkWithBssid(kA)->comment());

        h.restart();
        h.launchWith({FakeBackend::network(kB, "Bravo")});
        QCOMPARE(h.app().networkWithBssid(kB)->comment(), std::optional<QString>("by the door"));
    }
    void selectionFollowsTheNetwork()
    {
        AppHarness h;
        h.launchWith({FakeBackend::network(kA, "Alpha"), FakeBackend::network(kB, "Bravo")});
        auto *table = h.find<NetworkTableView>("scanResultsTable");
        table->selectRow(1); // Bravo
        h.backend->scans = {{FakeBackend::network(kC, "Aardvark")}};
        h.app().performUpdateCycle();
        // Joined, Bravo moves to the top (a reorder, not an insertion): still selected.
        h.backend->currentBssid = kB;
        h.app().performUpdateCycle();
        QCOMPARE(table->model()->index(0, 1).data().toString(), "Bravo");
        QCOMPARE(selectedRow(table), 0);
        // Clearing the selection keeps the remembered network.
        table->clearSelection();
        QCOMPARE(h.app().selectedNetwork()->bssid(), kB);

        // A comment being typed (here in row 0) holds the reload until the editor closes.
        h.app().window()->show();
        const QModelIndex comment = table->model()->index(0, 3);
        table->setCurrentIndex(comment);
        table->edit(comment);
        QCOMPARE(table->editedRow(), 0);
        h.backend->scans = {{FakeBackend::network("00:00:00:00:00:0d", "Delta")}};
        h.app().performUpdateCycle();
        QCOMPARE(table->model()->rowCount(), 3);
        table->setCurrentIndex(table->model()->index(1, 1)); // moving on closes the editor
        QCOMPARE(table->editedRow(), -1);
        h.app().performUpdateCycle();
        QCOMPARE(table->model()->rowCount(), 4);
    }
    // Rows that appear are inserted and rows the filter hides are removed, each as such: the
    // view keeps its place and its selection, and nobody is pulled back to the selected row.
    void newAndHiddenRowsKeepTheScrollPosition()
    {
        AppHarness h;
        QList<CWNetworkRef> scan;
        for (int i = 0; i < 60; ++i)
            scan << FakeBackend::network(
                QStringLiteral("00:00:00:00:01:%1").arg(i, 2, 10, QLatin1Char('0')),
                QStringLiteral("Net %1").arg(i, 2, 10, QLatin1Char('0')));
        h.launchWith(scan);
        auto *table = h.find<QTableView>("scanResultsTable");
        h.app().window()->resize(900, 500);
        h.app().window()->show();
        table->selectRow(1); // "Net 01", near the top
        table->scrollToBottom();
        const int scrolled = table->verticalScrollBar()->value();
        QVERIFY(scrolled > 0);
        QSignalSpy resets(table->model(), &QAbstractItemModel::modelReset);
        QSignalSpy inserted(table->model(), &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(table->model(), &QAbstractItemModel::rowsRemoved);
        QSignalSpy changed(table->model(), &QAbstractItemModel::dataChanged);

        // Two new networks, one before the selected row: inserted, not reset. One known
        // network is heard again.
        h.backend->scans = {{FakeBackend::network(kA, "Net 00a"),
                             FakeBackend::network("00:00:00:00:01:30", "Net 30", -50),
                             FakeBackend::network(kB, "Net 99")}};
        h.app().performUpdateCycle();
        QCOMPARE(resets.size(), 0);
        QCOMPARE(inserted.size(), 2);
        QCOMPARE(table->verticalScrollBar()->value(), scrolled);
        QCOMPARE(selectedRow(table), 2);
        // Only the row heard again changed whole; the rest only in "Last Seen".
        int wholeRows = 0;
        for (const QList<QVariant> &args : std::as_const(changed)) {
            const auto from = args.at(0).value<QModelIndex>();
            const auto to = args.at(1).value<QModelIndex>();
            if (from.column() == 0)
                wholeRows += to.row() - from.row() + 1;
        }
        QCOMPARE(wholeRows, 1);

        // A search that hides some rows removes them.
        h.find<QLineEdit>("searchField")->setText("Net 0");
        h.app().performUpdateCycle();
        QCOMPARE(resets.size(), 0);
        QVERIFY(removed.size() > 0);
        QCOMPARE(h.app().numberOfRowsInTableView(), qsizetype(11));
        QCOMPARE(h.rowNames().at(2), "Net 01");
        QCOMPARE(selectedRow(table), 2);
    }
    // Each export is offered under its name in Documents and writes its document (the
    // documents themselves are checked with the model); a failed write alerts with the
    // reason; a cancelled dialog writes nothing.
    void exports()
    {
        // file name ("": cancelled; "blocked/": below a plain file), HTML or not
        const std::pair<QString, bool> rows[] = {
            {"networks.tsv", false}, {"networks.html", true}, {"blocked/x.csv", false}, {"", true}};
        for (const auto &[target, html] : rows) {
            AppHarness h;
            h.launchWith({FakeBackend::network(kA, "Alpha")});
            QTemporaryDir out;
            QFile blocker(out.filePath("blocked"));
            QVERIFY(blocker.open(QIODevice::WriteOnly));
            h.files.answer = target.isEmpty() ? QString() : out.filePath(target);
            html ? h.app().exportToHTML() : h.app().exportToCSV();
            QCOMPARE(h.files.lastRepresentedName, html ? "wifi-details.html" : "wifi-details.csv");
            QVERIFY(h.files.lastStartDirectory.endsWith("/Documents"));
            QFile file(h.files.answer);
            QCOMPARE(file.open(QIODevice::ReadOnly), !target.isEmpty() && !target.startsWith("b"));
            QVERIFY(file.readAll().startsWith(html ? "<html>" : "Network Name\tBSSID") ||
                    !file.isOpen());
            const QString alert = QStringLiteral("Error: Export to csv '%1' failed: ");
            QCOMPARE(h.alerts.lines().size(), target.startsWith("b") ? 1 : 0);
            QVERIFY(h.alerts.lines().isEmpty() ||
                    (h.alerts.lines().constFirst().startsWith(alert.arg(h.files.answer)) &&
                     h.alerts.lines().constFirst().endsWith(".\rPlease try again.")));
        }
    }
};

QTEST_MAIN(TestTable)
#include "tst_table.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
// The network table: filter, cells, comment edits, the selection, and export.
#include "support/AppHarness.h"

#include "prefs/PreferenceStore.h"

#include <QFile>
#include <QFileInfo>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTableView>
#include <QtTest>

namespace {
const QString kA = QStringLiteral("0a:1b:2c:3d:4e:5f");
const QString kB = QStringLiteral("00:00:00:00:00:0b");
const QString kC = QStringLiteral("00:00:00:00:00:0c");

void launchWith(AppHarness &h, const QList<CWNetworkRef> &scan)
{
    h.backend->scans = {scan};
    h.app().applicationDidFinishLaunching();
}

QStringList rowNames(AppHarness &h)
{
    QStringList names;
    for (qsizetype row = 0; row < h.app().numberOfRowsInTableView(); ++row)
        names << h.app().objectValueForTableColumn(QStringLiteral("NETWORK_NAME"), row).toString();
    return names;
}
} // namespace

class TestTable : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void filterMatchesNameBssidAndComment_data();
    void filterMatchesNameBssidAndComment();
    void filterTakesEffectAtTheNextCycle();
    void cellsByIdentifier();
    void commentEditPersistsAcrossRestart();
    void selectionFollowsReSort();
    void newAndHiddenRowsKeepTheScrollPosition();
    void exportWritesBothDocuments();
    void exportToReadOnlyFolderAlertsAndWritesNothing();
    void cancelledExportWritesNothing();
};

void TestTable::filterMatchesNameBssidAndComment_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("rows");
    QTest::newRow("empty shows all")
        << QString()
        << QStringList{QStringLiteral("Alpha"), QStringLiteral("Bravo"), QStringLiteral("Charlie")};
    QTest::newRow("part of a name")
        << QStringLiteral("rav") << QStringList{QStringLiteral("Bravo")};
    QTest::newRow("bssid lower") << QStringLiteral("2c:3d") << QStringList{QStringLiteral("Alpha")};
    QTest::newRow("bssid upper") << QStringLiteral("4E:5F") << QStringList{QStringLiteral("Alpha")};
    QTest::newRow("comment") << QStringLiteral("KITCHEN") << QStringList{QStringLiteral("Charlie")};
    QTest::newRow("nothing") << QStringLiteral("zzz") << QStringList{};
}

void TestTable::filterMatchesNameBssidAndComment()
{
    QFETCH(QString, text);
    QFETCH(QStringList, rows);
    AppHarness h;
    h.preferences->setComment(kC, QStringLiteral("in the kitchen"));
    launchWith(h, {FakeBackend::network(kA, QStringLiteral("Alpha")),
                   FakeBackend::network(kB, QStringLiteral("Bravo")),
                   FakeBackend::network(kC, QStringLiteral("Charlie"))});
    h.find<QLineEdit>("searchField")->setText(text);
    h.app().filterNetworks();
    QCOMPARE(rowNames(h), rows);
}

void TestTable::filterTakesEffectAtTheNextCycle()
{
    AppHarness h;
    launchWith(h, {FakeBackend::network(kA, QStringLiteral("Alpha")),
                   FakeBackend::network(kB, QStringLiteral("Bravo"))});
    h.find<QLineEdit>("searchField")->setText(QStringLiteral("bravo"));
    QCOMPARE(h.app().numberOfRowsInTableView(), 2);
    h.app().performUpdateCycle();
    QCOMPARE(rowNames(h), QStringList{QStringLiteral("Bravo")});
}

void TestTable::cellsByIdentifier()
{
    AppHarness h;
    launchWith(h, {FakeBackend::network(kA, std::nullopt, -53, -90, 149)});
    auto cell = [&h](const char *id) {
        return h.app().objectValueForTableColumn(QString::fromLatin1(id), 0);
    };
    QVERIFY(!cell("NETWORK_NAME").isValid()); // hidden network: no name
    QCOMPARE(cell("BSSID").toString(), kA);
    QCOMPARE(cell("CHANNEL").toLongLong(), 149);
    QCOMPARE(cell("BAND").toString(), QStringLiteral("5GHz"));
    QCOMPARE(cell("SECURITY_MODE").toString(), QStringLiteral("WPA2 Personal"));
    QCOMPARE(cell("SIGNAL").toString(), QStringLiteral("50%"));
    QCOMPARE(cell("LEVEL").toDouble(), 5.0);
    QCOMPARE(cell("NETWORK_MODE").toString(), QStringLiteral("No"));
    QCOMPARE(cell("lastSeen").toString(), QStringLiteral("Just now"));
    QVERIFY(!cell("icon").value<QImage>().isNull());
    QVERIFY(!cell("PHY_MODE").isValid());
    QVERIFY(!cell("RSSI").isValid());
    // Rows past the end of the list give empty cells, never a crash.
    QVERIFY(!h.app().objectValueForTableColumn(QStringLiteral("BSSID"), 5).isValid());
    QVERIFY(!h.app().objectValueForTableColumn(QStringLiteral("BSSID"), -1).isValid());
}

void TestTable::commentEditPersistsAcrossRestart()
{
    AppHarness h;
    launchWith(h, {FakeBackend::network(kA, QStringLiteral("Alpha")),
                   FakeBackend::network(kB, QStringLiteral("Bravo"))});
    auto *table = h.find<QTableView>("scanResultsTable");
    table->selectRow(1);
    QCOMPARE(h.app().selectedNetwork()->bssid(), kB);
    // The edit goes to the selected network, whatever row sent it.
    h.app().setObjectValue(QStringLiteral("by the door"), QStringLiteral("comment"), 0);
    QCOMPARE(h.app().networkWithBssid(kB)->comment(),
             std::optional<QString>(QStringLiteral("by the door")));
    QVERIFY(!h.app().networkWithBssid(kA)->comment());
    // Other columns are not editable.
    h.app().setObjectValue(QStringLiteral("x"), QStringLiteral("NETWORK_NAME"), 1);
    QCOMPARE(h.app().networkWithBssid(kB)->name(), std::optional<QString>(QStringLiteral("Bravo")));

    h.restart();
    h.backend->scans = {{FakeBackend::network(kB, QStringLiteral("Bravo"))}};
    h.app().applicationDidFinishLaunching();
    QCOMPARE(h.app().networkWithBssid(kB)->comment(),
             std::optional<QString>(QStringLiteral("by the door")));
}

void TestTable::selectionFollowsReSort()
{
    AppHarness h;
    launchWith(h, {FakeBackend::network(kA, QStringLiteral("Alpha")),
                   FakeBackend::network(kB, QStringLiteral("Bravo"))});
    auto *table = h.find<QTableView>("scanResultsTable");
    table->selectRow(1); // Bravo
    // A new network sorts before Bravo; the selection moves with Bravo.
    h.backend->scans = {{FakeBackend::network(kC, QStringLiteral("Aardvark"))}};
    h.app().performUpdateCycle();
    QCOMPARE(rowNames(h).indexOf(QStringLiteral("Bravo")), 2);
    const QModelIndexList selected = table->selectionModel()->selectedRows();
    QCOMPARE(selected.size(), 1);
    QCOMPARE(selected.constFirst().row(), 2);
    // Clearing the selection keeps the remembered network.
    table->clearSelection();
    QCOMPARE(h.app().selectedNetwork()->bssid(), kB);
}

// Rows that appear are inserted and rows the filter hides are removed, each as such: the
// view keeps its place and its selection, and nobody is pulled back to the selected row.
void TestTable::newAndHiddenRowsKeepTheScrollPosition()
{
    AppHarness h;
    QList<CWNetworkRef> scan;
    for (int i = 0; i < 60; ++i)
        scan << FakeBackend::network(
            QStringLiteral("00:00:00:00:01:%1").arg(i, 2, 10, QLatin1Char('0')),
            QStringLiteral("Net %1").arg(i, 2, 10, QLatin1Char('0')));
    launchWith(h, scan);
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
    h.backend->scans = {
        {FakeBackend::network(kA, QStringLiteral("Net 00a")),
         FakeBackend::network(QStringLiteral("00:00:00:00:01:30"), QStringLiteral("Net 30"), -50),
         FakeBackend::network(kB, QStringLiteral("Net 99"))}};
    h.app().performUpdateCycle();
    QCOMPARE(resets.size(), 0);
    QCOMPARE(inserted.size(), 2);
    QCOMPARE(table->verticalScrollBar()->value(), scrolled);
    QCOMPARE(table->selectionModel()->selectedRows().constFirst().row(), 2);
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
    h.find<QLineEdit>("searchField")->setText(QStringLiteral("Net 0"));
    h.app().performUpdateCycle();
    QCOMPARE(resets.size(), 0);
    QVERIFY(removed.size() > 0);
    QCOMPARE(h.app().numberOfRowsInTableView(), qsizetype(11));
    QCOMPARE(rowNames(h).at(2), QStringLiteral("Net 01"));
    QCOMPARE(table->selectionModel()->selectedRows().constFirst().row(), 2);
}

void TestTable::exportWritesBothDocuments()
{
    AppHarness h;
    launchWith(h, {FakeBackend::network(kA, QStringLiteral("Tab\there")),
                   FakeBackend::network(kB, QStringLiteral("<b>bold</b>"))});
    QTemporaryDir out;
    h.files.answer = out.filePath(QStringLiteral("networks.tsv"));
    h.app().exportToCSV();
    QCOMPARE(h.files.lastRepresentedName, QStringLiteral("wifi-details.csv"));
    QVERIFY(h.files.lastStartDirectory.endsWith(QStringLiteral("/Documents")));
    QFile tsv(h.files.answer);
    QVERIFY(tsv.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromUtf8(tsv.readAll()).split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 4); // head, two rows, and nothing after the last line feed
    QVERIFY(lines.at(0).startsWith(QStringLiteral("Network Name\tBSSID\tComment")));
    QCOMPARE(lines.at(1).split(QLatin1Char('\t')).size(), 22);
    QCOMPARE(lines.at(2).split(QLatin1Char('\t')).size(), 23); // the tab in the name shifts
    QVERIFY(lines.at(3).isEmpty());

    h.files.answer = out.filePath(QStringLiteral("networks.html"));
    h.app().exportToHTML();
    QCOMPARE(h.files.lastRepresentedName, QStringLiteral("wifi-details.html"));
    QFile html(h.files.answer);
    QVERIFY(html.open(QIODevice::ReadOnly));
    const QString page = QString::fromUtf8(html.readAll());
    QVERIFY(page.contains(QStringLiteral("<td><b>bold</b></td>")));
    QVERIFY(page.endsWith(QStringLiteral("</table></body></html>")));
    QVERIFY(h.alerts.lines().isEmpty());
}

void TestTable::exportToReadOnlyFolderAlertsAndWritesNothing()
{
    AppHarness h;
    launchWith(h, {FakeBackend::network(kA, QStringLiteral("Alpha"))});
    QTemporaryDir out;
    // A folder nobody can write into, root included: its "parent" is a plain file.
    QFile blocker(out.filePath(QStringLiteral("readonly")));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    h.files.answer = out.filePath(QStringLiteral("readonly/wifi-details.csv"));
    h.app().exportToCSV();
    QVERIFY(!QFileInfo::exists(h.files.answer));
    QCOMPARE(h.alerts.lines().size(), 1);
    QVERIFY(h.alerts.lines().constFirst().startsWith(
        QStringLiteral("Error: Export to csv '%1' failed: ").arg(h.files.answer)));
    QVERIFY(h.alerts.lines().constFirst().endsWith(QStringLiteral(".\rPlease try again.")));
}

void TestTable::cancelledExportWritesNothing()
{
    AppHarness h;
    launchWith(h, {FakeBackend::network(kA, QStringLiteral("Alpha"))});
    h.files.answer.clear();
    h.app().exportToHTML();
    QVERIFY(h.alerts.lines().isEmpty());
}

QTEST_MAIN(TestTable)
#include "tst_table.moc"

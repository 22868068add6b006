// SPDX-License-Identifier: GPL-3.0-or-later
// The list of records: lookup by BSSID and the display order.
#include "model/NetworkList.h"
#include "support/NetworkBuilder.h"
#include "util/RandomSource.h"

#include <gtest/gtest.h>

namespace {

NetworkObjectRef record(const QString &bssid, const std::optional<QByteArray> &name)
{
    NetworkBuilder b;
    b.bssid(bssid);
    return (name ? b.ssid(*name) : b.hidden()).record();
}

NetworkObjectRef linearFirst(const NetworkList &list, const QString &bssid)
{
    for (const NetworkObjectRef &r : list) {
        if (r->bssid() == bssid)
            return r;
    }
    return nullptr;
}

QStringList names(const NetworkList &list)
{
    QStringList out;
    for (const NetworkObjectRef &r : list)
        out << r->name().value_or(QStringLiteral("-")) + QLatin1Char('@') + r->bssid().right(1);
    return out;
}

} // namespace

TEST(NetworkList, CompareForDisplay)
{
    const auto a = record(QStringLiteral("00:00:00:00:00:0a"), QByteArray("alpha"));
    const auto b = record(QStringLiteral("00:00:00:00:00:0b"), QByteArray("Beta"));
    const auto hidden = record(QStringLiteral("00:00:00:00:00:0c"), std::nullopt);
    const auto noBssid = record(QString(), QByteArray("zulu"));
    const std::optional<QString> none, empty = QString(), onA = a->bssid(),
                                       onHidden = hidden->bssid();
    // Case-sensitive names (B before a); a hidden name equals any; the current one comes first,
    // unless it is empty.
    const std::tuple<const NetworkObjectRef &, const NetworkObjectRef &, std::optional<QString>,
                     int>
        rows[] = {{a, b, none, 1},       {a, a, none, 0},      {b, a, onA, 1},
                  {hidden, a, none, 0},  {b, hidden, none, 0}, {b, hidden, onHidden, 1},
                  {noBssid, a, empty, 1}};
    for (const auto &[x, y, current, expected] : rows)
        EXPECT_EQ(NetworkList::compareForDisplay(*x, *y, current), expected)
            << qPrintable(x->bssid() + u' ' + y->bssid());
}

TEST(NetworkList, SortPutsTheAssociatedNetworkFirstThenNamesStably)
{
    NetworkList list;
    for (const char *name : {"delta", "Alpha", "charlie", "bravo", "charlie"})
        list.append(record(QStringLiteral("00:00:00:00:00:0%1").arg(list.count() + 1), name));

    list.sortForDisplay(QStringLiteral("00:00:00:00:00:05"));
    EXPECT_EQ(names(list),
              QStringList({"charlie@5", "Alpha@2", "bravo@4", "charlie@3", "delta@1"}));
    // No current network, an empty BSSID or one that vanished from the scan promote nothing.
    for (const std::optional<QString> &current :
         {std::optional<QString>(), std::optional(QString()), std::optional(QStringLiteral("x"))}) {
        list.sortForDisplay(current);
        EXPECT_EQ(names(list),
                  QStringList({"Alpha@2", "bravo@4", "charlie@5", "charlie@3", "delta@1"}));
    }
}

// A cycle re-reads only the records it appended or updated. Over random surveys (repeated and
// empty BSSIDs, hidden, empty, NUL-bearing and numbered names, renames, a moving current one)
// that must give the full sort's order, and the index must answer as the first match of a
// linear search, even after a BSSID changed behind the list's back.
TEST(NetworkList, RandomSurveysSortAndLookUpAsTheSimpleWayDoes)
{
    SeededRandomSource random(11);
    const std::optional<QString> names[] = {std::nullopt,
                                            QStringLiteral(""),
                                            QStringLiteral("ab"),
                                            QString::fromUtf16(u"ab\0", 3),
                                            QStringLiteral("B"),
                                            QStringLiteral("neighbourhood 1"),
                                            QStringLiteral("neighbourhood 10"),
                                            QStringLiteral("neighbourhood 2")};
    auto anyName = [&] { return names[random.uniform(0, 7)]; };
    NetworkList full, changed;
    QStringList bssids{QStringLiteral("ff:ff:ff:ff:ff:ff")};
    auto lookups = [&] {
        for (const QString &bssid : bssids)
            ASSERT_EQ(changed.networkWithBssid(bssid), linearFirst(changed, bssid))
                << qPrintable(bssid);
    };
    for (int round = 0; round < 80; ++round) {
        for (int i = random.uniform(0, 12); i > 0; --i) {
            const int id = random.uniform(0, 400); // about one in ten repeats; 0: no BSSID
            const QString bssid =
                id ? QStringLiteral("00:00:00:00:%1").arg(id, 5, 16, QLatin1Char('0')) : QString();
            const NetworkObjectRef r = record(bssid, QByteArray("x"));
            r->setName(anyName());
            bssids << bssid;
            full.append(r);
            changed.append(r);
        }
        for (int i = random.uniform(0, 6); i > 0; --i) {
            const NetworkObjectRef r =
                changed.networkForUpdate(bssids.at(random.uniform(0, int(bssids.size()) - 1)));
            if (r && random.uniform(0, 1))
                r->setName(anyName());
        }
        std::optional<QString> current;
        if (random.uniform(0, 3))
            current = bssids.at(random.uniform(0, int(bssids.size()) - 1));
        full.sortForDisplay(current);
        changed.sortChangedForDisplay(current);
        ASSERT_EQ(changed.items(), full.items()) << "round " << round;
        lookups();
    }
    changed.append(nullptr); // ignored
    EXPECT_EQ(changed.count(), full.count());
    changed.at(3)->setBssid(QStringLiteral("12:34:56:78:9a:bc"));
    lookups();
}

// Names arriving smallest first use up the room between their labels, which are then spread
// out again; the order stays the texts' order throughout.
TEST(NetworkList, NamesArrivingInReverseOrderStillSortByText)
{
    NetworkList list;
    for (int i = 99; i >= 0; --i) {
        list.append(record(QStringLiteral("00:00:00:00:%1").arg(i, 5, 16, QLatin1Char('0')),
                           "n" + QByteArray::number(i).rightJustified(3, '0')));
        list.sortChangedForDisplay(std::nullopt);
        for (qsizetype k = 1; k < list.count(); ++k)
            ASSERT_LT(*list.at(k - 1)->name(), *list.at(k)->name()) << "after " << 100 - i;
    }
}

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/NetworkObject.h"

#include <QHash>
#include <QList>
#include <QString>

#include <map>
#include <vector>

// The controller's list of records, one per BSSID, in display order. It only grows.
// Lookup by BSSID goes through a hash that answers exactly what a linear search for the
// first record with that BSSID would, given that a record keeps the BSSID it was appended
// with (its first scan result fixes it for good).
//
// The list keeps each record's sort key (its name) beside it, so that a cycle that changed
// a few hundred records of a hundred thousand re-reads those few only: a record counts as
// changed from its append, or from networkForUpdate(), until the next sort.
class NetworkList
{
public:
    qsizetype count() const { return m_items.size(); }
    qsizetype size() const { return m_items.size(); }
    bool isEmpty() const { return m_items.isEmpty(); }
    const NetworkObjectRef &at(qsizetype i) const { return m_items.at(i); }
    const NetworkObjectRef &operator[](qsizetype i) const { return m_items.at(i); }
    const QList<NetworkObjectRef> &items() const { return m_items; }
    auto begin() const { return m_items.cbegin(); }
    auto end() const { return m_items.cend(); }

    void reserve(qsizetype n);
    void append(NetworkObjectRef record);

    // The first record whose bssid equals `bssid` exactly, or null.
    NetworkObjectRef networkWithBssid(const QString &bssid) const;
    // The same, for a caller about to update the record: its key is re-read at the next
    // sortChangedForDisplay().
    NetworkObjectRef networkForUpdate(const QString &bssid);
    // Whether two records were ever appended with the same BSSID (a scan that reported one
    // twice, or records made by hand); without, a BSSID names at most one record.
    bool hasDuplicateBssids() const { return m_hasDuplicateBssids; }

    // A number for the record at `i` that stays with it whatever the order (its place in
    // the order of appending), for callers that keep something per record.
    quint32 slotAt(qsizetype i) const { return m_slots[std::size_t(i)]; }
    // One past the largest slot handed out.
    quint32 slotCount() const { return quint32(m_keys.size()); }
    static constexpr quint32 kNoSlot = 0xffffffffu;
    // The slot of this record, found through its BSSID; kNoSlot when it is not in the list
    // or its BSSID names another record first.
    quint32 slotOf(const NetworkObject *record) const;
    const NetworkObjectRef &recordAtSlot(quint32 slot) const { return m_records[slot]; }

    // The display order: the record on `currentBssid` first, then by name (plain,
    // case-sensitive comparison); a record without a name compares equal to any other.
    // That comparison is not a strict weak ordering, so the list is sorted with a merge sort
    // that stays memory-safe with any comparison. Re-reads every record's name.
    void sortForDisplay(const std::optional<QString> &currentBssid);
    // The same order, re-reading only the records appended or taken for update since the
    // last sort; the rest must not have been renamed in between. When no key changed the
    // list is left as it is: the sort leaves its own result unchanged. Returns whether the
    // order may have changed.
    bool sortChangedForDisplay(const std::optional<QString> &currentBssid);

    // -1: a before b; 1: b before a; 0: equal (as the display order defines it).
    static int compareForDisplay(const NetworkObject &a, const NetworkObject &b,
                                 const std::optional<QString> &currentBssid);

private:
    // Every name seen, in the display order's own comparison, each with a number that
    // orders the names as the texts do: the sort compares numbers, never texts. Numbers
    // are handed out with room between them and spread out again when a gap runs out.
    struct NameOrder
    {
        bool operator()(const QString &a, const QString &b) const
        {
            return QString::compare(a, b, Qt::CaseSensitive) < 0;
        }
    };
    using NameLabels = std::map<QString, quint64, NameOrder>;
    // A record's name as the sort reads it: its label (0: no name) and where it came from.
    struct SortKey
    {
        quint64 label = 0;
        const NameLabels::value_type *name = nullptr;
    };
    const NameLabels::value_type *labelName(const QString &name);
    void spreadLabels();
    bool refreshKey(quint32 slot);
    quint32 currentSlot(const std::optional<QString> &currentBssid) const;
    void sortByKeys(quint32 current);

    QList<NetworkObjectRef> m_items;
    std::vector<quint32> m_slots;            // slot of the record at each place
    std::vector<SortKey> m_keys;             // by slot
    std::vector<NetworkObjectRef> m_records; // by slot
    std::vector<quint32> m_changed;          // slots to re-read at the next sort
    NameLabels m_labels;
    QHash<QString, quint32> m_byBssid; // slot of the first record per BSSID, in list order
    quint32 m_sortedCurrent = kNoSlot; // the slot first by the last sort
    bool m_sorted = true;              // nothing appended since the last sort
    bool m_refreshAll = false;         // a key may have changed unnoticed
    bool m_hasDuplicateBssids = false;
};

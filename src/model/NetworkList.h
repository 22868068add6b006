// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/NetworkObject.h"

#include <QHash>
#include <QList>
#include <QString>

// The controller's list of records, one per BSSID, in display order. It only grows.
// Lookup by BSSID goes through a hash that answers exactly what a linear search for the
// first record with that BSSID would, given that a record keeps the BSSID it was appended
// with (its first scan result fixes it for good).
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

    void reserve(qsizetype n) { m_items.reserve(n); }
    void append(NetworkObjectRef record);

    // The first record whose bssid equals `bssid` exactly, or null.
    NetworkObjectRef networkWithBssid(const QString &bssid) const;
    // Whether two records were ever appended with the same BSSID (a scan that reported one
    // twice, or records made by hand); without, a BSSID names at most one record.
    bool hasDuplicateBssids() const { return m_hasDuplicateBssids; }

    // The display order: the record on `currentBssid` first, then by name (plain,
    // case-sensitive comparison); a record without a name compares equal to any other.
    // That comparison is not a strict weak ordering, so the list is sorted with a merge sort
    // that stays memory-safe with any comparison.
    void sortForDisplay(const std::optional<QString> &currentBssid);

    // -1: a before b; 1: b before a; 0: equal (as the display order defines it).
    static int compareForDisplay(const NetworkObject &a, const NetworkObject &b,
                                 const std::optional<QString> &currentBssid);

private:
    QList<NetworkObjectRef> m_items;
    QHash<QString, NetworkObjectRef> m_byBssid; // first record per BSSID, in list order
    bool m_hasDuplicateBssids = false;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/NetworkList.h"

#include "util/SafeSort.h"

#include <vector>

namespace {

bool isCurrent(const QString &bssid, const std::optional<QString> &currentBssid)
{
    // Not associated, or associated without a BSSID: nothing is "current", so the order
    // is purely by name (and a record with an empty BSSID is not promoted).
    return currentBssid && !currentBssid->isEmpty() && bssid == *currentBssid;
}

int compareKeys(bool aCurrent, const std::optional<QString> &aName, bool bCurrent,
                const std::optional<QString> &bName)
{
    if (aCurrent)
        return -1;
    if (bCurrent)
        return 1;
    // A hidden network compares equal to anything; that breaks transitivity, which the
    // merge sort tolerates.
    if (!aName || !bName)
        return 0;
    const int c = QString::compare(*aName, *bName, Qt::CaseSensitive);
    return (c > 0) - (c < 0);
}

} // namespace

void NetworkList::append(NetworkObjectRef record)
{
    // A null entry would only be a trap for every reader of the list.
    if (!record)
        return;
    const QString bssid = record->bssid();
    auto it = m_byBssid.constFind(bssid);
    if (it == m_byBssid.constEnd())
        m_byBssid.insert(bssid, record);
    else
        m_hasDuplicateBssids = true;
    m_items.append(std::move(record));
}

NetworkObjectRef NetworkList::networkWithBssid(const QString &bssid) const
{
    const auto it = m_byBssid.constFind(bssid);
    if (it == m_byBssid.constEnd())
        return nullptr;
    // A record's BSSID is fixed once it is set, but setBssid() exists; if someone moved
    // it anyway, answer as the plain search would.
    if (it.value()->bssid() == bssid)
        return it.value();
    for (const NetworkObjectRef &record : m_items) {
        if (record->bssid() == bssid)
            return record;
    }
    return nullptr;
}

int NetworkList::compareForDisplay(const NetworkObject &a, const NetworkObject &b,
                                   const std::optional<QString> &currentBssid)
{
    return compareKeys(isCurrent(a.bssid(), currentBssid), a.name(),
                       isCurrent(b.bssid(), currentBssid), b.name());
}

void NetworkList::sortForDisplay(const std::optional<QString> &currentBssid)
{
    // The keys are taken once per record rather than once per comparison, and the sort
    // moves small index entries; the answers are those of compareForDisplay().
    const qsizetype n = m_items.size();
    std::vector<std::optional<QString>> names;
    names.reserve(static_cast<std::size_t>(n));
    struct Key
    {
        qsizetype index;
        bool current;
    };
    std::vector<Key> keys;
    keys.reserve(static_cast<std::size_t>(n));
    for (qsizetype i = 0; i < n; ++i) {
        const NetworkObject &record = *m_items.at(i);
        names.push_back(record.name());
        keys.push_back({i, isCurrent(record.bssid(), currentBssid)});
    }
    safeStableSort(keys.begin(), keys.end(), [&names](const Key &a, const Key &b) {
        return compareKeys(a.current, names[static_cast<std::size_t>(a.index)], b.current,
                           names[static_cast<std::size_t>(b.index)]) < 0;
    });
    QList<NetworkObjectRef> sorted;
    sorted.reserve(m_items.capacity());
    for (const Key &key : keys)
        sorted.append(std::move(m_items[key.index]));
    m_items = std::move(sorted);

    if (m_hasDuplicateBssids) {
        // With duplicates, "the first with this BSSID" depends on the order just made.
        // Walking backwards, the last insert() for a BSSID is its first record.
        m_byBssid.clear();
        for (auto it = m_items.crbegin(); it != m_items.crend(); ++it)
            m_byBssid.insert((*it)->bssid(), *it);
    }
}

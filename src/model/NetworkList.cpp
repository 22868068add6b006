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
    // The keys are taken once per record rather than once per comparison; the answers
    // are those of compareForDisplay().
    struct Keyed
    {
        NetworkObjectRef record;
        std::optional<QString> name;
        bool current = false;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(static_cast<std::size_t>(m_items.size()));
    for (NetworkObjectRef &record : m_items) {
        Keyed k;
        k.current = isCurrent(record->bssid(), currentBssid);
        k.name = record->name();
        k.record = std::move(record);
        keyed.push_back(std::move(k));
    }
    safeStableSort(keyed.begin(), keyed.end(), [](const Keyed &a, const Keyed &b) {
        return compareKeys(a.current, a.name, b.current, b.name) < 0;
    });
    for (qsizetype i = 0; i < m_items.size(); ++i)
        m_items[i] = std::move(keyed[static_cast<std::size_t>(i)].record);

    if (m_hasDuplicateBssids) {
        // With duplicates, "the first with this BSSID" depends on the order just made.
        // Walking backwards, the last insert() for a BSSID is its first record.
        m_byBssid.clear();
        for (auto it = m_items.crbegin(); it != m_items.crend(); ++it)
            m_byBssid.insert((*it)->bssid(), *it);
    }
}

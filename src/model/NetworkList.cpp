// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/NetworkList.h"

#include "util/SafeSort.h"

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

// Room left between neighbouring labels when they are handed out one by one.
constexpr quint64 kLabelStep = quint64(1) << 32;

// Moves the records and their slots into the order given: `positionOf` names the place
// each entry of `order` held before.
template <typename Order, typename PositionOf>
void reorder(QList<NetworkObjectRef> &items, std::vector<quint32> &slots, const Order &order,
             PositionOf positionOf)
{
    QList<NetworkObjectRef> sortedItems;
    sortedItems.reserve(items.capacity());
    std::vector<quint32> sortedSlots;
    sortedSlots.reserve(slots.capacity());
    for (const auto &entry : order) {
        const std::size_t from = std::size_t(positionOf(entry));
        sortedItems.append(std::move(items[qsizetype(from)]));
        sortedSlots.push_back(slots[from]);
    }
    items = std::move(sortedItems);
    slots = std::move(sortedSlots);
}

} // namespace

void NetworkList::reserve(qsizetype n)
{
    m_items.reserve(n);
    m_slots.reserve(std::size_t(n));
    m_keys.reserve(std::size_t(n));
    m_records.reserve(std::size_t(n));
}

void NetworkList::append(NetworkObjectRef record)
{
    // A null entry would only be a trap for every reader of the list.
    if (!record)
        return;
    const quint32 slot = quint32(m_keys.size());
    const QString bssid = record->bssid();
    auto it = m_byBssid.constFind(bssid);
    if (it == m_byBssid.constEnd())
        m_byBssid.insert(bssid, slot);
    else
        m_hasDuplicateBssids = true;
    m_keys.emplace_back();
    m_records.push_back(record);
    m_slots.push_back(slot);
    m_changed.push_back(slot);
    m_items.append(std::move(record));
    m_sorted = false;
}

NetworkObjectRef NetworkList::networkWithBssid(const QString &bssid) const
{
    const auto it = m_byBssid.constFind(bssid);
    if (it == m_byBssid.constEnd())
        return nullptr;
    // A record's BSSID is fixed once it is set, but setBssid() exists; if someone moved
    // it anyway, answer as the plain search would.
    const NetworkObjectRef &found = m_records[it.value()];
    if (found->bssid() == bssid)
        return found;
    for (const NetworkObjectRef &record : m_items) {
        if (record->bssid() == bssid)
            return record;
    }
    return nullptr;
}

NetworkObjectRef NetworkList::networkForUpdate(const QString &bssid)
{
    NetworkObjectRef record = networkWithBssid(bssid);
    if (record) {
        const auto it = m_byBssid.constFind(bssid);
        if (m_records[it.value()] == record)
            m_changed.push_back(it.value());
        else
            m_refreshAll = true; // found the slow way: the next sort re-reads everything
    }
    return record;
}

quint32 NetworkList::slotOf(const NetworkObject *record) const
{
    if (!record)
        return kNoSlot;
    const quint32 slot = m_byBssid.value(record->bssid(), kNoSlot);
    return slot != kNoSlot && m_records[slot].get() == record ? slot : kNoSlot;
}

int NetworkList::compareForDisplay(const NetworkObject &a, const NetworkObject &b,
                                   const std::optional<QString> &currentBssid)
{
    return compareKeys(isCurrent(a.bssid(), currentBssid), a.name(),
                       isCurrent(b.bssid(), currentBssid), b.name());
}

bool NetworkList::refreshKey(quint32 slot)
{
    const std::optional<QString> name = m_records[slot]->name();
    SortKey &key = m_keys[slot];
    if (!name) {
        const bool changed = key.name != nullptr;
        key = SortKey();
        return changed;
    }
    if (key.name && key.name->first == *name)
        return false;
    key.name = labelName(*name);
    key.label = key.name->second;
    return true;
}

const NetworkList::NameLabels::value_type *NetworkList::labelName(const QString &name)
{
    auto [it, added] = m_labels.try_emplace(name, 0);
    if (!added)
        return &*it;
    // Between the neighbours' labels; 0 stays free for "no name".
    const quint64 below = it == m_labels.begin() ? 0 : std::prev(it)->second;
    const auto after = std::next(it);
    const quint64 above = after == m_labels.end() ? ~quint64(0) : after->second;
    const quint64 gap = above - below;
    if (gap < 2) {
        spreadLabels();
        return &*it;
    }
    if (after == m_labels.end())
        it->second = below + std::min(kLabelStep, gap / 2);
    else if (it == m_labels.begin())
        it->second = above - std::min(kLabelStep, gap / 2);
    else
        it->second = below + gap / 2;
    return &*it;
}

void NetworkList::spreadLabels()
{
    // Evenly over the whole range, in name order; the keys take their new labels (the
    // order they give is the same).
    const quint64 step = ~quint64(0) / (quint64(m_labels.size()) + 1);
    quint64 label = 0;
    for (auto &entry : m_labels)
        entry.second = label += step;
    for (SortKey &key : m_keys) {
        if (key.name)
            key.label = key.name->second;
    }
}

quint32 NetworkList::currentSlot(const std::optional<QString> &currentBssid) const
{
    if (!currentBssid || currentBssid->isEmpty())
        return kNoSlot;
    return m_byBssid.value(*currentBssid, kNoSlot);
}

void NetworkList::sortByKeys(quint32 current)
{
    // Places, not records, are sorted: the records follow once the order stands. The
    // answers are those of compareForDisplay().
    struct Place
    {
        quint64 label;
        quint32 slot;
        quint32 place;
    };
    const qsizetype n = m_items.size();
    std::vector<Place> order(static_cast<std::size_t>(n));
    for (qsizetype i = 0; i < n; ++i) {
        const quint32 slot = m_slots[std::size_t(i)];
        order[std::size_t(i)] = {m_keys[slot].label, slot, quint32(i)};
    }
    safeStableSort(order.begin(), order.end(), [current](const Place &a, const Place &b) {
        if (a.slot == current)
            return true;
        if (b.slot == current)
            return false;
        // A hidden network (label 0) compares equal to anything.
        return a.label != 0 && b.label != 0 && a.label < b.label;
    });
    reorder(m_items, m_slots, order, [](const Place &p) { return p.place; });
    m_sortedCurrent = current;
    m_sorted = true;
    m_refreshAll = false;
    m_changed.clear();
}

void NetworkList::sortForDisplay(const std::optional<QString> &currentBssid)
{
    for (quint32 slot = 0; slot < quint32(m_keys.size()); ++slot)
        refreshKey(slot);
    if (!m_hasDuplicateBssids) {
        sortByKeys(currentSlot(currentBssid));
        return;
    }

    // With duplicates more than one record may be current: the keys are taken the long
    // way, and "the first with this BSSID" depends on the order made.
    const qsizetype n = m_items.size();
    std::vector<std::optional<QString>> names;
    names.reserve(std::size_t(n));
    struct Key
    {
        qsizetype index;
        bool current;
    };
    std::vector<Key> keys;
    keys.reserve(std::size_t(n));
    for (qsizetype i = 0; i < n; ++i) {
        const NetworkObject &record = *m_items.at(i);
        names.push_back(record.name());
        keys.push_back({i, isCurrent(record.bssid(), currentBssid)});
    }
    safeStableSort(keys.begin(), keys.end(), [&names](const Key &a, const Key &b) {
        return compareKeys(a.current, names[std::size_t(a.index)], b.current,
                           names[std::size_t(b.index)]) < 0;
    });
    reorder(m_items, m_slots, keys, [](const Key &key) { return key.index; });
    m_sortedCurrent = kNoSlot;
    m_sorted = false; // the next sort of changes starts over
    m_changed.clear();
    // Walking backwards, the last insert() for a BSSID is its first record.
    m_byBssid.clear();
    for (auto it = m_slots.crbegin(); it != m_slots.crend(); ++it)
        m_byBssid.insert(m_records[*it]->bssid(), *it);
}

bool NetworkList::sortChangedForDisplay(const std::optional<QString> &currentBssid)
{
    if (m_hasDuplicateBssids || m_refreshAll) {
        sortForDisplay(currentBssid);
        return true;
    }
    bool keysChanged = false;
    for (const quint32 slot : m_changed)
        keysChanged = refreshKey(slot) || keysChanged;
    m_changed.clear();
    const quint32 current = currentSlot(currentBssid);
    // Sorting its own result again would move nothing: every neighbour is already in order
    // (the comparison is antisymmetric once no BSSID repeats).
    if (m_sorted && !keysChanged && current == m_sortedCurrent)
        return false;
    sortByKeys(current);
    return true;
}

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVariantMap>

#include <memory>
#include <optional>

class QSettings;

// The user's persisted settings: the update interval in seconds ("ui", default 2), the number
// of networks drawn in the signal plot ("Ntn", default 10, 100 meaning all) and the comments
// per BSSID ("comment"). A missing number is written with its default the first time it is
// read, so after one read the store always holds both keys.
//
// The window's controls work in positions, not values, and the two mappings are not each
// other's inverse for the interval: positions 0..2 store 0..2 s and position p >= 3 stores
// 5p - 10 s, but a stored value v >= 3 reads back as position v / 5 - 2 (a stored 10 reads as
// position 0). Saved files depend on this reading, so it stays as it is.
class PreferenceStore
{
public:
    // Uses the user's settings (organisation "Corvane", application "Wi-Fi Monitor"), or the
    // given QSettings, which the caller keeps alive for the life of the store.
    explicit PreferenceStore(QSettings *settings = nullptr);
    ~PreferenceStore();
    PreferenceStore(const PreferenceStore &) = delete;
    PreferenceStore &operator=(const PreferenceStore &) = delete;

    // Control positions.
    qint64 updateInterval();
    void setUpdateInterval(qint64 position);
    quint64 numberOfTopNetworks();
    void setNumberOfTopNetworks(quint64 position);

    // The stored values themselves. A stored interval of 0 can only come from a hand-edited
    // file (the window offers no position that stores it); it reads as 1 here because the
    // callers divide by this value (the tick rule, numberOfDatas()). Negative values are
    // returned as they are. A stored "Ntn" below zero reads as the unsigned number of the
    // same bits, which the plot treats as "more than there are", i.e. all networks.
    qint64 updateIntervalValue();
    quint64 numberOfTopNetworksValue();

    // The window's bindings write these; nothing reads them and the store is not touched.
    void setUpdateIntervalValue(qint64 value) { m_updateIntervalValue = value; }
    void setNumberOfTopNetworksValue(quint64 value) { m_numberOfTopNetworksValue = value; }

    // Samples along the plots' time axis: five minutes' worth at the current interval
    // (1 s gives 301, the capacity of a record's history).
    qint64 numberOfDatas();

    // BSSID -> comment text. Anything under "comment" that is not a dictionary reads as an
    // empty one; an entry that is not text reads as absent.
    QVariantMap comments() const;
    std::optional<QString> commentForBssid(const QString &bssid) const;
    // Empty text is stored as such (the user cleared the comment), not removed.
    void setComment(const QString &bssid, const QString &comment);

    static constexpr qint64 kDefaultUpdateInterval = 2;
    static constexpr quint64 kDefaultNumberOfTopNetworks = 10;

private:
    qint64 readInteger(const QString &key, qint64 fallback);
    quint64 readUnsigned(const QString &key, quint64 fallback);

    std::unique_ptr<QSettings> m_owned;
    QSettings *m_settings = nullptr;
    qint64 m_updateIntervalValue = 0;
    quint64 m_numberOfTopNetworksValue = 0;
};

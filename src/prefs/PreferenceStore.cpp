// SPDX-License-Identifier: GPL-3.0-or-later
#include "prefs/PreferenceStore.h"

#include "prefs/SettingsFileCheck.h"

#include <QDebug>
#include <QSettings>

#include <limits>

namespace {

const QString kIntervalKey = QStringLiteral("ui");
const QString kTopNetworksKey = QStringLiteral("Ntn");
const QString kCommentKey = QStringLiteral("comment");

// A position from a control never comes near these limits; a caller passing one anyway gets
// the largest storable value rather than a wrapped or undefined one.
qint64 intervalForPosition(qint64 position)
{
    if (position < 3)
        return position;
    constexpr qint64 kMax = std::numeric_limits<qint64>::max();
    if (position > (kMax - 10) / 5 + 2)
        return kMax;
    return 5 * position - 10;
}

quint64 topNetworksForPosition(quint64 position)
{
    if (position == 5)
        return 100; // "all networks"
    constexpr quint64 kMax = std::numeric_limits<quint64>::max();
    if (position > kMax / 5)
        return kMax;
    return 5 * position;
}

} // namespace

PreferenceStore::PreferenceStore(QSettings *settings)
{
    if (settings) {
        m_settings = settings;
    } else {
        const auto open = [] {
            return std::make_unique<QSettings>(QStringLiteral("Corvane"),
                                               QStringLiteral("Wi-Fi Monitor"));
        };
        // Reading a damaged file could take the program down before it says anything, so
        // it is checked before QSettings decodes a value (opening it only finds its name).
        const QString path = open()->fileName();
        for (const QString &message : SettingsFileCheck::repair(path))
            qWarning().noquote() << message;
        m_owned = open();
        m_settings = m_owned.get();
    }
}

PreferenceStore::~PreferenceStore() = default;

qint64 PreferenceStore::readInteger(const QString &key, qint64 fallback)
{
    if (!m_settings->contains(key)) {
        m_settings->setValue(key, fallback);
        return fallback;
    }
    // Settings files hold text; a value that does not read as a whole number (a hand edit,
    // another program's junk) counts as the default but is left in the file untouched.
    bool ok = false;
    const qint64 value = m_settings->value(key).toLongLong(&ok);
    return ok ? value : fallback;
}

qint64 PreferenceStore::updateInterval()
{
    const qint64 v = readInteger(kIntervalKey, kDefaultUpdateInterval);
    return v < 3 ? v : v / 5 - 2;
}

void PreferenceStore::setUpdateInterval(qint64 position)
{
    m_settings->setValue(kIntervalKey, intervalForPosition(position));
}

quint64 PreferenceStore::readUnsigned(const QString &key, quint64 fallback)
{
    if (!m_settings->contains(key)) {
        m_settings->setValue(key, QVariant::fromValue(fallback));
        return fallback;
    }
    const QVariant stored = m_settings->value(key);
    bool ok = false;
    const quint64 value = stored.toULongLong(&ok);
    if (ok)
        return value;
    // A negative number keeps its bits, as an unsigned read of a signed entry always did.
    const qint64 signedValue = stored.toLongLong(&ok);
    return ok ? quint64(signedValue) : fallback;
}

quint64 PreferenceStore::numberOfTopNetworks()
{
    const quint64 n = readUnsigned(kTopNetworksKey, kDefaultNumberOfTopNetworks);
    return n == 100 ? 5 : n / 5;
}

void PreferenceStore::setNumberOfTopNetworks(quint64 position)
{
    m_settings->setValue(kTopNetworksKey, QVariant::fromValue(topNetworksForPosition(position)));
}

qint64 PreferenceStore::updateIntervalValue()
{
    updateInterval(); // puts the default in place
    const qint64 v = readInteger(kIntervalKey, kDefaultUpdateInterval);
    return v == 0 ? 1 : v;
}

quint64 PreferenceStore::numberOfTopNetworksValue()
{
    numberOfTopNetworks(); // puts the default in place
    return readUnsigned(kTopNetworksKey, kDefaultNumberOfTopNetworks);
}

qint64 PreferenceStore::numberOfDatas()
{
    return 300 / updateIntervalValue() + 1;
}

QVariantMap PreferenceStore::comments() const
{
    return m_settings->value(kCommentKey).toMap();
}

std::optional<QString> PreferenceStore::commentForBssid(const QString &bssid) const
{
    const QVariantMap all = comments();
    const auto it = all.constFind(bssid);
    if (it == all.constEnd() || it->metaType().id() != QMetaType::QString)
        return std::nullopt;
    return it->toString();
}

void PreferenceStore::setComment(const QString &bssid, const QString &comment)
{
    QVariantMap all = comments();
    all.insert(bssid, comment);
    m_settings->setValue(kCommentKey, all);
}

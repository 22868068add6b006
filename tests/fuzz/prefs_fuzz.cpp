// SPDX-License-Identifier: GPL-3.0-or-later
// Fuzz target for stored preferences: the input is the settings file itself, as a user or
// another program may have left it, read through every question the program asks of it.
#include "prefs/PreferenceStore.h"
#include "prefs/SettingsFileCheck.h"

#include <QDir>
#include <QSettings>

#include <cstddef>
#include <cstdint>
#include <unistd.h>

namespace {
void askEverything(QSettings &settings)
{
    PreferenceStore store(&settings);
    (void)store.updateInterval();
    (void)store.numberOfTopNetworks();
    (void)store.updateIntervalValue();
    (void)store.numberOfTopNetworksValue();
    (void)store.numberOfDatas();
    const QVariantMap comments = store.comments();
    for (auto it = comments.cbegin(); it != comments.cend(); ++it)
        (void)store.commentForBssid(it.key());
    (void)store.commentForBssid(QStringLiteral("02:00:00:00:00:01"));
    store.setComment(QStringLiteral("02:00:00:00:00:02"), QStringLiteral("note"));
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // A fresh name for every input: QSettings caches what it read per file name.
    static quint64 serial = 0;
    const QString path = QDir::temp().filePath(
        QStringLiteral("corvane-fuzz-prefs-%1-%2.conf").arg(getpid()).arg(++serial));
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return 0;
        file.write(reinterpret_cast<const char *>(data), qint64(size));
    }
    // As the program does: whatever the check leaves must read without harm.
    (void)SettingsFileCheck::repair(path);
    {
        QSettings settings(path, QSettings::IniFormat);
        // What the store writes back (defaults, a comment) need not survive a crash here.
        settings.setAtomicSyncRequired(false);
        askEverything(settings);
    }
    QFile::remove(path);
    QFile::remove(path + QStringLiteral(".damaged"));
    return 0;
}

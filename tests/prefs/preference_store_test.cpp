// SPDX-License-Identifier: GPL-3.0-or-later
#include "prefs/PreferenceStore.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>
#include <memory>

namespace {

// Each test gets its own settings file in a temporary directory.
class PreferenceStoreTest : public ::testing::Test
{
protected:
    QString path() const { return m_dir.filePath(QStringLiteral("prefs.ini")); }

    // Another view of the same file, as the next run of the program would see it.
    std::unique_ptr<QSettings> reopen()
    {
        m_settings->sync();
        return std::make_unique<QSettings>(path(), QSettings::IniFormat);
    }

    QTemporaryDir m_dir;
    std::unique_ptr<QSettings> m_settings =
        std::make_unique<QSettings>(path(), QSettings::IniFormat);
};

TEST_F(PreferenceStoreTest, DefaultsOnFirstReadAndPositionsMapToStoredValues)
{
    PreferenceStore store(m_settings.get());
    EXPECT_FALSE(m_settings->contains("ui") || m_settings->contains("Ntn"));
    EXPECT_EQ(std::tuple(store.updateInterval(), store.numberOfTopNetworks(),
                         store.updateIntervalValue(), store.numberOfTopNetworksValue()),
              std::tuple(2, 2u, 2, 10u));
    EXPECT_EQ(std::pair(reopen()->value("ui").toLongLong(), reopen()->value("Ntn").toLongLong()),
              std::pair(2LL, 10LL));
    // Interval position, stored seconds, position read back, samples kept: only positions
    // below 3 survive a round trip (5 s, 10 s and 15 s read as -1, 0 and 1).
    const std::tuple<qint64, qint64, qint64, qint64> intervals[] = {
        {0, 0, 0, 301}, {2, 2, 2, 151}, {3, 5, -1, 61}, {5, 15, 1, 21}, {-4, -4, -4, -74}};
    for (const auto &[position, stored, readBack, datas] : intervals) {
        store.setUpdateInterval(position);
        EXPECT_EQ(std::tuple(reopen()->value("ui").toLongLong(), store.updateInterval(),
                             store.numberOfDatas()),
                  std::tuple(stored, readBack, datas))
            << position;
    }
    // An absurd position saturates instead of overflowing.
    store.setUpdateInterval(std::numeric_limits<qint64>::max());
    EXPECT_EQ(m_settings->value("ui").toLongLong(), std::numeric_limits<qint64>::max());

    const quint64 stored[] = {0, 5, 10, 15, 20, 100};
    for (quint64 position = 0; position <= 5; ++position) {
        store.setNumberOfTopNetworks(position);
        EXPECT_EQ(std::tuple(reopen()->value("Ntn").toULongLong(), store.numberOfTopNetworks(),
                             store.numberOfTopNetworksValue()),
                  std::tuple(stored[position], position, stored[position]));
    }
    // The value setters leave the store alone.
    store.setUpdateIntervalValue(7);
    store.setNumberOfTopNetworksValue(42);
    EXPECT_EQ(std::pair(store.updateIntervalValue(), store.numberOfTopNetworksValue()),
              std::pair(std::numeric_limits<qint64>::max(), quint64(100)));
}

TEST_F(PreferenceStoreTest, HandEditedValuesAreSafe)
{
    m_settings->setValue("ui", 0);
    m_settings->setValue("Ntn", -5);
    PreferenceStore store(m_settings.get());
    // A stored 0 is left in the file but divides as 1.
    EXPECT_EQ(std::tuple(store.updateInterval(), store.updateIntervalValue(),
                         m_settings->value("ui").toLongLong(), store.numberOfTopNetworksValue()),
              std::tuple(0, 1, 0, quint64(-5)));

    // Text that is no whole number reads as the default and is not overwritten.
    m_settings->setValue("ui", QStringLiteral("fast"));
    m_settings->setValue("Ntn", QStringLiteral("2.5"));
    EXPECT_EQ(std::tuple(store.updateInterval(), store.numberOfTopNetworks(),
                         store.updateIntervalValue(), store.numberOfTopNetworksValue()),
              std::tuple(2, 2u, 2, 10u));
    EXPECT_EQ(m_settings->value("ui").toString(), "fast");

    m_settings->setValue("ui", QStringList{"1", "2"});
    EXPECT_EQ(store.updateIntervalValue(), 2);
}

TEST_F(PreferenceStoreTest, CommentsPersistPerBssid)
{
    PreferenceStore store(m_settings.get());
    EXPECT_EQ(store.commentForBssid("00:11:22:33:44:55"), std::nullopt);
    const QString hostile = QStringLiteral("tab\there\nline <b>&amp; \u00e9");
    store.setComment("00:11:22:33:44:55", QStringLiteral("kitchen"));
    store.setComment("66:77:88:99:aa:bb", hostile);
    store.setComment("00:11:22:33:44:55", QString()); // cleared, not removed

    const auto disk = reopen();
    PreferenceStore again(disk.get());
    EXPECT_EQ(again.comments().size(), 2);
    EXPECT_EQ(std::tuple(again.commentForBssid("00:11:22:33:44:55"),
                         again.commentForBssid("66:77:88:99:aa:bb"),
                         again.commentForBssid("66:77:88:99:AA:BB")),
              std::tuple(std::optional(QString()), std::optional(hostile), std::nullopt));

    // Junk under "comment" reads as no comments, and the next edit replaces it.
    disk->setValue("comment", QStringLiteral("not a dictionary"));
    EXPECT_TRUE(again.comments().isEmpty());
    again.setComment("x", "y");
    EXPECT_EQ(again.commentForBssid("x"), QStringLiteral("y"));
    disk->setValue("comment", QVariantMap{{"n", QVariantList{1, 2}}});
    EXPECT_EQ(again.commentForBssid("n"), std::nullopt);
}

} // namespace

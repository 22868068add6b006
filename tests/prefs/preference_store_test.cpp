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
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        m_settings = std::make_unique<QSettings>(path(), QSettings::IniFormat);
    }

    QString path() const { return m_dir.filePath(QStringLiteral("prefs.ini")); }

    // Another view of the same file, as the next run of the program would see it.
    std::unique_ptr<QSettings> reopen()
    {
        m_settings->sync();
        return std::make_unique<QSettings>(path(), QSettings::IniFormat);
    }

    QTemporaryDir m_dir;
    std::unique_ptr<QSettings> m_settings;
};

TEST_F(PreferenceStoreTest, FreshStoreWritesDefaultsOnFirstRead)
{
    PreferenceStore store(m_settings.get());
    EXPECT_FALSE(m_settings->contains("ui"));
    EXPECT_FALSE(m_settings->contains("Ntn"));

    EXPECT_EQ(std::tuple(store.updateInterval(), store.numberOfTopNetworks(),
                         store.updateIntervalValue(), store.numberOfTopNetworksValue()),
              std::tuple(2, 2u, 2, 10u));

    const auto disk = reopen();
    EXPECT_EQ(disk->value("ui").toLongLong(), 2);
    EXPECT_EQ(disk->value("Ntn").toLongLong(), 10);
}

TEST_F(PreferenceStoreTest, IntervalPositionsMapAsymmetrically)
{
    PreferenceStore store(m_settings.get());
    struct Row
    {
        qint64 position;
        qint64 stored;
        qint64 readBack;
    };
    // Only positions below 3 survive a round trip; 5 s, 10 s and 15 s read as -1, 0 and 1.
    const Row rows[] = {{0, 0, 0},  {1, 1, 1},  {2, 2, 2},   {3, 5, -1},
                        {4, 10, 0}, {5, 15, 1}, {-4, -4, -4}};
    for (const Row &row : rows) {
        SCOPED_TRACE(row.position);
        store.setUpdateInterval(row.position);
        EXPECT_EQ(reopen()->value("ui").toLongLong(), row.stored);
        EXPECT_EQ(store.updateInterval(), row.readBack);
    }
    // An absurd position saturates instead of overflowing.
    store.setUpdateInterval(std::numeric_limits<qint64>::max());
    EXPECT_EQ(m_settings->value("ui").toLongLong(), std::numeric_limits<qint64>::max());
}

TEST_F(PreferenceStoreTest, TopNetworkPositionsRoundTrip)
{
    PreferenceStore store(m_settings.get());
    const quint64 stored[] = {0, 5, 10, 15, 20, 100};
    for (quint64 position = 0; position <= 5; ++position) {
        SCOPED_TRACE(position);
        store.setNumberOfTopNetworks(position);
        EXPECT_EQ(reopen()->value("Ntn").toULongLong(), stored[position]);
        EXPECT_EQ(store.numberOfTopNetworks(), position);
        EXPECT_EQ(store.numberOfTopNetworksValue(), stored[position]);
    }
    store.setNumberOfTopNetworks(std::numeric_limits<quint64>::max());
    EXPECT_EQ(reopen()->value("Ntn").toULongLong(), std::numeric_limits<quint64>::max());
}

TEST_F(PreferenceStoreTest, NumberOfDatasPerInterval)
{
    PreferenceStore store(m_settings.get());
    const std::pair<qint64, qint64> rows[] = {{1, 301}, {3, 101}, {15, 21}, {-1, -299}};
    for (const auto &[interval, datas] : rows) {
        SCOPED_TRACE(interval);
        m_settings->setValue("ui", interval);
        EXPECT_EQ(store.updateIntervalValue(), interval);
        EXPECT_EQ(store.numberOfDatas(), datas);
    }
}

TEST_F(PreferenceStoreTest, HandEditedValuesAreSafe)
{
    {
        QSettings file(path(), QSettings::IniFormat);
        file.setValue("ui", 0);
        file.setValue("Ntn", -5);
    }
    m_settings = reopen();
    PreferenceStore store(m_settings.get());
    // A stored 0 is left in the file but divides as 1.
    EXPECT_EQ(std::tuple(store.updateInterval(), store.updateIntervalValue()), std::tuple(0, 1));
    EXPECT_EQ(m_settings->value("ui").toLongLong(), 0);
    EXPECT_EQ(store.numberOfTopNetworksValue(), quint64(-5));

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

TEST_F(PreferenceStoreTest, ValueSettersLeaveTheStoreAlone)
{
    PreferenceStore store(m_settings.get());
    store.setUpdateInterval(1);
    store.setUpdateIntervalValue(7);
    store.setNumberOfTopNetworksValue(42);
    EXPECT_EQ(store.updateIntervalValue(), 1);
    EXPECT_EQ(store.numberOfTopNetworksValue(), 10u);
    EXPECT_EQ(reopen()->value("ui").toLongLong(), 1);
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
    EXPECT_EQ(again.commentForBssid("00:11:22:33:44:55"), QString());
    EXPECT_EQ(again.commentForBssid("66:77:88:99:aa:bb"), hostile);
    EXPECT_EQ(again.commentForBssid("66:77:88:99:AA:BB"), std::nullopt);

    // Junk under "comment" reads as no comments, and the next edit replaces it.
    disk->setValue("comment", QStringLiteral("not a dictionary"));
    EXPECT_TRUE(again.comments().isEmpty());
    again.setComment("x", "y");
    EXPECT_EQ(again.commentForBssid("x"), QStringLiteral("y"));
    QVariantMap odd{{"n", QVariantList{1, 2}}};
    disk->setValue("comment", odd);
    EXPECT_EQ(again.commentForBssid("n"), std::nullopt);
}

TEST(PreferenceStoreDefaultLocation, UsesTheUserSettingsOfTheProgram)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dir.path());
    {
        PreferenceStore store;
        store.setUpdateInterval(4);
        EXPECT_EQ(store.updateInterval(), 0);
    }
    QSettings check(QStringLiteral("Corvane"), QStringLiteral("Wi-Fi Monitor"));
    EXPECT_TRUE(check.fileName().startsWith(dir.path()));
    EXPECT_EQ(check.value("ui").toLongLong(), 10);
}

} // namespace

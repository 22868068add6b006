// SPDX-License-Identifier: GPL-3.0-or-later
#include "prefs/PreferenceStore.h"
#include "prefs/SettingsFileCheck.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

// What the program itself writes must pass untouched, however odd the comments are.
TEST(SettingsFileCheck, OwnFilesPassUntouched)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("own.conf"));
    {
        QSettings settings(path, QSettings::IniFormat);
        PreferenceStore store(&settings);
        store.setUpdateInterval(3);
        (void)store.numberOfTopNetworks();
        store.setComment(QStringLiteral("02:00:00:00:00:02"),
                         QStringLiteral("\"quoted\", comma; \\ back\nline \u00e9 \U0001F4F6"));
        store.setComment(QStringLiteral("02:00:00:00:00:03"), QString(QChar(0)) + "nul");
    }
    const QByteArray before = readAll(path);
    ASSERT_TRUE(before.contains("@Variant("));
    EXPECT_TRUE(SettingsFileCheck::repair(path).isEmpty());
    EXPECT_EQ(readAll(path), before);
    EXPECT_FALSE(QFile::exists(path + ".damaged"));
    EXPECT_TRUE(SettingsFileCheck::repair(dir.filePath(QStringLiteral("absent.conf"))).isEmpty());
}

// Values that would make QDataStream reserve gigabytes or recurse without end are taken
// out; the rest of the file still reads, and the original is kept beside it.
TEST(SettingsFileCheck, HostileVariantsAreRemovedAndKept)
{
    const QByteArray deep = QByteArray("\\0\\0\\0\\t\\0\\0\\0\\x1").repeated(5000);
    const struct
    {
        const char *what;
        QByteArray value;
    } rows[] = {
        {"list of 2^31 variants", "@Variant(\\0\\0\\0\\t\\x7f\\xff\\xff\\xff)"},
        {"string list of 2^31 texts", "@Variant(\\0\\0\\0\\v\\x7f\\xff\\xff\\xff)"},
        {"text longer than the value", "@Variant(\\0\\0\\0\\n\\0\\x10\\0\\0abcd)"},
        {"5,000 nested lists", "@Variant(" + deep + ")"},
        {"a type by name", "@Variant(\\0\\0\\0\\x7f\\0\\0\\0\\x5QRect)"},
        {"an escaped @", "\\x40Variant(\\0\\0\\0\\t\\x7f\\xff\\xff\\xff)"},
        {"one item of a list", "a, @Variant(\\0\\0\\0\\t\\x7f\\xff\\xff\\xff)"},
        {"the damaged dictionary a fuzzer found",
         QByteArray("@Variant(\\0\\0\\0\\b\\0\\0\\0\\x2\\0\\0\\0\\\"\\0]0\xdcx30\\0\xcd") +
             QByteArray(40, '\0') + "15\\0\\0\\0\\n\\0\\0\\=5)"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("prefs.conf"));
        const QByteArray original = "[General]\nui=3\ncomment=" + row.value + "\nNtn=15\n";
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(original) == original.size());
        file.close();
        EXPECT_FALSE(SettingsFileCheck::isSafeValue(row.value));
        const QStringList messages = SettingsFileCheck::repair(path);
        ASSERT_EQ(messages.size(), 2);
        EXPECT_TRUE(messages[0].contains("3: the value of \"comment\" cannot be read"));
        EXPECT_EQ(readAll(path + ".damaged"), original);
        EXPECT_EQ(readAll(path), "[General]\nui=3\nNtn=15\n");
        QSettings settings(path, QSettings::IniFormat);
        PreferenceStore store(&settings);
        EXPECT_EQ(std::tuple(store.updateIntervalValue(), store.numberOfTopNetworksValue(),
                             store.comments().size()),
                  std::tuple(3, 15u, 0));
    }
}

} // namespace

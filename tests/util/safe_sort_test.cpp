// SPDX-License-Identifier: GPL-3.0-or-later
// The merge sort must be a correct stable sort for proper orderings and stay memory-safe
// (checked under the sanitizers) for comparisons that are not orderings at all.
#include "util/SafeSort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <set>
#include <vector>

namespace {

// Random keys below `keys`, each element tagged with its place before sorting.
std::vector<std::pair<int, int>> randomItems(std::mt19937 &gen, int n, int keys)
{
    std::vector<std::pair<int, int>> items;
    for (int i = 0; i < n; ++i)
        items.emplace_back(int(gen() % unsigned(keys)), i);
    return items;
}

using Less = std::function<bool(const std::pair<int, int> &, const std::pair<int, int> &)>;

TEST(SafeStableSort, StableForOrderingsAndSafeForAnythingElse)
{
    std::mt19937 gen(1);
    const Less byKey = [](const auto &a, const auto &b) { return a.first < b.first; };
    for (int n : {0, 1, 2, 17, 33, 257, 4099}) {
        for (int keys : {1, 3, n + 1}) {
            auto items = randomItems(gen, n, keys), expected = items;
            std::stable_sort(expected.begin(), expected.end(), byKey);
            safeStableSort(items.begin(), items.end(), byKey);
            ASSERT_EQ(items, expected) << n;
            // Sorted input (every later display sort) and reversed input.
            safeStableSort(items.begin(), items.end(), byKey);
            ASSERT_EQ(items, expected) << n;
            std::reverse(items.begin(), items.end());
            safeStableSort(items.begin(), items.end(), byKey);
            ASSERT_TRUE(std::is_sorted(items.begin(), items.end(), byKey));
        }
    }
    std::mt19937 coin(3);
    const Less noOrderings[] = {
        [](const auto &, const auto &) { return true; },
        [&coin](const auto &, const auto &) { return coin() & 1; },
        [](const auto &a, const auto &b) { return a.first <= b.first; },
        // Key 0 is "equal to everything", as a hidden network's name is.
        [](const auto &a, const auto &b) { return a.first && b.first && a.first < b.first; },
    };
    for (const Less &less : noOrderings) {
        for (int n : {2, 17, 1000}) {
            auto items = randomItems(gen, n, 7);
            const auto before = items;
            safeStableSort(items.begin(), items.end(), less);
            std::sort(items.begin(), items.end(),
                      [](const auto &a, const auto &b) { return a.second < b.second; });
            ASSERT_EQ(items, before) << n; // each element once, intact
        }
    }
}

TEST(SafeStableSort, MoveOnlyElementsEachSurviveOnce)
{
    std::vector<std::unique_ptr<int>> values;
    std::set<const int *> before, after;
    for (int i = 0; i < 2000; ++i)
        before.insert(values.emplace_back(std::make_unique<int>(i % 50)).get());
    safeStableSort(values, [](const auto &a, const auto &b) { return *a % 3 == 0 || *b < 0; });
    for (const auto &v : values)
        after.insert(v.get());
    EXPECT_EQ(after, before);
    EXPECT_EQ(values.size(), before.size());
}

} // namespace

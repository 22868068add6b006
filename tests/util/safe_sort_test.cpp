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

struct Item
{
    int key;
    int order; // position before sorting, to check stability
};

std::vector<Item> randomItems(std::mt19937 &gen, int n, int keys)
{
    std::uniform_int_distribution<int> dist(0, keys - 1);
    std::vector<Item> items;
    for (int i = 0; i < n; ++i)
        items.push_back({dist(gen), i});
    return items;
}

bool samePermutation(std::vector<Item> a, std::vector<Item> b)
{
    auto byOrder = [](const Item &x, const Item &y) { return x.order < y.order; };
    std::sort(a.begin(), a.end(), byOrder);
    std::sort(b.begin(), b.end(), byOrder);
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const Item &x, const Item &y) {
        return x.key == y.key && x.order == y.order;
    });
}

} // namespace

TEST(SafeStableSort, MatchesStableSortForProperOrderings)
{
    std::mt19937 gen(1);
    auto byKey = [](const Item &a, const Item &b) { return a.key < b.key; };
    for (int n : {0, 1, 2, 3, 15, 16, 17, 31, 32, 33, 100, 257, 1000, 4099}) {
        for (int keys : {1, 3, n + 1}) {
            auto items = randomItems(gen, n, keys);
            auto expected = items;
            std::stable_sort(expected.begin(), expected.end(), byKey);
            safeStableSort(items.begin(), items.end(), byKey);
            for (std::size_t i = 0; i < items.size(); ++i)
                ASSERT_EQ(std::pair(items[i].key, items[i].order),
                          std::pair(expected[i].key, expected[i].order))
                    << n;
            // Sorted input (every later display sort) and reversed input.
            auto again = items;
            safeStableSort(again.begin(), again.end(), byKey);
            ASSERT_TRUE(
                std::equal(again.begin(), again.end(), items.begin(), items.end(),
                           [](const Item &x, const Item &y) { return x.order == y.order; }));
            std::reverse(again.begin(), again.end());
            safeStableSort(again.begin(), again.end(), byKey);
            ASSERT_TRUE(std::is_sorted(again.begin(), again.end(), byKey));
        }
    }
}

TEST(SafeStableSort, SurvivesComparisonsThatAreNoOrdering)
{
    std::mt19937 gen(2);
    std::mt19937 coin(3);
    const struct
    {
        const char *what;
        std::function<bool(const Item &, const Item &)> less;
    } rows[] = {
        {"always true", [](const Item &, const Item &) { return true; }},
        {"always false", [](const Item &, const Item &) { return false; }},
        {"random answers", [&coin](const Item &, const Item &) { return coin() & 1; }},
        {"reflexive less-or-equal", [](const Item &a, const Item &b) { return a.key <= b.key; }},
        // Key 0 is "equal to everything", as a hidden network's name is.
        {"not transitive",
         [](const Item &a, const Item &b) { return a.key != 0 && b.key != 0 && a.key < b.key; }},
    };
    for (const auto &row : rows) {
        for (int n : {2, 17, 64, 1000, 3001}) {
            auto items = randomItems(gen, n, 7);
            const auto before = items;
            safeStableSort(items.begin(), items.end(), row.less);
            ASSERT_TRUE(samePermutation(items, before)) << row.what << " " << n;
        }
    }
}

TEST(SafeStableSort, MoveOnlyElementsEachSurviveOnce)
{
    std::mt19937 gen(4);
    std::vector<std::unique_ptr<int>> values;
    for (int i = 0; i < 2000; ++i)
        values.push_back(std::make_unique<int>(int(gen() % 50)));
    safeStableSort(values, [](const auto &a, const auto &b) { return *a % 3 == 0 || *b < 0; });
    std::set<const int *> seen;
    for (const auto &v : values) {
        ASSERT_NE(v, nullptr);
        seen.insert(v.get());
    }
    EXPECT_EQ(seen.size(), values.size());
}

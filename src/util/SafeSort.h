// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

// A stable merge sort that stays memory-safe whatever the comparison answers.
//
// std::sort and std::stable_sort require a strict weak ordering; given anything else
// (the display order treats a nameless record as equal to every other, which is not
// transitive) their unguarded inner loops may walk off the range. Here every index is
// bounded by the range itself, so a comparison that is inconsistent can only produce an
// odd order, never an out-of-range access. Each element is moved, never copied, and ends
// up in the range exactly once.
//
// `less(a, b)` answers whether a must come before b; when it says neither, the earlier
// element stays first (stable).
template <typename RandomIt, typename Less>
void safeStableSort(RandomIt first, RandomIt last, Less less)
{
    using T = typename std::iterator_traits<RandomIt>::value_type;
    using Diff = typename std::iterator_traits<RandomIt>::difference_type;
    const Diff n = last - first;
    if (n < 2)
        return;

    // Short runs by insertion sort: the scan stops at the run start at the latest.
    constexpr Diff kRun = 16;
    for (Diff lo = 0; lo < n; lo += kRun) {
        const Diff hi = std::min(lo + kRun, n);
        for (Diff i = lo + 1; i < hi; ++i) {
            if (!less(first[i], first[i - 1]))
                continue;
            T held = std::move(first[i]);
            Diff j = i;
            do {
                first[j] = std::move(first[j - 1]);
                --j;
            } while (j > lo && less(held, first[j - 1]));
            first[j] = std::move(held);
        }
    }
    if (n <= kRun)
        return;

    // Bottom-up merging, alternating between the range and one buffer of n elements.
    std::vector<T> buffer;
    buffer.reserve(static_cast<std::size_t>(n));
    for (Diff i = 0; i < n; ++i)
        buffer.push_back(std::move(first[i]));
    auto bufferBegin = buffer.begin();

    // Merges [src+lo, src+mid) and [src+mid, src+hi) into dst+lo.
    auto mergeRuns = [&less](auto src, auto dst, Diff lo, Diff mid, Diff hi) {
        Diff a = lo, b = mid, out = lo;
        // Runs already in order (the usual case when re-sorting a sorted list) are
        // copied through with one comparison.
        const bool inOrder = mid < hi && !less(src[mid], src[mid - 1]);
        while (!inOrder && a < mid && b < hi) {
            if (less(src[b], src[a]))
                dst[out++] = std::move(src[b++]);
            else
                dst[out++] = std::move(src[a++]);
        }
        while (a < mid)
            dst[out++] = std::move(src[a++]);
        while (b < hi)
            dst[out++] = std::move(src[b++]);
    };

    bool inBuffer = true; // where the current runs live
    for (Diff width = kRun; width < n; width *= 2) {
        for (Diff lo = 0; lo < n; lo += 2 * width) {
            const Diff mid = std::min(lo + width, n);
            const Diff hi = std::min(lo + 2 * width, n);
            if (inBuffer)
                mergeRuns(bufferBegin, first, lo, mid, hi);
            else
                mergeRuns(first, bufferBegin, lo, mid, hi);
        }
        inBuffer = !inBuffer;
    }
    if (inBuffer) {
        for (Diff i = 0; i < n; ++i)
            first[i] = std::move(bufferBegin[i]);
    }
}

// Convenience for whole containers (QList, std::vector, ...).
template <typename Container, typename Less> void safeStableSort(Container &container, Less less)
{
    safeStableSort(std::begin(container), std::end(container), less);
}

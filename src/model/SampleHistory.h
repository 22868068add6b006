// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <optional>

// The last 301 samples of one measurement, oldest first, in a fixed ring inside the record:
// appending never shifts or allocates, so a city's worth of records costs its samples and
// no more. A missing sample is stored as a quiet NaN, which no reading produces (samples
// derive from whole dBm numbers), and is read back as std::nullopt.
template <typename T> class SampleHistory
{
    static_assert(std::numeric_limits<T>::has_quiet_NaN);

public:
    static constexpr int kCapacity = 301;
    using Sample = std::optional<T>;

    // Reads entries by position, oldest first, as numbers or std::nullopt.
    class const_iterator
    {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Sample;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = Sample;

        const_iterator() = default;
        const_iterator(const SampleHistory *history, int index) : m_history(history), m_index(index)
        {
        }
        Sample operator*() const { return m_history->at(m_index); }
        const_iterator &operator++()
        {
            ++m_index;
            return *this;
        }
        const_iterator operator++(int)
        {
            const_iterator before = *this;
            ++m_index;
            return before;
        }
        bool operator==(const const_iterator &other) const { return m_index == other.m_index; }
        bool operator!=(const const_iterator &other) const { return m_index != other.m_index; }

    private:
        const SampleHistory *m_history = nullptr;
        int m_index = 0;
    };

    SampleHistory() = default;
    SampleHistory(std::initializer_list<Sample> samples)
    {
        for (const Sample &s : samples)
            append(s);
    }
    // The latest kCapacity entries of `samples`.
    static SampleHistory fromList(const QList<Sample> &samples)
    {
        SampleHistory history;
        for (const Sample &s : samples)
            history.append(s);
        return history;
    }

    static T gapMarker() { return std::numeric_limits<T>::quiet_NaN(); }
    static bool isGap(T raw) { return std::isnan(raw); }

    int size() const { return m_size; }
    bool isEmpty() const { return m_size == 0; }
    void clear()
    {
        m_head = 0;
        m_size = 0;
    }

    // Entry i (0 = oldest) as stored: a number, or the gap marker.
    T raw(int i) const { return i >= 0 && i < m_size ? m_values[slot(i)] : gapMarker(); }
    Sample at(int i) const
    {
        const T value = raw(i);
        return isGap(value) ? std::nullopt : Sample(value);
    }
    Sample operator[](int i) const { return at(i); }
    Sample first() const { return at(0); }
    Sample last() const { return at(m_size - 1); }

    // Appends one entry; a full ring drops its oldest entry to make room.
    void append(const Sample &sample)
    {
        const T value = sample ? *sample : gapMarker();
        if (m_size < kCapacity) {
            m_values[slot(m_size)] = value;
            ++m_size;
        } else {
            m_values[m_head] = value;
            m_head = static_cast<std::uint16_t>(m_head + 1 == kCapacity ? 0 : m_head + 1);
        }
    }

    // Calls f(raw) for every entry, oldest first, without a division per entry.
    template <typename F> void forEachRaw(F &&f) const
    {
        const int firstRun = std::min<int>(m_size, kCapacity - m_head);
        for (int i = 0; i < firstRun; ++i)
            f(m_values[m_head + i]);
        for (int i = 0; i < m_size - firstRun; ++i)
            f(m_values[i]);
    }

    QList<Sample> toList() const
    {
        QList<Sample> list;
        list.reserve(m_size);
        forEachRaw([&list](T raw) { list.append(isGap(raw) ? std::nullopt : Sample(raw)); });
        return list;
    }

    const_iterator begin() const { return const_iterator(this, 0); }
    const_iterator end() const { return const_iterator(this, m_size); }

    bool operator==(const SampleHistory &other) const
    {
        if (m_size != other.m_size)
            return false;
        for (int i = 0; i < m_size; ++i) {
            const T a = raw(i), b = other.raw(i);
            if (isGap(a) != isGap(b) || (!isGap(a) && a != b))
                return false;
        }
        return true;
    }

private:
    int slot(int i) const
    {
        const int s = m_head + i;
        return s >= kCapacity ? s - kCapacity : s;
    }

    std::array<T, kCapacity> m_values{};
    std::uint16_t m_head = 0; // slot of the oldest entry
    std::uint16_t m_size = 0;
};

using LevelHistory = SampleHistory<float>;
using SNRHistory = SampleHistory<double>;

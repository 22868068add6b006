// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRandomGenerator>

// Uniform random integers, replaceable in tests (record colours, the simulated radio).
class RandomSource
{
public:
    virtual ~RandomSource() = default;
    // A uniform integer in [lo, hi], both included.
    virtual int uniform(int lo, int hi) { return QRandomGenerator::global()->bounded(lo, hi + 1); }

    static RandomSource &instance();
    // Install a source (tests); null restores the system's. The caller keeps ownership.
    static void setInstance(RandomSource *source);
};

// A repeatable source for tests and for a seeded simulated radio.
class SeededRandomSource : public RandomSource
{
public:
    explicit SeededRandomSource(quint32 seed) : m_gen(seed) {}
    int uniform(int lo, int hi) override { return m_gen.bounded(lo, hi + 1); }
    double uniformReal() { return m_gen.generateDouble(); }

private:
    QRandomGenerator m_gen;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>

// The wall clock, replaceable in tests. Everything that asks "what time is it" (the scan
// time stamp, "last seen", the plot's freshness rule) asks Clock::now().
class Clock
{
public:
    virtual ~Clock() = default;
    virtual QDateTime currentDateTime() const { return QDateTime::currentDateTime(); }

    static QDateTime now() { return instance().currentDateTime(); }
    static const Clock &instance();
    // Install a clock (tests); null restores the system clock. The caller keeps ownership.
    static void setInstance(const Clock *clock);
};

// A clock that stands still until told to move.
class ManualClock : public Clock
{
public:
    explicit ManualClock(QDateTime start) : m_now(std::move(start)) {}
    QDateTime currentDateTime() const override { return m_now; }
    void set(const QDateTime &t) { m_now = t; }
    void advance(qint64 msecs) { m_now = m_now.addMSecs(msecs); }

private:
    QDateTime m_now;
};

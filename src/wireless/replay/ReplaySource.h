// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWNetwork.h"
#include "wireless/capture/CaptureReader.h"

#include <QHash>
#include <QList>
#include <QString>

#include <memory>
#include <optional>

// A capture cut into scan windows by the frames' own time stamps. Windows lie end to end from
// the first frame's time; one window yields every BSSID heard in it, as its latest frame.
// The capture is read lazily, so its size does not matter.
class ReplaySource
{
public:
    // Levels for captures whose link-layer header carries none (plain 802.11, for example).
    static constexpr int kDefaultSignalDbm = -60;
    static constexpr int kDefaultNoiseDbm = -95;

    // None, with the reason in *errorText, when the file is no readable 802.11 capture or
    // holds no beacon or probe response at all.
    static std::unique_ptr<ReplaySource> open(const QString &path, QString *errorText);

    void setWindowUs(qint64 windowUs) { m_windowUs = windowUs > 0 ? windowUs : 1; }
    qint64 windowUs() const { return m_windowUs; }

    // The next window that holds frames (stretches without any are skipped); empty at the end.
    QList<CWNetworkRef> nextWindow();
    // Every window that ends at or before `positionUs` (capture time), merged into one scan.
    QList<CWNetworkRef> windowsEndingBy(qint64 positionUs);

    bool atEnd() const { return !m_next; }
    qint64 firstTimeUs() const { return m_firstTimeUs; }
    // Capture time at which the next window starts.
    qint64 windowStartUs() const { return m_windowStartUs; }
    // The frequency of the latest frame served that had one, 0 if none did.
    int lastFrequencyMHz() const { return m_lastFrequency; }
    const CaptureReader &reader() const { return *m_reader; }

private:
    struct Pending
    {
        qint64 timeUs = 0;
        CWNetworkRef network;
        int frequencyMHz = 0;
    };

    explicit ReplaySource(std::unique_ptr<CaptureReader> reader) : m_reader(std::move(reader)) {}
    void readAhead();
    QList<CWNetworkRef> takeBefore(qint64 endUs);

    std::unique_ptr<CaptureReader> m_reader;
    std::optional<Pending> m_next;
    qint64 m_windowUs = 2000000;
    qint64 m_firstTimeUs = 0;
    qint64 m_windowStartUs = 0;
    int m_lastFrequency = 0;
};

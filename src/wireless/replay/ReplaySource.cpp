// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/replay/ReplaySource.h"

#include "wireless/ie/BssNetworkMapper.h"

std::unique_ptr<ReplaySource> ReplaySource::open(const QString &path, QString *errorText)
{
    QString error;
    std::unique_ptr<CaptureReader> reader = CaptureReader::open(path, &error);
    if (!reader) {
        if (errorText)
            *errorText = error;
        return nullptr;
    }
    std::unique_ptr<ReplaySource> source(new ReplaySource(std::move(reader)));
    source->readAhead();
    if (!source->m_next) {
        if (errorText) {
            const QString why = source->m_reader->errorText();
            *errorText = why.isEmpty()
                             ? QStringLiteral("%1: the capture holds no beacons or probe responses")
                                   .arg(path)
                             : QStringLiteral("%1: no beacon or probe response could be read (%2)")
                                   .arg(path, why);
        }
        return nullptr;
    }
    source->m_firstTimeUs = source->m_next->timeUs;
    source->m_windowStartUs = source->m_firstTimeUs;
    return source;
}

void ReplaySource::readAhead()
{
    CaptureReader::Frame frame;
    if (!m_reader->next(&frame)) {
        m_next.reset();
        return;
    }
    frame.observation.signalDbm = frame.signalDbm.value_or(kDefaultSignalDbm);
    frame.observation.noiseDbm = frame.noiseDbm.value_or(kDefaultNoiseDbm);
    m_next =
        Pending{frame.timeUs,
                CWNetwork::create(BssNetworkMapper::networkData(frame.elements, frame.observation)),
                frame.observation.frequencyMHz};
}

QList<CWNetworkRef> ReplaySource::takeBefore(qint64 endUs)
{
    QList<CWNetworkRef> scan;
    QHash<QString, qsizetype> slot; // BSSID -> index in scan
    // A frame stamped before the window (an unsorted capture) still belongs to the next scan.
    while (m_next && m_next->timeUs < endUs) {
        const CWNetworkRef &network = m_next->network;
        const auto it = slot.constFind(network->bssid());
        if (it == slot.cend()) {
            slot.insert(network->bssid(), scan.size());
            scan.append(network);
        } else {
            scan[*it] = network; // frames come in capture order: the later one wins
        }
        if (m_next->frequencyMHz != 0)
            m_lastFrequency = m_next->frequencyMHz;
        readAhead();
    }
    return scan;
}

QList<CWNetworkRef> ReplaySource::nextWindow()
{
    if (!m_next)
        return {};
    if (m_next->timeUs >= m_windowStartUs + m_windowUs) {
        // Jump over the empty windows, staying on the grid the first frame started.
        m_windowStartUs += (m_next->timeUs - m_windowStartUs) / m_windowUs * m_windowUs;
    }
    const qint64 end = m_windowStartUs + m_windowUs;
    QList<CWNetworkRef> scan = takeBefore(end);
    m_windowStartUs = end;
    return scan;
}

QList<CWNetworkRef> ReplaySource::windowsEndingBy(qint64 positionUs)
{
    if (!m_next || positionUs < m_windowStartUs + m_windowUs)
        return {};
    const qint64 windows = (positionUs - m_windowStartUs) / m_windowUs;
    const qint64 end = m_windowStartUs + windows * m_windowUs;
    QList<CWNetworkRef> scan = takeBefore(end);
    m_windowStartUs = end;
    return scan;
}

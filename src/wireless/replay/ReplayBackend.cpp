// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/replay/ReplayBackend.h"

#include "util/Clock.h"
#include "wireless/ie/FrequencyPlan.h"
#include "wireless/replay/ReplaySource.h"

#include <QDebug>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {
const QString kCannotControl = QStringLiteral("A replayed capture cannot be controlled");
} // namespace

ReplayBackend::ReplayBackend(std::unique_ptr<ReplaySource> source, const QString &path,
                             double speed)
    : m_source(std::move(source)), m_path(path), m_speed(speed), m_start(Clock::now())
{
    m_interface = QFileInfo(path).completeBaseName();
    if (m_interface.isEmpty())
        m_interface = QStringLiteral("replay");
}

ReplayBackend::~ReplayBackend() = default;

std::shared_ptr<ReplayBackend> ReplayBackend::open(const QString &path, double speed,
                                                   QString *errorText)
{
    if (!std::isfinite(speed) || speed < 0) {
        if (errorText)
            *errorText = QStringLiteral("The replay speed must be 0 or a positive number");
        return nullptr;
    }
    std::unique_ptr<ReplaySource> source = ReplaySource::open(path, errorText);
    if (!source)
        return nullptr;
    return std::shared_ptr<ReplayBackend>(new ReplayBackend(std::move(source), path, speed));
}

void ReplayBackend::setScanWindow(double seconds)
{
    if (!std::isfinite(seconds) || seconds <= 0)
        return;
    m_source->setWindowUs(std::max<qint64>(1, std::llround(std::min(seconds, 1e9) * 1e6)));
}

double ReplayBackend::scanWindow() const
{
    return m_source->windowUs() / 1e6;
}

QList<qint64> ReplayBackend::supportedChannels(const QString &name) const
{
    if (name != m_interface)
        return {};
    QList<qint64> channels(m_channels.cbegin(), m_channels.cend());
    std::sort(channels.begin(), channels.end());
    return channels;
}

std::optional<CWChannel> ReplayBackend::wlanChannel(const QString &name) const
{
    const int mhz = m_source->lastFrequencyMHz();
    if (name != m_interface || mhz == 0)
        return std::nullopt;
    return CWChannel(FrequencyPlan::channelForFrequency(mhz), FrequencyPlan::bandForFrequency(mhz),
                     kCWChannelWidth20MHz);
}

std::optional<int> ReplayBackend::interfaceState(const QString &name) const
{
    if (name != m_interface)
        return std::nullopt;
    return kCWInterfaceStateInactive;
}

std::optional<int> ReplayBackend::opMode(const QString &name) const
{
    // The capture was recorded by a listening radio, and replaying it is listening too.
    if (name != m_interface)
        return std::nullopt;
    return kCWOpModeMonitorMode;
}

QList<CWNetworkRef> ReplayBackend::scanForNetworks(const QString &name, const QVariantMap &,
                                                   CWError *error)
{
    if (name != m_interface) {
        CWError::set(error, kCWErrorNoInterface, QStringLiteral("No interface named %1").arg(name));
        return {};
    }
    CWError::reset(error);
    QList<CWNetworkRef> scan;
    if (m_speed == 0) {
        scan = m_source->nextWindow();
    } else {
        const qint64 elapsedMs = std::max<qint64>(0, m_start.msecsTo(Clock::now()));
        const double position =
            double(m_source->firstTimeUs()) + double(elapsedMs) * 1000.0 * m_speed;
        scan = m_source->windowsEndingBy(position >= 9.2e18 ? std::numeric_limits<qint64>::max()
                                                            : qint64(position));
    }
    for (const CWNetworkRef &network : scan) {
        if (network->wlanChannel().channelNumber() != 0)
            m_channels.insert(network->wlanChannel().channelNumber());
    }
    finishIfDone();
    return scan;
}

void ReplayBackend::finishIfDone()
{
    if (m_finished || !m_source->atEnd())
        return;
    m_finished = true;
    const CaptureReader &reader = m_source->reader();
    if (!reader.errorText().isEmpty())
        qWarning().noquote() << QStringLiteral("replay: %1: reading stopped early: %2")
                                    .arg(m_path, reader.errorText());
    if (reader.damagedFrames() > 0 || reader.badPackets() > 0)
        qInfo().noquote() << QStringLiteral(
                                 "replay: %1: %2 frames with broken elements, %3 "
                                 "packets with a broken header (served what was readable)")
                                 .arg(m_path)
                                 .arg(reader.damagedFrames())
                                 .arg(reader.badPackets());
    qInfo().noquote() << QStringLiteral("replay: %1 finished (%2 beacons and probe responses)")
                             .arg(m_path)
                             .arg(reader.framesDecoded());
    Q_EMIT replayFinished();
}

bool ReplayBackend::refuse(const QString &name, CWError *error) const
{
    if (name != m_interface)
        CWError::set(error, kCWErrorNoInterface, QStringLiteral("No interface named %1").arg(name));
    else
        CWError::set(error, kCWErrorNotSupported, kCannotControl);
    return false;
}

bool ReplayBackend::setPower(const QString &name, bool, CWError *error)
{
    return refuse(name, error);
}

bool ReplayBackend::setChannel(const QString &name, quint64, CWError *error)
{
    return refuse(name, error);
}

void ReplayBackend::disassociate(const QString &name)
{
    qInfo().noquote()
        << QStringLiteral("replay: disassociate on %1 ignored: %2").arg(name, kCannotControl);
}

bool ReplayBackend::associateToNetwork(const QString &name, const CWNetworkRef &,
                                       const QVariantMap &, CWError *error)
{
    return refuse(name, error);
}

bool ReplayBackend::enableIBSS(const QString &name, const QVariantMap &, CWError *error)
{
    return refuse(name, error);
}

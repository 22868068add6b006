// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/WirelessBackend.h"

#include <QDateTime>
#include <QSet>

#include <memory>

class ReplaySource;

// A recorded capture played back as the radio: its beacons and probe responses are served as
// scans, window by window. The interface is a powered-on listener named after the file, and
// nothing about it can be changed.
class ReplayBackend final : public WirelessBackend
{
    Q_OBJECT
public:
    ~ReplayBackend() override;

    // `speed` 1 plays in real time, N > 1 N times faster, 0 as fast as scans come (every scan
    // returns the next window). Null, with *errorText set, when the file cannot be replayed.
    static std::shared_ptr<ReplayBackend> open(const QString &path, double speed,
                                               QString *errorText);

    // Length of one scan window in capture time (the app sets the update interval).
    void setScanWindow(double seconds);
    double scanWindow() const;
    double speed() const { return m_speed; }
    // True once every frame has been served.
    bool finished() const { return m_finished; }
    QString capturePath() const { return m_path; }

    QString backendName() const override { return QStringLiteral("replay"); }
    QStringList interfaceNames() const override { return {m_interface}; }

    bool powerOn(const QString &name) const override { return name == m_interface; }
    std::optional<QString> ssid(const QString &) const override { return std::nullopt; }
    std::optional<QString> bssid(const QString &) const override { return std::nullopt; }
    qint64 security(const QString &) const override { return 0; }
    qint64 rssiValue(const QString &) const override { return 0; }
    qint64 noiseMeasurement(const QString &) const override { return 0; }
    double transmitRate(const QString &) const override { return 0.0; }
    qint64 transmitPower(const QString &) const override { return 0; }
    std::optional<QString> countryCode(const QString &) const override { return std::nullopt; }
    QList<qint64> supportedChannels(const QString &name) const override;
    std::optional<CWChannel> wlanChannel(const QString &name) const override;
    std::optional<int> interfaceState(const QString &name) const override;
    std::optional<int> opMode(const QString &name) const override;
    bool serviceActive(const QString &) const override { return false; }

    QList<CWNetworkRef> scanForNetworks(const QString &name, const QVariantMap &parameters,
                                        CWError *error) override;
    bool setPower(const QString &name, bool on, CWError *error) override;
    bool setChannel(const QString &name, quint64 channel, CWError *error) override;
    void disassociate(const QString &name) override;
    bool associateToNetwork(const QString &name, const CWNetworkRef &network,
                            const QVariantMap &parameters, CWError *error) override;
    bool enableIBSS(const QString &name, const QVariantMap &parameters, CWError *error) override;

Q_SIGNALS:
    void replayFinished();

private:
    ReplayBackend(std::unique_ptr<ReplaySource> source, const QString &path, double speed);
    bool refuse(const QString &name, CWError *error) const;
    void finishIfDone();

    std::unique_ptr<ReplaySource> m_source;
    QString m_path;
    QString m_interface;
    double m_speed = 1.0;
    QDateTime m_start;
    bool m_finished = false;
    QSet<qint64> m_channels;
};

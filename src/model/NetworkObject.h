// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/SampleHistory.h"
#include "wireless/CWNetwork.h"

#include <QColor>
#include <QDateTime>
#include <QImage>
#include <QString>

#include <memory>
#include <optional>

class NetworkObject;
using NetworkObjectRef = std::shared_ptr<NetworkObject>;

// One history entry as read: a number, or std::nullopt for a missing sample. Signal and
// noise are level fractions in single precision; SNR entries are doubles.
using LevelSample = LevelHistory::Sample;
using SNRSample = SNRHistory::Sample;

// The record kept for one observed access point (one BSSID) for the life of the program:
// the latest scan result, 301-entry histories of signal, noise and SNR with their
// statistics, the channel facts, a colour and the user's comment. Records are shared by
// the controller and every view, never copied.
class NetworkObject
{
public:
    static constexpr int kHistoryCapacity = LevelHistory::kCapacity;

    NetworkObject() = default;
    Q_DISABLE_COPY_MOVE(NetworkObject)

    // --- class operations ---
    // dBm to the level fraction 1 + dBm/106, in single precision, not clamped.
    static float signalDBIAsPercentage(qint64 dbm);
    static double levelWithRSSI(qint64 rssi, qint64 noise);
    static double snrWithRSSI(qint64 rssi, qint64 noise);
    // A new record, created and updated once with the force flag set.
    static NetworkObjectRef objectWithCWNetwork(const CWNetworkRef &network, const QDateTime &time);
    static QString stringOfSignal(double signal);
    static QString stringOfNoise(double noise);
    static QString stringOfSNR(qint64 snr);
    static int securityModeForString(const std::optional<QString> &security);
    static QString csvHeadString();
    static QString htmlTableHeadString();

    // --- record operations ---
    void initWithCWNetwork(const CWNetworkRef &network, const QDateTime &time);
    NetworkObject *updateWithCWNetwork(const CWNetworkRef &network, const QDateTime &time);

    double signal() const;
    double noise() const;
    qint64 snr() const;
    double signalLevel() const;
    CWNetworkRef cwNetwork() const { return m_cwNetwork; }

    // Derived texts.
    void updatePHYMode();
    void updateSecurity();
    QString channelBandString() const;
    QString channelWidthString() const;
    QString signalQualityString() const;
    QString signalString() const;
    QString noiseString() const;
    QString snrString() const;
    QString lastSeen() const; // relative to Clock::now()
    // The same relative to `now`: one reading of the clock serves a whole list.
    QString lastSeenAt(const QDateTime &now) const;
    QString ibss() const;
    // 19 x 17 points, drawn at the finest pixel density among the screens; its colour and
    // padlock are fixed at the first request. Records with the same colour and padlock share
    // one image, so a large survey holds no image per record.
    QImage icon();

    // Export rows.
    QString csvString() const;
    QString htmlRowString() const;

    // --- properties ---
    std::optional<QString> name() const { return m_name; }
    void setName(const std::optional<QString> &name) { m_name = name; }
    QString bssid() const { return m_bssid; }
    void setBssid(const QString &bssid) { m_bssid = bssid; }
    std::optional<QString> comment() const { return m_comment; }
    void setComment(const std::optional<QString> &comment) { m_comment = comment; }
    std::optional<QString> signalQuality() const { return m_signalQuality; }
    void setSignalQuality(const std::optional<QString> &q) { m_signalQuality = q; }
    double avgSignal() const { return m_avgSignal; }
    void setAvgSignal(double v) { m_avgSignal = v; }
    double maxSignal() const { return m_maxSignal; }
    void setMaxSignal(double v) { m_maxSignal = v; }
    double minSignal() const { return m_minSignal; }
    void setMinSignal(double v) { m_minSignal = v; }
    double avgNoise() const { return m_avgNoise; }
    void setAvgNoise(double v) { m_avgNoise = v; }
    double maxNoise() const { return m_maxNoise; }
    void setMaxNoise(double v) { m_maxNoise = v; }
    double minNoise() const { return m_minNoise; }
    void setMinNoise(double v) { m_minNoise = v; }
    qint64 avgSNR() const { return m_avgSNR; }
    void setAvgSNR(qint64 v) { m_avgSNR = v; }
    qint64 maxSNR() const { return m_maxSNR; }
    void setMaxSNR(qint64 v) { m_maxSNR = v; }
    qint64 minSNR() const { return m_minSNR; }
    void setMinSNR(qint64 v) { m_minSNR = v; }
    const LevelHistory &signals() const { return m_signals; }
    void setSignals(const LevelHistory &v) { m_signals = v; }
    const LevelHistory &noises() const { return m_noises; }
    void setNoises(const LevelHistory &v) { m_noises = v; }
    const SNRHistory &SNRs() const { return m_SNRs; }
    void setSNRs(const SNRHistory &v) { m_SNRs = v; }
    qint64 channel() const { return m_channel; }
    void setChannel(qint64 v) { m_channel = v; }
    qint64 channelBand() const { return m_channelBand; }
    void setChannelBand(qint64 v) { m_channelBand = v; }
    qint64 channelWidth() const { return m_channelWidth; }
    void setChannelWidth(qint64 v) { m_channelWidth = v; }
    QString phyMode() const { return m_phyMode; }
    void setPhyMode(const QString &v) { m_phyMode = v; }
    std::optional<QString> vendor() const { return m_vendor; }
    void setVendor(const std::optional<QString> &v) { m_vendor = v; }
    std::optional<QString> security() const { return m_security; }
    void setSecurity(const std::optional<QString> &v) { m_security = v; }
    QDateTime lastUpdated() const { return m_lastUpdated; }
    void setLastUpdated(const QDateTime &t) { m_lastUpdated = t; }
    QColor color() const { return m_color; }
    void setColor(const QColor &c) { m_color = c; }

private:
    void _updateWithCWNetwork(const CWNetworkRef &network, bool force, const QDateTime &time);

    std::optional<QString> m_name;
    QString m_bssid;
    std::optional<QString> m_comment;
    std::optional<QString> m_signalQuality;
    double m_avgSignal = 0.0;
    double m_maxSignal = 0.0;
    double m_minSignal = 0.0;
    double m_avgNoise = 0.0;
    double m_maxNoise = 0.0;
    double m_minNoise = 0.0;
    qint64 m_avgSNR = 0;
    qint64 m_maxSNR = 0;
    qint64 m_minSNR = 0;
    LevelHistory m_signals;
    LevelHistory m_noises;
    SNRHistory m_SNRs;
    qint64 m_channel = 0;
    qint64 m_channelBand = 0;
    qint64 m_channelWidth = 0;
    QString m_phyMode;
    std::optional<QString> m_vendor;
    std::optional<QString> m_security;
    QDateTime m_lastUpdated;
    QColor m_color;

    CWNetworkRef m_cwNetwork;
    // What the icon showed at its first request: colour, padlock, and whether it was asked.
    QRgb m_iconColor = 0;
    bool m_iconOpen = false;
    bool m_iconFixed = false;
};

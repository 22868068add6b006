// SPDX-License-Identifier: GPL-3.0-or-later
#include "model/NetworkObject.h"

#include "util/Clock.h"
#include "wireless/CWTypes.h"

#include <QCache>
#include <QGuiApplication>
#include <QPainter>
#include <QSvgRenderer>

#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

namespace {

// Percentages go through the C library on purpose: Qt's own formatter rounds halves
// upwards, C rounds them to even (0.125 shows as 12%, not 13%), and exported files must
// agree with what the table showed.
QString percentText(double fraction)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.0f%%", fraction * 100.0);
    return QString::fromLatin1(buffer);
}

// Truncation toward zero that stays defined for values no qint64 can hold (the
// samples derive from backend numbers we do not trust).
qint64 truncateToInt64(double value)
{
    if (std::isnan(value))
        return 0;
    constexpr double kLimit = 9223372036854775808.0; // 2^63
    if (value >= kLimit)
        return std::numeric_limits<qint64>::max();
    if (value < -kLimit)
        return std::numeric_limits<qint64>::min();
    return static_cast<qint64>(value);
}

int truncateToInt32(double value)
{
    if (std::isnan(value))
        return 0;
    if (value >= 2147483648.0)
        return std::numeric_limits<int>::max();
    if (value <= -2147483649.0)
        return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

const QString kNullText = QStringLiteral("(null)");

QString textOrNull(const std::optional<QString> &text)
{
    return text ? *text : kNullText;
}

QString textOrNull(const QString &text)
{
    return text.isNull() ? kNullText : text;
}

} // namespace

// --- class operations ---

float NetworkObject::signalDBIAsPercentage(qint64 dbm)
{
    const float value = static_cast<float>(dbm);
    return ((value / 106.0f) * 100.0f + 100.0f) / 100.0f;
}

double NetworkObject::levelWithRSSI(qint64 rssi, qint64 noise)
{
    const float level = signalDBIAsPercentage(noise) / -10.0f + signalDBIAsPercentage(rssi);
    return static_cast<double>(level);
}

double NetworkObject::snrWithRSSI(qint64 rssi, qint64 noise)
{
    const float snr = signalDBIAsPercentage(noise) / -5.0f + signalDBIAsPercentage(rssi);
    return static_cast<double>(snr);
}

NetworkObjectRef NetworkObject::objectWithCWNetwork(const CWNetworkRef &network,
                                                    const QDateTime &time)
{
    auto record = std::make_shared<NetworkObject>();
    record->initWithCWNetwork(network, time);
    return record;
}

QString NetworkObject::stringOfSignal(double signal)
{
    return percentText(signal);
}

QString NetworkObject::stringOfNoise(double noise)
{
    // Noise is shown on the same fraction scale as the signal, not in dBm.
    return percentText(noise);
}

QString NetworkObject::stringOfSNR(qint64 snr)
{
    return QString::number(snr) + QStringLiteral("dB");
}

int NetworkObject::securityModeForString(const std::optional<QString> &security)
{
    if (!security)
        return kCWSecurityModeOpen;
    static const std::array<std::pair<QLatin1StringView, int>, 6> kModes{{
        {QLatin1StringView("WEP"), kCWSecurityModeWEP},
        {QLatin1StringView("WPA Personal"), kCWSecurityModeWPA_PSK},
        {QLatin1StringView("WPA2 Personal"), kCWSecurityModeWPA2_PSK},
        {QLatin1StringView("802.1X WEP"), kCWSecurityMode8021XWEP},
        {QLatin1StringView("WPA Enterprise"), kCWSecurityModeWPA_Enterprise},
        {QLatin1StringView("WPA2 Enterprise"), kCWSecurityModeWPA2_Enterprise},
    }};
    for (const auto &[text, mode] : kModes) {
        if (*security == text)
            return mode;
    }
    // The mixed modes and the empty (open) text have no code of their own.
    return kCWSecurityModeOpen;
}

// --- record operations ---

void NetworkObject::initWithCWNetwork(const CWNetworkRef &network, const QDateTime &time)
{
    _updateWithCWNetwork(network, true, time);
}

NetworkObject *NetworkObject::updateWithCWNetwork(const CWNetworkRef &network,
                                                  const QDateTime &time)
{
    _updateWithCWNetwork(network, false, time);
    return this;
}

void NetworkObject::_updateWithCWNetwork(const CWNetworkRef &network, bool force,
                                         const QDateTime &time)
{
    if (network)
        m_cwNetwork = network;

    // The name follows the result even when there is none: an absent result clears it.
    m_name = network ? network->ssid() : std::nullopt;

    if (force)
        m_bssid = network ? network->bssid() : QString();

    // The three rings exist with the record and always hold the same number of entries; a
    // full ring drops its oldest entry as the new one goes in.
    if (network) {
        const qint64 rssi = network->rssiValue();
        const qint64 noise = network->noiseMeasurement();
        m_signals.append(signalDBIAsPercentage(rssi));
        m_noises.append(signalDBIAsPercentage(noise));
        // Widened first, scaled in double: the history keeps e.g. 40.377, not 40.
        m_SNRs.append(snrWithRSSI(rssi, noise) * 100.0);
    } else {
        m_signals.append(std::nullopt);
        m_noises.append(std::nullopt);
        m_SNRs.append(std::nullopt);
    }

    if (!network)
        return;

    // Recomputed in full every time; the start values double as clamps (a history of
    // samples all below -106 dBm keeps maxSignal at 0.0).
    double signalSum = 0.0;
    double noiseSum = 0.0;
    __int128 snrSum = 0; // 301 samples of any qint64 cannot overflow it
    qint64 count = 0;
    double maxSignal = 0.0, minSignal = 1.0;
    double maxNoise = 0.0, minNoise = 1.0;
    qint64 maxSNR = -100, minSNR = 100;
    const int n = m_signals.size();
    for (int i = 0; i < n; ++i) {
        const float signalEntry = m_signals.raw(i);
        if (LevelHistory::isGap(signalEntry))
            continue;
        const float noiseEntry = m_noises.raw(i);
        const double snrEntry = m_SNRs.raw(i);
        const double s = static_cast<double>(signalEntry);
        const double no = LevelHistory::isGap(noiseEntry) ? 0.0 : static_cast<double>(noiseEntry);
        const qint64 q = SNRHistory::isGap(snrEntry) ? 0 : truncateToInt64(snrEntry);
        signalSum += s;
        noiseSum += no;
        snrSum += q;
        ++count;
        if (s > maxSignal)
            maxSignal = s;
        if (s < minSignal)
            minSignal = s;
        if (no > maxNoise)
            maxNoise = no;
        if (no < minNoise)
            minNoise = no;
        if (q > maxSNR)
            maxSNR = q;
        if (q < minSNR)
            minSNR = q;
    }
    if (count > 0) {
        m_avgSignal = signalSum / static_cast<double>(count);
        m_avgNoise = noiseSum / static_cast<double>(count);
        m_avgSNR = static_cast<qint64>(snrSum / count);
        m_maxSignal = maxSignal;
        m_maxNoise = maxNoise;
        m_maxSNR = maxSNR;
        m_minSignal = minSignal;
        m_minNoise = minNoise;
        m_minSNR = minSNR;
    }

    const CWChannel channel = network->wlanChannel();
    m_channel = channel.channelNumber();
    m_channelBand = channel.channelBand();
    m_channelWidth = channel.channelWidth();

    updatePHYMode();
    updateSecurity();

    m_lastUpdated = time;
}

double NetworkObject::signal() const
{
    return static_cast<double>(m_signals.last().value_or(0.0f));
}

double NetworkObject::noise() const
{
    return static_cast<double>(m_noises.last().value_or(0.0f));
}

qint64 NetworkObject::snr() const
{
    return truncateToInt64(m_SNRs.last().value_or(0.0));
}

double NetworkObject::signalLevel() const
{
    // Fractions passed on as if they were dBm; nothing reads this, it is kept as it was.
    return levelWithRSSI(truncateToInt64(signal()), truncateToInt64(noise()));
}

// --- derived texts ---

void NetworkObject::updatePHYMode()
{
    static const std::array<std::pair<int, char>, 4> kModes{{
        {kCWPHYMode11a, 'a'},
        {kCWPHYMode11b, 'b'},
        {kCWPHYMode11g, 'g'},
        {kCWPHYMode11n, 'n'},
    }};
    QString text = QStringLiteral("802.11");
    bool first = true;
    for (const auto &[mode, letter] : kModes) {
        if (!m_cwNetwork || !m_cwNetwork->supportsPHYMode(mode))
            continue;
        if (!first)
            text += QLatin1Char('/');
        text += QLatin1Char(letter);
        first = false;
    }
    m_phyMode = text;
}

void NetworkObject::updateSecurity()
{
    // Mixed modes are asked before their parts so a network offering WPA and WPA2 shows
    // as mixed; an open network gets the empty text.
    static const std::array<std::pair<int, QLatin1StringView>, 9> kSecurities{{
        {kCWSecurityNone, QLatin1StringView("")},
        {kCWSecurityWEP, QLatin1StringView("WEP")},
        {kCWSecurityWPAPersonalMixed, QLatin1StringView("WPA/WPA2 Personal")},
        {kCWSecurityWPAPersonal, QLatin1StringView("WPA Personal")},
        {kCWSecurityWPA2Personal, QLatin1StringView("WPA2 Personal")},
        {kCWSecurityDynamicWEP, QLatin1StringView("802.1X WEP")},
        {kCWSecurityWPAEnterpriseMixed, QLatin1StringView("WPA/WPA2 Enterprise")},
        {kCWSecurityWPAEnterprise, QLatin1StringView("WPA Enterprise")},
        {kCWSecurityWPA2Enterprise, QLatin1StringView("WPA2 Enterprise")},
    }};
    m_security = std::nullopt;
    if (!m_cwNetwork)
        return;
    for (const auto &[code, text] : kSecurities) {
        if (m_cwNetwork->supportsSecurity(code)) {
            m_security = QString(text);
            return;
        }
    }
}

QString NetworkObject::channelBandString() const
{
    switch (m_channelBand) {
    case kCWChannelBand2GHz:
        return QStringLiteral("2.4GHz");
    case kCWChannelBand5GHz:
        return QStringLiteral("5GHz");
    default:
        return QString(QLatin1StringView(""));
    }
}

QString NetworkObject::channelWidthString() const
{
    switch (m_channelWidth) {
    case kCWChannelWidth20MHz:
        return QStringLiteral("20MHz");
    case kCWChannelWidth40MHz:
        return QStringLiteral("40MHz");
    default:
        return QString(QLatin1StringView(""));
    }
}

QString NetworkObject::signalQualityString() const
{
    // The sample is single precision, so the bounds are too: a stored 0.65 is "Perfect"
    // although the float nearest 0.65 lies just below the double 0.65.
    const double s = signal();
    if (s < double(0.1f))
        return QStringLiteral("Bad");
    if (s < double(0.2f))
        return QStringLiteral("Poor");
    if (s < double(0.35f))
        return QStringLiteral("Ok");
    if (s < double(0.5f))
        return QStringLiteral("Good");
    if (s < double(0.65f))
        return QStringLiteral("Great");
    return QStringLiteral("Perfect");
}

QString NetworkObject::signalString() const
{
    return stringOfSignal(signal());
}

QString NetworkObject::noiseString() const
{
    return stringOfNoise(noise());
}

QString NetworkObject::snrString() const
{
    return stringOfSNR(snr());
}

QString NetworkObject::lastSeen() const
{
    return lastSeenAt(Clock::now());
}

QString NetworkObject::lastSeenAt(const QDateTime &now) const
{
    // A record never updated with a result has no time; it reads as just seen.
    const double d = m_lastUpdated.isValid()
                         ? static_cast<double>(m_lastUpdated.msecsTo(now)) / 1000.0
                         : 0.0;
    char buffer[64];
    if (d < 5.0)
        return QStringLiteral("Just now");
    if (d < 60.0) {
        std::snprintf(buffer, sizeof buffer, "%.0f sec ago", d);
    } else if (d < 3600.0) {
        std::snprintf(buffer, sizeof buffer, "%.0f min ago", d / 60.0);
    } else {
        const int s = truncateToInt32(d);
        const int hours = s / 3600;
        const int minutes = (s - hours * 3600) / 60;
        std::snprintf(buffer, sizeof buffer, "%dh %dmin ago", hours, minutes);
    }
    return QString::fromLatin1(buffer);
}

QString NetworkObject::ibss() const
{
    return m_cwNetwork && m_cwNetwork->ibss() ? QStringLiteral("Yes") : QStringLiteral("No");
}

namespace {

QImage drawIcon(QRgb color, bool open, qreal ratio)
{
    constexpr int kWidth = 19;
    constexpr int kHeight = 17;
    QImage image(QSize(kWidth, kHeight) * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(QColor::fromRgba(color));
    QSvgRenderer renderer(open ? QStringLiteral(":/icons/clear.svg")
                               : QStringLiteral(":/icons/lock.svg"));
    if (renderer.isValid()) {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        // x 1, y 0, 17 x 16 measured from the bottom left corner.
        constexpr int x = 1, y = 0, w = 17, h = 16;
        renderer.render(&painter, QRectF(x, kHeight - y - h, w, h));
    }
    return image;
}

} // namespace

QImage NetworkObject::icon()
{
    if (!m_iconFixed) {
        m_iconColor = m_color.isValid() ? m_color.rgba() : QColor(Qt::transparent).rgba();
        m_iconOpen = m_cwNetwork && m_cwNetwork->supportsSecurity(kCWSecurityNone);
        m_iconFixed = true;
    }
    // Only rows on screen ask for icons, and colours come in 5,000 steps: a small cache of
    // drawn images shared by every record keeps this cheap without an image per record.
    // Main thread only, like the records themselves.
    static QCache<quint64, QImage> cache(512);
    // Drawn from the SVG for the pixel density of the finest screen (a scaled-up bitmap would
    // be blurred there); the image keeps its size in points through its pixel ratio.
    const auto *gui = qobject_cast<QGuiApplication *>(QCoreApplication::instance());
    const qreal ratio = gui ? gui->devicePixelRatio() : 1.0;
    const quint64 key =
        (quint64(qRound(ratio * 100)) << 33) | (quint64(m_iconColor) << 1) | quint64(m_iconOpen);
    if (const QImage *cached = cache.object(key))
        return *cached;
    const QImage image = drawIcon(m_iconColor, m_iconOpen, ratio);
    cache.insert(key, new QImage(image));
    return image;
}

// --- export rows ---

namespace {

// The 22 export columns of one record, in file order, as they are written (no escaping).
std::array<QString, 22> exportColumns(const NetworkObject &n)
{
    return {
        textOrNull(n.name()),
        textOrNull(n.bssid()),
        n.comment().value_or(QString(QLatin1StringView(""))),
        n.signalQualityString(),
        n.signalString(),
        NetworkObject::stringOfSignal(n.avgSignal()),
        NetworkObject::stringOfSignal(n.minSignal()),
        NetworkObject::stringOfSignal(n.maxSignal()),
        n.noiseString(),
        NetworkObject::stringOfNoise(n.avgNoise()),
        NetworkObject::stringOfNoise(n.minNoise()),
        NetworkObject::stringOfNoise(n.maxNoise()),
        n.snrString(),
        NetworkObject::stringOfSNR(n.avgSNR()),
        NetworkObject::stringOfSNR(n.minSNR()),
        NetworkObject::stringOfSNR(n.maxSNR()),
        textOrNull(n.security()),
        textOrNull(n.phyMode()),
        QString::number(n.channel()),
        n.channelBandString(),
        n.channelWidthString(),
        n.ibss(),
    };
}

} // namespace

QString NetworkObject::csvHeadString()
{
    return QStringLiteral("Network Name\tBSSID\tComment\tSignal Quality\tSignal\tAvg\tMin\tMax\t"
                          "Noise\tAvg\tMin\tMax\tSNR\tAvg\tMin\tMax\tSecurity Mode\tPHY Mode\t"
                          "Channel\tBand\tChannel Width\tIBSS\n");
}

QString NetworkObject::htmlTableHeadString()
{
    return QStringLiteral(
        "<tr><th rowspan=2>Network Name</th><th rowspan=2>BSSID</th><th rowspan=2>Comment</th>"
        "<th rowspan=2>Signal Quality</th><th colspan=4>Signal</th><th colspan=4>Noise</th>"
        "<th colspan=4>SNR</th><th rowspan=2>Security Mode</th><th rowspan=2>PHY Mode</th>"
        "<th rowspan=2>Channel</th><th rowspan=2>Band</th><th rowspan=2>Channel Width</th>"
        "<th rowspan=2>IBSS</th></tr>  <tr><th>Current</th><th>Avg</th><th>Min</th>"
        "<th>Max</th><th>Current</th><th>Avg</th><th>Min</th><th>Max</th><th>Current</th>"
        "<th>Avg</th><th>Min</th><th>Max</th></tr>");
}

QString NetworkObject::csvString() const
{
    const auto columns = exportColumns(*this);
    return QStringList(columns.begin(), columns.end()).join(QLatin1Char('\t')) + QLatin1Char('\n');
}

QString NetworkObject::htmlRowString() const
{
    const auto columns = exportColumns(*this);
    QString row = QStringLiteral("<tr>");
    for (const QString &c : columns)
        row += QLatin1StringView("<td>") + c + QLatin1StringView("</td>");
    return row + QLatin1StringView("</tr>");
}

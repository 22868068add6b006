// SPDX-License-Identifier: GPL-3.0-or-later
#include "sensor/MetricsExposition.h"

#include "sensor/NetworkFacts.h"
#include "sensor/SensorSource.h"

#include <QSet>

#include <cmath>

namespace {

void appendFamily(QByteArray &out, const char *name, const char *type, const char *help)
{
    out += "# HELP ";
    out += name;
    out += ' ';
    out += help;
    out += "\n# TYPE ";
    out += name;
    out += ' ';
    out += type;
    out += '\n';
}

struct Label
{
    const char *name;
    QString value;
};

void appendSample(QByteArray &out, const char *name, std::initializer_list<Label> labels,
                  const QByteArray &value)
{
    out += name;
    if (labels.size() > 0) {
        out += '{';
        bool first = true;
        for (const Label &label : labels) {
            if (!first)
                out += ',';
            first = false;
            out += label.name;
            out += "=\"";
            MetricsExposition::appendLabelValue(out, label.value);
            out += '"';
        }
        out += '}';
    }
    out += ' ';
    out += value;
    out += '\n';
}

} // namespace

void MetricsExposition::appendLabelValue(QByteArray &out, const QString &value)
{
    const QByteArray utf8 = value.toUtf8();
    for (const char c : utf8) {
        switch (c) {
        case '\\':
            out += "\\\\";
            break;
        case '"':
            out += "\\\"";
            break;
        case '\n':
            out += "\\n";
            break;
        default:
            out += c;
        }
    }
}

QByteArray MetricsExposition::escapeLabelValue(const QString &value)
{
    QByteArray out;
    appendLabelValue(out, value);
    return out;
}

QByteArray MetricsExposition::formatValue(double value)
{
    if (std::isnan(value))
        return QByteArrayLiteral("NaN");
    if (std::isinf(value))
        return value > 0 ? QByteArrayLiteral("+Inf") : QByteArrayLiteral("-Inf");
    if (value == std::trunc(value) && std::fabs(value) < 1e15)
        return QByteArray::number(static_cast<qint64>(value));
    return QByteArray::number(value, 'g', QLocale::FloatingPointShortest);
}

QByteArray MetricsExposition::render(const SensorSource &source, const QDateTime &now)
{
    // One pass picks the records to show: heard recently, and the first record of a BSSID
    // only, since two series with the same labels would make the whole scrape fail.
    const NetworkList &networks = source.networks();
    QList<const NetworkObject *> shown;
    shown.reserve(networks.count());
    QSet<QString> seen;
    seen.reserve(networks.count());
    const qint64 nowMs = now.toMSecsSinceEpoch();
    for (const NetworkObjectRef &record : networks) {
        if (!record || !record->cwNetwork() || !record->lastUpdated().isValid())
            continue;
        if (nowMs - record->lastUpdated().toMSecsSinceEpoch() > kStaleAfterSeconds * 1000)
            continue;
        if (seen.contains(record->bssid()))
            continue;
        seen.insert(record->bssid());
        shown.append(record.get());
    }

    QByteArray out;
    out.reserve(512 + shown.size() * 520);

    appendFamily(out, "corvane_network_signal_dbm", "gauge",
                 "Signal of the network's latest scan result, in dBm.");
    for (const NetworkObject *r : shown)
        appendSample(out, "corvane_network_signal_dbm", {{"bssid", r->bssid()}},
                     QByteArray::number(r->cwNetwork()->rssiValue()));
    appendFamily(out, "corvane_network_noise_dbm", "gauge",
                 "Noise of the network's latest scan result, in dBm.");
    for (const NetworkObject *r : shown)
        appendSample(out, "corvane_network_noise_dbm", {{"bssid", r->bssid()}},
                     QByteArray::number(r->cwNetwork()->noiseMeasurement()));
    appendFamily(out, "corvane_network_snr_db", "gauge",
                 "Signal minus noise of the network's latest scan result, in dB.");
    for (const NetworkObject *r : shown)
        appendSample(
            out, "corvane_network_snr_db", {{"bssid", r->bssid()}},
            QByteArray::number(r->cwNetwork()->rssiValue() - r->cwNetwork()->noiseMeasurement()));
    appendFamily(out, "corvane_network_last_seen_timestamp_seconds", "gauge",
                 "When the network was last heard, in seconds since 1970 (UTC).");
    for (const NetworkObject *r : shown)
        appendSample(out, "corvane_network_last_seen_timestamp_seconds", {{"bssid", r->bssid()}},
                     formatValue(r->lastUpdated().toMSecsSinceEpoch() / 1000.0));
    appendFamily(out, "corvane_network_info", "gauge",
                 "Texts of a network heard in the last 5 minutes; the value is always 1.");
    for (const NetworkObject *r : shown) {
        const NetworkFacts f = NetworkFacts::of(*r);
        appendSample(out, "corvane_network_info",
                     {{"bssid", r->bssid()},
                      {"ssid", f.ssid},
                      {"security", f.security},
                      {"channel", QString::number(r->channel())},
                      {"band", f.band},
                      {"width", f.width},
                      {"real_width", f.realWidth},
                      {"center_mhz", f.centerMHz},
                      {"phy", r->phyMode()},
                      {"ibss", f.ibss}},
                     "1");
    }

    const CWInterfaceRef iface = source.currentInterface();
    if (iface) {
        const QString name = iface->interfaceName();
        const std::optional<QString> bssid = iface->bssid();
        if (bssid) {
            // Only a joined interface has a link to measure; 0 dBm would read as a perfect one.
            appendFamily(out, "corvane_interface_signal_dbm", "gauge",
                         "Signal of the joined network at the interface, in dBm.");
            appendSample(out, "corvane_interface_signal_dbm", {{"interface", name}},
                         QByteArray::number(iface->rssiValue()));
            appendFamily(out, "corvane_interface_noise_dbm", "gauge",
                         "Noise at the interface, in dBm.");
            appendSample(out, "corvane_interface_noise_dbm", {{"interface", name}},
                         QByteArray::number(iface->noiseMeasurement()));
            // Prometheus' base unit is the byte; the radio reports Mbit/s.
            appendFamily(out, "corvane_interface_transmit_rate_bytes_per_second", "gauge",
                         "Transmit rate of the interface's link, in bytes per second.");
            appendSample(out, "corvane_interface_transmit_rate_bytes_per_second",
                         {{"interface", name}}, formatValue(iface->transmitRate() * 1e6 / 8));
        }
        const std::optional<CWChannel> channel = iface->wlanChannel();
        if (channel) {
            appendFamily(out, "corvane_interface_channel", "gauge",
                         "Channel number the interface is on.");
            appendSample(out, "corvane_interface_channel", {{"interface", name}},
                         QByteArray::number(channel->channelNumber()));
        }
        appendFamily(out, "corvane_interface_power_on", "gauge",
                     "1 when the interface's radio is on, else 0.");
        appendSample(out, "corvane_interface_power_on", {{"interface", name}},
                     iface->powerOn() ? "1" : "0");
        if (bssid) {
            appendFamily(out, "corvane_interface_associated_info", "gauge",
                         "The network the interface is joined to; the value is always 1.");
            appendSample(out, "corvane_interface_associated_info",
                         {{"interface", name},
                          {"bssid", *bssid},
                          {"ssid", iface->ssid().value_or(QString())}},
                         "1");
        }
    }

    const SensorStatistics stats = source.statistics();
    appendFamily(out, "corvane_scans_total", "counter", "Scans run since the sensor started.");
    appendSample(out, "corvane_scans_total", {}, QByteArray::number(stats.scansTotal));
    appendFamily(out, "corvane_scan_errors_total", "counter",
                 "Scans that failed since the sensor started.");
    appendSample(out, "corvane_scan_errors_total", {}, QByteArray::number(stats.scanErrorsTotal));
    appendFamily(out, "corvane_scan_duration_seconds", "gauge", "Duration of the last scan.");
    appendSample(out, "corvane_scan_duration_seconds", {}, formatValue(stats.lastScanSeconds));
    appendFamily(out, "corvane_networks", "gauge",
                 "Networks known to the sensor since it started, stale ones included.");
    appendSample(out, "corvane_networks", {}, QByteArray::number(networks.count()));
    appendFamily(out, "corvane_cycle_duration_seconds", "gauge",
                 "Duration of the last update cycle (scan, merge, sort, filter).");
    appendSample(out, "corvane_cycle_duration_seconds", {}, formatValue(stats.lastCycleSeconds));
    appendFamily(out, "corvane_build_info", "gauge",
                 "Version of the running sensor; the value is always 1.");
    appendSample(out, "corvane_build_info", {{"version", QStringLiteral(CORVANE_VERSION)}}, "1");
    return out;
}

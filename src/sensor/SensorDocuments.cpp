// SPDX-License-Identifier: GPL-3.0-or-later
#include "sensor/SensorDocuments.h"

#include "model/NetworkObject.h"
#include "sensor/JsonWriter.h"
#include "sensor/NetworkFacts.h"
#include "sensor/SensorSource.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>
#include <cstring>
#include <unordered_map>

namespace {

QJsonValue optionalText(const std::optional<QString> &text)
{
    return text ? QJsonValue(*text) : QJsonValue(QJsonValue::Null);
}

// History entries are level fractions (1 + dBm/106); readers want the dBm back.
QJsonValue levelDbm(const LevelSample &sample)
{
    if (!sample)
        return QJsonValue(QJsonValue::Null);
    return std::round((static_cast<double>(*sample) - 1.0) * 106.0);
}

QJsonObject channelObject(const CWChannel &channel)
{
    return QJsonObject{{QStringLiteral("number"), channel.channelNumber()},
                       {QStringLiteral("bandCode"), channel.channelBand()},
                       {QStringLiteral("widthCode"), channel.channelWidth()},
                       {QStringLiteral("band"), NetworkFacts::bandName(channel.channelBand())},
                       {QStringLiteral("width"), NetworkFacts::widthName(channel.channelWidth())}};
}

} // namespace

QStringList SensorDocuments::columnNames()
{
    return {QStringLiteral("Network Name"),     QStringLiteral("BSSID"),
            QStringLiteral("Comment"),          QStringLiteral("Signal Quality"),
            QStringLiteral("Signal (current)"), QStringLiteral("Signal Avg"),
            QStringLiteral("Signal Min"),       QStringLiteral("Signal Max"),
            QStringLiteral("Noise (current)"),  QStringLiteral("Noise Avg"),
            QStringLiteral("Noise Min"),        QStringLiteral("Noise Max"),
            QStringLiteral("SNR (current)"),    QStringLiteral("SNR Avg"),
            QStringLiteral("SNR Min"),          QStringLiteral("SNR Max"),
            QStringLiteral("Security Mode"),    QStringLiteral("PHY Mode"),
            QStringLiteral("Channel"),          QStringLiteral("Band"),
            QStringLiteral("Channel Width"),    QStringLiteral("IBSS")};
}

namespace {

// The level and SNR texts of one document. Most of a list's readings repeat (whole dBm
// values map to a few dozen fractions), and formatting one costs far more than finding it.
class ColumnTexts
{
public:
    const QString &signal(double v) { return find(m_signal, v, &NetworkObject::stringOfSignal); }
    const QString &noise(double v) { return find(m_noise, v, &NetworkObject::stringOfNoise); }
    const QString &snr(qint64 v)
    {
        auto it = m_snr.find(v);
        if (it == m_snr.end())
            it = m_snr.emplace(v, NetworkObject::stringOfSNR(v)).first;
        return it->second;
    }

private:
    using Texts = std::unordered_map<quint64, QString>;
    static const QString &find(Texts &texts, double v, QString (*format)(double))
    {
        quint64 bits;
        std::memcpy(&bits, &v, sizeof bits);
        auto it = texts.find(bits);
        if (it == texts.end())
            it = texts.emplace(bits, format(v)).first;
        return it->second;
    }
    Texts m_signal, m_noise;
    std::unordered_map<qint64, QString> m_snr;
};

// The 22 values of one record, in column order.
void writeColumnValues(JsonWriter &w, const NetworkObject &r, ColumnTexts &texts)
{
    w.beginArray()
        .value(r.name())
        .value(r.bssid())
        .value(r.comment())
        .value(r.signalQualityString())
        .value(texts.signal(r.signal()))
        .value(texts.signal(r.avgSignal()))
        .value(texts.signal(r.minSignal()))
        .value(texts.signal(r.maxSignal()))
        .value(texts.noise(r.noise()))
        .value(texts.noise(r.avgNoise()))
        .value(texts.noise(r.minNoise()))
        .value(texts.noise(r.maxNoise()))
        .value(texts.snr(r.snr()))
        .value(texts.snr(r.avgSNR()))
        .value(texts.snr(r.minSNR()))
        .value(texts.snr(r.maxSNR()))
        .value(r.security())
        .value(r.phyMode())
        .value(r.channel())
        .value(r.channelBandString())
        .value(r.channelWidthString())
        .value(r.ibss())
        .endArray();
}

// Where the network really sits; null when its scan result does not tell.
void writeOperatingChannel(JsonWriter &w, const CWOperatingChannel &c)
{
    if (!c.isKnown()) {
        w.null();
        return;
    }
    w.beginObject();
    w.key("primaryChannel").value(c.primaryChannel);
    w.key("band").value(NetworkFacts::bandName(c.band));
    w.key("widthMHz").value(c.widthMHz);
    w.key("width").value(NetworkFacts::realWidthName(c));
    w.key("segments").beginArray();
    for (int s = 0; s < c.segmentCount(); ++s) {
        w.beginObject();
        w.key("centerMHz").value(c.centerMHz[std::size_t(s)]);
        w.key("lowMHz").value(c.lowMHz(s));
        w.key("highMHz").value(c.highMHz(s));
        w.endObject();
    }
    w.endArray();
    w.endObject();
}

void writeNetwork(JsonWriter &w, const NetworkObject &r, bool listed, const QDateTime &now,
                  ColumnTexts &texts)
{
    const CWNetworkRef network = r.cwNetwork();
    w.beginObject();
    w.key("bssid").value(r.bssid());
    w.key("name").value(r.name());
    w.key("comment").value(r.comment());
    w.key("listed").value(listed);
    w.key("columns");
    writeColumnValues(w, r, texts);
    w.key("signal").value(r.signal());
    w.key("avgSignal").value(r.avgSignal());
    w.key("minSignal").value(r.minSignal());
    w.key("maxSignal").value(r.maxSignal());
    w.key("noise").value(r.noise());
    w.key("avgNoise").value(r.avgNoise());
    w.key("minNoise").value(r.minNoise());
    w.key("maxNoise").value(r.maxNoise());
    w.key("snr").value(r.snr());
    w.key("avgSNR").value(r.avgSNR());
    w.key("minSNR").value(r.minSNR());
    w.key("maxSNR").value(r.maxSNR());
    w.key("channel").value(r.channel());
    w.key("bandCode").value(r.channelBand());
    w.key("widthCode").value(r.channelWidth());
    w.key("band").value(NetworkFacts::bandName(r.channelBand()));
    w.key("width").value(NetworkFacts::widthName(r.channelWidth()));
    w.key("phyMode").value(r.phyMode());
    w.key("security").value(r.security());
    w.key("ibss").value(network && network->ibss());
    w.key("lastSeen");
    if (r.lastUpdated().isValid())
        w.value(SensorDocuments::isoTime(r.lastUpdated()));
    else
        w.null();
    w.key("lastSeenText").value(r.lastSeenAt(now));
    w.key("color").value(r.color().name(QColor::HexRgb));
    if (network) {
        w.key("signalDbm").value(network->rssiValue());
        w.key("noiseDbm").value(network->noiseMeasurement());
        w.key("snrDb").value(network->rssiValue() - network->noiseMeasurement());
        w.key("ssidHex").value(QString::fromLatin1(network->ssidData().toHex()));
        w.key("operatingChannel");
        writeOperatingChannel(w, network->operatingChannel());
    }
    w.endObject();
}

} // namespace

QByteArray SensorDocuments::networks(const SensorSource &source, quint64 cycle,
                                     const QDateTime &now)
{
    const NetworkList &list = source.networks();
    QList<bool> listed(list.count(), false);
    for (const quint64 index : source.filteredNetworks()) {
        if (index < static_cast<quint64>(list.count()))
            listed[static_cast<qsizetype>(index)] = true;
    }
    JsonWriter w(1024 + list.count() * 900);
    ColumnTexts texts;
    w.beginObject();
    w.key("time").value(isoTime(now));
    w.key("cycle").value(static_cast<qint64>(cycle));
    w.key("searchText").value(source.searchText());
    w.key("columns").beginArray();
    for (const QString &name : columnNames())
        w.value(name);
    w.endArray();
    w.key("networks").beginArray();
    for (qsizetype i = 0; i < list.count(); ++i) {
        if (list.at(i))
            writeNetwork(w, *list.at(i), listed.at(i), now, texts);
    }
    w.endArray();
    w.endObject();
    return w.take();
}

QByteArray SensorDocuments::interface(const SensorSource &source, const QDateTime &now)
{
    QJsonObject document{{QStringLiteral("time"), isoTime(now)}};
    const CWInterfaceRef iface = source.currentInterface();
    if (!iface) {
        document.insert(QStringLiteral("interface"), QJsonValue(QJsonValue::Null));
        return QJsonDocument(document).toJson(QJsonDocument::Compact);
    }
    QJsonArray channels;
    for (const qint64 c : iface->supportedChannels())
        channels.append(c);
    const std::optional<CWChannel> channel = iface->wlanChannel();
    const std::optional<int> state = iface->interfaceState();
    const std::optional<int> mode = iface->opMode();
    const QJsonObject o{
        {QStringLiteral("name"), iface->interfaceName()},
        {QStringLiteral("powerOn"), iface->powerOn()},
        {QStringLiteral("ssid"), optionalText(iface->ssid())},
        {QStringLiteral("bssid"), optionalText(iface->bssid())},
        {QStringLiteral("securityCode"), iface->security()},
        {QStringLiteral("signalDbm"), iface->rssiValue()},
        {QStringLiteral("noiseDbm"), iface->noiseMeasurement()},
        {QStringLiteral("transmitRateMbps"), iface->transmitRate()},
        {QStringLiteral("transmitPowerMw"), iface->transmitPower()},
        {QStringLiteral("countryCode"), optionalText(iface->countryCode())},
        {QStringLiteral("channel"),
         channel ? QJsonValue(channelObject(*channel)) : QJsonValue(QJsonValue::Null)},
        {QStringLiteral("supportedChannels"), channels},
        {QStringLiteral("interfaceState"), state ? QJsonValue(*state) : QJsonValue()},
        {QStringLiteral("opMode"), mode ? QJsonValue(*mode) : QJsonValue()},
        {QStringLiteral("serviceActive"), iface->serviceActive()}};
    document.insert(QStringLiteral("interface"), o);
    return QJsonDocument(document).toJson(QJsonDocument::Compact);
}

QByteArray SensorDocuments::status(const SensorSource &source, quint64 cycle, const QDateTime &now)
{
    const SensorStatistics s = source.statistics();
    const QJsonObject document{
        {QStringLiteral("time"), isoTime(now)},
        {QStringLiteral("version"), QStringLiteral(CORVANE_VERSION)},
        {QStringLiteral("cycle"), static_cast<qint64>(cycle)},
        {QStringLiteral("networks"), source.networks().count()},
        {QStringLiteral("searchText"), source.searchText()},
        {QStringLiteral("scansTotal"), static_cast<qint64>(s.scansTotal)},
        {QStringLiteral("scanErrorsTotal"), static_cast<qint64>(s.scanErrorsTotal)},
        {QStringLiteral("lastScanSeconds"), s.lastScanSeconds},
        {QStringLiteral("lastCycleSeconds"), s.lastCycleSeconds}};
    return QJsonDocument(document).toJson(QJsonDocument::Compact);
}

SensorDocuments::HistoryResult SensorDocuments::history(const SensorSource &source,
                                                        const QString &bssid, QByteArray *body)
{
    if (!NetworkFacts::isBssid(bssid)) {
        *body = error(QStringLiteral("bssid must be six hexadecimal bytes separated by colons, "
                                     "such as 00:11:22:aa:bb:cc"));
        return HistoryResult::MalformedBssid;
    }
    const NetworkObjectRef record = source.networks().networkWithBssid(bssid.toLower());
    if (!record) {
        *body = error(QStringLiteral("no network with bssid %1 has been heard").arg(bssid));
        return HistoryResult::UnknownBssid;
    }
    QJsonArray signal, noise, snr, signalDbm, noiseDbm;
    for (const LevelSample &s : record->signals()) {
        signal.append(s ? QJsonValue(static_cast<double>(*s)) : QJsonValue());
        signalDbm.append(levelDbm(s));
    }
    for (const LevelSample &n : record->noises()) {
        noise.append(n ? QJsonValue(static_cast<double>(*n)) : QJsonValue());
        noiseDbm.append(levelDbm(n));
    }
    for (const SNRSample &q : record->SNRs())
        snr.append(q ? QJsonValue(*q) : QJsonValue());
    const QJsonObject document{{QStringLiteral("bssid"), record->bssid()},
                               {QStringLiteral("name"), optionalText(record->name())},
                               {QStringLiteral("color"), record->color().name(QColor::HexRgb)},
                               {QStringLiteral("signals"), signal},
                               {QStringLiteral("noises"), noise},
                               {QStringLiteral("SNRs"), snr},
                               {QStringLiteral("signalsDbm"), signalDbm},
                               {QStringLiteral("noisesDbm"), noiseDbm}};
    *body = QJsonDocument(document).toJson(QJsonDocument::Compact);
    return HistoryResult::Ok;
}

QByteArray SensorDocuments::error(const QString &message)
{
    return QJsonDocument(QJsonObject{{QStringLiteral("error"), message}})
        .toJson(QJsonDocument::Compact);
}

QString SensorDocuments::isoTime(const QDateTime &time)
{
    // Written from the epoch count by hand: formatting a QDateTime costs as much as the
    // rest of a network's entry, and every entry has one.
    const qint64 ms = time.toMSecsSinceEpoch();
    const qint64 days = ms >= 0 ? ms / 86400000 : (ms - 86399999) / 86400000;
    qint64 rest = ms - days * 86400000;
    // Days since 1970-01-01 to the civil date (H. Hinnant's algorithm, proleptic Gregorian).
    const qint64 z = days + 719468;
    const qint64 era = (z >= 0 ? z : z - 146096) / 146097;
    const qint64 doe = z - era * 146097;
    const qint64 yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const qint64 doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const qint64 mp = (5 * doy + 2) / 153;
    const qint64 day = doy - (153 * mp + 2) / 5 + 1;
    const qint64 month = mp < 10 ? mp + 3 : mp - 9;
    const qint64 year = yoe + era * 400 + (month <= 2 ? 1 : 0);
    if (year < 0 || year > 9999)
        return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC).toString(Qt::ISODateWithMs);
    char text[25] = "0000-00-00T00:00:00.000Z";
    auto put = [&text](int at, qint64 value, int width) {
        for (int i = at + width - 1; i >= at; --i, value /= 10)
            text[i] = char('0' + value % 10);
    };
    put(0, year, 4);
    put(5, month, 2);
    put(8, day, 2);
    put(11, rest / 3600000, 2);
    rest %= 3600000;
    put(14, rest / 60000, 2);
    rest %= 60000;
    put(17, rest / 1000, 2);
    put(20, rest % 1000, 3);
    return QString::fromLatin1(text, 24);
}

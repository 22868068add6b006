// SPDX-License-Identifier: GPL-3.0-or-later
#include "sensor/SensorDocuments.h"

#include "model/NetworkObject.h"
#include "sensor/NetworkFacts.h"
#include "sensor/SensorSource.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>

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

QJsonArray SensorDocuments::columnValues(const NetworkObject &r)
{
    return QJsonArray{optionalText(r.name()),
                      r.bssid(),
                      optionalText(r.comment()),
                      r.signalQualityString(),
                      r.signalString(),
                      NetworkObject::stringOfSignal(r.avgSignal()),
                      NetworkObject::stringOfSignal(r.minSignal()),
                      NetworkObject::stringOfSignal(r.maxSignal()),
                      r.noiseString(),
                      NetworkObject::stringOfNoise(r.avgNoise()),
                      NetworkObject::stringOfNoise(r.minNoise()),
                      NetworkObject::stringOfNoise(r.maxNoise()),
                      r.snrString(),
                      NetworkObject::stringOfSNR(r.avgSNR()),
                      NetworkObject::stringOfSNR(r.minSNR()),
                      NetworkObject::stringOfSNR(r.maxSNR()),
                      optionalText(r.security()),
                      r.phyMode(),
                      r.channel(),
                      r.channelBandString(),
                      r.channelWidthString(),
                      r.ibss()};
}

QJsonObject SensorDocuments::networkObject(const NetworkObject &r, bool listed)
{
    const CWNetworkRef network = r.cwNetwork();
    QJsonObject o{{QStringLiteral("bssid"), r.bssid()},
                  {QStringLiteral("name"), optionalText(r.name())},
                  {QStringLiteral("comment"), optionalText(r.comment())},
                  {QStringLiteral("listed"), listed},
                  {QStringLiteral("columns"), columnValues(r)},
                  {QStringLiteral("signal"), r.signal()},
                  {QStringLiteral("avgSignal"), r.avgSignal()},
                  {QStringLiteral("minSignal"), r.minSignal()},
                  {QStringLiteral("maxSignal"), r.maxSignal()},
                  {QStringLiteral("noise"), r.noise()},
                  {QStringLiteral("avgNoise"), r.avgNoise()},
                  {QStringLiteral("minNoise"), r.minNoise()},
                  {QStringLiteral("maxNoise"), r.maxNoise()},
                  {QStringLiteral("snr"), r.snr()},
                  {QStringLiteral("avgSNR"), r.avgSNR()},
                  {QStringLiteral("minSNR"), r.minSNR()},
                  {QStringLiteral("maxSNR"), r.maxSNR()},
                  {QStringLiteral("channel"), r.channel()},
                  {QStringLiteral("bandCode"), r.channelBand()},
                  {QStringLiteral("widthCode"), r.channelWidth()},
                  {QStringLiteral("band"), NetworkFacts::bandName(r.channelBand())},
                  {QStringLiteral("width"), NetworkFacts::widthName(r.channelWidth())},
                  {QStringLiteral("phyMode"), r.phyMode()},
                  {QStringLiteral("security"), optionalText(r.security())},
                  {QStringLiteral("ibss"), network && network->ibss()},
                  {QStringLiteral("lastSeen"), r.lastUpdated().isValid()
                                                   ? QJsonValue(isoTime(r.lastUpdated()))
                                                   : QJsonValue(QJsonValue::Null)},
                  {QStringLiteral("lastSeenText"), r.lastSeen()},
                  {QStringLiteral("color"), r.color().name(QColor::HexRgb)}};
    if (network) {
        o.insert(QStringLiteral("signalDbm"), network->rssiValue());
        o.insert(QStringLiteral("noiseDbm"), network->noiseMeasurement());
        o.insert(QStringLiteral("snrDb"), network->rssiValue() - network->noiseMeasurement());
        o.insert(QStringLiteral("ssidHex"), QString::fromLatin1(network->ssidData().toHex()));
    }
    return o;
}

QByteArray SensorDocuments::networks(const SensorSource &source, quint64 cycle,
                                     const QDateTime &now)
{
    const NetworkList &list = source.networks();
    QList<bool> listed(list.count(), false);
    for (const quint64 index : source.filteredNetworks()) {
        if (index < static_cast<quint64>(list.count()))
            listed[static_cast<qsizetype>(index)] = true;
    }
    QJsonArray items;
    for (qsizetype i = 0; i < list.count(); ++i) {
        if (list.at(i))
            items.append(networkObject(*list.at(i), listed.at(i)));
    }
    QJsonArray columns;
    for (const QString &name : columnNames())
        columns.append(name);
    const QJsonObject document{{QStringLiteral("time"), isoTime(now)},
                               {QStringLiteral("cycle"), static_cast<qint64>(cycle)},
                               {QStringLiteral("searchText"), source.searchText()},
                               {QStringLiteral("columns"), columns},
                               {QStringLiteral("networks"), items}};
    return QJsonDocument(document).toJson(QJsonDocument::Compact);
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
    return time.toUTC().toString(Qt::ISODateWithMs);
}

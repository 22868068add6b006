// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/simulated/SimScenario.h"

#include "wireless/CWTypes.h"
#include "wireless/simulated/SimJsonReader.h"
#include "wireless/simulated/SimRadioFacts.h"

#include <QJsonDocument>
#include <QRegularExpression>
#include <QSet>

namespace {
constexpr double kLongest = 1e9; // seconds; about 30 years

bool isHex(const QString &text)
{
    static const QRegularExpression hex(QStringLiteral("^[0-9a-fA-F]*$"));
    return hex.match(text).hasMatch();
}

// WEP takes 5 or 13 characters or 10 or 26 hex digits; WPA 8-63 characters or 64 hex
// digits (802.11-2020 J.4.1).
bool isValidKey(SimSecurity::Kind kind, const QString &key)
{
    const qsizetype n = key.size();
    if (kind == SimSecurity::WEP)
        return n == 5 || n == 13 || ((n == 10 || n == 26) && isHex(key));
    return (n >= 8 && n <= 63) || (n == 64 && isHex(key));
}

class Parser
{
public:
    explicit Parser(const QJsonObject &root) : r(root, QString()) {}

    std::optional<SimScenario> run()
    {
        SimScenario s;
        r.allowOnly({"name", "radio", "faults", "user8021XProfiles", "accessPoints", "interfaces"});
        s.name = r.text(QStringLiteral("name"), QStringLiteral("Untitled"));
        readRadio(s.radio);
        readFaults(s.faults);
        readProfiles(s);
        const QJsonArray aps = r.array(QStringLiteral("accessPoints"), true);
        for (qsizetype i = 0; i < aps.size() && !r.failed(); ++i)
            readAccessPoint(r.element(aps, i, QStringLiteral("accessPoints")), s);
        if (r.has(QStringLiteral("interfaces"))) {
            const QJsonArray ifs = r.array(QStringLiteral("interfaces"));
            if (ifs.isEmpty() && !r.failed())
                r.fail(QStringLiteral("interfaces"), QStringLiteral("needs at least one"));
            for (qsizetype i = 0; i < ifs.size() && !r.failed(); ++i)
                readInterface(r.element(ifs, i, QStringLiteral("interfaces")), s);
        } else {
            readInterface(
                SimJsonReader(QJsonObject{{QStringLiteral("name"), QStringLiteral("wlp2s0")}},
                              QStringLiteral("interfaces[0]")),
                s);
        }
        if (r.failed())
            return std::nullopt;
        return s;
    }

    QString error() const { return r.error(); }

private:
    void readRadio(SimScenario::Radio &radio)
    {
        const SimJsonReader o = r.object(QStringLiteral("radio"));
        o.allowOnly({"pathLossExponent", "referenceDistance", "referenceLoss24", "referenceLoss5",
                     "referenceLoss6", "hearingThreshold", "noiseFloor24", "noiseFloor5",
                     "noiseJitter", "walkAmplitude", "walkPeriod"});
        radio.pathLossExponent =
            o.number(QStringLiteral("pathLossExponent"), radio.pathLossExponent, 1.0, 8.0);
        radio.referenceDistance =
            o.number(QStringLiteral("referenceDistance"), radio.referenceDistance, 0.01, 100.0);
        radio.referenceLoss24 =
            o.number(QStringLiteral("referenceLoss24"), radio.referenceLoss24, 0.0, 150.0);
        radio.referenceLoss5 =
            o.number(QStringLiteral("referenceLoss5"), radio.referenceLoss5, 0.0, 150.0);
        radio.referenceLoss6 =
            o.number(QStringLiteral("referenceLoss6"), radio.referenceLoss6, 0.0, 150.0);
        radio.hearingThreshold =
            int(o.integer(QStringLiteral("hearingThreshold"), radio.hearingThreshold, -120, -20));
        radio.noiseFloor24 =
            int(o.integer(QStringLiteral("noiseFloor24"), radio.noiseFloor24, -120, -50));
        radio.noiseFloor5 =
            int(o.integer(QStringLiteral("noiseFloor5"), radio.noiseFloor5, -120, -50));
        radio.noiseJitter = int(o.integer(QStringLiteral("noiseJitter"), radio.noiseJitter, 0, 20));
        radio.walkAmplitude =
            o.number(QStringLiteral("walkAmplitude"), radio.walkAmplitude, 0.0, 30.0);
        radio.walkPeriod = o.number(QStringLiteral("walkPeriod"), radio.walkPeriod, 1.0, 3600.0);
    }

    void readFaults(SimScenario::Faults &faults)
    {
        const SimJsonReader o = r.object(QStringLiteral("faults"));
        o.allowOnly({"refuseAuthorization", "scanErrorEvery", "emptyScanEvery"});
        faults.refuseAuthorization = o.boolean(QStringLiteral("refuseAuthorization"), false);
        faults.scanErrorEvery = int(o.integer(QStringLiteral("scanErrorEvery"), 0, 0, 1000000));
        faults.emptyScanEvery = int(o.integer(QStringLiteral("emptyScanEvery"), 0, 0, 1000000));
    }

    void readProfiles(SimScenario &s)
    {
        const QJsonArray list = r.array(QStringLiteral("user8021XProfiles"));
        for (qsizetype i = 0; i < list.size() && !r.failed(); ++i) {
            const SimJsonReader o = r.element(list, i, QStringLiteral("user8021XProfiles"));
            o.allowOnly({"name", "username", "password"});
            SimScenario::Profile p;
            p.name = o.text(QStringLiteral("name"), QString(), true);
            p.account = readAccount(o);
            for (const SimScenario::Profile &other : std::as_const(s.userProfiles)) {
                if (other.name == p.name)
                    o.fail(QStringLiteral("name"),
                           QStringLiteral("\"%1\" is listed twice").arg(p.name));
            }
            s.userProfiles.append(p);
        }
    }

    static SimScenario::Account readAccount(const SimJsonReader &o)
    {
        return {o.text(QStringLiteral("username"), QString(), true),
                o.text(QStringLiteral("password"), QString(), true)};
    }

    void readAccessPoint(const SimJsonReader &o, SimScenario &s)
    {
        SimScenario::AccessPoint ap;
        o.allowOnly({"ssid",          "ssidHex",    "hidden",   "bssid",     "ibss",
                     "countryCode",   "channel",    "band",     "phy",       "width",
                     "secondSegment", "position",   "txPower",  "extraLoss", "beaconInterval",
                     "security",      "passphrase", "accounts", "stored",    "appearsAt",
                     "vanishesAt",    "onFor",      "offFor",   "phase"});
        readIdentity(o, ap, s);
        SimRadioFacts::read(o, ap);
        readSecurity(o, ap, s);
        readPresence(o, ap);
        s.accessPoints.append(ap);
    }

    void readIdentity(const SimJsonReader &o, SimScenario::AccessPoint &ap, const SimScenario &s)
    {
        const std::optional<QString> ssid = o.optionalText(QStringLiteral("ssid"));
        const std::optional<QString> hex = o.optionalText(QStringLiteral("ssidHex"));
        if (hex) {
            if (hex->size() % 2 != 0 || !isHex(*hex))
                o.fail(QStringLiteral("ssidHex"),
                       QStringLiteral("expected hexadecimal byte pairs"));
            ap.ssid = QByteArray::fromHex(hex->toLatin1());
        } else if (ssid) {
            ap.ssid = ssid->toUtf8();
        }
        if (ap.ssid.size() > 32)
            o.fail(QStringLiteral("ssid"), QStringLiteral("longer than 32 bytes"));
        ap.hidden = o.boolean(QStringLiteral("hidden"), !ssid && !hex);

        static const QRegularExpression mac(QStringLiteral("^[0-9a-f]{2}(:[0-9a-f]{2}){5}$"));
        ap.bssid = o.text(QStringLiteral("bssid"), QString(), true).toLower();
        if (!o.failed() && !mac.match(ap.bssid).hasMatch())
            o.fail(QStringLiteral("bssid"),
                   QStringLiteral("expected six colon-separated hex bytes like 02:11:22:33:44:55"));
        for (const SimScenario::AccessPoint &other : s.accessPoints) {
            if (other.bssid == ap.bssid)
                o.fail(QStringLiteral("bssid"), QStringLiteral("%1 is listed twice").arg(ap.bssid));
        }
        ap.ibss = o.boolean(QStringLiteral("ibss"), false);
        ap.countryCode = o.text(QStringLiteral("countryCode"), QString());
    }

    void readSecurity(const SimJsonReader &o, SimScenario::AccessPoint &ap, const SimScenario &s)
    {
        const QString name = o.text(QStringLiteral("security"), QStringLiteral("open"));
        const std::optional<SimSecurity::Kind> kind = SimSecurity::fromName(name);
        if (!kind) {
            o.fail(QStringLiteral("security"),
                   QStringLiteral("\"%1\" is not one of %2")
                       .arg(name, SimSecurity::names().join(QStringLiteral(", "))));
            return;
        }
        ap.security = *kind;
        if (SimSecurity::needsPassphrase(ap.security)) {
            ap.passphrase = o.text(QStringLiteral("passphrase"), QString(), true);
            if (!o.failed() && !isValidKey(ap.security, ap.passphrase))
                o.fail(
                    QStringLiteral("passphrase"),
                    ap.security == SimSecurity::WEP
                        ? QStringLiteral("a WEP key has 5 or 13 characters or 10 or 26 hex digits")
                        : QStringLiteral("a WPA passphrase has 8 to 63 characters"));
        }
        if (SimSecurity::isEnterprise(ap.security)) {
            const QJsonArray list = o.array(QStringLiteral("accounts"));
            for (qsizetype i = 0; i < list.size() && !o.failed(); ++i) {
                const SimJsonReader a = o.element(list, i, QStringLiteral("accounts"));
                a.allowOnly({"username", "password"});
                ap.accounts.append(readAccount(a));
            }
        }
        const SimJsonReader stored = o.object(QStringLiteral("stored"));
        stored.allowOnly({"passphrase", "profile"});
        ap.storedPassphrase = stored.optionalText(QStringLiteral("passphrase"));
        ap.storedProfile = stored.optionalText(QStringLiteral("profile"));
        if (ap.storedProfile) {
            bool found = false;
            for (const SimScenario::Profile &p : s.userProfiles)
                found = found || p.name == *ap.storedProfile;
            if (!found)
                stored.fail(QStringLiteral("profile"),
                            QStringLiteral("no user 802.1X profile is named \"%1\"")
                                .arg(*ap.storedProfile));
        }
    }

    void readPresence(const SimJsonReader &o, SimScenario::AccessPoint &ap)
    {
        ap.appearsAt = o.number(QStringLiteral("appearsAt"), 0.0, 0.0, kLongest);
        if (o.has(QStringLiteral("vanishesAt"))) {
            ap.vanishesAt = o.number(QStringLiteral("vanishesAt"), kLongest, 0.0, kLongest);
            if (*ap.vanishesAt <= ap.appearsAt)
                o.fail(QStringLiteral("vanishesAt"), QStringLiteral("must come after appearsAt"));
        }
        ap.onFor = o.number(QStringLiteral("onFor"), 0.0, 0.0, kLongest);
        ap.offFor = o.number(QStringLiteral("offFor"), 0.0, 0.0, kLongest);
        ap.phase = o.number(QStringLiteral("phase"), 0.0, 0.0, kLongest);
        if ((ap.onFor > 0.0) != (ap.offFor > 0.0))
            o.fail(QStringLiteral("onFor"), QStringLiteral("onFor and offFor go together"));
    }

    void readInterface(const SimJsonReader &o, SimScenario &s)
    {
        SimScenario::Interface i;
        o.allowOnly({"name", "countryCode", "supportedChannels", "channel", "txPowerMw",
                     "spatialStreams", "powerOn", "serviceActive", "associatedTo", "path",
                     "speed"});
        static const QRegularExpression ifname(QStringLiteral("^[A-Za-z0-9_.-]{1,15}$"));
        i.name = o.text(QStringLiteral("name"), QString(), true);
        if (!o.failed() && !ifname.match(i.name).hasMatch())
            o.fail(QStringLiteral("name"),
                   QStringLiteral("expected 1 to 15 letters, digits, '_', '.' or '-'"));
        for (const SimScenario::Interface &other : std::as_const(s.interfaces)) {
            if (other.name == i.name)
                o.fail(QStringLiteral("name"),
                       QStringLiteral("\"%1\" is listed twice").arg(i.name));
        }
        i.countryCode = o.text(QStringLiteral("countryCode"), QStringLiteral("DE"));
        readChannels(o, i);
        i.txPowerMw = o.integer(QStringLiteral("txPowerMw"), i.txPowerMw, 1, 4000);
        i.spatialStreams = int(o.integer(QStringLiteral("spatialStreams"), 2, 1, 4));
        i.powerOn = o.boolean(QStringLiteral("powerOn"), true);
        i.serviceActive = o.boolean(QStringLiteral("serviceActive"), false);
        i.associatedTo = o.text(QStringLiteral("associatedTo"), QString()).toLower();
        if (!i.associatedTo.isEmpty()) {
            bool found = false;
            for (const SimScenario::AccessPoint &ap : s.accessPoints)
                found = found || ap.bssid == i.associatedTo;
            if (!found)
                o.fail(QStringLiteral("associatedTo"),
                       QStringLiteral("no access point has the BSSID %1").arg(i.associatedTo));
        }
        const QJsonArray path = o.array(QStringLiteral("path"));
        for (qsizetype k = 0; k < path.size() && !o.failed(); ++k) {
            double p[3];
            if (o.point(path.at(k), o.pathOf(QStringLiteral("path[%1]").arg(k)), p))
                i.path.append({p[0], p[1], p[2]});
        }
        if (i.path.isEmpty())
            i.path.append(SimScenario::Point{});
        i.speed = o.number(QStringLiteral("speed"), i.speed, 0.0, 50.0);
        s.interfaces.append(i);
    }

    static void readChannels(const SimJsonReader &o, SimScenario::Interface &i)
    {
        if (!o.has(QStringLiteral("supportedChannels"))) {
            i.supportedChannels = SimScenario::defaultChannels();
        } else {
            const QJsonArray list = o.array(QStringLiteral("supportedChannels"));
            for (qsizetype k = 0; k < list.size() && !o.failed(); ++k) {
                const double v = list.at(k).toDouble(-1.0);
                const qint64 c = v >= 0.0 && v <= 1000.0 ? qint64(v) : -1;
                if (!list.at(k).isDouble() || double(c) != v || !SimScenario::isValidChannel(c))
                    o.fail(QStringLiteral("supportedChannels[%1]").arg(k),
                           QStringLiteral("expected a 2.4 or 5 GHz channel number"));
                else if (i.supportedChannels.contains(c))
                    o.fail(QStringLiteral("supportedChannels[%1]").arg(k),
                           QStringLiteral("channel %1 is listed twice").arg(c));
                else
                    i.supportedChannels.append(c);
            }
        }
        const qint64 first = i.supportedChannels.isEmpty() ? 0 : i.supportedChannels.first();
        i.channel = int(o.integer(QStringLiteral("channel"), first, 0, 200));
        if (i.channel != 0 && !i.supportedChannels.contains(i.channel))
            o.fail(QStringLiteral("channel"),
                   QStringLiteral("%1 is not among supportedChannels").arg(i.channel));
    }

    SimJsonReader r;
};
} // namespace

std::optional<SimScenario> SimScenario::fromJson(const QByteArray &json, QString *errorText)
{
    QJsonParseError parseError;
    const QJsonDocument doc = QJsonDocument::fromJson(json, &parseError);
    QString error;
    std::optional<SimScenario> scenario;
    if (doc.isNull()) {
        error = QStringLiteral("not valid JSON: %1 at byte %2")
                    .arg(parseError.errorString())
                    .arg(parseError.offset);
    } else if (!doc.isObject()) {
        error = QStringLiteral("scenario: expected an object at the top");
    } else {
        Parser parser(doc.object());
        scenario = parser.run();
        error = parser.error();
    }
    if (errorText)
        *errorText = scenario ? QString() : error;
    return scenario;
}

bool SimScenario::isValidChannel(qint64 channel)
{
    if (channel >= 1 && channel <= 14)
        return true;
    if (channel >= 36 && channel <= 64)
        return channel % 4 == 0;
    if (channel >= 100 && channel <= 144)
        return channel % 4 == 0;
    if (channel >= 149 && channel <= 177)
        return (channel - 149) % 4 == 0;
    return false;
}

int SimScenario::bandOf(qint64 channel)
{
    if (channel >= 1 && channel <= 14)
        return kCWChannelBand2GHz;
    if (isValidChannel(channel))
        return kCWChannelBand5GHz;
    return kCWChannelBandUnknown;
}

QList<qint64> SimScenario::defaultChannels()
{
    // The order a driver reports: 2.4 GHz, the lower 5 GHz blocks, then the upper block
    // before the DFS channels of 100-140.
    QList<qint64> list;
    for (qint64 c = 1; c <= 13; ++c)
        list << c;
    for (qint64 c = 36; c <= 64; c += 4)
        list << c;
    for (qint64 c = 149; c <= 165; c += 4)
        list << c;
    for (qint64 c = 100; c <= 140; c += 4)
        list << c;
    return list;
}

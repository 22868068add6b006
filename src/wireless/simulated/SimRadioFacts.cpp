// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/simulated/SimRadioFacts.h"

#include "wireless/CWTypes.h"
#include "wireless/ie/FrequencyPlan.h"
#include "wireless/simulated/SimJsonReader.h"

#include <cmath>
#include <cstdlib>

namespace {
constexpr unsigned kLegacy2GHz = (1u << kCWPHYMode11b) | (1u << kCWPHYMode11g);
constexpr unsigned kBoundaryBits = (1u << kCWPHYMode11a) | kLegacy2GHz | (1u << kCWPHYMode11n);

int bandFromField(const SimJsonReader &o, int channel)
{
    if (!o.has(QStringLiteral("band")))
        return SimScenario::bandOf(channel);
    const double ghz = o.number(QStringLiteral("band"), 2.4, 2.4, 6.0);
    if (std::abs(ghz - 2.4) < 1e-9)
        return kCWChannelBand2GHz;
    if (ghz == 5.0)
        return kCWChannelBand5GHz;
    if (ghz == 6.0)
        return kCWChannelBand6GHz;
    o.fail(QStringLiteral("band"), QStringLiteral("expected 2.4, 5 or 6 (GHz)"));
    return kCWChannelBandUnknown;
}

int widthCode(int mhz)
{
    switch (mhz) {
    case 20:
        return kCWChannelWidth20MHz;
    case 40:
        return kCWChannelWidth40MHz;
    case 80:
        return kCWChannelWidth80MHz;
    // 320 MHz and 80+80 have no code of their own; like the Linux radio's, they report the
    // widest code there is.
    case 160:
    case 320:
        return kCWChannelWidth160MHz;
    default:
        return kCWChannelWidthUnknown;
    }
}

void readPhyAndWidth(const SimJsonReader &o, SimScenario::AccessPoint &ap)
{
    const bool five = ap.band == kCWChannelBand5GHz;
    const bool six = ap.band == kCWChannelBand6GHz;
    const QString fallback = six    ? QStringLiteral("ax")
                             : five ? QStringLiteral("a/n")
                                    : QStringLiteral("b/g/n");
    const QString phyText = o.text(QStringLiteral("phy"), fallback);
    const std::optional<unsigned> phy = SimRadioFacts::parsePhy(phyText);
    if (!phy) {
        o.fail(QStringLiteral("phy"),
               QStringLiteral("\"%1\" is not a list like \"b/g/n\", \"a/n/ac\" or \"ax/be\"")
                   .arg(phyText));
    } else if (six && (*phy & ((1u << kCWPHYMode11a) | kLegacy2GHz | SimRadioFacts::kAcBit))) {
        o.fail(QStringLiteral("phy"), QStringLiteral("6 GHz carries only 802.11ax and be"));
    } else if (six && !(*phy & SimRadioFacts::kAxBit)) {
        o.fail(QStringLiteral("phy"), QStringLiteral("6 GHz needs 802.11ax"));
    } else if (five && (*phy & kLegacy2GHz)) {
        o.fail(QStringLiteral("phy"), QStringLiteral("802.11b and g are 2.4 GHz only"));
    } else if (!five && !six && (*phy & ((1u << kCWPHYMode11a) | SimRadioFacts::kAcBit))) {
        o.fail(QStringLiteral("phy"), QStringLiteral("802.11a and ac are 5 GHz only"));
    }
    const unsigned bits = phy.value_or(0);
    const bool vhtOrHe = bits & (SimRadioFacts::kAcBit | SimRadioFacts::kAxBit);
    const bool ht = (bits & (1u << kCWPHYMode11n)) || vhtOrHe;
    // A 6 GHz network sends no HT or VHT elements, so it claims none of the boundary's modes.
    ap.phyModes = six ? 0u : bits & kBoundaryBits;
    ap.vht = bits & SimRadioFacts::kAcBit;

    ap.widthMHz = int(o.integer(QStringLiteral("width"), 20, 20, 320));
    ap.width = widthCode(ap.widthMHz);
    if (ap.width == kCWChannelWidthUnknown)
        o.fail(QStringLiteral("width"), QStringLiteral("expected 20, 40, 80, 160 or 320 (MHz)"));
    else if (ap.widthMHz == 320 && !(bits & SimRadioFacts::kBeBit))
        o.fail(QStringLiteral("width"), QStringLiteral("320 MHz needs 802.11be"));
    else if (ap.widthMHz == 320 && !six)
        o.fail(QStringLiteral("width"), QStringLiteral("320 MHz is 6 GHz only"));
    else if (ap.widthMHz >= 80 && !vhtOrHe)
        o.fail(QStringLiteral("width"),
               QStringLiteral("%1 MHz needs 802.11ac or ax").arg(ap.widthMHz));
    else if (ap.widthMHz == 40 && !ht)
        o.fail(QStringLiteral("width"), QStringLiteral("40 MHz needs 802.11n, ac or ax"));
    else if (!o.failed() && ap.widthMHz > 20 &&
             FrequencyPlan::blockCenter(ap.channel, ap.band, ap.widthMHz) == 0)
        o.fail(QStringLiteral("width"),
               QStringLiteral("channel %1 is in no %2 MHz block").arg(ap.channel).arg(ap.widthMHz));
}

void readSecondSegment(const SimJsonReader &o, SimScenario::AccessPoint &ap)
{
    if (!o.has(QStringLiteral("secondSegment")) || o.failed())
        return;
    ap.secondSegment = int(o.integer(QStringLiteral("secondSegment"), 0, 1, 233));
    if (o.failed())
        return;
    const int first = FrequencyPlan::blockCenter(ap.channel, ap.band, 80);
    // The second segment is the centre of another 80 MHz block, not next to the first
    // (adjacent ones would be a 160 MHz channel).
    if (ap.widthMHz != 80 || ap.band == kCWChannelBand2GHz)
        o.fail(QStringLiteral("secondSegment"),
               QStringLiteral("only an 80 MHz network on 5 or 6 GHz has a second segment"));
    else if (FrequencyPlan::blockCenter(ap.secondSegment - 6, ap.band, 80) != ap.secondSegment)
        o.fail(QStringLiteral("secondSegment"),
               QStringLiteral("%1 is the centre of no 80 MHz block").arg(ap.secondSegment));
    else if (std::abs(ap.secondSegment - first) <= 16)
        o.fail(QStringLiteral("secondSegment"),
               QStringLiteral("%1 touches the first segment (centre %2)")
                   .arg(ap.secondSegment)
                   .arg(first));
}
} // namespace

std::optional<unsigned> SimRadioFacts::parsePhy(const QString &text)
{
    unsigned bits = 0;
    for (const QString &part : text.split(QLatin1Char('/'))) {
        const QString p = part.trimmed().toLower();
        if (p == QLatin1String("a"))
            bits |= 1u << kCWPHYMode11a;
        else if (p == QLatin1String("b"))
            bits |= 1u << kCWPHYMode11b;
        else if (p == QLatin1String("g"))
            bits |= 1u << kCWPHYMode11g;
        else if (p == QLatin1String("n"))
            bits |= 1u << kCWPHYMode11n;
        else if (p == QLatin1String("ac")) // shows as a and n
            bits |= (1u << kCWPHYMode11a) | (1u << kCWPHYMode11n) | kAcBit;
        else if (p == QLatin1String("ax")) // shows as n on 2.4 and 5 GHz
            bits |= (1u << kCWPHYMode11n) | kAxBit;
        else if (p == QLatin1String("be"))
            bits |= (1u << kCWPHYMode11n) | kAxBit | kBeBit;
        else
            return std::nullopt;
    }
    return bits;
}

void SimRadioFacts::read(const SimJsonReader &o, SimScenario::AccessPoint &ap)
{
    ap.channel = int(o.integer(QStringLiteral("channel"), 1, 1, 233, true));
    ap.band = bandFromField(o, ap.channel);
    if (!o.failed() && !FrequencyPlan::isTwentyMHzChannel(ap.channel, ap.band) &&
        !(ap.band == kCWChannelBand2GHz && ap.channel == 14))
        o.fail(QStringLiteral("channel"),
               ap.band == kCWChannelBand6GHz
                   ? QStringLiteral("%1 is no 6 GHz channel").arg(ap.channel)
                   : QStringLiteral("%1 is no 2.4 or 5 GHz channel").arg(ap.channel));
    readPhyAndWidth(o, ap);
    readSecondSegment(o, ap);

    double p[3] = {0, 0, 0};
    if (!o.has(QStringLiteral("position")))
        o.fail(QStringLiteral("position"), QStringLiteral("missing"));
    else if (o.point(o.value(QStringLiteral("position")), o.pathOf(QStringLiteral("position")), p))
        ap.position = {p[0], p[1], p[2]};
    const bool twoGHz = ap.band == kCWChannelBand2GHz;
    ap.txPower = o.number(QStringLiteral("txPower"), twoGHz ? 20.0 : 23.0, -10.0, 36.0);
    ap.extraLoss = o.number(QStringLiteral("extraLoss"), 0.0, 0.0, 100.0);
    ap.beaconInterval = int(o.integer(QStringLiteral("beaconInterval"), 100, 1, 65535));
}

CWOperatingChannel SimRadioFacts::operatingChannel(const SimScenario::AccessPoint &ap)
{
    CWOperatingChannel c;
    c.primaryChannel = ap.channel;
    c.band = ap.band;
    const int center = ap.channel == 14 && ap.band == kCWChannelBand2GHz
                           ? 14
                           : FrequencyPlan::blockCenter(ap.channel, ap.band, ap.widthMHz);
    c.centerMHz[0] = FrequencyPlan::frequencyForChannel(center, ap.band);
    if (ap.secondSegment)
        c.centerMHz[1] = FrequencyPlan::frequencyForChannel(ap.secondSegment, ap.band);
    c.widthMHz = c.centerMHz[0] ? ap.widthMHz : 0;
    return c;
}

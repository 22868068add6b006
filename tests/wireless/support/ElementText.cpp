// SPDX-License-Identifier: GPL-3.0-or-later
#include "ElementText.h"

#include <QStringList>

#include <bit>

namespace ElementText {

QByteArray fromHex(const char *hex)
{
    QByteArray compact(hex);
    compact.replace(' ', "");
    return QByteArray::fromHex(compact);
}

QString rates(const BssElements &elements)
{
    QStringList out;
    for (const RateEntry &r : elements.rates) // "5.5", "1*" (basic)
        out << QString::number(r.halfMbps / 2.0) + (r.basic ? QStringLiteral("*") : QString());
    const struct
    {
        unsigned bit;
        const char *name;
    } selectors[] = {{kSelectorHT, "HT-sel"},          {kSelectorVHT, "VHT-sel"},
                     {kSelectorGLK, "GLK-sel"},        {kSelectorEPD, "EPD-sel"},
                     {kSelectorSAEH2E, "SAE-H2E-sel"}, {kSelectorHE, "HE-sel"}};
    for (const auto &s : selectors) {
        if (elements.selectors & s.bit)
            out << QString::fromLatin1(s.name);
    }
    return out.join(u',');
}

QString suites(const QVarLengthArray<std::uint32_t, 4> &list)
{
    QStringList out;
    for (std::uint32_t suite : list) {
        const std::uint32_t oui = suite >> 8;
        if (oui == 0x000FAC)
            out << QString::number(suite & 0xFF);
        else
            out << QStringLiteral("%1:%2").arg(oui, 6, 16, QLatin1Char('0')).arg(suite & 0xFF);
    }
    return out.join(u',');
}

QString vhtWidth(OperatingWidth width)
{
    static const char *const names[] = {"20/40", "80", "160", "80+80"};
    return QString::fromLatin1(names[int(width)]);
}

QString summary(const BssElements &e)
{
    QStringList out;
    if (e.ssid)
        out << QStringLiteral("ssid=") + QString::fromLatin1(e.ssid->toHex());
    if (e.dsChannel)
        out << QStringLiteral("ds=%1").arg(*e.dsChannel);
    if (!e.rates.isEmpty() || e.selectors)
        out << QStringLiteral("rates=") + rates(e);
    if (e.country)
        out << QStringLiteral("country=") + QString::fromLatin1(e.country->toHex());
    auto security = [&](const char *name, const SecuritySuites &s) {
        out << QStringLiteral("%1=g%2/p%3/a%4%5")
                   .arg(QLatin1String(name))
                   .arg(std::countr_zero(s.groupCipher))
                   .arg(suites(s.pairwiseSuites), suites(s.akmSuites),
                        s.defaulted ? QStringLiteral("/default") : QString());
    };
    if (e.rsn)
        security("rsn", *e.rsn);
    if (e.wpa)
        security("wpa", *e.wpa);
    if (e.htCapabilities)
        out << QStringLiteral("htcap");
    if (e.htOperation)
        out << QStringLiteral("htop=%1/%2")
                   .arg(e.htOperation->primaryChannel)
                   .arg(e.htOperation->secondaryOffset);
    if (e.vhtCapabilities)
        out << QStringLiteral("vhtcap");
    if (e.vhtOperation)
        out << QStringLiteral("vhtop=") + vhtWidth(e.vhtOperation->width());
    if (e.heCapabilities)
        out << QStringLiteral("hecap");
    if (e.heOperation) {
        QString he = QStringLiteral("heop");
        if (e.heOperation->sixGHz)
            he += QStringLiteral("=6g%1/").arg(e.heOperation->sixGHz->primaryChannel) +
                  vhtWidth(e.heOperation->sixGHz->width());
        out << he;
    }
    if (e.ehtOperation) {
        QString eht = QStringLiteral("ehtop");
        if (const auto &info = e.ehtOperation->info)
            eht += QStringLiteral("=%1/%2,%3")
                       .arg(info->widthMHz())
                       .arg(info->centerSegment0)
                       .arg(info->centerSegment1);
        out << eht;
    }
    if (e.meshId)
        out << QStringLiteral("mesh=") + QString::fromLatin1(e.meshId->toHex());
    QString flags;
    const std::pair<unsigned, char> letters[] = {{BssElements::kTruncated, 'T'},
                                                 {BssElements::kMalformed, 'M'},
                                                 {BssElements::kDuplicate, 'D'}};
    for (const auto &[bit, letter] : letters)
        flags += e.flags & bit ? QString(QLatin1Char(letter)) : QString();
    if (!flags.isEmpty())
        out << QStringLiteral("flags=") + flags;
    return out.join(u' ');
}

} // namespace ElementText

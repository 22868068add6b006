// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/simulated/SimSecurity.h"

#include "wireless/CWTypes.h"

#include <array>

namespace {
struct Row
{
    SimSecurity::Kind kind;
    const char *name;
    unsigned bits;
    int mode;
    int interfaceSecurity;
};

constexpr unsigned bit(int code)
{
    return 1u << code;
}

const std::array<Row, 9> kRows = {{
    {SimSecurity::Open, "open", bit(kCWSecurityNone), kCWSecurityModeOpen, kCWSecurityNone},
    {SimSecurity::WEP, "wep", bit(kCWSecurityWEP), kCWSecurityModeWEP, kCWSecurityWEP},
    {SimSecurity::WPAPersonal, "wpa-personal", bit(kCWSecurityWPAPersonal), kCWSecurityModeWPA_PSK,
     kCWSecurityWPAPersonal},
    {SimSecurity::WPA2Personal, "wpa2-personal", bit(kCWSecurityWPA2Personal),
     kCWSecurityModeWPA2_PSK, kCWSecurityWPA2Personal},
    {SimSecurity::WPAMixedPersonal, "wpa/wpa2-personal",
     bit(kCWSecurityWPAPersonal) | bit(kCWSecurityWPAPersonalMixed) | bit(kCWSecurityWPA2Personal),
     kCWSecurityModeWPA2_PSK, kCWSecurityWPAPersonalMixed},
    {SimSecurity::DynamicWEP, "dynamic-wep", bit(kCWSecurityDynamicWEP), kCWSecurityMode8021XWEP,
     kCWSecurityDynamicWEP},
    {SimSecurity::WPAEnterprise, "wpa-enterprise", bit(kCWSecurityWPAEnterprise),
     kCWSecurityModeWPA_Enterprise, kCWSecurityWPAEnterprise},
    {SimSecurity::WPA2Enterprise, "wpa2-enterprise", bit(kCWSecurityWPA2Enterprise),
     kCWSecurityModeWPA2_Enterprise, kCWSecurityWPA2Enterprise},
    {SimSecurity::WPAMixedEnterprise, "wpa/wpa2-enterprise",
     bit(kCWSecurityWPAEnterprise) | bit(kCWSecurityWPAEnterpriseMixed) |
         bit(kCWSecurityWPA2Enterprise),
     kCWSecurityModeWPA2_Enterprise, kCWSecurityWPAEnterpriseMixed},
}};

const Row &row(SimSecurity::Kind kind)
{
    for (const Row &r : kRows) {
        if (r.kind == kind)
            return r;
    }
    return kRows[0];
}
} // namespace

std::optional<SimSecurity::Kind> SimSecurity::fromName(const QString &name)
{
    for (const Row &r : kRows) {
        if (name == QLatin1String(r.name))
            return r.kind;
    }
    return std::nullopt;
}

QStringList SimSecurity::names()
{
    QStringList list;
    for (const Row &r : kRows)
        list << QLatin1String(r.name);
    return list;
}

unsigned SimSecurity::securityBits(Kind kind)
{
    return row(kind).bits;
}

int SimSecurity::securityMode(Kind kind)
{
    return row(kind).mode;
}

int SimSecurity::interfaceSecurity(Kind kind)
{
    return row(kind).interfaceSecurity;
}

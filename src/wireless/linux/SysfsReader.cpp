// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/linux/SysfsReader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <net/if.h>

namespace {
// An interface name never contains '/', so one cannot walk out of the tree with it.
bool safeName(const QString &name)
{
    return !name.isEmpty() && !name.contains(u'/') && name != u"." && name != u"..";
}
} // namespace

QString SysfsReader::readTrimmed(const QString &path) const
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromLatin1(file.read(64)).trimmed();
}

SysfsReader::Rfkill SysfsReader::rfkill(const QString &interfaceName) const
{
    Rfkill state;
    if (!safeName(interfaceName))
        return state;
    const QDir phy(m_root + QStringLiteral("/class/net/") + interfaceName +
                   QStringLiteral("/phy80211"));
    const auto own = phy.entryList({QStringLiteral("rfkill*")}, QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &entry : own) {
        const QString base = phy.filePath(entry);
        state.softBlocked |= readTrimmed(base + QStringLiteral("/soft")) == u"1";
        state.hardBlocked |= readTrimmed(base + QStringLiteral("/hard")) == u"1";
    }
    const QDir all(m_root + QStringLiteral("/class/rfkill"));
    const auto switches =
        all.entryList({QStringLiteral("rfkill*")}, QDir::AllEntries | QDir::NoDotAndDotDot);
    for (const QString &entry : switches) {
        const QString base = all.filePath(entry);
        if (readTrimmed(base + QStringLiteral("/type")) != u"wlan")
            continue;
        // A phy's own switch is also listed here; only switches without a phy count twice.
        if (readTrimmed(base + QStringLiteral("/name")).startsWith(QStringLiteral("phy")))
            continue;
        state.softBlocked |= readTrimmed(base + QStringLiteral("/soft")) == u"1";
        state.hardBlocked |= readTrimmed(base + QStringLiteral("/hard")) == u"1";
    }
    return state;
}

bool SysfsReader::linkUp(const QString &interfaceName) const
{
    if (!safeName(interfaceName))
        return false;
    bool ok = false;
    const uint flags = readTrimmed(m_root + QStringLiteral("/class/net/") + interfaceName +
                                   QStringLiteral("/flags"))
                           .toUInt(&ok, 16);
    return ok && (flags & IFF_UP);
}

bool SysfsReader::hasWirelessInterface() const
{
    const QDir net(m_root + QStringLiteral("/class/net"));
    const auto names = net.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System);
    for (const QString &name : names) {
        if (QFileInfo::exists(net.filePath(name) + QStringLiteral("/wireless")) ||
            QFileInfo::exists(net.filePath(name) + QStringLiteral("/phy80211")))
            return true;
    }
    return false;
}

// SPDX-License-Identifier: GPL-3.0-or-later
// The Linux backend's pure parts: connection settings, failure texts, the polkit subject's
// start time and the sysfs facts (rfkill, link state) read from a fake tree.

#include "support/TestNetwork.h"
#include "wireless/CWKeys.h"
#include "wireless/CWTypes.h"
#include "wireless/linux/NmFailureText.h"
#include "wireless/linux/NmSettingsBuilder.h"
#include "wireless/linux/PolkitClient.h"
#include "wireless/linux/SysfsReader.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace {

void writeFile(const QString &path, const QByteArray &contents)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size());
}

} // namespace

TEST(LinuxNmSettings, KeyShapesAndSecurityOfANetwork)
{
    const std::tuple<QString, bool, bool> keys[] = {
        {u"abcde"_s, true, false},
        {u"0123456789"_s, true, true},
        {u"012345678g"_s, false, true},
        {u"0123456789abcdef0123456789"_s, true, true},
        {u"seven77"_s, false, false},
        {QString(63, u'x'), false, true},
        {QString(64, u'x'), false, false},
        {QString(64, u'a'), false, true}, // 64 hex digits: a raw key
    };
    for (const auto &[key, wep, wpa] : keys) {
        EXPECT_EQ(NmSettingsBuilder::isWepKey(key), wep) << key.toStdString();
        EXPECT_EQ(NmSettingsBuilder::isWpaPassphrase(key), wpa) << key.toStdString();
    }

    using S = NmSettingsBuilder::Security;
    const struct
    {
        unsigned securities;
        std::optional<int> mode;
        uint apFlags;
        bool profile;
        S expected;
    } rows[] = {
        {1u, kCWSecurityModeOpen, 0, false, S::Open},
        {1u << kCWSecurityWEP, kCWSecurityModeWEP, 0, false, S::Wep},
        {1u << kCWSecurityWPAPersonalMixed, kCWSecurityModeWPA2_PSK, 0, false, S::Psk},
        {1u << kCWSecurityWPA2Personal, kCWSecurityModeWPA2_PSK, 0x400 | 0x88, false, S::Sae},
        {1u << kCWSecurityWPA2Personal, kCWSecurityModeWPA2_PSK, 0x500, false, S::Psk},
        {1u << kCWSecurityWPA2Enterprise, kCWSecurityModeWPA2_Enterprise, 0, false, S::Enterprise},
        {1u << kCWSecurityDynamicWEP, kCWSecurityMode8021XWEP, 0, true, S::DynamicWep},
        {0u, std::nullopt, 0, true, S::Enterprise}, // unknown, with a profile
        {0u, std::nullopt, 0x100, false, S::Psk},   // only NetworkManager knows
    };
    for (const auto &row : rows)
        EXPECT_EQ(NmSettingsBuilder::securityFor(*testNetwork("net", row.securities, row.mode),
                                                 row.apFlags, row.profile),
                  row.expected)
            << row.securities << " " << row.apFlags;
}

TEST(LinuxNmSettings, HostileSsidsMakeSafeNames)
{
    EXPECT_EQ(NmSettingsBuilder::connectionId(QByteArray("a\tb\nc<d\0e", 9)), u"abc<de"_s);
    EXPECT_EQ(NmSettingsBuilder::connectionId(QByteArray("\xff\xfe")), u"\uFFFD\uFFFD"_s);
    EXPECT_EQ(NmSettingsBuilder::connectionId(QByteArray("\n\t")), u"Wi-Fi"_s);

    // Raw SSID bytes go to NetworkManager untouched.
    const QByteArray raw("a\tb\0\xff", 5);
    CWError error;
    const auto settings = NmSettingsBuilder::joinSettings(
        *testNetwork(raw), NmSettingsBuilder::Security::Open, {}, &error);
    ASSERT_TRUE(settings);
    EXPECT_EQ(NmSettingsBuilder::ssidOf(*settings), raw);

    // A hidden network cannot be joined by a name it does not send.
    CWNetwork::Data hidden;
    hidden.ssidPresent = false;
    EXPECT_FALSE(NmSettingsBuilder::joinSettings(CWNetwork(hidden),
                                                 NmSettingsBuilder::Security::Open, {}, &error));
    EXPECT_EQ(error.code(), int(kCWErrorInvalidParameter));
}

TEST(LinuxNmSettings, EnterpriseNeedsAUserName)
{
    CWError error;
    auto profile = CW8021XProfile::profile(); // "Default" with an empty user name field
    auto join = [&] {
        return NmSettingsBuilder::joinSettings(
            *testNetwork("net", 1u << kCWSecurityWPA2Enterprise, 6),
            NmSettingsBuilder::Security::Enterprise,
            {{kCWAssocKey8021XProfile, QVariant::fromValue(profile)}}, &error);
    };
    EXPECT_FALSE(join());
    EXPECT_EQ(error.localizedDescription(),
              u"This network needs an 802.1X user name and password"_s);
    profile->setUsername(u"bob"_s);
    const auto settings = join();
    ASSERT_TRUE(settings);
    // No password given: none is sent, so NetworkManager asks its agent.
    EXPECT_FALSE(settings->value(u"802-1x"_s).contains(u"password"_s));
}

TEST(LinuxNmFailureText, ReasonsAndPolkitStartTime)
{
    const std::tuple<uint, uint, const char *> reasons[] = {
        {9, 0, "The passphrase was rejected"},
        {3, 7, "The passphrase was rejected"},
        {6, 0, "The network did not answer"},
        {3, 11, "The network did not answer"},
        {3, 53, "The network is out of range"},
        {2, 0, "The connection was cancelled"},
        {1, 99, "The network could not be joined (NetworkManager reason 99)"},
    };
    for (const auto &[active, device, text] : reasons)
        EXPECT_EQ(NmFailureText::describe(active, device), QLatin1String(text))
            << active << "/" << device;

    const QByteArray tail = " S 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 987654 20 21\n";
    const std::pair<QByteArray, quint64> stats[] = {
        {"4242 (a b) c)" + tail, 987654}, // a command name with spaces and ')'
        {"4242 (x) S 1 2", 0},            // too short
        {"garbage", 0},
    };
    for (const auto &[stat, start] : stats)
        EXPECT_EQ(PolkitClient::processStartTime(stat), start) << stat.constData();
}

TEST(LinuxSysfs, RfkillLinkAndWirelessPresence)
{
    QTemporaryDir root;
    ASSERT_TRUE(root.isValid());
    // wlan0 is down and soft-blocked; wlan1 is up.
    const std::pair<const char *, QByteArray> files[] = {
        {"net/eth0/flags", "0x1003\n"},
        {"net/wlan0/flags", "0x1002\n"},
        {"net/wlan0/phy80211/rfkill1/soft", "1\n"},
        {"net/wlan0/phy80211/rfkill1/hard", "0\n"},
        {"net/wlan1/flags", "0x1003\n"},
        {"net/wlan1/phy80211/rfkill2/soft", "0\n"},
        {"net/wlan1/phy80211/rfkill2/hard", "0\n"}};
    for (const auto &[path, contents] : files)
        writeFile(root.filePath(u"class/"_s + QLatin1String(path)), contents);
    SysfsReader sysfs(root.path());
    EXPECT_TRUE(sysfs.hasWirelessInterface());
    EXPECT_EQ(std::tuple(sysfs.linkUp(u"wlan0"_s), sysfs.linkUp(u"wlan1"_s),
                         sysfs.linkUp(u"../../etc"_s)),
              std::tuple(false, true, false));
    EXPECT_EQ(std::tuple(sysfs.rfkill(u"wlan0"_s).softBlocked, sysfs.rfkill(u"wlan0"_s).hardBlocked,
                         sysfs.rfkill(u"wlan1"_s).softBlocked),
              std::tuple(true, false, false));

    // A laptop's Wi-Fi key: a platform switch of type wlan, not tied to a phy.
    const std::pair<const char *, QByteArray> switches[] = {
        {"rfkill0/type", "wlan\n"}, {"rfkill0/name", "platform-wifi\n"}, {"rfkill0/soft", "0\n"},
        {"rfkill0/hard", "1\n"},    {"rfkill2/type", "wlan\n"},          {"rfkill2/name", "phy1\n"},
        {"rfkill2/hard", "0\n"}};
    for (const auto &[path, contents] : switches)
        writeFile(root.filePath(u"class/rfkill/"_s + QLatin1String(path)), contents);
    EXPECT_TRUE(sysfs.rfkill(u"wlan1"_s).hardBlocked);

    QTemporaryDir wired;
    writeFile(wired.filePath(u"class/net/eth0/flags"_s), "0x1003\n");
    EXPECT_FALSE(SysfsReader(wired.path()).hasWirelessInterface());
}

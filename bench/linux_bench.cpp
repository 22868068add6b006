// SPDX-License-Identifier: GPL-3.0-or-later
// The Linux backend's scan call with 100 cached BSSs. Without a wireless interface the
// netlink replies are synthetic: 100 GET_SCAN messages go through the same parser and
// scan-result building the real call uses. Must stay well under 5 ms.

#include "wireless/linux/LinuxBackend.h"
#include "wireless/linux/LinuxScanResults.h"
#include "wireless/linux/Nl80211Parser.h"

#include <benchmark/benchmark.h>

#include <linux/nl80211.h>
#include <netlink/attr.h>
#include <netlink/genl/genl.h>
#include <netlink/msg.h>

#include <QCoreApplication>

#include <vector>

namespace {

constexpr int kBssCount = 100;

// A typical access point's elements: SSID, rates, DS, country, RSN (WPA2-PSK), HT
// capabilities and operation, extended rates and a WMM vendor element.
QByteArray elementsFor(int i)
{
    QByteArray ies;
    const QByteArray ssid = QByteArray("bench-network-") + QByteArray::number(i);
    ies += char(0) + QByteArray(1, char(ssid.size())) + ssid;
    ies += QByteArray::fromHex("010882848b960c121824");
    ies += QByteArray::fromHex("0301") + char(1 + i % 11);
    ies += QByteArray::fromHex("0706444520010d14");
    ies += QByteArray::fromHex("30140100000fac040100000fac040100000fac020c00");
    ies += QByteArray::fromHex("2d1aef1917ffffff00000000000000000000000000000000000000000000");
    ies += QByteArray(1, char(61)) + char(22) + char(1 + i % 11) + QByteArray(21, '\0');
    ies += QByteArray::fromHex("32043048606c");
    ies += QByteArray::fromHex("dd180050f2020101800003a4000027a4000042435e0062322f00");
    return ies;
}

std::vector<nl_msg *> makeMessages()
{
    std::vector<nl_msg *> messages;
    for (int i = 0; i < kBssCount; ++i) {
        nl_msg *msg = nlmsg_alloc();
        genlmsg_put(msg, 0, 0, 0x1c, 0, NLM_F_MULTI, NL80211_CMD_NEW_SCAN_RESULTS, 1);
        nla_put_u32(msg, NL80211_ATTR_IFINDEX, 3);
        nlattr *bss = nla_nest_start(msg, NL80211_ATTR_BSS);
        const char bssid[6] = {0x02, 0x00, 0x00, 0x00, char(i / 256), char(i % 256)};
        nla_put(msg, NL80211_BSS_BSSID, 6, bssid);
        nla_put_u32(msg, NL80211_BSS_FREQUENCY, 2412 + 5 * (i % 11));
        nla_put_u16(msg, NL80211_BSS_CAPABILITY, 0x0431);
        nla_put_u16(msg, NL80211_BSS_BEACON_INTERVAL, 100);
        const QByteArray ies = elementsFor(i);
        nla_put(msg, NL80211_BSS_INFORMATION_ELEMENTS, int(ies.size()), ies.constData());
        nla_put(msg, NL80211_BSS_BEACON_IES, int(ies.size()), ies.constData());
        nla_put_u32(msg, NL80211_BSS_SIGNAL_MBM, quint32(-3000 - 50 * i));
        nla_put_u32(msg, NL80211_BSS_SEEN_MS_AGO, quint32(100 * i));
        nla_nest_end(msg, bss);
        messages.push_back(msg);
    }
    return messages;
}

void BM_LinuxScanParsePath(benchmark::State &state)
{
    const std::vector<nl_msg *> messages = makeMessages();
    QList<Nl80211Survey> survey;
    for (int ch = 0; ch < 11; ++ch)
        survey.append({quint32(2412 + 5 * ch), -92, ch == 5});
    for (auto _ : state) {
        QList<Nl80211Bss> bsses;
        for (nl_msg *msg : messages)
            if (auto bss = Nl80211Parser::parseBss(msg))
                bsses.append(std::move(*bss));
        const auto networks =
            LinuxScanResults::networks(bsses, LinuxScanResults::noiseByFrequency(survey));
        benchmark::DoNotOptimize(networks.size());
        if (networks.size() != kBssCount)
            state.SkipWithError("parsing lost networks");
    }
    for (nl_msg *msg : messages)
        nlmsg_free(msg);
}
BENCHMARK(BM_LinuxScanParsePath)->Unit(benchmark::kMicrosecond);

// The real call, on machines that have a wireless interface (skipped elsewhere).
void BM_LinuxScanRealInterface(benchmark::State &state)
{
    int argc = 1;
    char name[] = "bench";
    char *argv[] = {name, nullptr};
    QCoreApplication app(argc, argv);
    QString error;
    auto backend = LinuxBackend::create(&error);
    const QStringList names = backend ? backend->interfaceNames() : QStringList();
    if (names.isEmpty()) {
        state.SkipWithError("no wireless interface on this machine");
        for (auto _ : state) {
        }
        return;
    }
    for (auto _ : state) {
        CWError scanError;
        benchmark::DoNotOptimize(backend->scanForNetworks(names.first(), {}, &scanError).size());
    }
}
BENCHMARK(BM_LinuxScanRealInterface)->Unit(benchmark::kMicrosecond);

} // namespace

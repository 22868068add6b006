// SPDX-License-Identifier: GPL-3.0-or-later
// Exercises the Linux backend on a real wireless stack (the hwsim VM): prints every
// interface query, the scan call and its cost, channel changes and, when asked, joins
// and disconnects. One line per fact, for the harness's checks. The long actions (joins,
// power, ad-hoc, the authorization) answer through completions; this program waits for
// each in a loop of its own and counts the answers.

#include "wireless/CWKeys.h"
#include "wireless/linux/LinuxBackend.h"
#include "wireless/linux/Nl80211Client.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QStringList>
#include <QThread>

#include <cstdio>
#include <functional>
#include <memory>

namespace {

void out(const QString &line)
{
    std::fputs(qPrintable(line + u'\n'), stdout);
    std::fflush(stdout);
}

struct LongActions
{
    int started = 0;
    int answeredOnce = 0;
    int answeredBeforeReturning = 0;
    QList<std::shared_ptr<int>> answers; // checked again at the end: still once
} longActions;

// Runs a long action and waits for its answer. An answer given before the call returned
// means the backend waited inside itself (or refused at once, which these calls should
// not be).
CWError await(const std::function<void(WirelessBackend::Completion)> &action)
{
    auto answers = std::make_shared<int>(0);
    auto result = std::make_shared<CWError>();
    auto loop = std::make_shared<QEventLoop>();
    ++longActions.started;
    longActions.answers.append(answers);
    action([answers, result, loop](const CWError &error) {
        ++*answers;
        *result = error;
        loop->quit();
    });
    if (*answers > 0)
        ++longActions.answeredBeforeReturning;
    if (*answers == 0)
        loop->exec();
    return *result;
}

void reportLongActions()
{
    QCoreApplication::processEvents(); // a second answer would be queued by now
    for (const auto &answers : std::as_const(longActions.answers))
        if (*answers == 1)
            ++longActions.answeredOnce;
    out(QStringLiteral("long actions: %1, answered once: %2, answered before returning: %3")
            .arg(longActions.started)
            .arg(longActions.answeredOnce)
            .arg(longActions.answeredBeforeReturning));
}

QString text(const std::optional<QString> &v)
{
    return v ? *v : QStringLiteral("(none)");
}

void printInterface(LinuxBackend &backend, const QString &name)
{
    out(QStringLiteral("iface %1 power: %2").arg(name).arg(backend.powerOn(name)));
    out(QStringLiteral("iface %1 ssid: %2").arg(name, text(backend.ssid(name))));
    out(QStringLiteral("iface %1 bssid: %2").arg(name, text(backend.bssid(name))));
    out(QStringLiteral("iface %1 security: %2").arg(name).arg(backend.security(name)));
    out(QStringLiteral("iface %1 rssi: %2").arg(name).arg(backend.rssiValue(name)));
    out(QStringLiteral("iface %1 noise: %2").arg(name).arg(backend.noiseMeasurement(name)));
    out(QStringLiteral("iface %1 rate: %2").arg(name).arg(backend.transmitRate(name)));
    out(QStringLiteral("iface %1 txpower: %2").arg(name).arg(backend.transmitPower(name)));
    out(QStringLiteral("iface %1 country: %2").arg(name, text(backend.countryCode(name))));
    QStringList channels;
    for (qint64 c : backend.supportedChannels(name))
        channels.append(QString::number(c));
    out(QStringLiteral("iface %1 channels: %2").arg(name, channels.join(u',')));
    const auto channel = backend.wlanChannel(name);
    out(QStringLiteral("iface %1 channel: %2/%3/%4")
            .arg(name)
            .arg(channel ? channel->channelNumber() : -1)
            .arg(channel ? channel->channelBand() : -1)
            .arg(channel ? channel->channelWidth() : -1));
    out(QStringLiteral("iface %1 state: %2")
            .arg(name)
            .arg(backend.interfaceState(name).value_or(-1)));
    out(QStringLiteral("iface %1 opmode: %2").arg(name).arg(backend.opMode(name).value_or(-1)));
    out(QStringLiteral("iface %1 serviceActive: %2").arg(name).arg(backend.serviceActive(name)));
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    QString error;
    auto backend = LinuxBackend::create(&error);
    if (!backend) {
        out(QStringLiteral("create failed: %1").arg(error));
        return 1;
    }
    const QStringList names = backend->interfaceNames();
    out(QStringLiteral("interfaces: %1").arg(names.join(u',')));
    const QString name = args.value(0, names.value(0));
    printInterface(*backend, name);

    CWError cwError = await([&](auto done) {
        backend->obtainAuthorizationAsync(QStringLiteral("system.preferences"), 19, done);
    });
    out(QStringLiteral("authorization: %1 %2")
            .arg(cwError.isNull())
            .arg(cwError.localizedDescription()));

    // The scan call must return at once whatever the radio does; time a few.
    QStringList timings;
    for (int i = 0; i < 5; ++i) {
        QElapsedTimer timer;
        timer.start();
        backend->scanForNetworks(name, {}, &cwError);
        timings.append(QString::number(timer.nsecsElapsed() / 1000));
    }
    out(QStringLiteral("scan call: %1 us").arg(timings.join(u' ')));
    // Where that time goes: each netlink request a scan makes, on a client of its own.
    {
        Nl80211Client nl;
        int ifindex = 0;
        auto time = [](const auto &what) {
            QElapsedTimer timer;
            timer.start();
            what();
            return timer.nsecsElapsed() / 1000;
        };
        const qint64 tIfaces = time([&] {
            for (const auto &i : nl.interfaces())
                if (i.name == name)
                    ifindex = i.ifindex;
        });
        const qint64 tDump = time([&] { nl.scanDump(ifindex, nullptr); });
        const qint64 tSurvey = time([&] { nl.survey(ifindex); });
        out(QStringLiteral("netlink: interfaces %1 us, scan dump %2 us, survey %3 us")
                .arg(tIfaces)
                .arg(tDump)
                .arg(tSurvey));
    }
    const auto networks = backend->scanForNetworks(name, {}, &cwError);
    out(QStringLiteral("scan: %1 networks, error \"%2\"")
            .arg(networks.size())
            .arg(cwError.localizedDescription()));
    for (const CWNetworkRef &n : networks)
        out(QStringLiteral(
                "bss %1 ssid=\"%2\" rssi=%3 noise=%4 channel=%5/%6/%7 securities=%8 mode=%9")
                .arg(n->bssid(), text(n->ssid()))
                .arg(n->rssiValue())
                .arg(n->noiseMeasurement())
                .arg(n->wlanChannel().channelNumber())
                .arg(n->wlanChannel().channelBand())
                .arg(n->wlanChannel().channelWidth())
                .arg(n->data().securities, 0, 16)
                .arg(n->securityMode().value_or(-1)));

    out(QStringLiteral("setChannel 6: %1 \"%2\"")
            .arg(backend->setChannel(name, 6, &cwError))
            .arg(cwError.localizedDescription()));
    out(QStringLiteral("setChannel 0: %1 \"%2\"")
            .arg(backend->setChannel(name, 0, &cwError))
            .arg(cwError.localizedDescription()));

    // "--wait-scan N": scan every two seconds until N networks are heard (the first
    // call only asks for fresh results; later ones read what arrived).
    const int wait = args.indexOf(QStringLiteral("--wait-scan"));
    if (wait >= 0 && args.size() > wait + 1) {
        const int want = args[wait + 1].toInt();
        qsizetype got = 0;
        int seconds = 0;
        for (; seconds <= 60; seconds += 2) {
            got = backend->scanForNetworks(name, {}, &cwError).size();
            if (got >= want)
                break;
            QThread::sleep(2);
        }
        out(QStringLiteral("rescan: %1 networks after %2 s \"%3\"")
                .arg(got)
                .arg(seconds)
                .arg(cwError.localizedDescription()));
    }

    // "--join SSID PASSPHRASE": join through NetworkManager, show the link, then leave.
    const int join = args.indexOf(QStringLiteral("--join"));
    if (join >= 0 && args.size() > join + 2) {
        CWNetworkRef target;
        for (const CWNetworkRef &n : networks)
            if (n->ssid() == args[join + 1])
                target = n;
        if (!target) {
            out(QStringLiteral("join: %1 not in the scan").arg(args[join + 1]));
            return 2;
        }
        QVariantMap parameters;
        if (!args[join + 2].isEmpty())
            parameters.insert(kCWAssocKeyPassphrase, args[join + 2]);
        QStringList changes;
        const auto watch = QObject::connect(backend.get(), &WirelessBackend::linkChanged,
                                            [&](const QString &changed, const QStringList &keys) {
                                                changes.append(changed + u'=' + keys.join(u'|'));
                                            });
        cwError = await(
            [&](auto done) { backend->associateToNetworkAsync(name, target, parameters, done); });
        const bool ok = cwError.isNull();
        out(QStringLiteral("join %1: %2 \"%3\"")
                .arg(args[join + 1])
                .arg(ok)
                .arg(cwError.localizedDescription()));
        QThread::msleep(1500); // a few frames so the station entry has rates
        printInterface(*backend, name);
        backend->disassociate(name);
        QThread::msleep(500);
        QCoreApplication::processEvents();
        QObject::disconnect(watch);
        out(QStringLiteral("link changes: %1 %2").arg(changes.size()).arg(changes.value(0)));
        out(QStringLiteral("after disconnect state: %1")
                .arg(backend->interfaceState(name).value_or(-1)));
    }

    // "--also-join SSID PASSPHRASE" and "--also-join-eap SSID USER PASSWORD", any number
    // of times: join, show the association, leave.
    for (int i = 0; i < args.size(); ++i) {
        const bool eap = args[i] == u"--also-join-eap";
        if ((args[i] != u"--also-join" && !eap) || args.size() <= i + (eap ? 3 : 2))
            continue;
        const QString ssid = args[i + 1];
        CWNetworkRef target;
        for (const CWNetworkRef &n : networks)
            if (n->ssid() == ssid)
                target = n;
        if (!target) {
            out(QStringLiteral("join %1: not in the scan").arg(ssid));
            continue;
        }
        QVariantMap parameters;
        if (eap) {
            auto profile = CW8021XProfile::profile();
            profile->setUserDefinedName(ssid);
            profile->setUsername(args[i + 2]);
            profile->setPassword(args[i + 3]);
            parameters.insert(kCWAssocKey8021XProfile, QVariant::fromValue(profile));
        } else {
            parameters.insert(kCWAssocKeyPassphrase, args[i + 2]);
        }
        cwError = await(
            [&](auto done) { backend->associateToNetworkAsync(name, target, parameters, done); });
        const bool ok = cwError.isNull();
        out(QStringLiteral("join %1: %2 \"%3\"")
                .arg(ssid)
                .arg(ok)
                .arg(cwError.localizedDescription()));
        QThread::msleep(1500); // a few frames so the station entry has rates
        out(QStringLiteral("joined %1 state: %2 bssid: %3 ssid: %4 rssi: %5 rate: %6")
                .arg(ssid)
                .arg(backend->interfaceState(name).value_or(-1))
                .arg(text(backend->bssid(name)), text(backend->ssid(name)))
                .arg(backend->rssiValue(name))
                .arg(backend->transmitRate(name)));
        backend->disassociate(name);
        QThread::msleep(500);
    }
    // "--power-cycle": Wi-Fi off and on again through NetworkManager.
    if (args.contains(QStringLiteral("--power-cycle"))) {
        cwError = await([&](auto done) { backend->setPowerAsync(name, false, done); });
        const bool off = cwError.isNull();
        QThread::msleep(1000);
        out(QStringLiteral("power off: %1 \"%2\" now %3")
                .arg(off)
                .arg(cwError.localizedDescription())
                .arg(backend->powerOn(name)));
        cwError = await([&](auto done) { backend->setPowerAsync(name, true, done); });
        const bool on = cwError.isNull();
        QThread::msleep(3000);
        out(QStringLiteral("power on: %1 \"%2\" now %3")
                .arg(on)
                .arg(cwError.localizedDescription())
                .arg(backend->powerOn(name)));
    }

    // "--adhoc SSID": start an ad-hoc network on channel 11, as the dialog does.
    const int adhoc = args.indexOf(QStringLiteral("--adhoc"));
    if (adhoc >= 0 && args.size() > adhoc + 1) {
        const QVariantMap parameters{{kCWIBSSKeySSID, args[adhoc + 1]}, {kCWIBSSKeyChannel, 11}};
        cwError = await([&](auto done) { backend->enableIBSSAsync(name, parameters, done); });
        const bool ok = cwError.isNull();
        const auto channel = backend->wlanChannel(name);
        out(QStringLiteral("adhoc %1: %2 \"%3\" opmode %4 ssid %5 channel %6")
                .arg(args[adhoc + 1])
                .arg(ok)
                .arg(cwError.localizedDescription())
                .arg(backend->opMode(name).value_or(-1))
                .arg(text(backend->ssid(name)))
                .arg(channel ? channel->channelNumber() : -1));
        backend->disassociate(name);
    }
    reportLongActions();
    return 0;
}

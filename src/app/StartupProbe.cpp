// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StartupProbe.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QObject>

#include <pcap/pcap.h>

#include <cstdio>

namespace {
// Asks Avahi for an "_http._tcp" browse in the default domains and frees the browser as
// soon as it exists. Asynchronous: a missing daemon or bus costs nothing at start-up.
void browseHttpServices()
{
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.isConnected())
        return;
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Avahi"), QStringLiteral("/"),
        QStringLiteral("org.freedesktop.Avahi.Server"), QStringLiteral("ServiceBrowserNew"));
    call << qint32(-1) << qint32(-1) << QStringLiteral("_http._tcp") << QString() << quint32(0);
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, 2000));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, [](QDBusPendingCallWatcher *w) {
        w->deleteLater();
        const QDBusMessage reply = w->reply();
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
            return;
        const QString path = reply.arguments().constFirst().value<QDBusObjectPath>().path();
        QDBusMessage free = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.Avahi"), path,
            QStringLiteral("org.freedesktop.Avahi.ServiceBrowser"), QStringLiteral("Free"));
        QDBusConnection::systemBus().asyncCall(free);
    });
}
} // namespace

void StartupProbe::run(bool browseServices)
{
    char errbuf[PCAP_ERRBUF_SIZE] = {};
    // pcap_lookupdev is deprecated in favour of pcap_findalldevs, but it is exactly the
    // question asked here: the default capture device.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    const char *device = pcap_lookupdev(errbuf);
#pragma GCC diagnostic pop
    if (!device)
        std::fprintf(stderr, "Couldn't find default device: %s\n", errbuf);
    else
        std::fprintf(stdout, "Device: %s\n", device);
    std::fflush(stdout);

    errbuf[0] = '\0';
    // The handle is never read and stays open for the life of the program.
    pcap_t *handle = pcap_open_live("en0", 1024, 1, 1000, errbuf);
    if (!handle) {
        std::fprintf(stderr, "Couldn't open device %s: %s\n", "en0", errbuf);
        return;
    }
    if (browseServices)
        browseHttpServices();
}

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/linux/Nl80211Records.h"

#include <QList>
#include <QString>
#include <QtGlobal>

#include <functional>
#include <optional>

struct nl_msg;
struct nl_sock;

// Synchronous nl80211 requests over one generic-netlink socket. Reads need no privilege;
// triggering a scan and changing the channel need CAP_NET_ADMIN and report the kernel's
// refusal otherwise. Main thread only, like every other platform call.
class Nl80211Client
{
public:
    Nl80211Client();
    ~Nl80211Client();
    Q_DISABLE_COPY_MOVE(Nl80211Client)

    // False when the kernel has no nl80211 (no cfg80211 loaded); see unavailableReason().
    bool isAvailable() const { return m_family >= 0; }
    QString unavailableReason() const { return m_reason; }

    // Every interface with a netdev, in ifindex order.
    QList<Nl80211Interface> interfaces();
    std::optional<Nl80211Station> station(int ifindex, const QByteArray &mac);
    QList<Nl80211Survey> survey(int ifindex);
    // The kernel's BSS cache. A dump that a BSS-list change interrupted is taken again.
    // On failure returns nothing and sets *errorText.
    QList<Nl80211Bss> scanDump(int ifindex, QString *errorText);
    QList<Nl80211Frequency> wiphyFrequencies(quint32 wiphy);
    QString regulatoryCountry(quint32 wiphy);

    // 0 or a negative errno; *kernelText gets the kernel's explanation when it gave one.
    int triggerScan(int ifindex, QString *kernelText);
    int setFrequency(int ifindex, quint32 mhz, QString *kernelText);

    // Text for a negative errno, with the kernel's extended message appended when present.
    static QString errnoText(int err, const QString &kernelText);

private:
    using Handler = std::function<void(nl_msg *)>;
    using Filler = std::function<bool(nl_msg *)>;
    // Sends one request and reads until its end. Returns 0, a negative errno from the
    // kernel, or -EIO for a transport failure (after which the socket is rebuilt).
    int request(int cmd, bool dump, const Filler &fill, const Handler &onMessage,
                QString *kernelText = nullptr, bool *interrupted = nullptr);
    bool open();
    void close();

    nl_sock *m_sock = nullptr;
    int m_family = -1;
    QString m_reason;
};

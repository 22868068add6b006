// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

struct nl_sock;
class QSocketNotifier;

// Listens to nl80211's "mlme" multicast group (connect, disconnect, roaming, channel
// switches) on a socket of its own, so link changes are known without NetworkManager.
class Nl80211EventWatcher : public QObject
{
    Q_OBJECT
public:
    explicit Nl80211EventWatcher(QObject *parent = nullptr);
    ~Nl80211EventWatcher() override;

    bool isListening() const { return m_notifier != nullptr; }

Q_SIGNALS:
    // `command` is the nl80211 command of the event (NL80211_CMD_CONNECT, ...).
    void linkEvent(int ifindex, int command);

private:
    void readEvents();

    nl_sock *m_sock = nullptr;
    QSocketNotifier *m_notifier = nullptr;
};

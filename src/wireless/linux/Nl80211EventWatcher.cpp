// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/linux/Nl80211EventWatcher.h"

#include "wireless/linux/Nl80211Parser.h"

#include <linux/nl80211.h>
#include <netlink/genl/ctrl.h>
#include <netlink/genl/genl.h>
#include <netlink/netlink.h>

#include <QList>
#include <QLoggingCategory>
#include <QPair>
#include <QSocketNotifier>

namespace {
Q_LOGGING_CATEGORY(lcEvents, "corvane.nl80211.events")

using Events = QList<QPair<int, int>>;

int collect(nl_msg *msg, void *arg)
{
    const auto ifindex = Nl80211Parser::ifindexOf(msg);
    if (ifindex)
        static_cast<Events *>(arg)->append({*ifindex, Nl80211Parser::commandOf(msg)});
    return NL_OK;
}
} // namespace

Nl80211EventWatcher::Nl80211EventWatcher(QObject *parent) : QObject(parent)
{
    m_sock = nl_socket_alloc();
    if (!m_sock || genl_connect(m_sock) < 0) {
        qCDebug(lcEvents) << "no netlink socket for link events";
        return;
    }
    const int group = genl_ctrl_resolve_grp(m_sock, "nl80211", "mlme");
    if (group < 0 || nl_socket_add_membership(m_sock, group) < 0) {
        qCDebug(lcEvents) << "nl80211 offers no mlme events here";
        return;
    }
    // Events carry no sequence numbers of ours.
    nl_socket_disable_seq_check(m_sock);
    nl_socket_set_nonblocking(m_sock);
    m_notifier = new QSocketNotifier(nl_socket_get_fd(m_sock), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &Nl80211EventWatcher::readEvents);
}

Nl80211EventWatcher::~Nl80211EventWatcher()
{
    delete m_notifier;
    if (m_sock)
        nl_socket_free(m_sock);
}

void Nl80211EventWatcher::readEvents()
{
    Events events;
    nl_cb *cb = nl_cb_alloc(NL_CB_DEFAULT);
    if (!cb)
        return;
    nl_cb_set(cb, NL_CB_VALID, NL_CB_CUSTOM, collect, &events);
    // Drain everything that is queued; a non-blocking socket ends the loop with EAGAIN.
    for (int i = 0; i < 64 && nl_recvmsgs(m_sock, cb) >= 0; ++i) {
    }
    nl_cb_put(cb);
    for (const auto &[ifindex, command] : std::as_const(events))
        Q_EMIT linkEvent(ifindex, command);
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/linux/Nl80211Client.h"

#include "wireless/linux/Nl80211Parser.h"

#include <linux/netlink.h>
#include <linux/nl80211.h>
#include <netlink/genl/ctrl.h>
#include <netlink/genl/genl.h>
#include <netlink/msg.h>
#include <netlink/netlink.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <QLoggingCategory>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace {

Q_LOGGING_CATEGORY(lcNl, "corvane.nl80211")

// A BSS list that keeps changing (a busy band, a scan finishing) can interrupt dumps over
// and over; after this many tries the last, possibly inconsistent, dump is used.
constexpr int kDumpTries = 4;

struct RequestState
{
    const std::function<void(nl_msg *)> *onMessage = nullptr;
    int result = 1; // 1 while running, then 0 or a negative errno
    bool interrupted = false;
    QString kernelText;
};

int onValid(nl_msg *msg, void *arg)
{
    auto *state = static_cast<RequestState *>(arg);
    if (state->onMessage && *state->onMessage)
        (*state->onMessage)(msg);
    return NL_SKIP;
}

int onFinish(nl_msg *, void *arg)
{
    static_cast<RequestState *>(arg)->result = 0;
    return NL_SKIP;
}

int onAck(nl_msg *, void *arg)
{
    static_cast<RequestState *>(arg)->result = 0;
    return NL_STOP;
}

int onDumpInterrupted(nl_msg *, void *arg)
{
    static_cast<RequestState *>(arg)->interrupted = true;
    return NL_OK; // keep reading to the end of this dump so the socket stays in step
}

// The kernel appends the reason for a refusal as NLMSGERR_ATTR_MSG when the socket asked
// for extended acknowledgements; the layout is nlmsghdr, nlmsgerr (with the original
// request unless capped), then attributes.
QString extendedAckText(nlmsgerr *err)
{
    auto *nlh = reinterpret_cast<nlmsghdr *>(err) - 1;
    if (!(nlh->nlmsg_flags & NLM_F_ACK_TLVS))
        return {};
    int ackLen = int(sizeof(*nlh) + sizeof(int) + sizeof(*nlh));
    if (!(nlh->nlmsg_flags & NLM_F_CAPPED))
        ackLen += int(err->msg.nlmsg_len) - int(sizeof(*nlh));
    const int len = int(nlh->nlmsg_len) - ackLen;
    if (len <= 0)
        return {};
    std::array<nlattr *, NLMSGERR_ATTR_MAX + 1> tb{};
    auto *attrs = reinterpret_cast<nlattr *>(reinterpret_cast<char *>(nlh) + ackLen);
    if (nla_parse(tb.data(), NLMSGERR_ATTR_MAX, attrs, len, nullptr) || !tb[NLMSGERR_ATTR_MSG])
        return {};
    const int n = nla_len(tb[NLMSGERR_ATTR_MSG]);
    const char *text = static_cast<const char *>(nla_data(tb[NLMSGERR_ATTR_MSG]));
    return QString::fromUtf8(text, int(strnlen(text, size_t(std::max(n, 0)))));
}

int onError(sockaddr_nl *, nlmsgerr *err, void *arg)
{
    auto *state = static_cast<RequestState *>(arg);
    state->result = err->error < 0 ? err->error : -EIO;
    state->kernelText = extendedAckText(err);
    return NL_STOP;
}

} // namespace

Nl80211Client::Nl80211Client()
{
    open();
}

Nl80211Client::~Nl80211Client()
{
    close();
}

bool Nl80211Client::open()
{
    close();
    m_sock = nl_socket_alloc();
    if (!m_sock) {
        m_reason = QStringLiteral("Out of memory opening a netlink socket");
        return false;
    }
    if (const int err = genl_connect(m_sock); err < 0) {
        m_reason = QStringLiteral("Cannot open a netlink socket: %1")
                       .arg(QString::fromUtf8(nl_geterror(err)));
        close();
        return false;
    }
    nl_socket_enable_msg_peek(m_sock); // a BSS with many elements exceeds one page
    const int fd = nl_socket_get_fd(m_sock);
    const int one = 1;
    setsockopt(fd, SOL_NETLINK, NETLINK_EXT_ACK, &one, sizeof(one));
    // Replies come straight from the kernel; a bounded wait keeps a wedged driver from
    // freezing the window.
    timeval timeout{3, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof(timeout));
    m_family = genl_ctrl_resolve(m_sock, "nl80211");
    if (m_family < 0) {
        m_reason =
            QStringLiteral("The kernel offers no nl80211 interface (no Wi-Fi driver loaded)");
        close();
        return false;
    }
    m_reason.clear();
    return true;
}

void Nl80211Client::close()
{
    if (m_sock)
        nl_socket_free(m_sock);
    m_sock = nullptr;
    m_family = -1;
}

int Nl80211Client::request(int cmd, bool dump, const Filler &fill, const Handler &onMessage,
                           QString *kernelText, bool *interrupted)
{
    if (!m_sock && !open())
        return -ENODEV;
    nl_msg *msg = nlmsg_alloc();
    if (!msg)
        return -ENOMEM;
    if (!genlmsg_put(msg, NL_AUTO_PORT, NL_AUTO_SEQ, m_family, 0, dump ? NLM_F_DUMP : 0,
                     quint8(cmd), 0) ||
        (fill && !fill(msg))) {
        nlmsg_free(msg);
        return -ENOBUFS;
    }
    RequestState state;
    state.onMessage = &onMessage;
    nl_cb *cb = nl_cb_alloc(NL_CB_DEFAULT);
    if (!cb) {
        nlmsg_free(msg);
        return -ENOMEM;
    }
    nl_cb_set(cb, NL_CB_VALID, NL_CB_CUSTOM, onValid, &state);
    nl_cb_set(cb, NL_CB_FINISH, NL_CB_CUSTOM, onFinish, &state);
    nl_cb_set(cb, NL_CB_ACK, NL_CB_CUSTOM, onAck, &state);
    nl_cb_set(cb, NL_CB_DUMP_INTR, NL_CB_CUSTOM, onDumpInterrupted, &state);
    nl_cb_err(cb, NL_CB_CUSTOM, onError, &state);

    int transport = nl_send_auto(m_sock, msg);
    nlmsg_free(msg);
    while (transport >= 0 && state.result > 0)
        transport = nl_recvmsgs(m_sock, cb);
    nl_cb_put(cb);
    if (kernelText)
        *kernelText = state.kernelText;
    if (interrupted)
        *interrupted = state.interrupted;
    if (transport < 0 && state.result > 0) {
        // A timeout or a broken stream leaves unread replies behind: start afresh.
        qCWarning(lcNl) << "nl80211 request" << cmd << "failed:" << nl_geterror(transport);
        open();
        return -EIO;
    }
    return state.result;
}

QList<Nl80211Interface> Nl80211Client::interfaces()
{
    QList<Nl80211Interface> out;
    request(NL80211_CMD_GET_INTERFACE, true, {}, [&](nl_msg *msg) {
        if (auto info = Nl80211Parser::parseInterface(msg))
            out.append(*info);
    });
    std::stable_sort(out.begin(), out.end(),
                     [](const auto &a, const auto &b) { return a.ifindex < b.ifindex; });
    return out;
}

std::optional<Nl80211Station> Nl80211Client::station(int ifindex, const QByteArray &mac)
{
    if (mac.size() != 6)
        return std::nullopt;
    std::optional<Nl80211Station> out;
    request(
        NL80211_CMD_GET_STATION, false,
        [&](nl_msg *msg) {
            return nla_put_u32(msg, NL80211_ATTR_IFINDEX, quint32(ifindex)) == 0 &&
                   nla_put(msg, NL80211_ATTR_MAC, 6, mac.constData()) == 0;
        },
        [&](nl_msg *msg) { out = Nl80211Parser::parseStation(msg); });
    return out;
}

QList<Nl80211Survey> Nl80211Client::survey(int ifindex)
{
    QList<Nl80211Survey> out;
    request(
        NL80211_CMD_GET_SURVEY, true,
        [&](nl_msg *msg) { return nla_put_u32(msg, NL80211_ATTR_IFINDEX, quint32(ifindex)) == 0; },
        [&](nl_msg *msg) {
            if (auto s = Nl80211Parser::parseSurvey(msg))
                out.append(*s);
        });
    return out;
}

QList<Nl80211Bss> Nl80211Client::scanDump(int ifindex, QString *errorText)
{
    QList<Nl80211Bss> out;
    for (int attempt = 1; attempt <= kDumpTries; ++attempt) {
        out.clear();
        bool interrupted = false;
        QString kernelText;
        const int err = request(
            NL80211_CMD_GET_SCAN, true,
            [&](nl_msg *msg) {
                return nla_put_u32(msg, NL80211_ATTR_IFINDEX, quint32(ifindex)) == 0;
            },
            [&](nl_msg *msg) {
                if (auto bss = Nl80211Parser::parseBss(msg))
                    out.append(std::move(*bss));
            },
            &kernelText, &interrupted);
        if (err < 0) {
            if (errorText)
                *errorText = QStringLiteral("Reading the scan results failed: %1")
                                 .arg(errnoText(err, kernelText));
            return {};
        }
        if (!interrupted)
            break;
        qCDebug(lcNl) << "scan dump interrupted by a BSS list change, try" << attempt;
    }
    return out;
}

QList<Nl80211Frequency> Nl80211Client::wiphyFrequencies(quint32 wiphy)
{
    QList<Nl80211Frequency> out;
    request(
        NL80211_CMD_GET_WIPHY, true,
        [&](nl_msg *msg) {
            // Split dumps are the only ones that carry every band on current drivers.
            return nla_put_flag(msg, NL80211_ATTR_SPLIT_WIPHY_DUMP) == 0 &&
                   nla_put_u32(msg, NL80211_ATTR_WIPHY, wiphy) == 0;
        },
        [&](nl_msg *msg) {
            if (Nl80211Parser::wiphyIndex(msg) == wiphy)
                out.append(Nl80211Parser::parseWiphyFrequencies(msg));
        });
    return out;
}

QString Nl80211Client::regulatoryCountry(quint32 wiphy)
{
    QString out;
    // A self-managed wiphy answers for itself; others answer with the global domain.
    request(
        NL80211_CMD_GET_REG, false,
        [&](nl_msg *msg) { return nla_put_u32(msg, NL80211_ATTR_WIPHY, wiphy) == 0; },
        [&](nl_msg *msg) { out = Nl80211Parser::parseRegulatoryCountry(msg); });
    return out;
}

int Nl80211Client::triggerScan(int ifindex, QString *kernelText)
{
    return request(
        NL80211_CMD_TRIGGER_SCAN, false,
        [&](nl_msg *msg) {
            if (nla_put_u32(msg, NL80211_ATTR_IFINDEX, quint32(ifindex)) != 0)
                return false;
            // One wildcard SSID: probe where regulatory rules allow it, which also
            // brings hidden networks' probe responses into the cache.
            nlattr *ssids = nla_nest_start(msg, NL80211_ATTR_SCAN_SSIDS);
            if (!ssids || nla_put(msg, 1, 0, "") != 0)
                return false;
            nla_nest_end(msg, ssids);
            return true;
        },
        {}, kernelText);
}

int Nl80211Client::setFrequency(int ifindex, quint32 mhz, QString *kernelText)
{
    auto fill = [&](nl_msg *msg) {
        return nla_put_u32(msg, NL80211_ATTR_IFINDEX, quint32(ifindex)) == 0 &&
               nla_put_u32(msg, NL80211_ATTR_WIPHY_FREQ, mhz) == 0 &&
               nla_put_u32(msg, NL80211_ATTR_CHANNEL_WIDTH, NL80211_CHAN_WIDTH_20_NOHT) == 0 &&
               nla_put_u32(msg, NL80211_ATTR_CENTER_FREQ1, mhz) == 0;
    };
    int err = request(NL80211_CMD_SET_CHANNEL, false, fill, {}, kernelText);
    // Older kernels only take a frequency through SET_WIPHY.
    if (err == -EOPNOTSUPP && kernelText && kernelText->isEmpty()) {
        const int viaWiphy = request(NL80211_CMD_SET_WIPHY, false, fill, {}, kernelText);
        if (viaWiphy != -EOPNOTSUPP)
            err = viaWiphy;
    }
    return err;
}

QString Nl80211Client::errnoText(int err, const QString &kernelText)
{
    QString text = QString::fromLocal8Bit(strerror(-err));
    if (!kernelText.isEmpty())
        text += QStringLiteral(" (%1)").arg(kernelText);
    return text;
}

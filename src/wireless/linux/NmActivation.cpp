// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/linux/NmActivation.h"

#include "wireless/linux/NmFailureText.h"

#include <QLoggingCategory>

#include <algorithm>
#include <utility>

Q_LOGGING_CATEGORY(lcNmActivation, "corvane.networkmanager.join")

namespace {
// NMActiveConnectionState and NMDeviceState values.
constexpr uint kActiveActivated = 2;
constexpr uint kActiveDeactivated = 4;
constexpr uint kDeviceFailed = 120;
// When the active connection is already gone, its last signals are still in the queue.
constexpr int kGoneGraceMs = 2000;

bool isFinal(uint state)
{
    return state == kActiveActivated || state >= kActiveDeactivated;
}
} // namespace

NmActivation::NmActivation(NetworkManagerClient *nm, const QString &interfaceName, int timeoutMs,
                           Completion done, QObject *parent)
    : QObject(parent), m_nm(nm), m_interface(interfaceName), m_timeoutMs(timeoutMs),
      m_done(std::move(done))
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &NmActivation::onTimeout);
    connect(m_nm, &NetworkManagerClient::activeConnectionStateChanged, this,
            &NmActivation::onActiveState);
    connect(m_nm, &NetworkManagerClient::deviceStateChanged, this,
            [this](const QString &name, uint newState, uint, uint reason) {
                if (name == m_interface && newState == kDeviceFailed)
                    m_deviceReason = reason;
            });
    connect(m_nm, &NetworkManagerClient::runningChanged, this, [this](bool running) {
        if (!running)
            finish(CWError(kCWErrorServiceUnavailable,
                           QStringLiteral("NetworkManager is not running")));
    });
}

void NmActivation::addAndActivate(const NmSettings &settings, const QString &device,
                                  const QString &specific)
{
    m_nm->addAndActivate(
        settings, device, specific, this,
        [this](const QString &path, const CWError &error) { onActivationReply(path, error); });
}

void NmActivation::activate(const QString &connection, const QString &device,
                            const QString &specific)
{
    m_nm->activate(
        connection, device, specific, this,
        [this](const QString &path, const CWError &error) { onActivationReply(path, error); });
}

void NmActivation::replaceAndActivate(const QString &connection, const NmSettings &settings,
                                      const QString &device, const QString &specific)
{
    m_nm->connectionSettings(connection, this, [=, this](const NmSettings &old) {
        if (isFinished())
            return;
        NmSettings merged = settings;
        const QString section = QStringLiteral("connection");
        for (const char *key : {"uuid", "id"}) {
            const QString name = QString::fromLatin1(key);
            const QVariant value = old.value(section).value(name);
            if (value.isValid())
                merged[section][name] = value;
        }
        m_nm->updateConnection(connection, merged, this, [=, this](const CWError &error) {
            if (isFinished())
                return;
            if (error.isNull()) {
                activate(connection, device, specific);
                return;
            }
            qCInfo(lcNmActivation) << "saved connection kept:" << error.localizedDescription();
            addAndActivate(settings, device, specific);
        });
    });
}

void NmActivation::onActivationReply(const QString &activePath, const CWError &error)
{
    if (isFinished())
        return;
    if (!error.isNull() || activePath.isEmpty()) {
        finish(error.isNull() ? CWError(kCWErrorUnknown, NmFailureText::describe(0, 0)) : error);
        return;
    }
    m_activePath = activePath;
    if (const auto it = m_early.constFind(activePath); it != m_early.constEnd()) {
        conclude(it->first, it->second);
        return;
    }
    m_early.clear();
    m_timer.start(m_timeoutMs);
    m_nm->activeConnectionState(activePath, this, [this](std::optional<uint> state) {
        if (isFinished())
            return;
        if (state == kActiveActivated) {
            conclude(*state, 0);
        } else if (!state) {
            m_objectGone = true;
            m_timer.start(std::min(m_timeoutMs, kGoneGraceMs));
        }
    });
}

void NmActivation::onActiveState(const QString &path, uint state, uint reason)
{
    if (isFinished() || !isFinal(state))
        return;
    if (m_activePath.isEmpty())
        m_early.insert(path, {state, reason});
    else if (path == m_activePath)
        conclude(state, reason);
}

void NmActivation::onTimeout()
{
    if (isFinished())
        return;
    if (!m_objectGone) {
        // Still trying: give up rather than leave it half-joined.
        m_nm->deactivate(m_activePath);
        finish(CWError(kCWErrorTimeout, QStringLiteral("The network did not answer")));
        return;
    }
    finish(CWError(kCWErrorUnknown, NmFailureText::describe(0, m_deviceReason)));
}

void NmActivation::conclude(uint state, uint reason)
{
    if (state == kActiveActivated) {
        finish({});
        return;
    }
    const QString text = NmFailureText::describe(reason, m_deviceReason);
    const bool rejected = text == NmFailureText::forDeviceReason(7);
    finish(CWError(rejected ? kCWErrorAuthenticationFailed : kCWErrorUnknown, text));
}

void NmActivation::finish(const CWError &error)
{
    if (isFinished())
        return;
    m_timer.stop();
    disconnect(m_nm, nullptr, this, nullptr);
    // The completion may start the next join or drop this object; nothing of it is
    // touched afterwards.
    const Completion done = std::exchange(m_done, {});
    done(error);
}

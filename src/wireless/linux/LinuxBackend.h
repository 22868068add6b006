// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/WirelessBackend.h"
#include "wireless/linux/Nl80211Records.h"
#include "wireless/linux/SysfsReader.h"

#include <QDBusConnection>
#include <QElapsedTimer>
#include <QHash>

#include <memory>
#include <optional>

class LinuxLinkState;
class Nl80211Client;
class Nl80211EventWatcher;
class NetworkManagerClient;
class NmConnector;
class NmSavedProfiles;
class PolkitClient;

// The Linux radio: the kernel's nl80211 for everything read, NetworkManager for every
// change (power, joining, ad-hoc, disconnect) and polkit for the authorization. Scans
// return the kernel's cache at once and ask for fresh results in the background. Joins,
// ad-hoc networks, the Wi-Fi switch and the authorization prompt answer through their
// completions once the daemons have; the synchronous join forms are refused.
class LinuxBackend final : public WirelessBackend
{
    Q_OBJECT
public:
    struct Options
    {
        QDBusConnection bus = QDBusConnection::systemBus();
        QString networkManagerService; // empty: the real one
        QString polkitService;         // empty: the real one
        QString sysfsRoot = QStringLiteral("/sys");
    };

    // Null with *errorText set when the kernel has no nl80211.
    static std::shared_ptr<LinuxBackend> create(QString *errorText);
    static std::shared_ptr<LinuxBackend> create(const Options &options, QString *errorText);
    // Whether any network interface of this machine is a wireless one.
    static bool machineHasWirelessInterface();

    explicit LinuxBackend(const Options &options);
    ~LinuxBackend() override;

    QString backendName() const override { return QStringLiteral("linux"); }
    QStringList interfaceNames() const override;
    QList<CW8021XProfileRef> allUser8021XProfiles() const override;
    // Never prompts (the asynchronous form does): a quiet question polkit answers at once.
    bool obtainAuthorization(const QString &right, quint32 flags, CWError *error) override;
    void obtainAuthorizationAsync(const QString &right, quint32 flags, Completion done) override;

    bool powerOn(const QString &name) const override;
    std::optional<QString> ssid(const QString &name) const override;
    std::optional<QString> bssid(const QString &name) const override;
    qint64 security(const QString &name) const override;
    qint64 rssiValue(const QString &name) const override;
    qint64 noiseMeasurement(const QString &name) const override;
    double transmitRate(const QString &name) const override;
    qint64 transmitPower(const QString &name) const override;
    std::optional<QString> countryCode(const QString &name) const override;
    QList<qint64> supportedChannels(const QString &name) const override;
    std::optional<CWChannel> wlanChannel(const QString &name) const override;
    std::optional<int> interfaceState(const QString &name) const override;
    std::optional<int> opMode(const QString &name) const override;
    bool serviceActive(const QString &name) const override;

    QList<CWNetworkRef> scanForNetworks(const QString &name, const QVariantMap &parameters,
                                        CWError *error) override;
    bool setPower(const QString &name, bool on, CWError *error) override;
    bool setChannel(const QString &name, quint64 channel, CWError *error) override;
    void disassociate(const QString &name) override;
    void setPowerAsync(const QString &name, bool on, Completion done) override;
    void associateToNetworkAsync(const QString &name, const CWNetworkRef &network,
                                 const QVariantMap &parameters, Completion done) override;
    void enableIBSSAsync(const QString &name, const QVariantMap &parameters,
                         Completion done) override;

    // How long a join may take before it is given up (tests shorten it).
    void setActivationTimeout(int msec);
    // How long a person at polkit's password prompt is given.
    void setAuthorizationPromptTimeout(int msec);

    bool nl80211Available() const;
    QString nl80211UnavailableReason() const;

private:
    void invalidate();
    bool failIfUnknown(const QString &name, CWError *error) const;
    bool powerSwitchRefuses(const QString &name, bool on, CWError *error) const;
    // The completion a radio action's caller gets: the link state is read afresh first.
    Completion refreshingThen(Completion done);
    void requestFreshResults(const Nl80211Interface &iface);
    void emitLinkChanged(const QString &name);

    std::unique_ptr<Nl80211Client> m_nl;
    // Queries are const but read (and briefly keep) the kernel's answers.
    std::unique_ptr<LinuxLinkState> m_state;
    NetworkManagerClient *m_nm = nullptr;
    NmSavedProfiles *m_profiles = nullptr;
    NmConnector *m_connector = nullptr;
    Nl80211EventWatcher *m_events = nullptr;
    PolkitClient *m_polkit = nullptr;
    // Callers waiting for the authorization being asked for, quiet [0] and with a prompt
    // [1]: one question to polkit answers everyone who asked meanwhile.
    QList<Completion> m_authorizationWaiters[2];
    SysfsReader m_sysfs;

    QHash<int, QElapsedTimer> m_lastTrigger;
    QElapsedTimer m_authorizedAt;
    bool m_loggedStaleScans = false;
};

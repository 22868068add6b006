// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/CWChannel.h"
#include "wireless/CWOperatingChannel.h"
#include "wireless/CWWirelessProfile.h"

#include <QByteArray>
#include <QMetaType>
#include <QString>

#include <memory>
#include <optional>

class CWNetwork;
using CWNetworkRef = std::shared_ptr<const CWNetwork>;

// One entry of a scan result: an immutable snapshot of one BSSID as heard, shared by
// reference between the scan list, the network record and the join dialog.
class CWNetwork
{
public:
    // Everything a backend fills in for one heard BSS.
    struct Data
    {
        QByteArray ssidData;         // raw SSID bytes as sent; may hold anything
        bool ssidPresent = true;     // false: hidden network (no or an all-NUL SSID)
        QString bssid;               // lower-case, colon-separated
        qint64 rssiValue = 0;        // dBm
        qint64 noiseMeasurement = 0; // dBm
        CWChannel wlanChannel;
        unsigned phyModes = 0;           // bit n set: supportsPHYMode(n)
        unsigned securities = 0;         // bit n set: supportsSecurity(n)
        std::optional<int> securityMode; // CWSecurityMode
        bool ibss = false;
        CWWirelessProfileRef wirelessProfile;
        int beaconInterval = 0; // time units, 0 when unknown
        QString countryCode;
        // The real channel layout; wlanChannel keeps the coarse codes the texts are made of.
        CWOperatingChannel operatingChannel;
    };

    explicit CWNetwork(Data data) : d(std::move(data)) {}
    static CWNetworkRef create(Data data)
    {
        return std::make_shared<const CWNetwork>(std::move(data));
    }

    // The SSID for display, or none for a hidden network. Bytes that are not UTF-8 are
    // replaced, never trusted.
    std::optional<QString> ssid() const;
    QByteArray ssidData() const { return d.ssidData; }
    QString bssid() const { return d.bssid; }
    qint64 rssiValue() const { return d.rssiValue; }
    qint64 noiseMeasurement() const { return d.noiseMeasurement; }
    CWChannel wlanChannel() const { return d.wlanChannel; }
    bool supportsPHYMode(int mode) const
    {
        return mode >= 0 && mode < 32 && (d.phyModes >> mode) & 1u;
    }
    bool supportsSecurity(int security) const
    {
        return security >= 0 && security < 32 && (d.securities >> security) & 1u;
    }
    std::optional<int> securityMode() const { return d.securityMode; }
    bool ibss() const { return d.ibss; }
    CWWirelessProfileRef wirelessProfile() const { return d.wirelessProfile; }
    int beaconInterval() const { return d.beaconInterval; }
    QString countryCode() const { return d.countryCode; }
    const CWOperatingChannel &operatingChannel() const { return d.operatingChannel; }

    const Data &data() const { return d; }

private:
    Data d;
};

Q_DECLARE_METATYPE(CWNetworkRef)

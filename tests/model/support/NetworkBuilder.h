// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/NetworkObject.h"
#include "wireless/CWNetwork.h"

#include <initializer_list>

// When the records of the model tests are heard, unless a test says otherwise.
inline const QDateTime kT0(QDate(2024, 5, 1), QTime(12, 0, 0), Qt::UTC);

// Builds scan results for tests: a plausible open 2.4 GHz network unless told otherwise.
class NetworkBuilder
{
public:
    NetworkBuilder()
    {
        d.ssidData = QByteArrayLiteral("Home");
        d.bssid = QStringLiteral("00:11:22:33:44:55");
        d.rssiValue = -60;
        d.noiseMeasurement = -90;
        d.wlanChannel = CWChannel(6, kCWChannelBand2GHz, kCWChannelWidth20MHz);
        d.phyModes = bits({kCWPHYMode11g, kCWPHYMode11n});
        d.securities = 1u << kCWSecurityNone;
    }

    NetworkBuilder &ssid(const QByteArray &bytes)
    {
        d.ssidData = bytes;
        return set(d.ssidPresent, true);
    }
    NetworkBuilder &hidden()
    {
        d.ssidData.clear();
        return set(d.ssidPresent, false);
    }
    NetworkBuilder &bssid(const QString &bssid) { return set(d.bssid, bssid); }
    NetworkBuilder &rssi(qint64 dbm) { return set(d.rssiValue, dbm); }
    NetworkBuilder &noise(qint64 dbm) { return set(d.noiseMeasurement, dbm); }
    NetworkBuilder &channel(qint64 n, int band, int w) { return set(d.wlanChannel, {n, band, w}); }
    NetworkBuilder &phyModes(std::initializer_list<int> modes)
    {
        return set(d.phyModes, bits(modes));
    }
    NetworkBuilder &securities(std::initializer_list<int> codes)
    {
        return set(d.securities, bits(codes));
    }
    NetworkBuilder &ibss(bool on) { return set(d.ibss, on); }
    // The real layout: segment width and centres in MHz (a second centre for 80+80).
    NetworkBuilder &operatingChannel(int primary, int band, int widthMHz, int centerMHz,
                                     int secondMHz = 0)
    {
        d.operatingChannel = CWOperatingChannel{primary, band, widthMHz, {centerMHz, secondMHz}};
        return *this;
    }

    CWNetwork::Data &data() { return d; }
    CWNetworkRef build() const { return CWNetwork::create(d); }
    operator CWNetworkRef() const { return build(); }
    // A record first heard at `t` with this result.
    NetworkObjectRef record(const QDateTime &t = kT0) const
    {
        return NetworkObject::objectWithCWNetwork(build(), t);
    }

private:
    template <class T> NetworkBuilder &set(T &field, const T &value)
    {
        field = value;
        return *this;
    }
    static unsigned bits(std::initializer_list<int> list)
    {
        unsigned out = 0;
        for (int n : list)
            out |= 1u << n;
        return out;
    }
    CWNetwork::Data d;
};

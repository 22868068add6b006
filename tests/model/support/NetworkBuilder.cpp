// SPDX-License-Identifier: GPL-3.0-or-later
#include "NetworkBuilder.h"

NetworkBuilder::NetworkBuilder()
{
    m_data.ssidData = QByteArrayLiteral("Home");
    m_data.bssid = QStringLiteral("00:11:22:33:44:55");
    m_data.rssiValue = -60;
    m_data.noiseMeasurement = -90;
    m_data.wlanChannel = CWChannel(6, kCWChannelBand2GHz, kCWChannelWidth20MHz);
    m_data.phyModes = (1u << kCWPHYMode11g) | (1u << kCWPHYMode11n);
    m_data.securities = 1u << kCWSecurityNone;
}

NetworkBuilder &NetworkBuilder::ssid(const QByteArray &bytes)
{
    m_data.ssidData = bytes;
    m_data.ssidPresent = true;
    return *this;
}

NetworkBuilder &NetworkBuilder::hidden()
{
    m_data.ssidData.clear();
    m_data.ssidPresent = false;
    return *this;
}

NetworkBuilder &NetworkBuilder::bssid(const QString &bssid)
{
    m_data.bssid = bssid;
    return *this;
}

NetworkBuilder &NetworkBuilder::rssi(qint64 dbm)
{
    m_data.rssiValue = dbm;
    return *this;
}

NetworkBuilder &NetworkBuilder::noise(qint64 dbm)
{
    m_data.noiseMeasurement = dbm;
    return *this;
}

NetworkBuilder &NetworkBuilder::channel(qint64 number, int band, int width)
{
    m_data.wlanChannel = CWChannel(number, band, width);
    return *this;
}

NetworkBuilder &NetworkBuilder::operatingChannel(int primary, int band, int widthMHz, int centerMHz,
                                                 int secondCenterMHz)
{
    m_data.operatingChannel =
        CWOperatingChannel{primary, band, widthMHz, {centerMHz, secondCenterMHz}};
    return *this;
}

NetworkBuilder &NetworkBuilder::phyModes(std::initializer_list<int> modes)
{
    m_data.phyModes = 0;
    for (int m : modes)
        m_data.phyModes |= 1u << m;
    return *this;
}

NetworkBuilder &NetworkBuilder::securities(std::initializer_list<int> codes)
{
    m_data.securities = 0;
    for (int c : codes)
        m_data.securities |= 1u << c;
    return *this;
}

NetworkBuilder &NetworkBuilder::ibss(bool on)
{
    m_data.ibss = on;
    return *this;
}

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "wireless/simulated/SimSecurity.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

// A simulated neighbourhood as read from a scenario file: the access points with their
// places, the own interfaces with their paths, the radio model's constants and the faults
// to inject. Plain data; SimWorld brings it to life. Distances in metres, times in seconds
// from the backend's start, powers in dBm unless a name says otherwise.
class SimScenario
{
public:
    struct Point
    {
        double x = 0.0;
        double y = 0.0;
        double z = 0.0;
    };

    // An 802.1X user name and password.
    struct Account
    {
        QString username;
        QString password;
    };

    // One of the user's stored 802.1X profiles.
    struct Profile
    {
        QString name;
        Account account;
    };

    struct AccessPoint
    {
        QByteArray ssid;     // raw bytes
        bool hidden = false; // no SSID in the beacon
        QString bssid;       // lower-case, colon-separated
        int channel = 1;
        int band = 1;          // CWChannelBand; the channel's unless a scenario says 6 GHz
        int width = 1;         // CWChannelWidth
        int widthMHz = 20;     // 20, 40, 80, 160 or 320; of each segment for 80+80
        int secondSegment = 0; // centre channel of the second 80+80 segment, 0 for none
        unsigned phyModes = 0; // bit n: CWPHYMode n
        bool vht = false;      // 802.11ac, which shows as a and n
        SimSecurity::Kind security = SimSecurity::Open;
        QString passphrase;      // the key WEP and personal networks accept
        QList<Account> accounts; // the users 802.1X networks accept
        bool ibss = false;
        Point position;
        double txPower = 20.0;    // dBm
        double extraLoss = 0.0;   // dB for walls and floors on top of the path loss
        int beaconInterval = 100; // time units
        QString countryCode;
        // Presence: from appearsAt until vanishesAt (never when absent); with a positive
        // onFor/offFor it is on for onFor seconds, then off for offFor, shifted by phase.
        double appearsAt = 0.0;
        std::optional<double> vanishesAt;
        double onFor = 0.0;
        double offFor = 0.0;
        double phase = 0.0;
        // What the system has stored for this network.
        std::optional<QString> storedPassphrase;
        std::optional<QString> storedProfile; // name of a user profile
    };

    struct Interface
    {
        QString name;
        QString countryCode;
        QList<qint64> supportedChannels; // in the platform's order, not sorted
        int channel = 0;                 // when not joined to anything; 0: first supported
        qint64 txPowerMw = 31;
        int spatialStreams = 2;
        bool powerOn = true;
        bool serviceActive = false;
        QString associatedTo; // BSSID joined at start, empty for none
        QList<Point> path;    // waypoints, walked in a loop
        double speed = 0.3;   // m/s along the path
    };

    struct Radio
    {
        double pathLossExponent = 3.3;
        double referenceDistance = 1.0; // m
        double referenceLoss24 = 40.0;  // dB at the reference distance, 2.4 GHz
        double referenceLoss5 = 46.4;   // dB at the reference distance, 5 GHz
        double referenceLoss6 = 48.0;   // dB at the reference distance, 6 GHz
        int hearingThreshold = -95;     // dBm; weaker networks are not in scans
        int noiseFloor24 = -92;
        int noiseFloor5 = -95;
        int noiseJitter = 2;        // dB, either way
        double walkAmplitude = 4.0; // dB, largest excursion of the random walk
        double walkPeriod = 20.0;   // s between the walk's slow turning points
    };

    struct Faults
    {
        bool refuseAuthorization = false;
        int scanErrorEvery = 0; // every n-th scan fails; 0 never
        int emptyScanEvery = 0; // every m-th scan hears nothing; 0 never
    };

    QString name;
    Radio radio;
    Faults faults;
    QList<Profile> userProfiles;
    QList<AccessPoint> accessPoints;
    QList<Interface> interfaces;

    // Null and *errorText set on anything that is not a valid scenario.
    static std::optional<SimScenario> fromJson(const QByteArray &json, QString *errorText);

    // 2.4 GHz channels 1-14 and the 5 GHz 20 MHz channels; band is a CWChannelBand.
    static bool isValidChannel(qint64 channel);
    static int bandOf(qint64 channel);
    static QList<qint64> defaultChannels();
};

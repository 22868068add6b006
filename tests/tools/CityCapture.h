// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// A synthetic drive through a city: a radiotap capture in which `accessPoints` networks
// each beacon `beaconsEach` times, evenly spread over `seconds`. Frame j goes out at
// j * seconds / (accessPoints * beaconsEach), network j % accessPoints sending it, so every
// network is heard once per lap and a scan window of a few seconds holds a steady share.
// Names, channels (2.4 and 5 GHz), security, hidden networks and the levels vary with the
// network's number; the same arguments always give the same file.
struct CityCapture
{
    int accessPoints = 1000;
    int beaconsEach = 3;
    double seconds = 600.0;

    // Writes the capture; false with `error` set when the file cannot be written.
    bool write(const QString &path, QString *error) const;
};

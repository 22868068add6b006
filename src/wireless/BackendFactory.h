// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <memory>
#include <optional>

class WirelessBackend;

// Chooses and builds the backend once at start-up.
class BackendFactory
{
public:
    enum class Kind { Auto, Linux, Simulated, Replay };

    struct Request
    {
        Kind kind = Kind::Auto;
        QString scenario;            // simulated: scenario file, empty = built in
        std::optional<quint32> seed; // simulated: default a seed from the clock
        QString capture;             // replay
        double speed = 1.0;          // replay
    };

    // Null with a message when the backend cannot be built. `notice` receives a line worth
    // telling the user even on success (for instance why auto fell back to the simulation).
    static std::shared_ptr<WirelessBackend> create(const Request &request, QString *errorText,
                                                   QString *notice = nullptr);
};

// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CommandLineOptions.h"

#include <gtest/gtest.h>

namespace {

// Whole runs with a bad value are checked from the outside (tests/sensor); these are the
// address forms one by one.
TEST(ServeOption, ParsesAddressesAndPorts)
{
    // text, address (nullptr: refused), port, why refused
    const std::tuple<const char *, const char *, int, const char *> rows[] = {
        {"9100", "127.0.0.1", 9100, nullptr},
        {"[::1]:9100", "::1", 9100, nullptr},
        {"65536", nullptr, 0, "is no port number"},
        {"+80", nullptr, 0, "is no port number"},
        {"host.example:9100", nullptr, 0, "is no IP address"},
        {"::1:9100", nullptr, 0, "in brackets"},
        {"[127.0.0.1]:9100", nullptr, 0, "is no IPv6 address"}};
    for (const auto &[text, wantedAddress, wantedPort, wantedWhy] : rows) {
        QString address, why;
        int port = -1;
        const bool ok =
            CommandLineOptions::parseServe(QString::fromUtf8(text), &address, &port, &why);
        EXPECT_EQ(ok, wantedAddress != nullptr) << text << ": " << why.toStdString();
        if (wantedAddress)
            EXPECT_EQ(std::make_pair(address, port),
                      std::make_pair(QString::fromLatin1(wantedAddress), wantedPort))
                << text;
        else
            EXPECT_TRUE(why.contains(QString::fromLatin1(wantedWhy))) << text;
    }
}

} // namespace

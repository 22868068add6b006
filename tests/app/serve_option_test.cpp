// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CommandLineOptions.h"

#include <gtest/gtest.h>

namespace {

TEST(ServeOption, ParsesAddressesAndPorts)
{
    // text, address (nullptr: refused), port, why refused
    const std::tuple<const char *, const char *, int, const char *> rows[] = {
        {"9100", "127.0.0.1", 9100, nullptr},
        {"0", "127.0.0.1", 0, nullptr},
        {"0.0.0.0:9100", "0.0.0.0", 9100, nullptr},
        {"192.168.1.20:80", "192.168.1.20", 80, nullptr},
        {"localhost:9100", "127.0.0.1", 9100, nullptr},
        {"[::1]:9100", "::1", 9100, nullptr},
        {"[::]:9100", "::", 9100, nullptr},
        {"", nullptr, 0, "is no port number"},
        {"65536", nullptr, 0, "is no port number"},
        {"-1", nullptr, 0, "is no port number"},
        {"+80", nullptr, 0, "is no port number"},
        {"0.0.0.0:", nullptr, 0, "is no port number"},
        {"host.example:9100", nullptr, 0, "is no IP address"},
        {"300.1.1.1:9100", nullptr, 0, "is no IP address"},
        {"::1:9100", nullptr, 0, "in brackets"},
        {"[::1]9100", nullptr, 0, "in brackets"},
        {"[127.0.0.1]:9100", nullptr, 0, "is no IPv6 address"}};
    for (const auto &[text, wantedAddress, wantedPort, wantedWhy] : rows) {
        QString address, why;
        int port = -1;
        const bool ok =
            CommandLineOptions::parseServe(QString::fromUtf8(text), &address, &port, &why);
        if (wantedAddress) {
            EXPECT_TRUE(ok) << text << ": " << why.toStdString();
            EXPECT_EQ(address, QString::fromLatin1(wantedAddress)) << text;
            EXPECT_EQ(port, wantedPort) << text;
        } else {
            EXPECT_FALSE(ok) << text;
            EXPECT_TRUE(why.contains(QString::fromLatin1(wantedWhy)))
                << text << ": " << why.toStdString();
        }
    }
}

TEST(ServeOption, WorksWithAndWithoutTheWindowAndExplainsMistakes)
{
    CommandLineOptions windowed;
    QString error;
    ASSERT_TRUE(windowed.parse({"corvane", "--serve", "9100"}, &error)) << error.toStdString();
    EXPECT_EQ(windowed.servePort, 9100);
    EXPECT_FALSE(windowed.headless);

    CommandLineOptions headless;
    ASSERT_TRUE(headless.parse({"corvane", "--headless", "--serve=[::]:0"}, &error));
    EXPECT_EQ(headless.serveAddress, "::");
    EXPECT_EQ(headless.servePort, 0);

    CommandLineOptions none;
    ASSERT_TRUE(none.parse({"corvane"}, &error));
    EXPECT_EQ(none.servePort, -1);

    CommandLineOptions bad;
    EXPECT_FALSE(bad.parse({"corvane", "--headless", "--serve", "nine"}, &error));
    EXPECT_EQ(error, "--serve takes [ADDRESS:]PORT, such as 9100, 0.0.0.0:9100 or [::1]:9100: "
                     "\"nine\" is no port number from 0 to 65535");
}

} // namespace

// SPDX-License-Identifier: GPL-3.0-or-later
#include "wireless/CWInterface.h"
#include "wireless/WirelessBackend.h"

#include <gtest/gtest.h>

TEST(CWInterface, MissingInterfaceAnswersZeroFalseOrNone)
{
    WirelessBackend::setCurrent(nullptr);
    EXPECT_TRUE(CWInterface::supportedInterfaces().isEmpty());
    EXPECT_EQ(CWInterface::interfaceWithName(QStringLiteral("wlan0")), nullptr);
    const CWInterface &none = CWInterface::null();
    EXPECT_FALSE(none.powerOn());
    EXPECT_FALSE(none.ssid().has_value());
    EXPECT_EQ(none.rssiValue(), 0);
    EXPECT_TRUE(none.supportedChannels().isEmpty());
    CWError error;
    CWInterface handle(nullptr, QStringLiteral("wlan0"));
    EXPECT_FALSE(handle.setPower(true, &error));
    EXPECT_FALSE(error.isNull());
    EXPECT_TRUE(handle.scanForNetworksWithParameters({}, &error).isEmpty());
    EXPECT_FALSE(error.localizedDescription().isEmpty());
}

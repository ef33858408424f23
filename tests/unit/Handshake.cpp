// SPDX-License-Identifier: Apache-2.0
#include "host/core/VInitialization.h"

#include "TestModules.h"

#include <gtest/gtest.h>

using krod::VInitialization;

TEST(Handshake, HostDate_isTheDateOfTheInterface) {
    EXPECT_STREQ(VInitialization::hostDate(), "2022_Feb_15");
}

TEST(Handshake, Verdict_dependsOnKeyAndDate) {
    EXPECT_EQ(VInitialization("2022_Feb_15").IsCompatible("KROD_API_VERSION"), 1);
    EXPECT_LT(VInitialization("2021_Feb_15").IsCompatible("KROD_API_VERSION"), 0);
    EXPECT_LT(VInitialization("").IsCompatible("KROD_API_VERSION"), 0);
    EXPECT_EQ(VInitialization("2022_Feb_15").IsCompatible("KROD_API_VERSIONS"), 0);
    EXPECT_EQ(VInitialization("2021_Feb_15").IsCompatible(""), 0);
    EXPECT_EQ(VInitialization("2022_Feb_15").IsCompatible(nullptr), 0);
}

TEST(Handshake, Notification_isTraced) {
    const TraceRecord record(100);
    EXPECT_EQ(VInitialization::initPlugin(1, "tovar_plime", "KROD_API_VERSION"), 0);
    EXPECT_EQ(record.text, "VInitialization::initPlugin(1,tovar_plime,KROD_API_VERSION)\n");
}

// SPDX-License-Identifier: Apache-2.0
// One mapping function serves the notifications of every operating system.
#include "plugin/LoadHook.h"

#include "workbench/core/Trace.h"

#include <gtest/gtest.h>

#include <string>

namespace {

/// What a notification makes the host hear.
std::string heard(unsigned notification) {
    std::string text;
    workbench::setTraceSink([&](int, std::string_view line) { text += line; });
    workbench::setTraceLevel(100);
    EXPECT_TRUE(krod::hook::notify(notification)) << "success is always reported";
    workbench::setTraceLevel(0);
    workbench::setTraceSink({});
    return text;
}

TEST(LoadHook, fourNotifications_areMappedToTheHostsReasons) {
    using namespace krod::hook;
    EXPECT_EQ(heard(ProcessAttach), "VInitialization::initPlugin(0,unit_kit,KROD_API_VERSION)\n");
    EXPECT_EQ(heard(ProcessDetach), "VInitialization::initPlugin(1,unit_kit,KROD_API_VERSION)\n");
    EXPECT_EQ(heard(ThreadAttach), "VInitialization::initPlugin(2,unit_kit,KROD_API_VERSION)\n");
    EXPECT_EQ(heard(ThreadDetach), "VInitialization::initPlugin(3,unit_kit,KROD_API_VERSION)\n");
}

TEST(LoadHook, anyOtherNotification_callsNothing) {
    EXPECT_EQ(heard(4), "");
    EXPECT_EQ(heard(~0u), "");
}

} // namespace

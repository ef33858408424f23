// SPDX-License-Identifier: Apache-2.0
// Libraries that come and go in several threads at once.
#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/InputCreatorRegistry.h"
#include "workbench/platform/SharedLibrary.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

TEST(Threads, Two_libraries_that_come_and_go_in_four_threads_leave_no_creator) {
    constexpr int Threads = 4, Rounds = 250;
    std::atomic<bool> go{false};
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < Threads; ++i)
            threads.emplace_back([&go, i] {
                go.wait(false);
                for (int round = 0; round < Rounds; ++round) {
                    workbench::SharedLibrary library((i + round) % 2 == 0 ? TOVAR_PLIME : LOAD_SAMPLE);
                    library.close();
                }
            });
        go = true;
        go.notify_all();
    }
    EXPECT_TRUE(workbench::CreatorRegistry::entries().empty());
    EXPECT_EQ(workbench::InputCreatorRegistry::count(), 0U);
    for (const char* path : {TOVAR_PLIME, LOAD_SAMPLE}) {
        workbench::SharedLibrary library(path);
        EXPECT_FALSE(workbench::CreatorRegistry::entries().empty());
        EXPECT_TRUE(library.close().unmapped) << path;
    }
}

// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/terminal/Interruption.h"

#include "workbench/report/Failure.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

#include <unistd.h>

namespace workbench {
namespace {

void sayCleaned() noexcept {
    const ssize_t written = ::write(2, "cleaned", 7);
    static_cast<void>(written);
}

/// Ends with 0 when the first signal only asked.
[[noreturn]] void signalOnce() {
    watchForInterruption(nullptr);
    if (interrupted()) std::_Exit(1);
    std::raise(SIGINT);
    try {
        throwIfInterrupted();
    } catch (const Failure& failure) {
        std::_Exit(interrupted() && failure.fault() == Fault::Interrupted ? 0 : 2);
    }
    std::_Exit(3);
}

[[noreturn]] void signalTwice() {
    watchForInterruption(sayCleaned);
    std::raise(SIGTERM);
    std::raise(SIGINT);
    std::_Exit(0);
}

[[noreturn]] void signalIgnored() {
    std::signal(SIGHUP, SIG_IGN);
    watchForInterruption(nullptr);
    std::raise(SIGHUP);
    std::_Exit(interrupted() ? 1 : 0);
}

TEST(Interruption, asks_the_work_to_end_at_the_first_signal) {
    EXPECT_EXIT(signalOnce(), testing::ExitedWithCode(0), "");
}

TEST(Interruption, cleans_up_and_ends_with_130_at_the_second_signal) {
    EXPECT_EXIT(signalTwice(), testing::ExitedWithCode(130), "cleaned");
}

TEST(Interruption, leaves_a_signal_ignored_that_the_caller_ignores) {
    EXPECT_EXIT(signalIgnored(), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace workbench

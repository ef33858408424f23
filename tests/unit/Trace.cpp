// SPDX-License-Identifier: Apache-2.0
#include "host/core/Vprintf.h"

#include "TestModules.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

using krod::Vprintf;

TEST(Trace, Levels_upToTheChosenOne_arePrinted) {
    const TraceRecord record(50);
    Vprintf(49, "a");
    Vprintf(50, "b%d", 1);
    Vprintf(51, "c");
    EXPECT_EQ(record.text, "ab1");
}

TEST(Trace, LevelZero_printsNothing) {
    const TraceRecord record(0);
    Vprintf(100, "a");
    Vprintf(0, "b");
    EXPECT_EQ(record.text, "");
}

TEST(Trace, Names_withPercentSigns_arePrintedAsTheyAre) {
    const TraceRecord record(100);
    Vprintf(100, "VCreator::create(%s)\n", "%n%s%99999999d");
    EXPECT_EQ(record.text, "VCreator::create(%n%s%99999999d)\n");
}

TEST(Trace, Text_ofAnyLength_isPrintedWhole) {
    TraceRecord record(100);
    for (const std::size_t length : {255u, 256u, 257u, 100000u}) {
        record.text.clear();
        Vprintf(100, "%s|", std::string(length, 'x').c_str());
        EXPECT_EQ(record.text, std::string(length, 'x') + '|');
    }
}

TEST(Trace, Sink_thatThrows_losesTheLineOnly) {
    TraceRecord record(100);
    workbench::setTraceSink([](int, std::string_view) { throw std::runtime_error("full"); });
    Vprintf(100, "lost");
    workbench::setTraceSink([&record](int level, std::string_view text) {
        record.text = std::to_string(level) + ": " + std::string(text);
    });
    Vprintf(7, "kept");
    EXPECT_EQ(record.text, "7: kept");
}

TEST(Trace, DefaultSink_isStandardError) {
    workbench::setTraceSink({});
    workbench::setTraceLevel(100);
    testing::internal::CaptureStderr();
    Vprintf(100, "create(%s)\n", "cmyk");
    workbench::setTraceLevel(0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "create(cmyk)\n");
}

TEST(Trace, Lines_ofSeveralThreads_stayWhole) {
    TraceRecord record(100);
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([] {
                for (int line = 0; line < 100; ++line) Vprintf(100, "%s\n", "abcdefgh");
            });
    }
    std::string expected;
    for (int line = 0; line < 400; ++line) expected += "abcdefgh\n";
    EXPECT_EQ(record.text, expected);
}

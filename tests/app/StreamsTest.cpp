// SPDX-License-Identifier: Apache-2.0
#include "tests/app/Program.h"

#include <gtest/gtest.h>

namespace {

TEST(Plime_output, to_a_full_disk_ends_with_4_and_says_so) {
    const Result result = run(Call{{"list"}, {}, Sink::Full});
    EXPECT_EQ(result.code, 4);
    EXPECT_EQ(result.error, "plime: error: standard output: the result cannot be written — "
                            "got No space left on device. Make room, or write to another place.\n");
}

TEST(Plime_output, to_a_reader_that_went_away_is_no_error) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"list"}, {"list", "--json"}, {"help"}, {"describe", "Display/CMYK"}}) {
        const Result result = run(Call{arguments, {}, Sink::Broken});
        EXPECT_EQ(result.code, 0);
        EXPECT_EQ(result.error, "");
    }
}

TEST(Plime_output, that_is_closed_counts_as_nowhere) {
    const Result result = run(Call{{"list", "-v"}, {}, Sink::Closed});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.error.find("Display/CMYK"), std::string::npos) << "results appear on standard error";
}

TEST(Plime_messages, to_a_closed_broken_or_full_standard_error_change_no_exit_code) {
    for (const Sink sink : {Sink::Closed, Sink::Broken, Sink::Full}) {
        EXPECT_EQ(run(Call{{"nonsense"}, {}, Sink::Captured, sink}).code, 2);
        EXPECT_EQ(run(Call{{"list", "--trace", "100"}, {}, Sink::Captured, sink}).code, 0);
    }
}

TEST(Plime_output, is_the_same_with_and_without_a_message_stream) {
    EXPECT_EQ(run(Call{{"list"}, {}, Sink::Captured, Sink::Closed}).output, run({"list"}).output);
}

} // namespace

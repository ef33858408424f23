// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/terminal/Numbers.h"

#include "tests/app/FakeModules.h"

#include <gtest/gtest.h>

namespace workbench {
namespace {

TEST(Byte_size, takes_units_of_1024) {
    EXPECT_EQ(byteSize("--memory", "1"), 1U);
    EXPECT_EQ(byteSize("--memory", "3K"), 3072U);
    EXPECT_EQ(byteSize("--memory", "700M"), 734003200U);
    EXPECT_EQ(byteSize("--memory", "17179869183G"), 17179869183ULL << 30U);
}

TEST(Byte_size, refuses_everything_else) {
    for (const char* const text : {"", "0", "M", "-1", "+1", " 1", "1 ", "1.5G", "1k", "1T", "1GB",
                                   "17179869184G", "18446744073709551616", "0x10"})
        EXPECT_EQ(failureOf([&] { static_cast<void>(byteSize("--memory", text)); }),
                  std::string("2 --memory: has a wrong value — expected a size such as 700M or 2G, got \"") +
                      text + "\".");
}

TEST(Whole_number, takes_both_ends_of_its_range_and_nothing_beyond) {
    EXPECT_EQ(wholeNumber("--tile", "16", 16, 64), 16);
    EXPECT_EQ(wholeNumber("--tile", "64", 16, 64), 64);
    for (const char* const text : {"15", "65", "", "x", "16x", "99999999999", "1e1"})
        EXPECT_NE(failureOf([&] { static_cast<void>(wholeNumber("--tile", text, 16, 64)); }), "") << text;
}

} // namespace
} // namespace workbench

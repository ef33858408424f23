// SPDX-License-Identifier: Apache-2.0
// What a catalogue row hands to the host.
#include "plugin/Registration.h"
#include "plugin/VSink.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

using namespace krod;

TEST(Row, texts_thatAreLeftOutStayUnset) {
    const VCreatorProperties record =
        merged({.category = "Display", .source = "PixelContours", .name = "PixelContours"});
    EXPECT_EQ(record.category, "Display");
    EXPECT_EQ(record.name, "PixelContours");
    EXPECT_EQ(record.source, "PixelContours");
    EXPECT_FALSE(record.group);
    EXPECT_FALSE(record.help);
    EXPECT_FALSE(record.description);
}

TEST(Row, texts_goIntoTheirOwnFields) {
    const VCreatorProperties record = merged({.category = "c",
                                              .source = "s",
                                              .name = "n",
                                              .group = "g",
                                              .help = "the long one",
                                              .description = "the short one"});
    EXPECT_EQ(record.help, "the long one");
    EXPECT_EQ(record.description, "the short one");
    EXPECT_EQ(record.group, "g");
    EXPECT_EQ(VCreatorPropertyBase::keyname(record, "/"), "c/n");
}

TEST(Sink, bothSpellings_addNothingToAModule) {
    struct A : VSink<A, void> {};
    struct B : VSink<double, B> {};
    EXPECT_TRUE(std::is_empty_v<A> && std::is_empty_v<B>);
}

} // namespace

// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/terminal/Suggest.h"

#include <gtest/gtest.h>

namespace workbench {
namespace {

TEST(Edit_distance, counts_insertions_deletions_replacements_and_swaps) {
    EXPECT_EQ(editDistance("", ""), 0U);
    EXPECT_EQ(editDistance("", "abc"), 3U);
    EXPECT_EQ(editDistance("width", "with"), 1U);
    EXPECT_EQ(editDistance("width", "windth"), 1U);
    EXPECT_EQ(editDistance("width", "wodth"), 1U);
    EXPECT_EQ(editDistance("width", "wdith"), 1U);
    EXPECT_EQ(editDistance("kitten", "sitting"), 3U);
}

TEST(Edit_distance, takes_letters_of_either_case_as_equal) { EXPECT_EQ(editDistance("CMYK", "cmyk"), 0U); }

TEST(Nearest, finds_what_was_meant) {
    const std::vector<std::string> keys = {"Display/Blurred", "Display/CMYK", "Hollywood/PixelBlur"};
    EXPECT_EQ(nearest("Display/CMKY", keys), "Display/CMYK");
    EXPECT_EQ(nearest("cmyk", keys), "Display/CMYK");
    EXPECT_EQ(nearest("PixelBlurr", keys), "Hollywood/PixelBlur");
}

TEST(Nearest, finds_nothing_where_nothing_is_near) {
    EXPECT_EQ(nearest("Sepia", {"Display/Blurred", "Display/CMYK"}), std::nullopt);
    EXPECT_EQ(nearest("-x", {"-q"}), std::nullopt);
    EXPECT_EQ(nearest("", {"a"}), std::nullopt);
    EXPECT_EQ(nearest(std::string(1000, 'a'), {std::string(1000, 'a')}), std::nullopt);
}

TEST(Nearest, prefers_the_first_of_equally_near_ones) {
    EXPECT_EQ(nearest("gain", {"gaiN", "Gain"}), "gaiN");
}

TEST(Did_you_mean, is_a_question_or_the_other_advice) {
    EXPECT_EQ(didYouMean("lst", {"list"}, "See help"), "Did you mean \"list\"?");
    EXPECT_EQ(didYouMean("xyz", {"list"}, "See help"), "See help");
}

} // namespace
} // namespace workbench

// SPDX-License-Identifier: Apache-2.0
#include "host/values/VValueTrait.h"

#include <gtest/gtest.h>

using namespace krod;

namespace {

/// The state that the list gives to a flag, or the given one when it does not list it.
bool stateOf(const FlagList& list, const char* name, bool otherwise) {
    bool state = otherwise;
    list(name, state);
    return state;
}

TextResult read(FlagList& list, const char* text) {
    return VValueTrait<FlagList>::setValueFromText(list, text);
}

} // namespace

TEST(FlagList, Text_withSigns_listsFlagsOnAndOff) {
    const FlagList list("-glow +halo", ' ');
    ASSERT_EQ(list.flags().size(), 2u);
    EXPECT_FALSE(stateOf(list, "glow", true));
    EXPECT_TRUE(stateOf(list, "halo", false));
    EXPECT_EQ(list.flags()[0].name, "glow");
}

TEST(FlagList, Flag_notListed_leavesTheState) {
    const FlagList list("+1 +2 +3", ' ');
    bool state = true;
    EXPECT_TRUE(list("2", state));
    EXPECT_FALSE(list("4", state));
    EXPECT_TRUE(state);
    state = false;
    EXPECT_FALSE(list("4", state));
    EXPECT_FALSE(state);
}

TEST(FlagList, Tokens_withoutSignOrName_areLeftOut) {
    const FlagList list("  glow + -halo -  ", ' ');
    ASSERT_EQ(list.flags().size(), 1u);
    EXPECT_EQ(list.flags()[0].name, "halo");
}

TEST(FlagList, Name_listedTwice_laterStateHoldsInFirstPlace) {
    const FlagList list("-a +b +a", ' ');
    ASSERT_EQ(list.flags().size(), 2u);
    EXPECT_EQ(VValueTrait<FlagList>::Text(list), "+a +b");
}

TEST(FlagList, Separator_other_isUsed) {
    EXPECT_EQ(FlagList("+a,-b", ','), FlagList("+a -b", ' '));
    EXPECT_TRUE(FlagList("", ',').flags().empty());
}

TEST(FlagListText, List_writtenAndRead_isTheSame) {
    for (const char* text : {"", "-glow", "-glow -halo", "+1 +2 +3", "+--x -+y"}) {
        FlagList list("+old", ' ');
        EXPECT_TRUE(read(list, text)) << text;
        EXPECT_EQ(VValueTrait<FlagList>::Text(list), text);
    }
}

TEST(FlagListText, Blanks_ofAnyKindAndNumber_separate) {
    FlagList list;
    EXPECT_TRUE(read(list, " \t+a  \n-b "));
    EXPECT_EQ(VValueTrait<FlagList>::Text(list), "+a -b");
}

TEST(FlagListText, Token_thatIsNoFlag_isRefusedAndListKept) {
    for (const char* text : {"glow", "+a b", "+", "+a -", "+a +a", "-a +a"}) {
        FlagList list("+old", ' ');
        const TextResult result = read(list, text);
        EXPECT_FALSE(result) << text;
        EXPECT_EQ(result.expected, "flags like +name -name with a blank between them, each name once");
        EXPECT_EQ(VValueTrait<FlagList>::Text(list), "+old") << text;
    }
}

TEST(FlagListText, OfOneMebibyte_isReadAndWritten) {
    const std::string longName = '+' + std::string((1U << 20U) - 1, 'x');
    FlagList list;
    EXPECT_TRUE(VValueTrait<FlagList>::setValueFromText(list, longName));
    EXPECT_EQ(VValueTrait<FlagList>::Text(list), longName);
    EXPECT_TRUE(VValueTrait<FlagList>::setValueFromText(list, std::string(1U << 20U, ' ') + "-a"));
    EXPECT_EQ(VValueTrait<FlagList>::Text(list), "-a");
}

TEST(FlagListText, OfManyFlags_takesLinearTime) {
    std::string text;
    for (int i = 0; text.size() < (1U << 20U); ++i) text += (i ? " +" : "+") + VValueTrait<int>::Text(i);
    FlagList list;
    EXPECT_TRUE(VValueTrait<FlagList>::setValueFromText(list, text));
    EXPECT_EQ(VValueTrait<FlagList>::Text(list), text);
    bool state = false;
    EXPECT_TRUE(list("0", state) && state);
}

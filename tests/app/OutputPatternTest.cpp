// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/OutputPattern.h"

#include "tests/app/FakeModules.h"

#include <gtest/gtest.h>

namespace workbench {
namespace {

std::string outputOf(const std::string& pattern, const std::string& input) {
    return OutputPattern(pattern).outputFor(input);
}

std::string refusalOf(const std::vector<std::string>& inputs, const std::string& pattern) {
    return failureOf([&] { static_cast<void>(planOutputs(inputs, OutputPattern(pattern))); });
}

TEST(Output_pattern, puts_in_stem_and_extension_as_often_as_they_stand) {
    EXPECT_EQ(outputOf("out/{stem}_tm.{ext}", "in/sky.v2.EXR"), "out/sky.v2_tm.EXR");
    EXPECT_EQ(outputOf("{stem}/{stem}.png", "a.exr"), "a/a.png");
    EXPECT_EQ(outputOf("{stem}{ext}", "folder.x/name"), "name");
    EXPECT_EQ(outputOf("plain.png", "a.exr"), "plain.png");
}

TEST(Output_pattern, takes_other_braces_literally) {
    for (const std::string text : {"{", "}", "{}", "{1}.png", "{ stem }", "{{x1}}", "a{stem", "}{"})
        EXPECT_EQ(outputOf(text, "a.exr"), text);
    EXPECT_EQ(outputOf("{{stem}}.png", "a.exr"), "{a}.png");
    EXPECT_EQ(outputOf("{stem}.png", "{ext}{name}.exr"), "{ext}{name}.png") << "names are no patterns";
}

TEST(Output_pattern, refuses_an_unknown_placeholder_with_the_known_ones) {
    EXPECT_EQ(
        failureOf([] { OutputPattern("{name}.png"); }),
        "2 -o: has an unknown placeholder — expected {stem}, the name of the input without its extension, "
        "or {ext}, its extension, got {name}.");
    const std::string said = failureOf([] { OutputPattern("{stem}/{Ext}"); });
    EXPECT_TRUE(said.ends_with(", got {Ext}.")) << said;
}

TEST(Output_pattern, refuses_two_inputs_for_one_output) {
    EXPECT_EQ(
        refusalOf({"a.exr", "b.exr"}, "c.exr"),
        "2 c.exr: would be written from two pictures, a.exr and b.exr — got -o c.exr. Give every picture "
        "a name of its own, like -o out/{stem}.exr.");
    EXPECT_EQ(refusalOf({"x/a.exr", "y/b.exr", "z/./a.exr"}, "o/{stem}.exr"),
              "2 o/a.exr: would be written from two pictures, x/a.exr and z/./a.exr — got -o o/{stem}.exr. "
              "Process pictures of one name in separate runs, or tell them apart by {ext}.");
    EXPECT_EQ(refusalOf({"a.exr", "b.exr", "./a.exr"}, "o/{stem}.exr"),
              "2 ./a.exr: is named twice — expected every picture once.");
    EXPECT_EQ(refusalOf({"a.exr", ""}, "o/{stem}.exr"),
              "2 process: has an input without a name — expected the path of a picture, got \"\".");
}

TEST(Output_pattern, refuses_an_output_that_is_an_input) {
    EXPECT_EQ(
        refusalOf({"a.exr", "./b.exr"}, "{stem}.{ext}"),
        "2 a.exr: would be written from a.exr and is the input a.exr — got -o {stem}.{ext}. Choose another "
        "folder or name, like -o out/{stem}.exr.");
    EXPECT_EQ(refusalOf({"a.exr", "x/../a_a.exr"}, "{stem}_a.exr"),
              "2 a_a.exr: would be written from a.exr and is the input x/../a_a.exr — got -o {stem}_a.exr. "
              "Choose another folder or name, like -o out/{stem}.exr.");
}

TEST(Output_pattern, lets_one_picture_without_placeholder_take_its_own_place) {
    EXPECT_EQ(planOutputs({"a.exr"}, OutputPattern("a.exr")).size(), 1U);
}

} // namespace
} // namespace workbench

// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/pictures/OutputPattern.h"

#include "tests/app/FakeModules.h"

#include <gtest/gtest.h>

namespace workbench {
namespace {

std::string outputOf(const std::string& pattern, const std::string& input) {
    return OutputPattern(pattern).outputFor(input);
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

TEST(Output_pattern, refuses_an_input_without_a_name) {
    EXPECT_EQ(failureOf([] {
                  static_cast<void>(planOutputs({"a.exr", ""}, OutputPattern("o/{stem}.exr")));
              }),
              "2 process: has an input without a name — expected the path of a picture, got \"\".");
}

} // namespace
} // namespace workbench

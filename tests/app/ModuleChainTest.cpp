// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/modules/ModuleChain.h"

#include "tests/app/FakeModules.h"

#include <gtest/gtest.h>

namespace workbench {
namespace {

constexpr ModuleGroups Rendering = {false, true, true};
constexpr ModuleGroups OwnOnly = {true, false, false};
constexpr ModuleGroups TilesOnly = {false, false, true};

std::string textOf(const ModuleRequest& request) {
    std::string text = request.key;
    for (const ParameterSetting& setting : request.settings) text += ' ' + setting.name + '=' + setting.text;
    for (const std::string& name : request.unset) text += " !" + name;
    return text;
}

std::string failure(std::vector<std::string> arguments, const ModuleGroups& groups) {
    return failureOf([&] { static_cast<void>(takeModuleChain(arguments, groups)); });
}

TEST(Module_chain, gives_settings_to_the_module_before_them_and_leaves_the_rest_in_order) {
    std::vector<std::string> arguments = {"in.obj", "--display", "A",       "-p",        "x=1", "-p",
                                          "y=2",    "-o",        "out.png", "--display", "B@S", "--with",
                                          "T",      "-p",        "z=3",     "--size",    "8x8"};
    const ModuleChain chain = takeModuleChain(arguments, Rendering);
    ASSERT_EQ(chain.displays.size(), 2U);
    ASSERT_EQ(chain.tiles.size(), 1U);
    EXPECT_EQ(textOf(chain.displays[0]), "A x=1 y=2");
    EXPECT_EQ(textOf(chain.displays[1]), "B@S");
    EXPECT_EQ(textOf(chain.tiles[0]), "T z=3");
    EXPECT_EQ(arguments, (std::vector<std::string>{"in.obj", "-o", "out.png", "--size", "8x8"}));
    EXPECT_FALSE(chain.unchecked);
}

TEST(Module_chain, keeps_the_right_module_open_when_displays_and_tiles_alternate) {
    std::vector<std::string> arguments = {"--with", "T",   "--display", "A", "--with", "U",
                                          "-p",     "a=1", "--display", "B", "-p",     "b=2"};
    const ModuleChain chain = takeModuleChain(arguments, Rendering);
    EXPECT_EQ(textOf(chain.tiles.at(0)), "T");
    EXPECT_EQ(textOf(chain.tiles.at(1)), "U a=1");
    EXPECT_EQ(textOf(chain.displays.at(0)), "A");
    EXPECT_EQ(textOf(chain.displays.at(1)), "B b=2");
}

TEST(Module_chain, reads_attached_values) {
    std::vector<std::string> arguments = {"--display=A", "-px=1", "--with=T", "--unset=y"};
    const ModuleChain chain = takeModuleChain(arguments, Rendering);
    EXPECT_EQ(textOf(chain.displays.at(0)), "A x=1");
    EXPECT_EQ(textOf(chain.tiles.at(0)), "T !y");
    EXPECT_TRUE(arguments.empty());
}

TEST(Module_chain, splits_a_setting_at_its_first_sign_and_takes_empty_values) {
    std::vector<std::string> arguments = {"-p", "code=a = b;", "-p", "options="};
    const ModuleChain chain = takeModuleChain(arguments, OwnOnly);
    EXPECT_EQ(chain.own.settings.at(0).text, "a = b;");
    EXPECT_EQ(chain.own.settings.at(1).name, "options");
    EXPECT_EQ(chain.own.settings.at(1).text, "");
}

TEST(Module_chain, takes_a_negative_value_and_a_flag_as_values) {
    std::vector<std::string> arguments = {"-p", "gamma=-0.5", "-p", "options=-glow"};
    EXPECT_EQ(textOf(takeModuleChain(arguments, OwnOnly).own), " gamma=-0.5 options=-glow");
}

TEST(Module_chain, belongs_to_the_commands_own_module_before_the_first_group) {
    std::vector<std::string> arguments = {"Display/CMYK", "-p",      "samples=4",
                                          "--unset",      "options", "--unchecked"};
    const ModuleChain chain = takeModuleChain(arguments, OwnOnly);
    EXPECT_EQ(textOf(chain.own), " samples=4 !options");
    EXPECT_TRUE(chain.unchecked);
    EXPECT_EQ(arguments, std::vector<std::string>{"Display/CMYK"});
}

TEST(Module_chain, leaves_groups_that_the_command_does_not_take) {
    std::vector<std::string> arguments = {"--display", "A", "--with", "T"};
    EXPECT_EQ(takeModuleChain(arguments, TilesOnly).tiles.size(), 1U);
    EXPECT_EQ(arguments, (std::vector<std::string>{"--display", "A"}));
}

TEST(Module_chain, ends_at_two_dashes) {
    std::vector<std::string> arguments = {"--with", "T", "--", "-p", "x"};
    EXPECT_EQ(textOf(takeModuleChain(arguments, TilesOnly).tiles.at(0)), "T");
    EXPECT_EQ(arguments, (std::vector<std::string>{"--", "-p", "x"}));
}

TEST(Module_chain, leaves_longer_options_that_only_begin_alike) {
    std::vector<std::string> arguments = {"--displays", "--without=x", "--plugin", "a.so"};
    const std::vector<std::string> before = arguments;
    static_cast<void>(takeModuleChain(arguments, Rendering));
    EXPECT_EQ(arguments, before);
}

TEST(Module_chain, refuses_a_setting_that_belongs_to_no_module) {
    EXPECT_EQ(failure({"-p", "x=1", "--display", "A"}, Rendering),
              "2 -p: belongs to no module — expected --display or --with before it, got nothing.");
    EXPECT_EQ(failure({"--unset", "x"}, TilesOnly),
              "2 --unset: belongs to no module — expected --with before it, got nothing.");
}

TEST(Module_chain, refuses_what_is_no_setting) {
    EXPECT_EQ(failure({"-p", "x"}, OwnOnly), "2 -p: is no setting — expected NAME=VALUE, got \"x\".");
    EXPECT_EQ(failure({"-p", "=1"}, OwnOnly), "2 -p: is no setting — expected NAME=VALUE, got \"=1\".");
}

TEST(Module_chain, refuses_a_second_value_of_one_parameter) {
    EXPECT_EQ(failure({"--with", "A", "-p", "x=1", "-p", "y=1", "-p", "x=2"}, TilesOnly),
              "2 -p: sets \"x\" of A twice — expected one value, got \"1\" and \"2\".");
    EXPECT_EQ(failure({"-p", "x=1", "-p", "x=1"}, OwnOnly),
              "2 -p: sets \"x\" twice — expected one value, got \"1\" and \"1\".");
    std::vector<std::string> twoModules = {"--with", "A", "-p", "x=1", "--with", "A", "-p", "x=2"};
    EXPECT_EQ(takeModuleChain(twoModules, TilesOnly).tiles.size(), 2U);
}

TEST(Module_chain, quotes_long_values_shortly) {
    const std::string program(100000, 'x');
    EXPECT_LT(failure({"-p", "code=" + program, "-p", "code=" + program}, OwnOnly).size(), 200U);
}

TEST(Module_chain, refuses_missing_values) {
    EXPECT_EQ(failure({"-p"}, OwnOnly), "2 -p: has no value — expected NAME=VALUE, got nothing.");
    EXPECT_EQ(failure({"--unset"}, OwnOnly), "2 --unset: has no value — expected NAME, got nothing.");
    EXPECT_EQ(failure({"--with"}, Rendering), "2 --with: has no value — expected KEY, got nothing.");
    EXPECT_EQ(failure({"--display", ""}, Rendering),
              "2 --display: names no module — expected KEY, got \"\".");
}

} // namespace
} // namespace workbench

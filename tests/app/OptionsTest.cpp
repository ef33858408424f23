// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/commandline/Options.h"

#include "tests/app/FakeModules.h"

#include <gtest/gtest.h>

namespace workbench {
namespace {

/// A command with an argument of every kind.
class PaintCommand : public Command {
public:
    [[nodiscard]] std::string_view name() const noexcept override { return "paint"; }
    [[nodiscard]] std::string_view purpose() const noexcept override { return "paint"; }
    [[nodiscard]] std::string_view help() const noexcept override { return "paint"; }
    [[nodiscard]] Syntax syntax() override {
        return {{{"--wet", &wet}, {"-o,--output", &output}, {"--brush", &brushes}},
                {{"WALL", &wall}, {"COLOUR", &colours}},
                &modules,
                {false, true, true}};
    }
    int run(Session&) override { return 0; }

    bool wet = false;
    std::optional<std::string> output;
    std::vector<std::string> brushes, colours;
    std::string wall;
    ModuleChain modules;
};

class Options : public testing::Test {
protected:
    Options() {
        auto owned = std::make_unique<PaintCommand>();
        paint = owned.get();
        commands.push_back(std::move(owned));
    }
    std::string failure(const std::vector<std::string>& arguments) {
        return failureOf([&] { static_cast<void>(parseArguments(arguments, commands)); });
    }

    Commands commands;
    PaintCommand* paint;
};

TEST_F(Options, reach_the_targets_of_the_command) {
    const Invocation invocation =
        parseArguments({"paint", "north", "--wet", "red", "-o", "a.png", "--brush", "fine", "blue",
                        "--brush=-1,2", "--display", "A", "-p", "x=1"},
                       commands);
    EXPECT_EQ(invocation.command, paint);
    EXPECT_TRUE(paint->wet);
    EXPECT_EQ(paint->output, "a.png");
    EXPECT_EQ(paint->brushes, (std::vector<std::string>{"fine", "-1,2"}));
    EXPECT_EQ(paint->wall, "north");
    EXPECT_EQ(paint->colours, (std::vector<std::string>{"red", "blue"}));
    EXPECT_EQ(paint->modules.displays.at(0).settings.at(0).text, "1");
}

TEST_F(Options, with_one_letter_may_have_an_equal_sign_before_their_value) {
    const auto output = [&](const std::vector<std::string>& words) {
        static_cast<void>(parseArguments(words, commands));
        return paint->output;
    };
    EXPECT_EQ(output({"paint", "n", "r", "-o=a.png"}), "a.png");
    EXPECT_EQ(output({"paint", "n", "r", "-o=-x=1"}), "-x=1");
    EXPECT_EQ(output({"paint", "n", "-o=", "r"}), "");
    EXPECT_EQ(output({"paint", "n", "r", "-o", "=b"}), "=b");
}

TEST_F(Options, for_all_commands_stand_before_or_after_the_command) {
    const auto check = [&](const std::vector<std::string>& arguments) {
        const Invocation invocation = parseArguments(arguments, commands);
        EXPECT_EQ(invocation.global.plugins, (std::vector<std::string>{"a.so", "paint"}));
        EXPECT_EQ(invocation.global.gpu.kind, GpuChoice::Kind::Software);
        EXPECT_EQ(invocation.global.memory, 2ULL << 30U);
        EXPECT_EQ(invocation.global.traceLevel, 100);
        EXPECT_TRUE(invocation.global.quiet && invocation.global.noClobber && invocation.global.strictGlsl);
        EXPECT_EQ(invocation.global.colour, Colour::Never);
        EXPECT_EQ(invocation.global.shaderFolders, std::vector<std::string>{"s"});
    };
    const std::vector<std::string> globals = {
        "--plugin", "a.so",         "--plugin",      "paint",        "--gpu", "software",
        "--memory", "2G",           "--trace",       "100",          "-q",    "--color",
        "never",    "--no-clobber", "--strict-glsl", "--shader-dir", "s"};
    std::vector<std::string> before = globals;
    before.insert(before.end(), {"paint", "north", "red"});
    check(before);
    std::vector<std::string> after = {"paint", "north", "red"};
    after.insert(after.end(), globals.begin(), globals.end());
    check(after);
}

TEST_F(Options, have_defaults) {
    const Invocation invocation = parseArguments({"paint", "north", "red"}, commands);
    EXPECT_EQ(invocation.global.memory, 700ULL << 20U);
    EXPECT_EQ(invocation.global.gpu.kind, GpuChoice::Kind::Automatic);
    EXPECT_EQ(invocation.global.traceLevel, 0);
    EXPECT_EQ(invocation.global.colour, Colour::Auto);
    EXPECT_FALSE(paint->output);
}

TEST_F(Options, ask_for_help_whatever_else_is_wrong) {
    EXPECT_TRUE(parseArguments({"paint", "--help"}, commands).help);
    EXPECT_TRUE(parseArguments({"paint", "-h", "--gpu", "9x"}, commands).help);
    EXPECT_EQ(parseArguments({"--help"}, commands).command, nullptr);
    EXPECT_TRUE(parseArguments({"--version"}, commands).version);
}

TEST_F(Options, suggest_commands_and_options) {
    EXPECT_EQ(failure({"piant"}), "2 piant: is not a command. Did you mean \"paint\"?");
    EXPECT_EQ(failure({"xyzzy"}), "2 xyzzy: is not a command. See \"plime help\".");
    EXPECT_EQ(failure({"paint", "--brsh", "x"}),
              "2 --brsh: is not an option of \"plime paint\". Did you mean \"--brush\"?");
    EXPECT_EQ(failure({"paint", "--dispaly=A"}),
              "2 --dispaly: is not an option of \"plime paint\". Did you mean \"--display\"?");
    EXPECT_EQ(failure({"-o", "a", "paint", "n", "r"}),
              "2 -o: belongs behind the command paint. See \"plime help paint\".");
    EXPECT_EQ(failure({"-o", "a", "piant"}), "2 a: is not a command. See \"plime help\".");
    EXPECT_EQ(failure({"--memroy", "1"}), "2 1: is not a command. See \"plime help\".");
    EXPECT_EQ(failure({"paint", "-x"}),
              "2 -x: is not an option of \"plime paint\". See \"plime help paint\".");
}

TEST_F(Options, say_what_is_missing_or_too_much) {
    EXPECT_EQ(failure({}), "2 no command is given. See \"plime help\".");
    EXPECT_EQ(failure({"paint"}), "2 plime paint: WALL is missing. See \"plime help paint\".");
    EXPECT_EQ(failure({"paint", "north"}), "2 plime paint: COLOUR is missing. See \"plime help paint\".");
    EXPECT_EQ(failure({"paint", "n", "r", "--output"}),
              "2 -o,--output: has no value. See \"plime help paint\".");
    EXPECT_EQ(failure({"paint", "n", "r", "--wet=1"}), "2 --wet: takes no value. See \"plime help paint\".");
    EXPECT_EQ(failure({"paint", "n", "r", "-o", "a", "-o", "b"}),
              "2 -o,--output: is given more than once. See \"plime help paint\".");
    EXPECT_EQ(failure({"paint", "n", "r", "-q", "-v"}), "2 -q: contradicts -v. Give one of them.");
}

TEST_F(Options, refuse_wrong_values) {
    EXPECT_EQ(failure({"paint", "n", "r", "--color", "red"}),
              "2 --color: has a wrong value — expected auto, always or never, got \"red\".");
    EXPECT_EQ(failure({"paint", "n", "r", "--trace", "-1"}),
              "2 --trace: has a wrong value — expected a whole number from 0 to 2147483647, got \"-1\".");
}

} // namespace
} // namespace workbench

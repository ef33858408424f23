// SPDX-License-Identifier: Apache-2.0
#include "tests/app/Program.h"

#include <gtest/gtest.h>

#include <regex>

namespace {

/// Expects a usage error with this sentence, and nothing on standard output.
void expectUsageError(const std::vector<std::string>& arguments, const std::string& sentence) {
    const Result result = run(arguments);
    EXPECT_EQ(result.code, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.error, "plime: error: " + sentence + '\n');
}

TEST(Plime, without_a_command_says_where_help_is) {
    expectUsageError({}, "no command is given. See \"plime help\".");
}

TEST(Plime, suggests_commands_options_and_topics) {
    expectUsageError({"lits"}, "lits: is not a command. Did you mean \"list\"?");
    expectUsageError({"list", "--jsn"},
                     "--jsn: is not an option of \"plime list\". Did you mean \"--json\"?");
    expectUsageError({"list", "--pluign=x"},
                     "--pluign: is not an option of \"plime list\". Did you mean \"--plugin\"?");
    expectUsageError({"help", "desribe"},
                     "desribe: is neither a command, nor the key of a module, nor a subject. Did you mean \"describe\"?");
}

TEST(Plime, refuses_words_values_and_settings_that_do_not_belong) {
    expectUsageError({"list", "all"}, "\"all\": is one word too many. See \"plime help list\".");
    expectUsageError({"describe"}, "plime describe: KEY[@SOURCE] is missing. See \"plime help describe\".");
    expectUsageError({"list", "-p", "a=1"},
                     "-p: is not an option of \"plime list\". See \"plime help list\".");
    expectUsageError({"list", "--memory", "much"},
                     "--memory: has a wrong value — expected a size such as 700M or 2G, got \"much\".");
    expectUsageError({"list", "--color", "red"},
                     "--color: has a wrong value — expected auto, always or never, got \"red\".");
    expectUsageError({"list", "--json=yes"}, "--json: takes no value. See \"plime help list\".");
    expectUsageError(
        {"doctor", "--gpu", "-1"},
        "--gpu: does not name a device — expected auto, software, a device number or a part of a "
        "device's name, got \"-1\". See the devices with: plime doctor.");
}

TEST(Plime, shows_control_characters_of_arguments_escaped) {
    expectUsageError({"\x1b[2Jlist\n"}, "\\x1b[2Jlist\\n: is not a command. See \"plime help\".");
}

TEST(Plime_version, names_the_program_and_the_host_interface) {
    const Result result = run({"--version"});
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(std::regex_match(result.output,
                                 std::regex("plime \\d+\\.\\d+\\.\\d+ \\(host interface 2022_Feb_15\\)\n")))
        << result.output;
}

TEST(Plime_help, lists_every_command_and_each_has_a_help_with_examples) {
    const Result program = run({"help"});
    EXPECT_EQ(program.code, 0);
    EXPECT_EQ(run({"--help"}).output, program.output);
    for (const std::string command : {"list", "describe", "shader", "render", "process", "doctor", "help"}) {
        EXPECT_NE(program.output.find("\n  " + command + ' '), std::string::npos) << command;
        const Result help = run({"help", command});
        EXPECT_EQ(help.code, 0);
        EXPECT_TRUE(help.output.starts_with("Usage: plime " + command)) << help.output;
        EXPECT_NE(help.output.find("\nExamples:\n  plime "), std::string::npos) << help.output;
        EXPECT_EQ(run({command, "--help"}).output, help.output);
        EXPECT_EQ(run({"-h", command}).output, help.output);
    }
}

TEST(Plime_help, fits_a_terminal_of_80_columns) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"help"},
                                                      {"help", "list"},
                                                      {"help", "describe"},
                                                      {"help", "shader"},
                                                      {"help", "render"},
                                                      {"help", "process"},
                                                      {"help", "doctor"}}) {
        const std::string text = run(arguments).output;
        EXPECT_FALSE(std::regex_search(text, std::regex("[^\n]{84}"))) << text; // bytes: "…" has three
    }
}

TEST(Plime_trace, goes_to_standard_error_up_to_its_level) {
    const Result result = run({"list", "--trace", "100"});
    EXPECT_NE(result.error.find("VCreator::VCreator(Display/CMYK,0)\n"), std::string::npos) << result.error;
    EXPECT_EQ(result.output.find("VCreator::VCreator"), std::string::npos);
    EXPECT_EQ(run({"list", "--trace", "99"}).error, "");
}

TEST(Plime_verbose, names_the_plugins_that_are_loaded) {
    const Result result = run({"-v", "list"});
    EXPECT_NE(result.error.find("plime: " TOVAR_PLIME " is loaded as \"tovar_plime\".\n"), std::string::npos)
        << result.error;
}

TEST(Plime_messages, are_coloured_on_a_terminal_unless_refused) {
    const std::string red = "\x1b[1;31merror: \x1b[0m";
    const auto errorOf = [](const std::vector<std::string>& more,
                            const std::map<std::string, std::string>& variables, Sink sink) {
        std::vector<std::string> arguments = {"describe", "none"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run(Call{arguments, variables, Sink::Captured, sink}).error;
    };
    EXPECT_NE(errorOf({}, {}, Sink::Terminal).find(red), std::string::npos);
    EXPECT_EQ(errorOf({}, {{"NO_COLOR", "1"}}, Sink::Terminal).find('\x1b'), std::string::npos);
    EXPECT_EQ(errorOf({}, {{"TERM", "dumb"}}, Sink::Terminal).find('\x1b'), std::string::npos);
    EXPECT_EQ(errorOf({"--color", "never"}, {}, Sink::Terminal).find('\x1b'), std::string::npos);
    EXPECT_EQ(errorOf({}, {}, Sink::Captured).find('\x1b'), std::string::npos);
    EXPECT_NE(errorOf({"--color=always"}, {{"NO_COLOR", "1"}}, Sink::Captured).find(red), std::string::npos);
}

} // namespace

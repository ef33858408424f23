// SPDX-License-Identifier: Apache-2.0
// The command itself: its exit codes, its lists, and files that are no plug-ins.
#include "tests/platform/TemporaryFolder.h"
#include "tests/validate/Validation.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>

#include <sys/stat.h>

namespace {

using Names = std::vector<std::string>;

Names findings(const Validation& validation) { return validation.with({"fail", "crash", "timeout"}); }

} // namespace

TEST(ValidateCommand, List_names_every_check_with_its_level) {
    const Result result = run({"validate", "--list", "--json"});
    ASSERT_EQ(result.code, 0) << result.error;
    const auto list = nlohmann::json::parse(result.output);
    EXPECT_GT(list.size(), 50U);
    int level = 1;
    for (const auto& check : list) {
        EXPECT_GE(check.at("level"), level) << check;
        level = check.at("level");
        EXPECT_FALSE(check.at("sentence").get<std::string>().empty());
    }
    EXPECT_EQ(level, 10);
    EXPECT_NE(run({"validate", "--list"}).output.find("catalogue"), std::string::npos);
}

TEST(ValidateCommand, Usage_errors_end_with_2) {
    EXPECT_EQ(run({"validate"}).code, 2);
    EXPECT_EQ(run({"validate", "/nowhere/plugin.so"}).code, 2);
    EXPECT_EQ(run({"validate", TOVAR_PLIME, "--level", "11"}).code, 2);
    EXPECT_EQ(run({"validate", TOVAR_PLIME, "--reproduce", "nothing:1"}).code, 2);
    EXPECT_EQ(run({"validate", TOVAR_PLIME, "--reproduce", "update:one"}).code, 2);
    EXPECT_EQ(run({"validate", TOVAR_PLIME, "--reproduce", "catalogue:1"}).code, 2);
}

TEST(ValidateCommand, Expectation_of_another_form_ends_with_3) {
    EXPECT_EQ(run({"validate", TOVAR_PLIME, "--expect", TOVAR_PLIME}).code, 3);
}

TEST(ValidateCommand, Expectation_that_cannot_be_read_ends_with_one_sentence) {
    const TemporaryFolder folder;
    const std::string pipe = folder.path("pipe.json"), large = folder.file("large.json", {});
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::filesystem::resize_file(large, (std::uintmax_t{16} << 20U) + 1);
    const std::string irregular = "something that is no regular file";
    const std::map<std::string, std::string> sentences = {{pipe, irregular},
                                                          {folder.path(""), irregular},
                                                          {"/dev/zero", irregular},
                                                          {large, "a larger one"},
                                                          {"/nowhere.json", "No such file or directory"}};
    for (const auto& [file, got] : sentences)
        for (const Names& more : {Names{}, Names{"--record"}}) {
            Names words = {"validate", TOVAR_PLIME, "--expect", file};
            words.insert(words.end(), more.begin(), more.end());
            const Result result = run(words);
            EXPECT_EQ(result.code, 3) << file;
            EXPECT_EQ(result.output, "");
            EXPECT_EQ(result.error, "plime: error: " + file +
                                        ": cannot be read — expected a text file of at most 16 MiB, got " +
                                        got + ".\n");
        }
}

TEST(ValidateCommand, Files_that_are_no_library_are_a_finding) {
    for (const std::string file :
         {BROKEN_FOLDER "/text.so", BROKEN_FOLDER "/truncated.so", "/dev/null", "/tmp"}) {
        const Validation found = validation(file);
        EXPECT_EQ(found.code, 1) << file;
        EXPECT_EQ(findings(found), Names{"file"}) << file << found.findings();
    }
}

TEST(ValidateCommand, Broken_libraries_are_found_by_the_check_in_charge) {
    const std::map<std::string, std::string> owners = {{"no_entry", "entry"},   {"wrong_linkage", "entry"},
                                                       {"wrong_name", "entry"}, {"two_entries", "entry"},
                                                       {"other_date", "entry"}, {"undefined_symbol", "load"},
                                                       {"leaky", "withdrawal"}};
    for (const auto& [library, owner] : owners) {
        const Validation found = validation(BROKEN_FOLDER "/" + library + ".so", {"--level", "2"});
        EXPECT_EQ(found.code, 1) << library;
        EXPECT_EQ(found.kindOf(owner), "fail") << library << '\n' << found.findings();
    }
}

TEST(ValidateCommand, Reproduce_repeats_one_check_with_its_seed) {
    const Validation first = validation(MUTANT_FOLDER "/RefusesLeastValue.so", {"--reproduce", "update:17"});
    ASSERT_TRUE(first.report.is_object()) << first.error;
    ASSERT_EQ(first.report.at("checks").size(), 1U);
    const auto& line = first.report.at("checks")[0];
    EXPECT_EQ(line.at("kind"), "fail");
    EXPECT_EQ(line.at("seed"), 17);
    EXPECT_EQ(line.at("reproduce"),
              "plime validate " MUTANT_FOLDER "/RefusesLeastValue.so --reproduce update:17 --gpu software");
    const Validation second = validation(MUTANT_FOLDER "/RefusesLeastValue.so", {"--reproduce", "update:17"});
    EXPECT_EQ(first.report, second.report);
}

TEST(ValidateCommand, Text_tells_the_seed_of_what_draws_values_where_it_passes_too) {
    const Result all = run({"validate", MUTANT_FOLDER "/None.so", "--level", "4"});
    EXPECT_EQ(all.code, 0) << all.output;
    const std::size_t line = all.output.find("pass     destruction-order:");
    ASSERT_NE(line, std::string::npos) << all.output;
    const std::string passed = all.output.substr(line, all.output.find('\n', line) - line);
    EXPECT_NE(all.output.find("pass     creation\n"), std::string::npos) << all.output;
    const std::string word = passed.substr(passed.rfind(' ') + 1);
    const Result again = run({"validate", MUTANT_FOLDER "/None.so", "--reproduce", word});
    EXPECT_EQ(again.output, passed + "\n1 check: 1 passed, 0 with a warning, 0 with a finding, 0 skipped\n");
    EXPECT_EQ(again.code, 0);
}

TEST(ValidateCommand, Text_says_what_is_wrong_and_how_often) {
    const Result result = run({"validate", BROKEN_FOLDER "/two_entries.so", "--level", "1"});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.output.find("pass     file\n"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("fail     entry                  is not one plug-in"), std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("1 with a finding"), std::string::npos) << result.output;
}

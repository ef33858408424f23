// SPDX-License-Identifier: Apache-2.0
// Plug-ins that a process does not survive: the program does.
#include "tests/app/Program.h"
#include "tests/platform/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

std::string sentence(const std::string& path, const std::string& how) {
    return path + ": is not loaded, because a process that loaded it on trial " + how +
           ". \"plime validate " + path + "\" finds the cause.\n";
}

} // namespace

TEST(Plime_bad_plugin, asked_for_by_name_ends_with_5_and_one_sentence) {
    const std::string path = BROKEN_FOLDER "/crashes.so";
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"list"}, {"describe", "Display/CMYK"}}) {
        Call call{command};
        call.arguments.insert(call.arguments.end(), {"--plugin", path});
        const Result result = run(call);
        EXPECT_EQ(result.code, 5);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.error, "plime: error: " + sentence(path, "was ended by signal 11 (SIGSEGV)"));
    }
}

TEST(Plime_bad_plugin, found_in_a_folder_is_a_warning_and_the_others_are_loaded) {
    const TemporaryFolder folder;
    const std::string bad = folder.file("a.so", contentOf(BROKEN_FOLDER "/exits.so"));
    static_cast<void>(folder.file("b.so", contentOf(TOVAR_PLIME)));
    const Result result = run(Call{{"list"}, {{"KROD_PLUGIN_PATH", folder.path(".").string()}}});
    EXPECT_EQ(result.code, 0);
    EXPECT_NE(result.output.find("Display/CMYK"), std::string::npos);
    EXPECT_EQ(result.error, "plime: warning: " + sentence(bad, "exited with code 0"));
}

TEST(Plime_bad_plugin, is_a_problem_that_the_doctor_names) {
    const std::string path = BROKEN_FOLDER "/waits.so";
    const Result result = run(Call{{"doctor", "--plugin", path}, {{"KROD_PROBE_SECONDS", "1"}}});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.output.find("a process that loaded it on trial took longer than 1 s"), std::string::npos)
        << result.output;
}

TEST(Plime_plugin_trial, is_remembered_in_the_folder_for_caches) {
    const TemporaryFolder folder;
    const Call call{{"list", "--plugin", TOVAR_PLIME}, {{"XDG_CACHE_HOME", folder.path(".").string()}}};
    const Result first = run(call);
    const std::vector<char> memory = contentOf(folder.path("krod") / "plug-in-trials");
    EXPECT_NE(std::string(memory.begin(), memory.end()).find(" " TOVAR_PLIME "\n"), std::string::npos);
    const auto written = std::filesystem::last_write_time(folder.path("krod"));
    const Result second = run(call);
    EXPECT_EQ(std::filesystem::last_write_time(folder.path("krod")), written) << "it is written again";
    EXPECT_EQ(second.output, first.output);
    EXPECT_EQ(first.code + second.code, 0);
    EXPECT_EQ(first.error + second.error, "");
}

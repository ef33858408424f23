// SPDX-License-Identifier: Apache-2.0
// What the check has to let pass: the texts of all modules, their bodies, and the examples.
#include "workbench/gl/check/ShaderCheck.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

using namespace workbench;

/// Judges all shader files below a folder, and returns how many there are.
int passAll(const std::filesystem::path& folder) {
    int count = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.path().extension() != ".frag") continue;
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string text((std::istreambuf_iterator<char>(file)), {});
        const auto objection = objectionTo(text);
        EXPECT_FALSE(objection.has_value())
            << entry.path() << " line " << objection->line << ' ' << objection->what;
        ++count;
    }
    return count;
}

TEST(HarmlessShader, textsOfModules_pass) { EXPECT_GE(passAll(TEXT_FOLDER), 15); }
TEST(HarmlessShader, bodies_pass) { EXPECT_EQ(passAll(BODY_FOLDER), 7); }
TEST(HarmlessShader, examples_pass) { EXPECT_GE(passAll(EXAMPLES), 1); }

TEST(HarmlessShader, emptyText_passes) { EXPECT_FALSE(objectionTo("").has_value()); }

} // namespace

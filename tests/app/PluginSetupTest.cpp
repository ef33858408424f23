// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/modules/PluginSetup.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace workbench {
namespace {

namespace fs = std::filesystem;

class Plugin_setup : public testing::Test {
protected:
    Plugin_setup() {
        std::string name = testing::TempDir() + "plime-plugins-XXXXXX";
        if (!::mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
        folder = name;
    }
    ~Plugin_setup() override { fs::remove_all(folder); }

    [[nodiscard]] std::string text(const std::string& name) const {
        const fs::path path = folder / name;
        fs::create_directories(path.parent_path());
        std::ofstream(path) << "no library";
        return path.string();
    }
    static std::vector<PluginAttempt> load(const PluginSources& sources) {
        PluginManager manager;
        return loadPlugins(manager, sources);
    }

    fs::path folder;
};

TEST_F(Plugin_setup, tries_the_command_line_before_the_environment_and_the_first_default_folder_that_exists) {
    const std::string given = text("given.so"), environment = text("environment.so"),
                      built = text("b/built.so");
    static_cast<void>(text("c/installed.so"));
    const auto attempts =
        load({{given}, ':' + environment + ':', {folder / "none", folder / "b", folder / "c"}});
    ASSERT_EQ(attempts.size(), 3U);
    EXPECT_EQ(attempts[0].path, given);
    EXPECT_EQ(attempts[0].origin, PluginOrigin::CommandLine);
    EXPECT_EQ(attempts[1].path, environment);
    EXPECT_EQ(attempts[1].origin, PluginOrigin::Environment);
    EXPECT_EQ(attempts[2].path, built);
    EXPECT_EQ(attempts[2].origin, PluginOrigin::Default);
}

TEST_F(Plugin_setup, takes_the_libraries_of_a_folder_in_the_order_of_their_names) {
    const std::string second = text("z/b.so"), first = text("z/a.so");
    static_cast<void>(text("z/notes.txt"));
    const auto attempts = load({{(folder / "z").string()}, "", {}});
    ASSERT_EQ(attempts.size(), 2U);
    EXPECT_EQ(attempts[0].path, first);
    EXPECT_EQ(attempts[1].path, second);
}

TEST_F(Plugin_setup, says_why_a_file_is_not_loaded) {
    const auto attempts = load({{text("text.so"), (folder / "missing.so").string()}, "", {}});
    ASSERT_EQ(attempts.size(), 2U);
    for (const PluginAttempt& attempt : attempts) {
        EXPECT_EQ(attempt.outcome, PluginAttempt::Outcome::Failed);
        ASSERT_TRUE(attempt.reason);
        EXPECT_EQ(attempt.reason->who, attempt.path);
    }
}

TEST_F(Plugin_setup, tells_an_empty_folder) {
    const auto attempts = load({{folder.string()}, "", {}});
    ASSERT_EQ(attempts.size(), 1U);
    EXPECT_EQ(attempts[0].outcome, PluginAttempt::Outcome::Empty);
}

TEST_F(Plugin_setup, makes_paths_absolute) {
    const auto attempts = load({{"somewhere/./missing.so"}, "", {}});
    ASSERT_EQ(attempts.size(), 1U);
    EXPECT_EQ(attempts[0].path, (fs::current_path() / "somewhere/missing.so").string());
}

TEST(Default_plugin_folders, lie_beside_the_folder_of_the_program) {
    const auto folders = defaultPluginFolders("/opt/krod/bin");
    ASSERT_EQ(folders.size(), 2U);
    EXPECT_EQ(folders[0], "/opt/krod/plugins");
    EXPECT_TRUE(folders[1].string().starts_with("/opt/krod/lib"));
    EXPECT_TRUE(folders[1].string().ends_with("/krod/plugins"));
}

} // namespace
} // namespace workbench

// SPDX-License-Identifier: Apache-2.0
// Which files replace the texts of modules, and which do not.
#include "GlFixture.h"
#include "TemporaryFolder.h"

#include "workbench/gl/ShaderFiles.h"
#include "workbench/report/Failure.h"

#include "host/gl/Programmable.h"

#include <cstdlib>

namespace workbench::test {
namespace {

namespace fs = std::filesystem;

class ShaderFiles : public ::testing::Test {
protected:
    ShaderFiles() { setShaderFolders({first.path(), second.path()}); }
    ~ShaderFiles() override { setShaderFolders({}); }

    static std::string read(const std::string& name = "My.frag") {
        return krod::Programmable::OptionalFileRead(name, "built in");
    }

    Warnings warnings;
    TemporaryFolder first, second;
};

TEST_F(ShaderFiles, Without_a_file_the_built_in_text_is_used) {
    EXPECT_EQ(read(), "built in");
    EXPECT_TRUE(warnings.heard.empty());
    EXPECT_TRUE(usedShaderFiles().empty());
}

TEST_F(ShaderFiles, First_folder_wins_and_is_known) {
    second.write("My.frag", "from the second");
    EXPECT_EQ(read(), "from the second");
    const fs::path winner = first.write("My.frag", "from the first\r\n");
    EXPECT_EQ(read(), "from the first\r\n");
    ASSERT_EQ(usedShaderFiles().size(), 1U);
    EXPECT_EQ(usedShaderFiles()[0].name, "My.frag");
    EXPECT_EQ(usedShaderFiles()[0].path, winner);
}

TEST_F(ShaderFiles, Removed_file_gives_way_to_the_built_in_text) {
    const fs::path file = first.write("My.frag", "text");
    EXPECT_EQ(read(), "text");
    fs::remove(file);
    EXPECT_EQ(read(), "built in");
    EXPECT_TRUE(usedShaderFiles().empty());
}

TEST_F(ShaderFiles, Empty_file_is_no_file_and_is_told_once) {
    const fs::path file = first.write("My.frag", "");
    second.write("My.frag", "from the second");
    for (int i = 0; i < 3; ++i) EXPECT_EQ(read(), "from the second");
    ASSERT_EQ(warnings.heard.size(), 1U);
    EXPECT_EQ(warnings.heard[0], file.string() + " is empty and is not used as a shader");
}

TEST_F(ShaderFiles, Size_limit_is_64_KiB) {
    first.write("My.frag", std::string(65536, ' '));
    EXPECT_EQ(read().size(), 65536U);
    first.write("My.frag", std::string(65537, ' '));
    EXPECT_EQ(read(), "built in");
    EXPECT_EQ(warnings.count("is larger than 64 KiB"), 1);
}

TEST_F(ShaderFiles, What_is_no_regular_file_is_no_file) {
    fs::create_directory(first.path() / "My.frag");
    EXPECT_EQ(read(), "built in");
    EXPECT_EQ(warnings.count("is no regular file"), 1);
    fs::create_symlink("/dev/zero", first.path() / "Other.frag");
    EXPECT_EQ(read("Other.frag"), "built in");
}

TEST_F(ShaderFiles, Bytes_that_are_no_text_are_no_file) {
    first.write("My.frag", std::string("void\0main", 9));
    EXPECT_EQ(read(), "built in");
    EXPECT_EQ(warnings.count("is no text"), 1);
}

TEST_F(ShaderFiles, Own_version_line_is_refused) {
    const fs::path file = first.write("My.frag", "// head\n  # version 330\nvoid main() {}\n");
    try {
        static_cast<void>(read());
        FAIL() << "nothing was thrown";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.fault(), Fault::Shader);
        EXPECT_EQ(std::string(failure.what()),
                  file.string() +
                      ": cannot replace a module's shader — expected a text without #version line, got "
                      "#version 330. Remove that line; the module writes its own in front.");
    }
    first.write("My.frag", "// #version 330\nvoid main() {}\n");
    EXPECT_NO_THROW(static_cast<void>(read()));
}

TEST_F(ShaderFiles, Names_with_folders_are_never_found) {
    first.write("My.frag", "text");
    fs::create_directory(first.path() / "sub");
    first.write("sub/My.frag", "text");
    for (const std::string name : {"sub/My.frag", "../My.frag", "", ".", ".."})
        EXPECT_EQ(read(name), "built in");
    EXPECT_EQ(read((first.path() / "My.frag").string()), "built in");
}

TEST_F(ShaderFiles, Current_directory_is_never_searched) {
    first.write("My.frag", "text");
    const fs::path before = fs::current_path();
    fs::current_path(first.path());
    setShaderFolders({"", ".", "sub"});
    EXPECT_EQ(read(), "built in");
    fs::current_path(before);
}

TEST_F(ShaderFiles, Environment_gives_its_folders_in_order) {
    setenv("KROD_SHADER_PATH", "/one::relative:/two", 1);
    setenv("XDG_DATA_HOME", "/data", 1);
    EXPECT_EQ(environmentShaderFolders(), (std::vector<fs::path>{"/one", "/two", "/data/krod/shaders"}));
    unsetenv("KROD_SHADER_PATH");
    unsetenv("XDG_DATA_HOME");
    setenv("HOME", "/home/somebody", 1);
    EXPECT_EQ(environmentShaderFolders(), std::vector<fs::path>{"/home/somebody/.local/share/krod/shaders"});
}

} // namespace
} // namespace workbench::test

// SPDX-License-Identifier: Apache-2.0
#include "workbench/platform/TextFile.h"

#include "tests/app/FakeModules.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace workbench {
namespace {

std::string refusalOf(const std::string& path) {
    return failureOf([&] { static_cast<void>(readTextFile(path)); });
}

std::string sentence(const std::string& path, const std::string& got) {
    return "3 " + path + ": cannot be read — expected a text file of at most 16 MiB, got " + got + '.';
}

std::string temporaryName(const std::string& name) {
    return (std::filesystem::temp_directory_path() / (name + std::to_string(::getpid()))).string();
}

TEST(Text_file, is_read_byte_for_byte) {
    const std::string path = temporaryName("text-file");
    std::ofstream(path, std::ios::binary) << std::string("a\r\n\tb\0c", 7);
    EXPECT_EQ(readTextFile(path), std::string("a\r\n\tb\0c", 7));
    std::filesystem::remove(path);
}

TEST(Text_file, that_is_a_device_or_a_folder_is_refused) {
    EXPECT_EQ(refusalOf("/dev/zero"), sentence("/dev/zero", "something that is no regular file"));
    EXPECT_EQ(refusalOf("/"), sentence("/", "something that is no regular file"));
}

TEST(Text_file, that_is_a_pipe_is_refused_at_once) {
    const std::string path = temporaryName("pipe");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(refusalOf(path), sentence(path, "something that is no regular file"));
    std::filesystem::remove(path);
}

TEST(Text_file, that_is_too_large_is_refused) {
    const std::string path = temporaryName("large-text-file");
    std::ofstream(path).close();
    std::filesystem::resize_file(path, (std::uintmax_t{16} << 20U) + 1);
    EXPECT_EQ(refusalOf(path), sentence(path, "a larger one"));
    std::filesystem::remove(path);
}

} // namespace
} // namespace workbench

// SPDX-License-Identifier: Apache-2.0
#include "workbench/platform/ElfFile.h"
#include "tests/platform/TemporaryFolder.h"
#include "workbench/platform/SharedLibrary.h"

#include <gtest/gtest.h>

#include <elf.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <random>

using workbench::ElfFile;
using workbench::ElfProblem;

namespace {

using Bytes = std::vector<char>;

Bytes plain() { return contentOf(SAMPLE_PLAIN); }

template <typename T>
T readAt(const Bytes& bytes, std::size_t offset) {
    T value;
    std::memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

template <typename T>
void writeAt(Bytes& bytes, std::size_t offset, T value) {
    std::memcpy(bytes.data() + offset, &value, sizeof(T));
}

Bytes withoutSections(Bytes bytes) {
    auto header = readAt<Elf64_Ehdr>(bytes, 0);
    header.e_shoff = 0;
    header.e_shnum = header.e_shstrndx = 0;
    writeAt(bytes, 0, header);
    return bytes;
}

std::size_t endOfSegments(const Bytes& bytes) {
    const auto header = readAt<Elf64_Ehdr>(bytes, 0);
    std::size_t end = 0;
    for (std::size_t i = 0; i < header.e_phnum; ++i) {
        const auto segment = readAt<Elf64_Phdr>(bytes, header.e_phoff + i * sizeof(Elf64_Phdr));
        end = std::max<std::size_t>(end, segment.p_offset + segment.p_filesz);
    }
    return end;
}

bool lists(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

class ElfFileOnDisk : public testing::Test {
protected:
    ElfFile inspect(const Bytes& bytes) { return ElfFile::inspect(folder.file("library.so", bytes)); }

    TemporaryFolder folder;
};

TEST_F(ElfFileOnDisk, Plain_library_lists_its_exports_only) {
    const ElfFile file = ElfFile::inspect(SAMPLE_PLAIN);
    ASSERT_TRUE(file.usable()) << file.refusal.sentence();
    EXPECT_TRUE(lists(file.exportedNames, "sample_answer"));
    EXPECT_TRUE(lists(file.exportedNames, "sample_object"));
    EXPECT_TRUE(lists(file.exportedNames, "_ZN6sample5twiceEi"));
    EXPECT_FALSE(lists(file.exportedNames, "sample_hidden"));
    EXPECT_FALSE(lists(file.exportedNames, "__cxa_finalize")) << "is used, not defined";
    EXPECT_TRUE(file.uniqueNames.empty());
}

TEST_F(ElfFileOnDisk, Unique_symbol_is_told_apart) {
    const ElfFile file = ElfFile::inspect(SAMPLE_UNIQUE);
    ASSERT_TRUE(file.usable()) << file.refusal.sentence();
    EXPECT_EQ(file.uniqueNames, std::vector<std::string>{"_ZN6sample4onceE"});
}

TEST_F(ElfFileOnDisk, Truncated_at_200_lengths_is_refused) {
    const Bytes whole = plain();
    for (std::size_t i = 0; i < 200; ++i) {
        const std::size_t length = whole.size() * i / 200;
        const ElfFile file =
            inspect(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        EXPECT_EQ(file.problem, length < 4 ? ElfProblem::NotElf : ElfProblem::Truncated)
            << "length " << length;
        EXPECT_TRUE(file.exportedNames.empty());
    }
}

TEST_F(ElfFileOnDisk, Truncated_without_sections_is_usable_only_with_all_segments) {
    const Bytes whole = withoutSections(plain());
    const std::size_t end = endOfSegments(whole);
    ASSERT_LT(end, whole.size());
    for (std::size_t length = end - 300; length <= end; ++length) {
        const ElfFile file =
            inspect(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        EXPECT_EQ(file.problem, length < end ? ElfProblem::Truncated : ElfProblem::None)
            << "length " << length;
    }
    const workbench::SharedLibrary loaded(folder.path("library.so"));
    EXPECT_NE(loaded.symbol("sample_answer"), nullptr);
}

TEST_F(ElfFileOnDisk, Damaged_headers_never_crash) {
    const Bytes whole = plain();
    std::mt19937 random(20220215);
    std::size_t refused = 0;
    for (int round = 0; round < 2000; ++round) {
        Bytes damaged = whole;
        for (int flips = 0; flips < 4; ++flips)
            damaged[random() % std::min<std::size_t>(damaged.size(), 2048)] = static_cast<char>(random());
        refused += inspect(damaged).usable() ? 0 : 1;
    }
    EXPECT_GT(refused, 500U);
}

TEST_F(ElfFileOnDisk, Huge_counts_in_every_field_never_crash) {
    const Bytes whole = plain();
    for (std::size_t offset = 0; offset + 8 <= std::min<std::size_t>(whole.size(), 4096); offset += 4) {
        for (const std::uint64_t value :
             {UINT64_MAX, UINT64_MAX - 15, std::uint64_t{1} << 63, std::uint64_t{0xFFFFFFFF}}) {
            Bytes damaged = whole;
            writeAt(damaged, offset, value);
            const ElfFile file = inspect(damaged);
            EXPECT_EQ(file.usable(), file.refusal.what.empty());
        }
    }
}

TEST_F(ElfFileOnDisk, Other_machine_is_named) {
    Bytes bytes = plain();
    writeAt<std::uint16_t>(bytes, offsetof(Elf64_Ehdr, e_machine), EM_RISCV);
    const ElfFile file = inspect(bytes);
    EXPECT_EQ(file.problem, ElfProblem::WrongMachine);
    EXPECT_EQ(file.refusal.got, "one for RISC-V");
}

TEST_F(ElfFileOnDisk, Library_for_32_bits_is_named) {
    Bytes bytes = plain();
    bytes[EI_CLASS] = ELFCLASS32;
    const ElfFile file = inspect(bytes);
    EXPECT_EQ(file.problem, ElfProblem::WrongClass);
    EXPECT_EQ(file.refusal.sentence(),
              folder.path("library.so").string() +
                  ": is not a library for this machine — expected a 64-bit library, got a "
                  "32-bit one.");
}

TEST_F(ElfFileOnDisk, Program_is_refused) {
    Bytes bytes = plain();
    writeAt<std::uint16_t>(bytes, offsetof(Elf64_Ehdr, e_type), ET_EXEC);
    EXPECT_EQ(inspect(bytes).problem, ElfProblem::NotShared);
    EXPECT_EQ(ElfFile::inspect("/proc/self/exe").problem, ElfProblem::NotShared);
}

TEST_F(ElfFileOnDisk, Text_and_empty_file_are_no_libraries) {
    const std::string text = "int main() { return 0; }\n";
    EXPECT_EQ(inspect(Bytes(text.begin(), text.end())).problem, ElfProblem::NotElf);
    const ElfFile empty = inspect({});
    EXPECT_EQ(empty.problem, ElfProblem::NotElf);
    EXPECT_EQ(empty.refusal.got, "an empty file");
}

TEST_F(ElfFileOnDisk, What_is_no_regular_file_is_named_without_blocking) {
    const auto got = [](const std::filesystem::path& path) {
        const ElfFile file = ElfFile::inspect(path);
        EXPECT_EQ(file.problem, ElfProblem::NotRegularFile);
        return file.refusal.got;
    };
    EXPECT_EQ(got(folder.path("")), "a folder");
    EXPECT_EQ(got("/dev/zero"), "a device");
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(got(folder.path("pipe")), "a pipe");

    const int server = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string place = folder.path("socket").string();
    ASSERT_LT(place.size(), sizeof address.sun_path);
    std::memcpy(address.sun_path, place.c_str(), place.size() + 1);
    ASSERT_EQ(::bind(server, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(got(place), "a socket");
    ::close(server);
}

TEST_F(ElfFileOnDisk, Missing_file_and_relative_path_are_refused) {
    const ElfFile missing = ElfFile::inspect(folder.path("nobody.so"));
    EXPECT_EQ(missing.problem, ElfProblem::Unreadable);
    EXPECT_EQ(missing.refusal.got, "No such file or directory");
    EXPECT_EQ(ElfFile::inspect("libm.so.6").problem, ElfProblem::RelativePath);
    EXPECT_EQ(ElfFile::inspect("").problem, ElfProblem::RelativePath);
}

TEST_F(ElfFileOnDisk, Oversized_file_is_refused_unread) {
    const std::filesystem::path path = folder.file("large.so", plain());
    std::filesystem::resize_file(path, ElfFile::MaximumSize + 1);
    EXPECT_EQ(ElfFile::inspect(path).problem, ElfProblem::TooLarge);
}

} // namespace

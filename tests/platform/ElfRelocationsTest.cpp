// SPDX-License-Identifier: Apache-2.0
// What the loader would read or write outside of the library.
#include "tests/platform/TemporaryFolder.h"
#include "workbench/platform/ElfFile.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <stdexcept>

#include <elf.h>

namespace {

using workbench::ElfFile;
using workbench::ElfProblem;
using Bytes = std::vector<char>;

template <typename T>
T readAt(const Bytes& bytes, std::size_t offset) {
    T value;
    std::memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

/// Where the first section of a type lies.
Elf64_Shdr section(const Bytes& bytes, std::uint32_t type) {
    const auto header = readAt<Elf64_Ehdr>(bytes, 0);
    for (std::size_t i = 0; i < header.e_shnum; ++i) {
        const auto candidate = readAt<Elf64_Shdr>(bytes, header.e_shoff + i * sizeof(Elf64_Shdr));
        if (candidate.sh_type == type) return candidate;
    }
    throw std::runtime_error("the sample lacks a section");
}

/// The sample with each of its relocations changed in turn; how often it is refused, and with what sentence.
class Relocations : public testing::Test {
protected:
    void expectRefused(const std::function<bool(Elf64_Rela&)>& change, const std::string& sentence) {
        const Bytes whole = contentOf(SAMPLE_PLAIN);
        const Elf64_Shdr table = section(whole, SHT_RELA);
        int changed = 0;
        for (std::size_t at = table.sh_offset; at < table.sh_offset + table.sh_size;
             at += sizeof(Elf64_Rela)) {
            auto entry = readAt<Elf64_Rela>(whole, at);
            if (!change(entry)) continue;
            ++changed;
            Bytes damaged = whole;
            std::memcpy(damaged.data() + at, &entry, sizeof entry);
            const ElfFile file = ElfFile::inspect(folder.file("library.so", damaged));
            EXPECT_EQ(file.problem, ElfProblem::Damaged);
            EXPECT_EQ(file.refusal.what, "is damaged: a relocation " + sentence);
        }
        EXPECT_GT(changed, 0);
    }

    const TemporaryFolder folder;
};

bool isRelative(const Elf64_Rela& entry) { return ELF64_R_SYM(entry.r_info) == 0; }

} // namespace

TEST_F(Relocations, That_write_elsewhere_are_refused) {
    const std::string sentence = "changes memory that is not the library's own";
    for (const std::uint64_t place :
         {std::uint64_t{0}, std::uint64_t{1} << 20, std::uint64_t{1} << 40, UINT64_MAX, UINT64_MAX - 7})
        expectRefused(
            [place](Elf64_Rela& entry) {
                entry.r_offset = place;
                return true;
            },
            sentence);
}

TEST_F(Relocations, That_use_a_missing_symbol_are_refused) {
    const Elf64_Shdr symbols = section(contentOf(SAMPLE_PLAIN), SHT_DYNSYM);
    const std::uint64_t count = symbols.sh_size / sizeof(Elf64_Sym);
    for (const std::uint64_t symbol : {count, count + 1, std::uint64_t{0x80000}, std::uint64_t{UINT32_MAX}})
        expectRefused(
            [symbol](Elf64_Rela& entry) {
                entry.r_info = ELF64_R_INFO(symbol, ELF64_R_TYPE(entry.r_info));
                return true;
            },
            "uses a symbol that is not there");
}

TEST_F(Relocations, That_lead_elsewhere_are_refused) {
    for (const std::int64_t place : {std::int64_t{1} << 20, std::int64_t{1} << 40, std::int64_t{-1}})
        expectRefused(
            [place](Elf64_Rela& entry) {
                entry.r_addend = place;
                return isRelative(entry);
            },
            "leads out of the library");
}

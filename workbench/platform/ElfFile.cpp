// SPDX-License-Identifier: Apache-2.0
#include "workbench/platform/ElfFile.h"

#include "workbench/platform/Descriptor.h"
#include "workbench/platform/ElfImage.h"
#include "workbench/platform/ElfRelocations.h"

#include <elf.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace workbench {
namespace {

#if defined(__x86_64__)
constexpr std::uint16_t OwnMachine = EM_X86_64;
#elif defined(__aarch64__)
constexpr std::uint16_t OwnMachine = EM_AARCH64;
#else
#error "The workbench loads libraries on x86-64 and aarch64 only."
#endif

[[noreturn]] void refuseProgram(std::string got) {
    refuse(ElfProblem::NotShared, "is not a shared library", "a file linked with -shared", std::move(got));
}

const char* kindOf(mode_t mode) {
    if (S_ISDIR(mode)) return "a folder";
    if (S_ISFIFO(mode)) return "a pipe";
    if (S_ISSOCK(mode)) return "a socket";
    return "a device";
}

[[noreturn]] void refuseUnreadable() {
    refuse(ElfProblem::Unreadable, "cannot be read", "", std::generic_category().message(errno));
}

void requireRegular(const struct stat& status) {
    if (!S_ISREG(status.st_mode))
        refuse(ElfProblem::NotRegularFile, "is not a library", "a regular file", kindOf(status.st_mode));
}

/// Asks for the kind of file first, because opening alone can already disturb a device.
ElfImage readWhole(const std::filesystem::path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) refuseUnreadable();
    requireRegular(status);
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0) refuseUnreadable();
    requireRegular(status);
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size > ElfFile::MaximumSize)
        refuse(ElfProblem::TooLarge, "is too large for a plug-in", "at most 256 MiB", bytesText(size));

    std::vector<std::byte> bytes(size);
    std::size_t done = 0;
    while (done < size) {
        const ssize_t got = ::read(file.get(), bytes.data() + done, size - done);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) refuseUnreadable();
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    bytes.resize(done);
    return ElfImage(std::move(bytes));
}

std::string machineName(std::uint16_t machine) {
    switch (machine) {
    case EM_X86_64:
        return "x86-64";
    case EM_AARCH64:
        return "aarch64";
    case EM_386:
        return "32-bit x86";
    case EM_ARM:
        return "32-bit ARM";
    case EM_RISCV:
        return "RISC-V";
    case EM_PPC64:
        return "64-bit POWER";
    case EM_S390:
        return "S/390";
    default:
        return "processor number " + std::to_string(machine);
    }
}

Elf64_Ehdr readHeader(const ElfImage& image) {
    if (!image.startsWith({ELFMAG, SELFMAG}))
        refuse(ElfProblem::NotElf, "is not a library", "a file that starts with the ELF mark",
               image.empty() ? "an empty file" : "other content");
    const auto identity = image.at<std::array<unsigned char, EI_NIDENT>>(0, "file header");
    if (identity[EI_CLASS] != ELFCLASS64)
        refuse(ElfProblem::WrongClass, "is not a library for this machine", "a 64-bit library",
               identity[EI_CLASS] == ELFCLASS32 ? "a 32-bit one" : "an unknown kind");
    if (identity[EI_DATA] != ELFDATA2LSB)
        refuse(ElfProblem::WrongMachine, "is not a library for this machine", "little-endian byte order",
               "another one");
    const auto header = image.at<Elf64_Ehdr>(0, "file header");
    if (header.e_machine != OwnMachine)
        refuse(ElfProblem::WrongMachine, "is not a library for this machine",
               "a library for " + machineName(OwnMachine), "one for " + machineName(header.e_machine));
    if (header.e_type != ET_DYN)
        refuseProgram(header.e_type == ET_EXEC  ? "a program"
                      : header.e_type == ET_REL ? "an object file"
                                                : "another kind of ELF file");
    if (identity[EI_VERSION] != EV_CURRENT || header.e_version != EV_CURRENT)
        refuseDamaged("unknown version of the format");
    return header;
}

/// The entries of the dynamic table that lead to symbols and relocations; addresses as in the loaded library.
struct DynamicTable {
    std::optional<std::uint64_t> symbols, names, namesSize, symbolSize, hash, gnuHash;
    ElfRelocations relocations;
};

void note(const Elf64_Dyn& entry, DynamicTable& table) {
    const std::uint64_t value = entry.d_un.d_val;
    switch (entry.d_tag) {
    case DT_SYMTAB:
        table.symbols = value;
        break;
    case DT_STRTAB:
        table.names = value;
        break;
    case DT_STRSZ:
        table.namesSize = value;
        break;
    case DT_SYMENT:
        table.symbolSize = value;
        break;
    case DT_HASH:
        table.hash = value;
        break;
    case DT_GNU_HASH:
        table.gnuHash = value;
        break;
    case DT_FLAGS_1:
        if ((value & DF_1_PIE) != 0) refuseProgram("a program");
        break;
    default:
        table.relocations.note(entry);
    }
}

DynamicTable readDynamic(const ElfImage& image, const ElfSegments& segments) {
    const Elf64_Phdr& place = segments.dynamic();
    const std::uint64_t offset = segments.offsetOf(place.p_vaddr, place.p_filesz, "dynamic table");
    DynamicTable table;
    for (const Elf64_Dyn& entry :
         image.table<Elf64_Dyn>(offset, place.p_filesz / sizeof(Elf64_Dyn), "dynamic table")) {
        if (entry.d_tag == DT_NULL) return table;
        note(entry, table);
    }
    refuseDamaged("its dynamic table has no end");
}

/// The GNU hash table has no count: the last chain of the highest bucket ends with the last symbol.
std::uint64_t countByGnuHash(const ElfImage& image, const ElfSegments& segments, std::uint64_t address) {
    const char* const what = "symbol hash table";
    const auto head = image.table<std::uint32_t>(segments.offsetOf(address, 16, what), 4, what);
    const std::uint64_t bucketCount = head[0], firstSymbol = head[1], filterWords = head[2];
    const std::uint64_t bucketAddress = address + 16 + 8 * filterWords;
    const auto buckets = image.table<std::uint32_t>(segments.offsetOf(bucketAddress, 4 * bucketCount, what),
                                                    bucketCount, what);
    std::uint64_t last = 0;
    for (const std::uint32_t bucket : buckets) last = std::max<std::uint64_t>(last, bucket);
    if (last < firstSymbol) return firstSymbol;

    const std::uint64_t chainAddress = bucketAddress + 4 * bucketCount;
    for (const std::uint64_t end = firstSymbol + segments.bytesFrom(chainAddress) / 4; last < end; ++last) {
        const std::uint64_t entry = segments.offsetOf(chainAddress + 4 * (last - firstSymbol), 4, what);
        if ((image.at<std::uint32_t>(entry, what) & 1U) != 0) return last + 1;
    }
    refuseDamaged("its symbol hash table has no end");
}

std::uint64_t countSymbols(const ElfImage& image, const ElfSegments& segments, const DynamicTable& dynamic) {
    if (dynamic.hash) {
        const std::uint64_t offset = segments.offsetOf(*dynamic.hash, 8, "symbol hash table");
        return image.at<std::uint32_t>(offset + 4, "symbol hash table");
    }
    return dynamic.gnuHash ? countByGnuHash(image, segments, *dynamic.gnuHash) : 0;
}

/// Symbols without a section of their own are left out: they name versions, not code or data.
bool isExported(const Elf64_Sym& symbol) {
    const unsigned binding = ELF64_ST_BIND(symbol.st_info);
    const unsigned visibility = ELF64_ST_VISIBILITY(symbol.st_other);
    return symbol.st_shndx != SHN_UNDEF && symbol.st_shndx != SHN_ABS &&
           (binding == STB_GLOBAL || binding == STB_WEAK || binding == STB_GNU_UNIQUE) &&
           (visibility == STV_DEFAULT || visibility == STV_PROTECTED);
}

void readSymbols(const ElfImage& image, const ElfSegments& segments, ElfFile& file) {
    const DynamicTable dynamic = readDynamic(image, segments);
    if (!dynamic.symbols || !dynamic.names || !dynamic.namesSize) refuseDamaged("no dynamic symbols");
    if (dynamic.symbolSize && *dynamic.symbolSize != sizeof(Elf64_Sym))
        refuseDamaged("unknown size of symbols");
    const std::uint64_t names =
        segments.offsetOf(*dynamic.names, *dynamic.namesSize, "table of symbol names");
    const std::uint64_t count = countSymbols(image, segments, dynamic);
    const std::uint64_t offset =
        segments.offsetOf(*dynamic.symbols, count * sizeof(Elf64_Sym), "symbol table");
    for (const Elf64_Sym& symbol : image.table<Elf64_Sym>(offset, count, "symbol table")) {
        if (symbol.st_name >= *dynamic.namesSize) refuseDamaged("a symbol's name lies outside of the names");
        if (!isExported(symbol)) continue;
        file.exportedNames.push_back(image.text(names + symbol.st_name, *dynamic.namesSize - symbol.st_name));
        if (ELF64_ST_BIND(symbol.st_info) == STB_GNU_UNIQUE)
            file.uniqueNames.push_back(file.exportedNames.back());
    }
    dynamic.relocations.check(image, segments, file.exportedNames.empty() ? 0 : count);
    std::sort(file.exportedNames.begin(), file.exportedNames.end());
    std::sort(file.uniqueNames.begin(), file.uniqueNames.end());
}

/// Loading needs no sections, but their table is the last thing in nearly every file: it shows a cut that
/// misses all segments.
void checkSections(const ElfImage& image, const Elf64_Ehdr& header) {
    if (header.e_shoff == 0) return;
    if (header.e_shentsize != sizeof(Elf64_Shdr)) refuseDamaged("unknown size of section headers");
    const auto first = image.at<Elf64_Shdr>(header.e_shoff, "section table");
    const std::uint64_t count = header.e_shnum != 0 ? header.e_shnum : first.sh_size;
    for (const Elf64_Shdr& section : image.table<Elf64_Shdr>(header.e_shoff, count, "section table"))
        if (section.sh_type != SHT_NULL && section.sh_type != SHT_NOBITS)
            image.require(section.sh_offset, section.sh_size, "sections");
}

} // namespace

ElfFile ElfFile::inspect(const std::filesystem::path& path) {
    ElfFile file;
    try {
        if (!path.is_absolute())
            refuse(ElfProblem::RelativePath, "is not searched for", "an absolute path", "a relative one");
        const ElfImage image = readWhole(path);
        const Elf64_Ehdr header = readHeader(image);
        const ElfSegments segments(image, header);
        checkSections(image, header);
        readSymbols(image, segments, file);
    } catch (ElfRefusal& refused) {
        file = {};
        file.problem = refused.problem;
        file.refusal = std::move(refused.reason);
        file.refusal.who = path.string();
    }
    return file;
}

} // namespace workbench

// SPDX-License-Identifier: Apache-2.0
#include "workbench/platform/ElfFile.h"

#include <elf.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
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

/// Leaves the checks below; `inspect` turns it into its result.
struct Refused {
    ElfProblem problem;
    Diagnostic reason;
};

[[noreturn]] void refuse(ElfProblem problem, std::string what, std::string expected = {},
                         std::string got = {}, std::string advice = {}) {
    throw Refused{
        problem, Diagnostic{"", std::move(what), std::move(expected), std::move(got), std::move(advice), {}}};
}

[[noreturn]] void refuseDamaged(const std::string& what) {
    refuse(ElfProblem::Damaged, "is damaged: " + what, "", "", "Build or copy the library again");
}

[[noreturn]] void refuseProgram(std::string got) {
    refuse(ElfProblem::NotShared, "is not a shared library", "a file linked with -shared", std::move(got));
}

std::string bytesText(std::uint64_t count) { return std::to_string(count) + " bytes"; }

/// The bytes of the file. Everything read from it is checked against its end.
class Image {
public:
    explicit Image(std::vector<std::byte> content) : bytes(std::move(content)) {}

    [[nodiscard]] bool empty() const { return bytes.empty(); }

    [[nodiscard]] bool startsWith(std::string_view mark) const {
        return bytes.size() >= mark.size() && std::memcmp(bytes.data(), mark.data(), mark.size()) == 0;
    }

    void require(std::uint64_t offset, std::uint64_t size, const char* what) const {
        if (offset <= bytes.size() && size <= bytes.size() - offset) return;
        const bool overflows = size > UINT64_MAX - offset;
        refuseTooShort(what, overflows ? "a longer file" : bytesText(offset + size));
    }

    template <typename T>
    [[nodiscard]] T at(std::uint64_t offset, const char* what) const {
        require(offset, sizeof(T), what);
        T value;
        std::memcpy(&value, bytes.data() + offset, sizeof(T));
        return value;
    }

    template <typename T>
    [[nodiscard]] std::vector<T> table(std::uint64_t offset, std::uint64_t count, const char* what) const {
        if (count > bytes.size() / sizeof(T)) refuseTooShort(what, "a longer file");
        require(offset, count * sizeof(T), what);
        std::vector<T> values(static_cast<std::size_t>(count));
        if (count != 0) std::memcpy(values.data(), bytes.data() + offset, values.size() * sizeof(T));
        return values;
    }

    /// The text at `offset` up to its zero byte, which must lie within `limit` bytes.
    [[nodiscard]] std::string text(std::uint64_t offset, std::uint64_t limit) const {
        require(offset, limit, "symbol names");
        const char* begin = reinterpret_cast<const char*>(bytes.data()) + offset;
        const void* end = limit == 0 ? nullptr : std::memchr(begin, 0, static_cast<std::size_t>(limit));
        if (end == nullptr) refuseDamaged("a symbol's name has no end");
        return {begin, static_cast<const char*>(end)};
    }

private:
    [[noreturn]] void refuseTooShort(const char* what, std::string expected) const {
        refuse(ElfProblem::Truncated, std::string("ends too early for its ") + what, std::move(expected),
               bytesText(bytes.size()), "Build or copy the library again");
    }

    std::vector<std::byte> bytes;
};

class Descriptor {
public:
    explicit Descriptor(int value) : number(value) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number >= 0) ::close(number);
    }
    [[nodiscard]] int get() const { return number; }

private:
    int number;
};

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
Image readWhole(const std::filesystem::path& path) {
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
    return Image(std::move(bytes));
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

Elf64_Ehdr readHeader(const Image& image) {
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

/// The parts of the file that a loader maps, and where an address of the loaded library lies in the file.
class Segments {
public:
    Segments(const Image& image, const Elf64_Ehdr& header) {
        if (header.e_phentsize != sizeof(Elf64_Phdr) || header.e_phnum == 0 || header.e_phnum == PN_XNUM)
            refuseDamaged("no usable program headers");
        all = image.table<Elf64_Phdr>(header.e_phoff, header.e_phnum, "program headers");
        for (const Elf64_Phdr& segment : all) {
            image.require(segment.p_offset, segment.p_filesz, "segments");
            if (segment.p_type != PT_LOAD) continue;
            if (segment.p_filesz > segment.p_memsz || segment.p_memsz > UINT64_MAX - segment.p_vaddr)
                refuseDamaged("impossible size of a segment");
        }
    }

    [[nodiscard]] std::uint64_t offsetOf(std::uint64_t address, std::uint64_t size, const char* what) const {
        for (const Elf64_Phdr& segment : all) {
            if (segment.p_type != PT_LOAD || address < segment.p_vaddr) continue;
            const std::uint64_t into = address - segment.p_vaddr;
            if (into <= segment.p_filesz && size <= segment.p_filesz - into) return segment.p_offset + into;
        }
        refuseDamaged(std::string("its ") + what + " lies outside of the segments");
    }

    /// All bytes of the file from `address` to the end of its segment.
    [[nodiscard]] std::uint64_t bytesFrom(std::uint64_t address) const {
        for (const Elf64_Phdr& segment : all)
            if (segment.p_type == PT_LOAD && address >= segment.p_vaddr &&
                address - segment.p_vaddr <= segment.p_filesz)
                return segment.p_filesz - (address - segment.p_vaddr);
        return 0;
    }

    [[nodiscard]] const Elf64_Phdr& dynamic() const {
        const auto found =
            std::find_if(all.begin(), all.end(), [](const Elf64_Phdr& s) { return s.p_type == PT_DYNAMIC; });
        if (found == all.end()) refuseDamaged("no dynamic table");
        return *found;
    }

private:
    std::vector<Elf64_Phdr> all;
};

/// The entries of the dynamic table that lead to the symbols; addresses as in the loaded library.
struct DynamicTable {
    std::optional<std::uint64_t> symbols, names, namesSize, symbolSize, hash, gnuHash;
};

DynamicTable readDynamic(const Image& image, const Segments& segments) {
    const Elf64_Phdr& place = segments.dynamic();
    const std::uint64_t offset = segments.offsetOf(place.p_vaddr, place.p_filesz, "dynamic table");
    DynamicTable table;
    for (const Elf64_Dyn& entry :
         image.table<Elf64_Dyn>(offset, place.p_filesz / sizeof(Elf64_Dyn), "dynamic table")) {
        switch (entry.d_tag) {
        case DT_NULL:
            return table;
        case DT_SYMTAB:
            table.symbols = entry.d_un.d_ptr;
            break;
        case DT_STRTAB:
            table.names = entry.d_un.d_ptr;
            break;
        case DT_STRSZ:
            table.namesSize = entry.d_un.d_val;
            break;
        case DT_SYMENT:
            table.symbolSize = entry.d_un.d_val;
            break;
        case DT_HASH:
            table.hash = entry.d_un.d_ptr;
            break;
        case DT_FLAGS_1:
            if ((entry.d_un.d_val & DF_1_PIE) != 0) refuseProgram("a program");
            break;
        case DT_GNU_HASH:
            table.gnuHash = entry.d_un.d_ptr;
            break;
        default:
            break;
        }
    }
    refuseDamaged("its dynamic table has no end");
}

/// The GNU hash table has no count: the last chain of the highest bucket ends with the last symbol.
std::uint64_t countByGnuHash(const Image& image, const Segments& segments, std::uint64_t address) {
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

std::uint64_t countSymbols(const Image& image, const Segments& segments, const DynamicTable& dynamic) {
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

void readSymbols(const Image& image, const Segments& segments, ElfFile& file) {
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
    std::sort(file.exportedNames.begin(), file.exportedNames.end());
    std::sort(file.uniqueNames.begin(), file.uniqueNames.end());
}

/// Loading needs no sections, but their table is the last thing in nearly every file: it shows a cut that
/// misses all segments.
void checkSections(const Image& image, const Elf64_Ehdr& header) {
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
        const Image image = readWhole(path);
        const Elf64_Ehdr header = readHeader(image);
        const Segments segments(image, header);
        checkSections(image, header);
        readSymbols(image, segments, file);
    } catch (Refused& refused) {
        file = {};
        file.problem = refused.problem;
        file.refusal = std::move(refused.reason);
        file.refusal.who = path.string();
    }
    return file;
}

} // namespace workbench

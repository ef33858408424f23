// SPDX-License-Identifier: Apache-2.0
#include "workbench/validate/ElfDetails.h"

#include <elf.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>

namespace workbench::validate {
namespace {

/// The bytes of a file, with every access checked.
class Image {
public:
    explicit Image(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(file), {});
    }

    template <class T>
    [[nodiscard]] T at(std::uint64_t offset) const {
        T value;
        if (offset > bytes.size() || sizeof(T) > bytes.size() - offset)
            throw std::runtime_error("the library's tables lead beyond its end");
        std::memcpy(&value, bytes.data() + offset, sizeof(T));
        return value;
    }

    [[nodiscard]] std::string text(std::uint64_t offset) const {
        std::string text;
        for (char letter = at<char>(offset); letter != 0; letter = at<char>(++offset)) text += letter;
        return text;
    }

    [[nodiscard]] std::size_t size() const { return bytes.size(); }

private:
    std::vector<char> bytes;
};

class Reader {
public:
    explicit Reader(const std::filesystem::path& path) : image(path), header(image.at<Elf64_Ehdr>(0)) {}

    ElfDetails read() {
        details.size = image.size();
        for (unsigned i = 0; i < header.e_phnum; ++i) readSegment(segment(i));
        readImports();
        return details;
    }

private:
    [[nodiscard]] Elf64_Phdr segment(unsigned i) const {
        return image.at<Elf64_Phdr>(header.e_phoff + i * sizeof(Elf64_Phdr));
    }

    /// Where an address of the loaded library lies in the file.
    [[nodiscard]] std::uint64_t offsetOf(std::uint64_t address) const {
        for (unsigned i = 0; i < header.e_phnum; ++i)
            if (const Elf64_Phdr s = segment(i);
                s.p_type == PT_LOAD && address >= s.p_vaddr && address - s.p_vaddr < s.p_filesz)
                return s.p_offset + (address - s.p_vaddr);
        throw std::runtime_error("the library's tables lead out of its segments");
    }

    void readSegment(const Elf64_Phdr& segment) {
        if (segment.p_type == PT_TLS && segment.p_memsz != 0) details.threadLocals = true;
        if (segment.p_type == PT_GNU_STACK && (segment.p_flags & PF_X) != 0) details.executableStack = true;
        if (segment.p_type == PT_GNU_RELRO) details.readOnlyRelocations = true;
        if (segment.p_type == PT_DYNAMIC) readDynamic(segment);
    }

    void readDynamic(const Elf64_Phdr& segment) {
        std::vector<std::uint64_t> folders;
        for (std::uint64_t at = 0; at + sizeof(Elf64_Dyn) <= segment.p_filesz; at += sizeof(Elf64_Dyn)) {
            const auto entry = image.at<Elf64_Dyn>(segment.p_offset + at);
            if (entry.d_tag == DT_NULL) break;
            dynamic[entry.d_tag] = entry.d_un.d_val;
            if (entry.d_tag == DT_RPATH || entry.d_tag == DT_RUNPATH) folders.push_back(entry.d_un.d_val);
        }
        const std::uint64_t flags = valueOf(DT_FLAGS);
        details.textRelocations = dynamic.contains(DT_TEXTREL) || (flags & DF_TEXTREL) != 0;
        details.bindsNow = dynamic.contains(DT_BIND_NOW) || (flags & DF_BIND_NOW) != 0 ||
                           (valueOf(DT_FLAGS_1) & DF_1_NOW) != 0;
        for (const std::uint64_t name : folders)
            splitFolders(image.text(offsetOf(valueOf(DT_STRTAB)) + name));
    }

    void splitFolders(const std::string& list) {
        for (std::size_t at = 0; at < list.size();) {
            const std::size_t end = std::min(list.find(':', at), list.size());
            if (end > at) details.searchFolders.push_back(list.substr(at, end - at));
            at = end + 1;
        }
    }

    [[nodiscard]] std::uint64_t valueOf(std::int64_t tag) const {
        const auto found = dynamic.find(tag);
        return found == dynamic.end() ? 0 : found->second;
    }

    /// Symbols that are taken from others come first: the hash table names the first that is not one of them.
    [[nodiscard]] std::uint64_t importCount() const {
        if (const std::uint64_t hash = valueOf(DT_GNU_HASH))
            return image.at<std::uint32_t>(offsetOf(hash) + sizeof(std::uint32_t));
        const std::uint64_t hash = valueOf(DT_HASH);
        return hash == 0 ? 0 : image.at<std::uint32_t>(offsetOf(hash) + sizeof(std::uint32_t));
    }

    void readImports() {
        const std::uint64_t count = importCount();
        if (count == 0) return;
        const std::uint64_t symbols = offsetOf(valueOf(DT_SYMTAB)), names = offsetOf(valueOf(DT_STRTAB));
        for (std::uint64_t i = 1; i < count; ++i) {
            const auto symbol = image.at<Elf64_Sym>(symbols + i * sizeof(Elf64_Sym));
            if (symbol.st_shndx == SHN_UNDEF) details.imports.push_back(image.text(names + symbol.st_name));
        }
        std::sort(details.imports.begin(), details.imports.end());
    }

    Image image;
    Elf64_Ehdr header;
    std::map<std::int64_t, std::uint64_t> dynamic;
    ElfDetails details;
};

} // namespace

ElfDetails ElfDetails::read(const std::filesystem::path& path) { return Reader(path).read(); }

} // namespace workbench::validate

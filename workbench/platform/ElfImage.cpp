// SPDX-License-Identifier: Apache-2.0
#include "workbench/platform/ElfImage.h"

#include <algorithm>

namespace workbench {

void refuse(ElfProblem problem, std::string what, std::string expected, std::string got, std::string advice) {
    throw ElfRefusal{
        problem, Diagnostic{"", std::move(what), std::move(expected), std::move(got), std::move(advice), {}}};
}

void refuseDamaged(const std::string& what) {
    refuse(ElfProblem::Damaged, "is damaged: " + what, "", "", "Build or copy the library again");
}

std::string bytesText(std::uint64_t count) { return std::to_string(count) + " bytes"; }

bool ElfImage::startsWith(std::string_view mark) const {
    return bytes.size() >= mark.size() && std::memcmp(bytes.data(), mark.data(), mark.size()) == 0;
}

void ElfImage::require(std::uint64_t offset, std::uint64_t size, const char* what) const {
    if (offset <= bytes.size() && size <= bytes.size() - offset) return;
    const bool overflows = size > UINT64_MAX - offset;
    refuseTooShort(what, overflows ? "a longer file" : bytesText(offset + size));
}

std::string ElfImage::text(std::uint64_t offset, std::uint64_t limit) const {
    require(offset, limit, "symbol names");
    const char* begin = reinterpret_cast<const char*>(bytes.data()) + offset;
    const void* end = limit == 0 ? nullptr : std::memchr(begin, 0, static_cast<std::size_t>(limit));
    if (end == nullptr) refuseDamaged("a symbol's name has no end");
    return {begin, static_cast<const char*>(end)};
}

void ElfImage::refuseTooShort(const char* what, std::string expected) const {
    refuse(ElfProblem::Truncated, std::string("ends too early for its ") + what, std::move(expected),
           bytesText(bytes.size()), "Build or copy the library again");
}

ElfSegments::ElfSegments(const ElfImage& image, const Elf64_Ehdr& header) {
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

std::uint64_t ElfSegments::offsetOf(std::uint64_t address, std::uint64_t size, const char* what) const {
    for (const Elf64_Phdr& segment : all) {
        if (segment.p_type != PT_LOAD || address < segment.p_vaddr) continue;
        const std::uint64_t into = address - segment.p_vaddr;
        if (into <= segment.p_filesz && size <= segment.p_filesz - into) return segment.p_offset + into;
    }
    refuseDamaged(std::string("its ") + what + " lies outside of the segments");
}

std::uint64_t ElfSegments::bytesFrom(std::uint64_t address) const {
    for (const Elf64_Phdr& segment : all)
        if (segment.p_type == PT_LOAD && address >= segment.p_vaddr &&
            address - segment.p_vaddr <= segment.p_filesz)
            return segment.p_filesz - (address - segment.p_vaddr);
    return 0;
}

bool ElfSegments::isWritable(std::uint64_t address, std::uint64_t size) const {
    return std::any_of(all.begin(), all.end(), [&](const Elf64_Phdr& segment) {
        return segment.p_type == PT_LOAD && (segment.p_flags & PF_W) != 0 && address >= segment.p_vaddr &&
               size <= segment.p_memsz && address - segment.p_vaddr <= segment.p_memsz - size;
    });
}

bool ElfSegments::isInside(std::uint64_t address) const {
    return std::any_of(all.begin(), all.end(), [&](const Elf64_Phdr& segment) {
        return segment.p_type == PT_LOAD && address <= segment.p_vaddr + segment.p_memsz;
    });
}

const Elf64_Phdr& ElfSegments::dynamic() const {
    const auto found =
        std::find_if(all.begin(), all.end(), [](const Elf64_Phdr& s) { return s.p_type == PT_DYNAMIC; });
    if (found == all.end()) refuseDamaged("no dynamic table");
    return *found;
}

} // namespace workbench

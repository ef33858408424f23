// SPDX-License-Identifier: Apache-2.0
#include "workbench/platform/ElfRelocations.h"

namespace workbench {
namespace {

#if defined(__x86_64__)
constexpr std::uint64_t Relative = R_X86_64_RELATIVE;
#else
constexpr std::uint64_t Relative = R_AARCH64_RELATIVE;
#endif

constexpr char What[] = "relocation table";

} // namespace

void ElfRelocations::note(const Elf64_Dyn& entry) {
    const std::uint64_t value = entry.d_un.d_val;
    switch (entry.d_tag) {
    case DT_RELA:
        tables[0].address = value;
        break;
    case DT_RELASZ:
        tables[0].size = value;
        break;
    case DT_JMPREL:
        tables[1].address = value;
        break;
    case DT_PLTRELSZ:
        tables[1].size = value;
        break;
    case DT_TEXTREL:
        changesCode = true;
        break;
    case DT_FLAGS:
        changesCode = changesCode || (value & DF_TEXTREL) != 0;
        break;
    default:
        break;
    }
}

void ElfRelocations::check(const ElfImage& image, const ElfSegments& segments,
                           std::uint64_t symbolCount) const {
    constexpr std::uint64_t Word = 8;
    for (const Table& table : tables) {
        if (table.size == 0) continue;
        const std::uint64_t offset = segments.offsetOf(table.address, table.size, What);
        for (const auto& entry : image.table<Elf64_Rela>(offset, table.size / sizeof(Elf64_Rela), What)) {
            const std::uint64_t type = ELF64_R_TYPE(entry.r_info), symbol = ELF64_R_SYM(entry.r_info);
            if (type == 0) continue; // does nothing
            if (!changesCode && !segments.isWritable(entry.r_offset, Word))
                refuseDamaged("a relocation changes memory that is not the library's own");
            if (symbolCount != 0 && symbol >= symbolCount)
                refuseDamaged("a relocation uses a symbol that is not there");
            if (type == Relative && !segments.isInside(static_cast<std::uint64_t>(entry.r_addend)))
                refuseDamaged("a relocation leads out of the library");
        }
    }
}

} // namespace workbench

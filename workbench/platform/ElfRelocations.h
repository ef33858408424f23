// SPDX-License-Identifier: Apache-2.0
// What the loader changes in a library when it maps it. It does so without looking: one wrong place, and it
// reads or writes somewhere in the host.
#pragma once

#include "workbench/platform/ElfImage.h"

#include <array>
#include <cstdint>

#include <elf.h>

namespace workbench {

/// The relocation tables of a library, as its dynamic table names them.
class ElfRelocations {
public:
    /// Keeps an entry of the dynamic table if it is about relocations.
    void note(const Elf64_Dyn& entry);

    /// Refuses a library whose tables lie outside of it, or one of whose entries changes memory that is not
    /// the library's own to write, uses a symbol beyond `symbolCount` (0: unknown), or leads outside of the
    /// library by an address of its own. Libraries with relocated code, which are rare, may change that too.
    void check(const ElfImage& image, const ElfSegments& segments, std::uint64_t symbolCount) const;

private:
    struct Table {
        std::uint64_t address = 0, size = 0;
    };

    std::array<Table, 2> tables; ///< of data, and of functions
    bool changesCode = false;
};

} // namespace workbench

// SPDX-License-Identifier: Apache-2.0
// What a library file says about how it was linked.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace workbench::validate {

/// Read without running any of the file.
struct ElfDetails {
    std::uintmax_t size = 0;                ///< bytes of the file
    bool threadLocals = false;              ///< it has variables of each thread
    bool executableStack = false;           ///< it asks for a stack that can be executed
    bool textRelocations = false;           ///< loading it changes its code
    bool readOnlyRelocations = false;       ///< what loading has filled in is protected afterwards
    bool bindsNow = false;                  ///< all symbols are resolved while it is loaded
    std::vector<std::string> searchFolders; ///< where it looks for other libraries
    std::vector<std::string> imports;       ///< symbols that it takes from others

    /// Reads a file that ElfFile::inspect has found usable. Throws std::runtime_error for one that is not.
    [[nodiscard]] static ElfDetails read(const std::filesystem::path& path);
};

} // namespace workbench::validate

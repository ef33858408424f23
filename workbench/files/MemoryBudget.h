// SPDX-License-Identifier: Apache-2.0
// Memory budget for the content of a file.
#pragma once

#include "workbench/files/Export.h"
#include "workbench/files/InputMemory.h"

#include <cstdint>
#include <filesystem>

namespace workbench {

/// What may be held in memory, in bytes.
struct KROD_FILES_API MemoryBudget {
    std::uint64_t allowed = inputMemory() + memoryBesideInput(); ///< for everything
    std::uint64_t held = memoryBesideInput();                    ///< beside the file's content

    /// What is left for the content.
    [[nodiscard]] std::uint64_t left() const noexcept { return allowed - (held < allowed ? held : allowed); }
    /// Throws Failure(Output), which names what to allow, where `needed` bytes of content do not fit.
    void require(const std::filesystem::path& path, std::uint64_t needed) const;
    /// Throws that failure.
    [[noreturn]] void refuse(const std::filesystem::path& path, std::uint64_t needed) const;
};

} // namespace workbench

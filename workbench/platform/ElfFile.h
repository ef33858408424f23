// SPDX-License-Identifier: Apache-2.0
// Reading a library file before any of its code can run: is it whole, is it for this machine, what does it
// export?
#pragma once

#include "workbench/report/Failure.h"

#include <filesystem>
#include <string>
#include <vector>

namespace workbench {

/// Why a file is not a library that this program may load.
enum class ElfProblem {
    None,           ///< it may be loaded
    RelativePath,   ///< the path is not absolute
    Unreadable,     ///< missing, or not permitted
    NotRegularFile, ///< a directory, a device, a pipe or a socket
    TooLarge,       ///< more than ElfFile::MaximumSize bytes
    NotElf,         ///< another kind of file
    WrongClass,     ///< a library for 32-bit programs
    WrongMachine,   ///< a library for another processor or byte order
    NotShared,      ///< a program or an object file, not a library
    Truncated,      ///< something in it lies beyond the end of the file
    Damaged,        ///< its tables contradict themselves
};

/// What reading a library file has found.
struct ElfFile {
    static constexpr std::size_t MaximumSize = std::size_t{256} << 20;

    ElfProblem problem = ElfProblem::None;
    Diagnostic refusal;                     ///< the sentence why not; `who` is the path; empty if usable
    std::vector<std::string> exportedNames; ///< symbols that the library defines for others, sorted
    std::vector<std::string> uniqueNames;   ///< those of them that keep the library loaded for ever

    [[nodiscard]] bool usable() const noexcept { return problem == ElfProblem::None; }

    /// Reads and checks the file without running any of it. Never blocks on pipes or devices and never throws
    /// for what the file holds (only std::bad_alloc). Every truncation is found, damage inside of code is
    /// not: who wants to be safe from that loads the library in a child process first.
    [[nodiscard]] static ElfFile inspect(const std::filesystem::path& path);
};

} // namespace workbench

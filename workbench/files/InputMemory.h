// SPDX-License-Identifier: Apache-2.0
// How much memory reading a file may take.
#pragma once

#include "workbench/files/Export.h"

#include <cstdint>

namespace workbench {

/// For everything that this process reads from now on, in bytes: beside what it has mapped already, and beside
/// what the program holds otherwise, which counts only where people are told what to allow.
KROD_FILES_API void setInputMemory(std::uint64_t bytes, std::uint64_t beside = 0) noexcept;
/// What the program holds otherwise.
[[nodiscard]] KROD_FILES_API std::uint64_t memoryBesideInput() noexcept;
/// What was set, 64 GiB unless something was.
[[nodiscard]] KROD_FILES_API std::uint64_t inputMemory() noexcept;

} // namespace workbench

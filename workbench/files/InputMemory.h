// SPDX-License-Identifier: Apache-2.0
// How much memory reading a file may take.
#pragma once

#include "workbench/files/Export.h"

#include <cstdint>

namespace workbench {

/// For everything that this process reads from now on, beside what it has mapped already, in bytes.
KROD_FILES_API void setInputMemory(std::uint64_t bytes) noexcept;
/// What was set, 64 GiB unless something was.
[[nodiscard]] KROD_FILES_API std::uint64_t inputMemory() noexcept;

} // namespace workbench

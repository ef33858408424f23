// SPDX-License-Identifier: Apache-2.0
// Files that may be packed by gzip.
#pragma once

#include "workbench/files/MemoryBudget.h"

#include <cstddef>
#include <filesystem>
#include <string>

namespace workbench {

/// The first `size` bytes of the file, or all of a shorter one, unpacked. It is empty where nothing can be read.
[[nodiscard]] std::string startOfFile(const std::filesystem::path& path, std::size_t size);

/// The whole file, unpacked. Throws Failure(Input) for one that cannot be read to its end, and what the budget
/// throws for one that it leaves no room for.
[[nodiscard]] std::string wholeFile(const std::filesystem::path& path, const MemoryBudget& budget);

} // namespace workbench

// SPDX-License-Identifier: Apache-2.0
// What an input file holds.
#pragma once

#include "workbench/files/Export.h"

#include <filesystem>
#include <optional>

namespace workbench {

/// The three kinds of input.
enum class InputKind { Picture, Model, Points };

/// Refuses what is missing, a folder, a pipe, a device, not readable or empty: Failure(Input) with a
/// sentence.
KROD_FILES_API void checkInputFile(const std::filesystem::path& path);

/// As classifyInput, and nothing for a file of no kind that can be read.
[[nodiscard]] KROD_FILES_API std::optional<InputKind> kindOf(const std::filesystem::path& path);

/// Decides by extension, and by content for PLY files (points when there are no faces) and unknown
/// extensions. Failure(Input) as `checkInputFile`, or when the file is of no kind that can be read.
[[nodiscard]] KROD_FILES_API InputKind classifyInput(const std::filesystem::path& path);

} // namespace workbench

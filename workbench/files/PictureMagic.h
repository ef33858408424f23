// SPDX-License-Identifier: Apache-2.0
// Picture formats that are read without OpenImageIO, known by their first bytes.
#pragma once

#include "workbench/files/Export.h"

#include <filesystem>

namespace workbench {

/// A format with a reader of its own.
enum class OwnFormat { None, Exr, Png, Jpeg };

/// The format by the first bytes of the file; None where it is another one or cannot be read.
[[nodiscard]] KROD_FILES_API OwnFormat ownFormatOf(const std::filesystem::path& path);

} // namespace workbench

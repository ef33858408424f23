// SPDX-License-Identifier: Apache-2.0
// Whether files are still what they were, without reading them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace workbench {

/// A line with path, size in bytes and time of the last change; a file that is not there has neither.
[[nodiscard]] std::string fileStamp(const std::filesystem::path& file);

/// All files *.frag in these folders, in the order of the folders and of the files' names.
[[nodiscard]] std::vector<std::filesystem::path>
shaderFilesIn(const std::vector<std::filesystem::path>& folders);

/// The stamps of all files *.frag in these folders, in the order of the folders and of the files' names.
[[nodiscard]] std::string shaderFileStamps(const std::vector<std::filesystem::path>& folders);

} // namespace workbench

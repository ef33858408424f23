// SPDX-License-Identifier: Apache-2.0
// The shader files with which users replace the texts of modules.
#pragma once

#include "host/Export.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

/// A file that took the place of a module's text.
struct ShaderFile {
    std::string name; ///< as the module asks for it: "CMYK.frag"
    std::filesystem::path path;
};

/// Larger files are not shaders.
inline constexpr std::size_t LargestShaderFile = std::size_t{64} << 10;

/// The folders in which krod::Programmable::OptionalFileRead looks, the first one first; for all threads.
/// Relative folders and empty names are left out: what is found never depends on the current directory.
KROD_API void setShaderFolders(const std::vector<std::filesystem::path>& folders);

/// The folders of the environment: those of KROD_SHADER_PATH, with colons between them, then "krod/shaders"
/// in the user's data folder (XDG_DATA_HOME, or .local/share in the home).
[[nodiscard]] KROD_API std::vector<std::filesystem::path> environmentShaderFolders();

/// Which files have won so far, by name.
[[nodiscard]] KROD_API std::vector<ShaderFile> usedShaderFiles();

/// The names that modules have asked for so far, in the order of the alphabet.
[[nodiscard]] KROD_API std::vector<std::string> askedShaderFiles();

/// The end of a composed text, which a user's file of that name replaces.
struct ReplaceablePart {
    std::string name;
    std::size_t offset = 0; ///< where it begins
};

/// The part of a text that was taken from OptionalFileRead, be it a file's or the module's own.
[[nodiscard]] KROD_API std::optional<ReplaceablePart> findReplaceablePart(const std::string& text);

/// A user's file within a composed text.
struct ShaderFileInText {
    std::filesystem::path path;
    std::size_t offset = 0; ///< where it begins
};

/// The file that the text ends with, if one of those that have won does.
[[nodiscard]] std::optional<ShaderFileInText> findShaderFile(const std::string& text);

} // namespace workbench

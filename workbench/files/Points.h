// SPDX-License-Identifier: Apache-2.0
// Point lists.
#pragma once

#include "workbench/files/Export.h"

#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <cstdint>
#include <filesystem>
#include <vector>

namespace workbench {

/// Points with their colours, which may lie far above 1.
struct PointSet {
    std::vector<glm::vec3> positions;
    std::vector<glm::vec4> colours;  ///< one for each position; white where the file has none
    std::uint64_t droppedPoints = 0; ///< points left out, because a number of theirs is not finite
};

/// Reads a point list:
/// - PLY, ASCII or binary, by property names: x y z, red green blue alpha (or r g b a), intensity.
///   Integer colours are divided by the maximum of their type.
/// - Text with names of that kind in its first line, other columns being ignored; without names 3 columns
///   are x y z, 4 x y z intensity, 6 x y z r g b, 7 with alpha, 8 with alpha and intensity. Colours are
///   taken as they are. Semicolons, commas or blanks separate, whichever the first line has; lines with #
///   or // are comments.
/// The intensity is taken as it is and multiplies red, green and blue. Errors are Failure(Input), in text
/// with line and column.
[[nodiscard]] KROD_FILES_API PointSet readPoints(const std::filesystem::path& path);

} // namespace workbench

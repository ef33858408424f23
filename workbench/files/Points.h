// SPDX-License-Identifier: Apache-2.0
// Point lists.
#pragma once

#include "workbench/files/Export.h"
#include "workbench/files/MemoryBudget.h"

#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace workbench {

/// Points with their colours, which may lie far above 1.
struct PointSet {
    /// Where in the file's coordinates the positions have their 0. It is 0 there, too, unless the points lie far
    /// from it and close together, like those of maps: as single-precision numbers they would fall onto each
    /// other.
    glm::dvec3 origin{0};
    std::vector<glm::vec3> positions;
    glm::dvec3 low{0}, high{0};       ///< corners of the box around the points, in the file's coordinates
    std::vector<glm::vec4> colours;   ///< one for each position; white where the file has none
    std::uint64_t droppedPoints = 0;  ///< points left out, because a number of theirs is not finite
    bool hasEightBitColours = false;  ///< colours were numbers up to 255 and are divided by 255
    std::vector<std::string> columns; ///< what the columns in use mean, as "x", "red" or "intensity"
    std::vector<std::string> unusedColumns; ///< names of the others
};

/// Reads a point list, as docs/guide/points.md describes:
/// - PLY, ASCII or binary, by property names: x y z, red green blue alpha (or r g b a), intensity.
///   Integer colours are divided by the maximum of their type.
/// - Text with names of that kind in its first line or in a comment before it, other columns being ignored;
///   without names 3 columns are x y z, 4 x y z intensity, 6 x y z r g b, 7 with alpha, 8 with alpha and
///   intensity. Semicolons, commas, tabs or blanks separate, whichever the first line has; lines with # or //
///   are comments.
/// Colours that are all whole numbers up to 255 are divided by 255; others are taken as they are. The
/// intensity is taken as it is and multiplies red, green and blue. Files packed by gzip are unpacked. Errors
/// are Failure(Input), in text with line and column; a file that needs more memory than the budget leaves is
/// Failure(Output).
[[nodiscard]] KROD_FILES_API PointSet readPoints(const std::filesystem::path& path,
                                                 const MemoryBudget& budget = {});

} // namespace workbench

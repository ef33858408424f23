// SPDX-License-Identifier: Apache-2.0
// One point after the other, from named numbers.
#pragma once

#include "workbench/files/Points.h"

#include <array>
#include <optional>
#include <string_view>

namespace workbench {

/// The numbers that make up a point, in the order of columns without names.
enum class PointField { X, Y, Z, Red, Green, Blue, Alpha, Intensity };

inline constexpr std::size_t PointFields = 8;

/// The field of that name, in any case: "x", "red" or "r", "intensity" …
[[nodiscard]] std::optional<PointField> pointField(std::string_view name);

/// The values of one point; those that a file does not have keep these.
using PointValues = std::array<double, PointFields>;
inline constexpr PointValues DefaultPoint{0, 0, 0, 1, 1, 1, 1, 1};

/// Appends the point, or counts it as dropped when one of its numbers is not finite as a float.
void appendPoint(const PointValues& values, PointSet& points);

} // namespace workbench

// SPDX-License-Identifier: Apache-2.0
// One point after the other, from named numbers.
#pragma once

#include "workbench/files/Points.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace workbench {

/// The numbers that make up a point, in the order of columns without names.
enum class PointField { X, Y, Z, Red, Green, Blue, Alpha, Intensity };

inline constexpr std::size_t PointFields = 8;

/// The field of that name, in any case: "x", "red" or "r", "intensity" …
[[nodiscard]] std::optional<PointField> pointField(std::string_view name);

/// The values of one point; those that a file does not have keep these.
using PointValues = std::array<double, PointFields>;
inline constexpr PointValues DefaultPoint{0, 0, 0, 1, 1, 1, 1, 1};

/// The name of a field, "x" or "red".
[[nodiscard]] std::string nameOf(PointField field);

/// Collects points. Positions keep double precision until it is known where all of them lie.
class PointBuilder {
public:
    /// Colours are divided by `scale`, unless they turn out to be whole numbers up to 255.
    explicit PointBuilder(double scale = 1) : colourScale(scale) {}

    void reserve(std::size_t count);
    /// Adds the point, or counts it as dropped when one of its numbers is not finite as a float.
    void add(const PointValues& values);
    /// The points so far; the builder is empty afterwards.
    [[nodiscard]] PointSet take();

private:
    void scaleColours();

    PointSet set;
    std::vector<glm::dvec3> places;
    double colourScale, largestColour = 0, largestAlpha = 0;
    bool areColoursBytes = true; ///< whole numbers from 0 to 255, as far as they are known
};

} // namespace workbench

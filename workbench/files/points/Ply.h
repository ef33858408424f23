// SPDX-License-Identifier: Apache-2.0
// PLY files: their head, and the points of those without faces.
#pragma once

#include "workbench/files/Points.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace workbench {

enum class PlyFormat { Ascii, LittleEndian, BigEndian };
enum class PlyType { Int8, UInt8, Int16, UInt16, Int32, UInt32, Float, Double };

/// One value, or a list of values, of each entry of an element.
struct PlyProperty {
    std::string name;
    PlyType type = PlyType::Float;
    bool isList = false;
    PlyType countType = PlyType::UInt8; ///< of the length of a list
};

struct PlyElement {
    std::string name;
    std::uint64_t count = 0;
    std::vector<PlyProperty> properties;
};

struct PlyHeader {
    PlyFormat format = PlyFormat::Ascii;
    std::vector<PlyElement> elements;
    std::size_t size = 0;    ///< bytes up to the data
    std::uint64_t lines = 0; ///< lines up to the data

    /// True when the file holds triangles of any kind, so that it is a model.
    [[nodiscard]] bool hasFaces() const;
};

/// True for the start of a PLY file, whatever ends its lines.
[[nodiscard]] bool looksLikePly(std::string_view start);

/// Enough of a file's start for any sensible head.
inline constexpr std::size_t LongestPlyHeader = std::size_t{64} << 10;

/// Reads the head at the start of `text`; Failure(Input) names line and column.
[[nodiscard]] PlyHeader readPlyHeader(const std::filesystem::path& path, std::string_view text);

/// Reads the points of the whole file `bytes`.
[[nodiscard]] PointSet readPlyPoints(const std::filesystem::path& path, std::string_view bytes);

} // namespace workbench

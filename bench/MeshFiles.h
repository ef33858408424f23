// SPDX-License-Identifier: Apache-2.0
// Models of any size, for both sides of a comparison.
#pragma once

#include <cstdint>
#include <string>

namespace bench {

/// Writes a ring with waves on it as binary PLY, with normals: about that many triangles. Throws std::runtime_error.
void writeRing(const std::string& path, std::uint32_t triangles);

/// Writes points of a ball of radius 1 as binary PLY. Throws std::runtime_error.
void writePoints(const std::string& path, std::uint32_t points);

} // namespace bench

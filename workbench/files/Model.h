// SPDX-License-Identifier: Apache-2.0
// Triangle models.
#pragma once

#include "workbench/files/Export.h"

#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <vector>

namespace workbench {

/// Triangles of one material, in the coordinates of the whole model.
struct Mesh {
    std::vector<glm::vec3> positions;
    std::vector<glm::vec3> normals;       ///< one for each position, of length 1 (or 0 where there is none)
    std::vector<glm::vec4> colours;       ///< one for each position, or empty
    std::vector<std::uint32_t> triangles; ///< three places in `positions` for each
    glm::vec4 materialColour{1.0F};       ///< to be multiplied with the colours
};

/// All meshes of a file, with the transforms of its nodes applied.
struct Model {
    std::vector<Mesh> meshes;
    std::uint64_t droppedVertices =
        0; ///< vertices that were left out, with their triangles, since place or colour is not finite
};

/// What the import of one model may take.
struct ModelLimits {
    std::chrono::milliseconds time{20000};
    std::uint64_t memory = std::uint64_t{2} << 30; ///< bytes
};

/// Reads a model of any format that assimp knows. Missing normals are made smooth. The import runs in a child
/// process, because a broken file can make an importer hang, crash or take all memory; each of these, an
/// unreadable file and a file without triangles is Failure(Input).
[[nodiscard]] KROD_FILES_API Model readModel(const std::filesystem::path& path,
                                             const ModelLimits& limits = {});

} // namespace workbench

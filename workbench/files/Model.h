// SPDX-License-Identifier: Apache-2.0
// Triangle models.
#pragma once

#include "workbench/files/Export.h"
#include "workbench/files/MemoryBudget.h"

#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
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
    std::uint64_t leftOutTextures = 0; ///< pictures on its materials, which are not drawn
};

/// Memory that a mesh holds.
[[nodiscard]] KROD_FILES_API std::uint64_t bytesOf(const Mesh& mesh) noexcept;

/// What the import of one model may take.
struct ModelLimits {
    /// 0 stands for as many seconds as the environment variable KROD_MODEL_SECONDS says, or for 20 and one more
    /// for each megabyte of the file.
    std::chrono::milliseconds time{0};
    MemoryBudget memory = {};
};

/// Reads a model of any format that assimp knows. Missing normals are made smooth. The import runs in a child
/// process, because a broken file can make an importer hang, crash or take all memory; a hang, a crash, an
/// unreadable file and a file without triangles are Failure(Input). A model that needs more memory than the
/// budget leaves is Failure(Output), which names what to allow.
[[nodiscard]] KROD_FILES_API Model readModel(const std::filesystem::path& path,
                                             const ModelLimits& limits = {});

/// The extensions of all formats that assimp reads, without the point, in the order of the alphabet. Throws
/// Failure(Input) where it is not installed.
[[nodiscard]] KROD_FILES_API std::vector<std::string> modelExtensions();

} // namespace workbench

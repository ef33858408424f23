// SPDX-License-Identifier: Apache-2.0
// Models through assimp, in a library of its own that is opened on first use.
#include "workbench/files/codec/ModelCodec.h"

#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/material.h>
#include <assimp/mesh.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <set>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

namespace workbench {
namespace {

/// ValidateDataStructure is left out, since it refuses what has no faces; indices are checked below instead.
constexpr unsigned Steps = aiProcess_Triangulate | aiProcess_JoinIdenticalVertices | aiProcess_SortByPType |
                           aiProcess_GenSmoothNormals;

glm::vec3 vector(const aiVector3D& v) { return {v.x, v.y, v.z}; }
glm::vec4 colour(const aiColor4D& c) { return {c.r, c.g, c.b, c.a}; }

bool isFinite(const glm::vec3& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

bool isFinite(const glm::vec4& v) { return isFinite(glm::vec3(v)) && std::isfinite(v.w); }

/// White for colours that cannot be: the importer makes some of -1 where old Blender files have none.
glm::vec4 colourOrWhite(const aiColor4D& c) {
    const bool isColour = isFinite(colour(c)) && std::min({c.r, c.g, c.b, c.a}) >= 0;
    return isColour ? colour(c) : glm::vec4(1.0F);
}

/// White where the file names no material, for the importer's own grey would darken the colours of the vertices,
/// and where its colour is not finite.
glm::vec4 materialColour(const aiScene& scene, unsigned index) {
    if (index >= scene.mNumMaterials) return glm::vec4(1.0F);
    const aiMaterial& material = *scene.mMaterials[index];
    aiString name;
    if (material.Get(AI_MATKEY_NAME, name) == aiReturn_SUCCESS &&
        std::string_view(name.C_Str()) == AI_DEFAULT_MATERIAL_NAME)
        return glm::vec4(1.0F);
    aiColor4D diffuse;
    const bool found = material.Get(AI_MATKEY_COLOR_DIFFUSE, diffuse) == aiReturn_SUCCESS ||
                       material.Get(AI_MATKEY_BASE_COLOR, diffuse) == aiReturn_SUCCESS;
    return found ? colourOrWhite(diffuse) : glm::vec4(1.0F);
}

/// How many different pictures the materials of the meshes name or hold.
std::uint64_t texturesOf(const aiScene& scene) {
    std::set<std::string> paths;
    std::set<unsigned> materials;
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) materials.insert(scene.mMeshes[i]->mMaterialIndex);
    for (const unsigned index : materials) {
        if (index >= scene.mNumMaterials) continue;
        for (int type = aiTextureType_NONE; type <= AI_TEXTURE_TYPE_MAX; ++type) {
            const auto kind = static_cast<aiTextureType>(type);
            for (unsigned i = 0; i < scene.mMaterials[index]->GetTextureCount(kind); ++i) {
                aiString path;
                if (scene.mMaterials[index]->GetTexture(kind, i, &path) == aiReturn_SUCCESS)
                    paths.insert(path.C_Str());
            }
        }
    }
    return paths.size();
}

/// Copies one mesh through a node's transform and leaves out what is not finite.
class Flattener {
public:
    Flattener(const aiMesh& from, const aiMatrix4x4& place) : source(from), transform(place), linear(place) {
        // Normals go with the inverse transpose; a flattening transform has none, and its normals stay as
        // they are.
        normalTransform =
            std::abs(linear.Determinant()) > 0 ? aiMatrix3x3(linear).Inverse().Transpose() : linear;
    }

    Mesh mesh(std::uint64_t& dropped) {
        newPlaces.assign(source.mNumVertices, Missing);
        for (unsigned i = 0; i < source.mNumVertices; ++i) copyVertex(i, dropped);
        for (unsigned i = 0; i < source.mNumFaces; ++i) copyFace(source.mFaces[i]);
        return std::move(result);
    }

private:
    static constexpr std::uint32_t Missing = std::numeric_limits<std::uint32_t>::max();

    void copyVertex(unsigned i, std::uint64_t& dropped) {
        const glm::vec3 position = vector(transform * source.mVertices[i]);
        if (!isFinite(position)) {
            ++dropped;
            return;
        }
        newPlaces[i] = static_cast<std::uint32_t>(result.positions.size());
        result.positions.push_back(position);
        const glm::vec3 normal =
            source.mNormals ? vector(normalTransform * source.mNormals[i]) : glm::vec3(0.0F);
        const float length = glm::length(normal);
        result.normals.push_back(std::isfinite(length) && length > 0 ? normal / length : glm::vec3(0.0F));
        if (source.mColors[0]) result.colours.push_back(colourOrWhite(source.mColors[0][i]));
    }

    void copyFace(const aiFace& face) {
        if (face.mNumIndices != 3) return;
        std::uint32_t corners[3];
        for (unsigned i = 0; i < 3; ++i) {
            if (face.mIndices[i] >= source.mNumVertices)
                throw std::runtime_error("a face with a vertex that does not exist");
            corners[i] = newPlaces[face.mIndices[i]];
            if (corners[i] == Missing) return;
        }
        result.triangles.insert(result.triangles.end(), corners, corners + 3);
    }

    const aiMesh& source;
    aiMatrix4x4 transform;
    aiMatrix3x3 linear, normalTransform;
    std::vector<std::uint32_t> newPlaces;
    Mesh result;
};

/// Visits each mesh with triangles at each place that it has in the scene, with its transform.
template <class Visit>
void forEachMesh(const aiScene& scene, const Visit& visit) {
    std::vector<std::pair<const aiNode*, aiMatrix4x4>> open{
        {scene.mRootNode, scene.mRootNode->mTransformation}};
    while (!open.empty()) { // a list instead of recursion: files can nest deeper than the stack
        const auto [node, transform] = open.back();
        open.pop_back();
        for (unsigned i = 0; i < node->mNumMeshes; ++i) {
            if (node->mMeshes[i] >= scene.mNumMeshes)
                throw std::runtime_error("a node with a mesh that does not exist");
            const aiMesh& mesh = *scene.mMeshes[node->mMeshes[i]];
            if ((mesh.mPrimitiveTypes & aiPrimitiveType_TRIANGLE) && mesh.mVertices) visit(mesh, transform);
        }
        for (unsigned i = node->mNumChildren; i-- > 0;) // the first child is taken first
            open.emplace_back(node->mChildren[i], transform * node->mChildren[i]->mTransformation);
    }
}

/// What all meshes will hold at all their places.
std::uint64_t flattenedBytes(const aiScene& scene) {
    std::uint64_t bytes = 0;
    forEachMesh(scene, [&](const aiMesh& mesh, const aiMatrix4x4&) {
        const std::uint64_t vertex = 2 * sizeof(glm::vec3) + (mesh.mColors[0] ? sizeof(glm::vec4) : 0);
        bytes += mesh.mNumVertices * vertex + mesh.mNumFaces * 3 * sizeof(std::uint32_t);
    });
    return bytes;
}

Model flattened(const aiScene& scene) {
    Model model;
    forEachMesh(scene, [&](const aiMesh& source, const aiMatrix4x4& transform) {
        Mesh mesh = Flattener(source, transform).mesh(model.droppedVertices);
        mesh.materialColour = materialColour(scene, source.mMaterialIndex);
        if (!mesh.triangles.empty()) model.meshes.push_back(std::move(mesh));
    });
    return model;
}

/// Takes out the faces of a mesh with a vertex whose place or colour is not finite, before any step compares them:
/// a NaN passes for equal to any other number there, and its vertex would be joined with a sound one. Returns
/// the number of such vertices.
std::uint64_t dropInfinite(aiMesh& mesh) {
    std::vector<bool> broken(mesh.mNumVertices);
    std::uint64_t dropped = 0;
    for (unsigned i = 0; i < mesh.mNumVertices; ++i) {
        const bool soundColour = !mesh.mColors[0] || isFinite(colour(mesh.mColors[0][i]));
        if (soundColour && isFinite(vector(mesh.mVertices[i]))) continue;
        broken[i] = true;
        mesh.mVertices[i] = aiVector3D();
        if (!soundColour) mesh.mColors[0][i] = aiColor4D();
        ++dropped;
    }
    if (dropped == 0) return 0;
    unsigned kept = 0;
    for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
        aiFace& face = mesh.mFaces[i];
        const bool sound = std::none_of(face.mIndices, face.mIndices + face.mNumIndices, [&](unsigned index) {
            return index >= mesh.mNumVertices || broken[index];
        });
        if (!sound) continue;
        std::swap(mesh.mFaces[kept].mIndices, face.mIndices); // copying a face would copy its list
        std::swap(mesh.mFaces[kept].mNumIndices, face.mNumIndices);
        ++kept;
    }
    mesh.mNumFaces = kept;
    return dropped;
}

class AssimpCodec final : public ModelCodec {
public:
    [[nodiscard]] Model import(const std::filesystem::path& path, std::uint64_t memory) const override {
        std::uint64_t needed = bytesOfReading(path);
        try {
            return import(path, memory, needed);
        } catch (const std::bad_alloc&) {
            throw MemoryNeeded{needed};
        }
    }

    [[nodiscard]] std::vector<std::string> extensions() const override {
        aiString list; // "*.3ds;*.obj"
        Assimp::Importer().GetExtensionList(list);
        std::vector<std::string> names;
        std::istringstream in(list.C_Str());
        for (std::string pattern; std::getline(in, pattern, ';');)
            if (pattern.starts_with("*.")) names.push_back(pattern.substr(2));
        std::ranges::sort(names);
        return names;
    }

private:
    /// Keeps `needed` at what the step that it is at takes.
    static Model import(const std::filesystem::path& path, std::uint64_t memory, std::uint64_t& needed) {
        Assimp::Importer importer;
        const aiScene* scene = importer.ReadFile(path.string(), 0);
        if (!scene || !scene->mRootNode) fail(importer);
        needed = bytesOfSteps(*scene);
        std::uint64_t dropped = 0;
        for (unsigned i = 0; i < scene->mNumMeshes; ++i) dropped += dropInfinite(*scene->mMeshes[i]);
        scene = importer.ApplyPostProcessing(Steps);
        if (!scene || !scene->mRootNode) fail(importer);
        const std::uint64_t result = flattenedBytes(*scene);
        needed += 2 * result;
        if (result > memory / 2) throw std::bad_alloc(); // it is held twice while it is handed over
        Model model = flattened(*scene);
        model.droppedVertices += dropped;
        model.leftOutTextures = texturesOf(*scene);
        return model;
    }

    /// More than any format but packed ones was seen to take, with the steps behind.
    static std::uint64_t bytesOfReading(const std::filesystem::path& path) {
        constexpr std::uint64_t Factor = 45;
        std::error_code ignored;
        return Factor * std::filesystem::file_size(path, ignored);
    }

    /// As measured: joining vertices takes most.
    static std::uint64_t bytesOfSteps(const aiScene& scene) {
        constexpr std::uint64_t Usual = 450, WithNormals = 750; // of each vertex
        std::uint64_t bytes = 0;
        for (unsigned i = 0; i < scene.mNumMeshes; ++i)
            bytes += scene.mMeshes[i]->mNumVertices * (scene.mMeshes[i]->HasNormals() ? WithNormals : Usual);
        return bytes;
    }

    [[noreturn]] static void fail(const Assimp::Importer& importer) {
        const std::string reason = importer.GetErrorString();
        if (reason.find("bad_alloc") != std::string::npos) throw std::bad_alloc();
        throw std::runtime_error(reason);
    }
};

} // namespace
} // namespace workbench

extern "C" KROD_FILES_API const workbench::ModelCodec* krodModelCodec() {
    static const workbench::AssimpCodec codec;
    return &codec;
}

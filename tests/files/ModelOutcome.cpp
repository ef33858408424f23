// SPDX-License-Identifier: Apache-2.0
#include "ModelOutcome.h"

#include <glm/geometric.hpp>

#include <cerrno>
#include <cmath>

#include <sys/wait.h>

using namespace workbench;

namespace {

bool isFinite(const glm::vec4& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z) && std::isfinite(v.w);
}

void expectSound(const Mesh& mesh) {
    ASSERT_EQ(mesh.normals.size(), mesh.positions.size());
    ASSERT_TRUE(mesh.colours.empty() || mesh.colours.size() == mesh.positions.size());
    for (const auto index : mesh.triangles) ASSERT_LT(index, mesh.positions.size());
    for (const auto& position : mesh.positions) ASSERT_TRUE(isFinite(glm::vec4(position, 1)));
    for (const auto& colour : mesh.colours) ASSERT_TRUE(isFinite(colour));
    ASSERT_TRUE(isFinite(mesh.materialColour));
    for (const auto& normal : mesh.normals) {
        const float length = glm::length(normal);
        ASSERT_TRUE(length == 0 || std::abs(length - 1) < 1e-4F) << length;
    }
}

bool isOneLine(const std::string& line) { return line.find('\n') == std::string::npos && line.size() < 1000; }

} // namespace

std::size_t trianglesOf(const Model& model) {
    std::size_t count = 0;
    for (const auto& mesh : model.meshes) count += mesh.triangles.size() / 3;
    return count;
}

void expectSound(const Model& model) {
    ASSERT_FALSE(model.meshes.empty());
    for (const auto& mesh : model.meshes) expectSound(mesh);
}

std::string outcomeOfModel(const std::filesystem::path& path, const ModelLimits& limits) {
    std::string line;
    try {
        expectSound(readModel(path, limits));
    } catch (const Failure& failure) {
        line = failure.what();
        const bool isMemory = line.find(": needs more memory than is allowed") != std::string::npos;
        EXPECT_EQ(failure.fault(), isMemory ? Fault::Output : Fault::Input) << line.substr(0, 1000);
        EXPECT_TRUE(isOneLine(line)) << line.size() << " bytes: " << line.substr(0, 1000);
        EXPECT_TRUE(line.starts_with(path.string() + ": ")) << line.substr(0, 1000);
    }
    EXPECT_TRUE(::waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD) << "the child lives on";
    const auto has = [&](const char* part) { return line.find(part) != std::string::npos; };
    if (line.empty()) return "read";
    if (has("a crash of the importer") || has("sent no valid result")) return "crashed";
    if (has("no end after")) return "hung";
    return has("needs more memory than is allowed") ? "out of memory" : "refused";
}

// SPDX-License-Identifier: Apache-2.0
#include "MeshFiles.h"

#include <glm/geometric.hpp>
#include <glm/vec3.hpp>

#include <cmath>
#include <fstream>
#include <numbers>
#include <random>
#include <stdexcept>

namespace bench {
namespace {

constexpr double Turn = 2 * std::numbers::pi;

template <class Value>
void put(std::ostream& file, const Value& value) {
    file.write(reinterpret_cast<const char*>(&value), sizeof value);
}

std::ofstream begin(const std::string& path, std::uint32_t vertices, const char* properties) {
    std::ofstream file(path, std::ios::binary);
    file << "ply\nformat binary_little_endian 1.0\nelement vertex " << vertices << '\n' << properties;
    return file;
}

void finish(std::ofstream& file, const std::string& path) {
    if (!file.flush()) throw std::runtime_error(path + " could not be written");
}

/// A ring about the y axis whose tube swells and shrinks; u goes round the ring, v round the tube, both from 0 to 1.
glm::dvec3 ringPlace(double u, double v) {
    const double tube = 0.35 + 0.05 * std::sin(Turn * 12 * u) * std::sin(Turn * 4 * v);
    const double far = 1.0 + tube * std::cos(Turn * v);
    return {far * std::cos(Turn * u), far * std::sin(Turn * u), tube * std::sin(Turn * v)};
}

glm::dvec3 ringNormal(double u, double v) {
    constexpr double Step = 1e-5;
    return glm::normalize(glm::cross(ringPlace(u + Step, v) - ringPlace(u - Step, v),
                                     ringPlace(u, v + Step) - ringPlace(u, v - Step)));
}

} // namespace

void writeRing(const std::string& path, std::uint32_t triangles) {
    const auto around = static_cast<std::uint32_t>(std::lround(std::sqrt(triangles / 4.0)));
    const std::uint32_t along = 2 * around, vertices = around * along;
    auto file = begin(path, vertices,
                      "property float x\nproperty float y\nproperty float z\n"
                      "property float nx\nproperty float ny\nproperty float nz\n");
    file << "element face " << 2 * vertices << "\nproperty list uchar int vertex_indices\nend_header\n";
    for (std::uint32_t i = 0; i < along; ++i) {
        for (std::uint32_t j = 0; j < around; ++j) {
            const double u = static_cast<double>(i) / along, v = static_cast<double>(j) / around;
            put(file, glm::vec3(ringPlace(u, v)));
            put(file, glm::vec3(ringNormal(u, v)));
        }
    }
    const auto face = [&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        file.put(3);
        for (const std::uint32_t place : {a, b, c}) put(file, place);
    };
    for (std::uint32_t i = 0; i < along; ++i) {
        for (std::uint32_t j = 0; j < around; ++j) {
            const std::uint32_t here = i * around, next = (i + 1) % along * around, up = (j + 1) % around;
            face(here + j, next + j, next + up);
            face(here + j, next + up, here + up);
        }
    }
    finish(file, path);
}

void writePoints(const std::string& path, std::uint32_t points) {
    auto file = begin(path, points, "property float x\nproperty float y\nproperty float z\nend_header\n");
    std::mt19937 random(1);
    std::uniform_real_distribution<float> within(-0.577f, 0.577f);
    for (std::uint32_t i = 0; i < points; ++i)
        put(file, glm::vec3(within(random), within(random), within(random)));
    finish(file, path);
}

} // namespace bench

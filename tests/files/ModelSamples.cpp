// SPDX-License-Identifier: Apache-2.0
#include "ModelSamples.h"

#include "FilesTest.h"

#include <array>

namespace {

constexpr int Side = 5;

template <typename Value>
void add(std::string& bytes, Value value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

std::vector<std::array<int, 3>> vertices() {
    std::vector<std::array<int, 3>> all;
    for (int y = 0; y < Side; ++y)
        for (int x = 0; x < Side; ++x) all.push_back({x, y, x * y % 3});
    return all;
}

std::vector<std::array<int, 3>> triangles() {
    std::vector<std::array<int, 3>> all;
    for (int y = 0; y + 1 < Side; ++y)
        for (int x = 0; x + 1 < Side; ++x) {
            const int at = y * Side + x;
            all.push_back({at, at + 1, at + Side});
            all.push_back({at + 1, at + Side + 1, at + Side});
        }
    return all;
}

std::string words(const std::array<int, 3>& three, int first = 0) {
    return std::to_string(three[0] + first) + ' ' + std::to_string(three[1] + first) + ' ' +
           std::to_string(three[2] + first);
}

std::string obj() {
    std::string text;
    for (const auto& vertex : vertices()) text += "v " + words(vertex) + '\n';
    for (const auto& triangle : triangles()) text += "f " + words(triangle, 1) + '\n';
    return text;
}

std::string off() {
    std::string text = "OFF\n25 32 0\n";
    for (const auto& vertex : vertices()) text += words(vertex) + '\n';
    for (const auto& triangle : triangles()) text += "3 " + words(triangle) + '\n';
    return text;
}

std::string stlText() {
    const auto corners = vertices();
    std::string text = "solid hills\n";
    for (const auto& triangle : triangles()) {
        text += "facet normal 0 0 1\nouter loop\n";
        for (const int corner : triangle)
            text += "vertex " + words(corners[static_cast<std::size_t>(corner)]) + '\n';
        text += "endloop\nendfacet\n";
    }
    return text + "endsolid hills\n";
}

std::string stlBinary() {
    const auto corners = vertices();
    std::string bytes(80, ' ');
    add(bytes, static_cast<std::uint32_t>(triangles().size()));
    for (const auto& triangle : triangles()) {
        for (const float value : {0.0F, 0.0F, 1.0F}) add(bytes, value);
        for (const int corner : triangle)
            for (const int value : corners[static_cast<std::size_t>(corner)])
                add(bytes, static_cast<float>(value));
        add(bytes, std::uint16_t{0});
    }
    return bytes;
}

std::string plyHead(const std::string& format) {
    return "ply\nformat " + format +
           " 1.0\nelement vertex 25\nproperty float x\nproperty float y\nproperty float z\nproperty uchar "
           "red\n"
           "property uchar green\nproperty uchar blue\nelement face 32\nproperty list uchar int "
           "vertex_indices\n"
           "end_header\n";
}

std::string plyText() {
    std::string text = plyHead("ascii");
    for (const auto& vertex : vertices()) text += words(vertex) + " 255 128 0\n";
    for (const auto& triangle : triangles()) text += "3 " + words(triangle) + '\n';
    return text;
}

std::string plyBinary() {
    std::string bytes = plyHead("binary_little_endian");
    for (const auto& vertex : vertices()) {
        for (const int value : vertex) add(bytes, static_cast<float>(value));
        for (const int value : {255, 128, 0}) add(bytes, static_cast<std::uint8_t>(value));
    }
    for (const auto& triangle : triangles()) {
        add(bytes, std::uint8_t{3});
        for (const int corner : triangle) add(bytes, corner);
    }
    return bytes;
}

/// 25 positions of 12 bytes, then 96 indices of two.
std::string gltfBuffer() {
    std::string bytes;
    for (const auto& vertex : vertices())
        for (const int value : vertex) add(bytes, static_cast<float>(value));
    for (const auto& triangle : triangles())
        for (const int corner : triangle) add(bytes, static_cast<std::uint16_t>(corner));
    return bytes;
}

std::string base64(const std::string& bytes) {
    constexpr char Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    unsigned bits = 0, count = 0;
    for (const char byte : bytes) {
        bits = bits << 8 | static_cast<unsigned char>(byte);
        for (count += 8; count >= 6; count -= 6) text += Digits[bits >> (count - 6) & 63];
    }
    if (count > 0) text += Digits[bits << (6 - count) & 63];
    while (text.size() % 4 != 0) text += '=';
    return text;
}

std::string glb() {
    std::string json = gltfText(R"([{"mesh": 0}])", "");
    while (json.size() % 4 != 0) json += ' ';
    const std::string buffer = gltfBuffer();
    std::string bytes = "glTF";
    add(bytes, std::uint32_t{2});
    add(bytes, static_cast<std::uint32_t>(12 + 8 + json.size() + 8 + buffer.size()));
    add(bytes, static_cast<std::uint32_t>(json.size()));
    bytes += "JSON" + json;
    add(bytes, static_cast<std::uint32_t>(buffer.size()));
    return bytes + std::string("BIN\0", 4) + buffer;
}

std::string sample(const std::string& name) {
    std::ifstream in(packaged("/usr/share/assimp/models/" + name, "assimp-testmodels"), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

} // namespace

std::vector<std::string> modelFormats() {
    return {"obj", "stl", "stl_binary", "ply", "ply_binary", "off", "gltf", "glb", "3ds", "dae"};
}

std::string modelExtension(const std::string& format) { return format.substr(0, format.find('_')); }

std::string gltfText(const std::string& nodes, const std::string& buffer) {
    return R"({"asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [0]}], "nodes": )" + nodes + R"(,
 "meshes": [{"primitives": [{"attributes": {"POSITION": 0}, "indices": 1}]}],
 "accessors": [{"bufferView": 0, "componentType": 5126, "count": 25, "type": "VEC3", "min": [0, 0, 0],
                "max": [4, 4, 2]}, {"bufferView": 1, "componentType": 5123, "count": 96, "type": "SCALAR"}],
 "bufferViews": [{"buffer": 0, "byteLength": 300}, {"buffer": 0, "byteOffset": 300, "byteLength": 192}],
 "buffers": [{"byteLength": 492)" +
           (buffer.empty() ? "" : R"(, "uri": ")" + buffer + '"') + "}]}";
}

std::string modelBytes(const std::string& format) {
    if (format == "obj") return obj();
    if (format == "off") return off();
    if (format == "stl") return stlText();
    if (format == "stl_binary") return stlBinary();
    if (format == "ply") return plyText();
    if (format == "ply_binary") return plyBinary();
    if (format == "glb") return glb();
    if (format == "gltf")
        return gltfText(R"([{"mesh": 0}])", "data:application/octet-stream;base64," + base64(gltfBuffer()));
    return sample(format == "3ds" ? "3DS/cube_with_diffuse_texture.3DS" : "Collada/cube_triangulate.dae");
}

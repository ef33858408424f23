// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/model/ModelTransfer.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <stdexcept>

#include <sys/stat.h>
#include <unistd.h>

namespace workbench {
namespace {

enum class Kind : std::uint64_t { Model = 1, Message = 2, Memory = 3 };

/// Writes values and arrays one after the other; numbers in the machine's own form, since both ends are this
/// machine.
class Sender {
public:
    explicit Sender(int target) : descriptor(target) {}

    template <typename Value>
    void value(const Value& v) {
        bytes(&v, sizeof v);
    }
    template <typename Container>
    void array(const Container& values) {
        value(static_cast<std::uint64_t>(values.size()));
        bytes(values.data(), values.size() * sizeof(values[0]));
    }
    bool good = true;

private:
    void bytes(const void* data, std::size_t size) {
        const char* at = static_cast<const char*>(data);
        while (good && size > 0) {
            const ssize_t written = ::write(descriptor, at, size);
            if (written < 0 && errno == EINTR) continue;
            good = written > 0;
            if (!good) return;
            at += written;
            size -= static_cast<std::size_t>(written);
        }
    }
    int descriptor;
};

class Receiver {
public:
    explicit Receiver(int source) : descriptor(source) {
        struct stat status {};
        if (::fstat(source, &status) != 0 || ::lseek(source, 0, SEEK_SET) != 0) broken();
        left = static_cast<std::uint64_t>(status.st_size);
    }

    template <typename Value>
    Value value() {
        Value v;
        bytes(&v, sizeof v);
        return v;
    }
    template <typename Container>
    Container array() {
        const auto size = value<std::uint64_t>();
        if (size > left / sizeof(typename Container::value_type)) broken();
        Container values;
        values.resize(static_cast<std::size_t>(size));
        bytes(values.data(), values.size() * sizeof(typename Container::value_type));
        return values;
    }
    /// Nothing may be left.
    void end() const {
        if (left > 0) broken();
    }
    [[noreturn]] static void broken() {
        throw std::runtime_error("the importing process sent no valid result");
    }

private:
    void bytes(void* data, std::size_t size) {
        char* at = static_cast<char*>(data);
        if (size > left) broken();
        left -= size;
        while (size > 0) {
            const ssize_t got = ::read(descriptor, at, size);
            if (got < 0 && errno == EINTR) continue;
            if (got <= 0) broken();
            at += got;
            size -= static_cast<std::size_t>(got);
        }
    }
    int descriptor;
    std::uint64_t left = 0;
};

template <typename Vector>
bool areFinite(const std::vector<Vector>& vectors) {
    return std::all_of(vectors.begin(), vectors.end(), [](const Vector& vector) {
        bool finite = true;
        for (int i = 0; i < Vector::length(); ++i) finite = finite && std::isfinite(vector[i]);
        return finite;
    });
}

Mesh receiveMesh(Receiver& in) {
    Mesh mesh;
    mesh.positions = in.array<std::vector<glm::vec3>>();
    mesh.normals = in.array<std::vector<glm::vec3>>();
    mesh.colours = in.array<std::vector<glm::vec4>>();
    mesh.triangles = in.array<std::vector<std::uint32_t>>();
    mesh.materialColour = in.value<glm::vec4>();
    const std::size_t vertices = mesh.positions.size();
    const bool indicesFit = std::all_of(mesh.triangles.begin(), mesh.triangles.end(),
                                        [&](std::uint32_t index) { return index < vertices; });
    if (!indicesFit || !areFinite(mesh.positions) || !areFinite(mesh.normals) || !areFinite(mesh.colours) ||
        !areFinite(std::vector{mesh.materialColour}) || mesh.triangles.size() % 3 != 0 ||
        mesh.normals.size() != vertices || (!mesh.colours.empty() && mesh.colours.size() != vertices))
        Receiver::broken();
    return mesh;
}

} // namespace

bool sendResult(const ImportResult& result, int descriptor) {
    Sender out(descriptor);
    if (const auto* message = std::get_if<std::string>(&result)) {
        out.value(Kind::Message);
        out.array(*message);
        return out.good;
    }
    if (const auto* needed = std::get_if<MemoryNeeded>(&result)) {
        out.value(Kind::Memory);
        out.value(needed->bytes);
        return out.good;
    }
    const Model& model = std::get<Model>(result);
    out.value(Kind::Model);
    out.value(model.droppedVertices);
    out.value(model.leftOutTextures);
    out.value(static_cast<std::uint64_t>(model.meshes.size()));
    for (const auto& mesh : model.meshes) {
        out.array(mesh.positions);
        out.array(mesh.normals);
        out.array(mesh.colours);
        out.array(mesh.triangles);
        out.value(mesh.materialColour);
    }
    return out.good;
}

ImportResult receiveResult(int descriptor) {
    Receiver in(descriptor);
    const auto kind = in.value<Kind>();
    if (kind == Kind::Message) {
        auto message = in.array<std::string>();
        in.end();
        return message;
    }
    if (kind == Kind::Memory) {
        const MemoryNeeded needed{in.value<std::uint64_t>()};
        in.end();
        return needed;
    }
    if (kind != Kind::Model) Receiver::broken();
    Model model;
    model.droppedVertices = in.value<std::uint64_t>();
    model.leftOutTextures = in.value<std::uint64_t>();
    for (auto meshes = in.value<std::uint64_t>(); meshes > 0; --meshes)
        model.meshes.push_back(receiveMesh(in));
    in.end();
    return model;
}

} // namespace workbench

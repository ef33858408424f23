// SPDX-License-Identifier: Apache-2.0
#include "workbench/objects/MeshDrawing.h"

#include "workbench/objects/EnclosingSphere.h"

#include "host/gl/GLProgram.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <span>
#include <utility>

namespace workbench::objects {
namespace {

// Values of one's own instead of gl_FrontColor: that one is clamped to 1. Centroids, because at the rim of a
// triangle the middle of a pixel may lie outside, where colours overshoot.
constexpr char VertexText[] = R"(#version 120
centroid varying vec3 place, normal;
centroid varying vec4 colour;
void main() {
    vec4 eye = gl_ModelViewMatrix * gl_Vertex;
    place = eye.xyz / eye.w;
    normal = gl_NormalMatrix * gl_Normal;
    colour = gl_Color;
    gl_Position = gl_ProjectionMatrix * eye;
}
)";

constexpr char FragmentText[] = R"(#version 120
centroid varying vec3 place, normal;
centroid varying vec4 colour;
void main() {
    vec3 across = dot(normal, normal) > 1e-12 ? normal : cross(dFdx(place), dFdy(place));
    gl_FragColor = vec4(colour.rgb * abs(dot(normalize(across), normalize(place))), colour.a);
}
)";

void drawMesh(const Mesh& mesh) {
    glVertexPointer(3, GL_FLOAT, 0, mesh.positions.data());
    glNormalPointer(GL_FLOAT, 0, mesh.normals.data());
    if (mesh.colours.empty()) {
        glDisableClientState(GL_COLOR_ARRAY);
        glColor4fv(&mesh.materialColour.x);
    } else {
        glEnableClientState(GL_COLOR_ARRAY);
        glColorPointer(4, GL_FLOAT, 0, mesh.colours.data());
    }
    glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(mesh.triangles.size()), GL_UNSIGNED_INT,
                   mesh.triangles.data());
}

std::vector<std::span<const glm::vec3>> positionsOf(const std::vector<Mesh>& meshes) {
    std::vector<std::span<const glm::vec3>> positions;
    for (const Mesh& mesh : meshes) positions.emplace_back(mesh.positions);
    return positions;
}

bool isBlack(const Mesh& mesh) {
    const auto hasNoLight = [](const glm::vec4& colour) { return glm::vec3(colour) == glm::vec3(0); };
    return mesh.colours.empty() ? hasNoLight(mesh.materialColour)
                                : std::ranges::all_of(mesh.colours, hasNoLight);
}

} // namespace

MeshDrawing::MeshDrawing(Model model) : meshes(std::move(model.meshes)) {
    for (Mesh& mesh : meshes)
        for (glm::vec4& colour : mesh.colours) colour *= mesh.materialColour;
    sphere = enclosingSphere(positionsOf(meshes));
}

ContentFacts MeshDrawing::facts() const {
    ContentFacts facts;
    for (const Mesh& mesh : meshes) facts.bytes += bytesOf(mesh);
    facts.box = enclosingBox(positionsOf(meshes));
    facts.isBlack = std::ranges::all_of(meshes, isBlack);
    return facts;
}

void MeshDrawing::draw() const {
    krod::GLProgram program(VertexText, FragmentText, "mesh vertex shader", "mesh fragment shader");
    program.use();
    glDisable(GL_BLEND);
    glEnable(GL_DEPTH_TEST);
    glDepthMask(GL_TRUE);
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_NORMAL_ARRAY);
    for (const Mesh& mesh : meshes) drawMesh(mesh);
}

} // namespace workbench::objects

// SPDX-License-Identifier: Apache-2.0
#include "workbench/objects/PointDrawing.h"

#include "workbench/objects/EnclosingSphere.h"

#include "host/gl/GLProgram.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <utility>

namespace workbench::objects {
namespace {

// A value of one's own instead of gl_FrontColor: that one is clamped to 1. Drivers place points on a grid of
// parts of a pixel, 1/256 in Mesa, and halves of it are rounded up by Mesa 22 and to even by Mesa 25, so that one
// point in a thousand would cover other samples. Rounded here, each point has the same place with every driver.
constexpr char VertexText[] = R"(#version 120
uniform float intensity;
uniform float halfWidth;
uniform float halfHeight;
varying vec4 colour;
void main() {
    colour = vec4(gl_Color.rgb * intensity, gl_Color.a);
    vec4 place = gl_ModelViewProjectionMatrix * gl_Vertex;
    if (place.w > 0.0) {
        vec2 middle = vec2(halfWidth, halfHeight);
        vec2 pixels = floor((place.xy / place.w * middle + middle) * 256.0 + 0.5) / 256.0;
        place.xy = (pixels - middle) / middle * place.w;
    }
    gl_Position = place;
}
)";

constexpr char FragmentText[] = R"(#version 120
varying vec4 colour;
void main() {
    gl_FragColor = colour;
}
)";

} // namespace

PointDrawing::PointDrawing(PointSet points)
    : set(std::move(points)), sphere(enclosingSphere({set.positions})) {}

ContentFacts PointDrawing::facts() const {
    ContentFacts facts;
    facts.bytes = set.positions.size() * (sizeof(glm::vec3) + sizeof(glm::vec4));
    facts.origin = set.origin;
    facts.box = enclosingBox({set.positions});
    facts.isBlack =
        std::ranges::all_of(set.colours, [](const glm::vec4& c) { return glm::vec3(c) == glm::vec3(0); });
    return facts;
}

void PointDrawing::draw(double size, double intensity) const {
    krod::GLProgram program(VertexText, FragmentText, "point vertex shader", "point fragment shader");
    program.use();
    const bool reportMissing = program.reportsMissingUniforms();
    program.setUniformValuef("intensity", static_cast<float>(intensity), reportMissing);
    GLint viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
    program.setUniformValuef("halfWidth", static_cast<float>(viewport[2]) / 2, reportMissing);
    program.setUniformValuef("halfHeight", static_cast<float>(viewport[3]) / 2, reportMissing);
    glPointSize(static_cast<float>(std::max(size, 1.0)));
    glEnable(GL_DEPTH_TEST);
    glDepthMask(GL_FALSE);
    // Light adds up. Alpha tells how much of a pixel is covered, so it must not pass 1: the largest one
    // stays.
    glEnable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ONE);
    glBlendEquationSeparate(GL_FUNC_ADD, GL_MAX);
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, 0, set.positions.data());
    glEnableClientState(GL_COLOR_ARRAY);
    glColorPointer(4, GL_FLOAT, 0, set.colours.data());
    const auto count = static_cast<GLsizei>(set.positions.size());
    glDrawArrays(GL_POINTS, 0, count);
    // The depth comes second: in the first pass it would keep farther points from adding their light.
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    glDepthMask(GL_TRUE);
    glDrawArrays(GL_POINTS, 0, count);
}

} // namespace workbench::objects

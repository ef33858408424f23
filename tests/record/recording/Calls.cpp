// SPDX-License-Identifier: Apache-2.0
// The four functions of OpenGL that displays call.
#include "Recording.h"

#include <GL/gl.h>

#include <array>
#include <string>
#include <utility>

namespace {

std::string nameOf(GLenum value) {
    static constexpr std::array<std::pair<GLenum, const char*>, 9> Names = {{
        {GL_ALPHA_TEST, "GL_ALPHA_TEST"},
        {GL_COLOR_MATERIAL, "GL_COLOR_MATERIAL"},
        {GL_DEPTH_TEST, "GL_DEPTH_TEST"},
        {GL_LIGHTING, "GL_LIGHTING"},
        {GL_BLEND, "GL_BLEND"},
        {GL_ONE, "GL_ONE"},
        {GL_SRC_ALPHA, "GL_SRC_ALPHA"},
        {GL_ONE_MINUS_SRC_ALPHA, "GL_ONE_MINUS_SRC_ALPHA"},
        {GL_TEXTURE_2D, "GL_TEXTURE_2D"},
    }};
    for (const auto& [known, name] : Names)
        if (known == value) return name;
    return "number " + krod::VValueTrait<int>::Text(static_cast<int>(value));
}

void record(const std::string& function, const std::string& arguments) {
    recording::host().calls.add(function + '(' + arguments + ')');
}

} // namespace

void glEnable(GLenum cap) { record("glEnable", nameOf(cap)); }

void glDisable(GLenum cap) { record("glDisable", nameOf(cap)); }

void glDepthMask(GLboolean flag) { record("glDepthMask", flag == GL_FALSE ? "GL_FALSE" : "GL_TRUE"); }

void glBlendFunc(GLenum sfactor, GLenum dfactor) {
    record("glBlendFunc", nameOf(sfactor) + ", " + nameOf(dfactor));
}

// SPDX-License-Identifier: Apache-2.0
#include "workbench/validate/OpenGlCensus.h"

#include <epoxy/gl.h>

#include <array>
#include <utility>

namespace workbench::validate {
namespace {

using Named = std::pair<GLenum, const char*>;

constexpr unsigned MostName = 16384;
constexpr int TextureUnits = 8;

#define NAMED(name) Named(name, #name)
constexpr std::array Values = {NAMED(GL_VIEWPORT),
                               NAMED(GL_SCISSOR_BOX),
                               NAMED(GL_DEPTH_RANGE),
                               NAMED(GL_DEPTH_FUNC),
                               NAMED(GL_DEPTH_WRITEMASK),
                               NAMED(GL_DEPTH_CLEAR_VALUE),
                               NAMED(GL_COLOR_CLEAR_VALUE),
                               NAMED(GL_COLOR_WRITEMASK),
                               NAMED(GL_BLEND_SRC_RGB),
                               NAMED(GL_BLEND_DST_RGB),
                               NAMED(GL_BLEND_SRC_ALPHA),
                               NAMED(GL_BLEND_DST_ALPHA),
                               NAMED(GL_BLEND_EQUATION_RGB),
                               NAMED(GL_ALPHA_TEST_FUNC),
                               NAMED(GL_POLYGON_MODE),
                               NAMED(GL_CULL_FACE_MODE),
                               NAMED(GL_FRONT_FACE),
                               NAMED(GL_SHADE_MODEL),
                               NAMED(GL_POINT_SIZE),
                               NAMED(GL_LINE_WIDTH),
                               NAMED(GL_CURRENT_COLOR),
                               NAMED(GL_MATRIX_MODE),
                               NAMED(GL_PROJECTION_MATRIX),
                               NAMED(GL_MODELVIEW_MATRIX),
                               NAMED(GL_STENCIL_FUNC),
                               NAMED(GL_MODELVIEW_STACK_DEPTH),
                               NAMED(GL_PROJECTION_STACK_DEPTH),
                               NAMED(GL_ATTRIB_STACK_DEPTH),
                               NAMED(GL_ACTIVE_TEXTURE),
                               NAMED(GL_CURRENT_PROGRAM),
                               NAMED(GL_LIST_BASE),
                               NAMED(GL_DRAW_FRAMEBUFFER_BINDING),
                               NAMED(GL_READ_FRAMEBUFFER_BINDING),
                               NAMED(GL_RENDERBUFFER_BINDING),
                               NAMED(GL_VERTEX_ARRAY_BINDING),
                               NAMED(GL_ARRAY_BUFFER_BINDING),
                               NAMED(GL_UNIFORM_BUFFER_BINDING),
                               NAMED(GL_PIXEL_PACK_BUFFER_BINDING),
                               NAMED(GL_PIXEL_UNPACK_BUFFER_BINDING),
                               NAMED(GL_PACK_ALIGNMENT),
                               NAMED(GL_UNPACK_ALIGNMENT),
                               NAMED(GL_UNPACK_ROW_LENGTH)};

constexpr std::array Switches = {NAMED(GL_ALPHA_TEST),
                                 NAMED(GL_BLEND),
                                 NAMED(GL_CULL_FACE),
                                 NAMED(GL_DEPTH_TEST),
                                 NAMED(GL_DITHER),
                                 NAMED(GL_FOG),
                                 NAMED(GL_LIGHTING),
                                 NAMED(GL_SCISSOR_TEST),
                                 NAMED(GL_MULTISAMPLE),
                                 NAMED(GL_STENCIL_TEST),
                                 NAMED(GL_TEXTURE_2D),
                                 NAMED(GL_SAMPLE_MASK),
                                 NAMED(GL_CLIP_PLANE0),
                                 NAMED(GL_DEPTH_CLAMP),
                                 NAMED(GL_FRAMEBUFFER_SRGB),
                                 NAMED(GL_COLOR_LOGIC_OP),
                                 NAMED(GL_RASTERIZER_DISCARD),
                                 NAMED(GL_PRIMITIVE_RESTART)};
#undef NAMED

std::vector<double> valuesOf(GLenum name) {
    std::vector<double> values(16, -1);
    glGetDoublev(name, values.data());
    return values;
}

} // namespace

OpenGlState openGlState() {
    OpenGlState all;
    for (const auto& [name, text] : Values) all[text] = valuesOf(name);
    for (const auto& [name, text] : Switches) all[text] = {glIsEnabled(name) ? 1.0 : 0.0};
    const auto active = static_cast<GLenum>(all["GL_ACTIVE_TEXTURE"].front());
    for (int unit = 0; unit < TextureUnits; ++unit) {
        glActiveTexture(static_cast<GLenum>(GL_TEXTURE0 + unit));
        const std::string where = " of texture unit " + std::to_string(unit);
        all["GL_TEXTURE_BINDING_2D" + where] = valuesOf(GL_TEXTURE_BINDING_2D);
        all["GL_TEXTURE_BINDING_2D_MULTISAMPLE" + where] = valuesOf(GL_TEXTURE_BINDING_2D_MULTISAMPLE);
    }
    glActiveTexture(active);
    return all;
}

std::map<std::string, std::size_t> openGlObjects() {
    std::map<std::string, std::size_t> count;
    for (unsigned name = 1; name <= MostName; ++name) {
        count["textures"] += glIsTexture(name);
        count["framebuffers"] += glIsFramebuffer(name);
        count["renderbuffers"] += glIsRenderbuffer(name);
        count["buffers"] += glIsBuffer(name);
        count["vertex arrays"] += glIsVertexArray(name);
        count["shaders"] += glIsShader(name);
        count["programs"] += glIsProgram(name);
    }
    return count;
}

} // namespace workbench::validate

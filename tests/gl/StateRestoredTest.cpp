// SPDX-License-Identifier: Apache-2.0
// A frame leaves OpenGL as it was: a census before and after.
#include "GlFixture.h"

#include "workbench/gl/StateGuard.h"
#include "workbench/report/Failure.h"

#include <epoxy/gl.h>

#include <map>
#include <optional>
#include <stdexcept>

namespace workbench::test {
namespace {

constexpr GLenum Values[] = {GL_VIEWPORT,
                             GL_SCISSOR_BOX,
                             GL_DEPTH_RANGE,
                             GL_DEPTH_FUNC,
                             GL_DEPTH_WRITEMASK,
                             GL_DEPTH_CLEAR_VALUE,
                             GL_COLOR_CLEAR_VALUE,
                             GL_COLOR_WRITEMASK,
                             GL_BLEND_SRC_RGB,
                             GL_BLEND_DST_RGB,
                             GL_BLEND_SRC_ALPHA,
                             GL_BLEND_DST_ALPHA,
                             GL_BLEND_EQUATION_RGB,
                             GL_ALPHA_TEST_FUNC,
                             GL_POLYGON_MODE,
                             GL_CULL_FACE_MODE,
                             GL_FRONT_FACE,
                             GL_SHADE_MODEL,
                             GL_POINT_SIZE,
                             GL_LINE_WIDTH,
                             GL_CURRENT_COLOR,
                             GL_CURRENT_TEXTURE_COORDS,
                             GL_MATRIX_MODE,
                             GL_PROJECTION_MATRIX,
                             GL_MODELVIEW_MATRIX,
                             GL_TEXTURE_MATRIX,
                             GL_PROJECTION_STACK_DEPTH,
                             GL_MODELVIEW_STACK_DEPTH,
                             GL_ATTRIB_STACK_DEPTH,
                             GL_CLIENT_ATTRIB_STACK_DEPTH,
                             GL_ACTIVE_TEXTURE,
                             GL_CURRENT_PROGRAM,
                             GL_DRAW_FRAMEBUFFER_BINDING,
                             GL_READ_FRAMEBUFFER_BINDING,
                             GL_RENDERBUFFER_BINDING,
                             GL_VERTEX_ARRAY_BINDING,
                             GL_ARRAY_BUFFER_BINDING,
                             GL_PIXEL_PACK_BUFFER_BINDING,
                             GL_PIXEL_UNPACK_BUFFER_BINDING,
                             GL_PACK_ALIGNMENT,
                             GL_UNPACK_ALIGNMENT,
                             GL_PACK_ROW_LENGTH,
                             GL_UNPACK_ROW_LENGTH,
                             GL_STENCIL_FUNC};

constexpr GLenum Switches[] = {
    GL_ALPHA_TEST,     GL_BLEND,       GL_COLOR_MATERIAL,     GL_CULL_FACE,        GL_DEPTH_TEST,
    GL_DITHER,         GL_FOG,         GL_LIGHTING,           GL_LIGHT0,           GL_NORMALIZE,
    GL_SCISSOR_TEST,   GL_MULTISAMPLE, GL_STENCIL_TEST,       GL_TEXTURE_2D,       GL_SAMPLE_MASK,
    GL_POINT_SMOOTH,   GL_CLIP_PLANE0, GL_RASTERIZER_DISCARD, GL_FRAMEBUFFER_SRGB, GL_PRIMITIVE_RESTART,
    GL_COLOR_LOGIC_OP, GL_DEPTH_CLAMP};

using Census = std::map<std::string, std::vector<double>>;

std::vector<double> values(GLenum name) {
    std::vector<double> read(16, -1);
    glGetDoublev(name, read.data());
    return read;
}

Census census() {
    Census all;
    for (const GLenum name : Values) all["value " + std::to_string(name)] = values(name);
    for (const GLenum name : Switches)
        all["switch " + std::to_string(name)] = {glIsEnabled(name) ? 1.0 : 0.0};
    GLint mask = 0;
    glGetIntegeri_v(GL_SAMPLE_MASK_VALUE, 0, &mask);
    all["sample mask"] = {static_cast<double>(mask)};
    const auto active = static_cast<GLenum>(values(GL_ACTIVE_TEXTURE).front());
    for (int unit = 0; unit < 4; ++unit) {
        glActiveTexture(static_cast<GLenum>(GL_TEXTURE0 + unit));
        for (const int name :
             {GL_TEXTURE_BINDING_2D, GL_TEXTURE_BINDING_2D_MULTISAMPLE, GL_TEXTURE_BINDING_3D})
            all["unit " + std::to_string(unit) + ' ' + std::to_string(name)] =
                values(static_cast<GLenum>(name));
    }
    glActiveTexture(active);
    return all;
}

void expectUnchanged(const Census& before) {
    for (const auto& [name, now] : census()) EXPECT_EQ(now, before.at(name)) << name;
}

/// Changes as much as it can.
void spoil() {
    glEnable(GL_SCISSOR_TEST);
    glScissor(1, 1, 2, 2);
    glViewport(3, 3, 5, 5);
    glEnable(GL_CULL_FACE);
    glEnable(GL_FOG);
    glEnable(GL_LIGHTING);
    glEnable(GL_SAMPLE_MASK);
    glSampleMaski(0, 1);
    glEnable(GL_PRIMITIVE_RESTART);
    glEnable(GL_RASTERIZER_DISCARD);
    glDisable(GL_RASTERIZER_DISCARD);
    glDisable(GL_DITHER);
    glBlendFunc(GL_ZERO, GL_ONE);
    glDepthFunc(GL_GEQUAL);
    glDepthMask(GL_FALSE);
    glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, GL_FALSE);
    glClearColor(1, 0, 1, 0);
    glColor4d(0.1, 0.2, 0.3, 0.4);
    glLineWidth(3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 7);
    glActiveTexture(GL_TEXTURE1);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glRotated(30, 0, 0, 1);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
    glMatrixMode(GL_TEXTURE);
    glScaled(2, 2, 2);
    glShadeModel(GL_FLAT);
    glPolygonMode(GL_FRONT_AND_BACK, GL_POINT);
}

class StateRestored : public GlTest {
protected:
    /// Somebody else's state, so that "restored" differs from "reset".
    StateRestored() {
        glGenTextures(1, &texture);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, texture);
        glActiveTexture(GL_TEXTURE2);
        glViewport(0, 0, 77, 33);
        glDepthFunc(GL_LEQUAL);
        glClearColor(0.5F, 0.25F, 0, 1);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glScaled(0.5, 0.25, 1);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 2);
        glGenVertexArrays(1, &vertices);
        glBindVertexArray(vertices);
        glGenBuffers(1, &buffer);
        glBindBuffer(GL_ARRAY_BUFFER, buffer);
    }

    GLuint texture = 0, vertices = 0, buffer = 0;
};

TEST_F(StateRestored, Frame_restores_everything) {
    const auto shown = display([](TestDisplay::Renderer& renderer) {
        average(renderer);
        spoil();
    });
    shown->setInput(object([](krod::VGLRenderContext& context) {
        fill(context);
        spoil();
    }));
    const Census before = census();
    static_cast<void>(renderPicture(session, *shown, pool, frame(16, 16)));
    expectUnchanged(before);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(StateRestored, Exception_of_the_renderer_passes_and_restores_everything) {
    const auto shown = display([](TestDisplay::Renderer&) {
        krod::GLProgram program(vertexText(), averageText(), "vertex", "fragment");
        program.use();
        spoil();
        throw std::runtime_error("module gives up");
    });
    shown->setInput(object(fill));
    const Census before = census();
    try {
        static_cast<void>(renderPicture(session, *shown, pool, frame(16, 16)));
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "module gives up");
    }
    expectUnchanged(before);
}

TEST_F(StateRestored, Exception_of_the_input_passes_and_restores_everything) {
    const auto shown = display(average);
    shown->setInput(object([](krod::VGLRenderContext&) {
        spoil();
        throw std::runtime_error("input gives up");
    }));
    const Census before = census();
    EXPECT_THROW(static_cast<void>(renderPicture(session, *shown, pool, frame(16, 16))), std::runtime_error);
    expectUnchanged(before);
}

TEST_F(StateRestored, Guards_beyond_the_driver_are_refused_with_a_sentence) {
    const Census before = census();
    std::vector<std::unique_ptr<StateGuard>> guards;
    std::string said;
    try {
        for (int i = 0; i < 1000; ++i) guards.push_back(std::make_unique<StateGuard>());
    } catch (const Failure& failure) {
        said = failure.what();
    }
    EXPECT_EQ(guards.size(), 16U);
    EXPECT_EQ(said,
              "display chain: is too long for this driver — expected at most 15 displays behind each other, "
              "got more. Use fewer displays, or store a picture in between.");
    while (!guards.empty()) guards.pop_back();
    expectUnchanged(before);
}

} // namespace
} // namespace workbench::test

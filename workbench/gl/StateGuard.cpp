// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/StateGuard.h"

#include "workbench/report/Failure.h"

#include <epoxy/gl.h>

#include <cstddef>
#include <string>

namespace workbench {
namespace {

constexpr std::array<GLenum, 6> SwitchNames{GL_SAMPLE_MASK,       GL_RASTERIZER_DISCARD,
                                            GL_PRIMITIVE_RESTART, GL_FRAMEBUFFER_SRGB,
                                            GL_DEPTH_CLAMP,       GL_PROGRAM_POINT_SIZE};

constexpr GLenum InitiallyOff[] = {GL_ALPHA_TEST,
                                   GL_BLEND,
                                   GL_COLOR_LOGIC_OP,
                                   GL_COLOR_MATERIAL,
                                   GL_COLOR_SUM,
                                   GL_CULL_FACE,
                                   GL_DEPTH_CLAMP,
                                   GL_DEPTH_TEST,
                                   GL_FOG,
                                   GL_FRAMEBUFFER_SRGB,
                                   GL_LIGHTING,
                                   GL_LINE_SMOOTH,
                                   GL_LINE_STIPPLE,
                                   GL_NORMALIZE,
                                   GL_POINT_SMOOTH,
                                   GL_POINT_SPRITE,
                                   GL_POLYGON_OFFSET_FILL,
                                   GL_POLYGON_SMOOTH,
                                   GL_POLYGON_STIPPLE,
                                   GL_PRIMITIVE_RESTART,
                                   GL_PROGRAM_POINT_SIZE,
                                   GL_RASTERIZER_DISCARD,
                                   GL_SAMPLE_ALPHA_TO_COVERAGE,
                                   GL_SAMPLE_ALPHA_TO_ONE,
                                   GL_SAMPLE_COVERAGE,
                                   GL_SAMPLE_MASK,
                                   GL_SCISSOR_TEST,
                                   GL_STENCIL_TEST,
                                   GL_CLIP_PLANE0,
                                   GL_CLIP_PLANE1,
                                   GL_CLIP_PLANE2,
                                   GL_CLIP_PLANE3,
                                   GL_CLIP_PLANE4,
                                   GL_CLIP_PLANE5};

constexpr GLenum TextureSwitches[] = {GL_TEXTURE_1D,       GL_TEXTURE_2D,    GL_TEXTURE_3D,
                                      GL_TEXTURE_CUBE_MAP, GL_TEXTURE_GEN_S, GL_TEXTURE_GEN_T,
                                      GL_TEXTURE_GEN_R,    GL_TEXTURE_GEN_Q};

constexpr int FixedTextureUnits = 2; // those that the host and its modules use

int integer(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

void setSwitch(GLenum name, bool on) {
    if (on)
        glEnable(name);
    else
        glDisable(name);
}

template <class Visit>
void forEachTextureUnit(Visit visit) {
    for (int unit = FixedTextureUnits - 1; unit >= 0; --unit) {
        glActiveTexture(static_cast<GLenum>(GL_TEXTURE0 + unit));
        visit(static_cast<std::size_t>(unit));
    }
}

void resetTextureUnits() {
    forEachTextureUnit([](std::size_t) {
        for (const GLenum name : TextureSwitches) glDisable(name);
        glMatrixMode(GL_TEXTURE);
        glLoadIdentity();
    });
    glMatrixMode(GL_MODELVIEW);
}

void resetRasterisation() {
    glDepthRange(0, 1);
    glDepthFunc(GL_LESS);
    glDepthMask(GL_TRUE);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glBlendEquation(GL_FUNC_ADD);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glFrontFace(GL_CCW);
    glShadeModel(GL_SMOOTH);
    glPointSize(1);
    glLineWidth(1);
    glColor4f(1, 1, 1, 1);
    glEnable(GL_MULTISAMPLE);
}

} // namespace

StateGuard::StateGuard()
    : attributes(integer(GL_ATTRIB_STACK_DEPTH)),
      clientAttributes(integer(GL_CLIENT_ATTRIB_STACK_DEPTH)),
      program(integer(GL_CURRENT_PROGRAM)),
      vertexArray(integer(GL_VERTEX_ARRAY_BINDING)),
      arrayBuffer(integer(GL_ARRAY_BUFFER_BINDING)),
      packBuffer(integer(GL_PIXEL_PACK_BUFFER_BINDING)),
      unpackBuffer(integer(GL_PIXEL_UNPACK_BUFFER_BINDING)),
      drawFramebuffer(integer(GL_DRAW_FRAMEBUFFER_BINDING)),
      readFramebuffer(integer(GL_READ_FRAMEBUFFER_BINDING)),
      renderbuffer(integer(GL_RENDERBUFFER_BINDING)),
      activeTexture(integer(GL_ACTIVE_TEXTURE)) {
    const int most = integer(GL_MAX_ATTRIB_STACK_DEPTH);
    if (attributes >= most)
        throw Failure(Fault::OpenGL, {"display chain",
                                      "is too long for this driver",
                                      "at most " + std::to_string(most - 1) + " displays behind each other",
                                      "more",
                                      "Use fewer displays, or store a picture in between",
                                      {}});
    glGetIntegeri_v(GL_SAMPLE_MASK_VALUE, 0, &sampleMask);
    for (std::size_t i = 0; i < switches.size(); ++i) switches[i] = glIsEnabled(SwitchNames[i]) == GL_TRUE;
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
    save();
}

StateGuard::~StateGuard() {
    restoreMatrices();
    while (integer(GL_CLIENT_ATTRIB_STACK_DEPTH) > clientAttributes) glPopClientAttrib();
    while (integer(GL_ATTRIB_STACK_DEPTH) > attributes) glPopAttrib();
    restoreTextureUnits();
    glColor4fv(color.data());
    glNormal3fv(normal.data());
    for (std::size_t i = 0; i < switches.size(); ++i) setSwitch(SwitchNames[i], switches[i]);
    glSampleMaski(0, static_cast<GLbitfield>(sampleMask));
    glUseProgram(static_cast<GLuint>(program));
    glBindVertexArray(static_cast<GLuint>(vertexArray));
    glBindBuffer(GL_ARRAY_BUFFER, static_cast<GLuint>(arrayBuffer));
    glBindBuffer(GL_PIXEL_PACK_BUFFER, static_cast<GLuint>(packBuffer));
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, static_cast<GLuint>(unpackBuffer));
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(drawFramebuffer));
    glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(readFramebuffer));
    glBindRenderbuffer(GL_RENDERBUFFER, static_cast<GLuint>(renderbuffer));
}

void StateGuard::save() {
    glGetFloatv(GL_CURRENT_COLOR, color.data());
    glGetFloatv(GL_CURRENT_NORMAL, normal.data());
    projection = saveMatrix(GL_PROJECTION_MATRIX, GL_PROJECTION_STACK_DEPTH);
    modelView = saveMatrix(GL_MODELVIEW_MATRIX, GL_MODELVIEW_STACK_DEPTH);
    forEachTextureUnit([this](std::size_t unit) {
        textureUnits[unit].matrix = saveMatrix(GL_TEXTURE_MATRIX, GL_TEXTURE_STACK_DEPTH);
        textureUnits[unit].multisampleTexture = integer(GL_TEXTURE_BINDING_2D_MULTISAMPLE);
        glGetFloatv(GL_CURRENT_TEXTURE_COORDS, textureUnits[unit].coordinates.data());
    });
    glActiveTexture(static_cast<GLenum>(activeTexture));
}

/// By value: the stacks for projection and textures may have no more than two places.
StateGuard::Matrix StateGuard::saveMatrix(unsigned matrix, unsigned height) {
    Matrix saved;
    glGetDoublev(matrix, saved.values.data());
    saved.height = integer(height);
    return saved;
}

void StateGuard::restoreMatrix(unsigned mode, unsigned height, const Matrix& saved) {
    glMatrixMode(mode);
    while (integer(height) > saved.height) glPopMatrix();
    glLoadMatrixd(saved.values.data());
}

/// Leaves matrix mode and active texture to the attribute stack.
void StateGuard::restoreMatrices() const {
    restoreMatrix(GL_PROJECTION, GL_PROJECTION_STACK_DEPTH, projection);
    restoreMatrix(GL_MODELVIEW, GL_MODELVIEW_STACK_DEPTH, modelView);
    forEachTextureUnit([this](std::size_t unit) {
        restoreMatrix(GL_TEXTURE, GL_TEXTURE_STACK_DEPTH, textureUnits[unit].matrix);
    });
}

void StateGuard::restoreTextureUnits() const {
    forEachTextureUnit([this](std::size_t unit) {
        const TextureUnit& saved = textureUnits[unit];
        glBindTexture(GL_TEXTURE_2D_MULTISAMPLE, static_cast<GLuint>(saved.multisampleTexture));
        glMultiTexCoord4fv(static_cast<GLenum>(GL_TEXTURE0 + unit), saved.coordinates.data());
    });
    glActiveTexture(static_cast<GLenum>(activeTexture));
}

void setDrawingState(int width, int height) {
    glUseProgram(0);
    glBindVertexArray(0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glViewport(0, 0, width, height);
    for (const GLenum name : InitiallyOff) glDisable(name);
    resetTextureUnits();
    resetRasterisation();
}

void setEntryState(int width, int height) {
    setDrawingState(width, height);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

void resetPixelStore() {
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    constexpr GLenum Zero[] = {GL_PACK_SWAP_BYTES,  GL_PACK_ROW_LENGTH,   GL_PACK_SKIP_ROWS,
                               GL_PACK_SKIP_PIXELS, GL_UNPACK_SWAP_BYTES, GL_UNPACK_ROW_LENGTH,
                               GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS};
    for (const GLenum name : Zero) glPixelStorei(name, 0);
    glPixelStorei(GL_PACK_ALIGNMENT, 8);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
}

} // namespace workbench

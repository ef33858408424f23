// SPDX-License-Identifier: Apache-2.0
// What a module may rely on when its render operation begins, item by item, however its input has left
// OpenGL.
#include "GlFixture.h"

#include <epoxy/gl.h>

#include <array>

namespace workbench::test {
namespace {

class EntryState : public GlTest {
protected:
    /// Lets the function look around in a render operation, in a frame of 32 by 16 pixels.
    void inRenderOperation(TestDisplay::Render look) {
        bool looked = false;
        const auto shown = display([&](TestDisplay::Renderer& renderer) {
            looked = true;
            look(renderer);
        });
        shown->setInput(object(spoil));
        static_cast<void>(renderPicture(session, *shown, pool, frame(32, 16)));
        EXPECT_TRUE(looked);
    }

    /// Leaves everything otherwise than it was.
    static void spoil(krod::VGLRenderContext&) {
        for (const int mode : {GL_PROJECTION, GL_MODELVIEW, GL_TEXTURE}) {
            glMatrixMode(static_cast<GLenum>(mode));
            glPushMatrix();
            glScaled(2, 3, 4);
        }
        glViewport(1, 2, 3, 4);
        glScissor(0, 0, 1, 1);
        glEnable(GL_SCISSOR_TEST);
        glEnable(GL_CULL_FACE);
        glEnable(GL_FOG);
        glEnable(GL_STENCIL_TEST);
        glBlendFunc(GL_ONE, GL_ONE);
        glDepthFunc(GL_ALWAYS);
        glDepthMask(GL_FALSE);
        glDepthRange(0.25, 0.5);
        glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
        glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
        glActiveTexture(GL_TEXTURE5);
        static_cast<void>(glGetError());
    }

    static int integer(GLenum name) {
        GLint value = -1;
        glGetIntegerv(name, &value);
        return value;
    }

    static void expectIdentity(GLenum matrix) {
        std::array<double, 16> values{};
        glGetDoublev(matrix, values.data());
        for (std::size_t i = 0; i < values.size(); ++i)
            EXPECT_EQ(values[i], i % 5 == 0 ? 1 : 0) << "element " << i;
    }

    static void expectAttachment(GLenum attachment, GLenum internalFormat, int expected) {
        GLint name = 0, format = 0, before = 0;
        glGetFramebufferAttachmentParameteriv(GL_DRAW_FRAMEBUFFER, attachment,
                                              GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME, &name);
        glGetIntegerv(GL_TEXTURE_BINDING_2D, &before);
        glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(name));
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, internalFormat, &format);
        glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(before));
        EXPECT_EQ(format, expected);
    }
};

TEST_F(EntryState, Viewport_is_the_destination) {
    inRenderOperation([](auto&) {
        std::array<GLint, 4> viewport{};
        glGetIntegerv(GL_VIEWPORT, viewport.data());
        EXPECT_EQ(viewport, (std::array<GLint, 4>{0, 0, 32, 16}));
        std::array<double, 2> range{};
        glGetDoublev(GL_DEPTH_RANGE, range.data());
        EXPECT_EQ(range, (std::array<double, 2>{0, 1}));
    });
}

TEST_F(EntryState, Matrices_are_identities) {
    inRenderOperation([](auto&) {
        expectIdentity(GL_PROJECTION_MATRIX);
        expectIdentity(GL_MODELVIEW_MATRIX);
        expectIdentity(GL_TEXTURE_MATRIX);
    });
}

TEST_F(EntryState, No_program_is_in_use) {
    inRenderOperation([](auto&) { EXPECT_EQ(integer(GL_CURRENT_PROGRAM), 0); });
}

TEST_F(EntryState, Blend_function_is_that_of_transparency) {
    inRenderOperation([](auto&) {
        EXPECT_EQ(integer(GL_BLEND_SRC), GL_SRC_ALPHA);
        EXPECT_EQ(integer(GL_BLEND_DST), GL_ONE_MINUS_SRC_ALPHA);
        EXPECT_EQ(integer(GL_BLEND_EQUATION), GL_FUNC_ADD);
        EXPECT_FALSE(glIsEnabled(GL_BLEND));
    });
}

TEST_F(EntryState, Depth_function_is_less_and_depth_is_written) {
    inRenderOperation([](auto&) {
        EXPECT_EQ(integer(GL_DEPTH_FUNC), GL_LESS);
        EXPECT_EQ(integer(GL_DEPTH_WRITEMASK), GL_TRUE);
        EXPECT_FALSE(glIsEnabled(GL_DEPTH_TEST));
    });
}

TEST_F(EntryState, Nothing_cuts_the_quad) {
    inRenderOperation([](auto&) {
        for (const int name :
             {GL_SCISSOR_TEST, GL_CULL_FACE, GL_STENCIL_TEST, GL_ALPHA_TEST, GL_FOG, GL_LIGHTING,
              GL_POLYGON_STIPPLE, GL_COLOR_LOGIC_OP, GL_RASTERIZER_DISCARD, GL_CLIP_PLANE0})
            EXPECT_FALSE(glIsEnabled(static_cast<GLenum>(name))) << name;
        std::array<GLboolean, 4> mask{};
        glGetBooleanv(GL_COLOR_WRITEMASK, mask.data());
        EXPECT_EQ(mask, (std::array<GLboolean, 4>{GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE}));
        std::array<GLint, 2> polygons{};
        glGetIntegerv(GL_POLYGON_MODE, polygons.data());
        EXPECT_EQ(polygons[0], GL_FILL);
    });
}

TEST_F(EntryState, Destination_is_half_colour_and_float_depth) {
    inRenderOperation([](auto&) {
        expectAttachment(GL_COLOR_ATTACHMENT0, GL_TEXTURE_INTERNAL_FORMAT, GL_RGBA16F);
        expectAttachment(GL_DEPTH_ATTACHMENT, GL_TEXTURE_INTERNAL_FORMAT, GL_DEPTH_COMPONENT32F);
    });
}

TEST_F(EntryState, Destination_depth_is_the_far_plane) {
    inRenderOperation([](auto&) {
        float depth = 0;
        glReadPixels(3, 3, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
        EXPECT_EQ(depth, 1);
    });
}

TEST_F(EntryState, No_error_is_pending) {
    inRenderOperation([](auto&) { EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR)); });
}

TEST_F(EntryState, Scene_textures_are_bound_to_their_units) {
    inRenderOperation([](TestDisplay::Renderer& renderer) {
        for (const int unit : {renderer.scene().colorUnit, renderer.scene().depthUnit}) {
            glActiveTexture(static_cast<GLenum>(GL_TEXTURE0 + unit));
            EXPECT_NE(integer(GL_TEXTURE_BINDING_2D_MULTISAMPLE), 0) << unit;
            GLint format = 0;
            glGetTexLevelParameteriv(GL_TEXTURE_2D_MULTISAMPLE, 0, GL_TEXTURE_INTERNAL_FORMAT, &format);
            EXPECT_EQ(format, unit == renderer.scene().colorUnit ? GL_RGBA16F : GL_DEPTH_COMPONENT32F);
        }
    });
}

/// Raw contents of the target where the input draws nothing.
TEST_F(EntryState, Target_is_cleared_to_transparent_black_at_the_far_plane) {
    const auto shown = display([](TestDisplay::Renderer& renderer) {
        shade(renderer, "#version 150\n"
                        "uniform sampler2DMS SceneColor;\n"
                        "uniform sampler2DMS SceneDepth;\n"
                        "void main() {\n"
                        "  vec4 c = texelFetch(SceneColor, ivec2(gl_FragCoord.xy), 0);\n"
                        "  float d = texelFetch(SceneDepth, ivec2(gl_FragCoord.xy), 0).r;\n"
                        "  gl_FragColor = vec4(d, c.r + c.g + c.b + c.a, 0.0, 1.0);\n"
                        "}\n");
    });
    shown->setInput(object(nothing));
    FrameSetup setup = frame(8, 8);
    setup.background = {0.5F, 0.5F, 0.5F, 0.5F};
    const auto pixels = renderPicture(session, *shown, pool, setup);
    EXPECT_EQ(static_cast<float>(pixels[9].r), 1);
    EXPECT_EQ(static_cast<float>(pixels[9].g), 0);
}

TEST_F(EntryState, Input_sees_the_matrices_of_the_frame) {
    std::array<double, 16> projection{}, modelView{};
    const auto shown = display([](auto&) {});
    shown->setInput(object([&](auto&) {
        glGetDoublev(GL_PROJECTION_MATRIX, projection.data());
        glGetDoublev(GL_MODELVIEW_MATRIX, modelView.data());
    }));
    FrameSetup setup = frame(32, 16);
    setup.camera = Camera::fitted({0, 0, 0, 1}, 2);
    static_cast<void>(renderPicture(session, *shown, pool, setup));
    EXPECT_NEAR(projection[0], setup.camera.projection(2)[0][0], 1e-6);
    EXPECT_NEAR(projection[11], -1, 1e-6);
    EXPECT_NEAR(modelView[14], -setup.camera.eye.z, 1e-6);
}

} // namespace
} // namespace workbench::test

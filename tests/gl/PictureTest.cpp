// SPDX-License-Identifier: Apache-2.0
// From an object to pixels.
#include "GlFixture.h"

#include <epoxy/gl.h>

namespace workbench::test {
namespace {

class Pictures : public GlTest {};

TEST_F(Pictures, Background_is_what_was_asked_for_beyond_one_too) {
    FrameSetup setup = frame(5, 3);
    setup.background = {4, -1, 0.25F, 0.5F};
    const auto pixels = renderPicture(session, *object(nothing), pool, setup);
    ASSERT_EQ(pixels.size(), 15U);
    EXPECT_EQ(static_cast<float>(pixels[14].r), 4);
    EXPECT_EQ(static_cast<float>(pixels[14].g), -1);
    EXPECT_EQ(static_cast<float>(pixels[0].b), 0.25F);
    EXPECT_EQ(static_cast<float>(pixels[0].a), 0.5F);
}

TEST_F(Pictures, Up_is_the_first_row_and_right_the_last_column) {
    FrameSetup setup = frame(20, 20);
    setup.camera = Camera::fitted({0, 0, 0, 1}, 1);
    const auto pixels = renderPicture(session, *object([](krod::VGLRenderContext&) {
                                          glColor4d(1, 0, 0, 1);
                                          glRectd(0, 0, 1, 1); // the quadrant of +x and +y
                                      }),
                                      pool, setup);
    EXPECT_EQ(static_cast<float>(pixels[5 * 20 + 14].r), 1);
    EXPECT_EQ(static_cast<float>(pixels[5 * 20 + 5].r), 0);
    EXPECT_EQ(static_cast<float>(pixels[14 * 20 + 14].r), 0);
    EXPECT_EQ(static_cast<float>(pixels[14 * 20 + 5].r), 0);
}

TEST_F(Pictures, Nearer_hides_farther) {
    FrameSetup setup = frame(8, 8);
    const auto pixels = renderPicture(session, *object([](krod::VGLRenderContext&) {
                                          glEnable(GL_DEPTH_TEST);
                                          glColor4d(0, 1, 0, 1);
                                          glRectd(-9, -9, 9, 9);
                                          glTranslated(0, 0, -1);
                                          glColor4d(1, 0, 0, 1);
                                          glRectd(-9, -9, 9, 9);
                                      }),
                                      pool, setup);
    EXPECT_EQ(static_cast<float>(pixels[27].g), 1);
    EXPECT_EQ(static_cast<float>(pixels[27].r), 0);
}

TEST_F(Pictures, Display_without_change_shows_what_its_input_shows) {
    const auto shape = object([](krod::VGLRenderContext&) {
        glBegin(GL_QUADS); // with its edges between samples of neither driver
        glColor4d(1, 0, 0, 1);
        glVertex2d(-1, -1);
        glColor4d(0, 1, 0, 1);
        glVertex2d(1, -1);
        glColor4d(0, 0, 1, 1);
        glVertex2d(1, 1);
        glColor4d(1, 1, 1, 1);
        glVertex2d(-1, 1);
        glEnd();
    });
    const auto shown = display(average);
    shown->setInput(shape);
    FrameSetup setup = frame(64, 64);
    setup.camera = Camera::between({0, 0, 2}, {0, 0, 0}, {0, 1, 0}, 30, {0, 0, 0, 2});
    const auto direct = renderPicture(session, *shape, pool, setup);
    const auto deferred = renderPicture(session, *shown, pool, setup);
    for (std::size_t i = 0; i < direct.size(); ++i) {
        ASSERT_NEAR(direct[i].r, deferred[i].r, 0.01) << i;
        ASSERT_NEAR(direct[i].b, deferred[i].b, 0.01) << i;
    }
}

TEST_F(Pictures, Frame_of_the_context_is_that_of_the_picture) {
    int width = 0, height = 0;
    static_cast<void>(renderPicture(session, *object([&](krod::VGLRenderContext& context) {
                                        width = context.width();
                                        height = context.height();
                                    }),
                                    pool, frame(31, 17)));
    EXPECT_EQ(width, 31);
    EXPECT_EQ(height, 17);
}

} // namespace
} // namespace workbench::test

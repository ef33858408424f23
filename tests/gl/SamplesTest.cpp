// SPDX-License-Identifier: Apache-2.0
// Sample counts: what is asked, what the driver grants, and what is said about it.
#include "GlFixture.h"

#include "workbench/gl/RenderTarget.h"

#include <epoxy/gl.h>

namespace workbench::test {
namespace {

class Samples : public GlTest {
protected:
    /// The count that a renderer sees that asks for so many.
    int seenBy(int asked) {
        int seen = -1;
        const auto shown =
            display([&](TestDisplay::Renderer& renderer) { seen = renderer.scene().sampleCount; }, asked);
        shown->setInput(object(nothing));
        static_cast<void>(renderPicture(session, *shown, pool, frame(8, 8)));
        return seen;
    }

    int most = onSoftpipe() ? 1 : 4;
};

TEST_F(Samples, Eight_are_clamped_to_what_the_driver_has) { EXPECT_EQ(seenBy(8), most); }

TEST_F(Samples, Absurd_counts_are_clamped) {
    EXPECT_EQ(seenBy(1000000), most);
    EXPECT_GE(seenBy(0), 1);
    EXPECT_GE(seenBy(-1), 1);
}

TEST_F(Samples, Clamping_is_no_warning_since_nobody_may_have_asked) {
    static_cast<void>(seenBy(8));
    static_cast<void>(seenBy(most));
    EXPECT_TRUE(warnings.heard.empty());
}

TEST_F(Samples, Count_is_the_one_of_the_textures) {
    GLint inTexture = 0;
    int seen = -1;
    const auto shown = display(
        [&](TestDisplay::Renderer& renderer) {
            seen = renderer.scene().sampleCount;
            glActiveTexture(GL_TEXTURE0);
            glGetTexLevelParameteriv(GL_TEXTURE_2D_MULTISAMPLE, 0, GL_TEXTURE_SAMPLES, &inTexture);
        },
        2);
    shown->setInput(object(nothing));
    static_cast<void>(renderPicture(session, *shown, pool, frame(8, 8)));
    EXPECT_EQ(seen, inTexture);
}

/// A slanted edge: with four samples some pixels are covered in part, with one none are.
TEST_F(Samples, Edge_is_resolved_by_the_samples) {
    const auto shown = display(average, 4);
    shown->setInput(object([](krod::VGLRenderContext&) {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glBegin(GL_TRIANGLES);
        glVertex2d(-1, -1);
        glVertex2d(1, -1);
        glVertex2d(-1, 0.7);
        glEnd();
    }));
    FrameSetup setup = frame(32, 32);
    setup.background = {0, 0, 0, 0};
    int partial = 0, full = 0;
    for (const krod::RGBAHalf& pixel : renderPicture(session, *shown, pool, setup)) {
        partial += pixel.a > 0 && pixel.a < 1 ? 1 : 0;
        full += pixel.a == 1 ? 1 : 0;
    }
    EXPECT_GT(full, 200);
    if (onSoftpipe())
        EXPECT_EQ(partial, 0);
    else
        EXPECT_GT(partial, 15);
}

TEST_F(Samples, Target_is_used_again_and_the_pool_is_bounded) {
    auto& targets = session.targets();
    unsigned first = 0;
    { first = targets.leaseMultisample(8, 8, 1)->framebuffer(); }
    EXPECT_EQ(targets.leaseMultisample(8, 8, 1)->framebuffer(), first);
    for (int size = 1; size < 40; ++size) static_cast<void>(targets.lease(size, size, true));
    EXPECT_LE(targets.idleCount(), TargetPool::MostIdle);
}

} // namespace
} // namespace workbench::test

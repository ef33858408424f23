// SPDX-License-Identifier: Apache-2.0
// Names of OpenGL objects, counted.
#include "GlFixture.h"

#include "workbench/gl/RenderTarget.h"

#include "host/gl/GLImageTileProcessor.h"

#include <epoxy/gl.h>

#include <map>
#include <stdexcept>

namespace workbench::test {
namespace {

class Leaks : public GlTest {
protected:
    using Counts = std::map<std::string, int>;

    static Counts livingNames() {
        constexpr GLuint Most = 20000;
        Counts counts;
        for (GLuint name = 1; name < Most; ++name) {
            counts["textures"] += glIsTexture(name);
            counts["framebuffers"] += glIsFramebuffer(name);
            counts["renderbuffers"] += glIsRenderbuffer(name);
            counts["programs"] += glIsProgram(name);
            counts["shaders"] += glIsShader(name);
            counts["buffers"] += glIsBuffer(name);
        }
        return counts;
    }
};

TEST_F(Leaks, Hundred_frames_leave_what_one_frame_leaves) {
    const auto first = display(average), second = display(average);
    first->setInput(object(fill));
    second->setInput(first);
    static_cast<void>(renderPicture(session, *second, pool, frame(16, 16)));
    const Counts after1 = livingNames();
    EXPECT_EQ(after1.at("programs"), 2); // that of both displays, and the one that hands depth on
    EXPECT_EQ(after1.at("shaders"), 0);
    for (int i = 0; i < 100; ++i) static_cast<void>(renderPicture(session, *second, pool, frame(16, 16)));
    EXPECT_EQ(livingNames(), after1);
}

TEST_F(Leaks, Thousand_frames_leave_what_one_frame_leaves) {
    const auto shown = display(average);
    shown->setInput(object(fill));
    static_cast<void>(renderPicture(session, *shown, pool, frame(8, 8)));
    const Counts after1 = livingNames();
    for (int i = 0; i < 1000; ++i) static_cast<void>(renderPicture(session, *shown, pool, frame(8, 8)));
    EXPECT_EQ(livingNames(), after1);
}

TEST_F(Leaks, Frames_that_fail_leave_nothing) {
    const auto shown = display(average), broken = display([](TestDisplay::Renderer&renderer) {
                                             average(renderer);
                                             throw std::runtime_error("behind the quad");
                                         });
    shown->setInput(object(fill));
    broken->setInput(object([](krod::VGLRenderContext& context) {
        fill(context);
        if (context.width() == 16) throw std::runtime_error("in the input");
    }));
    const auto fail = [&](int size) {
        EXPECT_ANY_THROW(static_cast<void>(renderPicture(session, *broken, pool, frame(size, size))));
    };
    static_cast<void>(renderPicture(session, *shown, pool, frame(8, 8)));
    fail(8);
    fail(16);
    const Counts before = livingNames();
    for (int i = 0; i < 100; ++i) fail(i % 2 == 0 ? 8 : 16);
    EXPECT_EQ(livingNames(), before);
}

TEST_F(Leaks, Memory_that_does_not_suffice_leaves_nothing) {
    if (onSoftpipe()) {
        SUCCEED() << "its largest texture fits";
        return;
    }
    const Counts before = livingNames();
    for (int i = 0; i < 10; ++i)
        EXPECT_ANY_THROW(static_cast<void>(session.targets().leaseMultisample(12000, 12000, 4)));
    EXPECT_EQ(livingNames(), before);
}

TEST_F(Leaks, Refused_programs_leave_nothing) {
    const Counts before = livingNames();
    for (int i = 0; i < 10; ++i)
        EXPECT_ANY_THROW(
            krod::GLProgram(vertexText(), "nonsense " + std::to_string(i), "vertex", "fragment"));
    EXPECT_EQ(livingNames(), before);
}

TEST_F(Leaks, Many_programs_are_bounded) {
    for (int i = 0; i < 80; ++i)
        krod::GLProgram(vertexText(), averageText() + "// " + std::to_string(i) + '\n', "vertex", "fragment");
    EXPECT_EQ(livingNames().at("programs"), 64);
}

TEST_F(Leaks, Texture_after_its_session_is_harmless) {
    krod::StrongPtr<krod::GLTexture2D> late;
    {
        RenderSession other(session.options());
        late = krod::StrongPtr<krod::GLTexture2D>(new krod::GLTexture2D(4, 4));
        EXPECT_TRUE(late->usable());
    }
    session.makeCurrent();
    EXPECT_FALSE(late->usable());
    const Counts before = livingNames();
    late.reset();
    EXPECT_EQ(livingNames(), before);
}

} // namespace
} // namespace workbench::test

// SPDX-License-Identifier: Apache-2.0
// Frames that go wrong, threads without OpenGL, and unusual targets: what comes after is as if nothing had been.
#include "GlFixture.h"

#include "workbench/gl/RenderTarget.h"
#include "workbench/report/Failure.h"

#include "host/gl/GLTexture2D.h"

#include <epoxy/gl.h>

#include <fstream>
#include <stdexcept>
#include <thread>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

namespace workbench::test {
namespace {

class Faults : public GlTest {
protected:
    static void expectFilled(const std::vector<krod::RGBAHalf>& pixels, std::size_t count) {
        ASSERT_EQ(pixels.size(), count);
        for (const krod::RGBAHalf& pixel : {pixels.front(), pixels[count / 2], pixels.back()}) {
            EXPECT_EQ(static_cast<float>(pixel.r), 0.25F);
            EXPECT_EQ(static_cast<float>(pixel.a), 1.0F);
        }
    }
    [[nodiscard]] krod::StrongPtr<TestDisplay> averageOf(TestObject::Draw draw) const {
        const auto shown = display(average);
        shown->setInput(object(std::move(draw)));
        return shown;
    }
    void expectGoodFrame() { expectFilled(renderPicture(session, *averageOf(fill), pool, frame(8, 8)), 64); }
};

TEST_F(Faults, Every_count_of_samples_gives_a_picture) {
    for (const int asked : {0, -1, 1, 3, 8, 16, 1'000'000}) {
        SCOPED_TRACE(asked);
        warnings.heard.clear();
        const auto shown = display(average, asked);
        shown->setInput(object(fill));
        expectFilled(renderPicture(session, *shown, pool, frame(8, 8)), 64);
        EXPECT_TRUE(warnings.heard.empty());
    }
}

TEST_F(Faults, Narrow_and_single_pixels_are_pictures_too) {
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 4096}, {4096, 1}}) {
        SCOPED_TRACE(std::to_string(width) + 'x' + std::to_string(height));
        expectFilled(renderPicture(session, *averageOf(fill), pool, frame(width, height)),
                     static_cast<std::size_t>(width * height));
    }
}

TEST_F(Faults, Whatever_an_input_throws_the_next_frame_is_right) {
    const std::vector<TestObject::Draw> inputs = {
        [](krod::VGLRenderContext&) { throw std::runtime_error("broken"); },
        [](krod::VGLRenderContext&) { throw std::bad_alloc(); }, [](krod::VGLRenderContext&) { throw 42; },
        [](krod::VGLRenderContext&) {
            glEnable(GL_SCISSOR_TEST);
            glBindFramebuffer(GL_FRAMEBUFFER, 0);
            glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
            throw std::runtime_error("broken with changed state");
        }};
    for (const auto& input : inputs) {
        EXPECT_ANY_THROW(static_cast<void>(renderPicture(session, *averageOf(input), pool, frame(8, 8))));
        expectGoodFrame();
    }
    const auto thrower = display([](TestDisplay::Renderer&) { throw std::runtime_error("in the renderer"); });
    thrower->setInput(object(fill));
    EXPECT_ANY_THROW(static_cast<void>(renderPicture(session, *thrower, pool, frame(8, 8))));
    expectGoodFrame();
}

TEST_F(Faults, Memory_that_did_not_suffice_leaves_a_session_that_works) {
    if (!onSoftpipe()) { // its largest texture fits
        EXPECT_THROW(static_cast<void>(session.targets().leaseMultisample(12000, 12000, 4)),
                     GraphicsMemoryFailure);
    }
    expectGoodFrame();
    EXPECT_TRUE(warnings.heard.empty());
}

/// The address space of this process, in bytes.
std::size_t addressSpace() {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

/// A software driver takes the memory of a texture from the process, and says nothing when there is none.
TEST_F(Faults, Memory_of_the_process_that_does_not_suffice_is_known_as_missing_memory) {
    expectGoodFrame();
    rlimit usual{};
    ASSERT_EQ(::getrlimit(RLIMIT_AS, &usual), 0);
    const rlimit little{addressSpace() + (std::size_t{64} << 20), usual.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_AS, &little), 0);
    EXPECT_THROW(static_cast<void>(session.targets().lease(6000, 6000, true)), GraphicsMemoryFailure);
    EXPECT_NO_THROW(static_cast<void>(session.targets().lease(500, 500, true)));
    ASSERT_EQ(::setrlimit(RLIMIT_AS, &usual), 0);
    expectGoodFrame();
    EXPECT_TRUE(warnings.heard.empty());
}

TEST_F(Faults, Error_of_somebody_else_before_a_target_or_a_texture_is_told_and_not_thrown) {
    constexpr GLenum NoEnum = 0xFFFF;
    glEnable(NoEnum);
    EXPECT_NO_THROW(static_cast<void>(session.targets().lease(3, 5, true)));
    EXPECT_EQ(warnings.count("OpenGL error GL_INVALID_ENUM (0x0500) was pending before it was made"), 1);
    glEnable(NoEnum);
    EXPECT_NO_THROW(krod::GLTexture2D(3, 5));
    EXPECT_EQ(warnings.count("texture: OpenGL error GL_INVALID_ENUM (0x0500) was pending before it was made"),
              1);
    EXPECT_EQ(warnings.heard.size(), 2U);
}

/// The sentence of what is thrown on a thread of its own.
std::string refusalOnAnotherThread(const std::function<void()>& work) {
    std::string sentence = "nothing was thrown";
    std::thread([&] {
        try {
            work();
        } catch (const Failure& failure) {
            sentence = failure.what();
            EXPECT_EQ(failure.fault(), Fault::OpenGL);
        }
    }).join();
    return sentence;
}

TEST_F(Faults, Thread_without_a_session_draws_nothing_and_is_told_why) {
    int calls = 0;
    const auto shown = averageOf([&](krod::VGLRenderContext&) { ++calls; });
    EXPECT_EQ(refusalOnAnotherThread([&] {
                  krod::VGLRenderContext context(pool, 8, 8);
                  shown->render(context);
              }),
              "display: needs OpenGL — expected an open session on this thread, got none. Open a "
              "RenderSession first, or make it current here.");
    EXPECT_EQ(calls, 0);
    expectGoodFrame();
}

TEST_F(Faults, Session_of_another_thread_cannot_be_drawn_with) {
    int calls = 0;
    const auto shown = averageOf([&](krod::VGLRenderContext&) { ++calls; });
    const std::string said =
        refusalOnAnotherThread([&] { static_cast<void>(renderPicture(session, *shown, pool, frame(8, 8))); });
    EXPECT_NE(said.find("thread"), std::string::npos) << said;
    EXPECT_EQ(calls, 0);
    expectGoodFrame();
}

TEST_F(Faults, Two_sessions_in_turn_give_the_same_thousand_frames) {
    RenderSession other(session.options());
    const auto shown = averageOf(fill), chain = display(average);
    chain->setInput(shown);
    const auto bits = [&](RenderSession& where) {
        std::vector<krod::RGBAHalf> pixels = renderPicture(where, *chain, pool, frame(8, 8));
        return std::string(reinterpret_cast<const char*>(pixels.data()),
                           pixels.size() * sizeof(krod::RGBAHalf));
    };
    const std::string first = bits(session);
    int different = 0;
    for (int i = 0; i < 500; ++i)
        different += (bits(other) == first ? 0 : 1) + (bits(session) == first ? 0 : 1);
    EXPECT_EQ(different, 0);
}

} // namespace
} // namespace workbench::test

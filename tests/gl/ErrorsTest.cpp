// SPDX-License-Identifier: Apache-2.0
// OpenGL errors: whose they are, and what is said.
#include "GlFixture.h"

#include "workbench/gl/RenderTarget.h"
#include "workbench/report/Failure.h"

#include "host/gl/GLError.h"

#include <epoxy/gl.h>

#include <stdexcept>

namespace workbench::test {
namespace {

class Errors : public GlTest {};

constexpr GLenum NoEnum = 0xFFFF;

TEST_F(Errors, Pending_error_of_others_is_reported_and_not_thrown) {
    const auto shown = display(average);
    shown->setInput(object(fill));
    glEnable(NoEnum);
    EXPECT_NO_THROW(static_cast<void>(renderPicture(session, *shown, pool, frame(8, 8))));
    EXPECT_EQ(warnings.count("OpenGL error GL_INVALID_ENUM (0x0500) was pending before it was drawn"), 1);
    EXPECT_EQ(warnings.heard.size(), 1U);
}

TEST_F(Errors, Error_of_the_input_is_reported_as_the_inputs) {
    const auto shown = display(average);
    shown->setInput(object([](krod::VGLRenderContext&) { glEnable(NoEnum); }));
    EXPECT_NO_THROW(static_cast<void>(renderPicture(session, *shown, pool, frame(8, 8))));
    ASSERT_EQ(warnings.heard.size(), 1U);
    EXPECT_EQ(warnings.heard[0],
              "display: OpenGL error GL_INVALID_ENUM (0x0500) was left by its input, object");
}

TEST_F(Errors, Error_of_the_module_is_thrown_with_its_label) {
    const auto shown = display([](TestDisplay::Renderer&) {
        glEnable(NoEnum);
        glViewport(0, 0, -1, -1);
        krod::GLError::throwPossibleError("MyDisplay(82): Render QUAD", "MyDisplay", 82);
    });
    shown->setInput(object(fill));
    try {
        static_cast<void>(renderPicture(session, *shown, pool, frame(8, 8)));
        FAIL() << "nothing was thrown";
    } catch (const krod::GLError& error) {
        EXPECT_STREQ(error.what(), "MyDisplay(82): Render QUAD: OpenGL error GL_INVALID_ENUM (0x0500)");
        EXPECT_EQ(error.code(), 0x0500U);
    }
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(Errors, Missing_input_is_a_sentence_that_names_the_display) {
    const auto shown = display(average);
    try {
        static_cast<void>(renderPicture(session, *shown, pool, frame(8, 8)));
        FAIL() << "nothing was thrown";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.fault(), Fault::Usage);
        EXPECT_STREQ(failure.what(),
                     "display: has nothing to show — expected an input that can be drawn, got none. "
                     "Connect a model, a picture or another display.");
    }
}

TEST_F(Errors, Too_large_a_picture_is_refused_with_what_to_do) {
    FrameSetup setup = frame(100000, 8);
    setup.tiles.size = 100000;
    const auto shown = display(average);
    shown->setInput(object(fill));
    try {
        static_cast<void>(renderPicture(session, *shown, pool, setup));
        FAIL() << "nothing was thrown";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.fault(), Fault::OpenGL);
        EXPECT_NE(std::string(failure.what()).find("--tile"), std::string::npos) << failure.what();
    }
}

/// The driver refuses more than 2 GiB in one texture at once, without allocating any of it.
TEST_F(Errors, Memory_that_does_not_suffice_is_an_output_failure) {
    if (onSoftpipe()) {
        SUCCEED() << "its largest texture fits";
        return;
    }
    try {
        static_cast<void>(session.targets().leaseMultisample(12000, 12000, 4));
        FAIL() << "nothing was thrown";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.fault(), Fault::Output);
        EXPECT_NE(std::string(failure.what()).find("12000x12000 with 4 samples"), std::string::npos)
            << failure.what();
        EXPECT_NE(std::string(failure.what()).find("smaller size"), std::string::npos) << failure.what();
    }
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(Errors, Context_of_another_kind_is_refused) {
    const auto shape = object(nothing);
    krod::VRenderContext context(pool);
    EXPECT_THROW(shape->render(context), std::invalid_argument);
}

} // namespace
} // namespace workbench::test

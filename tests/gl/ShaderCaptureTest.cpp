// SPDX-License-Identifier: Apache-2.0
// Texts without OpenGL: these tests run where there is none.
#include "GlFixture.h"

#include "workbench/gl/ShaderCapture.h"
#include "workbench/gl/ShaderCompiler.h"
#include "workbench/report/Failure.h"

#include "host/gl/GLError.h"

namespace workbench::test {
namespace {

/// As `average`, without calls of OpenGL's own, which the library of these tests could not make.
void averageWithoutState(TestDisplay::Renderer& renderer) {
    krod::GLProgram program(vertexText(), averageText(), "vertex label", "fragment label");
    program.use();
    program.setUniformValuei("nSamples", renderer.scene().sampleCount, program.reportsMissingUniforms());
    program.setUniformValuef("none", 1, true);
    renderer.glRenderFullScreen(1);
    krod::GLError::throwPossibleError("label", "file", 1);
}

TEST(ShaderCapture, There_is_no_OpenGL_here) { EXPECT_THROW(RenderSession(), Failure); }

TEST(ShaderCapture, Texts_and_labels_are_those_of_the_display) {
    const krod::VValuePool pool;
    int samples = 0;
    const auto shown = display(
        [&](TestDisplay::Renderer& renderer) {
            samples = renderer.scene().sampleCount;
            averageWithoutState(renderer);
        },
        7);
    const auto captured = captureShader(*shown, pool);
    ASSERT_EQ(captured.size(), 1U);
    EXPECT_EQ(captured[0].vertexText, vertexText());
    EXPECT_EQ(captured[0].fragmentText, averageText());
    EXPECT_EQ(captured[0].vertexLabel, "vertex label");
    EXPECT_EQ(captured[0].fragmentLabel, "fragment label");
    EXPECT_EQ(samples, 7);
    EXPECT_EQ(ShaderCapture::current(), nullptr);
}

TEST(ShaderCapture, Exception_of_the_display_ends_it) {
    const krod::VValuePool pool;
    const auto shown = display([](TestDisplay::Renderer&) { throw std::runtime_error("module"); });
    EXPECT_THROW(static_cast<void>(captureShader(*shown, pool)), std::runtime_error);
    EXPECT_EQ(ShaderCapture::current(), nullptr);
}

TEST(ShaderCapture, Outside_of_it_a_program_says_that_it_needs_OpenGL) {
    try {
        krod::GLProgram(vertexText(), averageText(), "vertex", "fragment");
        FAIL() << "nothing was thrown";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.fault(), Fault::OpenGL);
        EXPECT_EQ(std::string(failure.what()).rfind("fragment: needs OpenGL", 0), 0U) << failure.what();
    }
}

TEST(ShaderCapture, Drawing_without_a_session_is_a_sentence) {
    const krod::VValuePool pool;
    const auto shown = display(average);
    shown->setInput(object(nothing));
    krod::VGLRenderContext context(pool, 4, 4);
    EXPECT_THROW(shown->render(context), Failure);
}

TEST(AdaptedText, Shows_what_the_driver_gets) {
    const std::string text = "void main() { gl_FragColor = pow(vec4(0.5), 2.0); }\n";
    const std::string adapted = adaptedText(text, ShaderStage::Fragment, false);
    EXPECT_EQ(adapted.rfind("#version 120\n", 0), 0U);
    EXPECT_TRUE(adapted.ends_with(text));
    EXPECT_EQ(adaptedText(text, ShaderStage::Fragment, true), text);
    EXPECT_EQ(adaptedText(averageText(), ShaderStage::Fragment, false), averageText());
}

} // namespace
} // namespace workbench::test

// SPDX-License-Identifier: Apache-2.0
// Uniforms reach the program; missing ones are reported where that is wanted.
#include "GlFixture.h"

#include <epoxy/gl.h>

namespace workbench::test {
namespace {

constexpr char Sum[] = "#version 150\n"
                       "uniform int whole;\n"
                       "uniform float part;\n"
                       "void main() { gl_FragColor = vec4(float(whole) + part, 0.0, 0.0, 1.0); }\n";

class Uniforms : public GlTest {
protected:
    using GlTest::GlTest;

    static void setMissing(bool report, const std::string& text = Sum) {
        krod::GLProgram program(vertexText(), text, "vertex", "fragment");
        program.use();
        program.setUniformValuei("nSamples", 4, report);
    }
};

TEST_F(Uniforms, Values_reach_the_shader) {
    const auto shown = display([](TestDisplay::Renderer& renderer) {
        krod::GLProgram program(vertexText(), Sum, "vertex", "fragment");
        program.use();
        program.setUniformValuei("whole", 3, true);
        program.setUniformValuef("part", 0.25F, true);
        renderer.glRenderFullScreen(1);
    });
    shown->setInput(object(nothing));
    EXPECT_EQ(static_cast<float>(renderPicture(session, *shown, pool, frame(4, 4))[5].r), 3.25F);
    EXPECT_TRUE(warnings.heard.empty());
}

TEST_F(Uniforms, Missing_one_is_reported_once_for_each_text) {
    for (int i = 0; i < 3; ++i) setMissing(true);
    EXPECT_EQ(warnings.count("fragment: has no uniform \"nSamples\""), 1);
    setMissing(true, std::string(Sum) + "// another\n");
    EXPECT_EQ(warnings.heard.size(), 2U);
}

TEST_F(Uniforms, Missing_one_is_passed_over_without_the_flag) {
    setMissing(false);
    EXPECT_TRUE(warnings.heard.empty());
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(Uniforms, Flag_is_off_by_default) {
    EXPECT_FALSE(krod::GLProgram(vertexText(), Sum, "vertex", "fragment").reportsMissingUniforms());
}

class VerboseUniforms : public Uniforms {
protected:
    VerboseUniforms() : Uniforms(SessionOptions{.reportMissingUniforms = true}) {}
};

TEST_F(VerboseUniforms, Flag_follows_the_session) {
    EXPECT_TRUE(krod::GLProgram(vertexText(), Sum, "vertex", "fragment").reportsMissingUniforms());
}

} // namespace
} // namespace workbench::test

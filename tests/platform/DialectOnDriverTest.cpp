// SPDX-License-Identifier: Apache-2.0
// The shims and the reading of logs against a real driver.
#include "tests/platform/ShaderTexts.h"
#include "workbench/gl/dialect/ShaderLog.h"
#include "workbench/gl/dialect/Shims.h"
#include "workbench/platform/EglContext.h"

#include <gtest/gtest.h>

#include <epoxy/gl.h>

#include <array>
#include <cmath>

using workbench::AdaptedText;
using workbench::adaptText;
using workbench::LogEntry;
using workbench::LogSeverity;
using workbench::ShaderStage;

namespace {

struct Shader {
    GLuint name = 0;
    bool compiled = false;
    std::string log;
};

std::string shaderLog(GLuint shader) {
    std::array<char, 4096> log{};
    GLsizei length = 0;
    glGetShaderInfoLog(shader, static_cast<GLsizei>(log.size()), &length, log.data());
    return {log.data(), static_cast<std::size_t>(length)};
}

Shader compile(GLenum kind, const std::vector<std::string>& strings) {
    std::vector<const char*> pointers;
    for (const std::string& text : strings) pointers.push_back(text.c_str());
    Shader shader{glCreateShader(kind), false, {}};
    glShaderSource(shader.name, static_cast<GLsizei>(pointers.size()), pointers.data(), nullptr);
    glCompileShader(shader.name);
    GLint status = GL_FALSE;
    glGetShaderiv(shader.name, GL_COMPILE_STATUS, &status);
    shader.compiled = status == GL_TRUE;
    shader.log = shaderLog(shader.name);
    return shader;
}

class DialectOnDriver : public testing::Test {
protected:
    static Shader compileFragment(const std::string& text, bool strict = false) {
        return compile(GL_FRAGMENT_SHADER, adaptText(text, ShaderStage::Fragment, strict).strings);
    }

    /// Links the text with the quad's vertex text; 0 if that fails.
    static GLuint link(const std::string& text) {
        const Shader vertex =
            compile(GL_VERTEX_SHADER, adaptText(QuadVertexText, ShaderStage::Vertex, false).strings);
        const Shader fragment = compileFragment(text);
        EXPECT_TRUE(vertex.compiled) << vertex.log;
        EXPECT_TRUE(fragment.compiled) << fragment.log;
        const GLuint program = glCreateProgram();
        glAttachShader(program, vertex.name);
        glAttachShader(program, fragment.name);
        glLinkProgram(program);
        GLint status = GL_FALSE;
        glGetProgramiv(program, GL_LINK_STATUS, &status);
        return status == GL_TRUE ? program : 0;
    }

    /// Draws one pixel with the text; every texture fetch gives `input`.
    static std::array<float, 4> draw(const std::string& text, std::array<float, 4> input) {
        std::array<GLuint, 2> textures{};
        glGenTextures(2, textures.data());
        for (const GLuint texture : textures) {
            glBindTexture(GL_TEXTURE_2D, texture);
            glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F, 1, 1, 0, GL_RGBA, GL_FLOAT, input.data());
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        }
        GLuint target = 0;
        glGenFramebuffers(1, &target);
        glBindFramebuffer(GL_FRAMEBUFFER, target);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, textures[0], 0);
        glViewport(0, 0, 1, 1);
        const GLuint program = link(text);
        glUseProgram(program);
        glRectf(-1.0F, -1.0F, 1.0F, 1.0F);
        std::array<float, 4> pixel{};
        glReadPixels(0, 0, 1, 1, GL_RGBA, GL_FLOAT, pixel.data());
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
        glUseProgram(0);
        glDeleteProgram(program);
        glDeleteFramebuffers(1, &target);
        glDeleteTextures(2, textures.data());
        return pixel;
    }

    /// The first message of the driver about a text that it refuses.
    static LogEntry firstError(const std::string& text,
                               const std::vector<workbench::TextRegion>& regions = {}) {
        const AdaptedText adapted = adaptText(text, ShaderStage::Fragment, false, regions);
        const Shader shader = compile(GL_FRAGMENT_SHADER, adapted.strings);
        const Shader joined = compile(GL_FRAGMENT_SHADER, {adapted.joined()});
        EXPECT_FALSE(shader.compiled);
        EXPECT_EQ(shader.log, joined.log) << "one string and several must be numbered alike";
        const auto entries = workbench::parseShaderLog(shader.log, adapted.lines);
        EXPECT_FALSE(entries.empty());
        return entries.empty() ? LogEntry{} : entries.front();
    }

    workbench::EglContext context = workbench::EglContext::create(workbench::parseGpuChoice("software"));
};

TEST_F(DialectOnDriver, Texts_of_modules_are_refused_without_shims) {
    for (const std::string& text : {VectorPowerText, FilterText, IntegerArithmeticText})
        EXPECT_FALSE(compileFragment(text, true).compiled) << text;
}

TEST_F(DialectOnDriver, Texts_of_modules_link_with_shims) {
    for (const std::string& text : {VectorPowerText, FilterText, IntegerArithmeticText})
        EXPECT_NE(link(text), 0U) << text;
}

TEST_F(DialectOnDriver, Versionless_vertex_text_links_with_every_version) {
    for (const char* version : {"", "#version 120\n", "#version 150\n", "#version 330\n"})
        EXPECT_NE(link(std::string(version) + "void main() { gl_FragColor = vec4(1.0); }"), 0U) << version;
}

TEST_F(DialectOnDriver, Power_of_a_vector_has_its_usual_value) {
    const auto pixel = draw(VectorPowerText, {0.25F, 0.5F, 1.0F, 2.0F});
    const std::array<double, 4> input{0.25, 0.5, 1.0, 2.0};
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(pixel[i], std::sqrt(std::atan(input[i]) * 2.0 / 3.141592), 1e-4) << "channel " << i;
}

TEST_F(DialectOnDriver, Every_overload_of_the_power_has_its_usual_value) {
    const std::string text =
        "uniform sampler2D frame;\nvoid main() {\nvec4 c = texture2D(frame, vec2(0.5));\n"
        "gl_FragColor = vec4(pow(c.x, c.y), pow(c.xy, c.yx).y + pow(c.xyz, 2).z,\n"
        "pow(c.xyz, c.xyz).y + pow(c.xy, c.w).x, pow(c, c).w + pow(c, 3.0).x);\n}\n";
    const auto pixel = draw(text, {0.5F, 2.0F, 3.0F, 4.0F});
    const std::array<float, 4> expected{0.25F, std::sqrt(2.0F) + 9.0F, 4.0F + 0.0625F, 256.0F + 0.125F};
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(pixel[i], expected[i], expected[i] * 1e-4F) << "channel " << i;
}

TEST_F(DialectOnDriver, Renamed_filter_has_its_values) {
    const auto pixel = draw(FilterText, {});
    EXPECT_FLOAT_EQ(pixel[0], 1.5F);
    EXPECT_FLOAT_EQ(pixel[1], 2.0F);
}

TEST_F(DialectOnDriver, Integer_arithmetic_is_done_in_floats) {
    EXPECT_NEAR(draw(IntegerArithmeticText, {})[0], -0.5, 1e-6);
}

TEST_F(DialectOnDriver, Extension_in_a_versionless_text_stays_in_front) {
    const std::string text = "#extension GL_ARB_texture_rectangle : enable\n#ifdef GL_ARB_gpu_shader5\n"
                             "#extension GL_ARB_gpu_shader5 : enable\n#endif\n"
                             "void main() { gl_FragColor = pow(vec4(1.0), 0.5); }\n";
    const AdaptedText adapted = adaptText(text, ShaderStage::Fragment, false);
    EXPECT_EQ(adapted.strings.size(), 4U);
    EXPECT_NE(link(text), 0U);
    const LogEntry entry = firstError(text + "void f() { oops; }\n");
    EXPECT_EQ(entry.line, 6);
}

TEST_F(DialectOnDriver, Error_in_line_3_of_a_versionless_text_is_found_there) {
    for (const char* second :
         {"void main()", "void main() /* pow */", "float f(float x) { return pow(x, 2.0); } void main()"}) {
        const LogEntry entry = firstError("uniform int a;\n" + std::string(second) + "\n{ oops; }\n");
        EXPECT_EQ(entry.severity, LogSeverity::Error);
        EXPECT_EQ(entry.region, "text");
        EXPECT_EQ(entry.line, 3);
        EXPECT_EQ(entry.column, 3);
    }
}

TEST_F(DialectOnDriver, Error_in_a_text_with_prefix_is_found_in_the_body) {
    const std::string prefix = "const float filter[] = float[](0.5, 1.0);\nuniform int a;\n";
    const std::string body = "void main()\n{\n\t\tfloat b = filter[0] + /* why */ oops;\n}\n";
    const std::vector<workbench::TextRegion> regions{{"version line", 1}, {"prefix", 2}, {"body", 4}};
    for (const char* version : {"#version 150\n", "#version 330\n"}) {
        const LogEntry entry = firstError(version + prefix + body, regions);
        EXPECT_EQ(entry.region, "body");
        EXPECT_EQ(entry.line, 3);
        EXPECT_EQ(entry.column, 35) << "the word oops";
        EXPECT_EQ(firstError(version + prefix + "oops;\n" + body, regions).line, 1);
    }
}

TEST_F(DialectOnDriver, Error_behind_a_renamed_word_has_its_column) {
    const LogEntry entry = firstError("void main()\n{\nfloat a = pow(1.0, 2.0) + pow(2.0, 3.0) + oops;\n}\n");
    EXPECT_EQ(entry.line, 3);
    EXPECT_EQ(entry.column, 43);
}

TEST_F(DialectOnDriver, Missing_brace_is_reported_in_the_last_line) {
    EXPECT_EQ(firstError("void main()\n{\ngl_FragColor = vec4(1.0);\n").line, 3);
}

} // namespace

// SPDX-License-Identifier: Apache-2.0
// What people read when a shader does not compile: their own lines, whatever the host has put around them.
#include "GlFixture.h"
#include "TemporaryFolder.h"

#include "workbench/gl/ShaderFiles.h"
#include "workbench/report/Failure.h"

#include "host/gl/Programmable.h"

#include <epoxy/gl.h>

#include <algorithm>

namespace workbench::test {
namespace {

class ShaderErrors : public GlTest {
protected:
    using GlTest::GlTest;
    ~ShaderErrors() override { setShaderFolders({}); }

    /// What is thrown for the text.
    static Diagnostic diagnosticOf(const std::string& fragmentText) {
        try {
            krod::GLProgram(vertexText(), fragmentText, "* Internal Vertex Shader *",
                            "* Internal Fragment Shader *");
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.fault(), Fault::Shader);
            return failure.diagnostic();
        }
        ADD_FAILURE() << "nothing was thrown";
        return {};
    }

    static bool hasDetail(const Diagnostic& diagnostic, const std::string& text) {
        return std::any_of(diagnostic.details.begin(), diagnostic.details.end(),
                           [&](const std::string& line) { return line.find(text) != std::string::npos; });
    }
};

TEST_F(ShaderErrors, Text_with_version_is_numbered_as_written) {
    const Diagnostic said = diagnosticOf("#version 150\n"
                                         "const float filter[2] = float[2](0.5, 0.5);\n"
                                         "void main() {\n"
                                         "  gl_FragColor = vec4(filter[0]);\n"
                                         "  gl_FragColor = missing;\n"
                                         "}\n");
    EXPECT_EQ(said.who, "* Internal Fragment Shader *");
    EXPECT_EQ(said.what, "does not compile as a fragment shader");
    EXPECT_EQ(said.got.rfind("text line 5, column 18: ", 0), 0U) << said.got;
    EXPECT_NE(said.got.find("missing"), std::string::npos) << said.got;
    EXPECT_TRUE(hasDetail(said, "> 5 |   gl_FragColor = missing;"));
    EXPECT_TRUE(hasDetail(said, "  4 |   gl_FragColor = vec4(filter[0]);"));
    EXPECT_TRUE(hasDetail(said, "|                  ^"));
}

TEST_F(ShaderErrors, Text_without_version_is_numbered_as_written) {
    const Diagnostic said = diagnosticOf("uniform sampler2D frame;\n"
                                         "void main (void)\n"
                                         "{\n"
                                         "vec4 c = pow(texture2D(frame, gl_TexCoord[0].xy), 0.5);\n"
                                         "gl_FragColor = missing;\n"
                                         "}\n");
    EXPECT_EQ(said.got.rfind("text line 5, column 16: ", 0), 0U) << said.got;
    EXPECT_TRUE(hasDetail(said, "> 5 | gl_FragColor = missing;"));
}

TEST_F(ShaderErrors, Override_file_is_numbered_in_its_own_lines) {
    const TemporaryFolder folder;
    const auto file = folder.write("My.frag", "void main() {\n"
                                              "  gl_FragColor = missing;\n"
                                              "}\n");
    setShaderFolders({folder.path()});
    const std::string body = krod::Programmable::OptionalFileRead("My.frag", "built in");
    const Diagnostic said = diagnosticOf("#version 150\nconst float a = 1.0;\n" + body);
    EXPECT_EQ(said.got.rfind(file.string() + " line 2, column 18: ", 0), 0U) << said.got;
    const Diagnostic prefix = diagnosticOf("#version 150\nconst float a = missing;\n" + body);
    EXPECT_EQ(prefix.got.rfind("text line 2", 0), 0U) << prefix.got;
}

TEST_F(ShaderErrors, Vertex_stage_is_named) {
    try {
        krod::GLProgram("void main() { missing; }", averageText(), "my vertex", "my fragment");
        FAIL() << "nothing was thrown";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.diagnostic().who, "my vertex");
        EXPECT_EQ(failure.diagnostic().what, "does not compile as a vertex shader");
    }
}

TEST_F(ShaderErrors, Link_failure_names_both_texts) {
    const Diagnostic said =
        diagnosticOf("#version 150\nvec4 colour();\nvoid main() { gl_FragColor = colour(); }\n");
    EXPECT_EQ(said.what, "does not link with * Internal Vertex Shader *");
    EXPECT_NE(said.got.find("colour"), std::string::npos) << said.got;
}

TEST_F(ShaderErrors, Display_puts_its_name_in_front) {
    const auto shown =
        display([](TestDisplay::Renderer& renderer) { shade(renderer, "#version 150\nnonsense\n"); });
    shown->setInput(object(fill));
    try {
        static_cast<void>(renderPicture(session, *shown, pool, frame(4, 4)));
        FAIL() << "nothing was thrown";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.diagnostic().who, "display, fragment");
    }
}

TEST_F(ShaderErrors, Empty_text_is_refused) {
    EXPECT_EQ(diagnosticOf("").who, "* Internal Fragment Shader *");
}

constexpr char NeedsShims[] = "void main() { gl_FragColor = pow(vec4(0.5), 2.0) * 1; }\n";

TEST_F(ShaderErrors, Shims_make_texts_of_permissive_drivers_compile) {
    EXPECT_NO_THROW(krod::GLProgram(vertexText(), NeedsShims, "vertex", "fragment"));
}

class StrictShaderErrors : public ShaderErrors {
protected:
    StrictShaderErrors() : ShaderErrors(SessionOptions{.strictGlsl = true}) {}
};

TEST_F(StrictShaderErrors, Nothing_is_put_around_the_text) {
    const Diagnostic said = diagnosticOf(NeedsShims);
    EXPECT_EQ(said.got.rfind("text line 1", 0), 0U) << said.got;
}

} // namespace
} // namespace workbench::test

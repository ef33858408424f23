// SPDX-License-Identifier: Apache-2.0
// The texts of Display/CMYK.
#include "tests/support/Goldens.h"
#include "tests/support/LoadedPlugin.h"
#include "tests/support/ParameterPool.h"
#include "workbench/gl/ShaderCapture.h"
#include "workbench/gl/ShaderFiles.h"
#include "workbench/report/Failure.h"

#include <gtest/gtest.h>

namespace {

using support::ParameterPool;
using workbench::ProgramTexts;

const support::Goldens Golden(GOLDEN_FOLDER, ACTUAL_FOLDER);

class TextOfCMYK : public testing::Test {
protected:
    TextOfCMYK() {
        std::filesystem::remove_all(folder);
        workbench::setShaderFolders({folder});
    }
    ~TextOfCMYK() override {
        workbench::setShaderFolders({});
        std::filesystem::remove_all(folder);
    }

    /// The one program of a frame.
    ProgramTexts texts(const krod::VValuePool& pool = {}) {
        const auto programs = workbench::captureShader(*display, pool);
        EXPECT_EQ(programs.size(), 1U);
        return programs.at(0);
    }
    std::string fragment(const krod::VValuePool& pool = {}) { return texts(pool).fragmentText; }

    void overrideBody(const std::string& bytes) { support::writeFile(folder / "CMYK.frag", bytes); }

    std::filesystem::path folder = std::filesystem::path(ACTUAL_FOLDER).parent_path() / "shaders" /
                                   testing::UnitTest::GetInstance()->current_test_info()->name();
    support::Warnings warnings;
    support::LoadedPlugin plugin;
    krod::StrongPtr<krod::MSDeferredObjectDisplay> display =
        plugin.make<krod::MSDeferredObjectDisplay>("Display/CMYK");
};

TEST_F(TextOfCMYK, CMYKObjectDisplay_defaults_versionLineThenBody) {
    EXPECT_TRUE(Golden.match("CMYK/defaults.frag", fragment()));
}

TEST_F(TextOfCMYK, CMYKObjectDisplay_vertexTextAndLabels_areTheInternalOnes) {
    const ProgramTexts made = texts();
    EXPECT_EQ(made.vertexText, "void main(void)\n{\n\tgl_Position = ftransform();\n}");
    EXPECT_EQ(made.vertexLabel, "* Internal Vertex Shader *");
    EXPECT_EQ(made.fragmentLabel, "* Internal Fragment Shader *");
}

TEST_F(TextOfCMYK, CMYKObjectDisplay_everyOtherSetting_leavesTextAlone) {
    ParameterPool pool(*display);
    pool.set("samples", "1").set("InputVisibility", "false").set("options", "+glow +halo");
    EXPECT_TRUE(Golden.match("CMYK/everySetting.frag", fragment(pool)));
}

TEST_F(TextOfCMYK, CMYKObjectDisplay_unreadableSettings_leaveTextAlone) {
    ParameterPool pool(*display);
    pool.makeUnreadable("samples").makeUnreadable("InputVisibility").makeUnreadable("options");
    EXPECT_EQ(fragment(pool), fragment());
}

TEST_F(TextOfCMYK, CMYKObjectDisplay_overrideFile_replacesBodyOnly) {
    overrideBody("// mine\r\n\tvoid main() { gl_FragColor = vec4(1); }");
    EXPECT_TRUE(Golden.match("CMYK/override.frag", fragment()));
    EXPECT_TRUE(warnings.texts.empty()) << warnings.texts.front();
}

TEST_F(TextOfCMYK, CMYKObjectDisplay_overrideFileChangedBetweenFrames_isReadAnew) {
    overrideBody("void main() {}\n");
    const std::string first = fragment();
    overrideBody("void main() { discard; }\n");
    EXPECT_EQ(first, "#version 150\nvoid main() {}\n");
    EXPECT_EQ(fragment(), "#version 150\nvoid main() { discard; }\n");
}

TEST_F(TextOfCMYK, CMYKObjectDisplay_absentOverrideFile_builtInBodyWithoutWarning) {
    support::writeFile(folder / "Other.frag", "void main() {}\n");
    EXPECT_TRUE(Golden.match("CMYK/absentOverride.frag", fragment()));
    EXPECT_TRUE(warnings.texts.empty()) << warnings.texts.front();
}

TEST_F(TextOfCMYK, CMYKObjectDisplay_emptyOverrideFile_builtInBodyWithWarning) {
    overrideBody("");
    EXPECT_TRUE(Golden.match("CMYK/emptyOverride.frag", fragment()));
    ASSERT_EQ(warnings.texts.size(), 1U);
    EXPECT_NE(warnings.texts[0].find((folder / "CMYK.frag").string() + " is empty"), std::string::npos)
        << warnings.texts[0];
}

TEST_F(TextOfCMYK, CMYKObjectDisplay_overrideFileWithVersionLine_isRefusedByItsPath) {
    overrideBody("#version 330\nvoid main() {}\n");
    try {
        fragment();
        FAIL() << "the file was taken";
    } catch (const workbench::Failure& failure) {
        EXPECT_EQ(failure.fault(), workbench::Fault::Shader);
        EXPECT_EQ(failure.diagnostic().who, (folder / "CMYK.frag").string());
        EXPECT_EQ(failure.diagnostic().got, "#version 330");
    }
}

TEST_F(TextOfCMYK, CMYKObjectDisplay_bytesOfBeginningAndEnd_tabsAndThreeLineBreaks) {
    const std::string text = fragment();
    EXPECT_TRUE(text.starts_with("#version 150\nuniform int\tnSamples;\nuniform sampler2DMS SceneColor;\n"
                                 "uniform sampler2DMS SceneDepth;\n"))
        << text;
    EXPECT_TRUE(text.ends_with("gl_FragDepth = Depth;\n}\n\n\n")) << text;
    EXPECT_EQ(text.find('\r'), std::string::npos);
}

TEST_F(TextOfCMYK, CMYKObjectDisplay_K1_blackHasBlueItselfAsThirdTerm) {
    const std::string text = fragment();
    EXPECT_NE(text.find("min(min(1. - C.r, 1-C.g), C.b)"), std::string::npos) << text;
}

TEST_F(TextOfCMYK, CMYKObjectDisplay_K1_quotients_haveNoGuardAgainstZero) {
    const std::string text = fragment();
    EXPECT_NE(text.find("float\tWhite = 1 - Black;\n\n"
                        "float\tCyan    = (White - C.r) / White;\n"
                        "float\tMagenta = (White - C.g) / White;\n"
                        "float\tYellow  = (White - C.b) / White;\n"),
              std::string::npos)
        << text;
}

TEST_F(TextOfCMYK, CMYKObjectDisplay_K2_separationIsComputedAndItsReturnLineIsAComment) {
    const std::string text = fragment();
    for (const char* line :
         {"Red   = 1 - min(1, Cyan    * White + Black);\n", "Green = 1 - min(1, Magenta * White + Black);\n",
          "Blue  = 1 - min(1, Yellow  * White + Black);\n",
          "\n//\treturn vec4(Red, Green, Blue, C.a);\n"
          "\treturn vec4(Cyan, Magenta, Yellow, C.a);\n"})
        EXPECT_NE(text.find(line), std::string::npos) << "missing: " << line << text;
}

TEST_F(TextOfCMYK, CMYKObjectDisplay_K3_counterStartsAtZeroThoughSampleZeroIsInTheSum) {
    const std::string text = fragment();
    EXPECT_NE(text.find("int\tSampled = 0;"), std::string::npos) << text;
    EXPECT_NE(text.find("for(int i=1; i<max(1, nSamples); i++)"), std::string::npos) << text;
    EXPECT_NE(text.find("gl_FragColor = Color / float(max(Sampled, 1));"), std::string::npos) << text;
}

} // namespace

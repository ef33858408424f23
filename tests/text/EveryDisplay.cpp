// SPDX-License-Identifier: Apache-2.0
// What holds for the texts of all eight displays, and for the files that may replace the bodies of seven.
#include "DisplayTexts.h"
#include "workbench/report/Failure.h"

namespace {

struct Display {
    const char* source; ///< the unit's name
    const char* key;
    const char* file; ///< that may replace the body; empty: none may
};

constexpr Display Replaceable[] = {
    {"BlurredObject", "Display/Blurred", "BlurredObject.frag"},
    {"CMYKObjectDisplay", "Display/CMYK", "CMYK.frag"},
    {"CurvesFilter", "Display/CurveAdjust", "CurvesFilter.frag"},
    {"HDRObjectDisplay", "Display/Depth@HDRObjectDisplay", "HDRObjectDisplay.frag"},
    {"HueSatValueFilter", "Display/HSVAdjust", "HueSatValueFiler.frag"},
    {"PixelContours", "Display/PixelContours", "PixelContours.frag"},
    {"ProximityHDR", "Display/ProximityHDR", "ProximityHDR.frag"},
};
constexpr Display Fixed[] = {{"DisplayDepth", "Display/Depth@DisplayDepth", ""}};

std::string sourceOf(const testing::TestParamInfo<Display>& info) { return info.param.source; }

class EveryDisplay : public DisplayTexts, public testing::WithParamInterface<Display> {
protected:
    EveryDisplay() : DisplayTexts(GetParam().key, GetParam().file) {}

    bool has(const std::string& parameter) const {
        return static_cast<bool>(display->slots().input(parameter));
    }
};
class OverrideFile : public EveryDisplay {};

INSTANTIATE_TEST_SUITE_P(Replaceable, EveryDisplay, testing::ValuesIn(Replaceable), sourceOf);
INSTANTIATE_TEST_SUITE_P(Fixed, EveryDisplay, testing::ValuesIn(Fixed), sourceOf);
INSTANTIATE_TEST_SUITE_P(Replaceable, OverrideFile, testing::ValuesIn(Replaceable), sourceOf);

TEST_P(EveryDisplay, vertexTextAndLabels_areTheInternalOnes) {
    const workbench::ProgramTexts made = texts();
    EXPECT_EQ(made.vertexText, "void main(void)\n{\n\tgl_Position = ftransform();\n}");
    EXPECT_EQ(made.vertexLabel, "* Internal Vertex Shader *");
    EXPECT_EQ(made.fragmentLabel, "* Internal Fragment Shader *");
}

TEST_P(EveryDisplay, settingsOfTheFrame_leaveTextAlone) {
    if (has("samples")) pool.set("samples", "3");
    if (has("options")) pool.set("options", "+glow +halo");
    pool.set("InputVisibility", "false");
    EXPECT_EQ(fragment(pool), fragment());
}

TEST_P(EveryDisplay, unreadableSettingsOfTheFrame_leaveTextAlone) {
    for (const char* parameter : {"samples", "InputVisibility", "options"})
        if (has(parameter)) pool.makeUnreadable(parameter);
    EXPECT_EQ(fragment(pool), fragment());
}

TEST_P(OverrideFile, present_replacesBodyOnly) {
    const std::string bytes = "// mine\r\n\tvoid main() { gl_FragDepth = 1; }", builtIn = prefix();
    overrideBody(bytes);
    EXPECT_EQ(fragment(), VersionLine + builtIn + bytes);
    EXPECT_TRUE(warnings.texts.empty()) << warnings.texts.front();
}

TEST_P(OverrideFile, changedBetweenFrames_isReadAnew) {
    const std::string builtIn = fragment(), front = VersionLine + prefix();
    overrideBody("void main() {}\n");
    EXPECT_EQ(fragment(), front + "void main() {}\n");
    overrideBody("void main() { discard; }\n");
    EXPECT_EQ(fragment(), front + "void main() { discard; }\n");
    std::filesystem::remove(overrideFile);
    EXPECT_EQ(fragment(), builtIn);
}

TEST_P(OverrideFile, absentAmongOthers_builtInBodyWithoutWarning) {
    const std::string builtIn = fragment();
    for (const std::string name : {"Other.frag", "frag"})
        support::writeFile(folder / name, "void main() {}\n");
    support::writeFile(overrideFile.string() + "~", "void main() {}\n");
    EXPECT_EQ(fragment(), builtIn);
    EXPECT_TRUE(warnings.texts.empty()) << warnings.texts.front();
}

TEST_P(OverrideFile, empty_builtInBodyWithWarning) {
    const std::string builtIn = fragment();
    overrideBody("");
    EXPECT_EQ(fragment(), builtIn);
    ASSERT_EQ(warnings.texts.size(), 1U);
    EXPECT_TRUE(contains(warnings.texts[0], overrideFile.string() + " is empty"));
}

TEST_P(OverrideFile, withVersionLine_isRefusedByItsPath) {
    overrideBody("#version 330\nvoid main() {}\n");
    try {
        fragment();
        FAIL() << "the file was taken";
    } catch (const workbench::Failure& failure) {
        EXPECT_EQ(failure.fault(), workbench::Fault::Shader);
        EXPECT_EQ(failure.diagnostic().who, overrideFile.string());
        EXPECT_EQ(failure.diagnostic().got, "#version 330");
    }
}

} // namespace

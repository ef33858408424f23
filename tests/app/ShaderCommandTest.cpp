// SPDX-License-Identifier: Apache-2.0
// plime shader. Everything here runs where no OpenGL can be had.
#include "tests/app/PictureProgram.h"

namespace {

std::string golden(const std::string& name) {
    std::ifstream file(std::string(TEXT_FOLDER "/") + name + ".frag", std::ios::binary);
    EXPECT_TRUE(file) << name;
    return {std::istreambuf_iterator<char>(file), {}};
}

class PlimeShader : public PictureProgramTest {
protected:
    static Result shader(const Words& words) { return run(Call{Words{"shader"} + words, WithoutOpenGL}); }

    static void expectText(const std::string& text, const Words& words) {
        const Result result = shader(words);
        EXPECT_EQ(result.code, 0);
        EXPECT_EQ(result.output, text);
        EXPECT_EQ(result.error, "");
    }

    void refused(int code, const std::string& sentence, const Words& words) const {
        expectFailure(code, sentence, Call{Words{"shader"} + words, WithoutOpenGL});
    }
};

const std::string Colours = "Hollywood/ColorGammaCorrection";

TEST_F(PlimeShader, ofADisplay_isItsTextByteForByte) {
    expectText(golden("CMYKObjectDisplay/defaults"), {"Display/CMYK"});
    expectText(golden("CMYKObjectDisplay/defaults"), {"Display/CMYK@CMYKObjectDisplay"});
    expectText(golden("CMYKObjectDisplay/defaults"), {"Display/CMYK", "-p", "samples=1", "-p",
                                                      "InputVisibility=false", "-p", "options=+glow +halo"});
}

TEST_F(PlimeShader, ofATileProcessor_isItsTextAfterOneUpdate) {
    expectText(golden("ColorGammaCorrection/defaults"), {Colours});
    expectText(golden("ColorGammaCorrection/lowest"),
               {Colours, "-p", "red=-1", "-p", "green=-1", "-p", "blue=-1", "-p", "alpha=-1"});
    expectText(golden("ColorGammaCorrection/fourValues"),
               {Colours, "-p", "red=-1", "-pgreen=1", "-p", "blue=0.25", "-p", "alpha=-0.5"});
}

TEST_F(PlimeShader, unset_makesTheModuleFallBack) {
    expectText(golden("ColorGammaCorrection/allUnreadable"),
               {Colours, "--unset", "red", "--unset", "green", "--unset=blue", "--unset", "alpha"});
    refused(2, Colours + ": has no parameter \"rad\". Did you mean \"red\"?", {Colours, "--unset", "rad"});
}

TEST_F(PlimeShader, unchecked_takesValuesBeyondTheirLimits) {
    const Words values = {Colours, "-p", "green=2", "-p", "alpha=-7"};
    expectText(golden("ColorGammaCorrection/beyondLimits"), values + Words{"--unchecked"});
    refused(2,
            Colours + ": parameter \"green\" is outside its limits — expected -1.0 to 1.0, got 2.0. Set it "
                      "nevertheless with --unchecked.",
            values);
}

TEST_F(PlimeShader, asCompiled_showsTheShims) {
    const std::string text = shader({Colours, "--as-compiled"}).output;
    EXPECT_TRUE(text.starts_with("#version 120\n")) << text;
    expectHas(text, "#define pow ");
    EXPECT_TRUE(text.ends_with(golden("ColorGammaCorrection/defaults"))) << text;
    expectText(golden("ColorGammaCorrection/defaults"), {Colours, "--as-compiled", "--strict-glsl"});
    expectText(golden("CMYKObjectDisplay/defaults"), {"Display/CMYK", "--as-compiled"});
}

TEST_F(PlimeShader, overrideFile_replacesTheBodyAndIsNamed) {
    const std::string body = "// mine\r\n\tvoid main() { gl_FragColor = vec4(1); }";
    const auto file = write("CMYK.frag", body);
    const Words words = {"Display/CMYK", "--shader-dir", folder.string()};
    expectText("#version 150\n" + body, words);
    const Result told = shader(words + Words{"-v"});
    EXPECT_EQ(told.output, "#version 150\n" + body);
    expectHas(told.error, "plime: CMYK.frag is taken from " + file.string() + ".\n");
}

TEST_F(PlimeShader, overrideFileWithAVersion_isRefused) {
    const auto file = write("CMYK.frag", "#version 120\nvoid main() {}\n");
    refused(6,
            "Display/CMYK, " + file.string() +
                ": cannot replace a module's shader — expected a text without #version line, got "
                "#version 120. Remove that line; the module writes its own in front.",
            {"Display/CMYK", "--shader-dir", folder.string()});
}

TEST_F(PlimeShader, emptyOverrideFile_isTakenAsAbsentWithAWarning) {
    const auto file = write("CMYK.frag", "");
    const Result result = shader({"Display/CMYK", "--shader-dir", folder.string()});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.output, golden("CMYKObjectDisplay/defaults"));
    EXPECT_EQ(result.error, "plime: warning: " + file.string() + " is empty and is not used as a shader.\n");
}

TEST_F(PlimeShader, moduleWithoutShader_isSaid) {
    for (const std::string key : {"Hollywood/GammaCorrection", "Hollywood/ArcTangens"})
        refused(1, key + ": has no shader: it works on the pixels directly.", {key});
    refused(1, "Scene/Knot: has no shader: it is neither a display nor a tile processor.", {"Scene/Knot"});
}

TEST_F(PlimeShader, keyOfTwoModules_isRefusedNamingBoth) {
    refused(2,
            "Display/Depth: is the key of several modules — expected Display/Depth@HDRObjectDisplay or "
            "Display/Depth@DisplayDepth, got the bare key.",
            {"Display/Depth"});
}

TEST_F(PlimeShader, unknownKey_isRefusedWithASuggestion) {
    refused(2, "Display/CMKY: is not the key of a module. Did you mean \"Display/CMYK\"?", {"Display/CMKY"});
    refused(2, "Display/Curves: is not the key of a module. See \"plime list\".", {"Display/Curves"});
    refused(2, "Display/Nothing: is not the key of a module. See \"plime list\".", {"Display/Nothing"});
}

} // namespace

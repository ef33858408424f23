// SPDX-License-Identifier: Apache-2.0
// What people read whose program would have ended the driver: one sentence, and exit code 6.
#include "tests/app/PictureProgram.h"
#include "tests/shadercheck/HostileTexts.h"
#include "workbench/gl/check/ShaderCheck.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace workbench;
using namespace workbench::test;

class HostileProgram : public PictureProgramTest {
protected:
    [[nodiscard]] Words process(const std::string& code) const {
        return {"process", input,         "-o", at("out.exr"), "--with", "Hollywood/TileProgram",
                "-p",      "code=" + code};
    }
    std::string input = picture("in.exr", gradient(8, 8));
};

TEST_F(HostileProgram, everyText_isRefusedInOneSentence) {
    for (const HostileText& hostile : hostileTexts()) {
        const std::string file = write("my.frag", hostile.text).string();
        const Result result = run(process('@' + file));
        EXPECT_EQ(result.code, hostile.name == "nul" ? 2 : 6) << hostile.name;
        EXPECT_EQ(occurrences(result.error, "\n"), 1U) << hostile.name << '\n' << result.error;
        EXPECT_FALSE(exists(folder / "out.exr"));
    }
}

TEST_F(HostileProgram, sentence_namesModuleFileLineAndLimit) {
    const std::string file = write("my.frag", hostileText("variableArray2000000000")).string();
    expectFailure(
        6,
        "Hollywood/TileProgram, parameter \"code\" from " + file +
            ": is not compiled, because text line 3 declares \"a\" with too many elements — expected at "
            "most 1024, got 2000000000.",
        process('@' + file));
}

TEST_F(HostileProgram, bodyFile_isNamedWithItsOwnLine) {
    const std::string file = write("CMYK.frag", "void main()\n{\nfloat a[1000000];\n}\n").string();
    const Result result = run({"render", "demo:knot", "--shader-dir", folder.string(), "--display",
                               "Display/CMYK", "--size", "8x8", "-o", at("out.exr")});
    EXPECT_EQ(result.code, 6) << result.error;
    expectHas(result.error, "is not compiled, because " + file +
                                " line 3 declares \"a\" with too many elements — expected at most 1024, got "
                                "1000000.");
}

TEST_F(HostileProgram, endlessBodyFileOnSoftpipe_isEnded) {
    const std::string file =
        write("CMYK.frag",
              "void main() { float s = 0.0; while (s < 2.0) s = fract(s + 0.1); gl_FragColor = vec4(s); }")
            .string();
    const Result result = run(Call{{"render", "demo:knot", "--shader-dir", folder.string(), "--display",
                                    "Display/CMYK", "--size", "8x8", "-o", at("out.exr")},
                                   {{"GALLIUM_DRIVER", "softpipe"}, {"KROD_SHADER_SECONDS", "2"}}});
    EXPECT_EQ(result.code, 6) << result.error;
    expectHas(result.error,
              "with " + file + ", its program took longer than 2 s. KROD_SHADER_SECONDS can allow more.");
}

TEST_F(HostileProgram, endlessLoopOnSoftpipe_isEnded) {
    const std::string loop =
        "void main() { float s = 0.0; while (s < 2.0) s = fract(s + 0.1); gl_FragColor = vec4(s); }";
    expectFailure(6,
                  "Hollywood/TileProgram, parameter \"code\": its program took longer than 2 s. "
                  "KROD_SHADER_SECONDS can allow more.",
                  Call{process(loop), {{"GALLIUM_DRIVER", "softpipe"}, {"KROD_SHADER_SECONDS", "2"}}});
}

/// Programs that end on the worker's tiles and not on the picture.
class EndlessElsewhere : public HostileProgram {
protected:
    static std::string loopWhere(const std::string& condition) {
        return "uniform sampler2D frame; void main() { float s = 0.0; if (" + condition +
               ") while (s < 2.0) s = fract(s + 0.1); gl_FragColor = vec4(s); }";
    }
    const std::string ended =
        "is ended, because its program has drawn for 8 s and does not come to an end. Look for a "
        "loop that does not end for every value of a pixel, or allow more time with KROD_SHADER_SECONDS.";
};

TEST_F(EndlessElsewhere, farFromTheCorner_isFoundByTheLargerTile) {
    expectFailure(6,
                  "Hollywood/TileProgram, parameter \"code\": its program took longer than 2 s. "
                  "KROD_SHADER_SECONDS can allow more.",
                  Call{process(loopWhere("gl_FragCoord.x > 100.0")),
                       {{"GALLIUM_DRIVER", "softpipe"}, {"KROD_SHADER_SECONDS", "2"}}});
}

TEST_F(EndlessElsewhere, forValuesOfThePicture_isEndedWhileItDraws_andNothingIsLeft) {
    workbench::Picture dark = gradient(8, 8);
    dark.pixels[9] = pixel(-1.75F, 0, 0); // no tile of a trial has such values
    input = picture("in.exr", dark);
    write("out.exr", "the old file");
    const auto files = filesInFolder();
    expectFailure(6, "Hollywood/TileProgram, parameter \"code\": " + ended,
                  Call{process(loopWhere("texture2D(frame, gl_TexCoord[0].xy).r < -1.5")),
                       {{"GALLIUM_DRIVER", "softpipe"}}});
    EXPECT_EQ(read(at("out.exr")), "the old file");
    EXPECT_EQ(filesInFolder(), files);
}

TEST_F(EndlessElsewhere, inABodyFile_isEndedWhileItDraws) {
    const std::string file = write("CMYK.frag", loopWhere("gl_FragCoord.x > 150.0")).string();
    const Result result = run(Call{{"render", "demo:knot", "--shader-dir", folder.string(), "--display",
                                    "Display/CMYK", "--size", "160x8", "-o", at("out.exr")},
                                   {{"GALLIUM_DRIVER", "softpipe"}}});
    EXPECT_EQ(result.code, 6) << result.error;
    expectHas(result.error, " with " + file + ": " + ended);
    EXPECT_FALSE(exists(folder / "out.exr"));
}

TEST_F(HostileProgram, modulesAtTheirGreatestValues_areHarmless) {
    for (const Words& words : {Words{"Display/Blurred", "-p", "width=2048", "-p", "exponent=0.37"},
                               Words{"Display/PixelContours", "-p", "width=22"},
                               Words{"Display/ProximityHDR", "-p", "width=22"}}) {
        const Result result = run(Words{"shader"} + words + Words{"--unchecked"});
        ASSERT_EQ(result.code, 0) << result.error;
        const auto objection = objectionTo(result.output);
        EXPECT_FALSE(objection.has_value()) << words[0] << ' ' << objection->what;
    }
}

} // namespace

// SPDX-License-Identifier: Apache-2.0
// What people read whose own tile program does not compile, on both software drivers.
#include "tests/app/PictureProgram.h"

namespace {

class PlimeTileProgram : public PictureProgramTest, public testing::WithParamInterface<const char*> {
protected:
    [[nodiscard]] Call call(const std::string& code) const {
        return {Words{"process", input, "-o", at("out.exr"), "--with", "Hollywood/TileProgram", "-p",
                      "code=" + code},
                {{"GALLIUM_DRIVER", GetParam()}}};
    }
    /// Stores the program in a file; it must be refused with that sentence, and both pictures stay.
    std::string refusalOf(const std::string& program, const std::string& what) {
        const std::string file = write("my.frag", program).string();
        write("out.exr", "an earlier output");
        expectFailure(6, "Hollywood/TileProgram, parameter \"code\" from " + file + ": " + what + '.',
                      call('@' + file));
        const std::string said = run(call('@' + file)).error;
        return said.substr(said.find('\n') + 1);
    }

    const std::string refused = "does not compile as a fragment shader";
    std::string input = picture("in.exr", gradient(8, 8));
};

INSTANTIATE_TEST_SUITE_P(Drivers, PlimeTileProgram, testing::Values("llvmpipe", "softpipe"),
                         [](const auto& driver) { return std::string(driver.param); });

TEST_P(PlimeTileProgram, goodProgram_fromAFileWithoutLineEnd_works) {
    const auto file = write("my.frag", "#version 120\r\nvoid main() { gl_FragColor = vec4(0.25); }");
    const Result result = run(call('@' + file.string()));
    EXPECT_EQ(result.code, 0) << result.error;
    EXPECT_EQ(float(workbench::readPicture(at("out.exr")).pixels.back().a), 0.25F);
}

TEST_P(PlimeTileProgram, programWithoutAnOutput_isWarnedOf) {
    const std::string warning = "Hollywood/TileProgram, parameter \"code\": its program never writes "
                                "gl_FragColor, so its pixels have no certain values.";
    EXPECT_EQ(run(call("void main() {}")).error, "plime: warning: " + warning + '\n');
    for (const std::string code :
         {"void main() { gl_FragColor = vec4(0.25); }", "void main() { gl_FragData[0] = vec4(0.25); }",
          "#version 130\nout vec4 mine; void main() { mine = vec4(0.25); }"})
        EXPECT_EQ(run(call(code)).error, "") << code;
}

TEST_P(PlimeTileProgram, programThatTakesWhatNobodyGives_isWarnedOf) {
    const std::string warning =
        "plime: warning: Hollywood/TileProgram, parameter \"code\": nobody gives a value to ";
    EXPECT_EQ(run(call("#version 130\nuniform float gain; uniform sampler2D frame, lut; in vec2 uv; out vec4 c;\n"
                       "void main() { c = gain * texture(lut, uv); }"))
                  .error,
              warning + "the uniform gain, the uniform lut, the input uv; see \"plime help shaders\".\n");
    EXPECT_EQ(run(call("#version 130\nuniform float gain = 0.5; out vec4 c; void main() { c = vec4(gain); }"))
                  .error,
              "");
}

TEST_P(PlimeTileProgram, nameOfAFileWithoutAt_isNoticed) {
    const std::string file = write("my.frag", "void main() { gl_FragColor = vec4(0.25); }").string();
    expectFailure(2,
                  "Hollywood/TileProgram: parameter \"code\" is the name of a file, whose text is not read "
                  "without \"@\" — expected the text, or @FILE, got \"" +
                      file + "\". Did you mean code=@" + file + "?",
                  call(file));
}

TEST_P(PlimeTileProgram, byteOrderMark_isNoPartOfTheProgram) {
    const auto file = write("my.frag", "\xef\xbb\xbfvoid main() { gl_FragColor = vec4(0.25); }");
    const Result result = run(call('@' + file.string()));
    EXPECT_EQ(result.code, 0) << result.error;
}

TEST_P(PlimeTileProgram, manyMistakes_areCutShort) {
    std::string program = "void main() {\n";
    for (int i = 0; i < 60; ++i)
        program += "gl_FragColor = mix(vec4(1), missing" + std::to_string(i) + ");\n";
    const Result result = run(call(program + "}\n"));
    EXPECT_EQ(result.code, 6);
    EXPECT_EQ(occurrences(result.error, "\n"), 22U) << result.error;
    expectHas(result.error, "\n  … and ");
    EXPECT_TRUE(result.error.ends_with(" further lines\n")) << result.error;
}

TEST_P(PlimeTileProgram, discardedPixels_areEmpty_andHoldNothingOfEarlierWork) {
    Call twice = call("void main() { gl_FragColor = vec4(0.5); }");
    twice.arguments =
        twice.arguments +
        Words{"--with", "Hollywood/TileProgram", "-p",
              "code=void main() { if (gl_FragCoord.x < 4.0) discard; gl_FragColor = vec4(0.25); }"};
    const Result result = run(twice);
    EXPECT_EQ(result.code, 0) << result.error;
    const workbench::Picture made = workbench::readPicture(at("out.exr"));
    for (int x = 0; x < 8; ++x)
        EXPECT_EQ(float(made.pixels[static_cast<std::size_t>(x)].g), x < 4 ? 0 : 0.25F);
}

TEST_P(PlimeTileProgram, mistakeInTheFirstLine_isShownWithItsNeighbours) {
    const std::string wanted = "text line 1, column 1: syntax error, unexpected NEW_IDENTIFIER";
    EXPECT_EQ(refusalOf("unifor sampler2D frame;\nvoid main() {}\n", refused + " — got " + wanted),
              "  text line 1, column 1: error: syntax error, unexpected NEW_IDENTIFIER\n"
              "  > 1 | unifor sampler2D frame;\n"
              "      | ^\n"
              "    2 | void main() {}\n");
}

TEST_P(PlimeTileProgram, mistakeInALastLineWithoutLineEnd_isShown) {
    EXPECT_EQ(
        refusalOf("void main() {}\n\n  bad bad",
                  refused + " — got text line 3, column 3: syntax error, unexpected NEW_IDENTIFIER, "
                            "expecting end of file"),
        "  text line 3, column 3: error: syntax error, unexpected NEW_IDENTIFIER, expecting end of file\n"
        "    1 | void main() {}\n"
        "    2 | \n"
        "  > 3 |   bad bad\n"
        "      |   ^\n");
}

TEST_P(PlimeTileProgram, mistakeBehindDosLineEnds_isShown) {
    EXPECT_EQ(refusalOf("void main()\r\n{\r\n\tgl_FragColor = oops;\r\n}\r\n",
                        refused + " — got text line 3, column 17: `oops' undeclared"),
              "  text line 3, column 17: error: `oops' undeclared\n"
              "    1 | void main()\n"
              "    2 | {\n"
              "  > 3 |     gl_FragColor = oops;\n"
              "      |                    ^\n"
              "    4 | }\n");
}

TEST_P(PlimeTileProgram, mistakesOfThePreprocessor_areAtTheirLines) {
    for (const char* version : {"\n", "#version 120\n"}) {
        const auto refusedAt = [&](const std::string& program) {
            const std::string file = write("my.frag", version + program).string();
            const Result result = run(call('@' + file));
            EXPECT_EQ(result.code, 6) << result.error;
            const std::size_t at = result.error.find("> ");
            return at == std::string::npos ? result.error : result.error.substr(at + 2, 1);
        };
        EXPECT_EQ(refusedAt("#error stop here\nvoid main() {}\n"), "2");
        EXPECT_EQ(refusedAt("void main() {\n\n#nonsense\n}\n"), "4");
        EXPECT_EQ(refusedAt("void main() {\n#ifdef NEVER\n}\n"), "3");
    }
}

TEST_P(PlimeTileProgram, driversWords_areTheUsersOwn) {
    const std::string said =
        refusalOf("void main() { gl_FragColor = pow(vec4(0.5), true); }\n",
                  refused + " — got text line 1, column 30: no matching function for call "
                            "to `pow(vec4, bool)'; candidates are:");
    expectHas(said, "     vec4 pow(vec4, float)\n");
    EXPECT_EQ(said.find("krod"), std::string::npos) << said;
}

TEST_P(PlimeTileProgram, programWithItsOwnVersion_isNumberedAsWritten) {
    for (const std::string version : {"#version 120\n", "#version 150\n"}) {
        const std::string said =
            refusalOf(version + "uniform sampler2D frame;\nvoid main() { gl_FragColor = oops; }\n",
                      refused + " — got text line 3, column 30: `oops' undeclared");
        expectHas(said, "  > 3 | void main() { gl_FragColor = oops; }\n");
    }
}

TEST_P(PlimeTileProgram, programWithoutMain_doesNotLink) {
    EXPECT_EQ(refusalOf("vec4 f() { return vec4(1.0); }\n",
                        "does not link, because it has no main() — got fragment shader lacks `main'"),
              "");
}

TEST_P(PlimeTileProgram, emptyProgram_isCalledEmpty) {
    EXPECT_EQ(
        refusalOf("", refused + ", because the program is empty — got syntax error, unexpected end of file"),
        "");
    const Result result = run(call(""));
    EXPECT_EQ(result.code, 6);
    EXPECT_TRUE(result.error.starts_with("plime: error: Hollywood/TileProgram, parameter \"code\": " +
                                         refused + ", because the program is empty"))
        << result.error;
}

TEST_P(PlimeTileProgram, programOnTheCommandLine_isNamedByItsParameter) {
    const Result result = run(call("void main() { oops; }"));
    EXPECT_EQ(result.code, 6);
    EXPECT_TRUE(result.error.starts_with("plime: error: Hollywood/TileProgram, parameter \"code\": " +
                                         refused + " — got text line 1, column 15: `oops' undeclared.\n"))
        << result.error;
}

TEST_P(PlimeTileProgram, fileThatIsNotThere_isAnInputError) {
    expectFailure(3,
                  at("none.frag") +
                      ": cannot be read — expected a text file of at most 16 MiB, got No such file "
                      "or directory.",
                  call('@' + at("none.frag")));
}

TEST_P(PlimeTileProgram, textOfAModule_keepsItsLabel) {
    Call strict{
        Words{"process", input, "-o", at("out.exr"), "--strict-glsl", "--with", "Hollywood/PixelBlur"},
        {{"GALLIUM_DRIVER", GetParam()}}};
    const Result result = run(strict);
    EXPECT_EQ(result.code, 6);
    EXPECT_TRUE(
        result.error.starts_with("plime: error: Hollywood/PixelBlur, * Tile Fragment Shader *: " + refused))
        << result.error;
}

} // namespace

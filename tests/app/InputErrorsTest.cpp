// SPDX-License-Identifier: Apache-2.0
// Everything that can be wrong with the words and files that plime render and plime process are given: one
// sentence, the right code, and nothing written.
#include "tests/app/PictureProgram.h"

namespace {

const Words Gamma = {"--with", "Hollywood/GammaCorrection"};
const Words Colours = {"--with", "Hollywood/ColorGammaCorrection"};
const std::string Checks = ". Check that the file is complete and has its right extension.";

class PlimeInput : public PictureProgramTest {
protected:
    void refusedRender(int code, const std::string& sentence, const Words& more) const {
        expectFailure(code, sentence,
                      Words{"render", "demo:knot", "-o", at("out.exr"), "--size", "32x32"} + more);
    }
    void refusedProcess(int code, const std::string& sentence, const Words& more) const {
        expectFailure(code, sentence, Words{"process", input, "-o", at("out.exr")} + more);
    }
    void refusedModel(const std::string& name, const std::string& bytes, const std::string& why) {
        const std::string path = write(name, bytes).string();
        expectFailure(3, path + ": " + why, {"render", path, "-o", at("out.exr")});
    }

    std::string input = picture("in.exr", gradient(16, 16));
};

TEST_F(PlimeInput, fileThatIsNotThere_isSaid) {
    const std::string none = at("none.ply");
    expectFailure(3, none + ": does not exist. Check the path.", {"render", none, "-o", at("out.exr")});
    expectFailure(3, none + ": does not exist. Check the path.",
                  Words{"process", none, "-o", at("out.exr")} + Gamma);
}

TEST_F(PlimeInput, folderAsInput_isSaid) {
    const std::string sentence = folder.string() + ": cannot be read — expected a file, got a folder.";
    expectFailure(3, sentence, {"render", folder.string(), "-o", at("out.exr")});
    expectFailure(3, sentence, Words{"process", folder.string(), "-o", at("out.exr")} + Gamma);
}

TEST_F(PlimeInput, emptyFileAndUnknownKind_areSaid) {
    refusedModel("a.ply", "", "cannot be read — got an empty file.");
    refusedModel(
        "a.abc", "what is this",
        "is of no kind that can be read — expected a picture (.exr .png .tif .jpg .hdr …), a model (.obj "
        ".ply .stl .glb …) or points (.ply .xyz .csv), got .abc. Give the file its right extension.");
}

TEST_F(PlimeInput, modelsAndPointsWithoutContent_areSaid) {
    refusedModel("a.obj", "v 0 0 0\n", "cannot be read as a model — got OBJ-file is too small" + Checks);
    refusedModel("a.xyz", "# nothing\n", "holds no points — expected at least one point.");
    refusedModel("a.ply",
                 "ply\nformat ascii 1.0\nelement vertex 0\nproperty float x\nproperty float y\n"
                 "property float z\nend_header\n",
                 "holds no points — expected at least one point.");
}

TEST_F(PlimeInput, brokenPicture_isSaid_andNothingIsWritten) {
    const std::string whole = read(input);
    for (const std::size_t length : {std::size_t{6}, whole.size() / 2, whole.size() - 1}) {
        const std::string path = write("cut.exr", whole.substr(0, length)).string();
        const Result result = run(Words{"process", path, "-o", at("out.exr")} + Gamma);
        EXPECT_EQ(result.code, 3);
        EXPECT_TRUE(result.error.starts_with("plime: error: " + path + ": ")) << result.error;
        EXPECT_EQ(occurrences(result.error, "\n"), 1U) << result.error;
        EXPECT_EQ(filesInFolder(), 2);
    }
}

TEST_F(PlimeInput, withoutOpenGL_isSaidInOneSentence) {
    const std::string sentence =
        "OpenGL: cannot be used without a window — expected an EGL driver with the device or the surfaceless "
        "platform, got none. Install an OpenGL driver; Mesa's software renderer will do.";
    expectFailure(7, sentence, Call{{"render", "demo:knot", "-o", at("out.exr")}, WithoutOpenGL});
    expectFailure(7, sentence, Call{Words{"process", input, "-o", at("out.exr")} + Colours, WithoutOpenGL});
    const Result result = run(Call{Words{"process", input, "-o", at("out.exr")} + Gamma, WithoutOpenGL});
    EXPECT_EQ(result.code, 0) << result.error << "this module needs no OpenGL";
}

TEST_F(PlimeInput, deviceThatIsNotThere_isSaid) {
    refusedRender(
        7,
        "OpenGL: cannot be used as asked — expected the device \"none of these\", got no such device. "
        "See the devices with: plime doctor.",
        {"--gpu", "none of these"});
    const std::string said = run({"render", "demo:knot", "-o", at("out.exr"), "--gpu", "99"}).error;
    expectHas(said, "got no such device. See the devices with: plime doctor.\n  EGL ");
    expectHas(said, ", not asked for\n");
}

TEST_F(PlimeInput, missingWords_areNamed) {
    expectFailure(2, "render: has nothing to draw — expected INPUT. Try demo:galaxy.",
                  {"render", "-o", at("out.exr")});
    expectFailure(2, "-o: is missing — expected the picture to write, -o OUT.exr.", {"render", "demo:knot"});
    expectFailure(2, "-o,--output: names no file — expected the picture to write, got \"\".",
                  {"render", "demo:knot", "-o", ""});
    expectFailure(2,
                  at("") + ": cannot be written as a picture — expected one of the extensions .exr .png .tif "
                           ".tiff .jpg .jpeg .hdr, got a folder.",
                  {"render", "demo:knot", "-o", at("")});
    expectFailure(2, "plime process: IN is missing. See \"plime help process\".", {"process"});
    expectFailure(2, "-o: is missing — expected the picture to write, -o OUT.exr.",
                  Words{"process", input} + Gamma);
    refusedProcess(2,
                   "process: has nothing to do — expected --with KEY, a tile processor. \"plime list\" shows "
                   "them under Hollywood.",
                   {});
}

TEST_F(PlimeInput, whatIsNoPicture_isToldAsWhatItIs) {
    const auto refused = [&](const std::string& path, const std::string& rest) {
        expectFailure(3, path + rest, Words{"process", path, "-o", at("out.exr")} + Gamma);
    };
    const std::string points = write("a.xyz", "0 0 0\n").string(), model = write("a.obj", "o a\n").string(),
                      network = write("a.json", "{}\n").string(), other = write("a.abc", "odd\n").string();
    refused(points, ": is a list of points, no picture. Draw it with: plime render " + points + '.');
    refused(model, ": is a model, no picture. Draw it with: plime render " + model + '.');
    refused(network, ": is a network, no picture. Make its pictures with: plime run " + network + '.');
    refused(at("gone.json"), ": does not exist. Check the path.");
    refused("demo:knot", ": is a demo scene, no picture. Draw it with: plime render demo:knot.");
    refused(other, ": cannot be read as a picture — expected EXR, PNG, TIFF, JPEG, HDR or another picture "
                   "format, got OpenImageIO could not find a format reader for \"" +
                       other + "\". Check that the file is complete and has its right extension.");
}

TEST_F(PlimeInput, pointsThatAreNotFinite_areToldAsLeftOut) {
    const std::string points = write("a.csv", "x,y,z\n0,0,0\n1,1,1\nnan,0,0\ninf,1,1\n").string();
    EXPECT_EQ(messagesOf({"render", points, "-o", at("out.exr"), "--size", "16x16"}),
              "plime: warning: " + points +
                  ": 2 of 4 points have values that are not finite and are left out.\n");
}

TEST_F(PlimeInput, demoThatIsNone_isRefusedWithASuggestion) {
    expectFailure(2, "demo:glaxy: is no demo. Did you mean \"demo:galaxy\"?",
                  {"render", "demo:glaxy", "-o", at("out.exr")});
}

TEST_F(PlimeInput, modulesInTheWrongPlace_areRefused) {
    refusedRender(
        2,
        "Hollywood/GammaCorrection: is no display — expected a module of the category Display. Tile "
        "processors go behind --with.",
        {"--display", "Hollywood/GammaCorrection"});
    refusedProcess(
        2,
        "Scene/Knot: is no tile processor — expected one of Hollywood/TileProgram, "
        "Hollywood/PixelBlur, Hollywood/HDRToneMapping, Hollywood/HDRColoredToneMapping, "
        "Hollywood/GammaCorrection, Hollywood/ColorGammaCorrection, Hollywood/ArcTangens. Scenes are "
        "the INPUT of \"plime render\".",
        {"--with", "Scene/Knot"});
    const std::string none =
        "Display/CMYK: is no tile processor — expected one of Hollywood/TileProgram, Hollywood/PixelBlur, "
        "Hollywood/HDRToneMapping, Hollywood/HDRColoredToneMapping, Hollywood/GammaCorrection, "
        "Hollywood/ColorGammaCorrection, Hollywood/ArcTangens. Displays go behind --display of \"plime "
        "render\".";
    refusedRender(2, none, {"--with", "Display/CMYK"});
    refusedProcess(2, none, {"--with", "Display/CMYK"});
    refusedProcess(2, "--display: is not an option of \"plime process\". See \"plime help process\".",
                   {"--display", "Display/CMYK"});
}

TEST_F(PlimeInput, unknownAndAmbiguousKeys_areRefused) {
    refusedProcess(2,
                   "Hollywood/GamaCorrection: is not the key of a module. Did you mean "
                   "\"Hollywood/GammaCorrection\"?",
                   {"--with", "Hollywood/GamaCorrection"});
    refusedRender(2, "Display/CMKY: is not the key of a module. Did you mean \"Display/CMYK\"?",
                  {"--display", "Display/CMKY"});
    refusedRender(2,
                  "Display/Depth: is the key of several modules — expected Display/Depth@HDRObjectDisplay or "
                  "Display/Depth@DisplayDepth, got the bare key.",
                  {"--display", "Display/Depth"});
}

TEST_F(PlimeInput, longValue_isQuotedShortly) {
    const Result result = run({"process", at("none.exr"), "-o", at("out.exr"), "--with",
                               "Hollywood/ColorGammaCorrection", "-p", "red=" + std::string(100000, 'x')});
    EXPECT_EQ(result.code, 2);
    EXPECT_LT(result.error.size(), 300U);
}

TEST_F(PlimeInput, missingShaderFolder_isAWarning) {
    const Result result = run({"shader", "Display/CMYK", "--shader-dir", at("nowhere")});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.error,
              "plime: warning: " + at("nowhere") + ": is no folder, so no shader file is taken from it.\n");
}

TEST_F(PlimeInput, parameters_areCheckedBeforeWork) {
    const std::string colours = "Hollywood/ColorGammaCorrection: ";
    refusedProcess(2, colours + "has no parameter \"rad\". Did you mean \"red\"?",
                   Colours + Words{"-p", "rad=1"});
    refusedProcess(
        2,
        colours +
            "parameter \"red\" cannot take this value — expected a finite number like 0.5, got \"nan\".",
        Colours + Words{"-p", "red=nan"});
    refusedProcess(2,
                   "-p: sets \"red\" of Hollywood/ColorGammaCorrection twice — expected one value, got "
                   "\"0.5\" and \"0.25\".",
                   Colours + Words{"-p", "red=0.5", "-p", "red=0.25"});
    refusedProcess(2,
                   colours +
                       "parameter \"red\" is outside its limits — expected -1.0 to 1.0, got 1.5. Set it "
                       "nevertheless with --unchecked.",
                   Colours + Words{"-p", "red=1.5"});
    refusedRender(
        2,
        "Display/CMYK: parameter \"options\" has a flag without sign — expected +glow or -glow, +halo or "
        "-halo, got \"glow\".",
        {"--display", "Display/CMYK", "-p", "options=glow"});
    refusedRender(2, "-p: belongs to no module — expected --display or --with before it, got nothing.",
                  {"-p", "samples=2"});
}

TEST_F(PlimeInput, valuesOfOptions_areChecked) {
    const auto wrong = [&](const std::string& option, const std::string& value, const std::string& rest) {
        expectFailure(2, option + ": " + rest + ", got \"" + value + "\".",
                      {"render", "demo:knot", "-o", at("out.exr"), option, value});
    };
    wrong("--size", "9", "cannot be read — expected WIDTHxHEIGHT in pixels, like 1920x1080");
    wrong("--camera", "1,1:2",
          "cannot be read — expected EX,EY,EZ:TX,TY,TZ[:FOV], eye and target in world units and an angle in "
          "degrees");
    wrong("--up", "y", "cannot be read — expected X,Y,Z, a direction in world units");
    wrong("--background", "1,2", "cannot be read — expected R,G,B[,A], linear values");
    for (const std::string value : {"1e300,0,0,1", "0,0,-3.5e38", "0,0,0,1e39"})
        wrong("--background", value, "is beyond what can be drawn — expected values of single precision");
    wrong("--background", "inf,0,0", "cannot be read — expected R,G,B[,A], linear values");
    for (const std::string value : {"8", "63"})
        wrong("--tile", value, "has a wrong value — expected a whole number from 64 to 16384");
    wrong("--overlap", "-1", "has a wrong value — expected a whole number from 0 to 4096");
    for (const std::string value : {"many", "0", "-4"})
        wrong("--samples", value, "has a wrong value — expected a whole number from 1 to 2147483647");
    for (const std::string option : {"-d", "--depth"})
        refusedRender(
            2, "-d,--depth: knows no such depth — expected half, float, uint8 or uint16, got \"bits\".",
            {option, "bits"});
    for (const std::string value : {"big", "1", "63"})
        refusedProcess(2,
                       "--tile: has a wrong value — expected a whole number from 64 to 131072, got \"" +
                           value + "\".",
                       Gamma + Words{"--tile", value});
    refusedProcess(2, "--overlap: has a wrong value — expected a whole number from 0 to 4096, got \"-1\".",
                   Gamma + Words{"--overlap", "-1"});
    refusedProcess(2,
                   "-d,--depth: knows no such depth — expected half, float, uint8 or uint16, got \"bits\".",
                   Gamma + Words{"-d", "bits"});
    refusedRender(2, "--point-size: has no meaning here: demo:knot is not drawn in points.",
                  {"--point-size", "3"});
}

TEST_F(PlimeInput, viewsThatShowNothing_areRefused) {
    refusedRender(2,
                  "--camera: has no direction — expected an eye and a target at different places, got "
                  "\"1,2,3:1,2,3\".",
                  {"--camera", "1,2,3:1,2,3"});
    refusedRender(2,
                  "--up: does not say which side is up — expected an up direction across the view, got "
                  "\"0,0,1\".",
                  {"--up", "0,0,1"});
    refusedRender(2,
                  "--up: does not say which side is up — expected an up direction across the view, got "
                  "\"0,0,0\".",
                  {"--camera", "0,0,9:0,0,0", "--up", "0,0,0"});
    refusedRender(2,
                  "--camera: does not say which side is up — expected an up direction across the view, got "
                  "\"0,9,0:0,0,0\". Choose one with --up.",
                  {"--camera", "0,9,0:0,0,0"});
    refusedRender(2,
                  "--camera: has no field of view — expected degrees between 0 and 180, got "
                  "\"0,0,9:0,0,0:180\".",
                  {"--camera", "0,0,9:0,0,0:180"});
}

TEST_F(PlimeInput, picturesBeyondMemory_areRefusedBeforeWork) {
    expectFailure(2, "--size: is too large — expected at most 2147483648 pixels in all, got 131072x131072.",
                  {"render", "demo:knot", "-o", at("out.exr"), "--size", "131072x131072"});
    expectFailure(4,
                  at("out.exr") +
                      ": needs more memory than is allowed — expected at most 10M, got 124M. Allow it "
                      "with --memory 124M.",
                  {"render", "demo:knot", "-o", at("out.exr"), "--size", "1024x1024", "--memory", "10M"});
}

TEST_F(PlimeInput, shaderFileThatDoesNotCompile_isNamedWithItsLine) {
    const auto file = write("CMYK.frag", "void main() {\n  gl_FragColor = vec4(oops);\n}\n");
    const Result result = run({"render", "demo:knot", "-o", at("out.exr"), "--display", "Display/CMYK",
                               "--shader-dir", folder.string(), "-q"});
    EXPECT_EQ(result.code, 6);
    expectHas(result.error, "does not compile as a fragment shader — got " + file.string() + " line 2");
    EXPECT_FALSE(std::filesystem::exists(at("out.exr")));
    EXPECT_EQ(filesInFolder(), 2);
}

} // namespace

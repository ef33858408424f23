// SPDX-License-Identifier: Apache-2.0
// Too little memory for graphics, and OpenGL that modules cannot use.
#include "tests/app/FaultyProgram.h"

#include <cerrno>

namespace {

const Words Gamma = {"--with", "Hollywood/GammaCorrection"};
const Words Colours = {"--with", "Hollywood/ColorGammaCorrection", "-p", "red=-0.5"};
const Words Blur = {"--with", "Hollywood/PixelBlur"};

class PlimeGraphics : public PictureProgramTest {
protected:
    [[nodiscard]] Words processing(const Words& more) const {
        return Words{"process", in, "-o", at("out.exr")} + more;
    }
    [[nodiscard]] Words drawing(const Words& more) const {
        return Words{"render", "demo:knot", "-o", at("out.exr"), "--gpu", "software"} + more;
    }
    /// With little memory the program warns so and leaves the bytes that smaller tiles leave.
    void expectSmallerTiles(const Call& call, const std::string& warnings, const Words& smaller) {
        const Result result = run(call);
        EXPECT_EQ(result.code, 0) << result.error;
        EXPECT_EQ(result.error, warnings);
        const std::string bytes = read(at("out.exr"));
        EXPECT_EQ(run(smaller).code, 0);
        EXPECT_TRUE(bytes == read(at("out.exr"))) << "not the bytes of smaller tiles";
        EXPECT_EQ(filesInFolder(), 2);
    }
    static std::string halved(const std::string& picture, int from, int to) {
        return "plime: warning: " + picture + ": does not fit into the memory for graphics in tiles of " +
               std::to_string(from) + " pixels, so it is made in tiles of at most " + std::to_string(to) +
               ".\n";
    }

    std::string in = picture("in.exr", gradient(300, 200));
};

TEST_F(PlimeGraphics, littleMemory_makesTheTilesOfAProcessedPictureSmaller) {
    expectSmallerTiles(Call{processing(Colours), withTexturesUpTo(80 * 80)},
                       halved(in, 300, 150) + halved(in, 149, 74),
                       processing(Colours + Words{"--tile", "74"}));
}

TEST_F(PlimeGraphics, littleMemory_isWarnedOf_whereTheResultDependsOnTheTile) {
    const Result result = run(Call{processing(Blur), withTexturesUpTo(160 * 160)});
    EXPECT_EQ(result.code, 0);
    EXPECT_TRUE(result.error.starts_with(halved(in, 300, 150))) << result.error;
    expectHas(result.error, "Hollywood/PixelBlur works with the place in the tile, so the result differs");
}

TEST_F(PlimeGraphics, littleMemory_makesTheTilesOfADrawingSmaller) {
    const std::string out = at("out.exr");
    const Words display = {"--size",    "300x300",      "--overlap", "0",
                           "--display", "Display/CMYK", "-p",        "samples=4"};
    expectSmallerTiles(Call{drawing(display), withTexturesUpTo(4 * 100 * 100)},
                       halved(out, 300, 150) + halved(out, 150, 75),
                       drawing(display + Words{"--tile", "75"}));
}

TEST_F(PlimeGraphics, littleMemory_makesTheTilesOfAChainBehindADrawingSmaller) {
    const Words chain = Words{"--size", "512x256", "--overlap", "0"} + Colours;
    const Result result = run(Call{drawing(chain + Words{"--tile", "256"}), withTexturesUpTo(256 * 256)});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.error, halved(at("out.exr"), 256, 128));
    const auto pixels = workbench::readPicture(at("out.exr")).pixels;
    succeed(drawing(chain + Words{"--tile", "128"}));
    expectSameBits(pixels, workbench::readPicture(at("out.exr")).pixels);
}

TEST_F(PlimeGraphics, memoryThatGoesOutLater_makesTheRestSmaller_fromTheStart) {
    const std::string out = at("out.exr");
    const Words tiles = {"--size", "512x512", "--overlap", "0", "--tile"};
    expectSmallerTiles(Call{drawing(tiles + Words{"128"}), failing("read", 5, ENOMEM)}, halved(out, 128, 64),
                       drawing(tiles + Words{"64"}));
    const Words process = processing(Colours + Words{"--overlap", "0", "--tile"});
    expectSmallerTiles(Call{process + Words{"128"}, failing("read", 5, ENOMEM)}, halved(in, 100, 64),
                       process + Words{"64"});
}

TEST_F(PlimeGraphics, interruptedInSmallerTiles_saysHowToGoOn) {
    const Words tiles = {"--size", "256x256", "--overlap", "0"};
    Environment environment = withTexturesUpTo(64 * 64);
    environment.merge(signalled("read", 3, SIGINT));
    const Result result = run(Call{drawing(tiles), environment});
    EXPECT_EQ(result.code, 130);
    expectHas(result.error, "; continue with the same command, --tile 64 and --resume\n");
    expectHas(messagesOf(drawing(tiles + Words{"--tile", "64", "--resume", "-v"})),
              "3 of 16 tiles taken from ");
}

TEST_F(PlimeGraphics, noMemoryForTheSmallestTile_isAnError) {
    const Words chain = Colours + Words{"--overlap", "0"};
    const Result process = run(Call{processing(chain), withTexturesUpTo(1)}),
                 render = run(Call{drawing({"--size", "300x300", "--overlap", "0"}), withTexturesUpTo(64)});
    EXPECT_EQ(process.code, 4);
    EXPECT_EQ(process.error,
              halved(in, 300, 150) + halved(in, 150, 75) + halved(in, 75, 64) +
                  "plime: error: drawing area of 60x50: does not fit into the memory for graphics — "
                  "expected 1 MiB, got GL_OUT_OF_MEMORY (0x0505). Choose a smaller size, fewer samples or a "
                  "smaller --tile.\n");
    EXPECT_EQ(render.code, 4);
    expectHas(render.error, "plime: error: drawing area of 60x60: does not fit into the memory for graphics");
    EXPECT_EQ(filesInFolder(), 1);
}

TEST_F(PlimeGraphics, withoutAShader_needsNone) {
    EXPECT_EQ(run(Call{processing(Gamma), withTexturesUpTo(0)}).code, 0);
}

TEST_F(PlimeGraphics, thatModulesCannotUse_isSaidWithWhatIsWanted_andNothingIsLeft) {
    ASSERT_EQ(
        run(Words{"render", "demo:knot", "-o", at("a.exr"), "--size", "8x8", "--save-network", at("a.json")})
            .code,
        0);
    const std::string wanted = "expected OpenGL 3.2 or newer with the compatibility profile, got OpenGL ";
    const std::vector<std::pair<Environment, std::string>> drivers = {
        {{{"MESA_GL_VERSION_OVERRIDE", "2.1"}}, "is too old — " + wanted + "2.1"},
        {{{"MESA_GL_VERSION_OVERRIDE", "3.2FC"}},
         "lacks the functions that modules use — " + wanted + "3.2 (Core Profile)"},
        {WithoutOpenGL, "cannot be used without a window — expected "}};
    for (const auto& [environment, sentence] : drivers)
        for (const Words& words : {processing(Colours), drawing({"--size", "8x8"}),
                                   Words{"run", at("a.json"), "-o", at("out.exr")}}) {
            const Result result = run(Call{words, environment});
            EXPECT_EQ(result.code, 7) << words[0];
            expectHas(result.error, sentence);
            EXPECT_EQ(filesInFolder(), 3) << words[0];
        }
}

} // namespace

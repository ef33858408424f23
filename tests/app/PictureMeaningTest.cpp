// SPDX-License-Identifier: Apache-2.0
// plime keeps what pictures of other programs mean, and says what it cannot keep.
#include "PictureProgram.h"

#include <cmath>
#include <cstdlib>

using namespace workbench;

namespace {

/// A module whose exponents of 1 change nothing.
const Words Same = {"--with", "Hollywood/ColorGammaCorrection"};

class PlimeMeaning : public PictureProgramTest {
protected:
    /// Runs a tool in the folder; a test failure that names its package when it fails.
    void tool(const std::string& command) const {
        const std::string line = "cd '" + folder.string() + "' && " + command + " > tool.log 2>&1";
        EXPECT_EQ(std::system(line.c_str()), 0) // NOLINT: the words are ours
            << command << ": needs the packages openimageio-tools and imagemagick\n"
            << read(folder / "tool.log");
    }
    /// What `plime process` says; it must succeed.
    [[nodiscard]] std::string said(const std::string& in, const std::string& out, const Words& more) const {
        return messagesOf(Words{"process", at(in), "-o", at(out), "-v"} + more);
    }
    [[nodiscard]] krod::RGBAHalf first(const std::string& name) const {
        return readPicture(folder / name).pixels.front();
    }
    [[nodiscard]] std::vector<krod::RGBAHalf> pixels(const std::string& name) const {
        return readPicture(folder / name).pixels;
    }
};

} // namespace

TEST_F(PlimeMeaning, lightBeyondHalves_staysLight) {
    tool("oiiotool --create 64x32 3 --fill:color=0.3,0.5,0.8 64x32 --fill:color=100000,95000,90000 6x6+20+8 "
         "-d float "
         "-o sun.hdr");
    const std::string text =
        said("sun.hdr", "sun.png", {"--srgb", "-d", "uint8", "--with", "Hollywood/HDRToneMapping"});
    expectHas(text, "108 values are too large for a half");
    expectHas(text, "became 65504");
    const krod::RGBAHalf sun = pixels("sun.png")[64 * 10 + 22];
    EXPECT_GT(sun.r, 0.99F);
    EXPECT_GT(sun.b, 0.99F);
    const std::string drawn = messagesOf({"render", at("sun.hdr"), "-o", at("drawn.exr"), "--size", "40x20"});
    expectHas(drawn, "108 values are too large for a half");
    for (const krod::RGBAHalf& p : pixels("drawn.exr")) ASSERT_FALSE(std::isnan(float(p.r)));
}

TEST_F(PlimeMeaning, valuesBelowZero_areNamedAsTheCauseOfNaN) {
    tool("oiiotool --create 8x8 3 --fill:color=0.3,0.5,0.8 8x8 --fill:color=1480,678,-0.25 2x2+1+1 -d half "
         "-o in.exr");
    const Words power = {"--with", "Hollywood/ColorGammaCorrection", "-p", "blue=0.4"};
    const std::string text = said("in.exr", "out.exr", power);
    expectHas(text, "4 pixels became no numbers because they have values below 0");
    expectHas(text, "--clip-negative");
    const std::string clipped = said("in.exr", "clipped.exr", power + Words{"--clip-negative"});
    EXPECT_EQ(clipped.find("no numbers"), std::string::npos) << clipped;
    for (const krod::RGBAHalf& p : pixels("clipped.exr")) ASSERT_FALSE(std::isnan(float(p.b)));
    const Result network = run({"info", at("clipped.exr"), "--network"});
    expectHas(network.output, "\"clipNegative\": true");
}

TEST_F(PlimeMeaning, srgbPictures_comeBackThroughSrgb) {
    tool("convert -size 64x64 plasma:red-blue -depth 8 -define png:color-type=2 in.png");
    static_cast<void>(said("in.png", "out.png", Same + Words{"--srgb", "-d", "uint8"}));
    expectSameBits(pixels("out.png"), pixels("in.png"));
    static_cast<void>(said("in.png", "as-stored.png", Same + Words{"-d", "uint8"}));
    expectSameBits(pixels("as-stored.png"), pixels("in.png"));
    // An EXR of the same is linear, and encoding that once more gives the picture back, too.
    tool("oiiotool --create 8x8 3 --fill:color=0.5,0.5,0.5 8x8 -d uint8 -o grey.png");
    static_cast<void>(messagesOf(
        {"render", at("grey.png"), "-o", at("drawn.png"), "--srgb", "-d", "uint8", "--size", "8x8"}));
    EXPECT_NEAR(pixels("drawn.png")[8 * 4 + 4].r, 128 / 255.0F, 0.003F);
}

TEST_F(PlimeMeaning, alpha_isConvertedWhereTheChainLeavesIt) {
    tool("oiiotool --create 70x70 4 --fill:color=0.5,0,0,0.5 70x70 -d half -o in.exr");
    static_cast<void>(said("in.exr", "out.png", Same));
    expectNear({first("out.png")}, {pixel(1, 0, 0, 0.5F)}, 0.0001F);
    static_cast<void>(said("out.png", "back.exr", Same));
    expectNear({first("back.exr")}, {pixel(0.5F, 0, 0, 0.5F)}, 0.0001F);
    // Tone mapping maps alpha like a color.
    const Words mapped = {"--with", "Hollywood/HDRToneMapping"};
    static_cast<void>(said("in.exr", "mapped.exr", mapped));
    expectHas(said("in.exr", "mapped.png", mapped), "the modules changed alpha");
    expectNear({first("mapped.png")}, {first("mapped.exr")}, 0.0001F);
    // Tile by tile the same.
    const Words tiles = {"--tile",
                         "64",
                         "--overlap",
                         "4",
                         "--with",
                         "Hollywood/TileProgram",
                         "-p",
                         "code=uniform sampler2D frame; void main() { gl_FragColor = texture2D(frame, "
                         "gl_TexCoord[0].xy); }"};
    static_cast<void>(said("in.exr", "tiles.png", tiles));
    expectNear({first("tiles.png")}, {pixel(1, 0, 0, 0.5F)}, 0.0001F);
}

TEST_F(PlimeMeaning, drawnEdges_areDividedForPng) {
    write("tri.obj", "v -1 -1 0\nv 1 -1 0\nv 0 1 0\nf 1 2 3\n");
    static_cast<void>(messagesOf({"render", at("tri.obj"), "-o", at("tri.png"), "--size", "64x64",
                                  "--background", "0,0,0,0", "--display", "Display/Blurred"}));
    const std::vector<krod::RGBAHalf> drawn = pixels("tri.png");
    float most = 0;
    for (const krod::RGBAHalf& p : drawn)
        if (p.a > 0.99F) most = std::max(most, float(p.r));
    int edges = 0;
    for (const krod::RGBAHalf& p : drawn)
        if (p.a > 0.2F && p.a < 0.8F) {
            ++edges;
            ASSERT_GT(p.r, most * 0.9F); // as light as the rest, and no grey halo on white
        }
    EXPECT_GT(edges, 10);
}

TEST_F(PlimeMeaning, rounding_isToldWhereTheOutputKeepsMore) {
    tool("oiiotool --create 5x1 1 --fill:color=2345.25 5x1 -d float -o elev.tif");
    expectHas(said("elev.tif", "out.tif", Same), "rounded by up to 0.75, because modules work on halves");
    const std::string half = said("elev.tif", "out.exr", Same);
    EXPECT_EQ(half.find("rounded"), std::string::npos) << half;
    tool("oiiotool --create 5x1 3 --fill:color=0.7,0.2,0.1 5x1 -d uint8 -o bytes.png");
    const std::string bytes = said("bytes.png", "words.png", Same + Words{"-d", "uint16"});
    EXPECT_EQ(bytes.find("rounded"), std::string::npos) << bytes;
}

TEST_F(PlimeMeaning, whatIsNotRead_isToldAndListed) {
    tool("oiiotool --create 4x4 3 --create 4x4 3 --siappend -d half -o parts.exr");
    expectHas(said("parts.exr", "a.exr", Same), "only the first of 2 parts is read");
    expectHas(run({"info", at("parts.exr")}).output, "1 further parts");
    tool("oiiotool --create 4x4 7 --fill:color=0.9,0.9,0.9,1,0,0,1 4x4 --chnames "
         "ViewLayer.AO.R,ViewLayer.AO.G,ViewLayer.AO.B,ViewLayer.Combined.R,ViewLayer.Combined.G,"
         "ViewLayer.Combined.B,ViewLayer.Combined.A -d half -o layers.exr");
    expectHas(said("layers.exr", "a.exr", Same), "the layer ViewLayer.Combined taken");
    expectHas(run({"info", at("layers.exr"), "--json"}).output, "the layer ViewLayer.Combined");
    tool("oiiotool --create 20x10 3 --origin +30+5 --fullsize 100x50+0+0 -d half -o crop.exr");
    expectHas(said("crop.exr", "a.png", Same), "the display window of 100x50 pixels");
    expectHas(run({"info", at("crop.exr")}).output, "30, 5, 20, 10");
}

TEST_F(PlimeMeaning, compression_isAsAskedFor) {
    tool("oiiotool --create 64x64 3 --noise -d half --compression dwab -o in.exr");
    static_cast<void>(said("in.exr", "zip.exr", Same));
    expectSameBits(pixels("zip.exr"), pixels("in.exr"));
    static_cast<void>(said("in.exr", "piz.exr", Same + Words{"--compression", "piz"}));
    EXPECT_EQ(readPicture(folder / "piz.exr").description.find("compression")->text, "piz");
    const Result refused = run(Words{"process", at("in.exr"), "-o", at("a.exr"), "--quality", "101"} + Same);
    EXPECT_EQ(refused.code, 2);
}

// SPDX-License-Identifier: Apache-2.0
// plime process with shader processors over pictures that are cut into tiles.
#include "tests/app/PictureProgram.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace {

using workbench::Picture;
using workbench::readPicture;
using Json = nlohmann::json;

const Words Gamma = {"--with", "Hollywood/GammaCorrection"};
const Words Colours = {"--with", "Hollywood/ColorGammaCorrection", "-p", "red=-0.5", "-p", "green=0.25"};
const Words Blur = {"--with", "Hollywood/PixelBlur", "-p", "sharpness=0.1", "-p", "brightness=1"};

Picture ramp(int width, int height) {
    Picture picture = associatedGradient(width, height);
    for (krod::RGBAHalf& p : picture.pixels)
        p = pixel(float(p.r) * 3.9F + 0.03F, float(p.g) * 0.9F + 0.05F, float(p.b) + 0.1F, 0.5F + float(p.a));
    return picture;
}

class PlimeTiling : public PictureProgramTest {
protected:
    Picture processed(const std::string& input, const Words& words) const {
        const Result result = run(Words{"process", input, "-o", at("out.exr"), "-q"} + words);
        EXPECT_EQ(result.code, 0) << result.error;
        return readPicture(at("out.exr"));
    }
};

TEST_F(PlimeTiling, pointwiseModules_doTheSameInTiles_bitForBit) {
    const std::string path = picture("in.exr", ramp(131, 117));
    const std::vector<Words> chains = {Colours,
                                       {"--with", "Hollywood/HDRToneMapping"},
                                       {"--with", "Hollywood/HDRColoredToneMapping"},
                                       {"--with", "Hollywood/TileProgram"},
                                       Gamma + Colours + Words{"--with", "Hollywood/ArcTangens"}};
    for (const Words& chain : chains) {
        const Picture whole = processed(path, chain);
        for (const std::string tile : {"64", "71", "100"})
            expectSameBits(processed(path, chain + Words{"--tile", tile}).pixels, whole.pixels);
        expectSameBits(processed(path, chain + Words{"--tile", "64", "--overlap", "0"}).pixels, whole.pixels);
        expectSameBits(processed(path, chain + Words{"--tile", "64", "--overlap", "31"}).pixels,
                       whole.pixels);
    }
}

TEST_F(PlimeTiling, pictureCutOneWayOnly_isWhole) {
    for (const auto& [width, height] : {std::pair{300, 20}, std::pair{20, 300}}) {
        const std::string path = picture("in.exr", ramp(width, height));
        expectSameBits(processed(path, Colours + Words{"--tile", "64"}).pixels,
                       processed(path, Colours).pixels);
    }
}

TEST_F(PlimeTiling, memory_makesTilesSmaller_insteadOfFailing) {
    const std::string path = picture("in.exr", ramp(900, 500));
    const Picture whole = processed(path, Colours);
    expectSameBits(processed(path, Colours + Words{"--memory", "162M"}).pixels, whole.pixels);
    expectHas(messagesOf(Words{"process", path, "-o", at("out.exr"), "-v", "--memory", "162M"} + Colours),
              "plime: The picture is cut into ");
    expectFailure(
        4,
        path + ": needs more memory than is allowed — expected at most 102400 bytes, got 158M. Allow it "
               "with --memory 158M.",
        Words{"process", path, "-o", at("new.exr"), "--memory", "100K"} + Colours);
}

TEST_F(PlimeTiling, extraChannels_areKept) {
    Picture input = ramp(90, 150);
    input.description.extraChannels = {{"Z", workbench::ExtraType::Float}, {"h", workbench::ExtraType::Half}};
    for (const workbench::ExtraChannel& channel : input.description.extraChannels) {
        auto& bytes = input.extra.emplace_back(90 * 150 * channel.bytesPerValue());
        for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::byte>(i / 7 % 31 + 1);
    }
    const std::string path = picture("in.exr", input);
    EXPECT_EQ(processed(path, Colours + Words{"--tile", "64"}).extra, input.extra);
    EXPECT_EQ(processed(path, Colours).extra, input.extra);
}

/// The largest step of blue between neighbouring columns, at the borders of `count` equal parts or elsewhere.
float largestStep(const Picture& picture, int count, bool atBorders) {
    const int width = picture.description.width;
    float largest = 0;
    for (int x = 1; x < width; ++x) {
        bool isBorder = false;
        for (int i = 1; i < count; ++i) isBorder |= x == width * i / count;
        if (isBorder != atBorders) continue;
        for (int y = 0; y < picture.description.height; ++y) {
            const auto at =
                static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
            largest =
                std::max(largest, std::abs(float(picture.pixels[at].b) - float(picture.pixels[at - 1].b)));
        }
    }
    return largest;
}

/// The same with rows and columns exchanged.
Picture turned(const Picture& picture) {
    Picture result = picture;
    std::swap(result.description.width, result.description.height);
    for (int y = 0; y < result.description.height; ++y)
        for (int x = 0; x < result.description.width; ++x)
            result.pixels[static_cast<std::size_t>(y * result.description.width + x)] =
                picture.pixels[static_cast<std::size_t>(x * picture.description.width + y)];
    return result;
}

// The blur reaches 0.1 of a tile, which has at most 100 pixels.
TEST_F(PlimeTiling, blurWithEnoughOverlap_showsNoSeam_andWithoutItDoes) {
    const std::string path = picture("in.exr", gradient(301, 301));
    const Picture seamless = processed(path, Blur + Words{"--tile", "100", "--overlap", "20"});
    const Picture cut = processed(path, Blur + Words{"--tile", "100", "--overlap", "0"});
    for (const bool across : {true, false}) {
        const Picture smooth = across ? seamless : turned(seamless), broken = across ? cut : turned(cut);
        EXPECT_LE(largestStep(smooth, 6, true), largestStep(smooth, 6, false));
        EXPECT_GT(largestStep(broken, 4, true), 2 * largestStep(broken, 4, false));
    }
}

TEST_F(PlimeTiling, choice_isSaidInTheLog_andKept) {
    const std::string path = picture("in.exr", gradient(300, 100));
    const auto keptTiles = [&] {
        return Json::parse(
            readPicture(at("out.exr")).description.find(workbench::NetworkName)->text)["views"][0]["tiles"];
    };
    const Words call = {"process", path, "-o", at("out.exr"), "-v", "--gpu", "software"};
    std::string said = messagesOf(call + Blur);
    expectHas(said, "plime: The picture is one tile of 300x100 pixels on ");
    expectHas(said, " Hollywood/PixelBlur works with the place in it.\n");
    EXPECT_EQ(keptTiles(), Json::parse(R"({"size": [300, 100]})"));

    said = messagesOf(call + Colours + Words{"--tile", "128", "--overlap", "10"});
    expectHas(said, "plime: The picture is cut into 3 tiles of 120x100 pixels with an overlap of 10, on ");
    EXPECT_EQ(occurrences(said, "warning"), 0U) << said;
    EXPECT_EQ(keptTiles(), Json::parse(R"({"size": [120, 100], "overlap": 10})"));
}

TEST_F(PlimeTiling, blurOfACutPicture_isWarnedOf) {
    const std::string path = picture("in.exr", gradient(300, 100));
    EXPECT_EQ(messagesOf(Words{"process", path, "-o", at("out.exr"), "--tile", "128"} + Colours + Blur),
              "plime: warning: " + path +
                  ": is cut into 5 tiles of 124x100 pixels, and Hollywood/PixelBlur works with the place in "
                  "the tile, "
                  "so the result differs from that of the whole picture. Keep the picture whole with --tile "
                  "300.\n");
    EXPECT_EQ(messagesOf(Words{"process", path, "-o", at("out.exr")} + Blur), "");
}

TEST_F(PlimeTiling, programOfTheUser_isWarnedOfWhereItAsksForThePlace) {
    const std::string path = picture("in.exr", gradient(300, 100));
    const auto said = [&](const std::string& code) {
        return messagesOf({"process", path, "-o", at("out.exr"), "--tile", "128", "--with",
                           "Hollywood/TileProgram", "-p", "code=" + code});
    };
    EXPECT_EQ(said("uniform sampler2D frame; void main() { gl_FragColor = 2.0 * texture2D( frame,\n"
                   "gl_TexCoord[0].xy ); }"),
              "");
    for (const char* place : {"gl_TexCoord[0].x", "gl_FragCoord.x"})
        expectHas(said(std::string("void main() { gl_FragColor = vec4(") + place + "); }"),
                  "and Hollywood/TileProgram works with the place in the tile, so the result differs");
}

TEST_F(PlimeTiling, programThatAsksForThePlace_seesALargePictureAsOneTile) {
    const std::string path = picture("in.exr", gradient(5000, 8));
    const Words ramp = {"--with", "Hollywood/TileProgram", "-p",
                        "code=void main() { gl_FragColor = vec4(gl_TexCoord[0].x); }"};
    EXPECT_EQ(messagesOf(Words{"process", path, "-o", at("out.exr")} + ramp), "");
    const auto pixels = readPicture(at("out.exr")).pixels;
    for (std::size_t x = 1; x < 5000; ++x) ASSERT_GE(float(pixels[x].r), float(pixels[x - 1].r)) << x;
    expectHas(messagesOf(Words{"process", path, "-o", at("out.exr"), "--tile", "4096"} + ramp),
              "so the result differs from that of the whole picture");
}

TEST_F(PlimeTiling, renderWith_isTheSameAsProcessingThePictureAfterwards) {
    for (const char* size : {"4200x70", "40x700"}) {
        const Words drawn = {"render", "demo:knot", "--size", size, "--tile", "512", "--gpu", "software"};
        succeed(drawn + Words{"-o", at("plain.exr")});
        for (const Words& chain : {Colours, Gamma, Colours + Gamma}) {
            succeed(drawn + Words{"-o", at("with.exr")} + chain);
            succeed(Words{"process", at("plain.exr"), "-o", at("after.exr")} + chain);
            EXPECT_EQ(shareWithin(0, readPicture(at("with.exr")), readPicture(at("after.exr"))), 1.0) << size;
        }
    }
}

TEST_F(PlimeTiling, renderWith_ofAModuleThatAsksForThePlace_isWarnedOf) {
    expectHas(messagesOf(Words{"render", "demo:knot", "--size", "17000x20", "-o", at("out.exr")} + Blur),
              "works with the place in the tile, so the result differs from that of the whole picture. "
              "\"plime process --tile\" on the finished picture can take more as one tile.\n");
}

TEST_F(PlimeTiling, overlapThatLeavesNothing_isRefused) {
    const std::string path = picture("in.exr", gradient(300, 100));
    expectFailure(
        2,
        "--overlap: leaves nothing of a tile — expected less than half of a tile of 64 pixels, got 32. "
        "Choose a larger --tile or a smaller --overlap.",
        Words{"process", path, "-o", at("out.exr"), "--tile", "64", "--overlap", "32"} + Colours);
    EXPECT_EQ(messagesOf(Words{"process", path, "-o", at("out.exr"), "--tile", "64"} + Gamma),
              "plime: warning: --tile: has no effect, because the modules work without a shader, strip by "
              "strip.\n");
}

} // namespace

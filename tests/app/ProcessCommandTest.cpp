// SPDX-License-Identifier: Apache-2.0
// plime process: tile processors over pictures, the formats, and what is kept of a picture.
#include "tests/app/PictureProgram.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfTiledOutputFile.h>
#include <nlohmann/json.hpp>

#include <cmath>

namespace {

using half_float::half;
using workbench::Picture;
using workbench::readPicture;
using Json = nlohmann::json;

const Words Gamma = {"--with", "Hollywood/GammaCorrection"};
const Words Colours = {"--with", "Hollywood/ColorGammaCorrection", "-p", "red=-0.5", "-p", "green=0.25"};

/// Hollywood/GammaCorrection: c^1.5 as the half library computes it; alpha as it is.
krod::RGBAHalf powered(const krod::RGBAHalf& p) {
    const half exponent(1.5F);
    return {pow(p.r, exponent), pow(p.g, exponent), pow(p.b, exponent), p.a};
}

std::vector<krod::RGBAHalf> powered(std::vector<krod::RGBAHalf> pixels) {
    for (krod::RGBAHalf& p : pixels) p = powered(p);
    return pixels;
}

/// Hollywood/ColorGammaCorrection with the values of `Colours`.
std::vector<krod::RGBAHalf> coloured(std::vector<krod::RGBAHalf> pixels) {
    const auto raise = [](half value, double exponent) {
        return half(static_cast<float>(std::pow(static_cast<double>(value), std::pow(10, exponent))));
    };
    for (krod::RGBAHalf& p : pixels) p = {raise(p.r, -0.5), raise(p.g, 0.25), p.b, p.a};
    return pixels;
}

/// From 1/32 to 4, alpha from 0.25 to 1: nothing awkward.
Picture ramp(int width, int height) {
    Picture picture = associatedGradient(width, height);
    for (krod::RGBAHalf& p : picture.pixels)
        p = pixel(float(p.r) * 3.9F + 0.03F, float(p.g) * 0.9F + 0.05F, float(p.b) + 0.1F,
                  0.25F + 0.75F * float(p.a));
    return picture;
}

class PlimeProcess : public PictureProgramTest {
protected:
    /// The picture behind the modules. Whatever is said must be expected.
    Picture processed(const std::string& input, const Words& modules, const std::string& said = "",
                      const std::string& name = "out.exr") const {
        EXPECT_EQ(messagesOf(Words{"process", input, "-o", at(name)} + modules), said);
        return readPicture(at(name));
    }
};

TEST_F(PlimeProcess, gammaCorrection_isThePowerOfEveryHalf_andLeavesAlpha) {
    const Picture input = ramp(61, 37);
    expectSameBits(processed(picture("in.exr", input), Gamma).pixels, powered(input.pixels));
}

TEST_F(PlimeProcess, colorGammaCorrection_isThePowerOfEachChannel) {
    const Picture input = ramp(61, 37);
    const Picture output = processed(picture("in.exr", input), Colours);
    expectNear(output.pixels, coloured(input.pixels), 0.004F);
}

TEST_F(PlimeProcess, chain_worksInTheOrderOfTheWords) {
    const Picture input = ramp(40, 30);
    const std::string path = picture("in.exr", input);
    const Picture between = processed(path, Colours, "", "between.exr");
    expectSameBits(processed(path, Colours + Gamma).pixels, powered(between.pixels));
    expectSameBits(processed(path, Gamma + Gamma).pixels, powered(powered(input.pixels)));
}

TEST_F(PlimeProcess, strips_giveTheSameAsOnePiece) {
    const Picture input = ramp(17, 1000);
    const std::string path = picture("in.exr", input);
    expectSameBits(processed(path, Gamma).pixels, powered(input.pixels));
    const std::string text = messagesOf(Words{"process", path, "-o", at("out.exr"), "-v"} + Gamma);
    EXPECT_EQ(occurrences(text, "GammaCorrection....process...\n"), 16U) << text;
    expectHas(text, "plime: Working in strips of 64 rows.\n");
}

TEST_F(PlimeProcess, floatExr_isReadAsHalf_andWrittenAsAsked) {
    Picture input = ramp(20, 10);
    const std::string path = picture("in.exr", input, {.depth = workbench::PixelDepth::Float});
    ASSERT_EQ(readPicture(path).description.depth, workbench::PixelDepth::Float);
    const Picture output = processed(path, Gamma);
    EXPECT_EQ(output.description.depth, workbench::PixelDepth::Half);
    expectSameBits(output.pixels, powered(input.pixels));
    EXPECT_EQ(processed(path, Gamma + Words{"-d", "float"}).description.depth, workbench::PixelDepth::Float);
}

TEST_F(PlimeProcess, tiledExr_isReadLikeAnyOther) {
    const Picture input = ramp(50, 40);
    Imf::Header header(50, 40);
    header.setTileDescription(Imf::TileDescription(16, 16, Imf::ONE_LEVEL));
    Imf::FrameBuffer buffer;
    int place = 0;
    for (const char* name : {"R", "G", "B", "A"}) {
        header.channels().insert(name, Imf::Channel(Imf::HALF));
        buffer.insert(
            name, Imf::Slice(Imf::HALF,
                             const_cast<char*>(reinterpret_cast<const char*>(input.pixels.data())) + place, 8,
                             50 * 8));
        place += 2;
    }
    {
        Imf::TiledOutputFile file(at("tiled.exr").c_str(), header);
        file.setFrameBuffer(buffer);
        file.writeTiles(0, file.numXTiles() - 1, 0, file.numYTiles() - 1);
    }
    expectSameBits(processed(at("tiled.exr"), Gamma).pixels, powered(input.pixels));
}

TEST_F(PlimeProcess, pngTiffJpegAndHdr_areReadAndWritten) {
    Picture input = ramp(32, 24);
    for (krod::RGBAHalf& p : input.pixels) p = pixel(0.1F, 0.5F, 0.8F);
    input.description.hasAlpha = false;
    for (const std::string extension : {"png", "tif", "jpg", "hdr"}) {
        input.description.depth =
            extension == "jpg" ? workbench::PixelDepth::UInt8 : workbench::PixelDepth::UInt16;
        const std::string path = picture("in." + extension, input);
        const auto stored = readPicture(path);
        const Picture asExr = processed(path, Gamma);
        expectSameBits(asExr.pixels, powered(stored.pixels));
        const auto output = at("out." + extension);
        messagesOf(Words{"process", path, "-o", output} + Gamma);
        expectNear(readPicture(output).pixels, asExr.pixels, 0.012F);
        EXPECT_EQ(readPicture(output).description.depth, stored.description.depth) << extension;
    }
}

TEST_F(PlimeProcess, network_isKeptWithThePicturesNameAlone) {
    const std::string path = picture("in.exr", ramp(20, 300));
    for (const std::string name : {"out.exr", "out.png", "out.tif"}) {
        messagesOf(Words{"process", path, "-o", at(name)} + Colours + Gamma);
        const Picture output = readPicture(at(name));
        const auto* kept = output.description.find(workbench::NetworkName);
        ASSERT_NE(kept, nullptr) << name;
        EXPECT_EQ(Json::parse(kept->text), Json::parse(R"({"version": 1, "objects": [
                      {"name": "colorgammacorrection", "creator": "Hollywood/ColorGammaCorrection",
                       "parameters": {"red": "-0.5", "green": "0.25"}},
                      {"name": "gammacorrection", "creator": "Hollywood/GammaCorrection"}],
                      "views": [{"name": "main", "picture": "in.exr", "tiles": {"size": [20, 300]},
                                 "processors": ["colorgammacorrection", "gammacorrection"]}]})"));
        EXPECT_EQ(read(at(name)).find(folder.string()), std::string::npos);
    }
    const std::string bytes = read(at("out.png"));
    messagesOf(Words{"process", path, "-o", at("out.png")} + Colours + Gamma);
    EXPECT_EQ(read(at("out.png")), bytes);
}

TEST_F(PlimeProcess, extraChannelsAndMetadata_areKeptInExr_andNamedWhereTheyCannotBe) {
    Picture input = ramp(9, 300);
    input.description.extraChannels = {{"Z", workbench::ExtraType::Float},
                                       {"id", workbench::ExtraType::UInt}};
    for (int plane = 0; plane < 2; ++plane) {
        auto& bytes = input.extra.emplace_back(9 * 300 * 4);
        for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::byte>(i % 7 + 1);
    }
    input.description.setText("owner", "somebody");
    const std::string path = picture("in.exr", input);
    for (const Words& modules : {Gamma, Colours}) {
        const Picture output = processed(path, modules);
        ASSERT_EQ(output.description.extraChannels.size(), 2U);
        EXPECT_EQ(output.extra, input.extra);
        ASSERT_NE(output.description.find("owner"), nullptr);
        EXPECT_EQ(output.description.find("owner")->text, "somebody");
    }
    const std::string text = messagesOf(Words{"process", path, "-o", at("out.png")} + Gamma);
    expectHas(text, "plime: warning: " + at("out.png") + ": its format cannot hold Z, id");
}

TEST_F(PlimeProcess, missingAlpha_isOneInside_andNotWritten) {
    Picture input = ramp(8, 8);
    input.description.hasAlpha = false;
    const Picture output = processed(picture("in.exr", input), Colours);
    EXPECT_FALSE(output.description.hasAlpha);
}

TEST_F(PlimeProcess, grey_isThreeEqualChannelsInside) {
    Picture input = ramp(8, 8);
    input.description.hasAlpha = false;
    input.description.isGrey = true;
    input.description.depth = workbench::PixelDepth::UInt16;
    for (krod::RGBAHalf& p : input.pixels) p = pixel(0.25F, 0.25F, 0.25F);
    const std::string path = picture("in.png", input);
    ASSERT_TRUE(readPicture(path).description.isGrey);
    const Picture output = processed(path, Gamma);
    expectNear(output.pixels, {64, pixel(0.125F, 0.125F, 0.125F)}, 0.0001F);
    const Picture parted = processed(path, Colours);
    expectNear(parted.pixels, {64, coloured({pixel(0.25F, 0.25F, 0.25F)}).front()}, 0.002F);
}

TEST_F(PlimeProcess, overflowOnReading_isCountedAndSaid) {
    const std::string path = at("huge.hdr");
    write("huge.hdr", std::string("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 1 +X 2\n") +
                          std::string("\x80\x80\x80\x91\x80\x80\x80\x81", 8)); // 2^16 and 1, three times each
    const Picture output =
        processed(path, Gamma,
                  "plime: warning: " + path +
                      ": 3 values are too large for a half, the largest 65536.0, and became 65504.\n");
    EXPECT_TRUE(isinf(output.pixels.at(0).r));
    EXPECT_EQ(float(output.pixels.at(1).r), 1.0F);
}

TEST_F(PlimeProcess, depthAndSrgb_areObeyed) {
    Picture input = ramp(8, 8);
    input.description.hasAlpha = false;
    for (krod::RGBAHalf& p : input.pixels) p = pixel(0.25F, 0.25F, 0.25F);
    const std::string path = picture("in.exr", input);
    const Picture plain = processed(path, Gamma + Words{"-d", "uint8"}, "", "plain.png");
    EXPECT_EQ(plain.description.depth, workbench::PixelDepth::UInt8);
    expectNear({plain.pixels.front()}, {pixel(32 / 255.0F, 32 / 255.0F, 32 / 255.0F)}, 0.0001F);
    const Picture viewed = processed(path, Gamma + Words{"--srgb"}, "", "viewed.png");
    EXPECT_EQ(viewed.description.depth, workbench::PixelDepth::UInt16);
    expectNear({viewed.pixels.front()}, {pixel(0.3886F, 0.3886F, 0.3886F)}, 0.0005F); // of 0.125
}

TEST_F(PlimeProcess, clipping_isSaidOnce) {
    const std::string path = picture("in.exr", ramp(40, 600));
    const std::string text = messagesOf(Words{"process", path, "-o", at("out.png")} + Gamma);
    EXPECT_EQ(occurrences(text, "\n"), 1U) << text;
    expectHas(text, " values were clipped to uint16, the largest was ");
}

TEST_F(PlimeProcess, valuesBelowZero_areSaidWithTheSmallest) {
    Picture input = ramp(2, 1);
    const std::string before = "plime: warning: " + at("out.png") + ": ";
    const std::string after = ". Write .exr to keep them, or say --clip.\n";
    const Words same = {"--with", "Hollywood/TileProgram", "-p",
                        "code=uniform sampler2D frame; void main() { gl_FragColor = texture2D(frame, "
                        "gl_TexCoord[0].xy); }"};
    input.pixels = {pixel(-0.5F, 0.5F, -2), pixel(7, 1, 0)};
    processed(picture("both.exr", input), same,
              before + "3 values were clipped to uint16, the smallest was -2.0, the largest 7.0" + after,
              "out.png");
    input.pixels[1].r = half(0.5F);
    processed(picture("below.exr", input), same,
              before + "2 values were clipped to uint16, the smallest was -2.0" + after, "out.png");
}

TEST_F(PlimeProcess, fewClippedValues_areANote_andNoneIsToldToWhoAskedForThem) {
    Picture input = ramp(100, 100);
    input.pixels.assign(10000, pixel(0.5F, 0.5F, 0.5F));
    for (std::size_t i = 0; i < 10; ++i) input.pixels[i] = pixel(1, 9, 1);
    const Words words = Words{"process", picture("in.exr", input), "-o", at("out.png")} + Gamma;
    EXPECT_EQ(messagesOf(words), "plime: 1 note, -v shows it.\n");
    expectHas(messagesOf(words + Words{"-v"}),
              "plime: note: " + at("out.png") +
                  ": 10 values were clipped to uint16, the largest was 27.0. "
                  "Write .exr to keep them, or say --clip.\n");
    input.pixels[10] = pixel(1, 9, 1);
    static_cast<void>(picture("in.exr", input));
    expectHas(messagesOf(words), "plime: warning: " + at("out.png") + ": 11 values were clipped to uint16");
    EXPECT_EQ(messagesOf(words + Words{"--clip"}), "");
}

TEST_F(PlimeProcess, notANumber_isCountedOnItsOwn) {
    Picture input = ramp(3, 1);
    input.pixels[0] = pixel(-1, 0.5F, -1); // no power of 1.5
    const std::string path = picture("in.exr", input);
    const std::string before = "plime: warning: " + at("out.png") + ": ";
    const std::string after = ". Write .exr to keep them, or say --clip.\n";
    const auto cause = [](const std::string& in) {
        return "plime: warning: " + in +
               ": 1 pixels became no numbers because they have values below 0, as a power makes of them. "
               "--clip-negative makes values below 0 to 0 before the modules.\n";
    };
    processed(path, Gamma,
              before + "2 values were clipped to uint16, the largest was 4.26171875" + after + before +
                  "1 pixels have values that are not numbers and were written as grey.\n" + cause(path),
              "out.png");
    input.pixels.resize(1);
    input.description.width = 1;
    processed(picture("nan.exr", input), Gamma,
              before + "1 pixels have values that are not numbers and were written as grey.\n" +
                  cause(at("nan.exr")),
              "out.png");
    EXPECT_NEAR(float(readPicture(at("out.png")).pixels[0].r), 0.3535F, 0.001F); // of 0.5, its green
}

TEST_F(PlimeProcess, linesOfModules_areOnStandardErrorWithVerboseAlone) {
    const std::string path = picture("in.exr", ramp(8, 8));
    const std::string line = "GammaCorrection....process...\n";
    EXPECT_EQ(messagesOf(Words{"process", path, "-o", at("a.exr")} + Gamma), "");
    EXPECT_EQ(occurrences(messagesOf(Words{"process", path, "-o", at("a.exr"), "-v"} + Gamma), line), 1U);
}

TEST_F(PlimeProcess, interrupted_leavesNothing) {
    workbench::PictureDescription description;
    description.width = 512;
    description.height = 40000;
    const auto writer = workbench::PictureWriter::create(at("in.exr"), description);
    const std::vector<krod::RGBAHalf> rows(512 * 1000, pixel(0.5F, 0.25F, 2));
    for (int first = 0; first < description.height; first += 1000)
        writer->writeRows(first, 1000, rows.data());
    writer->finish();
    Call call{Words{"process", at("in.exr"), "-o", at("out.exr")} + Gamma};
    call.meanwhile = interruptAtFirstFile(folder);
    expectFailure(130, "interrupted.", call);
}

} // namespace

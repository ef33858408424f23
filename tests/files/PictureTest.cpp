// SPDX-License-Identifier: Apache-2.0
#include "FilesTest.h"

#include <cmath>
#include <limits>

using namespace workbench;

namespace {

class PictureTest : public FilesTest {
protected:
    /// A picture of that depth in which each stored integer is hit exactly, so that it must come back
    /// unchanged.
    static Picture exact(PixelDepth depth, bool alpha) {
        Picture picture = gradient(64, 40, alpha);
        picture.description.depth = depth;
        const double largest = depth == PixelDepth::UInt8 ? 255 : 65535;
        const auto rounded = [&](half_float::half value) {
            return half_float::half(static_cast<float>(std::round(value * largest) / largest));
        };
        for (auto& p : picture.pixels) p = {rounded(p.r), rounded(p.g), rounded(p.b), rounded(p.a)};
        return picture;
    }
};

} // namespace

TEST_F(PictureTest, Png_bothDepths_keepPixelsAndAlphaUnmultiplied) {
    for (const auto depth : {PixelDepth::UInt8, PixelDepth::UInt16})
        for (const bool alpha : {false, true}) {
            Picture picture = exact(depth, alpha);
            if (alpha) picture.pixels[0] = pixel(1, 1, 1, 0); // lost if alpha were multiplied in
            writePicture(folder / "a.png", picture);
            const Picture again = readPicture(folder / "a.png");
            EXPECT_EQ(again.description.depth, depth);
            EXPECT_EQ(again.description.hasAlpha, alpha);
            if (depth == PixelDepth::UInt8)
                expectSameBits(again.pixels, picture.pixels);
            else
                expectNear(again.pixels, picture.pixels, 0.0005F);
        }
}

TEST_F(PictureTest, Tiff_allDepths_keepPixelsAndAlphaUnmultiplied) {
    for (const auto depth : {PixelDepth::UInt8, PixelDepth::UInt16, PixelDepth::Half, PixelDepth::Float}) {
        Picture picture =
            depth == PixelDepth::Half || depth == PixelDepth::Float ? gradient(64, 40) : exact(depth, true);
        picture.description.depth = depth;
        picture.pixels[0] = pixel(1, 1, 1, 0);
        if (depth == PixelDepth::Half) picture.pixels[1] = pixelOfBits(0x7e01, 0xfe37, 0x7c00, 0x0001);
        writePicture(folder / "a.tif", picture);
        const Picture again = readPicture(folder / "a.tif");
        EXPECT_EQ(again.description.depth, depth);
        EXPECT_TRUE(again.description.hasAlpha);
        if (depth == PixelDepth::UInt16)
            expectNear(again.pixels, picture.pixels, 0.0005F);
        else
            expectSameBits(again.pixels, picture.pixels);
    }
}

TEST_F(PictureTest, Tiff_finiteFloatsBeyondHalf_areCounted) {
    // A float TIFF of one pixel with three values, little-endian, as plain as the format allows.
    std::string tiff("II*\0\x08\0\0\0", 8);
    const auto word = [&](std::uint16_t v) { tiff.append(reinterpret_cast<const char*>(&v), 2); };
    const auto entry = [&](std::uint16_t tag, std::uint16_t type, std::uint32_t count, std::uint32_t value) {
        word(tag);
        word(type);
        tiff.append(reinterpret_cast<const char*>(&count), 4)
            .append(reinterpret_cast<const char*>(&value), 4);
    };
    constexpr std::uint32_t After = 8 + 2 + 10 * 12 + 4;
    word(10);
    entry(256, 3, 1, 1);          // width
    entry(257, 3, 1, 1);          // height
    entry(258, 3, 3, After);      // bits of each value
    entry(259, 3, 1, 1);          // not compressed
    entry(262, 3, 1, 2);          // RGB
    entry(273, 4, 1, After + 12); // place of the pixels
    entry(277, 3, 1, 3);          // values per pixel
    entry(278, 3, 1, 1);          // rows per strip
    entry(279, 4, 1, 12);         // bytes of the strip
    entry(339, 3, 3, After + 6);  // floats
    tiff.append(4, '\0');
    for (int i = 0; i < 3; ++i) word(32);
    for (int i = 0; i < 3; ++i) word(3);
    for (const float value : {1e6F, -1e6F, 0.5F}) tiff.append(reinterpret_cast<const char*>(&value), 4);
    const auto reader = PictureReader::open(write("a.tif", tiff));
    std::vector<krod::RGBAHalf> pixels(1);
    reader->readRows(0, 1, pixels.data());
    EXPECT_EQ(reader->loss().overflows, 2U);
    EXPECT_EQ(pixels[0].r, 65504.0F);
    EXPECT_EQ(pixels[0].g, -65504.0F);
    EXPECT_EQ(pixels[0].b, 0.5F);
}

TEST_F(PictureTest, Jpeg_roundTrip_staysClose) {
    Picture picture = gradient(64, 40, false);
    writePicture(folder / "a.jpg", picture);
    const Picture again = readPicture(folder / "a.jpg");
    EXPECT_EQ(again.description.depth, PixelDepth::UInt8);
    EXPECT_FALSE(again.description.hasAlpha);
    expectNear(again.pixels, picture.pixels, 0.03F);
}

TEST_F(PictureTest, Hdr_roundTrip_keepsLargeValues) {
    Picture picture = gradient(64, 40, false);
    for (auto& p : picture.pixels) p = pixel(p.r * 1000, 700, 800);
    writePicture(folder / "a.hdr", picture);
    const Picture again = readPicture(folder / "a.hdr");
    EXPECT_EQ(again.description.depth, PixelDepth::Float);
    expectNear(again.pixels, picture.pixels, 8); // 8 bits of mantissa for 512 … 1023
}

TEST_F(PictureTest, Grey_isReadAsColourAndWrittenAsGrey) {
    for (const std::string name : {"a.png", "a.tif", "a.jpg"}) {
        Picture picture = gradient(16, 16, false);
        picture.description.isGrey = true;
        picture.description.depth = PixelDepth::UInt8;
        writePicture(folder / name, picture);
        const Picture again = readPicture(folder / name);
        EXPECT_TRUE(again.description.isGrey) << name;
        for (std::size_t i = 0; i < again.pixels.size(); ++i) {
            ASSERT_EQ(again.pixels[i].r, again.pixels[i].g);
            ASSERT_EQ(again.pixels[i].r, again.pixels[i].b);
            ASSERT_NEAR(again.pixels[i].r, picture.pixels[i].r, 0.02F) << name;
        }
    }
}

TEST_F(PictureTest, GreyWithAlpha_keepsBoth) {
    Picture picture = exact(PixelDepth::UInt8, true);
    picture.description.isGrey = true;
    for (auto& p : picture.pixels) p.g = p.b = p.r;
    for (const std::string name : {"a.png", "a.tif"}) {
        writePicture(folder / name, picture);
        const Picture again = readPicture(folder / name);
        EXPECT_TRUE(again.description.isGrey && again.description.hasAlpha) << name;
        expectSameBits(again.pixels, picture.pixels);
    }
}

TEST_F(PictureTest, Writer_halfInput_choosesTheDepthOfTheFormat) {
    const auto depthOf = [&](const std::string& name, PixelDepth input) {
        PictureDescription description = gradient(2, 2).description;
        description.depth = input;
        return PictureWriter::create(folder / name, description)->depth();
    };
    EXPECT_EQ(depthOf("a.exr", PixelDepth::Float), PixelDepth::Half);
    EXPECT_EQ(depthOf("a.png", PixelDepth::Half), PixelDepth::UInt16);
    EXPECT_EQ(depthOf("a.png", PixelDepth::UInt8), PixelDepth::UInt8);
    EXPECT_EQ(depthOf("a.TIFF", PixelDepth::Half), PixelDepth::Half);
    EXPECT_EQ(depthOf("a.jpeg", PixelDepth::Float), PixelDepth::UInt8);
    EXPECT_EQ(depthOf("a.hdr", PixelDepth::UInt8), PixelDepth::Float);
    EXPECT_EQ(filesInFolder(), 0);
}

TEST_F(PictureTest, Writer_depthThatTheFormatLacks_isAUsageError) {
    EXPECT_EQ(
        sentenceOf(Fault::Usage,
                   [&] { writePicture(folder / "a.png", gradient(2, 2), {.depth = PixelDepth::Half}); }),
        (folder / "a.png").string() +
            ": PNG cannot hold the depth asked for — expected uint8, uint16, got half.");
}

TEST_F(PictureTest, Writer_unknownExtension_listsTheKnownOnes) {
    EXPECT_EQ(sentenceOf(Fault::Usage, [&] { writePicture(folder / "a.gif", gradient(2, 2)); }),
              (folder / "a.gif").string() +
                  ": cannot be written as a picture — expected one of the extensions .exr .png "
                  ".tif .tiff .jpg .jpeg .hdr, got .gif.");
}

TEST_F(PictureTest, Writer_alphaThatTheFormatLacks_isNamedAsDropped) {
    PictureDescription description = gradient(2, 2).description;
    description.extraChannels = {{"Z", ExtraType::Float}};
    EXPECT_EQ(PictureWriter::create(folder / "a.jpg", description)->dropped(),
              (std::vector<std::string>{"A", "Z"}));
    EXPECT_EQ(PictureWriter::create(folder / "a.png", description)->dropped(), std::vector<std::string>{"Z"});
    EXPECT_TRUE(PictureWriter::create(folder / "a.exr", description)->dropped().empty());
}

TEST_F(PictureTest, Writer_integers_countWhatTheyClip) {
    Picture picture = gradient(4, 1);
    picture.pixels = {pixel(2, 0, 0), pixel(0, -1, 0), pixel(0, 0, 7), pixel(0, std::nanf(""), 1)};
    const auto writer = PictureWriter::create(folder / "a.png", picture.description);
    writer->writeRows(0, 1, picture.pixels.data());
    writer->finish();
    EXPECT_EQ(writer->clippedCount(), 3U);
    EXPECT_EQ(writer->smallestValue(), -1.0F);
    EXPECT_EQ(writer->largestValue(), 7.0F);
    EXPECT_EQ(writer->notNumberCount(), 1U);
    expectSameBits(readPicture(folder / "a.png").pixels,
                   {pixel(1, 0, 0), pixel(0, 0, 0), pixel(0, 0, 1), pixel(0.5F, 0.5F, 0.5F)});
}

TEST_F(PictureTest, Writer_srgb_encodesColourForViewing) {
    Picture picture = gradient(1, 1);
    picture.pixels = {pixel(0.5F, 0.002F, 1, 0.5F)};
    writePicture(folder / "a.png", picture, {.depth = PixelDepth::UInt8, .srgb = true});
    const Picture again = readPicture(folder / "a.png");
    expectNear(again.pixels, {pixel(188 / 255.0F, 7 / 255.0F, 1, 128 / 255.0F)}, 0.0005F);
}

TEST_F(PictureTest, Metadata_textsAndNumbers_areKept) {
    for (const std::string name : {"a.png", "a.tif", "a.jpg"}) {
        Picture picture = gradient(8, 8, false);
        picture.description.setText("ImageDescription", "A meadow\nin spring");
        picture.description.setText("Copyright", "Somebody");
        writePicture(folder / name, picture);
        const Picture again = readPicture(folder / name);
        ASSERT_NE(again.description.find("ImageDescription"), nullptr) << name;
        EXPECT_EQ(again.description.find("ImageDescription")->text, "A meadow\nin spring") << name;
        ASSERT_NE(again.description.find("Copyright"), nullptr) << name;
        EXPECT_EQ(again.description.find("Copyright")->text, "Somebody") << name;
    }
}

TEST_F(PictureTest, Network_isKeptBesideTheDescription) {
    const std::string network = "{\n  \"objects\": [\"Gr\xc3\xbc\xc3\x9f"
                                "e\"]\n}\n";
    for (const std::string name : {"a.png", "a.tif", "a.jpg", "a.exr"})
        for (const std::string description : {"", "A meadow"}) {
            Picture picture = gradient(8, 8, false);
            if (!description.empty()) picture.description.setText("ImageDescription", description);
            picture.description.setText(NetworkName, network);
            writePicture(folder / name, picture);
            const Picture again = readPicture(folder / name);
            ASSERT_NE(again.description.find(NetworkName), nullptr) << name;
            EXPECT_EQ(again.description.find(NetworkName)->text, network) << name;
            const Metadatum* text = again.description.find("ImageDescription");
            EXPECT_EQ(text ? text->text : "", description) << name;
        }
}

TEST_F(PictureTest, Network_whereThereIsNoPlace_isNamedAsDropped) {
    PictureDescription description = gradient(2, 2, false).description;
    description.setText(NetworkName, std::string(70000, 'x'));
    const std::vector<std::string> network{"krod:network"};
    EXPECT_EQ(PictureWriter::create(folder / "a.hdr", description)->dropped(), network);
    EXPECT_TRUE(PictureWriter::create(folder / "a.jpg", description)->dropped().empty());
    EXPECT_TRUE(PictureWriter::create(folder / "a.tif", description)->dropped().empty());
}

TEST_F(PictureTest, Reader_inPieces_givesTheSamePixels) {
    for (const std::string name : {"a.png", "a.tif", "a.hdr", "a.jpg"}) {
        writePicture(folder / name, gradient(50, 150, false));
        const Picture whole = readPicture(folder / name);
        const auto reader = PictureReader::open(folder / name);
        std::vector<krod::RGBAHalf> pixels(50 * 150);
        for (const auto& [first, count] : {std::pair{0, 70}, {70, 80}, {20, 40}}) // the last one goes back
            reader->readRows(first, count, pixels.data() + first * 50);
        expectSameBits(pixels, whole.pixels);
    }
}

TEST_F(PictureTest, Writer_inPieces_givesTheSameFile) {
    const Picture picture = gradient(50, 150);
    for (const std::string name : {"a.png", "a.tif", "a.exr"}) {
        writePicture(folder / name, picture);
        const std::string whole = read(folder / name);
        const auto writer = PictureWriter::create(folder / name, picture.description);
        for (const auto& [first, count] : {std::pair{0, 1}, {1, 99}, {100, 50}})
            writer->writeRows(first, count, picture.pixels.data() + first * 50);
        writer->finish();
        EXPECT_EQ(read(folder / name), whole) << name;
    }
}

TEST_F(PictureTest, Writer_noClobber_keepsTheOldFile) {
    for (const std::string name : {"a.png", "a.exr"}) {
        write(name, "old");
        expectHas(sentenceOf(Fault::Output,
                             [&] { writePicture(folder / name, gradient(2, 2), {.noClobber = true}); }),
                  "exists already and is not replaced");
        EXPECT_EQ(read(folder / name), "old");
    }
}

TEST_F(PictureTest, ExrToPngToExr_carriesTextsAndNumbers) {
    Picture picture = gradient(4, 4);
    picture.description.setText("weather", "fair");
    writePicture(folder / "a.exr", picture);
    const Picture fromExr = readPicture(folder / "a.exr");
    EXPECT_TRUE(PictureWriter::create(folder / "b.png", fromExr.description)->dropped().empty());
    writePicture(folder / "b.png", fromExr);
    writePicture(folder / "c.exr", readPicture(folder / "b.png"));
    const Picture again = readPicture(folder / "c.exr");
    ASSERT_NE(again.description.find("weather"), nullptr);
    EXPECT_EQ(again.description.find("weather")->text, "fair");
    EXPECT_EQ(again.description.find("compression")->text, "zip");
}

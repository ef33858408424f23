// SPDX-License-Identifier: Apache-2.0
// What the pixels of pictures mean that other programs made: orientation, alpha, layers, windows, further pictures.
#include "FilesTest.h"

#include <algorithm>
#include <cstdlib>

using namespace workbench;

namespace {

class PictureMeaningTest : public FilesTest {
protected:
    /// Runs a tool in the folder; a test failure that names its package when it fails.
    void tool(const std::string& command) const {
        const std::string line = "cd '" + folder.string() + "' && " + command + " > tool.log 2>&1";
        EXPECT_EQ(std::system(line.c_str()), 0) // NOLINT: the words are ours
            << command << ": needs the packages openimageio-tools and imagemagick\n"
            << read(folder / "tool.log");
    }
    [[nodiscard]] Picture picture(const std::string& name) const { return readPicture(folder / name); }
    [[nodiscard]] PictureDescription about(const std::string& name) const {
        return PictureReader::open(folder / name)->description();
    }
    [[nodiscard]] bool dropsSomething(const std::string& input, const std::string& output,
                                      const std::string& part) const {
        const auto writer = PictureWriter::create(folder / output, about(input));
        return std::any_of(writer->dropped().begin(), writer->dropped().end(),
                           [&](auto& name) { return name.find(part) != std::string::npos; });
    }
};

/// Red, green, blue and alpha of the first pixel.
void expectFirst(const Picture& picture, const krod::RGBAHalf& expected) {
    expectNear({picture.pixels.front()}, {expected}, 0.001F);
}

} // namespace

TEST_F(PictureMeaningTest, Orientation_allEight_areTurnedUpright) {
    // Larger than a step of 64 rows either way, and odd.
    tool("oiiotool --pattern fill:topleft=1,0,0:topright=0,1,0:bottomleft=0,0,1:bottomright=1,1,1 150x97 3 "
         "-d uint8 "
         "-o base.tif");
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const std::string number = std::to_string(orientation);
        tool("oiiotool base.tif --attrib Orientation " + number + " -o side.tif");
        tool("convert side.tif -auto-orient upright.tif");
        const Picture got = picture("side.tif"), expected = picture("upright.tif");
        EXPECT_EQ(got.description.width, orientation < 5 ? 150 : 97) << orientation;
        EXPECT_EQ(got.description.width, expected.description.width) << orientation;
        EXPECT_EQ(got.description.orientation, 1);
        expectSameBits(got.pixels, expected.pixels);
        const Metadatum* const entry = got.description.find("Orientation");
        EXPECT_TRUE(!entry || entry->text == "1") << orientation;
    }
}

TEST_F(PictureMeaningTest, Orientation_rowsInPieces_areTheSame) {
    tool("oiiotool --pattern fill:topleft=1,0,0:topright=0,1,0:bottomleft=0,0,1:bottomright=1,1,1 150x97 3 "
         "-d uint8 "
         "--attrib Orientation 7 -o side.tif");
    const Picture whole = picture("side.tif");
    const auto reader = PictureReader::open(folder / "side.tif");
    std::vector<krod::RGBAHalf> pixels(whole.pixels.size());
    for (const auto& [first, count] : {std::pair{100, 50}, {0, 33}, {33, 67}}) // upwards too
        reader->readRows(first, count, pixels.data() + std::ptrdiff_t{first} * 97);
    expectSameBits(pixels, whole.pixels);
}

TEST_F(PictureMeaningTest, Orientation_headsOfHdr_areObeyed) {
    const std::string red("\x80\0\0\x81", 4), blue("\0\0\x80\x81", 4);
    for (const auto& [size, first] :
         {std::pair{"-Y 1 +X 2", pixel(1, 0, 0)}, {"-Y 1 -X 2", pixel(0, 0, 1)}}) {
        write("a.hdr", std::string("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n") + size + "\n" + red + blue);
        expectFirst(picture("a.hdr"), first);
    }
    write("a.hdr", "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n+Y 2 +X 1\n" + red + blue);
    expectFirst(picture("a.hdr"), pixel(0, 0, 1));
}

TEST_F(PictureMeaningTest, Alpha_isAssociatedAsFormatsAndTagsSay) {
    tool("oiiotool --create 4x4 4 --fill:color=0.25,0.5,0,0.5 4x4 -d half -o a.exr");
    EXPECT_TRUE(about("a.exr").alphaIsAssociated);
    tool("oiiotool a.exr -d uint16 -o a.tif");
    EXPECT_TRUE(about("a.tif").alphaIsAssociated);
    tool("oiiotool a.exr -d uint16 --attrib:type=int oiio:UnassociatedAlpha 1 -o u.tif");
    EXPECT_FALSE(about("u.tif").alphaIsAssociated);
    tool("oiiotool a.exr -d uint16 -o a.png");
    EXPECT_FALSE(about("a.png").alphaIsAssociated);
    expectFirst(picture("a.png"), pixel(0.5F, 1, 0, 0.5F)); // as that tool divides
}

TEST_F(PictureMeaningTest, Alpha_isConvertedToTheFormatsWay) {
    tool("oiiotool --create 4x4 4 --fill:color=0.25,0.5,0,0.5 4x4 -d half -o a.exr");
    writePicture(folder / "b.png", picture("a.exr"));
    expectFirst(picture("b.png"), pixel(0.5F, 1, 0, 0.5F));
    writePicture(folder / "c.exr", picture("b.png"));
    expectFirst(picture("c.exr"), pixel(0.25F, 0.5F, 0, 0.5F));
    writePicture(folder / "d.tif", picture("b.png")); // TIFF says which
    expectFirst(picture("d.tif"), pixel(0.5F, 1, 0, 0.5F));
    EXPECT_FALSE(about("d.tif").alphaIsAssociated);
    writePicture(folder / "e.png", picture("a.exr"), {.alphaAsItStands = true});
    expectFirst(picture("e.png"), pixel(0.25F, 0.5F, 0, 0.5F));
}

TEST_F(PictureMeaningTest, Webp_comesAsItIsStored) {
    tool("convert -size 8x8 'xc:rgba(200,100,50,0.5)' -define webp:lossless=true a.webp");
    const Picture got = picture("a.webp");
    EXPECT_FALSE(got.description.alphaIsAssociated);
    expectNear({got.pixels.front()}, {pixel(200 / 255.0F, 100 / 255.0F, 50 / 255.0F, 0.5F)}, 0.01F);
}

TEST_F(PictureMeaningTest, Transfer_isThatOfFormatOrHead) {
    tool("oiiotool --create 4x4 3 -d half -o a.exr -d float -o a.hdr -d uint8 -o a.tif -d uint16 -o b.tif");
    EXPECT_EQ(about("a.exr").transfer, Transfer::Linear);
    EXPECT_EQ(about("a.hdr").transfer, Transfer::Linear);
    EXPECT_EQ(about("a.tif").transfer, Transfer::Srgb);
    EXPECT_EQ(about("b.tif").transfer, Transfer::Unknown);
    writePicture(folder / "b.exr", picture("a.tif")); // as stored, and so it says
    EXPECT_EQ(about("b.exr").transfer, Transfer::Srgb);
    writePicture(folder / "c.exr", readPicture(folder / "a.tif", true));
    EXPECT_EQ(about("c.exr").transfer, Transfer::Linear);
    writePicture(folder / "d.exr", picture("a.exr"), {.srgb = true});
    EXPECT_EQ(about("d.exr").transfer, Transfer::Srgb);
}

TEST_F(PictureMeaningTest, Linear_decodesWhatIsSrgb) {
    tool("oiiotool --create 4x4 3 --fill:color=0.5,0.5,0.5 4x4 -d uint8 -o a.tif");
    tool("oiiotool --create 4x4 3 --fill:color=0.5,0.5,0.5 4x4 -d half -o a.exr");
    EXPECT_NEAR(readPicture(folder / "a.tif", true).pixels.front().r, 0.2158F, 0.001F); // of 128
    EXPECT_NEAR(readPicture(folder / "a.exr", true).pixels.front().r, 0.5F, 0.001F);
    writePicture(folder / "b.exr", picture("a.tif"));
    EXPECT_NEAR(readPicture(folder / "b.exr", true).pixels.front().r, 0.2158F, 0.001F);
}

TEST_F(PictureMeaningTest, Layers_thatHoldThePicture_areTakenFirst) {
    tool("oiiotool --create 4x4 7 --fill:color=0.9,0.9,0.9,1,0,0,1 4x4 --chnames "
         "ViewLayer.AO.R,ViewLayer.AO.G,ViewLayer.AO.B,ViewLayer.Combined.R,ViewLayer.Combined.G,"
         "ViewLayer.Combined.B,ViewLayer.Combined.A -d half -o a.exr");
    expectFirst(picture("a.exr"), pixel(1, 0, 0));
    EXPECT_EQ(about("a.exr").layer, "ViewLayer.Combined");
    EXPECT_TRUE(about("a.exr").hasAlpha);
}

TEST_F(PictureMeaningTest, Channels_underOtherNames_areColors) {
    for (const std::string names : {"r,g,b", "red,green,blue", "Red,Green,Blue", "X,Y,Z", "N.X,N.Y,N.Z"}) {
        tool("oiiotool --create 4x4 3 --fill:color=0.2,0.5,0.8 4x4 --chnames " + names + " -d half -o a.exr");
        const Picture got = picture("a.exr");
        EXPECT_FALSE(got.description.isGrey) << names;
        expectFirst(got, pixel(0.2F, 0.5F, 0.8F));
        writePicture(folder / "b.exr", got);
        expectFirst(picture("b.exr"), pixel(0.2F, 0.5F, 0.8F));
        EXPECT_TRUE(about("b.exr").extraChannels.empty()) << names;
    }
}

TEST_F(PictureMeaningTest, Channels_ofTwoOrOne_areColorsOrGrey) {
    tool("oiiotool --create 4x4 2 --fill:color=0.2,0.5 4x4 --chnames U,V -d half -o a.exr");
    expectFirst(picture("a.exr"), pixel(0.2F, 0.5F, 0));
    writePicture(folder / "b.exr", picture("a.exr"));
    expectFirst(picture("b.exr"), pixel(0.2F, 0.5F, 0));
    tool("oiiotool --create 4x4 1 --fill:color=0.2 4x4 --chnames Y -d half -o a.exr");
    EXPECT_TRUE(about("a.exr").isGrey);
    expectFirst(picture("a.exr"), pixel(0.2F, 0.2F, 0.2F));
}

TEST_F(PictureMeaningTest, Channels_byTheHundred_areRead) {
    std::string names = "R,G,B";
    for (int i = 3; i < 900; ++i) names += ",x" + std::to_string(i);
    tool("oiiotool --create 4x4 900 --fill:color=0.2,0.5,0.8 4x4 --chnames " + names + " -d half -o a.exr");
    const Picture got = picture("a.exr");
    EXPECT_EQ(got.description.extraChannels.size(), 897U);
    expectFirst(got, pixel(0.2F, 0.5F, 0.8F));
}

TEST_F(PictureMeaningTest, FurtherPictures_areCounted) {
    tool("oiiotool --create 4x4 3 --create 4x4 3 --create 4x4 3 --siappendall -d half -o parts.exr");
    EXPECT_EQ(about("parts.exr").furtherPictures, 2);
    EXPECT_EQ(about("parts.exr").furtherPicturesAre, "parts");
    tool("convert xc:red xc:blue pages.tif");
    EXPECT_EQ(about("pages.tif").furtherPictures, 1);
    EXPECT_EQ(about("pages.tif").furtherPicturesAre, "pages");
    tool("convert -size 8x8 xc:red xc:blue xc:white frames.gif");
    EXPECT_EQ(about("frames.gif").furtherPictures, 2);
    EXPECT_EQ(about("frames.gif").furtherPicturesAre, "frames");
    tool("convert xc:red page.tif");
    EXPECT_EQ(about("page.tif").furtherPictures, 0);
}

TEST_F(PictureMeaningTest, Compression_thatLoses_isNotTakenOver) {
    for (const std::string lossy : {"dwaa", "dwab", "b44", "b44a"}) {
        tool("oiiotool --create 64x64 3 --noise -d half --compression " + lossy + " -o a.exr");
        EXPECT_TRUE(about("a.exr").isLossy) << lossy;
        writePicture(folder / "b.exr", picture("a.exr"));
        EXPECT_EQ(about("b.exr").find("compression")->text, "zip") << lossy;
        expectSameBits(picture("b.exr").pixels, picture("a.exr").pixels);
        EXPECT_EQ(about("b.exr").find("dwaCompressionLevel"), nullptr);
        writePicture(folder / "c.exr", picture("a.exr"), {.compression = lossy});
        EXPECT_EQ(about("c.exr").find("compression")->text, lossy);
    }
    tool("oiiotool --create 64x64 3 -d half --compression piz -o a.exr");
    EXPECT_FALSE(about("a.exr").isLossy);
    writePicture(folder / "b.exr", picture("a.exr"));
    EXPECT_EQ(about("b.exr").find("compression")->text, "piz");
}

TEST_F(PictureMeaningTest, Compression_thatTheFormatLacks_isAUsageError) {
    const Picture small = gradient(2, 2, false);
    EXPECT_EQ(
        sentenceOf(Fault::Usage, [&] { writePicture(folder / "a.tif", small, {.compression = "piz"}); }),
        (folder / "a.tif").string() +
            ": TIFF has no such compression — expected none, lzw, zip, packbits, got \"piz\".");
    EXPECT_EQ(
        sentenceOf(Fault::Usage, [&] { writePicture(folder / "a.exr", small, {.quality = 50}); }),
        (folder / "a.exr").string() +
            ": EXR has no quality — expected --quality with JPEG, or EXR and --compression dwaa or dwab.");
    EXPECT_EQ(filesInFolder(), 0);
}

TEST_F(PictureMeaningTest, Quality_ofDwa_makesSmallerFiles) {
    Picture noisy = gradient(256, 256, false);
    unsigned state = 7;
    for (auto& p : noisy.pixels)
        p.g = half_float::half(static_cast<float>((state = state * 1664525U + 1013904223U) >> 8U) / 1.7e7F);
    const auto size = [&](int quality) {
        writePicture(folder / "a.exr", noisy, {.compression = "dwaa", .quality = quality});
        return std::filesystem::file_size(folder / "a.exr");
    };
    EXPECT_LT(size(60), size(95));
}

TEST_F(PictureMeaningTest, BlackFrames_ofDwa_areRead) {
    tool("oiiotool --create 4096x2160 4 -d half --compression dwab --nosoftwareattrib -o black.exr");
    EXPECT_EQ(about("black.exr").width, 4096);
    // One block of 256 rows at a time, of which no more than the height exist.
    tool("oiiotool --create 16384x64 4 -d half --compression dwab -o wide.exr");
    EXPECT_LT(about("wide.exr").readerBytes, 50U << 20U);
}

TEST_F(PictureMeaningTest, Cmyk_isWrittenInTheDepthAskedFor) {
    tool("convert -size 8x8 xc:red -colorspace CMYK -depth 16 c.tif");
    writePicture(folder / "d.tif", picture("c.tif"), {.depth = PixelDepth::Float});
    const Picture got = picture("d.tif");
    EXPECT_EQ(got.description.depth, PixelDepth::Float);
    expectSameBits(got.pixels, picture("c.tif").pixels);
}

TEST_F(PictureMeaningTest, WindowsAndAspect_thatTheFormatLacks_areNamed) {
    tool("oiiotool --create 20x10 3 --origin +30+5 --fullsize 100x50+0+0 -d half -o crop.exr");
    tool("oiiotool --create 120x70 3 --origin -10-10 --fullsize 100x50+0+0 -d half -o over.exr");
    tool("oiiotool --create 20x10 3 --attrib:type=float PixelAspectRatio 2 -d half -o wide.exr");
    EXPECT_TRUE(dropsSomething("crop.exr", "a.png", "the display window of 100x50 pixels"));
    EXPECT_TRUE(dropsSomething("crop.exr", "a.png", "began at 30,5"));
    EXPECT_FALSE(dropsSomething("crop.exr", "a.exr", "window"));
    EXPECT_FALSE(dropsSomething("crop.exr", "a.tif", "window"));
    EXPECT_TRUE(dropsSomething("over.exr", "a.tif", "began at -10,-10"));
    EXPECT_TRUE(dropsSomething("wide.exr", "a.tif", "aspect"));
    EXPECT_FALSE(dropsSomething("wide.exr", "a.exr", "aspect"));
    writePicture(folder / "over.tif", picture("over.exr"));
    EXPECT_EQ(about("over.tif").dataX, 0);
    EXPECT_EQ(about("over.tif").displayWindow->width, 120); // no frame that the picture would have moved in
    writePicture(folder / "crop.tif", picture("crop.exr"));
    EXPECT_EQ(about("crop.tif").dataX, 30);
}

TEST_F(PictureMeaningTest, Metadata_intoTiff_comesBackOrIsNamed) {
    tool("oiiotool --create 4x4 3 --attrib:type=float exposure 1.5 --attrib:type=int shot 12 "
         "--attrib:type=string note hello --attrib:type=string Artist someone --attrib:type=string Copyright "
         "nobody "
         "--attrib:type=string Make maker --attrib:type=string Software tool --attrib:type=float "
         "Exif:FNumber 8 "
         "--attrib:type=string Exif:LensModel lens --attrib:type=int GPS:AltitudeRef 1 "
         "--attrib:type=string GPS:MapDatum WGS84 --attrib:type=string DocumentName doc "
         "--attrib:type=string ImageDescription words -d half -o a.exr");
    const PictureDescription before = about("a.exr");
    const auto writer = PictureWriter::create(folder / "a.tif", before);
    const std::vector<krod::RGBAHalf> row(4);
    for (int y = 0; y < 4; ++y) writer->writeRows(y, 1, row.data());
    writer->finish();
    const PictureDescription after = about("a.tif");
    int known = 0;
    for (const char* const name :
         {"exposure", "shot", "note", "Artist", "Copyright", "Make", "Software", "Exif:FNumber",
          "Exif:LensModel", "GPS:AltitudeRef", "GPS:MapDatum", "DocumentName", "ImageDescription"}) {
        if (!before.find(name)) continue; // that tool has another name for it in EXR
        ++known;
        const bool named =
            std::find(writer->dropped().begin(), writer->dropped().end(), name) != writer->dropped().end();
        EXPECT_NE(named, after.find(name) != nullptr) << name;
    }
    EXPECT_GT(known, 8);
}

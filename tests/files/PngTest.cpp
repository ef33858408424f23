// SPDX-License-Identifier: Apache-2.0
// PNG files of other programs, and ours in their eyes.
#include "FilesTest.h"
#include "Tool.h"

#include "workbench/files/png/PngPacker.h"

#include <algorithm>

using namespace workbench;

namespace {

class PngTest : public FilesTest {
protected:
    [[nodiscard]] std::string at(const std::string& name) const {
        return "'" + (folder / name).string() + "'";
    }

    /// The pixels of a file as another program reads it.
    [[nodiscard]] std::vector<krod::RGBAHalf> pixelsByOiiotool(const std::string& name) const {
        tool("oiiotool --iconfig oiio:UnassociatedAlpha 1 " + at(name) + " -d half --compression none -o " +
             at("seen.exr"));
        return readPicture(folder / "seen.exr").pixels;
    }

    /// Grain and flat parts, so that every filter is chosen somewhere.
    static Picture grainy(int width, int height, PixelDepth depth, int channels) {
        Picture picture = gradient(width, height, channels % 2 == 0);
        picture.description.depth = depth;
        picture.description.isGrey = channels <= 2;
        unsigned state = 7;
        for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
            state = state * 1664525U + 1013904223U;
            if (i % 3 == 0) picture.pixels[i].r = half_float::half(static_cast<float>(state >> 24) / 255);
            if (channels <= 2) picture.pixels[i].g = picture.pixels[i].b = picture.pixels[i].r;
        }
        return picture;
    }
};

const std::string Plasma = "convert -size 37x23 -seed 3 plasma:tomato-steelblue ";

} // namespace

TEST_F(PngTest, everyKindOfPng_isReadAsOthersReadIt) {
    const std::string kinds[] = {
        "-depth 8 -define png:bit-depth=8 -define png:color-type=2",
        "-depth 8 -define png:bit-depth=8 -define png:color-type=6 -alpha set -channel A -evaluate set 40%",
        "-depth 8 -interlace PNG -define png:bit-depth=8",
        "-colorspace Gray -define png:color-type=0 -define png:bit-depth=1",
        "-colorspace Gray -define png:color-type=0 -define png:bit-depth=2 -interlace PNG",
        "-colorspace Gray -define png:color-type=0 -define png:bit-depth=4",
        "-colorspace Gray -depth 8 -alpha set -channel A -evaluate set 40% -define png:color-type=4 "
        "-define png:bit-depth=8",
        "-colors 13 -define png:color-type=3",
        "-colors 3 -define png:color-type=3 -define png:bit-depth=2",
        "-fill black -draw 'rectangle 3,3 9,9' -colors 13 -transparent black -define png:color-type=3",
    };
    for (const std::string& kind : kinds) {
        tool(Plasma + kind + " " + at("a.png"));
        expectSameBits(readPicture(folder / "a.png").pixels, pixelsByOiiotool("a.png"));
    }
    for (const std::string& kind : {"-depth 16 -define png:bit-depth=16", "-depth 16 -interlace PNG"}) {
        tool(Plasma + kind + " " + at("a.png"));
        const Picture read = readPicture(folder / "a.png");
        EXPECT_EQ(read.description.depth, PixelDepth::UInt16);
        expectNear(read.pixels, pixelsByOiiotool("a.png"), 0.0005F);
    }
}

TEST_F(PngTest, interlacedPng_saysWhatItsWholeTakes) {
    tool("convert -size 500x400 xc:red -interlace PNG " + at("a.png"));
    tool("convert -size 500x400 xc:red -interlace none " + at("b.png"));
    const auto bytesOf = [&](const char* name) {
        return PictureReader::open(folder / name)->description().readerBytes;
    };
    EXPECT_GT(bytesOf("a.png"), bytesOf("b.png") + 500 * 300);
}

TEST_F(PngTest, writtenPng_isRightInTheEyesOfItsCheckers) {
    for (const int channels : {1, 2, 3, 4})
        for (const PixelDepth depth : {PixelDepth::UInt8, PixelDepth::UInt16}) {
            // Several bands of 512 KiB.
            const Picture picture = grainy(1000, 1500, depth, channels);
            writePicture(folder / "a.png", picture, {.depth = depth});
            expectHas(tool("pngcheck " + at("a.png")), "OK: ");
            EXPECT_EQ(tool("pngfix " + at("a.png")).rfind("IDAT OK", 0), 0U);
            const auto seen = pixelsByOiiotool("a.png");
            expectNear(seen, readPicture(folder / "a.png").pixels, 0.0005F);
            expectNear(seen, picture.pixels, depth == PixelDepth::UInt8 ? 0.003F : 0.0005F);
        }
}

TEST_F(PngTest, sameBytes_whateverTheNumberOfThreads) {
    constexpr std::size_t RowBytes = 3 * 700;
    constexpr int Height = 900;
    std::vector<std::byte> rows(RowBytes * Height);
    unsigned state = 7;
    for (std::size_t i = 0; i < rows.size(); ++i)
        rows[i] =
            static_cast<std::byte>(i % 5 == 0 ? (state = state * 1664525U + 1013904223U) >> 24 : i / 9 % 256);
    const auto packed = [&](std::size_t threads) {
        std::string stream;
        PngPacker packer(
            RowBytes, 3, Height, [&](const std::string& part) { stream += part; }, threads);
        packer.add(rows.data(), 100);
        packer.add(rows.data() + 100 * RowBytes, Height - 100);
        return stream;
    };
    const std::string one = packed(1);
    EXPECT_GT(one.size(), rows.size() / 10);
    for (const std::size_t threads : {2U, 3U, 16U}) EXPECT_EQ(packed(threads) == one, true) << threads;
}

TEST_F(PngTest, transfer_isTakenFromItsChunks) {
    const auto transferOf = [&](const std::string& made) {
        tool("convert -size 8x8 xc:gray50 " + made + " " + at("a.png"));
        return PictureReader::open(folder / "a.png")->description().transfer;
    };
    EXPECT_EQ(transferOf("-define png:exclude-chunks=all -depth 8"), Transfer::Srgb);
    EXPECT_EQ(transferOf("-define png:exclude-chunks=all -define png:bit-depth=16"), Transfer::Unknown);
    EXPECT_EQ(transferOf("-set colorspace RGB -gamma 1 -define png:include-chunk=gama -set gamma 1"),
              Transfer::Linear);
    EXPECT_EQ(transferOf("-profile /usr/share/color/icc/ghostscript/srgb.icc"), Transfer::Srgb);
}

TEST_F(PngTest, framesOfAnAnimation_areCounted) {
    tool("convert -size 8x8 xc:red " + at("a.png"));
    std::string bytes = read(folder / "a.png");
    // acTL: 3 frames, played once, with its checksum; behind the head.
    const std::string control("\0\0\0\x08"
                              "acTL\0\0\0\x03\0\0\0\x01",
                              16);
    tool("python3 -c \"import zlib; open('" + (folder / "crc").string() +
         "','wb').write(zlib.crc32(b'acTL\\0\\0\\0\\x03\\0\\0\\0\\x01').to_bytes(4,'big'))\"");
    bytes.insert(33, control + read(folder / "crc"));
    const auto reader = PictureReader::open(write("b.png", bytes));
    EXPECT_EQ(reader->description().furtherPictures, 2);
    EXPECT_EQ(reader->description().furtherPicturesAre, "frames");
}

TEST_F(PngTest, chunkWithAWrongChecksum_isNotedWhereItIsNotNeeded) {
    tool("convert -size 8x8 xc:red " + at("a.png"));
    tool("exiftool -q -overwrite_original -Comment=hello " + at("a.png"));
    std::string bytes = read(folder / "a.png");
    const std::size_t text = bytes.find("hello");
    ASSERT_NE(text, std::string::npos);
    bytes[text] = 'j';
    EXPECT_FALSE(PictureReader::open(write("b.png", bytes))->description().notes.empty());
    bytes = read(folder / "a.png");
    bytes[bytes.find("IDAT") + 8] ^= 0x55;
    expectHas(sentenceOf(Fault::Input, [&] { return readPicture(write("c.png", bytes)); }),
              "c.png: cannot be read");
}

TEST_F(PngTest, longTexts_areKeptOrNamed) {
    Picture picture = gradient(8, 8, false);
    picture.description.setText("ImageDescription", std::string(70000, 'x'));
    picture.description.setText("Copyright", "\xc2\xa9 Some body");
    picture.description.setText("krod:network", std::string(9000000, 'n'));
    const auto writer = PictureWriter::create(folder / "a.png", picture.description);
    EXPECT_EQ(writer->dropped(), std::vector<std::string>{"krod:network"});
    writer->writeRows(0, 8, picture.pixels.data());
    writer->finish();
    const auto reader = PictureReader::open(folder / "a.png");
    EXPECT_EQ(reader->description().find("ImageDescription")->text.size(), 70000U);
    EXPECT_EQ(reader->description().find("Copyright")->text, "\xc2\xa9 Some body");
    expectHas(tool("exiftool -Copyright " + at("a.png")), "\xc2\xa9 Some body");
}

TEST_F(PngTest, photographsFields_areKeptFromJpegToPngAndBack) {
    tool("convert -size 16x16 gradient: " + at("a.jpg"));
    tool("exiftool -q -overwrite_original -GPSLatitude=51.5 -GPSLatitudeRef=N -ISO=200 -FNumber=2.8 "
         "-ExposureTime=1/60 -Make=Maker -ExposureCompensation=-1.5 -XMP:Rating=4 -IPTC:Keywords=a "
         "-IPTC:Keywords=b " +
         at("a.jpg"));
    writePicture(folder / "b.png", readPicture(folder / "a.jpg"));
    writePicture(folder / "c.jpg", readPicture(folder / "b.png"));
    const std::string fields =
        "exiftool -s3 -n -GPSLatitude -GPSLatitudeRef -ISO -FNumber -ExposureTime -Make "
        "-ExposureCompensation -XMP:Rating ";
    const std::string before = tool(fields + at("a.jpg"));
    EXPECT_EQ(std::count(before.begin(), before.end(), '\n'), 8);
    EXPECT_EQ(tool(fields + at("b.png")), before);
    EXPECT_EQ(tool(fields + at("c.jpg")), before);
    EXPECT_EQ(tool("exiftool -s3 -IPTC:Keywords " + at("c.jpg")), "a, b\n");
}

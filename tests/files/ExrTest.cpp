// SPDX-License-Identifier: Apache-2.0
#include "FilesTest.h"

#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfChromaticitiesAttribute.h>
#include <OpenEXR/ImfFloatAttribute.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfInputFile.h>
#include <OpenEXR/ImfIntAttribute.h>
#include <OpenEXR/ImfMatrixAttribute.h>
#include <OpenEXR/ImfMultiPartOutputFile.h>
#include <OpenEXR/ImfOpaqueAttribute.h>
#include <OpenEXR/ImfOutputFile.h>
#include <OpenEXR/ImfOutputPart.h>
#include <OpenEXR/ImfPartType.h>
#include <OpenEXR/ImfStandardAttributes.h>
#include <OpenEXR/ImfStringAttribute.h>
#include <OpenEXR/ImfTiledOutputFile.h>
#include <OpenEXR/ImfVecAttribute.h>

#include <algorithm>

using namespace workbench;

namespace {

class ExrTest : public FilesTest {
protected:
    /// A pixel for every half pattern in each of its four values.
    static Picture allPatterns() {
        Picture picture;
        picture.description.width = picture.description.height = 256;
        picture.description.hasAlpha = picture.description.alphaIsAssociated = true;
        for (unsigned i = 0; i < 65536; ++i) {
            const auto bits = static_cast<std::uint16_t>(i);
            picture.pixels.push_back(pixelOfBits(bits, static_cast<std::uint16_t>(bits ^ 0x5555U),
                                                 static_cast<std::uint16_t>(bits + 77U),
                                                 static_cast<std::uint16_t>(bits * 3U)));
        }
        return picture;
    }
};

/// A channel of one type, filled from a vector of numbers.
template <typename Value>
void writeChannels(const std::filesystem::path& path, Imf::Header header, Imf::PixelType type,
                   const std::vector<std::pair<std::string, std::vector<Value>>>& channels) {
    Imf::FrameBuffer buffer;
    const auto& window = header.dataWindow();
    const int width = window.max.x - window.min.x + 1;
    for (const auto& [name, values] : channels) {
        header.channels().insert(name, Imf::Channel(type));
        buffer.insert(name, Imf::Slice::Make(type, values.data(), window, sizeof(Value),
                                             sizeof(Value) * static_cast<std::size_t>(width)));
    }
    Imf::OutputFile file(path.c_str(), header);
    file.setFrameBuffer(buffer);
    file.writePixels(window.max.y - window.min.y + 1);
}

} // namespace

TEST_F(ExrTest, Exr_allHalfPatterns_passBitForBit) {
    for (const std::optional<std::string> compression : {std::optional<std::string>(), {"none"}}) {
        const Picture picture = allPatterns();
        writePicture(folder / "a.exr", picture, {.compression = compression});
        const Picture again = readPicture(folder / "a.exr");
        expectSameBits(again.pixels, picture.pixels);
        EXPECT_EQ(again.description.depth, PixelDepth::Half);
        EXPECT_TRUE(again.description.hasAlpha);
        EXPECT_FALSE(again.description.isGrey);
        EXPECT_EQ(again.description.find("compression")->text, compression.value_or("zip"));
    }
}

TEST_F(ExrTest, Exr_readInPieces_givesTheSamePixels) {
    const Picture picture = allPatterns();
    writePicture(folder / "a.exr", picture);
    const auto reader = PictureReader::open(folder / "a.exr");
    std::vector<krod::RGBAHalf> pixels(picture.pixels.size());
    for (const int first : {200, 0, 7, 100}) { // also upwards
        const int count = first == 0 ? 7 : first == 7 ? 93 : first == 100 ? 100 : 56;
        reader->readRows(first, count, pixels.data() + first * 256);
    }
    expectSameBits(pixels, picture.pixels);
    EXPECT_THROW(reader->readRows(250, 7, pixels.data()), std::out_of_range);
}

TEST_F(ExrTest, Exr_withoutAlpha_readsOneAndWritesNone) {
    writePicture(folder / "a.exr", gradient(8, 4, false));
    const Picture again = readPicture(folder / "a.exr");
    EXPECT_FALSE(again.description.hasAlpha);
    EXPECT_EQ(again.pixels[5].a, 1.0F);
    EXPECT_EQ(Imf::InputFile((folder / "a.exr").c_str()).header().channels().findChannel("A"), nullptr);
}

TEST_F(ExrTest, Exr_floatChannels_areConvertedAndOverflowsCountedOnce) {
    std::vector<float> values(100 * 100, 0.1F);
    values[0] = 1e6F;
    values[9999] = -7e4F;
    writeChannels<float>(folder / "a.exr", Imf::Header(100, 100), Imf::FLOAT,
                         {{"R", values}, {"G", values}, {"B", values}});
    const auto reader = PictureReader::open(folder / "a.exr");
    std::vector<krod::RGBAHalf> pixels(100 * 100);
    reader->readRows(0, 100, pixels.data());
    EXPECT_EQ(reader->loss().overflows, 6U);
    reader->readRows(0, 100, pixels.data());
    EXPECT_EQ(reader->loss().overflows, 6U);
    EXPECT_EQ(reader->description().depth, PixelDepth::Float);
    EXPECT_EQ(bitsOf(pixels[0].r), 0x7bff);
    EXPECT_EQ(bitsOf(pixels[1].g), bitsOf(half_float::half(0.1F)));
}

TEST_F(ExrTest, Exr_uintColour_isReadAsItsNumber) {
    const std::vector<std::uint32_t> values{0, 1, 4, 70000};
    writeChannels<std::uint32_t>(folder / "a.exr", Imf::Header(2, 2), Imf::UINT,
                                 {{"R", values}, {"G", values}, {"B", values}});
    const auto reader = PictureReader::open(folder / "a.exr");
    std::vector<krod::RGBAHalf> pixels(4);
    reader->readRows(0, 2, pixels.data());
    EXPECT_EQ(pixels[2].b, 4.0F);
    EXPECT_EQ(reader->loss().overflows, 3U);
}

TEST_F(ExrTest, Exr_depthFloat_isWrittenAsFloat) {
    const Picture picture = associatedGradient(16, 16);
    writePicture(folder / "a.exr", picture, {.depth = PixelDepth::Float});
    const Picture again = readPicture(folder / "a.exr");
    EXPECT_EQ(again.description.depth, PixelDepth::Float);
    expectSameBits(again.pixels, picture.pixels);
}

TEST_F(ExrTest, Exr_srgb_encodesColourOnly) {
    Picture picture = associatedGradient(1, 1);
    picture.pixels = {pixel(0.214041F, 0, 1, 0.5F)};
    writePicture(folder / "a.exr", picture, {.srgb = true});
    expectNear(readPicture(folder / "a.exr").pixels, {pixel(0.5F, 0, 1, 0.5F)}, 0.0005F);
}

TEST_F(ExrTest, Exr_tiledWithLevels_readsTheFullLevelByRows) {
    const Picture picture = allPatterns();
    Imf::Header header(256, 256);
    header.setTileDescription(Imf::TileDescription(48, 40, Imf::MIPMAP_LEVELS));
    for (const char* name : {"R", "G", "B", "A"}) header.channels().insert(name, Imf::Channel(Imf::HALF));
    {
        Imf::TiledOutputFile file((folder / "a.exr").c_str(), header);
        for (int level = 0; level < file.numLevels(); ++level) {
            Imf::FrameBuffer buffer;
            const char* names[] = {"R", "G", "B", "A"};
            for (std::size_t i = 0; i < 4; ++i)
                buffer.insert(
                    names[i],
                    Imf::Slice::Make(Imf::HALF, reinterpret_cast<const char*>(picture.pixels.data()) + 2 * i,
                                     Imath::V2i(0, 0), 256, 256, std::size_t{8}, std::size_t{8 * 256}));
            file.setFrameBuffer(buffer);
            file.writeTiles(0, file.numXTiles(level) - 1, 0, file.numYTiles(level) - 1, level);
        }
    }
    expectSameBits(readPicture(folder / "a.exr").pixels, picture.pixels);
    const auto reader = PictureReader::open(folder / "a.exr");
    std::vector<krod::RGBAHalf> rows(256 * 30);
    reader->readRows(35, 30, rows.data()); // across a border of tiles
    expectSameBits(rows, {picture.pixels.begin() + 35 * 256, picture.pixels.begin() + 65 * 256});
}

TEST_F(ExrTest, Exr_multipart_readsTheFirstPart) {
    std::vector<Imf::Header> headers(2, Imf::Header(4, 4));
    std::vector<half_float::half> values(16, half_float::half(0.5F));
    for (std::size_t i = 0; i < 2; ++i) {
        headers[i].setName(i == 0 ? "left" : "right");
        headers[i].setType(Imf::SCANLINEIMAGE);
        headers[i].channels().insert("Y", Imf::Channel(Imf::HALF));
    }
    {
        Imf::MultiPartOutputFile file((folder / "a.exr").c_str(), headers.data(), 2);
        for (int i = 0; i < 2; ++i) {
            Imf::OutputPart part(file, i);
            Imf::FrameBuffer buffer;
            buffer.insert("Y", Imf::Slice::Make(Imf::HALF, values.data(), Imath::V2i(0, 0), 4, 4,
                                                std::size_t{2}, std::size_t{8}));
            part.setFrameBuffer(buffer);
            part.writePixels(4);
            values.assign(16, half_float::half(2.0F));
        }
    }
    const Picture picture = readPicture(folder / "a.exr");
    EXPECT_TRUE(picture.description.isGrey);
    expectSameBits(picture.pixels, std::vector<krod::RGBAHalf>(16, pixel(0.5F, 0.5F, 0.5F)));
}

TEST_F(ExrTest, Exr_greyChannel_keepsItsName) {
    const std::vector<float> values{1, 2, 3, 4};
    writeChannels<float>(folder / "a.exr", Imf::Header(2, 2), Imf::FLOAT, {{"depth.Z", values}});
    Picture picture = readPicture(folder / "a.exr");
    EXPECT_TRUE(picture.description.isGrey);
    expectSameBits(picture.pixels, {pixel(1, 1, 1), pixel(2, 2, 2), pixel(3, 3, 3), pixel(4, 4, 4)});
    writePicture(folder / "b.exr", picture);
    EXPECT_NE(Imf::InputFile((folder / "b.exr").c_str()).header().channels().findChannel("depth.Z"), nullptr);
    picture.description.isGrey = false; // it has become coloured
    writePicture(folder / "c.exr", picture);
    const Imf::InputFile coloured((folder / "c.exr").c_str());
    for (const char* name : {"R", "G", "B"})
        EXPECT_NE(coloured.header().channels().findChannel(name), nullptr);
    EXPECT_EQ(coloured.header().channels().findChannel("depth.Z"), nullptr);
}

TEST_F(ExrTest, Exr_colourInALayer_isFoundAndKeepsItsNames) {
    const std::vector<float> values{1, 2, 3, 4};
    writeChannels<float>(
        folder / "a.exr", Imf::Header(2, 2), Imf::FLOAT,
        {{"Depth.Z", values}, {"View.Main.R", values}, {"View.Main.G", values}, {"View.Main.B", values}});
    const Picture picture = readPicture(folder / "a.exr");
    EXPECT_FALSE(picture.description.isGrey);
    ASSERT_EQ(picture.description.extraChannels.size(), 1U);
    writePicture(folder / "b.exr", picture);
    const Imf::InputFile again((folder / "b.exr").c_str());
    EXPECT_NE(again.header().channels().findChannel("View.Main.G"), nullptr);
}

TEST_F(ExrTest, Exr_additionalChannels_passBitForBit) {
    Picture picture = associatedGradient(70, 90);
    picture.description.extraChannels = {
        {"Z", ExtraType::Float}, {"id", ExtraType::UInt}, {"mask", ExtraType::Half}};
    for (const auto& channel : picture.description.extraChannels) {
        std::vector<std::byte> plane(70 * 90 * channel.bytesPerValue());
        for (std::size_t i = 0; i < plane.size(); ++i)
            plane[i] = static_cast<std::byte>(i * 37 + channel.name.size());
        picture.extra.push_back(plane);
    }
    writePicture(folder / "a.exr", picture);
    const Picture again = readPicture(folder / "a.exr");
    ASSERT_EQ(again.description.extraChannels.size(), 3U);
    EXPECT_EQ(again.description.extraChannels[1].name, "id");
    EXPECT_EQ(again.description.extraChannels[1].type, ExtraType::UInt);
    EXPECT_EQ(again.extra, picture.extra);
    expectSameBits(again.pixels, picture.pixels);
}

TEST_F(ExrTest, Exr_additionalChannelsWithoutTheirRows_areAProgrammingError) {
    Picture picture = associatedGradient(4, 4);
    picture.description.extraChannels = {{"Z", ExtraType::Float}};
    EXPECT_THROW(writePicture(folder / "a.exr", picture), std::logic_error);
    EXPECT_EQ(filesInFolder(), 0);
}

TEST_F(ExrTest, Exr_headOfTheInput_isKept) {
    Imf::Header header(Imath::Box2i(Imath::V2i(-5, -6), Imath::V2i(50, 60)),
                       Imath::Box2i(Imath::V2i(10, 20), Imath::V2i(11, 21)), 1.5F);
    header.compression() = Imf::PIZ_COMPRESSION;
    header.insert("owner", Imf::StringAttribute("Somebody, somewhere: \xc3\xa4\n"));
    header.insert("frame", Imf::IntAttribute(-17));
    header.insert("gain", Imf::FloatAttribute(0.1F));
    header.insert("place", Imf::V3fAttribute(Imath::V3f(1, -0.5F, 1e-20F)));
    header.insert("camera",
                  Imf::M44fAttribute(Imath::M44f(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16)));
    addChromaticities(header, Imf::Chromaticities(Imath::V2f(0.7F, 0.3F)));
    addTimeCode(header, Imf::TimeCode(1, 2, 3, 4));
    const std::vector<float> values{1, 2, 3, 4};
    writeChannels<float>(folder / "a.exr", header, Imf::FLOAT, {{"R", values}, {"G", values}, {"B", values}});

    Picture picture = readPicture(folder / "a.exr");
    EXPECT_EQ(picture.description.dataX, 10);
    EXPECT_EQ(picture.description.displayWindow, (PixelWindow{-5, -6, 56, 67}));
    EXPECT_EQ(picture.description.find("gain")->text, "0.1");
    EXPECT_EQ(picture.description.find("gain")->type, "float");
    EXPECT_EQ(picture.description.find("place")->text, "1 -0.5 1e-20");
    EXPECT_EQ(picture.description.find("compression")->text, "piz");
    picture.description.setText(NetworkName, "{\"a\": 1}");
    writePicture(folder / "b.exr", picture);

    const Imf::InputFile again((folder / "b.exr").c_str());
    const Imf::Header& head = again.header();
    EXPECT_EQ(head.dataWindow(), header.dataWindow());
    EXPECT_EQ(head.displayWindow(), header.displayWindow());
    EXPECT_EQ(head.pixelAspectRatio(), 1.5F);
    EXPECT_EQ(head.compression(), Imf::PIZ_COMPRESSION);
    EXPECT_EQ(head.typedAttribute<Imf::StringAttribute>("owner").value(), "Somebody, somewhere: \xc3\xa4\n");
    EXPECT_EQ(head.typedAttribute<Imf::IntAttribute>("frame").value(), -17);
    EXPECT_EQ(head.typedAttribute<Imf::M44fAttribute>("camera").value(),
              header.typedAttribute<Imf::M44fAttribute>("camera").value());
    EXPECT_EQ(chromaticities(head).red, Imath::V2f(0.7F, 0.3F));
    EXPECT_EQ(timeCode(head), Imf::TimeCode(1, 2, 3, 4));
    EXPECT_EQ(head.typedAttribute<Imf::StringAttribute>("krod:network").value(), "{\"a\": 1}");
}

TEST_F(ExrTest, Exr_attributeOfAnUnknownType_isKept) {
    Picture picture = associatedGradient(2, 2);
    picture.description.metadata.push_back({"private", "somebodysType", "", std::string("\0\1\2\xff", 4)});
    writePicture(folder / "a.exr", picture);
    const Picture again = readPicture(folder / "a.exr");
    ASSERT_NE(again.description.find("private"), nullptr);
    EXPECT_EQ(again.description.find("private")->type, "somebodysType");
    EXPECT_EQ(again.description.find("private")->bytes, std::string("\0\1\2\xff", 4));
}

TEST_F(ExrTest, Exr_attributeThatClashes_isNamedAsDropped) {
    PictureDescription description = associatedGradient(2, 2).description;
    description.setText("pixelAspectRatio", "wide");
    const auto writer = PictureWriter::create(folder / "a.exr", description);
    EXPECT_EQ(writer->dropped(), std::vector<std::string>{"pixelAspectRatio"});
}

TEST_F(ExrTest, Exr_panoramasOfBlender_areReadAndPassUnchanged) {
    const auto city = packaged("/usr/share/blender/datafiles/studiolights/world/city.exr", "blender-data");
    const Picture picture = readPicture(city);
    EXPECT_EQ(picture.description.width, 1024);
    EXPECT_EQ(picture.description.depth, PixelDepth::Float);
    EXPECT_EQ(picture.description.find("compression")->text, "dwab");
    float largest = 0;
    for (const auto& p : picture.pixels) largest = std::max(largest, static_cast<float>(p.r));
    EXPECT_GT(largest, 10000.0F);
    writePicture(folder / "a.exr", picture, {.compression = "none"});
    expectSameBits(readPicture(folder / "a.exr").pixels, picture.pixels);
}

TEST_F(ExrTest, Exr_rowsOutOfOrder_areAProgrammingError) {
    const Picture picture = associatedGradient(4, 4);
    const auto writer = PictureWriter::create(folder / "a.exr", picture.description);
    EXPECT_THROW(writer->writeRows(1, 1, picture.pixels.data()), std::logic_error);
    writer->writeRows(0, 2, picture.pixels.data());
    EXPECT_THROW(writer->finish(), std::logic_error);
}

TEST_F(ExrTest, Exr_unfinished_leavesNothing) {
    {
        const Picture picture = associatedGradient(4, 4);
        const auto writer = PictureWriter::create(folder / "a.exr", picture.description);
        writer->writeRows(0, 2, picture.pixels.data());
    }
    EXPECT_EQ(filesInFolder(), 0);
}

TEST_F(ExrTest, blocks_areStoredInTiles_bitForBit) {
    Picture picture = allPatterns();
    picture.description.width = 250; // no multiple of the tiles
    picture.pixels.resize(250 * 256);
    picture.description.dataX = -7;
    picture.description.dataY = 11;
    WriteOptions options;
    options.tileSide = 64;
    const auto writer = PictureWriter::create(folder / "a.exr", picture.description, options);
    for (const PixelWindow part : {PixelWindow{128, 64, 122, 192},
                                   {0, 0, 128, 64},
                                   {128, 0, 122, 64},
                                   {0, 64, 64, 192},
                                   {64, 64, 64, 192}}) {
        std::vector<krod::RGBAHalf> pixels;
        for (int y = part.y; y < part.y + part.height; ++y)
            for (int x = part.x; x < part.x + part.width; ++x)
                pixels.push_back(picture.pixels[static_cast<std::size_t>(y * 250 + x)]);
        writer->writeBlock(part, pixels.data());
    }
    writer->finish();
    EXPECT_EQ(writer->mostBytes(), 250U * 256 * 8);
    EXPECT_TRUE(Imf::InputFile((folder / "a.exr").c_str()).header().hasTileDescription());
    const Picture again = readPicture(folder / "a.exr");
    expectSameBits(again.pixels, picture.pixels);
    EXPECT_EQ(again.description.dataX, -7);
}

TEST_F(ExrTest, blocksOffTheTiles_andRowsAmongThem_areMistakes) {
    const Picture picture = allPatterns();
    WriteOptions options;
    options.tileSide = 64;
    const auto writer = PictureWriter::create(folder / "a.exr", picture.description, options);
    for (const PixelWindow part :
         {PixelWindow{1, 0, 64, 64}, {0, 0, 63, 64}, {0, 0, 64, 320}, {256, 0, 64, 64}, {0, 0, 0, 64}})
        EXPECT_THROW(writer->writeBlock(part, picture.pixels.data()), std::logic_error);
    EXPECT_THROW(writer->writeRows(0, 64, picture.pixels.data()), std::logic_error);
    writer->writeBlock({0, 0, 256, 128}, picture.pixels.data());
    EXPECT_THROW(writer->finish(), std::logic_error);
    const auto rows = PictureWriter::create(folder / "b.exr", picture.description);
    EXPECT_THROW(rows->writeBlock({0, 0, 256, 256}, picture.pixels.data()), std::logic_error);
}

TEST_F(ExrTest, reader_saysWhatItHolds) {
    const Picture picture = allPatterns();
    const auto bytesOf = [&](int tileSide) {
        WriteOptions options;
        options.tileSide = tileSide;
        const auto writer = PictureWriter::create(folder / "a.exr", picture.description, options);
        if (tileSide > 0)
            writer->writeBlock({0, 0, 256, 256}, picture.pixels.data());
        else
            writer->writeRows(0, 256, picture.pixels.data());
        writer->finish();
        return PictureReader::open(folder / "a.exr")->description().readerBytes;
    };
    EXPECT_EQ(bytesOf(64), 256U * 8 * (64 + 64));        // a row of tiles, and a step of rows
    EXPECT_EQ(bytesOf(256), 256U * 8 * (256 + 64));      // high tiles
    EXPECT_EQ(bytesOf(0), 256U * 8 * (3 * 8 * 16 + 64)); // ZIP: blocks of 16 rows
}

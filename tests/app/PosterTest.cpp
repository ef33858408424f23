// SPDX-License-Identifier: Apache-2.0
// plime render in tiles: the same picture as in one piece, without seams, at any width.
#include "tests/app/PictureProgram.h"

#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfInputFile.h>

#include <algorithm>
#include <cmath>
#include <functional>

namespace {

using workbench::Picture;
using workbench::PictureReader;
using workbench::readPicture;

const Words Blurred = {"--display", "Display/Blurred"};
const Words Contours = {"--display", "Display/PixelContours", "-p", "width=1"};

constexpr int Side = 500, Tile = 200; // 3 tiles a side with the overlap of 16

class PlimePosters : public PictureProgramTest {
protected:
    [[nodiscard]] Picture drawn(const Words& words) const {
        succeed(Words{"render", "demo:knot", "--gpu", "software", "-o", at("drawn.exr")} + words);
        return readPicture(at("drawn.exr"));
    }
    [[nodiscard]] Picture whole(const Words& displays) const {
        return drawn(displays + Words{"--size", "500x500"});
    }
    [[nodiscard]] Picture tiled(const Words& displays, const std::string& overlap = "16") const {
        return drawn(displays +
                     Words{"--size", "500x500", "--tile", std::to_string(Tile), "--overlap", overlap});
    }
};

/// Whether a place lies within three pixels of a border between the tiles.
bool isNearBorder(int place, int tiles) {
    for (int i = 1; i < tiles; ++i)
        if (std::abs(2 * place + 1 - 2 * (Side * i / tiles)) <= 6) return true;
    return false;
}

/// The part of the pixels that lie near a border, or of the others, that agree within 8 half steps.
double agreement(const Picture& a, const Picture& b, int tiles, bool nearBorders) {
    Picture left, right;
    for (int y = 0; y < Side; ++y)
        for (int x = 0; x < Side; ++x) {
            if ((isNearBorder(x, tiles) || isNearBorder(y, tiles)) != nearBorders) continue;
            left.pixels.push_back(a.pixels[static_cast<std::size_t>(y * Side + x)]);
            right.pixels.push_back(b.pixels[static_cast<std::size_t>(y * Side + x)]);
        }
    return shareWithin(8, left, right);
}

/// The mean step of the luminance between columns, at the borders of the tiles or at all others.
double meanStep(const Picture& picture, int tiles, bool atBorders) {
    double sum = 0, count = 0;
    const auto light = [&](int x, int y) {
        const krod::RGBAHalf& p = picture.pixels[static_cast<std::size_t>(y * Side + x)];
        return double(float(p.r)) + double(float(p.g)) + double(float(p.b));
    };
    for (int x = 1; x < Side; ++x) {
        bool isBorder = false;
        for (int i = 1; i < tiles; ++i) isBorder |= x == Side * i / tiles;
        if (isBorder != atBorders) continue;
        for (int y = 0; y < Side; ++y) {
            const double step = std::abs(light(x, y) - light(x - 1, y));
            if (std::isnan(step)) continue; // a display may leave what is not a number in the background
            sum += step;
            ++count;
        }
    }
    EXPECT_GT(count, Side);
    return sum / count;
}

TEST_F(PlimePosters, inTiles_areWhatTheyAreInOnePiece_andTheirBordersAreNoWorse) {
    for (const Words& displays : {Blurred, Contours, Blurred + Contours, Contours + Blurred}) {
        SCOPED_TRACE(testing::PrintToString(displays));
        const Picture one = whole(displays), many = tiled(displays);
        EXPECT_GE(shareWithin(8, one, many), 0.999);
        EXPECT_GE(agreement(one, many, 3, true), std::min(0.999, agreement(one, many, 3, false)));
    }
}

TEST_F(PlimePosters, withoutTheirOverlap_showWhereTheyWereCut) {
    const Picture one = whole(Blurred), many = tiled(Blurred, "0");
    EXPECT_LT(agreement(one, many, 3, true), 0.99);
    EXPECT_GE(agreement(one, many, 3, false), 0.97);
}

TEST_F(PlimePosters, bordersOfTiles_areNoSteeperThanInOnePiece) {
    for (const Words& displays : {Blurred, Contours, Blurred + Contours}) {
        const Picture one = whole(displays), many = tiled(displays);
        EXPECT_NEAR(meanStep(many, 3, true), meanStep(one, 3, true), 0.01 * meanStep(one, 3, true));
        EXPECT_NEAR(meanStep(many, 3, false), meanStep(one, 3, false), 0.01 * meanStep(one, 3, false));
    }
}

TEST_F(PlimePosters, twoRuns_areTheSameBytes) {
    const Words words = Blurred + Contours + Words{"--size", "500x500", "--tile", "200"};
    static_cast<void>(drawn(words));
    const std::string bytes = read(at("drawn.exr"));
    static_cast<void>(drawn(words));
    EXPECT_TRUE(read(at("drawn.exr")) == bytes);
}

// 2048x2048 pixels as they are read, and once more in the driver: 64 MB.
TEST_F(PlimePosters, countWhatTheyShow_asMemory) {
    const std::string input = picture("in.exr", gradient(2048, 2048));
    const Words words = {"-o", at("out.exr"), "--size", "64x64", "--memory", "160M"};
    succeed(Words{"render", "demo:knot"} + words);
    expectFailure(4,
                  at("out.exr") +
                      ": needs more memory than is allowed — expected at most 160M, got 184M. Allow it "
                      "with --memory 184M.",
                  Words{"render", input} + words);
}

class PlimeWidePosters : public PlimePosters {
protected:
    static constexpr int Width = 16640;
    static bool isStoredInTiles(const std::string& path) {
        return Imf::InputFile(path.c_str()).header().hasTileDescription();
    }
    const Words words = {"--size",     std::to_string(Width) + "x100", "--tile", "512", "--camera",
                         "0,0,5:0,0,0"};
};

TEST_F(PlimeWidePosters, areStoredInTiles_andHoldTheSamePixels) {
    const Picture blocks = drawn(words);
    EXPECT_TRUE(isStoredInTiles(at("drawn.exr")));
    // A processor that does nothing works on rows.
    const Picture rows = drawn(words + Words{"--with", "Hollywood/ColorGammaCorrection"});
    EXPECT_FALSE(isStoredInTiles(at("drawn.exr")));
    EXPECT_GE(shareWithin(8, blocks, rows), 0.999);
    std::size_t lit = 0;
    for (const krod::RGBAHalf& p : blocks.pixels) lit += float(p.r) > 0 ? 1 : 0;
    EXPECT_GT(lit, 1000U);
}

TEST_F(PlimeWidePosters, withAnotherDepth_areConvertedAlike) {
    const Picture half = drawn(words), full = drawn(words + Words{"-d", "float"});
    EXPECT_TRUE(isStoredInTiles(at("drawn.exr")));
    EXPECT_EQ(full.description.depth, workbench::PixelDepth::Float);
    EXPECT_EQ(shareWithin(0, half, full), 1.0);
}

TEST_F(PlimeWidePosters, narrowerOnes_areStoredInRows) {
    static_cast<void>(drawn({"--size", "700x300", "--tile", "256"}));
    EXPECT_FALSE(isStoredInTiles(at("drawn.exr")));
}

} // namespace

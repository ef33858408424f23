// SPDX-License-Identifier: Apache-2.0
// The pixels of Hollywood/GammaCorrection, bit for bit. Needs no OpenGL.
#include "tests/support/LoadedPlugin.h"
#include "tests/support/StandardOutput.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

using half_float::half;
using krod::RGBAHalf;

constexpr char Line[] = "GammaCorrection....process...\n";
constexpr std::uint32_t Patterns = 65536;

std::uint16_t bitsOf(half h) { return std::bit_cast<std::uint16_t>(h); }
half halfOf(std::uint32_t bits) { return std::bit_cast<half>(static_cast<std::uint16_t>(bits)); }

/// What the half library itself gives for a pattern.
std::uint16_t required(half c) { return bitsOf(half_float::pow(c, halfOf(0x3E00))); }

using Store = krod::StrongPtr<krod::Chunk<RGBAHalf>>;

Store storeOf(std::vector<RGBAHalf> pixels) { return Store(new krod::Chunk<RGBAHalf>(std::move(pixels))); }

class ParityOfGamma : public testing::Test {
protected:
    /// Processes a tile of one row and gives what the processor wrote to standard output.
    std::string process(int width, const krod::StrongPtr<krod::ChunkBase>& store) {
        krod::ImageTile tile(width, 1, store);
        return support::outputOf([&] { processor->process(krod::VRenderContext(pool), tile); });
    }

    krod::VValuePool pool;
    support::LoadedPlugin plugin;
    krod::StrongPtr<krod::VObject> module = plugin.make("Hollywood/GammaCorrection");
    krod::StrongPtr<krod::ImageTileProcessor> processor = support::processorOf(*module);
};

TEST_F(ParityOfGamma, GammaCorrection_everyPatternInRedGreenBlue_isPowOfTheHalfLibrary) {
    std::vector<RGBAHalf> pixels;
    for (std::uint32_t i = 0; i < Patterns; ++i)
        pixels.push_back({halfOf(i), halfOf(i + 21845), halfOf(i + 43690), halfOf(i * 7)});
    const Store store = storeOf(pixels);
    process(static_cast<int>(Patterns), store);
    for (std::uint32_t i = 0; i < Patterns; ++i) {
        const RGBAHalf &before = pixels[i], &after = store->data()[i];
        ASSERT_EQ(bitsOf(after.r), required(before.r)) << "red, pattern " << i;
        ASSERT_EQ(bitsOf(after.g), required(before.g)) << "green, pattern " << i;
        ASSERT_EQ(bitsOf(after.b), required(before.b)) << "blue, pattern " << i;
    }
}

TEST_F(ParityOfGamma, GammaCorrection_G3_everyPatternInAlpha_staysAsItIs) {
    std::vector<RGBAHalf> pixels;
    for (std::uint32_t i = 0; i < Patterns; ++i) pixels.push_back({half(0.5F), half(1), half(2), halfOf(i)});
    const Store store = storeOf(pixels);
    process(static_cast<int>(Patterns), store);
    for (std::uint32_t i = 0; i < Patterns; ++i)
        ASSERT_EQ(bitsOf(store->data()[i].a), i) << "alpha, pattern " << i;
}

TEST_F(ParityOfGamma, GammaCorrection_zeroAndOne_stayWhatTheyAre) {
    const Store store = storeOf({{half(0), half(1), half(0), half(0)}});
    process(1, store);
    EXPECT_EQ(bitsOf(store->data()->r), 0x0000);
    EXPECT_EQ(bitsOf(store->data()->g), 0x3C00);
}

/// Sizes below, at and above a cache line of pixels, with pixels behind the end that are not the tile's.
TEST_F(ParityOfGamma, GammaCorrection_everySize_writesItsPixelsAndNothingElse) {
    constexpr std::size_t Guards = 16;
    const RGBAHalf guard{half(3), half(5), half(7), half(9)}, pixel{half(2), half(4), half(0.25F), half(2)};
    for (const std::size_t size : {0U, 1U, 7U, 8U, 9U}) {
        std::vector<RGBAHalf> pixels(size + Guards, guard);
        std::fill_n(pixels.begin(), size, pixel);
        pixels.resize(size); // the guards stay behind the end, in memory that the vector keeps
        const Store store = storeOf(std::move(pixels));
        EXPECT_EQ(process(static_cast<int>(size), store), Line) << size << " pixels";
        for (std::size_t i = 0; i < size; ++i) {
            const RGBAHalf& got = store->data()[i];
            EXPECT_EQ(bitsOf(got.r), required(pixel.r)) << i << " of " << size;
            EXPECT_EQ(bitsOf(got.g), required(pixel.g)) << i << " of " << size;
            EXPECT_EQ(bitsOf(got.b), required(pixel.b)) << i << " of " << size;
            EXPECT_EQ(bitsOf(got.a), bitsOf(pixel.a)) << i << " of " << size;
        }
        for (std::size_t i = 0; i < Guards; ++i)
            EXPECT_EQ(std::memcmp(store->data() + size + i, &guard, sizeof guard), 0)
                << "guard " << i << " behind " << size << " pixels";
    }
}

TEST_F(ParityOfGamma, GammaCorrection_twoTiles_printTheLineTwice) {
    const Store store = storeOf(std::vector<RGBAHalf>(9));
    EXPECT_EQ(process(9, store) + process(9, store), std::string(Line) + Line);
}

TEST_F(ParityOfGamma, GammaCorrection_G2_emptyStore_printsTheLineToo) {
    EXPECT_EQ(process(0, storeOf({})), Line);
}

TEST_F(ParityOfGamma, GammaCorrection_tileWithoutStore_isPassedOverInSilence) {
    EXPECT_EQ(process(4, {}), "");
}

TEST_F(ParityOfGamma, GammaCorrection_storeOfAnotherKind_isPassedOverInSilence) {
    const krod::StrongPtr<krod::Chunk<float>> store(new krod::Chunk<float>(std::vector<float>(16, 0.5F)));
    EXPECT_EQ(process(4, store), "");
    for (std::size_t i = 0; i < store->elements(); ++i) EXPECT_EQ(store->data()[i], 0.5F) << i;
}

} // namespace

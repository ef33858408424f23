// SPDX-License-Identifier: Apache-2.0
#include "FilesTest.h"

#include "workbench/files/PixelConversion.h"

#include <cmath>
#include <cstring>
#include <limits>

using namespace workbench;

namespace {

template <typename Stored>
std::vector<krod::RGBAHalf> decoded(const PixelDecoder& decoder, const std::vector<Stored>& stored,
                                    std::size_t pixels, std::uint64_t overflows = 0) {
    std::vector<krod::RGBAHalf> out(pixels);
    EXPECT_EQ(decoder.decode(reinterpret_cast<const std::byte*>(stored.data()), pixels, out.data()),
              overflows);
    return out;
}

template <typename Stored>
std::vector<Stored> encoded(PixelEncoder& encoder, const std::vector<krod::RGBAHalf>& pixels,
                            std::size_t values) {
    std::vector<Stored> out(values);
    encoder.encode(pixels.data(), pixels.size(), reinterpret_cast<std::byte*>(out.data()));
    return out;
}

} // namespace

TEST(PixelDecoderTest, Decoder_integers_areDividedByTheirMaximum) {
    const auto bytes = decoded<std::uint8_t>({PixelDepth::UInt8, 4, false, 3}, {0, 255, 51, 102}, 1);
    expectSameBits(bytes, {pixel(0, 1, 0.2F, 0.4F)});
    const auto words = decoded<std::uint16_t>({PixelDepth::UInt16, 3, false, -1}, {0, 65535, 13107}, 1);
    expectSameBits(words, {pixel(0, 1, 0.2F, 1)});
}

TEST(PixelDecoderTest, Decoder_grey_isInAllThreeColours) {
    expectSameBits(decoded<std::uint8_t>({PixelDepth::UInt8, 1, true, -1}, {51}, 1),
                   {pixel(0.2F, 0.2F, 0.2F, 1)});
    expectSameBits(decoded<std::uint8_t>({PixelDepth::UInt8, 2, true, 1}, {51, 102}, 1),
                   {pixel(0.2F, 0.2F, 0.2F, 0.4F)});
}

TEST(PixelDecoderTest, Decoder_halves_keepAllTheirPatterns) {
    std::vector<std::uint16_t> stored(65536);
    for (std::size_t i = 0; i < stored.size(); ++i) stored[i] = static_cast<std::uint16_t>(i);
    const auto out = decoded(PixelDecoder(PixelDepth::Half, 1, true, -1), stored, stored.size());
    for (std::size_t i = 0; i < stored.size(); ++i) ASSERT_EQ(bitsOf(out[i].g), i);
}

TEST(PixelDecoderTest, Decoder_finiteFloatsBeyondHalf_areCounted) {
    const float infinity = std::numeric_limits<float>::infinity();
    const auto out = decoded<float>({PixelDepth::Float, 4, false, 3}, {65504, 1e6F, infinity, -1e9F}, 1, 2);
    EXPECT_EQ(bitsOf(out[0].r), 0x7bff);
    EXPECT_EQ(bitsOf(out[0].g), 0x7c00);
    EXPECT_EQ(bitsOf(out[0].b), 0x7c00);
    EXPECT_EQ(bitsOf(out[0].a), 0xfc00);
}

TEST(PixelEncoderTest, Encoder_integers_roundAndClip) {
    PixelEncoder encoder(PixelDepth::UInt8, 4, false, ValueRange::Unit);
    const float infinity = std::numeric_limits<float>::infinity();
    const auto out = encoded<std::uint8_t>(
        encoder, {pixel(0, 1, 0.5F, 0.2F), pixel(-1, 8, std::nanf(""), 1), pixel(-0.0F, 3, infinity, 1)}, 12);
    EXPECT_EQ(out, (std::vector<std::uint8_t>{0, 255, 128, 51, 0, 255, 0, 255, 0, 255, 255, 255}));
    EXPECT_EQ(encoder.clippedCount(), 4U); // -1, 8, 3, infinity
    EXPECT_EQ(encoder.notNumberCount(), 1U);
    EXPECT_EQ(encoder.smallestValue(), -1.0F);
    EXPECT_EQ(encoder.largestValue(), infinity);
}

TEST(PixelEncoderTest, Encoder_withinRange_countsNothing) {
    PixelEncoder encoder(PixelDepth::UInt16, 3, false, ValueRange::Unit);
    EXPECT_EQ(encoded<std::uint16_t>(encoder, {pixel(0, 0.25F, 1)}, 3),
              (std::vector<std::uint16_t>{0, 16384, 65535}));
    EXPECT_EQ(encoder.clippedCount(), 0U);
    EXPECT_EQ(encoder.notNumberCount(), 0U);
    EXPECT_EQ(encoder.smallestValue(), 0.0F);
    EXPECT_EQ(encoder.largestValue(), 0.0F);
}

TEST(PixelEncoderTest, Encoder_srgb_encodesColourButNotAlpha) {
    PixelEncoder encoder(PixelDepth::UInt8, 4, true, ValueRange::Unit);
    // Linear 0.5 is 188 and linear 0.002 is 6.59 on the scale of 255.
    EXPECT_EQ(encoded<std::uint8_t>(encoder, {pixel(0.5F, 0.002F, 1, 0.5F)}, 4),
              (std::vector<std::uint8_t>{188, 7, 255, 128}));
}

TEST(PixelEncoderTest, Encoder_srgb_meetsTheStandardsPoints) {
    EXPECT_NEAR(srgbFromLinear(0.0031308), 0.04045, 1e-5);
    EXPECT_NEAR(srgbFromLinear(0.214041), 0.5, 1e-5);
    EXPECT_DOUBLE_EQ(srgbFromLinear(1), 1);
    EXPECT_DOUBLE_EQ(srgbFromLinear(-0.001), -0.01292);
}

TEST(PixelEncoderTest, Encoder_sharedExponent_keepsLargeAndClipsNegativeValues) {
    PixelEncoder encoder(PixelDepth::Float, 3, false, ValueRange::NonNegative);
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(encoded<float>(encoder, {pixel(2048, -1, infinity)}, 3), (std::vector<float>{2048, 0, 65504}));
    EXPECT_EQ(encoder.clippedCount(), 2U);
}

TEST(PixelEncoderTest, Encoder_onlyNaN_clipsNothing) {
    PixelEncoder encoder(PixelDepth::UInt8, 3, true, ValueRange::Unit);
    const float nan = std::nanf("");
    EXPECT_EQ(encoded<std::uint8_t>(encoder, {pixel(nan, 0.5F, nan)}, 3),
              (std::vector<std::uint8_t>{0, 188, 0}));
    EXPECT_EQ(encoder.notNumberCount(), 2U);
    EXPECT_EQ(encoder.clippedCount(), 0U);
    EXPECT_EQ(encoder.largestValue(), 0.0F);
}

TEST(PixelEncoderTest, Encoder_floats_keepNaNWithoutAWord) {
    PixelEncoder encoder(PixelDepth::Float, 1, false, ValueRange::All);
    EXPECT_TRUE(std::isnan(encoded<float>(encoder, {pixel(std::nanf(""), 0, 0)}, 1).front()));
    EXPECT_EQ(encoder.notNumberCount(), 0U);
}

TEST(PixelEncoderTest, Encoder_greyChannels_takeRedAndAlpha) {
    PixelEncoder grey(PixelDepth::UInt8, 1, false, ValueRange::Unit);
    EXPECT_EQ(encoded<std::uint8_t>(grey, {pixel(0.2F, 1, 1, 0.4F)}, 1), (std::vector<std::uint8_t>{51}));
    PixelEncoder greyAlpha(PixelDepth::UInt8, 2, false, ValueRange::Unit);
    EXPECT_EQ(encoded<std::uint8_t>(greyAlpha, {pixel(0.2F, 1, 1, 0.4F)}, 2),
              (std::vector<std::uint8_t>{51, 102}));
}

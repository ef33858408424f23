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
                                    std::size_t pixels, ValueLoss* loss = nullptr) {
    std::vector<krod::RGBAHalf> out(pixels);
    const auto* const bytes = reinterpret_cast<const std::byte*>(stored.data());
    const ValueLoss lost = decoder.decode(bytes, pixels, out.data());
    if (loss) *loss = lost;
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

TEST(PixelDecoderTest, Decoder_finiteFloatsBeyondHalf_becomeItsLargestAndAreCounted) {
    const float infinity = std::numeric_limits<float>::infinity();
    ValueLoss loss;
    const auto out =
        decoded<float>({PixelDepth::Float, 4, false, 3}, {65504, 1e6F, infinity, -1e9F}, 1, &loss);
    EXPECT_EQ(loss.overflows, 2U);
    EXPECT_EQ(loss.largest, 1e9F);
    EXPECT_EQ(loss.rounding, 0);
    EXPECT_EQ(bitsOf(out[0].r), 0x7bff);
    EXPECT_EQ(bitsOf(out[0].g), 0x7bff);
    EXPECT_EQ(bitsOf(out[0].b), 0x7c00); // the picture's own
    EXPECT_EQ(bitsOf(out[0].a), 0xfbff);
}

TEST(PixelDecoderTest, Decoder_rounding_isTheLargestErrorOfFloatsAndWords) {
    ValueLoss loss;
    // Halves from 2048 to 4096 are the even numbers.
    static_cast<void>(decoded<float>({PixelDepth::Float, 3, false, -1}, {2345.75F, 2346, 0.5F}, 1, &loss));
    EXPECT_EQ(loss.rounding, 0.25F);
    static_cast<void>(decoded<float>({PixelDepth::Float, 1, true, -1}, {2345}, 1, &loss));
    EXPECT_EQ(loss.rounding, 1);
    static_cast<void>(decoded<float>({PixelDepth::Float, 1, true, -1}, {1e-7F}, 1, &loss)); // 2 x 2^-24
    EXPECT_NEAR(loss.rounding, 1.92e-8F, 1e-10F);
    static_cast<void>(decoded<std::uint16_t>({PixelDepth::UInt16, 1, true, -1}, {32767, 40016}, 2, &loss));
    EXPECT_NEAR(loss.rounding, 0.0002348F, 1e-7F); // of 40016: 0.6106050, whose half is 0.6108398
    static_cast<void>(decoded<std::uint8_t>({PixelDepth::UInt8, 1, true, -1}, {100, 201}, 2, &loss));
    EXPECT_EQ(loss.rounding, 0); // they come back
}

TEST(PixelDecoderTest, Linearize_decodesColorsOfAllDepthsButNotAlpha) {
    const auto linear = [](PixelDecoder decoder, const auto& stored) {
        decoder.linearize();
        return decoded(decoder, stored, 1).front();
    };
    // The points of IEC 61966-2-1: 188/255 is 0.50289 and 10/255 is 0.0030353.
    const krod::RGBAHalf bytes =
        linear({PixelDepth::UInt8, 4, false, 3}, std::vector<std::uint8_t>{188, 10, 255, 128});
    expectNear({bytes}, {pixel(0.50289F, 0.0030353F, 1, 0.50196F)}, 0.0003F);
    const krod::RGBAHalf words =
        linear({PixelDepth::UInt16, 4, false, 3}, std::vector<std::uint16_t>{48316, 2570, 65535, 32896});
    expectSameBits({words}, {bytes});
    const krod::RGBAHalf floats = linear({PixelDepth::Float, 4, false, 3},
                                         std::vector<float>{188 / 255.0F, 10 / 255.0F, 1, 128 / 255.0F});
    expectSameBits({floats}, {bytes});
    const krod::RGBAHalf halves =
        linear({PixelDepth::Half, 4, false, 3}, std::vector<std::uint16_t>{0x3800, 0xb800, 0x3c00, 0x3800});
    expectNear({halves}, {pixel(0.21404F, -0.21404F, 1, 0.5F)}, 0.0001F);
}

TEST(PixelDecoderTest, LinearizedBytes_comeBackFromTheEncoder) {
    std::vector<std::uint8_t> all(256);
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<std::uint8_t>(i);
    PixelDecoder decoder(PixelDepth::UInt8, 1, true, -1);
    decoder.linearize();
    PixelEncoder encoder(PixelDepth::UInt8, 1, true, ValueRange::Unit);
    EXPECT_EQ(encoded<std::uint8_t>(encoder, decoded(decoder, all, 256), 256), all);
}

TEST(PixelEncoderTest, Encoder_integers_roundAndClip) {
    PixelEncoder encoder(PixelDepth::UInt8, 4, false, ValueRange::Unit);
    const float infinity = std::numeric_limits<float>::infinity();
    const auto out = encoded<std::uint8_t>(
        encoder, {pixel(0, 1, 0.5F, 0.2F), pixel(-1, 8, std::nanf(""), 1), pixel(-0.0F, 3, infinity, 1)}, 12);
    EXPECT_EQ(out, (std::vector<std::uint8_t>{0, 255, 128, 51, 255, 255, 255, 255, 0, 255, 255, 255}));
    EXPECT_EQ(encoder.clippedCount(), 5U); // thrice 3.5, the mean of -1 and 8; 3, infinity
    EXPECT_EQ(encoder.notNumberCount(), 1U);
    EXPECT_EQ(encoder.smallestValue(), 0.0F);
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

TEST(PixelEncoderTest, Encoder_notNumbers_becomeGreyOfTheOtherColorsAndOpaque) {
    const float nan = std::nanf(""), infinity = std::numeric_limits<float>::infinity();
    PixelEncoder encoder(PixelDepth::UInt8, 4, false, ValueRange::Unit);
    EXPECT_EQ(
        encoded<std::uint8_t>(encoder,
                              {pixel(0.6F, nan, nan), pixel(nan, 0.2F, 0.6F, nan), pixel(nan, nan, nan, 0.2F),
                               pixel(nan, infinity, nan), pixel(0.2F, 0.4F, 0.6F, nan)},
                              20),
        (std::vector<std::uint8_t>{153, 153, 153, 255, 102, 102, 102, 255, 0,   0,
                                   0,   51,  0,   0,   0,   255, 51,  102, 153, 255}));
    EXPECT_EQ(encoder.notNumberCount(), 5U);
    EXPECT_EQ(encoder.clippedCount(), 0U);
}

TEST(PixelEncoderTest, Encoder_alphaChange_dividesOrMultipliesColorsOnly) {
    const std::vector<krod::RGBAHalf> pixels{pixel(0.5F, 0, 0.25F, 0.5F), pixel(0.5F, 1, 0, 0),
                                             pixel(0.5F, 1, 0, 1.5F), pixel(0.5F, 1, 0, -1)};
    PixelEncoder divided(PixelDepth::Half, 4, false, ValueRange::All, AlphaChange::Divide);
    EXPECT_EQ(encoded<std::uint16_t>(divided, pixels, 16),
              (std::vector<std::uint16_t>{0x3c00, 0, 0x3800, 0x3800, 0x3800, 0x3c00, 0, 0, 0x3800, 0x3c00, 0,
                                          0x3e00, 0x3800, 0x3c00, 0, 0xbc00}));
    PixelEncoder multiplied(PixelDepth::Half, 4, false, ValueRange::All, AlphaChange::Multiply);
    EXPECT_EQ(encoded<std::uint16_t>(multiplied, {pixels.front()}, 4),
              (std::vector<std::uint16_t>{0x3400, 0, 0x3000, 0x3800}));
}

TEST(PixelEncoderTest, Encoder_onlyNaN_clipsNothing) {
    PixelEncoder encoder(PixelDepth::UInt8, 3, true, ValueRange::Unit);
    const float nan = std::nanf("");
    EXPECT_EQ(encoded<std::uint8_t>(encoder, {pixel(nan, 0.5F, nan)}, 3),
              (std::vector<std::uint8_t>{188, 188, 188}));
    EXPECT_EQ(encoder.notNumberCount(), 1U);
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

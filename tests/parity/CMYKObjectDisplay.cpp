// SPDX-License-Identifier: Apache-2.0
// The pixels of Display/CMYK.
#include "DisplayParity.h"

#include <cstdlib>
#include <string>

namespace {

using parity::Bounded;
using parity::Colour;
using parity::exactly;
using parity::Picture;

Colour processColor(const Colour& c) {
    const Bounded one = exactly(1);
    const Bounded black = min(min(one - c.r, one - c.g), c.b);
    const Bounded white = one - black;
    return {(white - c.r) / white, (white - c.g) / white, (white - c.b) / white, c.a};
}

/// The required pixel: the sum over all samples, divided by one less than their number, over the background.
Colour required(int x, int y, int samples) {
    Colour sum = processColor(exactly(parity::awkward(x, y, 0)));
    for (int i = 1; i < samples; ++i) sum = sum + processColor(exactly(parity::awkward(x, y, i)));
    return over(sum / exactly(samples > 1 ? samples - 1 : 1));
}

class ParityOfCMYK : public parity::DisplayParity {
protected:
    ParityOfCMYK() : DisplayParity("Display/CMYK") {}
};

TEST_F(ParityOfCMYK, CMYKObjectDisplay_driver_hasTheSamplesThatTheRunIsMeantFor) {
    const char* const driver = std::getenv("GALLIUM_DRIVER");
    ASSERT_NE(driver, nullptr) << "the test needs GALLIUM_DRIVER=llvmpipe or softpipe";
    drawColour({1, 1, 1, 1});
    EXPECT_EQ(samples, std::string(driver) == "softpipe" ? 1 : 4) << session.driver();
}

TEST_F(ParityOfCMYK, CMYKObjectDisplay_awkwardSamples_agreeWithOracle) {
    const Picture picture = drawAwkward();
    parity::Comparison comparison(1);
    addPicture(comparison, picture, [&](int x, int y) { return required(x, y, samples); });
    EXPECT_TRUE(comparison.verdict("CMYK, " + testing::PrintToString(samples) + " samples"));
}

/// With the third term 1 - b, black would divide by zero and yellow would change.
TEST_F(ParityOfCMYK, CMYKObjectDisplay_K1_blackOfPlainColours_hasBlueItselfAsThirdTerm) {
    struct Row {
        const char* name;
        float r, g, b;
        double cyan, magenta, yellow;
    };
    for (const Row& row :
         {Row{"white", 1, 1, 1, 0, 0, 0}, Row{"black", 0, 0, 0, 1, 1, 1}, Row{"yellow", 1, 1, 0, 0, 0, 1},
          Row{"dark blue", 0, 0, 0.5F, 1, 1, 0}, Row{"grey", 0.5F, 0.5F, 0.25F, 1.0 / 3, 1.0 / 3, 2.0 / 3}}) {
        const krod::RGBAHalf got = drawColour({row.r, row.g, row.b, 1});
        const double brighter = samples > 1 ? samples / (samples - 1.0) : 1; // alpha as well
        const auto over = [&](double c, float behind) {
            return c * brighter * brighter + behind * (1 - brighter);
        };
        // One step of half each for the shader's output and the blended result.
        EXPECT_NEAR(got.r, over(row.cyan, parity::Background[0]), 0x1p-9) << row.name;
        EXPECT_NEAR(got.g, over(row.magenta, parity::Background[1]), 0x1p-9) << row.name;
        EXPECT_NEAR(got.b, over(row.yellow, parity::Background[2]), 0x1p-9) << row.name;
    }
}

/// Alpha stands in the result as well as in the blending: (N/(N-1) a)^2 + behind (1 - N/(N-1) a).
TEST_F(ParityOfCMYK, CMYKObjectDisplay_K3_equalSamples_areBrighterByNOverNMinusOne) {
    const krod::RGBAHalf got = drawColour({0, 0, 0, 0.75F});
    const double brighter = samples > 1 ? samples / (samples - 1.0) : 1;
    const double alpha = 0.75 * brighter;
    EXPECT_NEAR(got.a, alpha * alpha + parity::Background[3] * (1 - alpha), 0x1p-10);
    EXPECT_NEAR(got.r, brighter * alpha + parity::Background[0] * (1 - alpha), 0x1p-10);
}

TEST_F(ParityOfCMYK, CMYKObjectDisplay_K4_glowAndHalo_sameBits) {
    const Picture plain = drawAwkward();
    for (const char* options : {"+glow -halo", "-glow +halo", "+glow +halo"}) {
        const Picture other = drawAwkward(parameters().set("options", options));
        EXPECT_TRUE(other == plain) << options;
    }
}

TEST_F(ParityOfCMYK, CMYKObjectDisplay_K5_parameterSamples_sameBitsAndSameTarget) {
    const Picture plain = drawAwkward();
    const int before = samples;
    const Picture other = drawAwkward(parameters().set("samples", "1"));
    EXPECT_EQ(samples, before);
    EXPECT_TRUE(other == plain);
}

/// The quad is drawn without depth test, so that its depth is lost. Here the same text runs with one.
TEST_F(ParityOfCMYK, CMYKObjectDisplay_depthOfTheText_isTheLeastOfAllSamples) { expectLeastDepth(); }

} // namespace

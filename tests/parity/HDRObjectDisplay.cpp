// SPDX-License-Identifier: Apache-2.0
// The pixels of the tone-mapped display, Display/Depth of HDRObjectDisplay.
#include "DisplayParity.h"

#include "host/values/VValueTrait.h"

#include <cmath>
#include <string>
#include <utility>

namespace {

using parity::Bounded;
using parity::Colour;
using parity::constant;
using parity::exactly;
using parity::Picture;
using parity::SamplePattern;
using parity::SceneSample;
using parity::Side;

/// Decimal logarithms of the constants.
struct Settings {
    double offset = 0, exponent = 0, transparency = 0;
    bool glow = false;
};

std::string text(double value) { return krod::VValueTrait<double>::Text(value); }
Bounded tenTo(double value) { return constant(std::pow(10, value)); }

/// The awkward scene with the lanes of red in alpha, so that alpha has large and negative values too.
SceneSample lanesInAlpha(int x, int y, int sample) {
    SceneSample s = parity::awkward(x, y, sample);
    std::swap(s.r, s.a);
    return s;
}

/// The moderate scene, that much brighter and less transparent.
SamplePattern::Values brighter(float factor) {
    return [factor](int x, int y, int sample) {
        const SceneSample s = parity::moderate(x, y, sample);
        return SceneSample{s.r * factor, s.g * factor, s.b * factor, s.a * factor, s.depth};
    };
}

/// (I / (a + I)) to the power of 10 b of the mean of all samples, in all four channels; alpha is raised once
/// more.
Colour required(const SamplePattern::Values& scene, int x, int y, int samples, const Settings& s) {
    Colour sum = exactly(scene(x, y, 0));
    for (int i = 1; i < samples; ++i) sum = sum + exactly(scene(x, y, i));
    const Colour mean = sum / exactly(samples);
    const Bounded a = tenTo(s.offset), power = exactly(10) * tenTo(s.exponent);
    const auto f = [&](const Bounded& I) { return pow(I / (a + I), power); };
    const Colour mapped{f(mean.r), f(mean.g), f(mean.b), pow(f(mean.a), tenTo(s.transparency))};
    return s.glow ? parity::glow(mapped) : over(mapped);
}

class ParityOfToneMappedDisplay : public parity::DisplayParity {
protected:
    ParityOfToneMappedDisplay() : DisplayParity("Display/Depth@HDRObjectDisplay") {}

    void compare(const char* name, const SamplePattern::Values& scene, const Settings& s) {
        const Picture picture = draw(scene, Side, Side,
                                     parameters()
                                         .set("samples", "8")
                                         .set("offset", text(s.offset))
                                         .set("exponent", text(s.exponent))
                                         .set("TransparencyExponent", text(s.transparency))
                                         .set("options", s.glow ? "+glow" : "-glow"));
        parity::Comparison comparison(1);
        addPicture(comparison, picture, [&](int x, int y) { return required(scene, x, y, samples, s); });
        EXPECT_TRUE(comparison.verdict(std::string("HDR, ") + name + ", offset " + text(s.offset) +
                                       ", exponent " + text(s.exponent) + ", TransparencyExponent " +
                                       text(s.transparency) + (s.glow ? ", glow, " : ", ") +
                                       testing::PrintToString(samples) + " samples"));
    }
    /// The red of one pixel of that intensity; its alpha is so large that it is mapped to nearly 1.
    double mapped(float intensity, const support::ParameterPool& pool) {
        return drawColour({intensity, 0, 0, 65504}, pool).r;
    }
};

TEST_F(ParityOfToneMappedDisplay, HDRObjectDisplay_everyOffsetAndExponent_agreeWithOracle) {
    for (const double offset : {-1.0, 0.0, 1.0})
        for (const double exponent : {-2.0, -1.0, 0.0}) {
            compare("lanes in alpha", lanesInAlpha, {offset, exponent});
            compare("bright", brighter(16), {offset, exponent});
        }
}

TEST_F(ParityOfToneMappedDisplay, HDRObjectDisplay_everyTransparencyExponent_agreesWithOracle) {
    for (const double transparency : {-1.0, 0.0, 3.0}) {
        compare("lanes in alpha", lanesInAlpha, {-1, -2, transparency});
        compare("very bright", brighter(1024), {0, 0, transparency});
    }
}

TEST_F(ParityOfToneMappedDisplay, HDRObjectDisplay_glow_addsToTheBackground) {
    compare("awkward", parity::awkward, {0, -1, 0, true});
    compare("lanes in alpha", lanesInAlpha, {-1, -2, 3, true});
}

TEST_F(ParityOfToneMappedDisplay, HDRObjectDisplay_zeroAndLargeIntensities_mapToZeroAndNearlyOne) {
    const auto pool = parameters().set("options", "+glow");
    EXPECT_EQ(mapped(0, pool), parity::Background[0]);
    EXPECT_NEAR(mapped(65504, pool), parity::Background[0] + 1, 0x1p-9);
}

/// Intensity and offset of 1: one half to the power of 10 b, which would be one half for a power of b.
TEST_F(ParityOfToneMappedDisplay, HDRObjectDisplay_H2_effectiveExponent_isTenTimesB) {
    for (const auto& [exponent, expected] :
         {std::pair{"0", 0x1p-10}, {"-1", 0.5}, {"-2", std::pow(0.5, 0.1)}}) {
        const auto pool = parameters().set("options", "+glow").set("exponent", exponent);
        EXPECT_NEAR(mapped(1, pool), parity::Background[0] + expected, 0x1p-10) << exponent;
    }
}

/// An alpha of 1 becomes one half with a power of 1, and 0.1 or 1000 is the power of that half.
TEST_F(ParityOfToneMappedDisplay, HDRObjectDisplay_H3_alpha_isMappedBeforeItIsRaised) {
    for (const auto& [transparency, alpha] : {std::pair{"0", 0.5}, {"-1", std::pow(0.5, 0.1)}, {"3", 0.0}}) {
        const auto pool = parameters().set("exponent", "-1").set("TransparencyExponent", transparency);
        const krod::RGBAHalf got = drawColour({0, 0, 0, 1}, pool);
        EXPECT_NEAR(got.a, alpha * alpha + parity::Background[3] * (1 - alpha), 0x1p-10) << transparency;
        EXPECT_NEAR(got.b, parity::Background[2] * (1 - alpha), 0x1p-9) << transparency;
    }
}

/// Samples of 4 and 0: the mean of their images would be another.
TEST_F(ParityOfToneMappedDisplay, HDRObjectDisplay_H4_samples_areAveragedBeforeTheyAreMapped) {
    const auto scene = [](int, int, int sample) {
        return SceneSample{sample % 2 == 0 ? 4.0F : 0.0F, 0, 0, 65504};
    };
    const auto pool = parameters().set("samples", "8").set("exponent", "-1").set("options", "+glow");
    const double got = draw(scene, 1, 1, pool).at(0, 0).r;
    const double mean = samples > 1 ? 2 : 4;
    EXPECT_NEAR(got, parity::Background[0] + mean / (1 + mean), 0x1p-10);
}

/// Quotients whose numerator and divisor are below 0 are defined; what else is below 0 is only drawn.
TEST_F(ParityOfToneMappedDisplay, HDRObjectDisplay_H7_intensityBelowMinusA_isMappedToMoreThanOne) {
    const auto pool = parameters().set("offset", "-1").set("exponent", "-1").set("options", "+glow");
    EXPECT_NEAR(mapped(-1, pool), parity::Background[0] + 1 / 0.9, 0x1p-9);
}

TEST_F(ParityOfToneMappedDisplay, HDRObjectDisplay_depthOfTheText_isTheLeastOfAllSamples) {
    expectLeastDepth();
}

} // namespace

// SPDX-License-Identifier: Apache-2.0
// The pixels of Display/ProximityHDR.
#include "DisplayParity.h"

#include "host/values/VValueTrait.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace {

using parity::Background;
using parity::Bounded;
using parity::Colour;
using parity::constant;
using parity::exactly;
using parity::moderate;
using parity::Picture;
using parity::SamplePattern;
using parity::SceneSample;
using parity::Side;

constexpr char Border[] = "neighbours lie outside the target";
constexpr char NoLuminance[] = "the largest component is 0, which is divided by";
constexpr char NegativeBase[] =
    "alpha, with which the colour is blended, would be a power of a negative number";

struct Settings {
    int width = 1;
    double strength = 0.5, gamma = 1, brightness = 1;
    bool glow = false;
};

std::string text(double value) { return krod::VValueTrait<double>::Text(value); }
std::string text(int value) { return krod::VValueTrait<int>::Text(value); }
const char* flag(bool glow) { return glow ? "+glow" : "-glow"; }

std::string describe(const char* scene, const Settings& s) {
    return std::string("ProximityHDR, ") + scene + ", width " + text(s.width) + ", strength " +
           text(s.strength) + ", gamma " + text(s.gamma) + ", brightness " + text(s.brightness) + ", " +
           flag(s.glow);
}

/// The awkward scene without values below -2^-24, whose powers have no value.
SceneSample lit(int x, int y, int sample) {
    SceneSample s = parity::awkward(x, y, sample);
    for (float* lane : {&s.r, &s.g, &s.b})
        if (*lane == -1) *lane = 8;
    return s;
}

/// Nothing around the pixel in the middle of three by three.
SamplePattern::Values isolated(const SceneSample& middle) {
    return [middle](int x, int y, int) { return x == 1 && y == 1 ? middle : SceneSample{0, 0, 0, 1, 0.5F}; };
}

Bounded luminance(const Colour& c, const Bounded& tenToStrength) {
    return max(c.r, max(c.g, c.b)) / tenToStrength;
}

/// The largest luminance around a pixel, with weights that fall linearly along both axes; at least 0.
Bounded largestAround(const SamplePattern::Values& scene, int x, int y, const Settings& settings) {
    const int radius = std::max(1, settings.width);
    const double s = 1.0 / (radius + 1);
    const Bounded tenToStrength = pow(exactly(10), constant(settings.strength));
    Bounded largest = exactly(0);
    for (int dy = -radius; dy <= radius; ++dy)
        for (int dx = -radius; dx <= radius; ++dx) {
            const Bounded weight = constant((1.0 - std::abs(dx) * s) * (1.0 - std::abs(dy) * s));
            const Colour pixel = exactly(scene(x + dx, y + dy, 0)) * constant(settings.brightness);
            largest = max(largest, luminance(pixel, tenToStrength) * weight);
        }
    return largest;
}

/// The mean of as many equal colours as there are samples: all of them look at sample 0.
Colour required(const SamplePattern::Values& scene, int x, int y, int samples, const Settings& settings) {
    const Colour pixel = exactly(scene(x, y, 0)) * constant(settings.brightness);
    const Bounded own = luminance(pixel, pow(exactly(10), constant(settings.strength)));
    const Bounded largest = largestAround(scene, x, y, settings);
    const Colour scaled = pixel * (largest / (exactly(1) + largest)) / own;
    const Bounded gamma = constant(settings.gamma);
    const Colour one{pow(scaled.r, gamma), pow(scaled.g, gamma), pow(scaled.b, gamma), pow(scaled.a, gamma)};
    Colour sum = one;
    for (int i = 1; i < samples; ++i) sum = sum + one;
    return sum / exactly(samples);
}

/// Why the requirement gives a pixel no value at all; null where it does.
const char* undefined(const SceneSample& s) {
    const float largest = std::max({s.r, s.g, s.b});
    return largest == 0 ? NoLuminance : largest < 0 && s.a > 0 ? NegativeBase : nullptr;
}

class ParityOfProximityHDR : public parity::DisplayParity {
protected:
    ParityOfProximityHDR() : DisplayParity("Display/ProximityHDR") {}

    support::ParameterPool pool(const Settings& s) const {
        return parameters()
            .set("samples", "8")
            .set("width", text(s.width))
            .set("strength", text(s.strength))
            .set("gamma", text(s.gamma))
            .set("brightness", text(s.brightness))
            .set("options", flag(s.glow));
    }
    Picture drawModerate(const krod::VValuePool& values) { return draw(moderate, Side, Side, values); }

    void expectOracle(const char* name, const SamplePattern::Values& scene, const Settings& s) {
        const Picture picture = draw(scene, Side, Side, pool(s));
        parity::Comparison comparison(1);
        for (int y = 0; y < Side; ++y)
            for (int x = 0; x < Side; ++x) addPixel(comparison, picture, scene, s, x, y);
        EXPECT_TRUE(comparison.verdict(describe(name, s)));
    }
    void expectOracle(const Settings& settings) {
        expectOracle("moderate", moderate, settings);
        expectOracle("lit", lit, settings);
    }
    /// The middle pixel of nothing else, over the background.
    void expectIsolated(const Settings& settings, const SceneSample& from, const SceneSample& to) {
        const krod::RGBAHalf got = draw(isolated(from), 3, 3, pool(settings)).at(1, 1);
        const auto blended = [&](float value, float behind) { return value * to.a + behind * (1 - to.a); };
        EXPECT_NEAR(got.r, blended(to.r, Background[0]), 0x1p-10) << describe("isolated", settings);
        EXPECT_NEAR(got.g, blended(to.g, Background[1]), 0x1p-10) << describe("isolated", settings);
        EXPECT_NEAR(got.b, blended(to.b, Background[2]), 0x1p-9) << describe("isolated", settings);
        EXPECT_NEAR(got.a, blended(to.a, Background[3]), 0x1p-10) << describe("isolated", settings);
    }

private:
    void addPixel(parity::Comparison& comparison, const Picture& picture, const SamplePattern::Values& scene,
                  const Settings& s, int x, int y) const {
        const auto leaveOut = [&](const char* reason) {
            for (int lane = 0; lane < 4; ++lane) comparison.leaveOut(reason);
        };
        const int radius = std::max(1, s.width);
        if (std::min(x, y) < radius || std::max(x, y) >= Side - radius) return leaveOut(Border);
        if (const char* reason = undefined(scene(x, y, 0))) return leaveOut(reason);
        const Colour source = required(scene, x, y, samples, s);
        parity::addPixel(comparison, picture, x, y, s.glow ? glow(source) : over(source));
    }
};

TEST_F(ParityOfProximityHDR, ProximityHDR_initialValues_agreeWithOracle) {
    expectOracle({});
    expectOracle("awkward", parity::awkward, {});
}

TEST_F(ParityOfProximityHDR, ProximityHDR_strengths_agreeWithOracle) {
    for (const double strength : {0.0, 2.0, -1.0}) expectOracle({.strength = strength});
}

TEST_F(ParityOfProximityHDR, ProximityHDR_gammas_agreeWithOracle) {
    for (const double gamma : {0.5, 2.2, 15.0}) expectOracle({.strength = 0, .gamma = gamma});
    expectOracle({.strength = 0.5, .gamma = 2.2});
    expectOracle("moderate", moderate, {.strength = 0.5, .gamma = -1});
}

TEST_F(ParityOfProximityHDR, ProximityHDR_brightnesses_agreeWithOracle) {
    for (const double brightness : {0.1, 10.0}) expectOracle({.brightness = brightness});
}

TEST_F(ParityOfProximityHDR, ProximityHDR_widths_agreeWithOracle) {
    for (const int width : {0, 2, 5}) expectOracle({width, 0.5, 2.2, 0.1});
}

TEST_F(ParityOfProximityHDR, ProximityHDR_glow_addsToTheBackground) {
    expectOracle({.gamma = 0.5, .glow = true});
}

/// (c, c, c) / (1 + L), L = c / 10^strength; alpha is scaled like them.
TEST_F(ParityOfProximityHDR, ProximityHDR_isolatedPixel_isCompressedByItsOwnBrightness) {
    for (const float c : {0.25F, 1.0F, 6.0F}) {
        const float L = c / std::sqrt(10.0F), out = c / (1 + L);
        expectIsolated({}, {c, c, c, 0.5F, 0.5F}, {out, out, out, 0.5F / (1 + L)});
    }
}

TEST_F(ParityOfProximityHDR, ProximityHDR_strengthZero_luminanceIsTheLargestComponent) {
    expectIsolated({.strength = 0}, {1, 0.5F, 0.25F, 1, 0.5F}, {0.5F, 0.25F, 0.125F, 0.5F});
    expectIsolated({.strength = 0}, {0.5F, 0, 3, 1, 0.5F}, {0.125F, 0, 0.75F, 0.25F});
}

/// Glow adds alpha squared to the background's alpha, and alpha times the colour to its colour. Here alpha is
/// as large as the largest component.
TEST_F(ParityOfProximityHDR, ProximityHDR_brightSurroundings_noComponentExceedsTenToStrength) {
    const auto scene = [](int x, int y, int i) {
        const SceneSample s = moderate(x, y, i);
        return SceneSample{s.r, s.g, s.b, std::max({s.r, s.g, s.b}), s.depth};
    };
    for (const double strength : {0.0, 0.5, 1.0}) {
        const Picture picture = draw(scene, Side, Side, pool({1, strength, 1, 10, true}));
        double largest = 0;
        for (int y = 1; y < Side - 1; ++y)
            for (int x = 1; x < Side - 1; ++x) {
                const krod::RGBAHalf& got = picture.at(x, y);
                const double alpha = std::sqrt(static_cast<double>(got.a) - Background[3]);
                largest = std::max({largest, (got.r - Background[0]) / alpha, (got.g - Background[1]) / alpha,
                                    (got.b - Background[2]) / alpha});
            }
        const double limit = std::pow(10, strength);
        EXPECT_LE(largest, 1.005 * limit) << strength; // both results are halves
        EXPECT_GE(largest, 0.75 * limit) << strength;
    }
}

/// The quotient is 0/0 in every pixel, as at brightness 0.
TEST_F(ParityOfProximityHDR, ProximityHDR_X3_unreadableBrightness_isZero) {
    const Picture unreadable = drawModerate(pool({}).makeUnreadable("brightness"));
    EXPECT_TRUE(unreadable == drawModerate(pool({.brightness = 0})));
    EXPECT_FALSE(unreadable == drawModerate(pool({})));
}

TEST_F(ParityOfProximityHDR, ProximityHDR_otherUnreadableSettings_areInitialOnes) {
    const Picture initial = drawModerate(pool({}));
    for (const char* name : {"width", "strength", "gamma", "options"})
        EXPECT_TRUE(drawModerate(pool({}).makeUnreadable(name)) == initial) << name;
}

TEST_F(ParityOfProximityHDR, ProximityHDR_X4_widthZero_isWidthOne) {
    const Picture zero = drawModerate(pool({.width = 0}));
    EXPECT_TRUE(zero == drawModerate(pool({.width = 1})));
    EXPECT_TRUE(zero == drawModerate(pool({.width = -3})));
    EXPECT_FALSE(zero == drawModerate(pool({.width = 2})));
}

TEST_F(ParityOfProximityHDR, ProximityHDR_X4_widerThanItsLimit_isDrawnWider) {
    expectOracle("moderate", moderate, {.width = 7});
}

/// A change that leaves the largest weighted luminance alone changes the average alone.
TEST_F(ParityOfProximityHDR, ProximityHDR_X5_averageOfTheNeighbourhood_isNotUsed) {
    const auto scene = [](float beside) {
        return [beside](int x, int y, int) {
            const float v = x == 1 && y == 1 ? 1.0F : x == 0 && y == 0 ? 8.0F : beside;
            return SceneSample{v, v, v, 1, 0.5F};
        };
    };
    const krod::RGBAHalf dark = draw(scene(0.125F), 3, 3, pool({})).at(1, 1);
    const krod::RGBAHalf grey = draw(scene(0.75F), 3, 3, pool({})).at(1, 1);
    EXPECT_EQ(static_cast<float>(dark.r), static_cast<float>(grey.r));
    EXPECT_EQ(static_cast<float>(dark.a), static_cast<float>(grey.a));
}

TEST_F(ParityOfProximityHDR, ProximityHDR_X6_alpha_isScaledAndRaised) {
    expectIsolated({.strength = 0, .gamma = 2}, {1, 0.5F, 1, 1, 0.5F}, {0.25F, 0.0625F, 0.25F, 0.25F});
    expectIsolated({.strength = 0, .gamma = 2}, {1, 1, 1, 0.5F, 0.5F}, {0.25F, 0.25F, 0.25F, 0.0625F});
}

TEST_F(ParityOfProximityHDR, ProximityHDR_X8_coloursOfOtherSamples_areNotLookedAt) {
    const auto changed = [](int x, int y, int i) {
        return i == 0 ? moderate(x, y, 0) : SceneSample{9, 0, 1, 2};
    };
    EXPECT_TRUE(draw(changed, Side, Side, pool({.width = 2})) == drawModerate(pool({.width = 2})));
}

TEST_F(ParityOfProximityHDR, ProximityHDR_depthOfTheText_isTheLeastOfAllSamples) { expectLeastDepth(); }

} // namespace

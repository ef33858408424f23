// SPDX-License-Identifier: Apache-2.0
// The pixels of Display/PixelContours.
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
constexpr char NoLuminance[] = "the largest component of the difference may be 0, which is divided by";

struct Settings {
    int width = 0;
    double strength = 0, luminance = 0;
    bool glow = false;
};

std::string text(double value) { return krod::VValueTrait<double>::Text(value); }
std::string text(int value) { return krod::VValueTrait<int>::Text(value); }
const char* flag(bool glow) { return glow ? "+glow" : "-glow"; }

/// The awkward scene with 3 in place of the largest half, which would drown its neighbours.
SceneSample uneven(int x, int y, int sample) {
    SceneSample s = parity::awkward(x, y, sample);
    for (float* lane : {&s.r, &s.g, &s.b}) *lane = std::min(*lane, 3.0F);
    return s;
}

/// Red is the largest component, of the difference from the mean it is blue or green.
SceneSample chequered(int x, int y, int sample) {
    return {3, 2, (x + y) % 2 == 0 ? 0.5F : 1.5F, 1, 0.125F * static_cast<float>(sample % 8)};
}

/// The mean of the square around a pixel, with weights that fall linearly along both axes.
Colour meanAround(const SamplePattern::Values& scene, int x, int y, int radius) {
    const double s = 1.0 / (radius + 1);
    Colour sum{};
    Bounded weights{};
    for (int dy = -radius; dy <= radius; ++dy)
        for (int dx = -radius; dx <= radius; ++dx) {
            const Bounded weight = constant((1.0 - std::abs(dx) * s) * (1.0 - std::abs(dy) * s));
            weights = weights + weight;
            sum = sum + exactly(scene(x + dx, y + dy, 0)) * weight;
        }
    return sum / weights;
}

Bounded luminance(const Colour& c) { return max(c.r, max(c.g, c.b)); }

/// What one sample contributes: all of them look at sample 0.
Colour contrasted(const SamplePattern::Values& scene, int x, int y, const Settings& settings) {
    const Bounded one = exactly(1), factor = constant(settings.luminance);
    const Bounded strength = one - pow(exactly(10), exactly(-3) * constant(settings.strength));
    const Colour own = exactly(scene(x, y, 0));
    const Colour mean = meanAround(scene, x, y, std::max(1, settings.width)) * strength;
    const Colour difference{own.r - mean.r, own.g - mean.g, own.b - mean.b, own.a - mean.a};
    const Bounded quotient = luminance(own) / luminance(difference);
    return difference * (one * (one - factor) + quotient * factor);
}

Colour required(const SamplePattern::Values& scene, int x, int y, int samples, const Settings& settings) {
    const Colour one = contrasted(scene, x, y, settings);
    Colour sum = one;
    for (int i = 1; i < samples; ++i) sum = sum + one;
    return sum / exactly(samples);
}

class ParityOfPixelContours : public parity::DisplayParity {
protected:
    ParityOfPixelContours() : DisplayParity("Display/PixelContours") {}

    support::ParameterPool pool(const Settings& s) const {
        return parameters()
            .set("samples", "8")
            .set("width", text(s.width))
            .set("strength", text(s.strength))
            .set("luminance", text(s.luminance))
            .set("options", flag(s.glow));
    }
    Picture drawModerate(const krod::VValuePool& values) { return draw(moderate, Side, Side, values); }

    void expectOracle(const char* name, const SamplePattern::Values& scene, const Settings& s) {
        const Picture picture = draw(scene, Side, Side, pool(s));
        parity::Comparison comparison(1);
        for (int y = 0; y < Side; ++y)
            for (int x = 0; x < Side; ++x) addPixel(comparison, picture, scene, s, x, y);
        EXPECT_TRUE(comparison.verdict(std::string("PixelContours, ") + name + ", width " + text(s.width) +
                                       ", strength " + text(s.strength) + ", luminance " + text(s.luminance) +
                                       ", " + flag(s.glow)));
    }
    void expectOracle(const Settings& settings) {
        expectOracle("moderate", moderate, settings);
        expectOracle("uneven", uneven, settings);
    }

private:
    void addPixel(parity::Comparison& comparison, const Picture& picture, const SamplePattern::Values& scene,
                  const Settings& s, int x, int y) const {
        const auto leaveOut = [&](const char* reason) {
            for (int lane = 0; lane < 4; ++lane) comparison.leaveOut(reason);
        };
        const int radius = std::max(1, s.width);
        if (std::min(x, y) < radius || std::max(x, y) >= Side - radius) return leaveOut(Border);
        const Colour source = required(scene, x, y, samples, s);
        if (!source.a.defined()) return leaveOut(NoLuminance);
        parity::addPixel(comparison, picture, x, y, s.glow ? glow(source) : over(source));
    }
};

TEST_F(ParityOfPixelContours, PixelContours_initialValues_agreeWithOracle) {
    expectOracle({});
    expectOracle("awkward", parity::awkward, {});
}

TEST_F(ParityOfPixelContours, PixelContours_strengths_agreeWithOracle) {
    for (const double strength : {0.2, 0.5, 1.0, 4.0, -0.1}) expectOracle({.strength = strength});
}

TEST_F(ParityOfPixelContours, PixelContours_luminances_agreeWithOracle) {
    for (const double luminance : {0.5, 1.0, -1.0, 2.0})
        expectOracle({.strength = 0.2, .luminance = luminance});
    expectOracle({.strength = 0, .luminance = 1});
    expectOracle({.strength = 1, .luminance = 0.5});
}

TEST_F(ParityOfPixelContours, PixelContours_widths_agreeWithOracle) {
    for (const int width : {1, 2, 3, 5}) expectOracle({width, 0.2, 0.5});
}

TEST_F(ParityOfPixelContours, PixelContours_glow_addsToTheBackground) {
    expectOracle({2, 0.2, 0.5, true});
    expectOracle({0, 0, 0, true});
}

TEST_F(ParityOfPixelContours, PixelContours_strengthZero_leavesColoursUnchanged) {
    for (const double luminance : {0.0, 1.0}) {
        const Picture picture = drawModerate(pool({.strength = 0, .luminance = luminance}));
        parity::Comparison comparison(1);
        for (int y = 1; y < Side - 1; ++y)
            for (int x = 1; x < Side - 1; ++x)
                parity::addPixel(comparison, picture, x, y, over(exactly(moderate(x, y, 0))));
        EXPECT_TRUE(comparison.verdict("PixelContours, unchanged at luminance " + text(luminance)));
    }
}

/// Glow adds alpha squared to the background's alpha, and alpha times the colour to its colour.
TEST_F(ParityOfPixelContours, PixelContours_luminanceOne_keepsTheLargestComponent) {
    for (const double strength : {0.1, 0.2, 0.3}) {
        const Picture picture = draw(chequered, Side, Side, pool({1, strength, 1, true}));
        for (int y = 1; y < Side - 1; ++y)
            for (int x = 1; x < Side - 1; ++x) {
                const krod::RGBAHalf& got = picture.at(x, y);
                const double alpha = std::sqrt(static_cast<double>(got.a) - Background[3]);
                const double largest =
                    std::max({(got.r - Background[0]) / alpha, (got.g - Background[1]) / alpha,
                              (got.b - Background[2]) / alpha});
                ASSERT_NEAR(largest, 3, 0x1p-7) << x << ", " << y << ", strength " << strength;
            }
    }
}

TEST_F(ParityOfPixelContours, PixelContours_P2_unreadableStrength_isOneHalf) {
    const Picture unreadable = drawModerate(pool({}).makeUnreadable("strength"));
    EXPECT_TRUE(unreadable == drawModerate(pool({.strength = 0.5})));
    EXPECT_FALSE(unreadable == drawModerate(pool({})));
}

TEST_F(ParityOfPixelContours, PixelContours_otherUnreadableSettings_areInitialOnes) {
    const Picture initial = drawModerate(pool({.strength = 0.2}));
    for (const char* name : {"width", "luminance", "options"})
        EXPECT_TRUE(drawModerate(pool({.strength = 0.2}).makeUnreadable(name)) == initial) << name;
}

TEST_F(ParityOfPixelContours, PixelContours_P3_widthZero_isWidthOne) {
    const Picture zero = drawModerate(pool({0, 0.2, 0.5}));
    EXPECT_TRUE(zero == drawModerate(pool({1, 0.2, 0.5})));
    EXPECT_TRUE(zero == drawModerate(pool({-3, 0.2, 0.5})));
    EXPECT_FALSE(zero == drawModerate(pool({2, 0.2, 0.5})));
}

TEST_F(ParityOfPixelContours, PixelContours_P4_widerThanItsLimit_isDrawnWider) {
    expectOracle("moderate", moderate, {7, 0.2, 0.5});
}

/// Of equal pixels only 10^(-3 strength) of each component is left, alpha included.
TEST_F(ParityOfPixelContours, PixelContours_P5_alpha_isAveragedAndSubtracted) {
    const auto flat = [](int, int, int) { return SceneSample{1, 2, 3, 0.5F, 0.5F}; };
    const double left = std::pow(10, -0.6), alpha = 0.5 * left;
    const krod::RGBAHalf got = draw(flat, 3, 3, pool({.strength = 0.2})).at(1, 1);
    EXPECT_NEAR(got.a, alpha * alpha + Background[3] * (1 - alpha), 0x1p-10);
    EXPECT_NEAR(got.g, 2 * left * alpha + Background[1] * (1 - alpha), 0x1p-10);
}

TEST_F(ParityOfPixelContours, PixelContours_P6_coloursOfOtherSamples_areNotLookedAt) {
    const auto changed = [](int x, int y, int i) {
        return i == 0 ? moderate(x, y, 0) : SceneSample{9, 0, 1, 2};
    };
    const Settings settings{2, 0.2, 0.5};
    EXPECT_TRUE(draw(changed, Side, Side, pool(settings)) == drawModerate(pool(settings)));
}

/// The software drivers divide as IEEE 754 has it: what is guarded is not NaN any more.
TEST_F(ParityOfPixelContours, PixelContours_P7_blackAtLuminanceZero_isNoNumber) {
    const auto black = [](int, int, int) { return SceneSample{0, 0, 0, 1, 0.5F}; };
    const krod::RGBAHalf got = draw(black, 3, 3, pool({.strength = 0.2, .luminance = 0})).at(1, 1);
    EXPECT_TRUE(std::isnan(static_cast<float>(got.r))) << got.r;
}

TEST_F(ParityOfPixelContours, PixelContours_depthOfTheText_isTheLeastOfAllSamples) { expectLeastDepth(); }

} // namespace

// SPDX-License-Identifier: Apache-2.0
// The pixels of Display/Blurred.
#include "DisplayParity.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using parity::Bounded;
using parity::Colour;
using parity::constant;
using parity::exactly;
using parity::Picture;
using parity::SamplePattern;
using parity::SceneSample;
using parity::Side;

struct Settings {
    const char* width;
    int taps;
    const char* exponent;
    double power; // ten to the exponent
    bool glow = false;
};

constexpr Settings Defaults{"1", 3, "0", 1};

/// The quotient of weighted and plain sum over sample 0 of the taps; none where a tap lies outside.
std::optional<Colour> blurred(const SamplePattern::Values& scene, int x, int y, const Settings& s) {
    const int n = s.taps, m = n / 2;
    if (x + m - (n - 1) < 0 || x + m >= Side) return {};
    Colour sum{};
    Bounded weights{};
    for (int i = 0; i < n; ++i) {
        const Bounded weight = constant(std::pow(1.0 - std::abs(i - m) * (2.0 / n), s.power));
        sum = sum + exactly(scene(x + m - i, y, 0)) * weight;
        weights = weights + weight;
    }
    return sum / weights;
}

/// The same blur is added once per sample, and the sum divided by their number.
Colour required(const Colour& blur, int samples, bool glow) {
    Colour sum = blur;
    for (int i = 1; i < samples; ++i) sum = sum + blur;
    const Colour mean = sum / exactly(samples);
    return glow ? parity::glow(mean) : parity::over(mean);
}

class ParityOfBlurred : public parity::DisplayParity {
protected:
    ParityOfBlurred() : DisplayParity("Display/Blurred") {}

    void compare(const char* name, const SamplePattern::Values& scene, const Settings& s) {
        const Picture picture = draw(scene, Side, Side,
                                     parameters()
                                         .set("samples", "8")
                                         .set("width", s.width)
                                         .set("exponent", s.exponent)
                                         .set("options", s.glow ? "+glow" : "-glow"));
        parity::Comparison comparison(1);
        for (int y = 0; y < Side; ++y)
            for (int x = 0; x < Side; ++x)
                if (const auto blur = blurred(scene, x, y, s))
                    addPixel(comparison, picture, x, y, required(*blur, samples, s.glow));
                else
                    for (int channel = 0; channel < 4; ++channel)
                        comparison.leaveOut("a tap lies outside the picture");
        EXPECT_TRUE(comparison.verdict(std::string("Blurred, ") + name + ", width " + s.width +
                                       ", exponent " + s.exponent + (s.glow ? ", glow, " : ", ") +
                                       testing::PrintToString(samples) + " samples"));
    }

    /// The red of a row in which one pixel alone is 1, as it stands at a distance from that pixel.
    std::vector<float> impulse(const char* width, const char* exponent = "0") {
        constexpr int Length = 2 * Reach + 1;
        const Picture picture = draw(
            [](int x, int, int) {
                return SceneSample{x == Reach ? 1.0F : 0, 0, 0, 1};
            },
            Length, 1, parameters().set("width", width).set("exponent", exponent));
        std::vector<float> red;
        for (int x = 0; x < Length; ++x) red.push_back(picture.at(x, 0).r);
        return red;
    }
    static constexpr int Reach = 30;
};

TEST_F(ParityOfBlurred, BlurredObject_everyTapCountAndExponent_agreeWithOracle) {
    compare("awkward", parity::awkward, Defaults);
    for (const auto& [exponent, power] :
         {std::pair{"-0.5", std::sqrt(0.1)}, {"0", 1.0}, {"0.5", std::sqrt(10.0)}})
        for (const auto& [width, taps] : {std::pair{"3", 3}, {"4", 4}, {"20", 20}}) {
            compare("awkward", parity::awkward, {width, taps, exponent, power});
            compare("moderate", parity::moderate, {width, taps, exponent, power});
        }
}

TEST_F(ParityOfBlurred, BlurredObject_glow_addsToTheBackground) {
    compare("awkward", parity::awkward, {"5.5", 5, "0.25", std::pow(10, 0.25), true});
    compare("moderate", parity::moderate, {"5.5", 5, "0.25", std::pow(10, 0.25), true});
}

TEST_F(ParityOfBlurred, BlurredObject_B1_initialWidth_drawsWithThreeTaps) {
    const Picture initial = drawAwkward();
    EXPECT_TRUE(initial == drawAwkward(parameters().set("width", "3")));
    EXPECT_FALSE(initial == drawAwkward(parameters().set("width", "4")));
}

TEST_F(ParityOfBlurred, BlurredObject_B2_widthBelowThreeOrNoInteger_threeTaps) {
    const Picture three = drawAwkward(parameters().set("width", "3"));
    for (const char* width : {"-20", "0", "2.9", "3.9", "2147483648", "1e300"})
        EXPECT_TRUE(three == drawAwkward(parameters().set("width", width))) << width;
}

TEST_F(ParityOfBlurred, BlurredObject_B2_widthAboveItsMaximum_holds) {
    const std::vector<float> red = impulse("25");
    EXPECT_NEAR(red.at(Reach - 12), 0.04 / 12.52, 0x1p-18);
    EXPECT_NEAR(red.at(Reach + 12), 0.04 / 12.52, 0x1p-18);
    EXPECT_EQ(red.at(Reach - 13), 0);
    EXPECT_EQ(red.at(Reach + 13), 0);
}

/// With a centre between the taps, four taps would weigh 0.25, 0.75, 0.75 and 0.25.
TEST_F(ParityOfBlurred, BlurredObject_B3_evenNumberOfTaps_firstWeightIsZero) {
    const std::vector<float> four = impulse("4"), twenty = impulse("20");
    for (const auto& [distance, expected] :
         {std::pair{-2, 0.0}, {-1, 0.25}, {0, 0.5}, {1, 0.25}, {2, 0.0}, {3, 0.0}})
        EXPECT_NEAR(four.at(static_cast<std::size_t>(Reach + distance)), expected, 0x1p-11) << distance;
    for (int distance = -11; distance <= 11; ++distance)
        EXPECT_NEAR(twenty.at(static_cast<std::size_t>(Reach + distance)),
                    std::max(0.0, 1 - 0.1 * std::abs(distance)) / 10, 0x1p-13)
            << distance;
}

/// The neighbours' share of three taps, 1/3 to the power of ten to the exponent.
TEST_F(ParityOfBlurred, BlurredObject_B4_weights_areDividedByTheirSum) {
    for (const char* exponent : {"-0.5", "0", "0.5"}) {
        const double p = std::pow(10, std::strtod(exponent, nullptr)), weight = std::pow(1.0 / 3, p);
        const std::vector<float> red = impulse("3", exponent);
        EXPECT_NEAR(red.at(Reach - 1), weight / (1 + 2 * weight), 0x1p-12) << exponent;
        EXPECT_NEAR(red.at(Reach), 1 / (1 + 2 * weight), 0x1p-11) << exponent;
        EXPECT_NEAR(red.at(Reach + 1), weight / (1 + 2 * weight), 0x1p-12) << exponent;
    }
}

/// Rows of another colour each: a vertical blur would mix them.
TEST_F(ParityOfBlurred, BlurredObject_B5_direction_isHorizontal) {
    const auto rows = [](int, int y, int) { return SceneSample{0.25F * static_cast<float>(y), 1, 0, 1}; };
    const Picture picture = draw(rows, Side, 9, parameters().set("width", "7"));
    for (int y = 0; y < 9; ++y) EXPECT_NEAR(picture.at(Side / 2, y).r, 0.25 * y, 0x1p-9) << "row " << y;
}

TEST_F(ParityOfBlurred, BlurredObject_B6_furtherSamples_addTheBlurOfSampleZeroAgain) {
    const auto inside = [](const Picture& picture) {
        std::vector<Colour> values;
        for (int x = 3; x < Side - 3; ++x)
            for (int y = 0; y < Side; ++y) {
                const krod::RGBAHalf& c = picture.at(x, y);
                values.push_back(exactly(SceneSample{c.r, c.g, c.b, c.a}));
            }
        return values;
    };
    const auto pool = parameters().set("samples", "8").set("width", "5");
    const auto different = inside(draw(parity::moderate, Side, Side, pool));
    const auto same =
        inside(draw([](int x, int y, int) { return parity::moderate(x, y, 0); }, Side, Side, pool));
    for (std::size_t i = 0; i < same.size(); ++i) {
        ASSERT_EQ(different[i].r.value, same[i].r.value) << i;
        ASSERT_EQ(different[i].a.value, same[i].a.value) << i;
    }
}

/// With the weighting by blue, a texel without blue would count for nothing.
TEST_F(ParityOfBlurred, BlurredObject_B7_blue_weighsNothing) {
    const std::vector<float> red = impulse("3");
    EXPECT_NEAR(red.at(Reach), 0.6, 0x1p-11);
}

TEST_F(ParityOfBlurred, BlurredObject_depthOfTheText_isTheLeastOfAllSamples) { expectLeastDepth(); }

} // namespace

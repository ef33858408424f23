// SPDX-License-Identifier: Apache-2.0
// The pixels of Display/HSVAdjust.
#include "DisplayParity.h"

#include "host/values/VValueTrait.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace {

using parity::awkward;
using parity::Background;
using parity::Bounded;
using parity::constant;
using parity::exactly;
using parity::moderate;
using parity::Picture;
using parity::SamplePattern;
using parity::SceneSample;
using parity::Side;

constexpr char Black[] = "the largest component is 0, which saturation and hue are divided by";
constexpr char Wrap[] = "rounding decides on which side of 360 degrees the hue is";
/// One step of half at 1 and below, for the result's own rounding.
constexpr double Step = 0x1p-10;

struct Settings {
    double hue = 0, saturation = 1, value = 1;
    bool red = true, green = true, blue = true;
};

std::string channels(const Settings& s) {
    return std::string(s.red ? "+1" : "-1") + (s.green ? " +2" : " -2") + (s.blue ? " +3" : " -3");
}

std::string describe(const Settings& s) {
    const auto text = krod::VValueTrait<double>::Text;
    return "hue " + text(s.hue) + ", saturation " + text(s.saturation) + ", value " + text(s.value) +
           ", channels " + channels(s);
}

/// Red, green and blue, or why the requirement gives them no value.
struct Rgb {
    std::array<Bounded, 3> lanes{};
    const char* undefined = nullptr;
};

/// Hue in degrees, saturation, value; or why they have none.
struct Hsv {
    Bounded hue, saturation, value;
    const char* undefined = nullptr;
};

/// Of several largest components green decides, then red.
Hsv toHsv(const SceneSample& c) {
    const Bounded r = exactly(c.r), g = exactly(c.g), b = exactly(c.b);
    const float most = std::max({c.r, c.g, c.b}), least = std::min({c.r, c.g, c.b});
    if (most == 0) return {{}, {}, {}, Black};
    if (most == least) return {exactly(0), exactly(0), exactly(most)}; // grey has no hue and needs none
    const Bounded delta = exactly(most) - exactly(least);
    Bounded hue = exactly(60) * (c.g == most   ? exactly(2) + (b - r) / delta
                                 : c.r == most ? (g - b) / delta
                                               : exactly(4) + (r - g) / delta);
    if (hue.value < 0) hue = hue + exactly(360);
    return {hue, delta / exactly(most), exactly(most)};
}

/// The colour by the formulas of one sector of 60 degrees; `turn` counts sectors.
std::array<Bounded, 3> inSector(int sector, const Bounded& turn, const Bounded& s, const Bounded& v) {
    const Bounded one = exactly(1), f = turn - exactly(sector);
    const Bounded p = v * (one - s), q = v * (one - s * f), t = v * (one - s * (one - f));
    switch (sector) {
    case 0:
        return {v, t, p};
    case 1:
        return {q, v, p};
    case 2:
        return {p, v, t};
    case 3:
        return {p, q, v};
    case 4:
        return {t, p, v};
    default:
        return {v, p, q};
    }
}

/// What covers both; colours meet where two sectors do.
Bounded hull(const Bounded& a, const Bounded& b) {
    const double low = std::min(a.value - a.error, b.value - b.error);
    const double high = std::max(a.value + a.error, b.value + b.error);
    return {(low + high) / 2, (high - low) / 2};
}

Rgb toRgb(const Hsv& hsv) {
    const Bounded& s = hsv.saturation;
    const Bounded& v = hsv.value;
    if (s.value == 0) return {{v, v, v}};
    const Bounded turns = hsv.hue / exactly(360);
    const double whole = std::floor(turns.value - turns.error);
    const Bounded hue = hsv.hue - exactly(whole) * exactly(360);
    const Bounded sectors = hue / exactly(60);
    const double first = std::floor(sectors.value - sectors.error);
    const double last = std::floor(sectors.value + sectors.error);
    if (whole != std::floor(turns.value + turns.error) || first < 0 || last > 5) return {{}, Wrap};
    const auto low = inSector(static_cast<int>(first), sectors, s, v);
    const auto high = inSector(static_cast<int>(last), sectors, s, v);
    return {{hull(low[0], high[0]), hull(low[1], high[1]), hull(low[2], high[2])}};
}

Rgb adjusted(const SceneSample& c, const Settings& settings) {
    Hsv hsv = toHsv(c);
    if (hsv.undefined) return {{}, hsv.undefined};
    hsv.hue = hsv.hue + constant(settings.hue);
    hsv.saturation = hsv.saturation * constant(settings.saturation);
    hsv.value = hsv.value * constant(settings.value);
    return toRgb(hsv);
}

/// The mean over the samples.
Rgb required(const SamplePattern::Values& scene, const Settings& settings, int x, int y, int samples) {
    Rgb sum = adjusted(scene(x, y, 0), settings);
    for (int i = 1; i < samples && !sum.undefined; ++i) {
        const Rgb c = adjusted(scene(x, y, i), settings);
        sum.undefined = c.undefined;
        for (std::size_t lane = 0; lane < 3; ++lane) sum.lanes[lane] = sum.lanes[lane] + c.lanes[lane];
    }
    for (Bounded& lane : sum.lanes) lane = lane / exactly(samples);
    return sum;
}

class ParityOfHSVAdjust : public parity::DisplayParity {
protected:
    ParityOfHSVAdjust() : DisplayParity("Display/HSVAdjust") {}

    support::ParameterPool pool(const Settings& s) const {
        const auto text = krod::VValueTrait<double>::Text;
        return parameters()
            .set("hue", text(s.hue))
            .set("saturation", text(s.saturation))
            .set("value", text(s.value))
            .set("channels", channels(s));
    }

    void expectOracle(const SamplePattern::Values& scene, const Settings& settings) {
        const Picture picture = draw(scene, Side, Side, pool(settings));
        const bool isPlain =
            settings.value == 0 || (settings.saturation == 0 && settings.value == 1 && samples == 1);
        parity::Comparison comparison(isPlain ? 0 : 1);
        for (int y = 0; y < Side; ++y)
            for (int x = 0; x < Side; ++x) addPixel(comparison, picture, scene, settings, x, y);
        EXPECT_TRUE(comparison.verdict("HSVAdjust, " + describe(settings)));
    }

    /// One pixel of one colour, over all samples.
    void expectColour(const Settings& settings, std::array<float, 3> from, std::array<double, 3> to) {
        const krod::RGBAHalf got = drawColour({from[0], from[1], from[2], 1, 0.5F}, pool(settings));
        EXPECT_NEAR(got.r, to[0], Step) << describe(settings);
        EXPECT_NEAR(got.g, to[1], Step) << describe(settings);
        EXPECT_NEAR(got.b, to[2], Step) << describe(settings);
    }

private:
    /// A channel that is off has sample 0's value, and no blending: what the text writes stands there.
    void addPixel(parity::Comparison& comparison, const Picture& picture, const SamplePattern::Values& scene,
                  const Settings& settings, int x, int y) const {
        const Rgb mean = required(scene, settings, x, y, samples);
        const SceneSample first = scene(x, y, 0);
        const krod::RGBAHalf& got = picture.at(x, y);
        const std::string place =
            "pixel " + testing::PrintToString(x) + ", " + testing::PrintToString(y) + ", ";
        const auto add = [&](bool on, std::size_t lane, float own, half_float::half value, const char* name) {
            if (on && mean.undefined) return comparison.leaveOut(mean.undefined);
            comparison.add(on ? mean.lanes[lane] : exactly(own), value, place + name);
        };
        add(settings.red, 0, first.r, got.r, "red");
        add(settings.green, 1, first.g, got.g, "green");
        add(settings.blue, 2, first.b, got.b, "blue");
        comparison.add(exactly(1), got.a, place + "alpha");
    }
};

TEST_F(ParityOfHSVAdjust, HueSatValueFilter_hues_agreeWithOracle) {
    for (const double hue : {0.0, 37.0, 120.0, 180.0, -100.0, -720.0, 359.5}) {
        expectOracle(awkward, {.hue = hue});
        expectOracle(moderate, {.hue = hue});
    }
}

TEST_F(ParityOfHSVAdjust, HueSatValueFilter_hueOfAMillionDegrees_agreesWithOracle) {
    expectOracle(moderate, {.hue = 1e6});
    expectOracle(moderate, {.hue = -1e6});
}

TEST_F(ParityOfHSVAdjust, HueSatValueFilter_saturationsAndValues_agreeWithOracle) {
    for (const Settings& settings :
         {Settings{.saturation = 0}, Settings{.saturation = 0.5}, Settings{.hue = 75, .saturation = 2},
          Settings{.saturation = -1}, Settings{.value = 0},
          Settings{.hue = 10, .saturation = 0.7, .value = 3}, Settings{.hue = -33, .value = -0.1}}) {
        expectOracle(awkward, settings);
        expectOracle(moderate, settings);
    }
}

TEST_F(ParityOfHSVAdjust, HueSatValueFilter_channelsOneByOne_agreeWithOracle) {
    for (const auto& [red, green, blue] :
         {std::array{true, false, false}, {false, true, false}, {false, false, true}, {true, true, false}}) {
        const Settings settings{75, 0.5, 2, red, green, blue};
        expectOracle(awkward, settings);
        expectOracle(moderate, settings);
    }
}

TEST_F(ParityOfHSVAdjust, HueSatValueFilter_initialValues_giveTheMeanOfTheSamples) {
    const Picture picture = draw(moderate, Side, Side);
    for (int y = 0; y < Side; ++y)
        for (int x = 0; x < Side; ++x) {
            float red = 0;
            for (int i = 0; i < samples; ++i) red += moderate(x, y, i).r / static_cast<float>(samples);
            ASSERT_NEAR(picture.at(x, y).r, red, 4 * Step) << x << ", " << y;
        }
}

TEST_F(ParityOfHSVAdjust, HueSatValueFilter_halfATurn_mapsRedToCyan) {
    expectColour({.hue = 180}, {1, 0, 0}, {0, 1, 1});
}

TEST_F(ParityOfHSVAdjust, HueSatValueFilter_hueSumOutsideTheCircle_wraps) {
    expectColour({.hue = 300}, {0, 0, 1}, {0, 1, 1});    // 240 + 300 = 180
    expectColour({.hue = -120}, {1, 0, 0}, {0, 0, 1});   // 240
    expectColour({.hue = -630}, {1, 0, 0}, {0.5, 1, 0}); // 90
}

/// The hue of grey is 0/0, and is not looked at.
TEST_F(ParityOfHSVAdjust, HueSatValueFilter_S6_grey_hasOnlyItsValueChanged) {
    for (const float grey : {-1.0F, 0x1p-24F, 0.25F, 1.0F, 3.0F}) {
        const double v = static_cast<double>(grey);
        expectColour({.hue = 77, .saturation = 2}, {grey, grey, grey}, {v, v, v});
        expectColour({.hue = 77, .saturation = 2, .value = 0.5}, {grey, grey, grey}, {v / 2, v / 2, v / 2});
    }
}

TEST_F(ParityOfHSVAdjust, HueSatValueFilter_saturationZero_givesGreyOfTheLargestComponent) {
    expectColour({.hue = 50, .saturation = 0}, {0.25F, 0.75F, 0.5F}, {0.75, 0.75, 0.75});
    expectColour({.hue = 50, .saturation = 0}, {-1, -0.5F, -2}, {-0.5, -0.5, -0.5});
}

/// The two formulas of a tie agree, since the third component alone differs from the largest; a case that
/// takes both of them, or none, does not.
TEST_F(ParityOfHSVAdjust, HueSatValueFilter_S7_twoLargestComponents_haveTheHueBetweenThem) {
    expectColour({.hue = 30}, {1, 1, 0}, {0.5, 1, 0}); // 60 + 30
    expectColour({.hue = 30}, {0, 1, 1}, {0, 0.5, 1}); // 180 + 30
    expectColour({.hue = 30}, {1, 0, 1}, {1, 0, 0.5}); // 300 + 30
}

TEST_F(ParityOfHSVAdjust, HueSatValueFilter_S1_hueBelowZero_isDrawnAsItIs) {
    expectColour({.hue = -30}, {0, 1, 0}, {0.5, 1, 0}); // 90
}

TEST_F(ParityOfHSVAdjust, HueSatValueFilter_S3_unreadableHue_isOneDegree) {
    const Picture unreadable = drawAwkward(parameters().makeUnreadable("hue"));
    EXPECT_TRUE(unreadable == drawAwkward(pool({.hue = 1})));
    EXPECT_FALSE(unreadable == drawAwkward(pool({.hue = 0})));
}

TEST_F(ParityOfHSVAdjust, HueSatValueFilter_unreadableFactors_areOne) {
    const Picture unreadable = drawAwkward(parameters().makeUnreadable("saturation").makeUnreadable("value"));
    EXPECT_TRUE(unreadable == drawAwkward());
}

TEST_F(ParityOfHSVAdjust, HueSatValueFilter_S4_unreadableChannels_showSampleZeroUnchanged) {
    const Picture picture = drawAwkward(pool({.hue = 75, .value = 2}).makeUnreadable("channels"));
    for (int y = 0; y < Side; ++y)
        for (int x = 0; x < Side; ++x) {
            const SceneSample own = awkward(x, y, 0);
            const krod::RGBAHalf& got = picture.at(x, y);
            ASSERT_EQ((std::array<float, 4>{got.r, got.g, got.b, got.a}),
                      (std::array<float, 4>{own.r, own.g, own.b, 1}))
                << x << ", " << y;
        }
}

TEST_F(ParityOfHSVAdjust, HueSatValueFilter_S8_channelOff_hasSampleZeroAndNoMean) {
    const auto scene = [](int, int, int i) {
        return SceneSample{i == 0 ? 0.25F : 1.0F, 0.5F, 0.125F, 1, 0.5F};
    };
    const krod::RGBAHalf off = draw(scene, 1, 1, pool({.red = false})).at(0, 0);
    EXPECT_EQ(off.r, 0.25F);
    const krod::RGBAHalf on = draw(scene, 1, 1, pool({})).at(0, 0);
    EXPECT_NEAR(on.r, (samples - 0.75) / samples, Step);
}

TEST_F(ParityOfHSVAdjust, HueSatValueFilter_S9_alpha_isOne) {
    const Picture picture = drawAwkward(pool({.hue = 75, .value = 2}));
    for (const krod::RGBAHalf& pixel : picture.pixels) ASSERT_EQ(pixel.a, 1.0F);
}

/// The least depth of the samples is tested against the cleared depth 1; with the test off, or the quad's own
/// depth, all pixels or none would be drawn.
TEST_F(ParityOfHSVAdjust, HueSatValueFilter_S10_depthOne_keepsTheBackground) {
    const auto near = [](int x, int i, int samples) { return x == 1 || (x == 2 && i == samples - 1); };
    draw(moderate, 1, 1);
    const int count = samples;
    const auto scene = [&](int x, int, int i) {
        return SceneSample{0.5F, 0.5F, 0.5F, 0, near(x, i, count) ? 0.875F : 1.0F};
    };
    const Picture picture = draw(scene, 3, 1);
    for (int x = 0; x < 3; ++x) {
        const krod::RGBAHalf& got = picture.at(x, 0);
        const std::array<float, 4> drawn{0.5F, 0.5F, 0.5F, 1};
        EXPECT_EQ((std::array<float, 4>{got.r, got.g, got.b, got.a}), x == 0 ? Background : drawn) << x;
    }
}

TEST_F(ParityOfHSVAdjust, HueSatValueFilter_depthOfTheText_isTheLeastOfAllSamples) { expectLeastDepth(); }

} // namespace

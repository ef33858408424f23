// SPDX-License-Identifier: Apache-2.0
// The pixels of Display/CurveAdjust.
#include "DisplayParity.h"

#include "host/values/VValueTrait.h"

#include <array>
#include <string>

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
    double px = 0.5, py = 0.5;
    bool red = true, green = true, blue = true;

    [[nodiscard]] std::string knee() const {
        return krod::VValueTrait<double>::Text(px) + " " + krod::VValueTrait<double>::Text(py);
    }
    [[nodiscard]] std::string channels() const {
        return std::string(red ? "+1 " : "-1 ") + (green ? "+2 " : "-2 ") + (blue ? "+3" : "-3");
    }
};

/// k1 c below the knee; from there on the reciprocal of k1, with the intercept of the line of slope k2.
Bounded curve(const Bounded& c, const Settings& s) {
    const Bounded one = exactly(1), px = constant(s.px), py = constant(s.py);
    const Bounded k1 = py / px;
    if (c.value < px.value) return k1 * c;
    const Bounded k2 = (py - one) / (px - one);
    return one / k1 * c + (one - k2);
}

/// The mean of the mapped samples, with the alpha of sample 0.
Colour required(const SamplePattern::Values& scene, int x, int y, int samples, const Settings& s) {
    Colour sum{};
    for (int i = 0; i < samples; ++i) {
        const Colour c = exactly(scene(x, y, i));
        sum = sum + Colour{s.red ? curve(c.r, s) : c.r, s.green ? curve(c.g, s) : c.g,
                           s.blue ? curve(c.b, s) : c.b, c.a};
    }
    Colour mean = sum / exactly(samples);
    mean.a = exactly(scene(x, y, 0).a);
    return over(mean);
}

/// The awkward scene without what a curve takes to a segment that has no value.
SceneSample belowOne(int x, int y, int sample) {
    SceneSample s = parity::awkward(x, y, sample);
    for (float* const c : {&s.r, &s.g, &s.b})
        if (*c >= 1) *c = 0x1p-10F * static_cast<float>((x + y + sample) % 1024);
    return s;
}
SceneSample quarters(int x, int y, int sample) {
    const SceneSample s = belowOne(x, y, sample);
    return {s.r / 4, s.g / 4, s.b / 4, s.a, s.depth};
}
SceneSample fromOneOn(int x, int y, int sample) {
    SceneSample s = parity::awkward(x, y, sample);
    for (float* const c : {&s.r, &s.g, &s.b})
        if (*c < 1) *c = 1 + 0x1p-10F * static_cast<float>((x + y + sample) % 1024);
    return s;
}

class ParityOfCurveAdjust : public parity::DisplayParity {
protected:
    ParityOfCurveAdjust() : DisplayParity("Display/CurveAdjust") {}

    Picture drawWith(const SamplePattern::Values& scene, const Settings& s) {
        return draw(scene, Side, Side, parameters().set("p", s.knee()).set("channels", s.channels()));
    }
    void compare(const Settings& s, const SamplePattern::Values& scene = parity::awkward, double limit = 1) {
        const Picture picture = drawWith(scene, s);
        parity::Comparison comparison(limit);
        addPicture(comparison, picture, [&](int x, int y) { return required(scene, x, y, samples, s); });
        EXPECT_TRUE(comparison.verdict("CurveAdjust, p " + s.knee() + ", channels " + s.channels() + ", " +
                                       testing::PrintToString(samples) + " samples"));
    }
};

TEST_F(ParityOfCurveAdjust, CurvesFilter_everyKnee_agreeWithOracle) {
    compare({0.5, 0.5});
    compare({0.3, 0.6});
    compare({0.8, 0.1});
    compare({0.3, 0.6}, parity::moderate);
    compare({0.8, 0.1}, parity::moderate);
    compare({1.5, -0.5}, parity::moderate);
}

TEST_F(ParityOfCurveAdjust, CurvesFilter_eachChannel_isSwitchedByItsFlag) {
    for (const auto& [red, green, blue] :
         {std::array{true, false, false}, {false, true, false}, {false, false, true}, {false, false, false}})
        compare({0.3, 0.6, red, green, blue});
}

TEST_F(ParityOfCurveAdjust, CurvesFilter_initialParameters_leaveTheColoursAsTheyAre) {
    EXPECT_TRUE(drawAwkward() == drawWith(parity::awkward, {0.5, 0.5, false, false, false}));
}

TEST_F(ParityOfCurveAdjust, CurvesFilter_initialChannels_areAllOn) {
    EXPECT_TRUE(drawAwkward(parameters().set("p", "0.3 0.6")) == drawWith(parity::awkward, {0.3, 0.6}));
}

/// At the knee (0.25, 0.5) the lower segment comes to 0.5, the upper one begins at 0.25 / 2 + 1 - 0.5 / 0.75.
TEST_F(ParityOfCurveAdjust, CurvesFilter_V1_segments_doNotMeetAtTheKnee) {
    const auto pool = parameters().set("p", "0.25 0.5");
    const auto mapped = [&](float c) { return static_cast<double>(drawColour({c, 0, 0, 1}, pool).r); };
    EXPECT_NEAR(mapped(0.25F - 0x1p-12F), 0.5, 0x1p-10);
    EXPECT_NEAR(mapped(0.25F), 0.125 + 1 - 0.5 / 0.75, 0x1p-11);
    EXPECT_NEAR(mapped(1), 0.5 + 1 - 0.5 / 0.75, 0x1p-10);
}

TEST_F(ParityOfCurveAdjust, CurvesFilter_V2_kneeOnAnEdge_isDrawnAndComparedWhereItIsDefined) {
    compare({1, 0.5}, belowOne);    // no upper intercept
    compare({0.5, 0}, quarters, 0); // no reciprocal of 0, but 0 below the knee
    compare({0.5, 1}, fromOneOn);
    compare({0.5, 1});
}

/// Nothing of a colour that goes through the curve is defined; what does not, is as ever.
TEST_F(ParityOfCurveAdjust, CurvesFilter_V2_kneeAtZero_leavesAlphaAndOtherChannelsAlone) {
    for (const Settings& s : {Settings{0, 0.5, false, true, true}, Settings{0, 0, false, true, true},
                              Settings{0, 1, false, true, true}}) {
        const Picture picture = drawWith(parity::awkward, s);
        const Picture plain = drawWith(parity::awkward, {0.5, 0.5, false, false, false});
        for (int y = 0; y < Side; ++y)
            for (int x = 0; x < Side; ++x) {
                ASSERT_EQ(picture.at(x, y).r, plain.at(x, y).r) << s.knee() << ", pixel " << x << ", " << y;
                ASSERT_EQ(picture.at(x, y).a, plain.at(x, y).a) << s.knee() << ", pixel " << x << ", " << y;
            }
    }
}

TEST_F(ParityOfCurveAdjust, CurvesFilter_V3_alpha_isThatOfSampleZero) {
    const auto scene = [](int, int, int sample) { return SceneSample{0, 0, 0, sample == 0 ? 0.25F : 1.0F}; };
    const krod::RGBAHalf got = draw(scene, 1, 1).at(0, 0);
    EXPECT_EQ(got.a, 0.25F * 0.25F + parity::Background[3] * 0.75F);
    EXPECT_EQ(got.r, parity::Background[0] * 0.75F);
}

TEST_F(ParityOfCurveAdjust, CurvesFilter_V6_unreadableChannels_areOff) {
    const Picture unreadable = drawAwkward(parameters().set("p", "0.3 0.6").makeUnreadable("channels"));
    EXPECT_TRUE(unreadable == drawWith(parity::awkward, {0.3, 0.6, false, false, false}));
    EXPECT_FALSE(unreadable == drawWith(parity::awkward, {0.3, 0.6}));
}

TEST_F(ParityOfCurveAdjust, CurvesFilter_V7_initialSamples_areAsManyAsTheDriverGrantsOfEight) {
    drawAwkward();
    const int initial = samples;
    drawAwkward(parameters().set("samples", "8"));
    EXPECT_EQ(samples, initial);
}

TEST_F(ParityOfCurveAdjust, CurvesFilter_depthOfTheText_isTheLeastOfAllSamples) { expectLeastDepth(); }

} // namespace

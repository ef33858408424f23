// SPDX-License-Identifier: Apache-2.0
// The texts of Display/CurveAdjust.
#include "DisplayTexts.h"

namespace {

/// The five constants before the body.
std::string constants(const std::string& px, const std::string& py, const std::string& r = "true",
                      const std::string& g = "true", const std::string& b = "true") {
    return "const float px = " + px + ";\nconst float py = " + py + ";\nconst bool do_r = " + r +
           ";\nconst bool do_g = " + g + ";\nconst bool do_b = " + b + ";\n";
}

class TextOfCurves : public DisplayTexts {
protected:
    TextOfCurves() : DisplayTexts("Display/CurveAdjust", "CurvesFilter.frag") {}
};

TEST_F(TextOfCurves, CurvesFilter_defaults_constantsBeforeBody) {
    EXPECT_TRUE(golden.match("CurvesFilter/defaults.frag", fragment()));
    EXPECT_EQ(prefix(), constants("0.5", "0.5"));
}

TEST_F(TextOfCurves, CurvesFilter_knee_componentsGoToTheirConstants) {
    EXPECT_EQ(prefix(pool.set("p", "0.25 0.1")), constants("0.25", "0.1"));
    EXPECT_EQ(prefix(pool.set("p", "0.1 0.30000000000000004")), constants("0.1", "0.30000000000000004"));
}

TEST_F(TextOfCurves, CurvesFilter_channels_switchTheirOwnConstant) {
    const auto given = [this](const std::string& flags) { return prefix(pool.set("channels", flags)); };
    EXPECT_EQ(given("-1 +2 +3"), constants("0.5", "0.5", "false", "true", "true"));
    EXPECT_EQ(given("+1 -2 +3"), constants("0.5", "0.5", "true", "false", "true"));
    EXPECT_EQ(given("+1 +2 -3"), constants("0.5", "0.5", "true", "true", "false"));
    EXPECT_EQ(given("-1 -2 -3"), constants("0.5", "0.5", "false", "false", "false"));
    EXPECT_EQ(given("+3 -2 +1"), constants("0.5", "0.5", "true", "false", "true"));
}

TEST_F(TextOfCurves, CurvesFilter_channelThatIsNotListed_isOff) {
    EXPECT_EQ(prefix(pool.set("channels", "+2 +4")), constants("0.5", "0.5", "false", "true", "false"));
    EXPECT_EQ(prefix(pool.set("channels", "")), constants("0.5", "0.5", "false", "false", "false"));
}

TEST_F(TextOfCurves, CurvesFilter_unreadableKnee_isTheMiddle) {
    support::setParameter(*display, "p", "0.25 0.75");
    EXPECT_EQ(prefix(pool.makeUnreadable("p")), constants("0.5", "0.5"));
}

TEST_F(TextOfCurves, CurvesFilter_everyParameterUnreadable_middleAndNoChannel) {
    support::setParameter(*display, "p", "0.25 0.75");
    for (const char* parameter : {"samples", "InputVisibility", "p", "channels"})
        pool.makeUnreadable(parameter);
    EXPECT_EQ(prefix(pool), constants("0.5", "0.5", "false", "false", "false"));
}

TEST_F(TextOfCurves, CurvesFilter_V1_upperSegmentHasTheReciprocalSlopeAndAnotherIntercept) {
    const std::string text = fragment();
    EXPECT_TRUE(contains(text, "float\tk1 = py / px;\nfloat\tk2 = (py - 1) / (px - 1);\n"
                               "float\td2 = 1 - k2;\n"));
    for (const std::string c : {"r", "g", "b"})
        EXPECT_TRUE(contains(text, "\tif (do_" + c + ")\n\t\tcol." + c + " = col." + c + " < px ? k1 * col." +
                                       c + " : 1./k1 * col." + c + " + d2;\n"));
}

TEST_F(TextOfCurves, CurvesFilter_V2_knee_isNotClamped) {
    const auto given = [this](const std::string& knee) { return prefix(pool.set("p", knee)); };
    EXPECT_EQ(given("0 0"), constants("0.0", "0.0"));
    EXPECT_EQ(given("1 1"), constants("1.0", "1.0"));
    EXPECT_EQ(given("-0.25 -3"), constants("-0.25", "-3.0"));
    EXPECT_EQ(given("2 17.5"), constants("2.0", "17.5"));
    EXPECT_EQ(given("1e-300 1e300"), constants("1e-300", "1e+300"));
    EXPECT_EQ(slot("p"), "0.5 0.5, level 0");
}

TEST_F(TextOfCurves, CurvesFilter_V3_alphaIsThatOfSampleZero) {
    const std::string text = fragment();
    EXPECT_TRUE(contains(text, "vec4\tColor = texelFetch(SceneColor, P, 0);\n"));
    EXPECT_TRUE(contains(text, "\t\tColor.xyz += C.xyz;\n"));
    EXPECT_TRUE(contains(text, "\tColor.xyz /= float(max(Sampled, 1));\n\n\tgl_FragColor = Color;\n"));
    EXPECT_FALSE(contains(text, ".a"));
}

TEST_F(TextOfCurves, CurvesFilter_V4_optionsAreNotDeclared) { EXPECT_EQ(slot("options"), "not declared"); }

TEST_F(TextOfCurves, CurvesFilter_V6_unreadableChannels_areOffThoughTheyStartOn) {
    EXPECT_EQ(slot("channels"), "+1 +2 +3, level 0");
    EXPECT_EQ(prefix(pool.makeUnreadable("channels")), constants("0.5", "0.5", "false", "false", "false"));
}

TEST_F(TextOfCurves, CurvesFilter_V7_samplesStartAtEightForEverybody) {
    EXPECT_EQ(slot("samples"), "8, max 16, level 0");
    EXPECT_EQ(requestedSamples(), 8);
    EXPECT_EQ(requestedSamples(pool.set("samples", "3")), 3);
    EXPECT_EQ(requestedSamples(pool.makeUnreadable("samples")), 8);
}

TEST_F(TextOfCurves, CurvesFilter_V8_rendererIsCalledHDRDeferredRenderer) {
    EXPECT_TRUE(contains(rendererName(), "CurvesFilter::HDRDeferredRenderer"));
}

} // namespace

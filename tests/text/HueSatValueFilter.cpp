// SPDX-License-Identifier: Apache-2.0
// The texts of Display/HSVAdjust.
#include "DisplayTexts.h"

namespace {

/// The six constants before the body.
std::string constants(const std::string& hue, const std::string& saturation, const std::string& value,
                      const std::string& r = "true", const std::string& g = "true",
                      const std::string& b = "true") {
    return "const float hue = " + hue + ";\nconst float saturation = " + saturation +
           ";\nconst float value = " + value + ";\nconst bool do_r = " + r + ";\nconst bool do_g = " + g +
           ";\nconst bool do_b = " + b + ";\n";
}

class TextOfHSV : public DisplayTexts {
protected:
    TextOfHSV() : DisplayTexts("Display/HSVAdjust", "HueSatValueFiler.frag") {}
};

TEST_F(TextOfHSV, HueSatValueFilter_defaults_constantsBeforeBody) {
    EXPECT_TRUE(golden.match("HueSatValueFilter/defaults.frag", fragment()));
    EXPECT_EQ(prefix(), constants("0.0", "1.0", "1.0"));
}

TEST_F(TextOfHSV, HueSatValueFilter_hues_areDegreesAsTheyAre) {
    EXPECT_EQ(prefix(pool.set("hue", "180")), constants("180.0", "1.0", "1.0"));
    EXPECT_EQ(prefix(pool.set("hue", "-720")), constants("-720.0", "1.0", "1.0"));
    EXPECT_EQ(prefix(pool.set("hue", "0.1")), constants("0.1", "1.0", "1.0"));
}

TEST_F(TextOfHSV, HueSatValueFilter_factors_goToTheirConstantsUnclamped) {
    EXPECT_EQ(prefix(pool.set("saturation", "0").set("value", "-2.5")), constants("0.0", "0.0", "-2.5"));
    EXPECT_EQ(prefix(pool.set("saturation", "1e-300").set("value", "1e300")),
              constants("0.0", "1e-300", "1e+300"));
}

TEST_F(TextOfHSV, HueSatValueFilter_channels_switchTheirOwnConstant) {
    const auto given = [this](const std::string& flags) { return prefix(pool.set("channels", flags)); };
    EXPECT_EQ(given("-1 +2 +3"), constants("0.0", "1.0", "1.0", "false", "true", "true"));
    EXPECT_EQ(given("+1 -2 +3"), constants("0.0", "1.0", "1.0", "true", "false", "true"));
    EXPECT_EQ(given("+1 +2 -3"), constants("0.0", "1.0", "1.0", "true", "true", "false"));
    EXPECT_EQ(given("-1 -2 -3"), constants("0.0", "1.0", "1.0", "false", "false", "false"));
    EXPECT_EQ(given("+3 -2 +1"), constants("0.0", "1.0", "1.0", "true", "false", "true"));
}

TEST_F(TextOfHSV, HueSatValueFilter_channelThatIsNotListed_isOff) {
    EXPECT_EQ(prefix(pool.set("channels", "+2 +4")),
              constants("0.0", "1.0", "1.0", "false", "true", "false"));
    EXPECT_EQ(prefix(pool.set("channels", "")), constants("0.0", "1.0", "1.0", "false", "false", "false"));
}

TEST_F(TextOfHSV, HueSatValueFilter_unreadableFactors_countAsOne) {
    support::setParameter(*display, "saturation", "0.25");
    support::setParameter(*display, "value", "4");
    support::ParameterPool noSaturation(*display), noValue(*display);
    EXPECT_EQ(prefix(noSaturation.makeUnreadable("saturation")), constants("0.0", "1.0", "4.0"));
    EXPECT_EQ(prefix(noValue.makeUnreadable("value")), constants("0.0", "0.25", "1.0"));
}

TEST_F(TextOfHSV, HueSatValueFilter_everyParameterUnreadable_onesAndNoChannel) {
    for (const char* parameter : {"hue", "saturation", "value"})
        support::setParameter(*display, parameter, "0.25");
    for (const auto& input : display->slots().inputs()) pool.makeUnreadable(input.name);
    EXPECT_EQ(prefix(pool), constants("1.0", "1.0", "1.0", "false", "false", "false"));
}

TEST_F(TextOfHSV, HueSatValueFilter_S1_hueHasAMaximumThatDoesNotHoldAndNoMinimum) {
    EXPECT_EQ(slot("hue"), "0.0, max 180.0, level 0");
    EXPECT_EQ(prefix(pool.set("hue", "1e300")), constants("1e+300", "1.0", "1.0"));
    EXPECT_EQ(prefix(pool.set("hue", "180.00000000000003")), constants("180.00000000000003", "1.0", "1.0"));
}

TEST_F(TextOfHSV, HueSatValueFilter_S2_samplesStartAtEightForEverybody) {
    EXPECT_EQ(slot("samples"), "8, max 16, level 0");
    EXPECT_EQ(requestedSamples(), 8);
    EXPECT_EQ(requestedSamples(pool.set("samples", "3")), 3);
    EXPECT_EQ(requestedSamples(pool.makeUnreadable("samples")), 8);
}

TEST_F(TextOfHSV, HueSatValueFilter_S3_unreadableHue_countsAsOneDegreeThoughItStartsAtZero) {
    EXPECT_EQ(prefix(pool.makeUnreadable("hue")), constants("1.0", "1.0", "1.0"));
}

TEST_F(TextOfHSV, HueSatValueFilter_S4_unreadableChannels_areOffThoughTheyStartOn) {
    EXPECT_EQ(slot("channels"), "+1 +2 +3, level 0");
    EXPECT_EQ(prefix(pool.makeUnreadable("channels")),
              constants("0.0", "1.0", "1.0", "false", "false", "false"));
}

TEST_F(TextOfHSV, HueSatValueFilter_S5_fileThatMayReplaceTheBody_lacksALetterOfItsSource) {
    support::writeFile(folder / "HueSatValueFilter.frag", "void main() { discard; }\n");
    EXPECT_TRUE(golden.match("HueSatValueFilter/defaults.frag", fragment()));
    support::writeFile(folder / "HueSatValueFiler.frag", "void main() {}\n");
    EXPECT_EQ(fragment(), VersionLine + constants("0.0", "1.0", "1.0") + "void main() {}\n");
}

TEST_F(TextOfHSV, HueSatValueFilter_S6_conversionToHSVHasNeitherBranchNorGuard) {
    const std::string text = fragment();
    const std::string conversion = text.substr(0, text.find("vec3 HSVtoRGB"));
    EXPECT_FALSE(contains(conversion, "if ("));
    EXPECT_FALSE(contains(conversion, "?"));
    for (const char* line : {"float\tbr1 = 1.0 - abs(sign(maxv));\n\tres.y = mix(delta / maxv, 0.0, br1);\n"
                             "\tres.x = mix(res.x, -1.0, br1);\n",
                             "\tres.x = mix((g - b) / delta, res.x, max(br2, br1));\n",
                             "\tres.x = mix(2.0 + (b - r) / delta, res.x, max(br3, br1));\n",
                             "\tres.x = mix(4.0 + (r - g) / delta, res.x, max(br4, br1));\n"})
        EXPECT_TRUE(contains(conversion, line));
}

TEST_F(TextOfHSV, HueSatValueFilter_S7_greensFormulaComesAfterRedsAndWinsTheTie) {
    EXPECT_TRUE(contains(fragment(), "float\tbr2 = abs(sign(r - maxv));\n"
                                     "\tres.x = mix((g - b) / delta, res.x, max(br2, br1));\n\n"
                                     "float\tbr3 = abs(sign(g - maxv));\n"
                                     "\tres.x = mix(2.0 + (b - r) / delta, res.x, max(br3, br1));\n\n"
                                     "float\tbr4 = 1.0 - br2 * br3;\n"));
}

TEST_F(TextOfHSV, HueSatValueFilter_S8_channelThatIsOffTakesSampleZeroItself) {
    EXPECT_TRUE(contains(fragment(), "vec4\tColor = texelFetch(SceneColor, P, 0);\n"));
    EXPECT_TRUE(contains(fragment(), "\tResColor.rgb = ResColor.rgb / float(max(Sampled, 1));\n\n"
                                     "\tif (!do_r)\n\t\tResColor.r = Color.r;\n"
                                     "\tif (!do_g)\n\t\tResColor.g = Color.g;\n"
                                     "\tif (!do_b)\n\t\tResColor.b = Color.b;\n\n"
                                     "\tgl_FragColor = ResColor;\n"));
}

TEST_F(TextOfHSV, HueSatValueFilter_S9_alphaStaysOne) {
    EXPECT_TRUE(contains(fragment(), "vec4\tResColor = vec4(1.0, 1.0, 1.0, 1.0);\n"));
    EXPECT_TRUE(contains(fragment(), "\t\tResColor.rgb += HSVtoRGB(C2);\n"));
    EXPECT_FALSE(contains(fragment(), ".a"));
}

TEST_F(TextOfHSV, HueSatValueFilter_S12_optionsAreNotDeclared) { EXPECT_EQ(slot("options"), "not declared"); }

TEST_F(TextOfHSV, HueSatValueFilter_S13_rendererIsCalledHDRDeferredRenderer) {
    EXPECT_TRUE(contains(rendererName(), "HueSatValueFilter::HDRDeferredRenderer"));
}

} // namespace

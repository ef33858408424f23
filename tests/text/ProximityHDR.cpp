// SPDX-License-Identifier: Apache-2.0
// The texts of Display/ProximityHDR.
#include "DisplayTexts.h"

namespace {

class TextOfProximity : public DisplayTexts {
protected:
    TextOfProximity() : DisplayTexts("Display/ProximityHDR", "ProximityHDR.frag") {}

    static inline const std::string NineTaps =
        "const float weight[] = float[](\n0.25, 0.5, 0.25, \n0.5, 1.0, 0.5, \n0.25, 0.5, 0.25\n);\n\n"
        "const int iX[] = int[](\n-1, 0, 1, \n-1, 0, 1, \n-1, 0, 1\n);\n\n"
        "const int iY[] = int[](\n-1, -1, -1, \n0, 0, 0, \n1, 1, 1\n);\n\n";
};

TEST_F(TextOfProximity, ProximityHDR_defaults_threeArraysBeforeBody) {
    EXPECT_TRUE(golden.match("ProximityHDR/defaults.frag", fragment()));
    EXPECT_EQ(prefix(), NineTaps);
}

TEST_F(TextOfProximity, ProximityHDR_width_isTheRadiusOfTheNeighbourhood) {
    EXPECT_TRUE(golden.match("ProximityHDR/width5.prefix", prefix(pool.set("width", "5"))));
}

TEST_F(TextOfProximity, ProximityHDR_uniforms_leaveTextAlone) {
    const std::string builtIn = fragment();
    for (const char* value : {"1", "-1", "15", "1e-300", "1e300"}) {
        pool.set("strength", value).set("gamma", value).set("brightness", value);
        EXPECT_EQ(fragment(pool), builtIn) << value;
    }
    pool.makeUnreadable("strength").makeUnreadable("gamma").makeUnreadable("brightness");
    EXPECT_EQ(fragment(pool), builtIn);
}

TEST_F(TextOfProximity, ProximityHDR_unreadableWidth_countsAsOne) {
    support::setParameter(*display, "width", "5");
    EXPECT_NE(prefix(), NineTaps);
    EXPECT_EQ(prefix(pool.makeUnreadable("width")), NineTaps);
}

TEST_F(TextOfProximity, ProximityHDR_everyParameterUnreadable_textOfTheDefaults) {
    support::setParameter(*display, "width", "5");
    for (const auto& input : display->slots().inputs()) pool.makeUnreadable(input.name);
    EXPECT_TRUE(golden.match("ProximityHDR/defaults.frag", fragment(pool)));
}

TEST_F(TextOfProximity, ProximityHDR_X1_gammaAndBrightnessHaveAMaximumAndNoMinimum) {
    EXPECT_EQ(slot("gamma"), "1.0, max 15.0, level 0");
    EXPECT_EQ(slot("brightness"), "1.0, max 10.0, level 0");
}

TEST_F(TextOfProximity, ProximityHDR_X2_optionsHaveExpertLevelOne) {
    EXPECT_EQ(slot("options"), "-glow, level 1");
}

TEST_F(TextOfProximity, ProximityHDR_X4_widthStartsAtOneAndZeroIsOneToo) {
    EXPECT_EQ(slot("width"), "1, min 0, max 5, level 1");
    for (const char* width : {"0", "1", "-1", "-2147483648"})
        EXPECT_EQ(prefix(pool.set("width", width)), NineTaps) << width;
}

TEST_F(TextOfProximity, ProximityHDR_X4_widthBeyondItsMaximum_isNotClamped) {
    EXPECT_TRUE(golden.match("ProximityHDR/width6.prefix", prefix(pool.set("width", "6"))));
}

TEST_F(TextOfProximity, ProximityHDR_X5_averageIsComputedAndUsedOnlyWhereItIsSwitchedOff) {
    EXPECT_TRUE(
        contains(fragment(), "\t\tavgColor += weight[i] * Pixel;\n\t}\n\n\tavgColor = avgColor / W;\n"));
    EXPECT_TRUE(
        contains(fragment(), "\treturn pow(Pixel * F / Luminance, vec4(gamma, gamma, gamma, gamma));"));
}

TEST_F(TextOfProximity, ProximityHDR_X6_alphaIsScaledAndRaisedLikeTheColours) {
    EXPECT_TRUE(contains(fragment(), "vec4\tPixel = brightness * texelFetch(SceneColor, P, 0);\n"));
    EXPECT_TRUE(contains(fragment(), "pow(Pixel * F / Luminance, vec4(gamma, gamma, gamma, gamma))"));
    EXPECT_FALSE(contains(fragment(), ".a"));
}

TEST_F(TextOfProximity, ProximityHDR_X7_quotientAndPowerHaveNoGuard) {
    EXPECT_TRUE(
        contains(fragment(), "float\tF = maxL / (1 + maxL);\n\n\treturn pow(Pixel * F / Luminance, "));
    EXPECT_FALSE(contains(fragment(), "if ("));
    EXPECT_FALSE(contains(fragment(), "?"));
}

TEST_F(TextOfProximity, ProximityHDR_X8_everySampleRepeatsTheNeighbourhoodOfSampleZero) {
    EXPECT_TRUE(contains(fragment(), "vec4\tPixel = brightness * texelFetch(SceneColor, "
                                     "ivec2(P.x + iX[i], P.y + iY[i]), 0);\n"));
    EXPECT_TRUE(contains(fragment(),
                         "\tfor(int i=1; i<NumberOfSamples; i++)\n\t{\n\t\tColor += getColor(P);\n"
                         "\t\tDepth = min(Depth, texelFetch(SceneDepth, P, i).r);\n"
                         "\t\tSampled += 1;\n\t}\n"));
}

TEST_F(TextOfProximity, ProximityHDR_X9_variableIsCalledLuminanceLikeItsFunction) {
    EXPECT_TRUE(contains(fragment(),
                         "float Luminance(vec4 Pixel)\n{\n"
                         "\treturn max(Pixel.r, max(Pixel.g, Pixel.b)) / pow(10, strength);\n}\n"));
    EXPECT_TRUE(contains(fragment(), "\nfloat\tLuminance = Luminance(Pixel);\n"));
}

TEST_F(TextOfProximity, ProximityHDR_X10_twoAlternativesAreSwitchedOff) {
    EXPECT_TRUE(contains(fragment(), "#if\t0\nfloat\tmaxL = max(avgColor.r, max(avgColor.g, avgColor.b));\n"
                                     "#elif\t1\nfloat\tmaxL = maxLuminance;\n"
                                     "#else\nfloat\tmaxL = Luminance;\n#endif\n"));
}

TEST_F(TextOfProximity, ProximityHDR_X11_outputIsCalledFragmentColor) {
    EXPECT_TRUE(contains(fragment(), "\nout vec4\tFragmentColor;\n"));
    EXPECT_TRUE(contains(fragment(), "\tFragmentColor = Color / float(max(Sampled, 1));\n"));
    EXPECT_FALSE(contains(fragment(), "gl_FragColor"));
}

TEST_F(TextOfProximity, ProximityHDR_X14_unreadableSamples_countAsEightThoughTheyStartAtOne) {
    EXPECT_EQ(slot("samples"), "1, max 16, level 2");
    EXPECT_EQ(requestedSamples(), 1);
    EXPECT_EQ(requestedSamples(pool.makeUnreadable("samples")), 8);
}

/// 1 - 3/5 would be 0.4 and its product with 1 - 3/5 0.16.
TEST_F(TextOfProximity, ProximityHDR_X16_weights_areMultiplesOfOneStep) {
    EXPECT_TRUE(contains(prefix(pool.set("width", "4")), "\n0.07999999999999996, 0.15999999999999992, "));
}

} // namespace

// SPDX-License-Identifier: Apache-2.0
// The texts of Display/PixelContours.
#include "DisplayTexts.h"
#include "workbench/core/CreatorRegistry.h"

namespace {

class TextOfContours : public DisplayTexts {
protected:
    TextOfContours() : DisplayTexts("Display/PixelContours", "PixelContours.frag") {}

    static inline const std::string NineTaps =
        "const float weight[] = float[](\n0.25, 0.5, 0.25, \n0.5, 1.0, 0.5, \n0.25, 0.5, 0.25\n);\n\n"
        "const int iX[] = int[](\n-1, 0, 1, \n-1, 0, 1, \n-1, 0, 1\n);\n\n"
        "const int iY[] = int[](\n-1, -1, -1, \n0, 0, 0, \n1, 1, 1\n);\n\n";
};

TEST_F(TextOfContours, PixelContours_defaults_threeArraysBeforeBody) {
    EXPECT_TRUE(golden.match("PixelContours/defaults.frag", fragment()));
    EXPECT_EQ(prefix(), NineTaps);
}

TEST_F(TextOfContours, PixelContours_widths_areRadiiOfTheNeighbourhood) {
    for (const std::string width : {"2", "3", "4", "5"})
        EXPECT_TRUE(
            golden.match("PixelContours/width" + width + ".prefix", prefix(pool.set("width", width))));
}

TEST_F(TextOfContours, PixelContours_uniforms_leaveTextAlone) {
    const std::string builtIn = fragment();
    for (const char* value : {"1", "-1", "1e-300", "1e300"})
        EXPECT_EQ(fragment(pool.set("strength", value).set("luminance", value)), builtIn) << value;
    EXPECT_EQ(fragment(pool.makeUnreadable("strength").makeUnreadable("luminance")), builtIn);
}

TEST_F(TextOfContours, PixelContours_unreadableWidth_countsAsZero) {
    support::setParameter(*display, "width", "5");
    EXPECT_NE(prefix(), NineTaps);
    EXPECT_EQ(prefix(pool.makeUnreadable("width")), NineTaps);
}

TEST_F(TextOfContours, PixelContours_everyParameterUnreadable_textOfTheDefaults) {
    support::setParameter(*display, "width", "5");
    for (const auto& input : display->slots().inputs()) pool.makeUnreadable(input.name);
    EXPECT_TRUE(golden.match("PixelContours/defaults.frag", fragment(pool)));
}

TEST_F(TextOfContours, PixelContours_P1_creatorHasNoGroupAndNoDescriptions) {
    const auto found = workbench::CreatorRegistry::find("Display/PixelContours");
    ASSERT_EQ(found.size(), 1U);
    const krod::VCreatorProperties& told = found[0].creator->properties();
    for (const auto& text : {told.group, told.help, told.description}) EXPECT_FALSE(text) << *text;
}

TEST_F(TextOfContours, PixelContours_P3_widthZero_isWidthOne) {
    EXPECT_EQ(slot("width"), "0, min 0, max 5, level 1");
    for (const char* width : {"0", "1", "-1", "-2147483648"})
        EXPECT_EQ(prefix(pool.set("width", width)), NineTaps) << width;
}

TEST_F(TextOfContours, PixelContours_P4_widthBeyondItsMaximum_isNotClamped) {
    EXPECT_TRUE(golden.match("PixelContours/width7.prefix", prefix(pool.set("width", "7"))));
}

TEST_F(TextOfContours, PixelContours_P4_weights_areNormalisedByTheShaderOnly) {
    EXPECT_TRUE(contains(prefix(), "\n0.5, 1.0, 0.5, \n"));
    EXPECT_TRUE(contains(fragment(), "\t\tW += weight[i];\n\t\tavgColor += weight[i] * Pixel;\n\t}\n\n"
                                     "\tavgColor = avgColor / W;\n"));
}

TEST_F(TextOfContours, PixelContours_P5_alphaTakesPartInAverageAndDifference) {
    EXPECT_TRUE(contains(fragment(), "vec4\tavgColor = vec4(0.0, 0.0, 0.0, 0.0);\n"));
    EXPECT_TRUE(contains(fragment(), "vec4\tNewColor = CentralColor - Strength * avgColor;\n"));
    EXPECT_FALSE(contains(fragment(), ".a;"));
}

TEST_F(TextOfContours, PixelContours_P6_everySampleRepeatsTheNeighbourhoodOfSampleZero) {
    EXPECT_TRUE(contains(fragment(), "texelFetch(SceneColor, ivec2(P.x + iX[i], P.y + iY[i]), 0);\n"));
    EXPECT_TRUE(contains(fragment(), "vec4\tCentralColor = texelFetch(SceneColor, P, 0);\n"));
    EXPECT_TRUE(contains(fragment(),
                         "\tfor(int i=1; i<NumberOfSamples; i++)\n\t{\n\t\tColor += getColor(P);\n"
                         "\t\tDepth = min(Depth, texelFetch(SceneDepth, P, i).r);\n"
                         "\t\tSampled += 1;\n\t}\n"));
}

TEST_F(TextOfContours, PixelContours_P7_quotientOfLuminancesHasNoGuard) {
    EXPECT_TRUE(contains(fragment(),
                         "float\tLFactor = mix(1.0, Luminance(CentralColor) / Luminance(NewColor), "
                         "LuminanceSustainbilityFactor);\n"));
    EXPECT_FALSE(contains(fragment(), "if ("));
}

TEST_F(TextOfContours, PixelContours_P8_neighboursOutsideAreFetchedAsTheyAre) {
    EXPECT_TRUE(contains(fragment(), "vec4\tPixel = texelFetch(SceneColor, "
                                     "ivec2(P.x + iX[i], P.y + iY[i]), 0);\n"));
    EXPECT_FALSE(contains(fragment(), "clamp"));
    EXPECT_FALSE(contains(fragment(), "textureSize"));
}

TEST_F(TextOfContours, PixelContours_P9_uniformOfLuminance_isCalledLuminanceSustainbilityFactor) {
    EXPECT_TRUE(contains(fragment(), "\nuniform float\tstrength;\n"
                                     "uniform float\tLuminanceSustainbilityFactor;\n"));
    EXPECT_EQ(slot("luminance"), "0.0, level 0");
}

TEST_F(TextOfContours, PixelContours_P10_outputIsCalledFragmentColor) {
    EXPECT_TRUE(contains(fragment(), "\nout vec4\tFragmentColor;\n"));
    EXPECT_TRUE(contains(fragment(), "\tFragmentColor = Color / float(max(Sampled, 1));\n"));
    EXPECT_FALSE(contains(fragment(), "gl_FragColor"));
}

TEST_F(TextOfContours, PixelContours_P12_unreadableSamples_countAsEightThoughTheyStartAtOne) {
    EXPECT_EQ(slot("samples"), "1, max 16, level 2");
    EXPECT_EQ(requestedSamples(), 1);
    EXPECT_EQ(requestedSamples(pool.makeUnreadable("samples")), 8);
}

/// 1 - 3/5 would be 0.4 and its product with 1 - 3/5 0.16.
TEST_F(TextOfContours, PixelContours_P13_weights_areMultiplesOfOneStep) {
    EXPECT_TRUE(contains(prefix(pool.set("width", "4")), "\n0.07999999999999996, 0.15999999999999992, "));
}

} // namespace

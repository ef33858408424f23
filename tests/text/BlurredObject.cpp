// SPDX-License-Identifier: Apache-2.0
// The texts of Display/Blurred.
#include "DisplayTexts.h"

#include <limits>

namespace {

class TextOfBlurred : public DisplayTexts {
protected:
    TextOfBlurred() : DisplayTexts("Display/Blurred", "BlurredObject.frag") {}

    static inline const std::string ThreeTaps =
        "const\tint\thorizontal = 1;\n"
        "const float filter[] = float[](0.33333333333333337, 1.0, 0.33333333333333337);\n";
};

TEST_F(TextOfBlurred, BlurredObject_defaults_directionAndThreeTapsBeforeBody) {
    EXPECT_TRUE(golden.match("BlurredObject/defaults.frag", fragment()));
    EXPECT_EQ(prefix(), ThreeTaps);
}

TEST_F(TextOfBlurred, BlurredObject_widths_withinAndBeyondTheirLimits) {
    for (const std::string width : {"3", "3.9", "4", "5", "20", "25"})
        EXPECT_TRUE(
            golden.match("BlurredObject/width" + width + ".prefix", prefix(pool.set("width", width))));
}

TEST_F(TextOfBlurred, BlurredObject_exponents_atTheirLimits) {
    for (const std::string width : {"3", "4", "20"})
        for (const std::string exponent : {"-0.5", "0.5"})
            EXPECT_TRUE(golden.match("BlurredObject/width" + width + "exponent" + exponent + ".prefix",
                                     prefix(pool.set("width", width).set("exponent", exponent))));
}

TEST_F(TextOfBlurred, BlurredObject_exponents_wellBeyondTheirLimits) {
    pool.set("width", "6");
    for (const std::string exponent : {"-400", "-2", "1", "3", "400"})
        EXPECT_TRUE(golden.match("BlurredObject/width6exponent" + exponent + ".prefix",
                                 prefix(pool.set("exponent", exponent))));
}

TEST_F(TextOfBlurred, BlurredObject_tinyExponents_areThoseOfZero) {
    EXPECT_EQ(prefix(pool.set("exponent", "1e-300")), ThreeTaps);
    EXPECT_EQ(prefix(pool.set("exponent", "-1e-300")), ThreeTaps);
}

TEST_F(TextOfBlurred, BlurredObject_unreadableWidth_countsAsOne) {
    support::setParameter(*display, "width", "20");
    EXPECT_NE(prefix(), ThreeTaps);
    EXPECT_EQ(prefix(pool.makeUnreadable("width")), ThreeTaps);
}

TEST_F(TextOfBlurred, BlurredObject_unreadableExponent_countsAsZero) {
    support::setParameter(*display, "exponent", "0.5");
    EXPECT_NE(prefix(), ThreeTaps);
    EXPECT_EQ(prefix(pool.makeUnreadable("exponent")), ThreeTaps);
}

TEST_F(TextOfBlurred, BlurredObject_everyParameterUnreadable_textOfTheDefaults) {
    support::setParameter(*display, "width", "20");
    support::setParameter(*display, "exponent", "0.5");
    for (const char* parameter : {"samples", "InputVisibility", "width", "exponent", "options"})
        pool.makeUnreadable(parameter);
    EXPECT_TRUE(golden.match("BlurredObject/defaults.frag", fragment(pool)));
}

TEST_F(TextOfBlurred, BlurredObject_B1_initialWidthLiesBelowItsOwnMinimum) {
    EXPECT_EQ(slot("width"), "1.0, min 3.0, max 20.0, level 0");
}

TEST_F(TextOfBlurred, BlurredObject_B2_widthBeyondItsMaximum_isNotClamped) {
    pool.set("width", "25");
    EXPECT_TRUE(contains(prefix(pool), "float[](0.040000000000000036, 0.12, 0.19999999999999996, 0.28, "));
}

TEST_F(TextOfBlurred, BlurredObject_B2_widthBelowThreeOrBeyondIntegers_givesThreeTaps) {
    using Numbers = std::numeric_limits<double>;
    for (const double width : {Numbers::quiet_NaN(), Numbers::infinity(), -Numbers::infinity(), 1e300, -1e300,
                               2147483648.0, -2147483649.0, -5.0, -0.0, 0.0, 1e-300, 2.9999999999999996})
        EXPECT_EQ(prefix(pool.setValue("width", krod::makeValue(width))), ThreeTaps) << width;
}

TEST_F(TextOfBlurred, BlurredObject_B3_evenNumberOfTaps_firstWeightIsZero) {
    EXPECT_EQ(prefix(pool.set("width", "4")), "const\tint\thorizontal = 1;\n"
                                              "const float filter[] = float[](0.0, 0.5, 1.0, 0.5);\n");
}

TEST_F(TextOfBlurred, BlurredObject_B4_powerOfTen_isExpOfLn10) {
    pool.set("width", "6").set("exponent", "1");
    EXPECT_TRUE(contains(prefix(pool), "(0.0, 1.6935087808430272e-05, 0.01734152991583262, 1.0, "));
}

TEST_F(TextOfBlurred, BlurredObject_B4_weights_areNormalisedByTheShaderOnly) {
    EXPECT_TRUE(contains(prefix(pool.set("width", "5")), "(0.19999999999999996, 0.6, 1.0, 0.6, "));
    EXPECT_TRUE(contains(fragment(), "\t\tW += filter[i];\n\t}\n\n\treturn Color / W;\n"));
}

TEST_F(TextOfBlurred, BlurredObject_B5_verticalBlur_isInTheTextAndNeverChosen) {
    pool.set("width", "20").set("exponent", "-0.5").set("options", "+glow +vertical");
    EXPECT_TRUE(prefix(pool).starts_with("const\tint\thorizontal = 1;\n")) << prefix(pool);
    EXPECT_TRUE(contains(fragment(), "\t\tif (horizontal == 1)\n\t\t\tQ.x += N/2 - i;\n"
                                     "\t\telse\n\t\t\tQ.y += N/2 - i;\n"));
}

TEST_F(TextOfBlurred, BlurredObject_B6_everySampleAddsTheBlurOfSampleZero) {
    EXPECT_TRUE(contains(fragment(), "vec4\tTexel = texelFetch(SceneColor, Q, 0);\n"));
    EXPECT_TRUE(contains(fragment(),
                         "\tfor(int i=1; i<NumberOfSamples; i++)\n\t{\n\t\tColor += getColor(P);\n"
                         "\t\tDepth = min(Depth, texelFetch(SceneDepth, P, i).r);\n"
                         "\t\tSampled += 1;\n\t}\n"));
}

TEST_F(TextOfBlurred, BlurredObject_B7_weightingByBlue_isSwitchedOff) {
    EXPECT_TRUE(contains(fragment(), "#if\t0\n\tfloat\tF = pow(Texel.b, 8.0);\n#else\n"
                                     "\tconst float\tF = 1.0;\n#endif\n"));
}

TEST_F(TextOfBlurred, BlurredObject_B9_unreadableSamples_countAsEightThoughTheyStartAtOne) {
    EXPECT_EQ(slot("samples"), "1, max 16, level 2");
    EXPECT_EQ(requestedSamples(), 1);
    EXPECT_EQ(requestedSamples(pool.makeUnreadable("samples")), 8);
}

} // namespace

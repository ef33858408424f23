// SPDX-License-Identifier: Apache-2.0
// The texts of Display/Depth, the tone-mapped display.
#include "DisplayTexts.h"
#include "workbench/core/CreatorRegistry.h"

namespace {

/// The two constants before the body.
std::string constants(const std::string& a, const std::string& b) {
    return "const float a = " + a + ";\nconst float b = " + b + ";\n";
}

class TextOfHDR : public DisplayTexts {
protected:
    TextOfHDR() : DisplayTexts("Display/Depth@HDRObjectDisplay", "HDRObjectDisplay.frag") {}

    std::string prefixOf(const std::string& offset, const std::string& exponent) {
        return prefix(pool.set("offset", offset).set("exponent", exponent));
    }
};

TEST_F(TextOfHDR, HDRObjectDisplay_defaults_constantsBeforeBody) {
    EXPECT_TRUE(golden.match("HDRObjectDisplay/defaults.frag", fragment()));
    EXPECT_EQ(prefix(), constants("1.0", "1.0"));
}

TEST_F(TextOfHDR, HDRObjectDisplay_constants_atTheirLimits) {
    EXPECT_EQ(prefixOf("-1", "-2"), constants("0.09999999999999998", "0.009999999999999995"));
    EXPECT_EQ(prefixOf("1", "10"), constants("10.000000000000002", "10000000000.00004"));
}

TEST_F(TextOfHDR, HDRObjectDisplay_constants_beyondTheirLimits) {
    EXPECT_EQ(prefixOf("-400", "20"), constants("0.0", "100000000000000786432.0"));
    EXPECT_EQ(prefixOf("300", "-400"), constants("1.00000000000009e+300", "0.0"));
    EXPECT_EQ(prefixOf("1e-300", "-1e-300"), constants("1.0", "1.0"));
}

TEST_F(TextOfHDR, HDRObjectDisplay_eachUnreadableConstant_isTenToThePowerOfZero) {
    support::setParameter(*display, "offset", "1");
    support::setParameter(*display, "exponent", "-0.5");
    EXPECT_EQ(prefix(), constants("10.000000000000002", "0.3162277660168379"));
    support::ParameterPool noOffset(*display), noExponent(*display);
    EXPECT_EQ(prefix(noOffset.makeUnreadable("offset")), constants("1.0", "0.3162277660168379"));
    EXPECT_EQ(prefix(noExponent.makeUnreadable("exponent")), constants("10.000000000000002", "1.0"));
}

TEST_F(TextOfHDR, HDRObjectDisplay_everyParameterUnreadable_textOfTheDefaults) {
    support::setParameter(*display, "offset", "1");
    support::setParameter(*display, "exponent", "-0.5");
    for (const auto& input : display->slots().inputs()) pool.makeUnreadable(input.name);
    EXPECT_TRUE(golden.match("HDRObjectDisplay/defaults.frag", fragment(pool)));
}

TEST_F(TextOfHDR, HDRObjectDisplay_H1_keyIsSharedWithTheDepthView) {
    const krod::VCreatorProperties& texts = display->creator()->properties();
    EXPECT_EQ(texts.source, "HDRObjectDisplay");
    EXPECT_EQ(texts.name, "Depth");
    EXPECT_EQ(workbench::CreatorRegistry::find("Display/Depth").size(), 2U);
}

TEST_F(TextOfHDR, HDRObjectDisplay_H2_exponentIsTenTimesB) {
    EXPECT_TRUE(contains(fragment(), "\treturn pow(I / (a + I), 10*b);\n"));
}

TEST_F(TextOfHDR, HDRObjectDisplay_H3_alphaIsMappedBeforeItIsRaised) {
    EXPECT_TRUE(contains(fragment(), "\treturn vec4(f(Color.r), f(Color.g), f(Color.b), f(Color.a));\n"));
    EXPECT_TRUE(contains(fragment(), "\tColor = ToneMap(Color);\n"
                                     "\tColor.a = pow(Color.a, TransparencyExponent);\n"));
}

TEST_F(TextOfHDR, HDRObjectDisplay_H4_meanOfTheSamplesIsMapped) {
    EXPECT_TRUE(contains(fragment(), "\t\tColor += texelFetch(SceneColor, P, i);\n"));
    EXPECT_TRUE(contains(fragment(), "\tColor /= float(max(Sampled, 1));\n\n\tColor = ToneMap(Color);\n"));
}

TEST_F(TextOfHDR, HDRObjectDisplay_H5_powersOfTenAreExpOfLn10) {
    EXPECT_EQ(prefixOf("1", "0.3"), constants("10.000000000000002", "1.9952623149688797"));
    EXPECT_EQ(prefixOf("-1", "0.1"), constants("0.09999999999999998", "1.2589254117941673"));
}

TEST_F(TextOfHDR, HDRObjectDisplay_H6_transparencyExponentIsAUniformAndNotInTheText) {
    const std::string builtIn = fragment();
    for (const char* value : {"-1", "3", "-400", "1e300"})
        EXPECT_EQ(fragment(pool.set("TransparencyExponent", value)), builtIn) << value;
    EXPECT_EQ(fragment(pool.makeUnreadable("TransparencyExponent")), builtIn);
    EXPECT_TRUE(contains(builtIn, "\nuniform float\tTransparencyExponent;\n"));
}

TEST_F(TextOfHDR, HDRObjectDisplay_H7_quotientAndPowersHaveNoGuard) {
    EXPECT_TRUE(contains(fragment(), "float f(float I)\n{\n\treturn pow(I / (a + I), 10*b);\n}\n"));
    EXPECT_FALSE(contains(fragment(), "if ("));
    EXPECT_FALSE(contains(fragment(), "clamp"));
}

TEST_F(TextOfHDR, HDRObjectDisplay_H10_unreadableSamples_countAsEightThoughTheyStartAtOne) {
    EXPECT_EQ(slot("samples"), "1, max 16, level 2");
    EXPECT_EQ(requestedSamples(), 1);
    EXPECT_EQ(requestedSamples(pool.makeUnreadable("samples")), 8);
}

} // namespace

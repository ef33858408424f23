// SPDX-License-Identifier: Apache-2.0
// The texts of Hollywood/PixelBlur.
#include "TileText.h"

namespace {

class TextOfPixelBlur : public text::TileText {
protected:
    TextOfPixelBlur() : TileText("PixelBlur") {}

    /// The constants in front of the body, as they have to be written.
    static std::string prefix(const std::string& width, const std::string& brightness,
                              const std::string& sharpness) {
        return "const int FilterWidth        = " + width + ";\nconst float FilterBrightness = " + brightness +
               ";\nconst float FilterSharpness  = " + sharpness + ";\n\nuniform sampler2D frame;\n";
    }
};

TEST_F(TextOfPixelBlur, PixelBlur_beforeUpdate_passesPicturesThrough) {
    EXPECT_TRUE(matches("beforeUpdate.frag", code()));
    EXPECT_EQ(code(), text::PassThrough);
}

TEST_F(TextOfPixelBlur, PixelBlur_defaults_threeAndOneAndAHalfTwice) {
    EXPECT_TRUE(matches("defaults.frag", updated()));
}

TEST_F(TextOfPixelBlur, PixelBlur_lowest_widthOneAndNegativeReals) {
    pool.set("width", "1").set("brightness", "-2").set("sharpness", "-0.125");
    EXPECT_TRUE(matches("lowest.frag", updated(pool)));
}

TEST_F(TextOfPixelBlur, PixelBlur_highest_allMaxima) {
    pool.set("width", "20").set("brightness", "3").set("sharpness", "10");
    EXPECT_TRUE(matches("highest.frag", updated(pool)));
}

TEST_F(TextOfPixelBlur, PixelBlur_L1_eachUnreadableParameter_hasAFallbackOfItsOwn) {
    support::ParameterPool noWidth(*module), noBrightness(*module), noSharpness(*module);
    text::expectHas(updated(noWidth.makeUnreadable("width")), prefix("5", "1.5", "1.5"));
    text::expectHas(updated(noBrightness.makeUnreadable("brightness")), prefix("3", "1.0", "1.5"));
    text::expectHas(updated(noSharpness.makeUnreadable("sharpness")), prefix("3", "1.5", "1.0"));
}

TEST_F(TextOfPixelBlur, PixelBlur_L1_allUnreadable_fallBackToFiveOneAndOne) {
    for (const char* parameter : {"width", "brightness", "sharpness"}) {
        support::setParameter(*module, parameter, "2");
        pool.makeUnreadable(parameter);
    }
    EXPECT_TRUE(matches("allUnreadable.frag", updated(pool)));
}

TEST_F(TextOfPixelBlur, PixelBlur_L2_brightnessAndSharpness_haveAMaximumAndNoMinimum) {
    EXPECT_EQ(limit("width", "min"), "1");
    EXPECT_EQ(limit("width", "max"), "20");
    EXPECT_EQ(limit("brightness", "min"), "");
    EXPECT_EQ(limit("brightness", "max"), "3.0");
    EXPECT_EQ(limit("sharpness", "min"), "");
    EXPECT_EQ(limit("sharpness", "max"), "10.0");
}

TEST_F(TextOfPixelBlur, PixelBlur_L2_valuesBeyondTheirLimits_areNotClamped) {
    pool.set("width", "-2147483648").set("brightness", "4").set("sharpness", "1e300");
    EXPECT_TRUE(matches("beyondLimits.frag", updated(pool)));
    text::expectHas(updated(pool.set("width", "21")), "FilterWidth        = 21;\n");
}

TEST_F(TextOfPixelBlur, PixelBlur_L3_namesArePaddedAndTheBodyBeginsWithALineBreak) {
    EXPECT_TRUE(updated().starts_with(prefix("3", "1.5", "1.5"))) << code();
}

TEST_F(TextOfPixelBlur, PixelBlur_L4_weightsAreDividedByTheSquareOfTheWidth) {
    text::expectHas(updated(), "float weight = FilterBrightness*exp(-r2)/(FW*FW);\n");
    text::expectHas(code(), "float FW = float(FilterWidth);\n");
    text::expectHas(code(), "for(int i=0; i<=FilterWidth; i++)\n\tfor(int j=0; j<=FilterWidth; j++)\n");
}

TEST_F(TextOfPixelBlur, PixelBlur_L5_integersAndRealsAreMixed) {
    text::expectHas(updated(),
                    "vec2 offset = vec2( float(i-FilterWidth*0.5)/FW, float(j-FilterWidth*0.5)/FW );\n");
    EXPECT_EQ(code().find("#version"), std::string::npos) << code();
}

TEST_F(TextOfPixelBlur, PixelBlur_L6_gridIsMeasuredInSharesOfTheTile) {
    text::expectHas(updated(), "offset /= FilterSharpness*50.0;\n");
    text::expectHas(code(), "texture2D(frame, gl_TexCoord[0].xy + offset)");
}

TEST_F(TextOfPixelBlur, PixelBlur_L7_zeros_areStoredWithoutAGuard) {
    pool.set("width", "0").set("brightness", "0").set("sharpness", "0");
    EXPECT_TRUE(matches("zeros.frag", updated(pool)));
    EXPECT_EQ(code().substr(prefix("0", "0.0", "0.0").size()),
              updated().substr(prefix("3", "1.5", "1.5").size()))
        << "the body depends on the values";
}

TEST_F(TextOfPixelBlur, PixelBlur_L8_alphaIsInTheSum) {
    text::expectHas(updated(), "vec4 Color = vec4(0.0, 0.0, 0.0, 0.0);\n");
    text::expectHas(code(), "Color += weight*texture2D(");
    text::expectHas(code(), "gl_FragColor = Color;\n");
}

TEST_F(TextOfPixelBlur, PixelBlur_twoUpdates_sameBytesInTheSameProcessor) {
    expectEqualUpdates(pool.set("sharpness", "0.3"));
}

TEST_F(TextOfPixelBlur, PixelBlur_emptyOutput_updateStillSucceeds) { expectSilenceWithoutOutput(); }

} // namespace

// SPDX-License-Identifier: Apache-2.0
// The texts of Hollywood/ColorGammaCorrection.
#include "TileText.h"

namespace {

using support::ParameterPool;

constexpr const char* Channels[] = {"red", "green", "blue", "alpha"};
constexpr char Ten[] = " = 10.000000000000002;\n";
constexpr char One[] = " = 1.0;\n";

class TextOfColorGamma : public text::TileText {
protected:
    TextOfColorGamma() : TileText("ColorGammaCorrection") {}
};

TEST_F(TextOfColorGamma, ColorGammaCorrection_beforeUpdate_passesPicturesThrough) {
    EXPECT_TRUE(matches("beforeUpdate.frag", code()));
    EXPECT_EQ(code(), text::PassThrough);
}

TEST_F(TextOfColorGamma, ColorGammaCorrection_defaults_fourExponentsOfOne) {
    EXPECT_TRUE(matches("defaults.frag", updated()));
}

TEST_F(TextOfColorGamma, ColorGammaCorrection_lowest_exponentsOfATenth) {
    for (const char* channel : Channels) pool.set(channel, "-1");
    EXPECT_TRUE(matches("lowest.frag", updated(pool)));
}

TEST_F(TextOfColorGamma, ColorGammaCorrection_highest_exponentsOfTen) {
    for (const char* channel : Channels) pool.set(channel, "1");
    EXPECT_TRUE(matches("highest.frag", updated(pool)));
}

TEST_F(TextOfColorGamma, ColorGammaCorrection_fourValues_goToTheirChannels) {
    pool.set("red", "-1").set("green", "1").set("blue", "0.25").set("alpha", "-0.5");
    EXPECT_TRUE(matches("fourValues.frag", updated(pool)));
}

TEST_F(TextOfColorGamma, ColorGammaCorrection_valueBeyondItsLimit_isNotClamped) {
    pool.set("green", "2").set("alpha", "-7");
    EXPECT_TRUE(matches("beyondLimits.frag", updated(pool)));
}

TEST_F(TextOfColorGamma, ColorGammaCorrection_C1_eachUnreadableChannel_fallsBackToExponentOfTen) {
    for (const char* unreadable : Channels) {
        ParameterPool one(*module);
        const std::string text = updated(one.makeUnreadable(unreadable));
        for (const char* channel : Channels) {
            const std::string line =
                std::string("const float G") + channel[0] + (std::string(channel) == unreadable ? Ten : One);
            EXPECT_NE(text.find(line), std::string::npos) << unreadable << " unreadable: no " << line << text;
        }
    }
}

TEST_F(TextOfColorGamma, ColorGammaCorrection_C1_allUnreadable_fallBackToExponentsOfTen) {
    for (const char* channel : Channels) pool.makeUnreadable(channel);
    EXPECT_TRUE(matches("allUnreadable.frag", updated(pool)));
}

TEST_F(TextOfColorGamma, ColorGammaCorrection_C1_setAndNeverSet_differFromUnreadable) {
    const std::string neverSet = updated();
    EXPECT_FALSE(module->slots().input("red")->getLocalValue({}).set);
    support::setParameter(*module, "red", "0");
    EXPECT_TRUE(module->slots().input("red")->getLocalValue({}).set);
    EXPECT_EQ(updated(), neverSet);
    EXPECT_NE(updated(pool.makeUnreadable("red")), neverSet);
}

TEST_F(TextOfColorGamma, ColorGammaCorrection_valueOfThePool_winsOverTheParameters) {
    support::setParameter(*module, "red", "1");
    EXPECT_NE(updated().find(std::string("const float Gr") + Ten), std::string::npos) << code();
    EXPECT_NE(updated(pool.set("red", "0")).find(std::string("const float Gr") + One), std::string::npos)
        << code();
}

TEST_F(TextOfColorGamma, ColorGammaCorrection_C2_tenToThePowerOfOne_isExpOfLn10) {
    pool.set("red", "1");
    EXPECT_TRUE(updated(pool).starts_with("const float Gr = 10.000000000000002;\nconst float Gg = 1.0;\n"))
        << code();
}

TEST_F(TextOfColorGamma, ColorGammaCorrection_C3_alphaIsCorrectedLikeTheColours) {
    const std::string text = updated();
    for (const char* line : {"gl_FragColor.r = pow(Color.r, Gr)", "gl_FragColor.g = pow(Color.g, Gg)",
                             "gl_FragColor.b = pow(Color.b, Gb)", "gl_FragColor.a = pow(Color.a, Ga)"})
        EXPECT_NE(text.find(line), std::string::npos) << "missing: " << line << '\n' << text;
}

TEST_F(TextOfColorGamma, ColorGammaCorrection_twoUpdates_sameBytesInTheSameProcessor) {
    const auto processor = support::processorOf(*module);
    const krod::VParameter& output = *module->slots().output("ImageProcessor");
    const auto age = output.value().age();
    pool.set("red", "0.3");
    const std::string first = updated(pool);
    EXPECT_EQ(updated(pool), first);
    EXPECT_EQ(support::processorOf(*module), processor);
    EXPECT_EQ(output.value().age(), age);
}

TEST_F(TextOfColorGamma, ColorGammaCorrection_emptyOutput_updateStillSucceeds) {
    const auto processor = support::processorOf(*module);
    module->slots().clearOutputs();
    EXPECT_TRUE(support::update(*module));
    EXPECT_FALSE(support::processorOf(*module));
    const auto& shader = dynamic_cast<const krod::GLImageTileProcessor&>(*processor);
    EXPECT_TRUE(shader.shaderCode().starts_with("uniform sampler2D frame;")) << shader.shaderCode();
}

} // namespace

// SPDX-License-Identifier: Apache-2.0
// The texts of Hollywood/HDRColoredToneMapping.
#include "TileText.h"

#include "host/core/VCreatorBase.h"

namespace {

constexpr const char* Channels[] = {"red", "green", "blue", "alpha"};
constexpr char Ten[] = " = 10.000000000000002;\n";
constexpr char One[] = " = 1.0;\n";

class TextOfColoredToneMapping : public text::TileText {
protected:
    TextOfColoredToneMapping() : TileText("HDRColoredToneMapping") {}
};

TEST_F(TextOfColoredToneMapping, HDRColoredToneMapping_beforeUpdate_passesPicturesThrough) {
    EXPECT_TRUE(matches("beforeUpdate.frag", code()));
    EXPECT_EQ(code(), text::PassThrough);
}

TEST_F(TextOfColoredToneMapping, HDRColoredToneMapping_defaults_oneComesToAHalf) {
    EXPECT_TRUE(matches("defaults.frag", updated()));
}

TEST_F(TextOfColoredToneMapping, HDRColoredToneMapping_lowest_constantsOfATenth) {
    for (const char* channel : Channels) pool.set(channel, "-1");
    EXPECT_TRUE(matches("lowest.frag", updated(pool)));
}

TEST_F(TextOfColoredToneMapping, HDRColoredToneMapping_highest_constantsOfTen) {
    for (const char* channel : Channels) pool.set(channel, "1");
    EXPECT_TRUE(matches("highest.frag", updated(pool)));
}

TEST_F(TextOfColoredToneMapping, HDRColoredToneMapping_fourValues_goToTheirChannels) {
    pool.set("red", "-1").set("green", "1").set("blue", "0.25").set("alpha", "-0.5");
    EXPECT_TRUE(matches("fourValues.frag", updated(pool)));
}

TEST_F(TextOfColoredToneMapping, HDRColoredToneMapping_valueBeyondItsLimit_isNotClamped) {
    pool.set("green", "2").set("alpha", "-7");
    EXPECT_TRUE(matches("beyondLimits.frag", updated(pool)));
}

TEST_F(TextOfColoredToneMapping, HDRColoredToneMapping_limits_areMinusOneAndOneEverywhere) {
    for (const char* channel : Channels) {
        EXPECT_EQ(limit(channel, "min"), "-1.0") << channel;
        EXPECT_EQ(limit(channel, "max"), "1.0") << channel;
    }
}

TEST_F(TextOfColoredToneMapping, HDRColoredToneMapping_M1_adustableAndIndepently_areSpeltSo) {
    const krod::VCreatorProperties& texts = module->creator()->properties();
    EXPECT_EQ(texts.description.value_or(""),
              "Reduce High Intensity Colors, adustable gamma per color channel.");
    EXPECT_EQ(texts.help.value_or(""),
              "Maps excess intensity values larger into [0.0,1.0] range. The contrast (gamma value) can be "
              "specified indepently for each RGBA channel.");
}

TEST_F(TextOfColoredToneMapping, HDRColoredToneMapping_M2_eachUnreadableChannel_fallsBackToTen) {
    for (const char* unreadable : Channels) {
        support::ParameterPool one(*module);
        const std::string program = updated(one.makeUnreadable(unreadable));
        for (const char* channel : Channels)
            text::expectHas(program, std::string("const float G") + channel[0] +
                                         (std::string(channel) == unreadable ? Ten : One));
    }
}

TEST_F(TextOfColoredToneMapping, HDRColoredToneMapping_M2_allUnreadable_fallBackToTen) {
    for (const char* channel : Channels) {
        support::setParameter(*module, channel, "-1");
        pool.makeUnreadable(channel);
    }
    EXPECT_TRUE(matches("allUnreadable.frag", updated(pool)));
}

TEST_F(TextOfColoredToneMapping, HDRColoredToneMapping_M3_constantIsAddedThoughTheTextsSpeakOfAGamma) {
    const krod::VCreatorProperties& texts = module->creator()->properties();
    text::expectHas(texts.help.value_or(""), "gamma");
    text::expectHas(texts.description.value_or(""), "gamma");
    const std::string program = updated();
    text::expectHas(program, "gl_FragColor.r = Color.r/( Color.r + Gr )");
    EXPECT_EQ(program.find("pow"), std::string::npos) << program;
}

TEST_F(TextOfColoredToneMapping, HDRColoredToneMapping_M4_alphaIsMappedLikeTheColours) {
    const std::string program = updated();
    for (const char* line :
         {"gl_FragColor.r = Color.r/( Color.r + Gr );\n", "gl_FragColor.g = Color.g/( Color.g + Gg );\n",
          "gl_FragColor.b = Color.b/( Color.b + Gb );\n", "gl_FragColor.a = Color.a/( Color.a + Ga );\n"})
        text::expectHas(program, line);
}

TEST_F(TextOfColoredToneMapping, HDRColoredToneMapping_twoUpdates_sameBytesInTheSameProcessor) {
    expectEqualUpdates(pool.set("red", "0.3"));
}

TEST_F(TextOfColoredToneMapping, HDRColoredToneMapping_emptyOutput_updateStillSucceeds) {
    expectSilenceWithoutOutput();
}

} // namespace

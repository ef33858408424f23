// SPDX-License-Identifier: Apache-2.0
// The texts of Hollywood/HDRToneMapping.
#include "TileText.h"
#include "workbench/core/CreatorRegistry.h"

#include <climits>
#include <map>

namespace {

class TextOfToneMapping : public text::TileText {
protected:
    TextOfToneMapping() : TileText("HDRToneMapping") {}
};

TEST_F(TextOfToneMapping, HDRToneMapping_beforeUpdate_passesPicturesThrough) {
    EXPECT_TRUE(matches("beforeUpdate.frag", code()));
    EXPECT_EQ(code(), text::PassThrough);
}

TEST_F(TextOfToneMapping, HDRToneMapping_defaults_bothConstantsAreOne) {
    EXPECT_TRUE(matches("defaults.frag", updated()));
}

TEST_F(TextOfToneMapping, HDRToneMapping_lowest_bothConstantsAreATenth) {
    EXPECT_TRUE(matches("lowest.frag", updated(pool.set("offset", "-1").set("exponent", "-1"))));
}

TEST_F(TextOfToneMapping, HDRToneMapping_highest_bothConstantsAreTen) {
    EXPECT_TRUE(matches("highest.frag", updated(pool.set("offset", "1").set("exponent", "1"))));
}

TEST_F(TextOfToneMapping, HDRToneMapping_twoValues_goToTheirConstants) {
    EXPECT_TRUE(matches("twoValues.frag", updated(pool.set("offset", "-1").set("exponent", "0.25"))));
}

TEST_F(TextOfToneMapping, HDRToneMapping_valueBeyondItsLimit_isNotClamped) {
    EXPECT_TRUE(matches("beyondLimits.frag", updated(pool.set("offset", "-7").set("exponent", "2"))));
}

TEST_F(TextOfToneMapping, HDRToneMapping_limits_areMinusOneAndOneOfBoth) {
    for (const char* parameter : {"offset", "exponent"}) {
        EXPECT_EQ(limit(parameter, "min"), "-1.0") << parameter;
        EXPECT_EQ(limit(parameter, "max"), "1.0") << parameter;
    }
}

/// The parameters' own values differ from the fallback, so that it is the fallback that shows.
TEST_F(TextOfToneMapping, HDRToneMapping_unreadable_fallsBackToZero) {
    const std::string defaults = updated();
    support::setParameter(*module, "offset", "1");
    support::setParameter(*module, "exponent", "-1");
    support::ParameterPool noOffset(*module), noExponent(*module);
    EXPECT_TRUE(updated(noOffset.makeUnreadable("offset"))
                    .starts_with("const float a = 1.0;\nconst float b = 0.09999999999999998;\n"))
        << code();
    EXPECT_TRUE(updated(noExponent.makeUnreadable("exponent"))
                    .starts_with("const float a = 10.000000000000002;\nconst float b = 1.0;\n"))
        << code();
    EXPECT_EQ(updated(pool.makeUnreadable("offset").makeUnreadable("exponent")), defaults);
}

TEST_F(TextOfToneMapping, HDRToneMapping_T1_orderIsZeroUnlikeTheOtherTileModules) {
    std::map<std::string, int> orders;
    for (const auto& entry : workbench::CreatorRegistry::entries())
        if (entry.creator->keyname().starts_with("Hollywood/"))
            orders[entry.creator->keyname()] = entry.creator->order();
    EXPECT_EQ(orders, (std::map<std::string, int>{{"Hollywood/ArcTangens", -1000},
                                                  {"Hollywood/ColorGammaCorrection", -1000},
                                                  {"Hollywood/GammaCorrection", -1000},
                                                  {"Hollywood/HDRColoredToneMapping", -1000},
                                                  {"Hollywood/HDRToneMapping", 0},
                                                  {"Hollywood/PixelBlur", -1000},
                                                  {"Hollywood/TileProgram", 2000}}));
}

TEST_F(TextOfToneMapping, HDRToneMapping_T2_vectorOffset_isDeclaredAndNotUsed) {
    const std::string program = updated();
    const std::string declaration = "vec4 offset = vec4(a,a,a,a);\n";
    text::expectHas(program, declaration);
    EXPECT_EQ(program.find("offset"), program.rfind("offset")) << "something uses it:\n" << program;
}

TEST_F(TextOfToneMapping, HDRToneMapping_T3_alphaIsMappedLikeTheColours) {
    const std::string program = updated();
    for (const char* line : {"gl_FragColor.r = pow(Color.r/( Color.r + a ), b);\n",
                             "gl_FragColor.g = pow(Color.g/( Color.g + a ), b);\n",
                             "gl_FragColor.b = pow(Color.b/( Color.b + a ), b);\n",
                             "gl_FragColor.a = pow(Color.a/( Color.a + a ), b);\n"})
        text::expectHas(program, line);
}

TEST_F(TextOfToneMapping, HDRToneMapping_T4_powersOfTen_areExpOfLn10) {
    EXPECT_TRUE(
        updated(pool.set("offset", "1").set("exponent", "-1"))
            .starts_with("const float a = 10.000000000000002;\nconst float b = 0.09999999999999998;\n"))
        << code();
}

TEST_F(TextOfToneMapping, HDRToneMapping_T5_help_isTheSameAtEveryLevel) {
    for (const int level : {INT_MIN, -1, 0, 1, krod::VObject::Detailed, 3, INT_MAX})
        EXPECT_TRUE(matches("help.html", module->help(level))) << "level " << level;
}

TEST_F(TextOfToneMapping, HDRToneMapping_T5_help_isNotThatOfTheDisplays) {
    for (const std::string key : {"Display/Depth@HDRObjectDisplay", "Display/Depth@DisplayDepth"}) {
        const auto display = plugin.make(key);
        for (const int level : {0, krod::VObject::Detailed})
            EXPECT_NE(display->help(level), module->help(level)) << key << ", level " << level;
    }
}

TEST_F(TextOfToneMapping, HDRToneMapping_twoUpdates_sameBytesInTheSameProcessor) {
    expectEqualUpdates(pool.set("offset", "0.3"));
}

TEST_F(TextOfToneMapping, HDRToneMapping_emptyOutput_updateStillSucceeds) { expectSilenceWithoutOutput(); }

} // namespace

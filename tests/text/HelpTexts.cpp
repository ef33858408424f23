// SPDX-License-Identifier: Apache-2.0
// What modules say about themselves: both displays of the key "Display/Depth", and one tile module.
#include "tests/support/LoadedPlugin.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

constexpr char Short[] = "Perform non-linear tone mapping of pixel intensities.";
constexpr char Detailed[] =
    "Perform simple <A HREF=\"https://en.wikipedia.org/wiki/Tone_mapping\">tone mapping</A> of the form "
    "<BR><center> <I>I(x) = [ x/(x+&beta;) ] <SUP>&epsilon;</SUP></I></center><BR>where <I>x</I> is the "
    "pixel intensity, <I>&beta;=10<SUP>offset</SUP></I> an offset parameter and "
    "<I>&epsilon;=10<SUP>exponent</SUP></I> an exponent.This mapping allows to reduce intensity excess "
    "values [0,&infin;] to the range [0,1]. Intensity excess values can happen when doing "
    "accumulation-mode rendering of point sets, for instance. Nonlinear tone-mapping allows to see all "
    "image areas which would otherwise be over-exposed. ";

std::string helpOf(const std::string& key, int level) {
    const support::LoadedPlugin plugin;
    return plugin.make(key)->help(level);
}

void expectToneMappingTexts(const std::string& key) {
    EXPECT_EQ(helpOf(key, 2), Detailed);
    for (const int level :
         {std::numeric_limits<int>::min(), -1, 0, 1, 3, 10, std::numeric_limits<int>::max()})
        EXPECT_EQ(helpOf(key, level), Short) << level;
}

TEST(HelpTexts, DisplayDepth_D5_describeTheToneMappedDisplay) {
    expectToneMappingTexts("Display/Depth@DisplayDepth");
}

TEST(HelpTexts, HDRObjectDisplay_H8_lackABlankAndEndInOne) {
    expectToneMappingTexts("Display/Depth@HDRObjectDisplay");
    EXPECT_TRUE(helpOf("Display/Depth@HDRObjectDisplay", 2).ends_with("over-exposed. "));
}

/// Another text than that of the display: &infty;, no powers of ten, no blank at the end. Which page the link leads to
/// is free.
TEST(HelpTexts, HDRToneMapping_T5_isTheSameAtEveryLevel) {
    const std::string begin = "Perform simple <A HREF=\"";
    const std::string end =
        "\">tone mapping</A> of the form <BR><center> <I>I(x) = [ x/(x+&beta;) ] <SUP>exponent</SUP></I></center>"
        "<BR>where <I>x</I> is the pixel intensity and <I>&beta;</I> an offset parameter. This mapping allows to "
        "reduce intensity excess values [0,&infty;] to the range [0,1]. Intensity excess values can happen when "
        "doing accumulation-mode rendering of point sets, for instance. Nonlinear tone-mapping allows to see all "
        "image areas which would otherwise be over-exposed.";
    for (const int level : {std::numeric_limits<int>::min(), -1, 0, 1, 2, 3, std::numeric_limits<int>::max()}) {
        const std::string text = helpOf("Hollywood/HDRToneMapping", level);
        ASSERT_GT(text.size(), begin.size() + end.size()) << text;
        EXPECT_EQ(text.substr(0, begin.size()), begin) << level;
        EXPECT_EQ(text.substr(text.size() - end.size()), end) << level;
        const std::string page = text.substr(begin.size(), text.size() - begin.size() - end.size());
        EXPECT_EQ(page.find_first_of("\"<> "), std::string::npos) << page;
    }
}

TEST(HelpTexts, ofEveryOtherTileModule_areEmpty) {
    for (const char* key : {"Hollywood/ArcTangens", "Hollywood/ColorGammaCorrection", "Hollywood/GammaCorrection",
                            "Hollywood/HDRColoredToneMapping", "Hollywood/PixelBlur", "Hollywood/TileProgram"})
        for (const int level : {0, 2}) EXPECT_EQ(helpOf(key, level), "") << key;
}

TEST(HelpTexts, ofEveryOtherDisplay_areEmpty) {
    for (const char* key : {"Display/Blurred", "Display/CMYK", "Display/CurveAdjust", "Display/HSVAdjust",
                            "Display/PixelContours", "Display/ProximityHDR"})
        for (const int level : {0, 2}) EXPECT_EQ(helpOf(key, level), "") << key;
}

} // namespace

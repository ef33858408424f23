// SPDX-License-Identifier: Apache-2.0
// The texts of Display/CMYK.
#include "DisplayTexts.h"

namespace {

class TextOfCMYK : public DisplayTexts {
protected:
    TextOfCMYK() : DisplayTexts("Display/CMYK", "CMYK.frag") {}
};

TEST_F(TextOfCMYK, CMYKObjectDisplay_defaults_versionLineThenBody) {
    EXPECT_TRUE(golden.match("CMYKObjectDisplay/defaults.frag", fragment()));
    EXPECT_EQ(prefix(), "");
}

TEST_F(TextOfCMYK, CMYKObjectDisplay_bytesOfBeginningAndEnd_tabsAndThreeLineBreaks) {
    const std::string text = fragment();
    EXPECT_TRUE(text.starts_with("#version 150\nuniform int\tnSamples;\nuniform sampler2DMS SceneColor;\n"
                                 "uniform sampler2DMS SceneDepth;\n"))
        << text;
    EXPECT_TRUE(text.ends_with("gl_FragDepth = Depth;\n}\n\n\n")) << text;
    EXPECT_EQ(text.find('\r'), std::string::npos);
}

TEST_F(TextOfCMYK, CMYKObjectDisplay_K1_blackHasBlueItselfAsThirdTerm) {
    const std::string text = fragment();
    EXPECT_TRUE(contains(text, "min(min(1. - C.r, 1-C.g), C.b)"));
}

TEST_F(TextOfCMYK, CMYKObjectDisplay_K1_quotients_haveNoGuardAgainstZero) {
    const std::string text = fragment();
    EXPECT_TRUE(contains(text, "float\tWhite = 1 - Black;\n\n"
                               "float\tCyan    = (White - C.r) / White;\n"
                               "float\tMagenta = (White - C.g) / White;\n"
                               "float\tYellow  = (White - C.b) / White;\n"));
}

TEST_F(TextOfCMYK, CMYKObjectDisplay_K2_separationIsComputedAndItsReturnLineIsAComment) {
    const std::string text = fragment();
    for (const char* line :
         {"Red   = 1 - min(1, Cyan    * White + Black);\n", "Green = 1 - min(1, Magenta * White + Black);\n",
          "Blue  = 1 - min(1, Yellow  * White + Black);\n",
          "\n//\treturn vec4(Red, Green, Blue, C.a);\n"
          "\treturn vec4(Cyan, Magenta, Yellow, C.a);\n"})
        EXPECT_TRUE(contains(text, line));
}

TEST_F(TextOfCMYK, CMYKObjectDisplay_K3_counterStartsAtZeroThoughSampleZeroIsInTheSum) {
    const std::string text = fragment();
    EXPECT_TRUE(contains(text, "int\tSampled = 0;"));
    EXPECT_TRUE(contains(text, "for(int i=1; i<max(1, nSamples); i++)"));
    EXPECT_TRUE(contains(text, "gl_FragColor = Color / float(max(Sampled, 1));"));
}

} // namespace

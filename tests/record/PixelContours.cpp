// SPDX-License-Identifier: Apache-2.0
// The calls of Display/PixelContours in one frame.
#include "DisplayRecord.h"

namespace {

class RecordOfPixelContours : public recording::DisplayRecord {
protected:
    RecordOfPixelContours() : DisplayRecord(recording::displayOf("PixelContours")) {}
};

TEST_F(RecordOfPixelContours, PixelContours_everySetting_callOrder) {
    pool.set("samples", "4").set("width", "2").set("strength", "0.7").set("luminance", "-1.25");
    pool.set("options", "+glow");
    EXPECT_TRUE(frameMatches("everySetting"));
}

TEST_F(RecordOfPixelContours, PixelContours_values_areHandedOverInSinglePrecision) {
    pool.set("strength", "0.7").set("luminance", "0.1");
    EXPECT_EQ(callsOfFrameWith(" float "),
              "GLProgram 1 float strength = 0.699999988079071, flag false\n"
              "GLProgram 1 float LuminanceSustainbilityFactor = 0.10000000149011612, flag false\n");
}

TEST_F(RecordOfPixelContours, PixelContours_valuesBeyondSinglePrecision_becomeInfinite) {
    pool.set("strength", "3.5e38").set("luminance", "-1e300");
    EXPECT_EQ(callsOfFrameWith(" float "),
              "GLProgram 1 float strength = inf, flag false\n"
              "GLProgram 1 float LuminanceSustainbilityFactor = -inf, flag false\n");
}

TEST_F(RecordOfPixelContours, PixelContours_P2_unreadableStrength_countsAsOneHalfThoughItStartsAtZero) {
    EXPECT_EQ(callsOfFrameWith("strength"), "GLProgram 1 float strength = 0.0, flag false\n");
    pool.makeUnreadable("strength");
    EXPECT_EQ(callsOfFrameWith("strength"), "GLProgram 1 float strength = 0.5, flag false\n");
}

TEST_F(RecordOfPixelContours, PixelContours_P9_uniformOfLuminance_isCalledLuminanceSustainbilityFactor) {
    pool.set("luminance", "0.25");
    EXPECT_EQ(callsOfFrameWith("0.25"),
              "GLProgram 1 float LuminanceSustainbilityFactor = 0.25, flag false\n");
}

TEST_F(RecordOfPixelContours, PixelContours_P11_depthMask_staysOff) {
    EXPECT_EQ(callsOfFrameWith("glDepthMask"), "glDepthMask(GL_FALSE)\n");
}

TEST_F(RecordOfPixelContours, PixelContours_P12_unreadableSamples_countAsEightThoughTheyStartAtOne) {
    EXPECT_EQ(requestedSamples(), 1);
    pool.makeUnreadable("samples");
    EXPECT_EQ(requestedSamples(), 8);
}

} // namespace

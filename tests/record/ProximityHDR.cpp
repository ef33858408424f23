// SPDX-License-Identifier: Apache-2.0
// The calls of Display/ProximityHDR in one frame.
#include "DisplayRecord.h"

namespace {

class RecordOfProximityHDR : public recording::DisplayRecord {
protected:
    RecordOfProximityHDR() : DisplayRecord(recording::displayOf("ProximityHDR")) {}
};

TEST_F(RecordOfProximityHDR, ProximityHDR_everySetting_callOrder) {
    pool.set("samples", "4").set("width", "2").set("strength", "0.7").set("gamma", "2.2");
    pool.set("brightness", "-1.25").set("options", "+glow");
    EXPECT_TRUE(frameMatches("everySetting"));
}

TEST_F(RecordOfProximityHDR, ProximityHDR_values_areHandedOverInSinglePrecision) {
    pool.set("strength", "0.7").set("gamma", "2.2").set("brightness", "0.1");
    EXPECT_EQ(callsOfFrameWith(" float "),
              "GLProgram 1 float strength = 0.699999988079071, flag false\n"
              "GLProgram 1 float gamma = 2.200000047683716, flag false\n"
              "GLProgram 1 float brightness = 0.10000000149011612, flag false\n");
}

TEST_F(RecordOfProximityHDR, ProximityHDR_valuesBeyondSinglePrecision_becomeInfiniteOrZero) {
    pool.set("strength", "3.5e38").set("gamma", "-1e300").set("brightness", "1e-50");
    EXPECT_EQ(callsOfFrameWith(" float "), "GLProgram 1 float strength = inf, flag false\n"
                                           "GLProgram 1 float gamma = -inf, flag false\n"
                                           "GLProgram 1 float brightness = 0.0, flag false\n");
}

TEST_F(RecordOfProximityHDR, ProximityHDR_X3_unreadableBrightness_countsAsZeroThoughItStartsAtOne) {
    EXPECT_EQ(callsOfFrameWith("brightness"), "GLProgram 1 float brightness = 1.0, flag false\n");
    pool.makeUnreadable("brightness");
    EXPECT_EQ(callsOfFrameWith("brightness"), "GLProgram 1 float brightness = 0.0, flag false\n");
}

TEST_F(RecordOfProximityHDR, ProximityHDR_X12_depthMask_staysOff) {
    EXPECT_EQ(callsOfFrameWith("glDepthMask"), "glDepthMask(GL_FALSE)\n");
}

TEST_F(RecordOfProximityHDR, ProximityHDR_X14_unreadableSamples_countAsEightThoughTheyStartAtOne) {
    EXPECT_EQ(requestedSamples(), 1);
    pool.makeUnreadable("samples");
    EXPECT_EQ(requestedSamples(), 8);
}

} // namespace

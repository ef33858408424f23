// SPDX-License-Identifier: Apache-2.0
// The calls of Display/CMYK in one frame.
#include "DisplayRecord.h"

namespace {

class RecordOfCMYK : public recording::DisplayRecord {
protected:
    RecordOfCMYK() : DisplayRecord(recording::displayOf("CMYKObjectDisplay")) {}
};

TEST_F(RecordOfCMYK, CMYKObjectDisplay_K4_glowAndHalo_changeNothing) {
    const std::string before = callsOfFrame();
    pool.set("options", "+glow +halo");
    EXPECT_EQ(callsOfFrame(), before);
    EXPECT_EQ(callsOfFrameWith("glBlendFunc"), "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)\n");
}

TEST_F(RecordOfCMYK, CMYKObjectDisplay_K5_anySamples_rendererStillAsksForEight) {
    const std::string before = callsOfFrame();
    EXPECT_EQ(requestedSamples(), 8);
    for (const std::string count : {"4", "16", "1"}) {
        pool.set("samples", count);
        EXPECT_EQ(callsOfFrame(), before) << count;
    }
}

TEST_F(RecordOfCMYK, CMYKObjectDisplay_K6_depthMask_goesOffAndStraightBackOn) {
    EXPECT_NE(callsOfFrame().find("\nglDepthMask(GL_FALSE)\nglDepthMask(GL_TRUE)\n"), std::string::npos);
    EXPECT_EQ(callsOfFrameWith("glDepthMask"), "glDepthMask(GL_FALSE)\nglDepthMask(GL_TRUE)\n");
}

} // namespace

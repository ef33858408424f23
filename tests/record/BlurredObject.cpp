// SPDX-License-Identifier: Apache-2.0
// The calls of Display/Blurred in one frame.
#include "DisplayRecord.h"

namespace {

class RecordOfBlurred : public recording::DisplayRecord {
protected:
    RecordOfBlurred() : DisplayRecord(recording::displayOf("BlurredObject")) {}
};

TEST_F(RecordOfBlurred, BlurredObject_everySetting_callOrder) {
    pool.set("samples", "4").set("width", "5").set("exponent", "0.25").set("options", "+glow");
    EXPECT_TRUE(frameMatches("everySetting"));
}

TEST_F(RecordOfBlurred, BlurredObject_kernel_goesIntoTheTextAndIntoNoUniform) {
    const std::string uniforms = callsOfFrameWith(" = "), text = callsOfFrameWith("fragment");
    pool.set("width", "5");
    EXPECT_EQ(callsOfFrameWith(" = "), uniforms);
    EXPECT_NE(callsOfFrameWith("fragment"), text);
}

TEST_F(RecordOfBlurred, BlurredObject_B8_depthMask_staysOff) {
    EXPECT_EQ(callsOfFrameWith("glDepthMask"), "glDepthMask(GL_FALSE)\n");
}

TEST_F(RecordOfBlurred, BlurredObject_B9_unreadableSamples_countAsEightThoughTheyStartAtOne) {
    EXPECT_EQ(requestedSamples(), 1);
    pool.makeUnreadable("samples");
    EXPECT_EQ(requestedSamples(), 8);
}

} // namespace

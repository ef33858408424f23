// SPDX-License-Identifier: Apache-2.0
// The calls of Display/HSVAdjust in one frame.
#include "DisplayRecord.h"

namespace {

class RecordOfHSVAdjust : public recording::DisplayRecord {
protected:
    RecordOfHSVAdjust() : DisplayRecord(recording::displayOf("HueSatValueFilter")) {}
};

TEST_F(RecordOfHSVAdjust, HueSatValueFilter_settings_goIntoTheTextAndIntoNoUniform) {
    const std::string uniforms = callsOfFrameWith(" = "), text = callsOfFrameWith("fragment");
    pool.set("hue", "90");
    EXPECT_EQ(callsOfFrameWith(" = "), uniforms);
    EXPECT_NE(callsOfFrameWith("fragment"), text);
}

TEST_F(RecordOfHSVAdjust, HueSatValueFilter_S2_samples_startAtEightAndAreAnEverydaySetting) {
    EXPECT_EQ(requestedSamples(), 8);
    EXPECT_EQ(expertLevel("samples"), 0);
}

TEST_F(RecordOfHSVAdjust, HueSatValueFilter_unreadableSamples_countAsEightWhateverTheyAreSetTo) {
    support::setParameter(*object, "samples", "2");
    EXPECT_EQ(requestedSamples(), 2);
    pool.makeUnreadable("samples");
    EXPECT_EQ(requestedSamples(), 8);
}

TEST_F(RecordOfHSVAdjust, HueSatValueFilter_S10_depthTest_staysOn) {
    EXPECT_EQ(callsOfFrameWith("GL_DEPTH_TEST"), "glEnable(GL_DEPTH_TEST)\n");
}

TEST_F(RecordOfHSVAdjust, HueSatValueFilter_S10_blending_goesOnAndStraightBackOffWithoutAFunction) {
    EXPECT_NE(callsOfFrame().find("\nglEnable(GL_BLEND)\nglDisable(GL_BLEND)\n"), std::string::npos);
    EXPECT_EQ(callsOfFrameWith("GL_BLEND"), "glEnable(GL_BLEND)\nglDisable(GL_BLEND)\n");
    EXPECT_EQ(callsOfFrameWith("glBlendFunc"), "");
}

TEST_F(RecordOfHSVAdjust, HueSatValueFilter_S11_depthMask_staysOff) {
    EXPECT_EQ(callsOfFrameWith("glDepthMask"), "glDepthMask(GL_FALSE)\n");
}

TEST_F(RecordOfHSVAdjust, HueSatValueFilter_S13_renderer_isCalledHDRDeferredRenderer) {
    EXPECT_EQ(rendererClass(), "plime::HueSatValueFilter::HueSatValueFilter::HDRDeferredRenderer");
}

} // namespace

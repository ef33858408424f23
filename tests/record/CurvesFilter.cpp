// SPDX-License-Identifier: Apache-2.0
// The calls of Display/CurveAdjust in one frame.
#include "DisplayRecord.h"

namespace {

class RecordOfCurveAdjust : public recording::DisplayRecord {
protected:
    RecordOfCurveAdjust() : DisplayRecord(recording::displayOf("CurvesFilter")) {}
};

TEST_F(RecordOfCurveAdjust, CurvesFilter_settings_goIntoTheTextAndIntoNoUniform) {
    const std::string uniforms = callsOfFrameWith(" = "), text = callsOfFrameWith("fragment");
    pool.set("channels", "+1 -2 +3");
    EXPECT_EQ(callsOfFrameWith(" = "), uniforms);
    EXPECT_NE(callsOfFrameWith("fragment"), text);
}

TEST_F(RecordOfCurveAdjust, CurvesFilter_V4_blending_goesOnWithTheFunctionThatIsCurrent) {
    EXPECT_FALSE(hasParameter("options"));
    EXPECT_EQ(callsOfFrameWith("GL_BLEND"), "glEnable(GL_BLEND)\n");
    EXPECT_EQ(callsOfFrameWith("glBlendFunc"), "");
}

TEST_F(RecordOfCurveAdjust, CurvesFilter_V5_depthMask_goesOffAndOnAgainRightBeforeTheQuad) {
    EXPECT_EQ(callsOfFrameWith("glDepthMask"),
              "glDepthMask(GL_FALSE)\nglDepthMask(GL_FALSE)\nglDepthMask(GL_TRUE)\n");
    EXPECT_NE(callsOfFrame().find("glEnable(GL_BLEND)\nglDepthMask(GL_FALSE)\nglDepthMask(GL_TRUE)\n"
                                  "glRenderFullScreen(1.0)\n"),
              std::string::npos);
}

TEST_F(RecordOfCurveAdjust, CurvesFilter_V7_samples_startAtEightAndAreAnEverydaySetting) {
    EXPECT_EQ(requestedSamples(), 8);
    EXPECT_EQ(expertLevel("samples"), 0);
}

TEST_F(RecordOfCurveAdjust, CurvesFilter_unreadableSamples_countAsEightWhateverTheyAreSetTo) {
    support::setParameter(*object, "samples", "2");
    EXPECT_EQ(requestedSamples(), 2);
    pool.makeUnreadable("samples");
    EXPECT_EQ(requestedSamples(), 8);
}

TEST_F(RecordOfCurveAdjust, CurvesFilter_V8_renderer_isCalledHDRDeferredRenderer) {
    EXPECT_EQ(rendererClass(), "plime::CurvesFilter::CurvesFilter::HDRDeferredRenderer");
}

} // namespace

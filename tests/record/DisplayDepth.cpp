// SPDX-License-Identifier: Apache-2.0
// The calls in one frame of the Display/Depth that shows depth.
#include "DisplayRecord.h"

#include "host/memory/Typename.h"

#include <typeinfo>

namespace {

class RecordOfDepth : public recording::DisplayRecord {
protected:
    RecordOfDepth() : DisplayRecord(recording::displayOf("DisplayDepth")) {}
};

TEST_F(RecordOfDepth, DisplayDepth_D2_samples_areNotDeclaredAndEightAreAskedFor) {
    EXPECT_FALSE(hasParameter("samples"));
    EXPECT_EQ(requestedSamples(), 8);
}

TEST_F(RecordOfDepth, DisplayDepth_D3_sampleCountOfTheTarget_isNotSet) {
    EXPECT_EQ(callsOfFrameWith(" = "), "GLProgram 1 int SceneColor = 0, flag false\n"
                                       "GLProgram 1 int SceneDepth = 1, flag false\n");
}

TEST_F(RecordOfDepth, DisplayDepth_D4_noFile_isAskedForInPlaceOfTheBody) {
    EXPECT_EQ(callsOfFrameWith("OptionalFileRead"), "");
}

TEST_F(RecordOfDepth, DisplayDepth_D6_depthMask_goesOffAndStraightBackOn) {
    EXPECT_NE(callsOfFrame().find("\nglDepthMask(GL_FALSE)\nglDepthMask(GL_TRUE)\n"), std::string::npos);
    EXPECT_EQ(callsOfFrameWith("glDepthMask"), "glDepthMask(GL_FALSE)\nglDepthMask(GL_TRUE)\n");
}

TEST_F(RecordOfDepth, DisplayDepth_D7_classes_areCalledAfterTheToneMappedDisplay) {
    const auto& display = *object;
    EXPECT_EQ(krod::typenameOf(typeid(display)), "plime::DisplayDepth::HDRObjectRenderer");
    EXPECT_EQ(rendererClass(), "plime::DisplayDepth::HDRObjectRenderer::HDRDeferredRenderer");
}

TEST_F(RecordOfDepth, DisplayDepth_blendFunction_isThatOfAlphaAndNoOptionChangesIt) {
    EXPECT_FALSE(hasParameter("options"));
    EXPECT_EQ(callsOfFrameWith("glBlendFunc"), "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)\n");
}

} // namespace

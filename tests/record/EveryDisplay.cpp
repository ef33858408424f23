// SPDX-License-Identifier: Apache-2.0
// What the frames of all displays pass alike: the life of the program, the uniforms of the target, the quad
// and its errors.
#include "DisplayRecord.h"

#include "host/gl/GLError.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>
#include <vector>

namespace {

using namespace recording;

std::string unitOf(const testing::TestParamInfo<Display>& info) { return info.param.unit; }

std::vector<Display> displaysWith(bool Display::*feature) {
    std::vector<Display> found;
    std::copy_if(Displays.begin(), Displays.end(), std::back_inserter(found),
                 [feature](const Display& display) { return display.*feature; });
    return found;
}

class EveryDisplay : public DisplayRecord, public testing::WithParamInterface<Display> {
protected:
    EveryDisplay() : DisplayRecord(GetParam()) {}
};
INSTANTIATE_TEST_SUITE_P(Record, EveryDisplay, testing::ValuesIn(Displays), unitOf);

TEST_P(EveryDisplay, defaults_callOrder) { EXPECT_TRUE(frameMatches("defaults")); }

TEST_P(EveryDisplay, unreadableSettings_callsOfTheFallbacks) {
    makeAllUnreadable();
    EXPECT_TRUE(frameMatches("unreadable"));
}

TEST_P(EveryDisplay, settingsThatChangeAfterTheFactory_areNotReadAgain) {
    const std::string expected = callsOfFrame();
    host() = {};
    {
        const auto renderer = makeRenderer();
        makeAllUnreadable();
        renderer->attach(host().scene);
        renderer->render();
    }
    EXPECT_EQ(host().calls.text(), expected);
}

TEST_P(EveryDisplay, hiddenInput_sameCalls) {
    const std::string expected = callsOfFrame();
    pool.set("InputVisibility", "false");
    EXPECT_EQ(callsOfFrame(), expected);
}

TEST_P(EveryDisplay, textureUnitsOfTheTarget_reachTheShader) {
    std::string expected = replaced(callsOfFrame(), "int SceneColor = 0", "int SceneColor = 5");
    expected = replaced(expected, "int SceneDepth = 1", "int SceneDepth = 3");
    host().scene.colorUnit = 5;
    host().scene.depthUnit = 3;
    EXPECT_EQ(callsOfFrame(), expected);
}

/// The driver may grant another count than was asked for.
TEST_P(EveryDisplay, sampleCountOfTheTarget_reachesTheShader) {
    const std::string before = callsOfFrame();
    for (const auto& [count, uniform] : {std::pair(16, "int nSamples = 16,"),
                                         {4, "int nSamples = 4,"},
                                         {1, "int nSamples = 1,"},
                                         {0, "int nSamples = 0,"}}) {
        host().scene.sampleCount = count;
        EXPECT_EQ(callsOfFrame(),
                  tested.bindsSampleCount ? replaced(before, "int nSamples = 8,", uniform) : before);
    }
}

TEST_P(EveryDisplay, flagOfTheProgram_goesWithEveryUniform) {
    drawFrame();
    const auto uniforms = host().calls.count(" = ");
    EXPECT_EQ(host().calls.count(", flag false"), uniforms);
    host() = {};
    host().reportsMissingUniforms = true;
    drawFrame();
    EXPECT_EQ(host().calls.count(", flag true"), uniforms);
    EXPECT_EQ(host().calls.count(", flag false"), 0U);
}

TEST_P(EveryDisplay, quad_isDrawnOnceAtTheFarPlane) {
    EXPECT_EQ(callsOfFrameWith("glRenderFullScreen"), "glRenderFullScreen(1.0)\n");
}

TEST_P(EveryDisplay, eachFrame_makesAndReleasesOneProgram) {
    const std::string first = callsOfFrame();
    EXPECT_EQ(host().programsMade, 1);
    EXPECT_EQ(host().programsAlive, 0);
    EXPECT_EQ(callsOfFrame(), first);
    EXPECT_EQ(host().programsMade, 1);
    EXPECT_EQ(host().programsAlive, 0);
}

TEST_P(EveryDisplay, oneRendererDrawingTwice_makesAProgramEachTime) {
    const auto renderer = makeRenderer();
    EXPECT_EQ(host().programsMade, 0);
    for (const int frame : {1, 2}) {
        renderer->render();
        EXPECT_EQ(host().programsMade, frame);
        EXPECT_EQ(host().programsAlive, 0);
    }
}

TEST_P(EveryDisplay, pendingErrorAfterTheQuad_isRaisedAndTheProgramReleased) {
    constexpr unsigned InvalidOperation = 0x0502;
    const std::string unit = tested.unit, line = testing::PrintToString(tested.quadLine);
    const std::string label = unit + '(' + line + "): Render QUAD";
    const std::string look = "GLError::throwPossibleError(\"" + label + "\", \"" + unit + "\", " + line + ')';
    const std::string before = callsOfFrame();
    try {
        host() = {.pendingError = InvalidOperation};
        drawFrame();
        FAIL() << "nothing was raised";
    } catch (const krod::GLError& error) {
        EXPECT_EQ(error.what(), label + " | " + unit + " | " + line);
        EXPECT_EQ(error.code(), InvalidOperation);
    }
    EXPECT_EQ(host().calls.text(), replaced(before, look, look + ", throws"));
    EXPECT_EQ(host().programsAlive, 0);
    EXPECT_EQ(callsOfFrame(), before);
}

TEST_P(EveryDisplay, programThatIsRefused_endsTheFrameAndLeaksNothing) {
    const std::string before = callsOfFrame();
    const std::string upToTheProgram = before.substr(0, before.find("GLProgram 1 made\n"));
    host() = {.refusesPrograms = true};
    EXPECT_THROW(drawFrame(), std::runtime_error);
    EXPECT_EQ(host().calls.text(),
              upToTheProgram + "GLProgram refused\nMultiSampleDeferredRenderer released\n");
    EXPECT_EQ(host().programsAlive, 0);
    host() = {};
    EXPECT_EQ(callsOfFrame(), before);
}

class DisplayWithSamples : public EveryDisplay {};
INSTANTIATE_TEST_SUITE_P(Record, DisplayWithSamples, testing::ValuesIn(displaysWith(&Display::readsSamples)),
                         unitOf);

TEST_P(DisplayWithSamples, samples_areAskedForAsTheyStandAndChangeNothingElse) {
    const std::string before = callsOfFrame();
    const std::string asked = "asks for " + testing::PrintToString(requestedSamples()) + " samples";
    for (const std::string count : {"5", "16", "17", "0"}) {
        pool.set("samples", count);
        EXPECT_EQ(callsOfFrame(), replaced(before, asked, "asks for " + count + " samples"));
    }
}

class DisplayWithGlow : public EveryDisplay {};
INSTANTIATE_TEST_SUITE_P(Record, DisplayWithGlow, testing::ValuesIn(displaysWith(&Display::glows)), unitOf);

TEST_P(DisplayWithGlow, glow_addsTheQuadAndChangesNothingElse) {
    const std::string before = callsOfFrame();
    pool.set("options", "+glow");
    EXPECT_TRUE(frameMatches("glow"));
    EXPECT_EQ(callsOfFrame(), replaced(before, "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)",
                                       "glBlendFunc(GL_SRC_ALPHA, GL_ONE)"));
}

TEST_P(DisplayWithGlow, glowThatIsOffUnlistedOrUnreadable_blendsByAlpha) {
    const std::string before = callsOfFrame();
    for (const std::string options : {"-glow", "", "+halo", "+Glow"}) {
        pool.set("options", options);
        EXPECT_EQ(callsOfFrame(), before) << options;
    }
    pool.makeUnreadable("options");
    EXPECT_EQ(callsOfFrame(), before);
}

} // namespace

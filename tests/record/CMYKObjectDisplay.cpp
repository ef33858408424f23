// SPDX-License-Identifier: Apache-2.0
// The calls of Display/CMYK in one frame.
#include "recording/Recording.h"
#include "tests/support/Goldens.h"
#include "tests/support/LoadedPlugin.h"
#include "tests/support/ParameterPool.h"

#include "host/gl/GLError.h"
#include "host/gl/MSDeferredObjectDisplay.h"

#include <gtest/gtest.h>

namespace {

using recording::host;
using support::ParameterPool;

const support::Goldens Golden(GOLDEN_FOLDER, ACTUAL_FOLDER);

class RecordOfCMYK : public testing::Test {
protected:
    RecordOfCMYK() { host() = {}; }

    void drawFrame() {
        krod::VGLRenderContext context(pool, 64, 48);
        display->draw(context);
    }
    testing::AssertionResult callsMatch(const std::string& name) {
        return Golden.match("CMYK/" + name + ".calls", host().calls.text());
    }

    support::LoadedPlugin plugin;
    krod::StrongPtr<krod::MSDeferredObjectDisplay> display =
        plugin.make<krod::MSDeferredObjectDisplay>("Display/CMYK");
    ParameterPool pool{*display};
};

TEST_F(RecordOfCMYK, CMYKObjectDisplay_defaults_callOrder) {
    drawFrame();
    EXPECT_TRUE(callsMatch("defaults"));
}

TEST_F(RecordOfCMYK, CMYKObjectDisplay_K4_glowAndHalo_changeNothing) {
    pool.set("options", "+glow +halo");
    drawFrame();
    EXPECT_TRUE(callsMatch("glowAndHalo"));
    EXPECT_EQ(host().calls.count("glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)"), 1U);
}

TEST_F(RecordOfCMYK, CMYKObjectDisplay_K5_samplesOfFour_rendererStillAsksForEight) {
    pool.set("samples", "4");
    drawFrame();
    EXPECT_TRUE(callsMatch("samplesOfFour"));
    EXPECT_EQ(host().calls.count("asks for 8 samples"), 1U);
}

TEST_F(RecordOfCMYK, CMYKObjectDisplay_K6_depthMask_goesOffAndStraightBackOn) {
    drawFrame();
    EXPECT_NE(host().calls.text().find("\nglDepthMask(GL_FALSE)\nglDepthMask(GL_TRUE)\n"), std::string::npos);
    EXPECT_EQ(host().calls.count("glDepthMask"), 2U);
}

TEST_F(RecordOfCMYK, CMYKObjectDisplay_unreadableSettings_sameCalls) {
    pool.makeUnreadable("samples").makeUnreadable("InputVisibility").makeUnreadable("options");
    drawFrame();
    EXPECT_TRUE(callsMatch("unreadable"));
}

TEST_F(RecordOfCMYK, CMYKObjectDisplay_sampleCountOfTheTarget_reachesTheShader) {
    for (const auto& [count, name] :
         {std::pair(4, "fourRealSamples"), {1, "oneRealSample"}, {0, "noRealSample"}}) {
        host() = {};
        host().scene.sampleCount = count;
        drawFrame();
        EXPECT_TRUE(callsMatch(name));
    }
}

TEST_F(RecordOfCMYK, CMYKObjectDisplay_textureUnitsOfTheTarget_reachTheShader) {
    host().scene.colorUnit = 5;
    host().scene.depthUnit = 3;
    drawFrame();
    EXPECT_TRUE(callsMatch("otherUnits"));
}

TEST_F(RecordOfCMYK, CMYKObjectDisplay_flagOfTheProgram_goesWithEveryUniform) {
    host().reportsMissingUniforms = true;
    drawFrame();
    EXPECT_TRUE(callsMatch("ownFlag"));
}

TEST_F(RecordOfCMYK, CMYKObjectDisplay_eachFrame_makesAndReleasesOneProgram) {
    drawFrame();
    EXPECT_EQ(host().programsMade, 1);
    EXPECT_EQ(host().programsAlive, 0);
    drawFrame();
    EXPECT_EQ(host().programsMade, 2);
    EXPECT_EQ(host().programsAlive, 0);
    EXPECT_TRUE(callsMatch("twoFrames"));
}

TEST_F(RecordOfCMYK, CMYKObjectDisplay_oneRendererDrawingTwice_makesAProgramEachTime) {
    krod::VGLRenderContext context(pool, 64, 48);
    const auto renderer = display->createRenderer(context);
    EXPECT_EQ(renderer->requestedSamples(), 8);
    EXPECT_EQ(host().programsMade, 0);
    renderer->render();
    renderer->render();
    EXPECT_EQ(host().programsMade, 2);
    EXPECT_EQ(host().programsAlive, 0);
}

TEST_F(RecordOfCMYK, CMYKObjectDisplay_pendingErrorAfterTheQuad_isRaisedAndTheProgramReleased) {
    constexpr unsigned InvalidOperation = 0x0502;
    host().pendingError = InvalidOperation;
    try {
        drawFrame();
        FAIL() << "nothing was raised";
    } catch (const krod::GLError& error) {
        EXPECT_STREQ(error.what(), "CMYKObjectDisplay(82): Render QUAD | CMYKObjectDisplay | 82");
        EXPECT_EQ(error.code(), InvalidOperation);
    }
    EXPECT_EQ(host().programsMade, 1);
    EXPECT_EQ(host().programsAlive, 0);
    EXPECT_TRUE(callsMatch("pendingError"));
    drawFrame();
    EXPECT_EQ(host().programsAlive, 0);
}

} // namespace

// SPDX-License-Identifier: Apache-2.0
// The calls in one frame of the Display/Depth that maps tones.
#include "DisplayRecord.h"

#include <utility>

namespace {

class RecordOfToneMapping : public recording::DisplayRecord {
protected:
    RecordOfToneMapping() : DisplayRecord(recording::displayOf("HDRObjectDisplay")) {}
};

TEST_F(RecordOfToneMapping, HDRObjectDisplay_everySetting_callOrder) {
    pool.set("samples", "4").set("offset", "-0.5").set("exponent", "1");
    pool.set("TransparencyExponent", "3").set("options", "+glow");
    EXPECT_TRUE(frameMatches("everySetting"));
}

/// Computed with 60 decimal digits, then rounded to double and to single precision. Single precision
/// throughout would give 0.099999994 for -1 and 1000.0001 for 3.
TEST_F(RecordOfToneMapping, HDRObjectDisplay_transparencyExponent_isComputedInDoubleAndHandedOverInSingle) {
    for (const auto& [exponent, uniform] : {std::pair("-1", "0.10000000149011612"),
                                            {"-0.25", "0.5623413324356079"},
                                            {"0", "1.0"},
                                            {"0.5", "3.1622776985168457"},
                                            {"2.7", "501.1872253417969"},
                                            {"3", "1000.0"},
                                            {"38.6", "inf"},
                                            {"1e300", "inf"},
                                            {"-50", "0.0"}}) {
        pool.set("TransparencyExponent", exponent);
        EXPECT_EQ(callsOfFrameWith(" float "),
                  std::string("GLProgram 1 float TransparencyExponent = ") + uniform + ", flag false\n");
    }
}

TEST_F(RecordOfToneMapping, HDRObjectDisplay_H6_transparencyExponent_isAUniformAndTheOthersStandInTheText) {
    const std::string uniforms = callsOfFrameWith(" = "), text = callsOfFrameWith("fragment");
    pool.set("TransparencyExponent", "0.5");
    EXPECT_NE(callsOfFrameWith(" = "), uniforms);
    EXPECT_EQ(callsOfFrameWith("fragment"), text);
    pool.set("TransparencyExponent", "0");
    for (const std::string name : {"offset", "exponent"}) {
        pool.set(name, "0.5");
        EXPECT_EQ(callsOfFrameWith(" = "), uniforms) << name;
        EXPECT_NE(callsOfFrameWith("fragment"), text) << name;
        pool.set(name, "0");
    }
}

TEST_F(RecordOfToneMapping, HDRObjectDisplay_H9_depthMask_staysOff) {
    EXPECT_EQ(callsOfFrameWith("glDepthMask"), "glDepthMask(GL_FALSE)\n");
}

TEST_F(RecordOfToneMapping, HDRObjectDisplay_H10_unreadableSamples_countAsEightThoughTheyStartAtOne) {
    EXPECT_EQ(requestedSamples(), 1);
    pool.makeUnreadable("samples");
    EXPECT_EQ(requestedSamples(), 8);
}

TEST_F(RecordOfToneMapping, HDRObjectDisplay_H11_renderer_isCalledHDRDeferredRenderer) {
    EXPECT_EQ(rendererClass(), "plime::HDRObjectDisplay::HDRObjectRenderer::HDRDeferredRenderer");
}

} // namespace

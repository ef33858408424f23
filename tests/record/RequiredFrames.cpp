// SPDX-License-Identifier: Apache-2.0
// The required calls of one frame of each display, in their order, written by hand. No golden holds them.
#include "DisplayRecord.h"

#include <regex>
#include <utility>
#include <vector>

namespace {

using namespace recording;

struct Frame {
    const char* unit; ///< the display's source file
    const char* name; ///< of the case
    std::vector<std::pair<const char*, const char*>> settings;
    std::string calls;
};

void PrintTo(const Frame& frame, std::ostream* stream) { *stream << frame.unit << ' ' << frame.name; }

/// The program is made of the four texts, which are compared elsewhere.
const std::string Program = "GLProgram 1 made\n"
                            "    vertex \"* Internal Vertex Shader *\"\n"
                            "    fragment \"* Internal Fragment Shader *\"\n"
                            "GLProgram 1 use\n";
const std::string Textures = "GLProgram 1 int SceneColor = 5, flag false\n"
                             "GLProgram 1 int SceneDepth = 3, flag false\n";
const std::string SampleCount = "GLProgram 1 int nSamples = 6, flag false\n";
/// The state of most displays: no depth is written.
const std::string State = "glDisable(GL_ALPHA_TEST)\n"
                          "glDisable(GL_COLOR_MATERIAL)\n"
                          "glEnable(GL_DEPTH_TEST)\n"
                          "glDisable(GL_DEPTH_TEST)\n"
                          "glDepthMask(GL_FALSE)\n"
                          "glDisable(GL_LIGHTING)\n"
                          "glEnable(GL_BLEND)\n";
/// The state of the two displays that switch the depth mask straight back on.
const std::string StateWithDepth = "glDisable(GL_ALPHA_TEST)\n"
                                   "glDisable(GL_COLOR_MATERIAL)\n"
                                   "glEnable(GL_DEPTH_TEST)\n"
                                   "glDisable(GL_DEPTH_TEST)\n"
                                   "glDepthMask(GL_FALSE)\n"
                                   "glDepthMask(GL_TRUE)\n"
                                   "glDisable(GL_LIGHTING)\n"
                                   "glEnable(GL_BLEND)\n";
const std::string Over = "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)\n";
const std::string Glow = "glBlendFunc(GL_SRC_ALPHA, GL_ONE)\n";

std::string renderer(const std::string& samples) {
    return "MultiSampleDeferredRenderer made, asks for " + samples + " samples\n";
}
std::string fileRead(const std::string& file) { return "Programmable::OptionalFileRead(\"" + file + "\")\n"; }
std::string uniform(const std::string& nameAndValue) {
    return "GLProgram 1 float " + nameAndValue + ", flag false\n";
}
/// The quad, the look for errors, and the end of program and renderer.
std::string quad(const std::string& unit, const std::string& line) {
    return "glRenderFullScreen(1.0)\nGLError::throwPossibleError(\"" + unit + '(' + line +
           "): Render QUAD\", \"" + unit + "\", " + line +
           ")\nGLProgram 1 released\nMultiSampleDeferredRenderer released\n";
}

const std::vector<Frame> Initial = {
    {"BlurredObject",
     "initial",
     {},
     renderer("1") + fileRead("BlurredObject.frag") + Program + Textures + SampleCount + State + Over +
         quad("BlurredObject", "172")},
    {"CMYKObjectDisplay",
     "initial",
     {},
     renderer("8") + fileRead("CMYK.frag") + Program + Textures + SampleCount + StateWithDepth + Over +
         quad("CMYKObjectDisplay", "82")},
    {"CurvesFilter",
     "initial",
     {},
     renderer("8") + fileRead("CurvesFilter.frag") + Program + Textures + SampleCount + State +
         "glDepthMask(GL_FALSE)\nglDepthMask(GL_TRUE)\n" + quad("CurvesFilter", "124")},
    {"DisplayDepth",
     "initial",
     {},
     renderer("8") + Program + Textures + StateWithDepth + Over + quad("DisplayDepth", "139")},
    {"HDRObjectDisplay",
     "initial",
     {},
     renderer("1") + fileRead("HDRObjectDisplay.frag") + Program + Textures + SampleCount +
         uniform("TransparencyExponent = 1.0") + State + Over + quad("HDRObjectDisplay", "166")},
    {"HueSatValueFilter",
     "initial",
     {},
     renderer("8") + fileRead("HueSatValueFiler.frag") + Program + Textures + SampleCount +
         "glDisable(GL_ALPHA_TEST)\nglDisable(GL_COLOR_MATERIAL)\nglEnable(GL_DEPTH_TEST)\nglDepthMask(GL_"
         "FALSE)\n"
         "glDisable(GL_LIGHTING)\nglEnable(GL_BLEND)\nglDisable(GL_BLEND)\n" +
         quad("HueSatValueFilter", "161")},
    {"PixelContours",
     "initial",
     {},
     renderer("1") + fileRead("PixelContours.frag") + Program + Textures + SampleCount +
         uniform("strength = 0.0") + uniform("LuminanceSustainbilityFactor = 0.0") + State + Over +
         quad("PixelContours", "187")},
    {"ProximityHDR",
     "initial",
     {},
     renderer("1") + fileRead("ProximityHDR.frag") + Program + Textures + SampleCount +
         uniform("strength = 0.5") + uniform("gamma = 1.0") + uniform("brightness = 1.0") + State + Over +
         quad("ProximityHDR", "201")},
};

/// Values that single precision holds exactly, and two that it rounds: 10^-1 and 10^3.
const std::vector<Frame> Changed = {
    {"BlurredObject",
     "changed",
     {{"samples", "4"}, {"width", "20"}, {"exponent", "0.5"}, {"options", "+glow"}},
     renderer("4") + fileRead("BlurredObject.frag") + Program + Textures + SampleCount + State + Glow +
         quad("BlurredObject", "172")},
    {"CMYKObjectDisplay",
     "changed",
     {{"samples", "4"}, {"options", "+glow +halo"}},
     renderer("8") + fileRead("CMYK.frag") + Program + Textures + SampleCount + StateWithDepth + Over +
         quad("CMYKObjectDisplay", "82")},
    {"CurvesFilter",
     "changed",
     {{"samples", "4"}, {"p", "0.25 0.75"}, {"channels", "-1 -2 -3"}},
     renderer("4") + fileRead("CurvesFilter.frag") + Program + Textures + SampleCount + State +
         "glDepthMask(GL_FALSE)\nglDepthMask(GL_TRUE)\n" + quad("CurvesFilter", "124")},
    {"HDRObjectDisplay",
     "least",
     {{"samples", "4"}, {"TransparencyExponent", "-1"}, {"options", "+glow"}},
     renderer("4") + fileRead("HDRObjectDisplay.frag") + Program + Textures + SampleCount +
         uniform("TransparencyExponent = 0.10000000149011612") + State + Glow +
         quad("HDRObjectDisplay", "166")},
    {"HDRObjectDisplay",
     "greatest",
     {{"TransparencyExponent", "3"}, {"offset", "1"}, {"exponent", "10"}},
     renderer("1") + fileRead("HDRObjectDisplay.frag") + Program + Textures + SampleCount +
         uniform("TransparencyExponent = 1000.0") + State + Over + quad("HDRObjectDisplay", "166")},
    {"HueSatValueFilter",
     "changed",
     {{"samples", "16"}, {"hue", "180"}, {"saturation", "0"}, {"value", "2"}, {"channels", ""}},
     renderer("16") + fileRead("HueSatValueFiler.frag") + Program + Textures + SampleCount +
         "glDisable(GL_ALPHA_TEST)\nglDisable(GL_COLOR_MATERIAL)\nglEnable(GL_DEPTH_TEST)\nglDepthMask(GL_"
         "FALSE)\n"
         "glDisable(GL_LIGHTING)\nglEnable(GL_BLEND)\nglDisable(GL_BLEND)\n" +
         quad("HueSatValueFilter", "161")},
    {"PixelContours",
     "changed",
     {{"samples", "4"}, {"width", "5"}, {"strength", "0.75"}, {"luminance", "-1.25"}, {"options", "+glow"}},
     renderer("4") + fileRead("PixelContours.frag") + Program + Textures + SampleCount +
         uniform("strength = 0.75") + uniform("LuminanceSustainbilityFactor = -1.25") + State + Glow +
         quad("PixelContours", "187")},
    {"ProximityHDR",
     "changed",
     {{"samples", "4"},
      {"width", "5"},
      {"strength", "-2.5"},
      {"gamma", "15"},
      {"brightness", "0.125"},
      {"options", "+glow"}},
     renderer("4") + fileRead("ProximityHDR.frag") + Program + Textures + SampleCount +
         uniform("strength = -2.5") + uniform("gamma = 15.0") + uniform("brightness = 0.125") + State + Glow +
         quad("ProximityHDR", "201")},
};

class RequiredFrame : public DisplayRecord, public testing::WithParamInterface<Frame> {
protected:
    RequiredFrame() : DisplayRecord(displayOf(GetParam().unit)) {
        host().scene = {.colorUnit = 5, .depthUnit = 3, .sampleCount = 6};
    }

    /// The calls of a frame without sizes and hashes of texts.
    std::string calls() {
        return std::regex_replace(callsOfFrame(), std::regex(", [0-9]+ bytes [0-9a-f]{16}"), "");
    }
};

std::string nameOf(const testing::TestParamInfo<Frame>& info) {
    return std::string(info.param.unit) + '_' + info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Initial, RequiredFrame, testing::ValuesIn(Initial), nameOf);
INSTANTIATE_TEST_SUITE_P(Changed, RequiredFrame, testing::ValuesIn(Changed), nameOf);

TEST_P(RequiredFrame, callsInTheirOrder) {
    for (const auto& [parameter, text] : GetParam().settings) pool.set(parameter, text);
    EXPECT_EQ(calls(), GetParam().calls);
}

/// A display none of whose parameters has a value in the context.
class Unreadable : public DisplayRecord {
public:
    explicit Unreadable(const char* unit) : DisplayRecord(displayOf(unit)) { makeAllUnreadable(); }
    void TestBody() override {}
    using DisplayRecord::callsOfFrameWith;
    using DisplayRecord::requestedSamples;
};

TEST(RequiredFallbacks, samples_areEightForEveryDisplay) {
    for (const Display& display : Displays)
        EXPECT_EQ(Unreadable(display.unit).requestedSamples(), 8) << display.unit;
}

TEST(RequiredFallbacks, uniforms_haveTheirOwn) {
    EXPECT_EQ(Unreadable("PixelContours").callsOfFrameWith(" float "),
              uniform("strength = 0.5") + uniform("LuminanceSustainbilityFactor = 0.0"));
    EXPECT_EQ(Unreadable("ProximityHDR").callsOfFrameWith(" float "),
              uniform("strength = 0.5") + uniform("gamma = 1.0") + uniform("brightness = 0.0"));
}

TEST(RequiredFallbacks, glow_isOff) {
    for (const char* unit : {"BlurredObject", "HDRObjectDisplay", "PixelContours", "ProximityHDR"})
        EXPECT_EQ(Unreadable(unit).callsOfFrameWith("glBlendFunc"), Over) << unit;
}

} // namespace

// SPDX-License-Identifier: Apache-2.0
// Display/Depth - maps the unbounded intensities of its input into [0, 1]. (catalogue row 9)
//     f(I) = (I / (a + I))^(10 b), a = 10^offset, b = 10^exponent, of the mean of all samples; alpha is then
//     raised to 10^TransparencyExponent
// Kept on purpose:
//   [H1] the key is shared with the depth view
//   [H2] the exponent is 10 b, ten times what the help text says
//   [H3] alpha is mapped like the colours before it is raised to its own exponent
//   [H4] the samples are averaged before the mean is mapped
//   [H5] the powers of ten are exp(v ln 10); 10.000000000000002 for 1
//   [H6] a and b stand in the text, the transparency exponent is a uniform
//   [H7] I = -a divides by zero and powers of negative quotients are left to the driver
//   [H8] the help text lacks a blank after "exponent." and ends in one
//   [H9] the depth mask stays off
//   [H10] an unreadable "samples" counts as 8, though it starts at 1
//   [H11] the renderer is called HDRDeferredRenderer, like those of three other displays
#include "PowerOfTen.h"
#include "display/DisplayFrame.h"
#include "display/ToneMappingHelp.h"

#include "host/values/VValueTrait.h"
#include "plugin/Registration.h"
#include "plugin/VSink.h"

#include "HDRObjectDisplay.frag.h"

namespace plime::HDRObjectDisplay {
namespace {

using namespace krod;

constexpr display::Body ShaderBody{"HDRObjectDisplay.frag",
                                   text::HDRObjectDisplay::Body}; // [H2] [H3] [H4] [H7]
constexpr display::Label QuadLabel{"HDRObjectDisplay", 166};

/// Decimal logarithms of the constants.
struct Settings {
    double offset = 0.0;
    double exponent = 0.0;
    double transparencyExponent = 0.0;
    bool glow = false;
};

std::string prefix(const Settings& s) {
    const auto text = [](double v) { return VValueTrait<double>::Text(powerOfTen(v)); }; // [H5]
    return "const float a = " + text(s.offset) + ";\nconst float b = " + text(s.exponent) + ";\n";
}

class HDRObjectRenderer : public MSDeferredObjectDisplay, public VSink<HDRObjectRenderer, void> {
public:
    class HDRDeferredRenderer : public MultiSampleDeferredRenderer { // [H11]
    public:
        HDRDeferredRenderer(VGLRenderContext& context, int sampleCount, const Settings& settings)
            : MultiSampleDeferredRenderer(context, sampleCount), settings(settings) {}

        void render() override {
            display::SceneProgram program(prefix(settings), ShaderBody);
            program.bindTextures(scene());
            program.bindSampleCount(scene());
            program.bindValue("TransparencyExponent", powerOfTen(settings.transparencyExponent)); // [H6]
            display::quadState(display::DepthTest::OnAndOff, display::DepthMask::Off,             // [H9]
                               display::blendOf(settings.glow));
            glRenderFullScreen(1.0);
            display::checkQuad(QuadLabel);
        }

    private:
        Settings settings;
    };

    HDRObjectRenderer(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : MSDeferredObjectDisplay(name, preferences, Samples{1, 2}) {}

    StrongPtr<MultiSampleDeferredRenderer> createRenderer(VGLRenderContext& context) override {
        int sampleCount = display::FallbackSamples; // [H10]
        Settings s;
        readSamples(context.valuePool(), sampleCount);
        offset.read(context.valuePool(), s.offset);
        exponent.read(context.valuePool(), s.exponent);
        TransparencyExponent.read(context.valuePool(), s.transparencyExponent);
        s.glow = display::flagIsOn(options, context.valuePool(), "glow");
        return StrongPtr<MultiSampleDeferredRenderer>(new HDRDeferredRenderer(context, sampleCount, s));
    }

    std::string help(int level) const override { return display::toneMappingHelp(level); } // [H8]

private:
    TypedSlot<bool> InputVisibility{this, "InputVisibility", true, 10};
    TypedSlot<double> offset{this, "offset", 0.0, 1, {.min = -1.0, .max = 1.0}};
    TypedSlot<double> exponent{this, "exponent", 0.0, 0, {.min = -2.0, .max = 10.0}};
    TypedSlot<double> TransparencyExponent{this, "TransparencyExponent", 0.0, 2, {.min = -1.0, .max = 3.0}};
    TypedSlot<FlagList> options{this, "options", FlagList("-glow", ' '), 0};
};

KROD_ROW(9)
CreatorRegistration<HDRObjectRenderer, void>
    creator({.category = "Display",
             .source = "HDRObjectDisplay",
             .name = "Depth", // [H1]
             .group = "General",
             .help = "Reduce High Intensity Colors.",
             .description = "Maps excess intensity values larger into [0.0,1.0] range."},
            0);
KROD_ROW(9)
const SlotTypes<bool, double, FlagList> slotTypes;

} // namespace
} // namespace plime::HDRObjectDisplay

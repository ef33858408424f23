// SPDX-License-Identifier: Apache-2.0
// Display/PixelContours - sharpens the outlines of its input: an average of the neighbourhood is subtracted
// from each pixel. (catalogue row 13)
//     D = C - (1 - 10^(-3 strength)) mean, C' = D mix(1, L(C) / L(D), luminance),
//     L = the largest colour component
// Kept on purpose:
//   [P1] no group, no help text, no description
//   [P2] an unreadable "strength" counts as 0.5, though it starts at 0
//   [P3] "width" 0, where it starts, is width 1
//   [P4] no limit holds here: wider is drawn wider; the weights are not normalised, the shader divides by
//        their sum
//   [P5] alpha takes part in average and difference
//   [P6] every sample repeats the whole neighbourhood of sample 0; only the depth looks at all samples
//   [P7] the quotient of the luminances is not guarded: black gives 0/0 even at "luminance" 0
//   [P8] neighbours outside the target are fetched as they are
//   [P9] the uniform of "luminance" is called LuminanceSustainbilityFactor
//   [P10] the output is called FragmentColor; gl_FragColor is not written
//   [P11] the depth mask stays off
//   [P12] an unreadable "samples" counts as 8, though it starts at 1
//   [P13] the weights are products of 1 - |x| s with s = 1 / (R + 1); 1 - |x| / (R + 1) differs in the last
//        digits
#include "display/DisplayFrame.h"
#include "display/Neighbourhood.h"

#include "plugin/Registration.h"
#include "plugin/VSink.h"

#include "PixelContours.frag.h"

namespace plime::PixelContours {
namespace {

using namespace krod;

constexpr display::Body ShaderBody{"PixelContours.frag",
                                   text::PixelContours::Body}; // [P5] [P6] [P7] [P8] [P10]
constexpr display::Label QuadLabel{"PixelContours", 187};

struct Settings {
    int width = 0;         // pixels
    double strength = 0.5; // [P2]
    double luminance = 0.0;
    bool glow = false;
};

class PixelContours : public MSDeferredObjectDisplay, public VSink<PixelContours, void> {
public:
    class MyRenderer : public MultiSampleDeferredRenderer {
    public:
        MyRenderer(VGLRenderContext& context, int sampleCount, const Settings& settings)
            : MultiSampleDeferredRenderer(context, sampleCount), settings(settings) {}

        void render() override {
            display::SceneProgram program(display::neighbourhoodArrays(settings.width),
                                          ShaderBody); // [P3] [P4] [P13]
            program.bindTextures(scene());
            program.bindSampleCount(scene());
            program.bindValue("strength", settings.strength);
            program.bindValue("LuminanceSustainbilityFactor", settings.luminance);    // [P9]
            display::quadState(display::DepthTest::OnAndOff, display::DepthMask::Off, // [P11]
                               display::blendOf(settings.glow));
            glRenderFullScreen(1.0);
            display::checkQuad(QuadLabel);
        }

    private:
        Settings settings;
    };

    PixelContours(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : MSDeferredObjectDisplay(name, preferences, Samples{1, 2}) {}

    StrongPtr<MultiSampleDeferredRenderer> createRenderer(VGLRenderContext& context) override {
        int sampleCount = display::FallbackSamples; // [P12]
        Settings s;
        readSamples(context.valuePool(), sampleCount);
        width.read(context.valuePool(), s.width);
        strength.read(context.valuePool(), s.strength);
        luminance.read(context.valuePool(), s.luminance);
        s.glow = display::flagIsOn(options, context.valuePool(), "glow");
        return StrongPtr<MultiSampleDeferredRenderer>(new MyRenderer(context, sampleCount, s));
    }

private:
    TypedSlot<bool> InputVisibility{this, "InputVisibility", true, 10};
    TypedSlot<int> width{this, "width", 0, 1, {.min = 0, .max = 5}}; // pixels
    TypedSlot<double> strength{this, "strength", 0.0, 0};
    TypedSlot<double> luminance{this, "luminance", 0.0, 0};
    TypedSlot<FlagList> options{this, "options", FlagList("-glow", ' '), 0};
};

KROD_ROW(13)
CreatorRegistration<PixelContours, void>
    creator({.category = "Display", .source = "PixelContours", .name = "PixelContours"}, 0); // [P1]
KROD_ROW(13)
const SlotTypes<bool, int, double, FlagList> slotTypes;

} // namespace
} // namespace plime::PixelContours

// SPDX-License-Identifier: Apache-2.0
// Display/ProximityHDR - tone-maps its input by the brightness of each pixel's surroundings.
// (catalogue row 14)
//     C' = (C F / L(C))^gamma, F = m / (1 + m), m = the largest weighted L in the neighbourhood,
//     L = the largest colour component / 10^strength; every texel is first multiplied by brightness
// Kept on purpose:
//   [X1] "gamma" and "brightness" have a maximum and no minimum
//   [X2] "options" has expert level 1
//   [X3] an unreadable "brightness" counts as 0, which makes every pixel 0/0, though it starts at 1
//   [X4] "width" starts at 1; 0 is width 1 too, and no limit holds here
//   [X5] the weighted average is computed and not used
//   [X6] alpha is scaled and raised like the colours
//   [X7] black is 0/0 and powers of negative values are left to the driver
//   [X8] every sample repeats the whole neighbourhood of sample 0; only the depth looks at all samples
//   [X9] a local variable of the body is called Luminance like the function that gives its value
//   [X10] the body holds two alternatives that are switched off
//   [X11] the output is called FragmentColor; gl_FragColor is not written
//   [X12] the depth mask stays off
//   [X13] besides what displays accept, outputs of type double are, of which nothing is read
//   [X14] an unreadable "samples" counts as 8, though it starts at 1
//   [X15] creator and sink are those of a double input
//   [X16] the weights are products of 1 - |x| s with s = 1 / (R + 1); 1 - |x| / (R + 1) differs in the last
//        digits
#include "display/AcceptMerge.h"
#include "display/DisplayFrame.h"
#include "display/Neighbourhood.h"

#include "plugin/Registration.h"
#include "plugin/VSink.h"

#include "ProximityHDR.frag.h"

namespace plime::ProximityHDR {
namespace {

using namespace krod;

constexpr display::Body ShaderBody{"ProximityHDR.frag",
                                   text::ProximityHDR::Body}; // [X5] [X6] [X7] [X8] [X9] [X10] [X11]
constexpr display::Label QuadLabel{"ProximityHDR", 201};

struct Settings {
    int width = 1; // pixels
    double strength = 0.5;
    double gamma = 1.0;
    double brightness = 0.0; // [X3]
    bool glow = false;
};

class ProximityHDR : public MSDeferredObjectDisplay, public VSink<double, ProximityHDR> {
public:
    class MyDeferredRenderer : public MultiSampleDeferredRenderer {
    public:
        MyDeferredRenderer(VGLRenderContext& context, int sampleCount, const Settings& settings)
            : MultiSampleDeferredRenderer(context, sampleCount), settings(settings) {}

        void render() override {
            display::SceneProgram program(display::neighbourhoodArrays(settings.width),
                                          ShaderBody); // [X4] [X16]
            program.bindTextures(scene());
            program.bindSampleCount(scene());
            program.bindValue("strength", settings.strength);
            program.bindValue("gamma", settings.gamma);
            program.bindValue("brightness", settings.brightness);
            display::quadState(display::DepthTest::OnAndOff, display::DepthMask::Off, // [X12]
                               display::blendOf(settings.glow));
            glRenderFullScreen(1.0);
            display::checkQuad(QuadLabel);
        }

    private:
        Settings settings;
    };

    ProximityHDR(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : MSDeferredObjectDisplay(name, preferences, Samples{1, 2}) {}

    AcceptInfoList accept(const WeakPtr<VObject>& object) const override { // [X13]
        const StrongPtr<VObject> candidate = object.lock();
        if (!candidate) return {};
        return display::mergedByRanking(MSDeferredObjectDisplay::accept(object),
                                        candidate->slots().getAcceptInfoList(typeid(double)));
    }

    StrongPtr<MultiSampleDeferredRenderer> createRenderer(VGLRenderContext& context) override {
        int sampleCount = display::FallbackSamples; // [X14]
        Settings s;
        readSamples(context.valuePool(), sampleCount);
        width.read(context.valuePool(), s.width);
        strength.read(context.valuePool(), s.strength);
        gamma.read(context.valuePool(), s.gamma);
        brightness.read(context.valuePool(), s.brightness);
        s.glow = display::flagIsOn(options, context.valuePool(), "glow");
        return StrongPtr<MultiSampleDeferredRenderer>(new MyDeferredRenderer(context, sampleCount, s));
    }

private:
    TypedSlot<bool> InputVisibility{this, "InputVisibility", true, 10};
    TypedSlot<int> width{this, "width", 1, 1, {.min = 0, .max = 5}}; // pixels
    TypedSlot<double> strength{this, "strength", 0.5, 0};
    TypedSlot<double> gamma{this, "gamma", 1.0, 0, {.max = 15.0}};           // [X1]
    TypedSlot<double> brightness{this, "brightness", 1.0, 0, {.max = 10.0}}; // [X1]
    TypedSlot<FlagList> options{this, "options", FlagList("-glow", ' '), 1}; // [X2]
};

KROD_ROW(14)
CreatorRegistration<ProximityHDR, double> creator( // [X15]
    {.category = "Display",
     .source = "ProximityHDR",
     .name = "ProximityHDR",
     .group = "General",
     .help = "todo",
     .description = "todo"},
    0);
KROD_ROW(14)
const SlotTypes<bool, int, double, FlagList> slotTypes;

} // namespace
} // namespace plime::ProximityHDR

// SPDX-License-Identifier: Apache-2.0
// Display/HSVAdjust - rotates the hue and scales the saturation and value of its input. (catalogue row 11)
//     RGB -> HSV, (H + hue, S saturation, V value), HSV -> RGB, per sample
// Kept on purpose:
//   [S1] "hue" has a maximum and no minimum
//   [S2] "samples" starts at 8, at expert level 0
//   [S3] an unreadable "hue" counts as 1 degree, though it starts at 0
//   [S4] an unreadable "channels" has all channels off, though they start on
//   [S5] the file that may replace the body is called HueSatValueFiler.frag
//   [S6] no case is branched to and no quotient guarded: grey divides 0 by 0 for the hue, black for the
//        saturation too
//   [S7] of red and green both at the maximum, green's formula gives the hue
//   [S8] a channel that is off takes sample 0's own value, not an average
//   [S9] alpha is always 1
//   [S10] the depth test stays on; blending goes on and straight back off, and no blend function is set
//   [S11] the depth mask stays off
//   [S12] there is no "options"
//   [S13] the renderer is called HDRDeferredRenderer
#include "display/DisplayFrame.h"

#include "host/values/VValueTrait.h"
#include "plugin/Registration.h"
#include "plugin/VSink.h"

#include "HueSatValueFiler.frag.h"

namespace plime::HueSatValueFilter {
namespace {

using namespace krod;

constexpr display::Body ShaderBody{"HueSatValueFiler.frag",       // [S5]
                                   text::HueSatValueFiler::Body}; // [S6] [S7] [S8] [S9]
constexpr display::Label QuadLabel{"HueSatValueFilter", 161};

struct Settings {
    double hue = 1.0; // degrees [S3]
    double saturation = 1.0;
    double value = 1.0;
    bool do_r = false, do_g = false, do_b = false; // [S4]
};

std::string prefix(const Settings& s) {
    const auto real = VValueTrait<double>::Text;
    const auto truth = VValueTrait<bool>::Text;
    return "const float hue = " + real(s.hue) + ";\nconst float saturation = " + real(s.saturation) +
           ";\nconst float value = " + real(s.value) + ";\nconst bool do_r = " + truth(s.do_r) +
           ";\nconst bool do_g = " + truth(s.do_g) + ";\nconst bool do_b = " + truth(s.do_b) + ";\n";
}

class HueSatValueFilter : public MSDeferredObjectDisplay, public VSink<HueSatValueFilter, void> {
public:
    class HDRDeferredRenderer : public MultiSampleDeferredRenderer { // [S13]
    public:
        HDRDeferredRenderer(VGLRenderContext& context, int sampleCount, const Settings& settings)
            : MultiSampleDeferredRenderer(context, sampleCount), settings(settings) {}

        void render() override {
            display::SceneProgram program(prefix(settings), ShaderBody);
            program.bindTextures(scene());
            program.bindSampleCount(scene());
            display::quadState(display::DepthTest::On, display::DepthMask::Off, // [S11]
                               display::Blend::OnAndOff);                       // [S10]
            glRenderFullScreen(1.0);
            display::checkQuad(QuadLabel);
        }

    private:
        Settings settings;
    };

    HueSatValueFilter(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : MSDeferredObjectDisplay(name, preferences, Samples{8, 0}) {} // [S2]

    StrongPtr<MultiSampleDeferredRenderer> createRenderer(VGLRenderContext& context) override {
        int sampleCount = display::FallbackSamples;
        Settings s;
        readSamples(context.valuePool(), sampleCount);
        hue.read(context.valuePool(), s.hue);
        saturation.read(context.valuePool(), s.saturation);
        value.read(context.valuePool(), s.value);
        s.do_r = display::flagIsOn(channels, context.valuePool(), "1");
        s.do_g = display::flagIsOn(channels, context.valuePool(), "2");
        s.do_b = display::flagIsOn(channels, context.valuePool(), "3");
        return StrongPtr<MultiSampleDeferredRenderer>(new HDRDeferredRenderer(context, sampleCount, s));
    }

private:
    TypedSlot<bool> InputVisibility{this, "InputVisibility", true, 10}; // and no "options" [S12]
    TypedSlot<double> hue{this, "hue", 0.0, 0, {.max = 180.0}};         // degrees [S1]
    TypedSlot<double> saturation{this, "saturation", 1.0, 0};
    TypedSlot<double> value{this, "value", 1.0, 0};
    TypedSlot<FlagList> channels{this, "channels", FlagList("+1 +2 +3", ' '), 0};
};

KROD_ROW(11)
CreatorRegistration<HueSatValueFilter, void>
    creator({.category = "Display",
             .source = "HueSatValueFilter",
             .name = "HSVAdjust",
             .group = "General",
             .help = "Adjust colors in hue saturation value color space.",
             .description = "todo"},
            0);
KROD_ROW(11)
const SlotTypes<bool, double, FlagList> slotTypes;

} // namespace
} // namespace plime::HueSatValueFilter

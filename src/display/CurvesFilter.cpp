// SPDX-License-Identifier: Apache-2.0
// Display/CurveAdjust - remaps the colour channels of its input through a curve of two segments.
// (catalogue row 4)
//     c -> k1 c below px, c/k1 + d2 from there on; k1 = py/px, d2 = 1 - (py - 1)/(px - 1), per sample
// Kept on purpose:
//   [V1] the upper segment has the reciprocal of the lower slope and the intercept of another line: the two
//        meet at (px, py) only where px and py are equal or add up to 1
//   [V2] "p" is not clamped and no quotient is guarded: px 0 and px 1 divide by zero
//   [V3] alpha is that of sample 0, not an average
//   [V4] no blend function is set: the quad is blended with the current one, and there is no "options"
//   [V5] the depth mask goes off with the rest of the state, and off and on again right before the quad
//   [V6] an unreadable "channels" has all channels off, though they start on
//   [V7] "samples" starts at 8, at expert level 0
//   [V8] the renderer is called HDRDeferredRenderer
#include "display/DisplayFrame.h"

#include "host/values/VValueTrait.h"
#include "plugin/Registration.h"
#include "plugin/VSink.h"

#include "CurvesFilter.frag.h"

namespace plime::CurvesFilter {
namespace {

using namespace krod;

constexpr display::Body ShaderBody{"CurvesFilter.frag", text::CurvesFilter::Body}; // [V1] [V2] [V3]
constexpr display::Label QuadLabel{"CurvesFilter", 124};

struct Settings {
    double px = 0.5, py = 0.5;
    bool do_r = false, do_g = false, do_b = false; // [V6]
};

std::string prefix(const Settings& s) {
    const auto real = VValueTrait<double>::Text;
    const auto truth = VValueTrait<bool>::Text;
    return "const float px = " + real(s.px) + ";\nconst float py = " + real(s.py) +
           ";\nconst bool do_r = " + truth(s.do_r) + ";\nconst bool do_g = " + truth(s.do_g) +
           ";\nconst bool do_b = " + truth(s.do_b) + ";\n";
}

class CurvesFilter : public MSDeferredObjectDisplay, public VSink<CurvesFilter, void> {
public:
    class HDRDeferredRenderer : public MultiSampleDeferredRenderer { // [V8]
    public:
        HDRDeferredRenderer(VGLRenderContext& context, int sampleCount, const Settings& settings)
            : MultiSampleDeferredRenderer(context, sampleCount), settings(settings) {}

        void render() override {
            display::SceneProgram program(prefix(settings), ShaderBody);
            program.bindTextures(scene());
            program.bindSampleCount(scene());
            display::quadState(display::DepthTest::OnAndOff, display::DepthMask::Off,
                               display::Blend::AsItStands); // [V4]
            display::depthMaskOffAndOn();                   // [V5]
            glRenderFullScreen(1.0);
            display::checkQuad(QuadLabel);
        }

    private:
        Settings settings;
    };

    CurvesFilter(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : MSDeferredObjectDisplay(name, preferences, Samples{8, 0}) {} // [V7]

    StrongPtr<MultiSampleDeferredRenderer> createRenderer(VGLRenderContext& context) override {
        int sampleCount = display::FallbackSamples;
        Settings s;
        FixedArray<double, 2> knee(s.px, s.py);
        readSamples(context.valuePool(), sampleCount);
        p.read(context.valuePool(), knee);
        s.px = knee[0];
        s.py = knee[1];
        s.do_r = display::flagIsOn(channels, context.valuePool(), "1");
        s.do_g = display::flagIsOn(channels, context.valuePool(), "2");
        s.do_b = display::flagIsOn(channels, context.valuePool(), "3");
        return StrongPtr<MultiSampleDeferredRenderer>(new HDRDeferredRenderer(context, sampleCount, s));
    }

private:
    TypedSlot<bool> InputVisibility{this, "InputVisibility", true, 10};
    TypedSlot<FixedArray<double, 2>> p{this, "p", FixedArray<double, 2>(0.5, 0.5), 0};
    TypedSlot<FlagList> channels{this, "channels", FlagList("+1 +2 +3", ' '), 0};
};

KROD_ROW(4)
CreatorRegistration<CurvesFilter, void> creator({.category = "Display",
                                                 .source = "CurvesFilter",
                                                 .name = "CurveAdjust",
                                                 .group = "General",
                                                 .help = "Adjust colors using curve image operation",
                                                 .description = "todo"},
                                                0);
KROD_ROW(4)
const SlotTypes<bool, FixedArray<double, 2>, FlagList> slotTypes;

} // namespace
} // namespace plime::CurvesFilter

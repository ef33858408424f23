// SPDX-License-Identifier: Apache-2.0
// Display/CMYK - shows the cyan, magenta and yellow parts of its input as red, green and blue.
// (catalogue row 3)
//     K = min(1 - r, 1 - g, b), W = 1 - K, (C, M, Y) = ((W - r)/W, (W - g)/W, (W - b)/W), per sample
// Kept on purpose:
//   [K1] the third term of K is b itself, not 1 - b; pure blue divides by zero, unguarded
//   [K2] the RGB that the separation would give back is computed and not used; its return line is a comment
//   [K3] with N > 1 samples the sum of N is divided by N - 1: the picture, alpha included, is too bright by
//        that
//   [K4] the flags "glow" and "halo" change nothing
//   [K5] the renderer asks for 8 samples, whatever "samples" says
//   [K6] the depth mask goes off and straight back on
#include "display/DisplayFrame.h"

#include "plugin/Registration.h"
#include "plugin/VSink.h"

#include "CMYK.frag.h"

namespace plime::CMYKObjectDisplay {
namespace {

using namespace krod;

constexpr display::Body ShaderBody{"CMYK.frag", text::CMYK::Body}; // [K1] [K2] [K3]
constexpr display::Label QuadLabel{"CMYKObjectDisplay", 82};
constexpr int RendererSamples = 8; // [K5]

class MyObjectDisplay : public MSDeferredObjectDisplay, public VSink<MyObjectDisplay, void> {
public:
    class MyDeferredRenderer : public MultiSampleDeferredRenderer {
    public:
        using MultiSampleDeferredRenderer::MultiSampleDeferredRenderer;

        void render() override {
            display::SceneProgram program("", ShaderBody);
            program.bindTextures(scene());
            program.bindSampleCount(scene());
            display::quadState(display::DepthTest::OnAndOff, display::DepthMask::OffAndOn, // [K6]
                               display::Blend::Over);                                      // [K4]
            glRenderFullScreen(1.0);
            display::checkQuad(QuadLabel);
        }
    };

    MyObjectDisplay(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : MSDeferredObjectDisplay(name, preferences, Samples{8, 0}) {}

    StrongPtr<MultiSampleDeferredRenderer> createRenderer(VGLRenderContext& context) override {
        return StrongPtr<MultiSampleDeferredRenderer>(new MyDeferredRenderer(context, RendererSamples));
    }

private:
    TypedSlot<bool> InputVisibility{this, "InputVisibility", true, 10};
    TypedSlot<FlagList> options{this, "options", FlagList("-glow -halo", ' '), 0};
};

KROD_ROW(3)
CreatorRegistration<MyObjectDisplay, void> creator({.category = "Display",
                                                    .source = "CMYKObjectDisplay",
                                                    .name = "CMYK",
                                                    .group = "General",
                                                    .help = "todo",
                                                    .description = "todo"},
                                                   0);
KROD_ROW(3)
const SlotTypes<bool, FlagList> slotTypes;

} // namespace
} // namespace plime::CMYKObjectDisplay

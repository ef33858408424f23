// SPDX-License-Identifier: Apache-2.0
// Display/Depth - shows the depth of its input as grey, with the input's own alpha. (catalogue row 5)
// Kept on purpose:
//   [D1] the key is shared with the tone-mapped display
//   [D2] "samples" is not declared; the renderer asks for 8
//   [D3] only sample 0 is read, of colour and depth, and "nSamples" is neither declared nor set
//   [D4] no file may replace the body
//   [D5] what the module says about itself describes the tone-mapped display
//   [D6] the depth mask goes off and straight back on
//   [D7] the classes are called HDRObjectRenderer and HDRDeferredRenderer
#include "display/DisplayFrame.h"
#include "display/ToneMappingHelp.h"

#include "plugin/Registration.h"
#include "plugin/VSink.h"

namespace plime::DisplayDepth {
namespace {

using namespace krod;

constexpr display::Body ShaderBody{nullptr, // [D4]
                                   "uniform sampler2DMS SceneColor;\n"
                                   "uniform sampler2DMS SceneDepth;\n"
                                   "\n"
                                   "void main()\n"
                                   "{\n"
                                   "ivec2\tP = ivec2(gl_FragCoord.xy);\n"
                                   "float\tDepth = texelFetch(SceneDepth, P, 0).r;\n"
                                   "float\tAlpha = texelFetch(SceneColor, P, 0).a;\n"
                                   "\n"
                                   "\tgl_FragColor = vec4(Depth, Depth, Depth, Alpha);\n"
                                   "\tgl_FragDepth = Depth;\n"
                                   "}\n"};
constexpr display::Label QuadLabel{"DisplayDepth", 139};

class HDRObjectRenderer : public MSDeferredObjectDisplay, public VSink<HDRObjectRenderer, void> { // [D7]
public:
    class HDRDeferredRenderer : public MultiSampleDeferredRenderer {
    public:
        using MultiSampleDeferredRenderer::MultiSampleDeferredRenderer;

        void render() override {
            display::SceneProgram program("", ShaderBody);
            program.bindTextures(scene());                                                 // [D3]
            display::quadState(display::DepthTest::OnAndOff, display::DepthMask::OffAndOn, // [D6]
                               display::Blend::Over);
            glRenderFullScreen(1.0);
            display::checkQuad(QuadLabel);
        }
    };

    HDRObjectRenderer(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : MSDeferredObjectDisplay(name, preferences) {} // [D2]

    StrongPtr<MultiSampleDeferredRenderer> createRenderer(VGLRenderContext& context) override {
        int sampleCount = display::FallbackSamples;
        readSamples(context.valuePool(), sampleCount);
        return StrongPtr<MultiSampleDeferredRenderer>(new HDRDeferredRenderer(context, sampleCount));
    }

    std::string help(int level) const override { return display::toneMappingHelp(level); } // [D5]

private:
    TypedSlot<bool> InputVisibility{this, "InputVisibility", true, 10};
};

KROD_ROW(5)
CreatorRegistration<HDRObjectRenderer, void>
    creator({.category = "Display",
             .source = "DisplayDepth",
             .name = "Depth", // [D1]
             .group = "General",
             .help = "Uses the depth information of an object as colorization.",
             .description = "Display the depth of an object as grayscale."},
            0);
KROD_ROW(5)
const SlotTypes<bool> slotTypes;

} // namespace
} // namespace plime::DisplayDepth

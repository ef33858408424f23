// SPDX-License-Identifier: Apache-2.0
// Display/Blurred - blurs the picture of its input horizontally, by a kernel that falls off to both sides.
// (catalogue row 2)
//     w[i] = (1 - |i - m| 2/n)^p, n = max(3, trunc(width)), m = n / 2 without rest, p = 10^exponent
// Kept on purpose:
//   [B1] the initial width 1 lies below its own minimum 3
//   [B2] no limit holds here: 25 gives 25 taps; what is less than 3 or no integer of 32 bits gives 3
//   [B3] an even number of taps is lopsided: the first weight is 0
//   [B4] p is exp(ln 10 exponent), and the weights are not normalised: the shader divides by their sum
//   [B5] the vertical blur exists in the text and is never chosen
//   [B6] the loop over the samples adds the same blur of sample 0 again; only the depth looks at all samples
//   [B7] the text holds a weighting by the eighth power of blue that is switched off
//   [B8] the depth mask stays off
//   [B9] an unreadable "samples" counts as 8, though it starts at 1
//   [B10] creator and sink are those of a double input, which nothing reads
#include "PowerOfTen.h"
#include "display/DisplayFrame.h"

#include "host/values/VValueTrait.h"
#include "plugin/Registration.h"
#include "plugin/VSink.h"

#include "BlurredObject.frag.h"

#include <cmath>
#include <cstdlib>
#include <vector>

namespace plime::BlurredObject {
namespace {

using namespace krod;

constexpr display::Body ShaderBody{"BlurredObject.frag", text::BlurredObject::Body}; // [B6] [B7]
constexpr display::Label QuadLabel{"BlurredObject", 172};

struct Settings {
    double width = 1.0; // pixels
    double exponent = 0.0;
    bool glow = false;
    bool vertical = false; // [B5]
};

/// The integer part of the width, at least 3. [B2]
int tapCount(double width) {
    constexpr double End = 2147483648.0; // the first that is no int any more
    return width >= 3.0 && width < End ? static_cast<int>(width) : 3;
}

std::vector<double> kernel(double width, double exponent) {
    const int n = tapCount(width);
    const int m = n / 2; // [B3]
    const double p = powerOfTen(exponent);
    std::vector<double> weights;
    for (int i = 0; i < n; ++i) weights.push_back(std::pow(1.0 - std::abs(i - m) * (2.0 / n), p)); // [B4]
    return weights;
}

std::string prefix(const Settings& s) {
    std::string taps;
    for (const double weight : kernel(s.width, s.exponent)) {
        if (!taps.empty()) taps += ", ";
        taps += VValueTrait<double>::Text(weight);
    }
    return std::string("const\tint\thorizontal = ") + (s.vertical ? "0" : "1") +
           ";\nconst float filter[] = float[](" + taps + ");\n";
}

class BlurredObjectRenderer : public MSDeferredObjectDisplay, public VSink<double, BlurredObjectRenderer> {
public:
    class BlurredDeferredRenderer : public MultiSampleDeferredRenderer {
    public:
        BlurredDeferredRenderer(VGLRenderContext& context, int sampleCount, const Settings& settings)
            : MultiSampleDeferredRenderer(context, sampleCount), settings(settings) {}

        void render() override {
            display::SceneProgram program(prefix(settings), ShaderBody);
            program.bindTextures(scene());
            program.bindSampleCount(scene());
            display::quadState(display::DepthTest::OnAndOff, display::DepthMask::Off, // [B8]
                               display::blendOf(settings.glow));
            glRenderFullScreen(1.0);
            display::checkQuad(QuadLabel);
        }

    private:
        Settings settings;
    };

    BlurredObjectRenderer(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : MSDeferredObjectDisplay(name, preferences, Samples{1, 2}) {}

    StrongPtr<MultiSampleDeferredRenderer> createRenderer(VGLRenderContext& context) override {
        int sampleCount = display::FallbackSamples; // [B9]
        Settings s;
        readSamples(context.valuePool(), sampleCount);
        width.read(context.valuePool(), s.width);
        exponent.read(context.valuePool(), s.exponent);
        s.glow = display::flagIsOn(options, context.valuePool(), "glow");
        return StrongPtr<MultiSampleDeferredRenderer>(new BlurredDeferredRenderer(context, sampleCount, s));
    }

private:
    TypedSlot<bool> InputVisibility{this, "InputVisibility", true, 10};
    TypedSlot<double> width{this, "width", 1.0, 0, {.min = 3.0, .max = 20.0}}; // pixels [B1]
    TypedSlot<double> exponent{this, "exponent", 0.0, 0, {.min = -0.5, .max = 0.5}};
    TypedSlot<FlagList> options{this, "options", FlagList("-glow", ' '), 0};
};

KROD_ROW(2)
CreatorRegistration<BlurredObjectRenderer, double> creator( // [B10]
    {.category = "Display",
     .source = "BlurredObject",
     .name = "Blurred",
     .group = "General",
     .help = "Blur object in image space.",
     .description = "todo"},
    0);
KROD_ROW(2)
const SlotTypes<bool, double, FlagList> slotTypes;

} // namespace
} // namespace plime::BlurredObject

// SPDX-License-Identifier: Apache-2.0
// Display/Blurred - blurs the picture of its input horizontally. (catalogue row 2)
// Kept on purpose:
//   [B1] the initial width 1 lies below its own minimum 3
#include "Announced.h"
#include "display/DisplayFrame.h"

#include "plugin/Registration.h"
#include "plugin/VSink.h"

namespace plime::BlurredObject {
namespace {

using namespace krod;

class BlurredObjectRenderer : public MSDeferredObjectDisplay, public VSink<double, BlurredObjectRenderer> {
public:
    BlurredObjectRenderer(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : MSDeferredObjectDisplay(name, preferences, Samples{1, 2}) {}

    StrongPtr<MultiSampleDeferredRenderer> createRenderer(VGLRenderContext&) override {
        announcedOnly("Display/Blurred", "draw");
    }

private:
    TypedSlot<bool> InputVisibility{this, "InputVisibility", true, 10};
    TypedSlot<double> width{this, "width", 1.0, 0, {.min = 3.0, .max = 20.0}}; // pixels [B1]
    TypedSlot<double> exponent{this, "exponent", 0.0, 0, {.min = -0.5, .max = 0.5}};
    TypedSlot<FlagList> options{this, "options", FlagList("-glow", ' '), 0};
};

KROD_ROW(2)
const ObjectRegistration<BlurredObjectRenderer, double, SlotTypes<bool, double, FlagList>>
    registration({.category = "Display",
                  .source = "BlurredObject",
                  .name = "Blurred",
                  .group = "General",
                  .help = "Blur object in image space.",
                  .description = "todo"},
                 0);

} // namespace
} // namespace plime::BlurredObject

// SPDX-License-Identifier: Apache-2.0
// Display/Depth - maps the unbounded intensities of its input into [0, 1]. (catalogue row 9)
// Kept on purpose:
//   [H1] the key is shared with the depth view
#include "Announced.h"
#include "display/DisplayFrame.h"

#include "plugin/Registration.h"
#include "plugin/VSink.h"

namespace plime::HDRObjectDisplay {
namespace {

using namespace krod;

class HDRObjectRenderer : public MSDeferredObjectDisplay, public VSink<HDRObjectRenderer, void> {
public:
    HDRObjectRenderer(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : MSDeferredObjectDisplay(name, preferences, Samples{1, 2}) {}

    StrongPtr<MultiSampleDeferredRenderer> createRenderer(VGLRenderContext&) override {
        announcedOnly("Display/Depth", "draw");
    }

private:
    TypedSlot<bool> InputVisibility{this, "InputVisibility", true, 10};
    TypedSlot<double> offset{this, "offset", 0.0, 1, {.min = -1.0, .max = 1.0}};
    TypedSlot<double> exponent{this, "exponent", 0.0, 0, {.min = -2.0, .max = 10.0}};
    TypedSlot<double> TransparencyExponent{this, "TransparencyExponent", 0.0, 2, {.min = -1.0, .max = 3.0}};
    TypedSlot<FlagList> options{this, "options", FlagList("-glow", ' '), 0};
};

KROD_ROW(9)
const ObjectRegistration<HDRObjectRenderer, void, SlotTypes<bool, double, FlagList>>
    registration({.category = "Display",
                  .source = "HDRObjectDisplay",
                  .name = "Depth",
                  .group = "General",
                  .help = "Reduce High Intensity Colors.",
                  .description = "Maps excess intensity values larger into [0.0,1.0] range."},
                 0);

} // namespace
} // namespace plime::HDRObjectDisplay

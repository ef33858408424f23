// SPDX-License-Identifier: Apache-2.0
// Display/ProximityHDR - tone-maps its input by the brightness of each pixel's surroundings. (catalogue row 14)
// Kept on purpose:
//   [X1] "gamma" and "brightness" have a maximum and no minimum
//   [X2] "options" has expert level 1
#include "Announced.h"
#include "display/DisplayFrame.h"

#include "plugin/Registration.h"
#include "plugin/VSink.h"

namespace plime::ProximityHDR {
namespace {

using namespace krod;

class ProximityHDR : public MSDeferredObjectDisplay, public VSink<double, ProximityHDR> {
public:
    ProximityHDR(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : MSDeferredObjectDisplay(name, preferences, Samples{1, 2}) {}

    StrongPtr<MultiSampleDeferredRenderer> createRenderer(VGLRenderContext&) override {
        announcedOnly("Display/ProximityHDR", "draw");
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
const ObjectRegistration<ProximityHDR, double, SlotTypes<bool, int, double, FlagList>>
    registration({.category = "Display",
                  .source = "ProximityHDR",
                  .name = "ProximityHDR",
                  .group = "General",
                  .help = "todo",
                  .description = "todo"},
                 0);

} // namespace
} // namespace plime::ProximityHDR

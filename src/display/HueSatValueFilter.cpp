// SPDX-License-Identifier: Apache-2.0
// Display/HSVAdjust - rotates the hue and scales the saturation and value of its input. (catalogue row 11)
// Kept on purpose:
//   [S1] "hue" has a maximum and no minimum
#include "Announced.h"
#include "display/DisplayFrame.h"

#include "plugin/Registration.h"
#include "plugin/VSink.h"

namespace plime::HueSatValueFilter {
namespace {

using namespace krod;

class HueSatValueFilter : public MSDeferredObjectDisplay, public VSink<HueSatValueFilter, void> {
public:
    HueSatValueFilter(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : MSDeferredObjectDisplay(name, preferences, Samples{8, 0}) {}

    StrongPtr<MultiSampleDeferredRenderer> createRenderer(VGLRenderContext&) override {
        announcedOnly("Display/HSVAdjust", "draw");
    }

private:
    TypedSlot<bool> InputVisibility{this, "InputVisibility", true, 10};
    TypedSlot<double> hue{this, "hue", 0.0, 0, {.max = 180.0}}; // degrees [S1]
    TypedSlot<double> saturation{this, "saturation", 1.0, 0};
    TypedSlot<double> value{this, "value", 1.0, 0};
    TypedSlot<FlagList> channels{this, "channels", FlagList("+1 +2 +3", ' '), 0};
};

KROD_ROW(11)
const ObjectRegistration<HueSatValueFilter, void, SlotTypes<bool, double, FlagList>>
    registration({.category = "Display",
                  .source = "HueSatValueFilter",
                  .name = "HSVAdjust",
                  .group = "General",
                  .help = "Adjust colors in hue saturation value color space.",
                  .description = "todo"},
                 0);

} // namespace
} // namespace plime::HueSatValueFilter

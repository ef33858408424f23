// SPDX-License-Identifier: Apache-2.0
// Display/PixelContours - sharpens the outlines of its input. (catalogue row 13)
// Kept on purpose:
//   [P1] no group, no help text, no description
#include "Announced.h"
#include "display/DisplayFrame.h"

#include "plugin/Registration.h"
#include "plugin/VSink.h"

namespace plime::PixelContours {
namespace {

using namespace krod;

class PixelContours : public MSDeferredObjectDisplay, public VSink<PixelContours, void> {
public:
    PixelContours(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : MSDeferredObjectDisplay(name, preferences, Samples{1, 2}) {}

    StrongPtr<MultiSampleDeferredRenderer> createRenderer(VGLRenderContext&) override {
        announcedOnly("Display/PixelContours", "draw");
    }

private:
    TypedSlot<bool> InputVisibility{this, "InputVisibility", true, 10};
    TypedSlot<int> width{this, "width", 0, 1, {.min = 0, .max = 5}}; // pixels
    TypedSlot<double> strength{this, "strength", 0.0, 0};
    TypedSlot<double> luminance{this, "luminance", 0.0, 0};
    TypedSlot<FlagList> options{this, "options", FlagList("-glow", ' '), 0};
};

KROD_ROW(13)
const ObjectRegistration<PixelContours, void, SlotTypes<bool, int, double, FlagList>>
    registration({.category = "Display", .source = "PixelContours", .name = "PixelContours"}, 0);

} // namespace
} // namespace plime::PixelContours

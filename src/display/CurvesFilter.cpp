// SPDX-License-Identifier: Apache-2.0
// Display/CurveAdjust - remaps the colour channels of its input through a curve of two segments. (catalogue row 4)
#include "Announced.h"
#include "display/DisplayFrame.h"

#include "plugin/Registration.h"
#include "plugin/VSink.h"

namespace plime::CurvesFilter {
namespace {

using namespace krod;

class CurvesFilter : public MSDeferredObjectDisplay, public VSink<CurvesFilter, void> {
public:
    CurvesFilter(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : MSDeferredObjectDisplay(name, preferences, Samples{8, 0}) {}

    StrongPtr<MultiSampleDeferredRenderer> createRenderer(VGLRenderContext&) override {
        announcedOnly("Display/CurveAdjust", "draw");
    }

private:
    TypedSlot<bool> InputVisibility{this, "InputVisibility", true, 10};
    TypedSlot<FixedArray<double, 2>> p{this, "p", FixedArray<double, 2>(0.5, 0.5), 0};
    TypedSlot<FlagList> channels{this, "channels", FlagList("+1 +2 +3", ' '), 0};
};

KROD_ROW(4)
const ObjectRegistration<CurvesFilter, void, SlotTypes<bool, FixedArray<double, 2>, FlagList>>
    registration({.category = "Display",
                  .source = "CurvesFilter",
                  .name = "CurveAdjust",
                  .group = "General",
                  .help = "Adjust colors using curve image operation",
                  .description = "todo"},
                 0);

} // namespace
} // namespace plime::CurvesFilter

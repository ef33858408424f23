// SPDX-License-Identifier: Apache-2.0
// Display/Depth - shows the depth of its input as grey. (catalogue row 5)
// Kept on purpose:
//   [D1] the key is shared with the tone-mapped display
//   [D2] "samples" is not declared
#include "Announced.h"
#include "display/DisplayFrame.h"

#include "plugin/Registration.h"
#include "plugin/VSink.h"

namespace plime::DisplayDepth {
namespace {

using namespace krod;

class HDRObjectRenderer : public MSDeferredObjectDisplay, public VSink<HDRObjectRenderer, void> {
public:
    HDRObjectRenderer(const std::string& name, const StrongPtr<VCreationPreferences>& preferences)
        : MSDeferredObjectDisplay(name, preferences) {}

    StrongPtr<MultiSampleDeferredRenderer> createRenderer(VGLRenderContext&) override {
        announcedOnly("Display/Depth", "draw");
    }

private:
    TypedSlot<bool> InputVisibility{this, "InputVisibility", true, 10};
};

KROD_ROW(5)
const ObjectRegistration<HDRObjectRenderer, void, SlotTypes<bool>>
    registration({.category = "Display",
                  .source = "DisplayDepth",
                  .name = "Depth",
                  .group = "General",
                  .help = "Uses the depth information of an object as colorization.",
                  .description = "Display the depth of an object as grayscale."},
                 0);

} // namespace
} // namespace plime::DisplayDepth

// SPDX-License-Identifier: Apache-2.0
// Every slot of a module is counted when the module is destroyed, those of the host's bases too.
#include "Scene.h"

#include "host/core/TypedSlotCreator.h"

#include <gtest/gtest.h>

#include <array>

namespace {

/// The parameters of each module, in the order of the catalogue. Displays have "samples" among them, but for the
/// depth display, which has "InputVisibility" alone; outputs are no slots.
constexpr std::array<int, scene::Catalogue.size()> Slots = {
    0, // ArcTangens
    5, // Blurred
    3, // CMYK
    4, // CurveAdjust
    1, // Depth@DisplayDepth
    4, // ColorGammaCorrection
    0, // GammaCorrection
    4, // HDRColoredToneMapping
    6, // Depth@HDRObjectDisplay
    2, // HDRToneMapping
    6, // HSVAdjust
    3, // PixelBlur
    6, // PixelContours
    7, // ProximityHDR
    1, // TileProgram
};

} // namespace

TEST(Slots, Of_a_destroyed_module_are_counted_one_by_one) {
    workbench::PluginManager manager;
    manager.load(TOVAR_PLIME);
    scene::OutputRecord output;
    for (std::size_t row = 0; row < Slots.size(); ++row) {
        auto object = scene::make(scene::Catalogue[row]);
        const auto before = krod::TypedSlotCreator::InternalTypeCreatorAccessory.load();
        object.reset();
        EXPECT_EQ(krod::TypedSlotCreator::InternalTypeCreatorAccessory - before, Slots[row])
            << scene::Catalogue[row];
    }
    EXPECT_EQ(output.text(), "") << "the type of every slot was registered";
}

// SPDX-License-Identifier: Apache-2.0
// Visible area of a drawn scene, and a warning where there is next to none.
#pragma once

#include "apps/plime/commandline/ViewOptions.h"
#include "apps/plime/modules/ModuleInstance.h"
#include "apps/plime/terminal/Report.h"

#include "host/rendering/RGBAHalf.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

/// Counts the pixels of a picture that show something.
class VisibleArea {
public:
    /// Without displays that is what differs from the background, behind them what is not black.
    VisibleArea(const std::array<float, 4>& background, bool isBehindDisplays);

    void add(const std::vector<krod::RGBAHalf>& pixels);
    /// From 0 to 1; 1 without pixels.
    [[nodiscard]] double share() const noexcept;

private:
    std::array<float, 3> nothing{};
    std::uint64_t seen = 0, all = 0;
};

/// What was drawn; everything is borrowed.
struct DrawnScene {
    const ModuleInstance& scene;
    const std::string& input; ///< what people call it
    const SceneExtent& extent;
    const FrameSetup& setup;
    std::string lastDisplay; ///< the key of the display nearest to the eye, or empty
};

/// Warns, with what to type, where the picture shows nothing, or a scene from its edge.
void warnOfUnseen(Report& report, const DrawnScene& drawn, const VisibleArea& visible);

} // namespace workbench

// SPDX-License-Identifier: Apache-2.0
// From where a scene is seen: --size, --camera, --up, --background.
#pragma once

#include "apps/plime/Command.h"
#include "workbench/gl/SceneRenderer.h"

#include <optional>
#include <string>

namespace workbench {

/// The words of the command line, and what they mean.
struct ViewOptions {
    std::optional<std::string> size, camera, up, background, tile, overlap;

    /// Adds the options to a command's syntax.
    void addTo(Syntax& syntax);
    /// 1280x720 unless asked otherwise, the camera fitted to the bounds. Throws Failure(Usage) that names the
    /// option.
    [[nodiscard]] FrameSetup frameOf(const krod::BoundingSphere& bounds) const;
};

} // namespace workbench

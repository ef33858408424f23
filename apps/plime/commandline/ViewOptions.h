// SPDX-License-Identifier: Apache-2.0
// From where a scene is seen, and in which tiles: --size, --camera, --up, --background, --tile, --overlap.
#pragma once

#include "apps/plime/commandline/Command.h"
#include "workbench/files/FileContent.h"
#include "workbench/gl/SceneRenderer.h"
#include "workbench/network/Network.h"

#include <optional>
#include <string>

namespace workbench {

/// The sides of the tiles in which scenes are drawn, in pixels.
inline constexpr int SmallestDrawnTile = 16, LargestDrawnTile = 16384;
/// The smallest --tile. Tiles are files until the picture is complete; smaller ones would be millions.
inline constexpr int SmallestAskedTile = 64;
/// The largest --overlap.
inline constexpr int LargestOverlap = 4096;

/// Where a scene is.
struct SceneExtent {
    krod::BoundingSphere bounds; ///< in the coordinates that it is drawn in
    glm::dvec3 origin{0};        ///< their 0 in the coordinates that people and networks use for cameras
    std::optional<ContentBox> plane{}; ///< of a picture, which is fitted to its rectangle
};

/// The words of the command line, and what they mean.
struct ViewOptions {
    std::optional<std::string> size, camera, up, background, tile, overlap;
    /// The view of a saved network, which decides where nothing is typed; its tiles are square.
    std::optional<NetworkView> saved;

    /// Adds the options to a command's syntax.
    void addTo(Syntax& syntax);
    /// 1280x720 and the camera fitted to the scene, unless asked or saved otherwise. Throws Failure(Usage) that
    /// names the option.
    [[nodiscard]] FrameSetup frameOf(const SceneExtent& scene) const;

private:
    [[nodiscard]] Camera cameraOf(const SceneExtent& scene, double aspect) const;
    /// With the planes that the bounds need, where --camera or --up is typed.
    [[nodiscard]] Camera typedCamera(const Camera& asked, const krod::BoundingSphere& bounds) const;
};

/// A saved camera with the planes that the bounds need. Throws Failure(Usage) as Camera::between.
[[nodiscard]] Camera cameraOf(const NetworkView::Camera& saved, const krod::BoundingSphere& bounds);

} // namespace workbench

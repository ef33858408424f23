// SPDX-License-Identifier: Apache-2.0
// What to do when a tile is too large for the memory: the same in smaller tiles.
#pragma once

#include "apps/plime/terminal/Report.h"

#include <functional>
#include <optional>
#include <string>

namespace workbench {

/// The side of the smallest tile that is tried.
inline constexpr int SmallestTriedTile = 64;

/// One try of work that is done in tiles.
struct TileAttempt {
    std::optional<int> side; ///< of the largest tile, in pixels; missing: as the work chooses
    int used = 0;    ///< is set by the work: the side of its largest tile; 0: smaller ones are no help
    int overlap = 0; ///< is set by the work; tiles stay larger than twice of it
};

/// Does the work. As long as it throws GraphicsMemoryFailure or std::bad_alloc, does it again in tiles of half
/// the side, at last of SmallestTriedTile, and warns each time, because what works with the place in a tile
/// comes out differently. Without a smaller tile to try, throws the failure.
void withSmallerTiles(Report& report, const std::string& picture,
                      const std::function<void(TileAttempt& attempt)>& work);

} // namespace workbench

// SPDX-License-Identifier: Apache-2.0
// Tile processors over whole pictures.
#pragma once

#include "apps/plime/PictureOutput.h"
#include "apps/plime/TileChain.h"
#include "apps/plime/TilePlan.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace workbench {

/// Throws Failure(Output) when a picture needs more than --memory allows: so many pixels are held at once,
/// each of them twice, before and after.
void requireMemory(const std::string& picture, std::uint64_t pixels, std::uint64_t memory);

/// Takes a picture through the chain, tile by tile from the top, in one pass of reading and writing. One band
/// of tiles is held at a time. `done` is told the share that is finished, from 0 to 1. Throws
/// Failure(Interrupted) between tiles when a signal has come.
void processTiles(const TileChain& chain, const TilePlan& plan, PictureReader& reader, PictureOutput& output,
                  const std::function<void(double share)>& done);

} // namespace workbench

// SPDX-License-Identifier: Apache-2.0
// Tile processors over whole pictures.
#pragma once

#include "apps/plime/modules/TileChain.h"
#include "apps/plime/pictures/ChainWatch.h"
#include "apps/plime/pictures/PictureOutput.h"
#include "apps/plime/pictures/TilePlan.h"

#include <functional>

namespace workbench {

class TileJournal;

/// Takes a picture through the chain, tile by tile from the top, in one pass of reading and writing. One band
/// of tiles is held at a time. With a journal, tiles that it holds are taken from it, others are kept in it; not
/// for a picture that is one tile. `done` is told the share that is finished, from 0 to 1. Throws
/// Failure(Interrupted) between tiles when a signal has come, and AlphaChanged through the watch.
void processTiles(const TileChain& chain, const TilePlan& plan, PictureReader& reader, PictureOutput& output,
                  ChainWatch& watch, const std::function<void(double share)>& done,
                  TileJournal* journal = nullptr);

} // namespace workbench

// SPDX-License-Identifier: Apache-2.0
// How a picture is drawn in the memory that is allowed.
#pragma once

#include "workbench/gl/TileGrid.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace workbench {

/// An EXR that is wider than this is stored in tiles, if nothing works on its rows.
inline constexpr int WidestScanLines = 16384;
/// The sides of these tiles. Readers hold a row of them.
inline constexpr int StoredTileSide = 64;

/// What is to be drawn, and how much room there is.
struct DrawingTask {
    std::string picture; ///< for messages
    int width = 0, height = 0;
    TileWish wish;
    int samples = 0;              ///< of all displays together, which are held at once
    bool isExr = true;            ///< it becomes an EXR
    bool isProcessed = false;     ///< tile processors work on its rows
    std::uint64_t otherBytes = 0; ///< held beside its pixels
    std::uint64_t memory = 0;     ///< --memory
};

/// The tiles that a picture is drawn in, and what that takes.
struct DrawingPlan {
    TileWish tiles;
    bool inBlocks = false; ///< the file is stored in tiles, too, and takes those that are drawn one by one
    std::size_t targetBytes = 0; ///< of the drawing areas
    std::uint64_t bytes = 0;     ///< all in all, without what processors need
};

/// The tiles of the wish, half as large as often as the memory asks for it. Processors are left half of what is
/// there for pixels. Throws Failure(Usage) as planTiles, Failure(Output) when no tile fits into the memory.
[[nodiscard]] DrawingPlan planDrawing(const DrawingTask& task);

} // namespace workbench
